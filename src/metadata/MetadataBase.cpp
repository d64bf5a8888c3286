#include "metadata/MetadataBase.h"

#include <pugixml.hpp>

#include <algorithm>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"

namespace mv {

MV_DEFINE_ABSTRACT_METADATA_CLASS(TmvMetadataBase, TmvUpdatablePersistent)
MV_DEFINE_ABSTRACT_METADATA_CLASS(TmvMetadataCollectionItemBase, TmvMetadataBase)
MV_DEFINE_ABSTRACT_METADATA_CLASS(TmvMetadataCollectionBase, TmvMetadataBase)

// --- TmvMetadataBase ---

TmvMetadataBase::TmvMetadataBase(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : context_(context), parent_(parent) {
  SetParent(parent);
}

TmvMetadataBase::~TmvMetadataBase() { context_ = nullptr; }

TmvBaseSyntaxProvider* TmvMetadataBase::SyntaxProvider() const {
  return context_ ? context_->SyntaxProvider() : nullptr;
}

void TmvMetadataBase::Assign(const TmvPersistent* source) {
  if (const auto* other = TmvCast<TmvMetadataBase>(source)) {
    tag_ = other->tag_;
    return;
  }
  TmvUpdatablePersistent::Assign(source);
}

TmvOwned<TmvMetadataBase> TmvMetadataBase::Clone(TmvMetadataBase* parent, TmvBaseSQLContext* context) const {
  TmvOwned<TmvMetadataBase> copy(MetadataClass().CreateRaw(parent, context));
  if (!copy)
    throw EmvQueryBuilderError(u"Cannot clone an object of the abstract class " +
                               WideFromAscii(MetadataClass().ClassName()));
  copy->Assign(this);
  return copy;
}

pugi::xml_node TmvMetadataBase::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  return parent.append_child(nodeName);
}

void TmvMetadataBase::SetMetadataParent(TmvMetadataBase* parent) {
  parent_ = parent;
  SetParent(parent);
}

// --- TmvMetadataCollectionItemBase ---

TmvMetadataCollectionBase* TmvMetadataCollectionItemBase::Collection() const {
  return TmvCast<TmvMetadataCollectionBase>(Parent());
}

void TmvMetadataCollectionItemBase::LoadFromXMLNode(pugi::xml_node) {}

// --- TmvMetadataCollectionBase ---

TmvMetadataCollectionBase::TmvMetadataCollectionBase(TmvMetadataBase* parent, TmvBaseSQLContext* context,
                                                     const TmvMetadataClass& itemClass)
    : TmvMetadataBase(parent, context), itemClass_(&itemClass) {}

TmvMetadataCollectionBase::~TmvMetadataCollectionBase() = default;

void TmvMetadataCollectionBase::CheckIndex(int index, int count) const {
  if (index < 0 || index >= count) RaiseListIndexError(index, count);
}

void TmvMetadataCollectionBase::SetCapacity(int value) {
  if (value > Capacity()) items_.reserve(size_t(value));
}

TmvMetadataCollectionItemBase* TmvMetadataCollectionBase::ItemAt(int index) const {
  CheckIndex(index, Count());
  return items_[size_t(index)].get();
}

int TmvMetadataCollectionBase::IndexOf(const TmvMetadataCollectionItemBase* item) const {
  for (size_t i = 0; i < items_.size(); ++i)
    if (items_[i].get() == item) return int(i);
  return -1;
}

TmvMetadataCollectionItemBase* TmvMetadataCollectionBase::AddItem() { return InsertItem(Count()); }

TmvMetadataCollectionItemBase* TmvMetadataCollectionBase::InsertItem(int index) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  TmvOwned<TmvMetadataBase> made(itemClass_->CreateRaw(this, SQLContext()));
  auto* item = TmvCast<TmvMetadataCollectionItemBase>(made.get());
  if (!item) throw EmvQueryBuilderError(u"Cannot make an item of the class " + WideFromAscii(itemClass_->ClassName()));
  made.release();
  items_.insert(items_.begin() + index, TmvOwned<TmvMetadataCollectionItemBase>(item));
  ItemInserted(item);
  NotifyUpdated();
  return item;
}

void TmvMetadataCollectionBase::Clear() {
  if (items_.empty()) return;
  // Last first, so that an item never sees its successors gone before it.
  while (!items_.empty()) items_.pop_back();
  NotifyUpdated();
}

void TmvMetadataCollectionBase::Delete(int index) {
  CheckIndex(index, Count());
  TmvOwned<TmvMetadataCollectionItemBase> item = std::move(items_[size_t(index)]);
  items_.erase(items_.begin() + index);
  item.reset();
  NotifyUpdated();
}

void TmvMetadataCollectionBase::Move(int from, int to) {
  CheckIndex(from, Count());
  CheckIndex(to, Count());
  if (from == to) return;
  TmvOwned<TmvMetadataCollectionItemBase> item = std::move(items_[size_t(from)]);
  items_.erase(items_.begin() + from);
  items_.insert(items_.begin() + to, std::move(item));
  NotifyUpdated();
}

int TmvMetadataCollectionBase::Remove(const TmvMetadataCollectionItemBase* item) {
  int index = IndexOf(item);
  if (index >= 0) Delete(index);
  return index;
}

void TmvMetadataCollectionBase::Sort(
    const std::function<int(const TmvMetadataCollectionItemBase*, const TmvMetadataCollectionItemBase*)>& compare) {
  std::stable_sort(items_.begin(), items_.end(),
                   [&compare](const auto& a, const auto& b) { return compare(a.get(), b.get()) < 0; });
  NotifyUpdated();
}

void TmvMetadataCollectionBase::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataCollectionBase>(
      source, [&] { TmvMetadataBase::Assign(source); },
      [&](const TmvMetadataCollectionBase& other) {
        Clear();
        items_.reserve(other.items_.size());
        for (const auto& item : other.items_) {
          TmvOwned<TmvMetadataBase> copy = item->Clone(this, SQLContext());
          auto* typed = static_cast<TmvMetadataCollectionItemBase*>(copy.release());
          items_.push_back(TmvOwned<TmvMetadataCollectionItemBase>(typed));
          ItemInserted(typed);
        }
      });
}

pugi::xml_node TmvMetadataCollectionBase::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = parent.append_child(nodeName);
  const char* itemName = GetXMLItemName();
  for (const auto& item : items_) item->GetXMLNode(element, itemName);
  return element;
}

void TmvMetadataCollectionBase::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  Clear();
  const char* itemName = GetXMLItemName();
  if (*itemName == 0) return;
  size_t children = 0;
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) ++children;
  items_.reserve(children);
  for (pugi::xml_node child = element.child(itemName); child; child = child.next_sibling(itemName))
    AddItem()->LoadFromXMLNode(child);
}

}  // namespace mv
