#include "support/UpdatableCollection.h"

namespace mv {

MV_DEFINE_CLASS(TmvUpdatableCollectionItem, TmvCollectionItem)
MV_DEFINE_CLASS(TmvUpdatableCollection, TmvCollection)

TmvUpdatableCollectionItem::TmvUpdatableCollectionItem(TmvCollection* collection)
    : TmvCollectionItem(collection) {
  SetParent(dynamic_cast<ImvBatchUpdatable*>(collection));
}

TmvUpdatableCollectionItem::~TmvUpdatableCollectionItem() { SetParent(nullptr); }

TmvUpdatableCollection::TmvUpdatableCollection(TmvPersistent* owner, const TmvCollectionItemClass& itemClass,
                                               ImvBatchUpdatable* parent)
    : TmvCollection(owner, itemClass) {
  SetParent(parent);
}

TmvUpdatableCollection::~TmvUpdatableCollection() { SetParent(nullptr); }

void TmvUpdatableCollection::BeginUpdate() {
  TmvBatchUpdatableBase::BeginUpdate();
  TmvCollection::BeginUpdate();
}

void TmvUpdatableCollection::EndUpdate() {
  TmvCollection::EndUpdate();
  TmvBatchUpdatableBase::EndUpdate();
}

}  // namespace mv
