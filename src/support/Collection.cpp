#include "support/Collection.h"

#include <algorithm>

#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_CLASS(TmvCollectionItem, TmvPersistent)
MV_DEFINE_CLASS(TmvCollection, TmvPersistent)

// --- Items ---

TmvCollectionItem::~TmvCollectionItem() {
  // Freed without the first phase: leave the collection all the same.
  if (collection_) collection_->RemoveItem(this);
}

void TmvCollectionItem::BeforeDestruction() {
  TmvPersistent::BeforeDestruction();
  if (collection_) collection_->RemoveItem(this);
}

int TmvCollectionItem::GetIndex() const { return collection_ ? collection_->IndexOf(this) : -1; }

void TmvCollectionItem::SetIndex(int index) {
  const int current = GetIndex();
  if (current < 0 || current == index) return;
  collection_->MoveItem(current, index);
  Changed(true);
}

WideString TmvCollectionItem::GetDisplayName() const { return WideFromAscii(ClassName()); }

TmvPersistent* TmvCollectionItem::GetOwner() const { return collection_; }

void TmvCollectionItem::Free() { TmvDeleter()(this); }

void TmvCollectionItem::Changed(bool allItems) {
  if (collection_ && collection_->updateCount_ == 0) collection_->Update(allItems ? nullptr : this);
}

// --- Collection ---

TmvCollection::TmvCollection(TmvPersistent* owner, const TmvCollectionItemClass& itemClass)
    : owner_(owner), itemClass_(&itemClass) {}

TmvCollection::~TmvCollection() {
  // Freed without the first phase (e.g. a member of its owner): the items go
  // quietly, as nothing derived is left to notify.
  for (auto& item : items_) item->collection_ = nullptr;
  items_.clear();
}

void TmvCollection::BeforeDestruction() {
  TmvPersistent::BeforeDestruction();
  Clear();
}

void TmvCollection::Assign(const TmvPersistent* source) {
  const auto* other = TmvCast<TmvCollection>(source);
  if (!other) {
    TmvPersistent::Assign(source);
    return;
  }
  BeginUpdate();
  try {
    Clear();
    for (const auto& item : other->items_) Add()->Assign(item.get());
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

TmvCollectionItem* TmvCollection::GetItem(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index].get();
}

TmvCollectionItem* TmvCollection::Add() { return InsertNew(Count()); }

TmvCollectionItem* TmvCollection::Insert(int index) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  return InsertNew(index);
}

TmvCollectionItem* TmvCollection::InsertNew(int index) {
  TmvOwned<TmvCollectionItem> item(itemClass_->CreateRaw(this));
  if (!item) throw EmvQueryBuilderError(u"Cannot create an item of the abstract class " +
                                        WideFromAscii(itemClass_->ClassName()));
  TmvCollectionItem* raw = item.get();
  raw->collection_ = this;
  raw->id_ = nextId_++;
  items_.insert(items_.begin() + index, std::move(item));
  Notify(raw, TmvCollectionNotification::cnAdded);
  Changed();
  return raw;
}

void TmvCollection::Delete(int index) {
  TmvCollectionItem* item = GetItem(index);
  Notify(item, TmvCollectionNotification::cnDeleting);
  item->Free();
}

void TmvCollection::Clear() {
  if (items_.empty()) return;
  BeginUpdate();
  try {
    while (!items_.empty()) items_.back()->Free();
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

int TmvCollection::IndexOf(const TmvCollectionItem* item) const {
  for (size_t i = 0; i < items_.size(); ++i) {
    if (items_[i].get() == item) return static_cast<int>(i);
  }
  return -1;
}

TmvCollectionItem* TmvCollection::FindItemID(int id) const {
  for (const auto& item : items_) {
    if (item->id_ == id) return item.get();
  }
  return nullptr;
}

void TmvCollection::BeginUpdate() { ++updateCount_; }

void TmvCollection::EndUpdate() {
  if (updateCount_ <= 0) return;
  --updateCount_;
  Changed();
}

void TmvCollection::Update(TmvCollectionItem*) {}

void TmvCollection::Notify(TmvCollectionItem*, TmvCollectionNotification) {}

void TmvCollection::Changed() {
  if (updateCount_ == 0) Update(nullptr);
}

void TmvCollection::RemoveItem(TmvCollectionItem* item) {
  const int index = IndexOf(item);
  if (index >= 0) {
    Notify(item, TmvCollectionNotification::cnExtracting);
    // The caller frees the item (it is being destroyed); drop ownership only.
    (void)items_[index].release();
    items_.erase(items_.begin() + index);
  }
  item->collection_ = nullptr;
  if (index >= 0) Changed();
}

void TmvCollection::MoveItem(int from, int to) {
  if (to < 0 || to >= Count()) RaiseListIndexError(to, Count());
  auto item = std::move(items_[from]);
  items_.erase(items_.begin() + from);
  items_.insert(items_.begin() + to, std::move(item));
}

}  // namespace mv
