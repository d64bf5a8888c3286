// An updatable object whose properties are all listed in a property table
// (the SQL builder's formats, the query builder's option objects): copying
// and describing it walk the table, so a new property needs only a row.
#pragma once

#include "sqlgen/PropertyTable.h"
#include "support/UpdatablePersistent.h"

namespace mv {

class TmvTablePersistent : public TmvUpdatablePersistent {
 public:
  using TmvUpdatablePersistent::TmvUpdatablePersistent;
  // The table of the object's class.
  virtual const TmvPropertyTable& PropertyTable() const = 0;

  // From an object of the same class (or a descendant): every property of
  // the table inside one batch, nested objects by their own Assign. Other
  // sources fall to the inherited Assign.
  void Assign(const TmvPersistent* source) override;
  void DescribeProperties(TmvPropertyWriter& writer) const override;
};

}  // namespace mv
