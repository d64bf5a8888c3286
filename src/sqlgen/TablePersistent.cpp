#include "sqlgen/TablePersistent.h"

namespace mv {

void TmvTablePersistent::Assign(const TmvPersistent* source) {
  if (!source || !source->InheritsFrom(ClassType())) {
    TmvUpdatablePersistent::Assign(source);
    return;
  }
  if (source == this) return;
  TmvUpdateBatch batch(*this);
  PropertyTable().AssignValues(*this, *source);
}

void TmvTablePersistent::DescribeProperties(TmvPropertyWriter& writer) const {
  TmvUpdatablePersistent::DescribeProperties(writer);
  PropertyTable().Describe(*this, writer);
}

}  // namespace mv
