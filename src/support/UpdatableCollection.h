// Collections and collection items with batched change notification (see
// BatchUpdatable.h). An item's parent is its collection when the collection
// is batch-updatable, so a change of an item is reported by the collection's
// OnUpdated with the item in its UpdatedChildren; the collection's own parent
// is given to its constructor.
#pragma once

#include "support/BatchUpdatable.h"
#include "support/Collection.h"

namespace mv {

class TmvUpdatableCollectionItem : public TmvCollectionItem, public TmvBatchUpdatableBase {
  MV_DECLARE_CLASS()
 public:
  // The parent is the collection if it implements ImvBatchUpdatable.
  explicit TmvUpdatableCollectionItem(TmvCollection* collection);
  ~TmvUpdatableCollectionItem() override;

 protected:
  TmvObject* UpdateSender() override { return this; }
};

class TmvUpdatableCollection : public TmvCollection, public TmvBatchUpdatableBase {
  MV_DECLARE_CLASS()
 public:
  TmvUpdatableCollection(TmvPersistent* owner, const TmvCollectionItemClass& itemClass,
                         ImvBatchUpdatable* parent = nullptr);
  ~TmvUpdatableCollection() override;

  // Both batches at once: the notification batch opens first and closes
  // last, around the collection's own.
  void BeginUpdate() override;
  void EndUpdate() override;

 protected:
  TmvObject* UpdateSender() override { return this; }
};

}  // namespace mv
