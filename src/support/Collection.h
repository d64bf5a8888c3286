// Owned collections of items of one class. The collection makes its items
// (through the item class's factory) and owns them; an item knows its
// collection and leaves it when it is freed.
//
//   class TmvColumnItem : public TmvCollectionItem { ... };
//   TmvCollection columns(owner, CollectionItemClassOf<TmvColumnItem>());
//   auto* column = static_cast<TmvColumnItem*>(columns.Add());
//   column->Free();              // or columns.Delete(column->GetIndex())
//
// `Update(item)` tells a subclass of a change (null: the whole collection);
// it is held back while `BeginUpdate`/`EndUpdate` are open and runs once at
// the end. `Notify` tells of each item added, extracted or deleted.
#pragma once

#include <vector>

#include "support/Persistent.h"

namespace mv {

class TmvCollection;
class TmvCollectionItem;

// The class of the items of a collection: made with the collection as the
// only constructor argument.
using TmvCollectionItemClass = TmvClassOf<TmvCollectionItem, TmvCollection*>;

enum class TmvCollectionNotification { cnAdded, cnExtracting, cnDeleting };

class TmvCollectionItem : public TmvPersistent {
  MV_DECLARE_CLASS()
 public:
  // Only the collection makes items (Add, Insert); the item enters it right
  // after both construction phases.
  explicit TmvCollectionItem(TmvCollection* collection) : collection_(collection) {}
  ~TmvCollectionItem() override;

  // Leaves the collection while the item is still whole. Subclasses call
  // the inherited one.
  void BeforeDestruction() override;

  TmvCollection* GetCollection() const { return collection_; }
  // Position in the collection; -1 while the item is in none.
  int GetIndex() const;
  // Moves the item to `index` (EListError if out of range).
  void SetIndex(int index);
  // A number unique within the collection, given in order of adding.
  int GetID() const { return id_; }
  // The name shown for the item; the class name here.
  virtual WideString GetDisplayName() const;
  TmvPersistent* GetOwner() const override;

  // Frees the item in both destruction phases; it leaves its collection.
  void Free();

 protected:
  // Tells the collection of a change of this item, or of all items.
  void Changed(bool allItems);

 private:
  friend class TmvCollection;
  TmvCollection* collection_;
  int id_ = -1;
};

class TmvCollection : public TmvPersistent {
  MV_DECLARE_CLASS()
 public:
  TmvCollection(TmvPersistent* owner, const TmvCollectionItemClass& itemClass);
  ~TmvCollection() override;

  // Frees the items while the collection is still whole.
  void BeforeDestruction() override;

  // Copies the items of another collection: clears, then adds one item per
  // source item and assigns it, inside one update.
  void Assign(const TmvPersistent* source) override;

  TmvPersistent* GetOwner() const override { return owner_; }
  const TmvCollectionItemClass& GetItemClass() const { return *itemClass_; }

  int Count() const { return static_cast<int>(items_.size()); }
  // EListError for an index out of range.
  TmvCollectionItem* GetItem(int index) const;
  // A new item of the item class at the end, or at `index`.
  TmvCollectionItem* Add();
  TmvCollectionItem* Insert(int index);
  // Frees the item at `index`.
  void Delete(int index);
  // Frees all items, the last first, inside one update.
  void Clear();
  int IndexOf(const TmvCollectionItem* item) const;
  TmvCollectionItem* FindItemID(int id) const;

  // The collection's own batch: holds back `Update` until the outermost end.
  virtual void BeginUpdate();
  virtual void EndUpdate();
  int GetCollectionUpdateCount() const { return updateCount_; }

 protected:
  // A change of `item`, or of the whole collection when it is null.
  virtual void Update(TmvCollectionItem* item);
  virtual void Notify(TmvCollectionItem* item, TmvCollectionNotification action);
  // Runs Update(null) unless a batch is open.
  void Changed();

 private:
  friend class TmvCollectionItem;
  TmvCollectionItem* InsertNew(int index);
  // Gives up ownership of `item` without freeing it.
  void RemoveItem(TmvCollectionItem* item);
  void MoveItem(int from, int to);

  TmvPersistent* owner_;
  const TmvCollectionItemClass* itemClass_;
  std::vector<TmvOwned<TmvCollectionItem>> items_;
  int updateCount_ = 0;
  int nextId_ = 0;
};

// The item class of `T`, which must have a constructor taking the collection.
template <class T>
const TmvCollectionItemClass& CollectionItemClassOf() {
  static const TmvCollectionItemClass info(T::StaticClass().ClassName(), &T::StaticClass(),
                                           [](TmvCollection* c) -> TmvCollectionItem* { return new T(c); });
  return info;
}

}  // namespace mv
