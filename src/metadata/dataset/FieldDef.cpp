#include "metadata/dataset/FieldDef.h"

#include "metadata/dataset/DataSet.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

namespace {

[[noreturn]] void IndexOutOfBounds(int index) {
  throw EmvQueryBuilderError(WideFormat(u"List index out of bounds (%d)", {index}));
}

}  // namespace

const TmvFieldDef& TmvFieldDefs::Items(int index) const {
  if (index < 0 || index >= Count()) IndexOutOfBounds(index);
  return items_[static_cast<size_t>(index)];
}

TmvFieldDef& TmvFieldDefs::Edit(int index) {
  if (index < 0 || index >= Count()) IndexOutOfBounds(index);
  return items_[static_cast<size_t>(index)];
}

int TmvFieldDefs::IndexOf(WideStringView name) const {
  for (size_t i = 0; i < items_.size(); ++i)
    if (WideSameText(items_[i].Name, name)) return static_cast<int>(i);
  return -1;
}

const TmvFieldDef* TmvFieldDefs::Find(WideStringView name) const {
  const int index = IndexOf(name);
  return index < 0 ? nullptr : &items_[static_cast<size_t>(index)];
}

void TmvFieldDefs::Update() {
  if (!dataset_) throw EmvQueryBuilderError(u"Field definitions have no dataset to update from");
  dataset_->UpdateFieldDefs();
}

}  // namespace mv
