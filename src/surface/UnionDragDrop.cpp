#include "surface/UnionDragDrop.h"

#include <vector>

#include "model/QueryTree.h"

namespace mv {

namespace {

using Item = TmvUnionDragItem;

// The navigator's items in order: a button per SELECT, a group's brackets
// around its members.
void BuildList(std::vector<Item>& list, TmvUnionGroup* group) {
  for (int i = 0; i < group->Count(); ++i) {
    TmvQueryBase* member = group->Items(i);
    if (auto* nested = TmvCast<TmvUnionGroup>(member)) {
      list.push_back({nested, Item::LeftBracket});
      BuildList(list, nested);
      list.push_back({nested, Item::RightBracket});
    } else {
      list.push_back({member, Item::Button});
    }
  }
}

int Position(const Item& item) {
  std::vector<Item> list;
  if (TmvSubQuery* root = item.Object->RootQuery()) BuildList(list, root);
  for (size_t i = 0; i < list.size(); ++i)
    if (list[i] == item) return static_cast<int>(i);
  return -1;
}

bool IsInside(const TmvQueryBase* object, const TmvUnionGroup* group) {
  for (const TmvUnionGroup* parent = object->ParentQuery(); parent; parent = parent->ParentQuery())
    if (parent == group) return true;
  return false;
}

bool SameParent(const TmvQueryBase* a, const TmvQueryBase* b) { return a->ParentQuery() == b->ParentQuery(); }

// Whether `group` still stands in the tree of `root` (a move may free one).
bool IsInTree(const TmvUnionGroup* root, const TmvUnionGroup* group) {
  for (int i = 0; i < root->Count(); ++i)
    if (auto* nested = TmvCast<TmvUnionGroup>(root->Items(i)); nested && (nested == group || IsInTree(nested, group)))
      return true;
  return false;
}

}  // namespace

bool CanDropUnionItem(const Item& target, const Item& source) {
  if (!target.Object || !source.Object || target.Object->RootQuery() != source.Object->RootQuery()) return false;
  const bool sourceButton = source.Which == Item::Button;
  auto* sourceGroup = TmvCast<TmvUnionGroup>(source.Object);
  auto* targetGroup = TmvCast<TmvUnionGroup>(target.Object);
  switch (target.Which) {
    case Item::Button:
      if (sourceButton) return true;
      if (source.Object == target.Object->ParentQuery()) return true;
      if (!SameParent(source.Object, target.Object)) return false;
      return source.Which == Item::LeftBracket ? target.Object->IndexInParent() < source.Object->IndexInParent()
                                               : target.Object->IndexInParent() > source.Object->IndexInParent();
    case Item::LeftBracket:
    case Item::RightBracket: {
      if (sourceButton || source == target) return true;
      if (source.Which != target.Which) return sourceGroup && targetGroup->ParentQuery() == sourceGroup;
      if (!SameParent(source.Object, target.Object)) return false;
      return target.Which == Item::LeftBracket ? target.Object->IndexInParent() < source.Object->IndexInParent()
                                               : target.Object->IndexInParent() > source.Object->IndexInParent();
    }
  }
  return false;
}

void DropUnionItem(const Item& target, const Item& source) {
  if (source == target || !CanDropUnionItem(target, source)) return;
  TmvSubQuery* root = target.Object->RootQuery();
  TmvUnionGroup* left = source.Object->ParentQuery();
  {
    TmvUpdateScope update(root);
    TmvQueryBase* t = target.Object;
    TmvQueryBase* m = source.Object;
    auto* g = TmvCast<TmvUnionGroup>(source.Object);
    auto* h = TmvCast<TmvUnionGroup>(target.Object);
    const int sourceAt = Position(source), targetAt = Position(target);
    if (target.Which == Item::Button && source.Which == Item::Button) {
      if (sourceAt < targetAt) {
        // The first member keeps its place's operator: the second one's moves up.
        if (m->IndexInParent() == 0 && m->ParentQuery()->Count() > 1)
          m->SetUnionOperatorFull(m->ParentQuery()->Items(1)->GetUnionOperatorFull());
        t->InsertAfter(m);
      } else {
        if (t->IndexInParent() == 0) t->SetUnionOperatorFull(m->GetUnionOperatorFull());
        t->InsertBefore(m);
      }
    } else if (target.Which == Item::Button && source.Which == Item::LeftBracket) {
      if (!IsInside(t, g)) {
        if (g->Count() > 0) g->Items(0)->SetUnionOperatorFull(g->GetUnionOperatorFull());
        g->AddToBegin(t);
        g->SetUnionOperatorFull(t->GetUnionOperatorFull());
      } else {
        if (g->Count() > 0) g->Items(0)->SetUnionOperatorFull(g->GetUnionOperatorFull());
        const int behind = t->IndexInParent() + 1;
        if (behind < g->Count()) g->SetUnionOperatorFull(g->Items(behind)->GetUnionOperatorFull());
        g->RemoveFromBegin(t);
      }
    } else if (target.Which == Item::Button) {  // a right bracket on a button
      IsInside(t, g) ? g->RemoveFromEnd(t) : g->AddToEnd(t);
    } else if (source.Which == Item::Button) {  // a button on a bracket
      const bool intoFront = target.Which == Item::LeftBracket && sourceAt <= targetAt;
      const bool intoEnd = target.Which == Item::RightBracket && sourceAt > targetAt;
      if (intoFront || intoEnd) {
        m->SetParentQuery(h);
        if (intoFront) h->Move(h->IndexOf(m), 0);
      } else if (target.Which == Item::LeftBracket) {
        h->InsertBefore(m);
      } else {
        h->InsertAfter(m);
      }
    } else if (source.Which == Item::LeftBracket) {  // a bracket on a bracket
      IsInside(h, g) ? g->RemoveFromBegin(h) : g->AddToBegin(h);
    } else {
      IsInside(h, g) ? g->RemoveFromEnd(h) : g->AddToEnd(h);
    }
  }
  // The group a part came from goes when it was left empty.
  if (left && left != root && IsInTree(root, left) && left->Count() == 0) left->DestroyIfEmpty();
}

}  // namespace mv
