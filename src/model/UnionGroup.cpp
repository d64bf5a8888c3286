// Bracketed groups of union members: adding, moving, and the moves of the
// brackets themselves.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/FromClause.h"

namespace mv {

MV_DEFINE_CLASS(TmvUnionGroup, TmvQueryBase)

void TmvUnionGroup::Destroying() {
  // The members go with the group, last first.
  while (!items_.empty()) {
    TmvQueryBase* item = items_.back();
    if (RootQuery() && item->Parent() == RootQuery())
      RootQuery()->DestroyChild(item);
    else
      item->ParentGroupDestroying();
    if (!items_.empty() && items_.back() == item) items_.pop_back();
  }
  TmvQueryBase::Destroying();
}

TmvQueryBase* TmvUnionGroup::Items(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index];
}

int TmvUnionGroup::IndexOf(const TmvQueryBase* item) const {
  auto found = std::find(items_.begin(), items_.end(), item);
  return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void TmvUnionGroup::CheckCanAdd(bool group) const {
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  TmvSubQuery* root = RootQuery();
  if (!provider || !root) return;
  if (group) {
    if (this == root && root->GetIsMainQuery()) {
      if (!provider->IsSupportBracketsInUnions())
        throw Exception(MessageText(mvQBDialectDontSupportUnionsBrackets));
    } else if (!provider->IsSupportSubQueryBracketsInUnions()) {
      throw Exception(MessageText(mvQBDialectDontSupportUnionsBracketsInSubQuery));
    }
    return;
  }
  if (root->UnionSubQueries().empty()) return;
  if (root->GetIsMainQuery()) {
    if (!provider->IsSupportUnions()) throw Exception(MessageText(mvQBDialectDontSupportUnions));
  } else if (!provider->IsSupportSubQueryUnions()) {
    throw Exception(MessageText(mvQBDialectDontSupportUnionsInSubQueries));
  }
}

namespace {

TmvOwned<TSQLSubQuerySelectExpression> NewEmptySelect(TmvBaseSQLContext* context) {
  auto node = TastCreate<TSQLSubQuerySelectExpression>(context);
  node->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
  node->FromClause.Set(TastCreate<TSQLFromClause>(context));
  return node;
}

}  // namespace

TmvUnionSubQuery* TmvUnionGroup::Add() {
  CheckCanAdd(false);
  if (IsDestroying()) return nullptr;
  return AddAST(NewEmptySelect(SQLContext()));
}

TmvUnionGroup* TmvUnionGroup::AddGroup() {
  CheckCanAdd(true);
  if (IsDestroying()) return nullptr;
  return AddGroupAST(TastCreate<TSQLSubQueryExpressions>(SQLContext()));
}

TmvUnionSubQuery* TmvUnionGroup::Insert(int index) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  CheckCanAdd(false);
  TmvUpdateScope update(this);
  TmvUnionSubQuery* member = Add();
  if (member) Move(Count() - 1, index);
  return member;
}

TmvUnionGroup* TmvUnionGroup::InsertGroup(int index) {
  if (index < 0 || index > Count()) RaiseListIndexError(index, Count());
  CheckCanAdd(true);
  TmvUpdateScope update(this);
  TmvUnionGroup* group = AddGroup();
  if (group) Move(Count() - 1, index);
  return group;
}

namespace {

// A member of class T made from `node`, owned by the root of `group` and
// placed at the end of the group, with its controls where it can have them.
template <class T, class Node>
T* AddMember(TmvUnionGroup* group, TmvOwned<Node> node) {
  T* member;
  {
    TmvUpdateScope update(group);
    TmvSubQuery* root = group->RootQuery();
    auto owned = TmvCreate<T>(group->Host(), root);
    member = owned.get();
    root->RegisterChild(std::move(owned));
    member->SetParentQuery(group);
    TmvUpdateScope memberUpdate(member);
    member->LoadFromAST(std::move(node));
  }
  if (member->CanCreateControls()) member->CreateControl();
  return member;
}

}  // namespace

TmvUnionSubQuery* TmvUnionGroup::AddAST(TmvOwned<TSQLSubQuerySelectExpression> node) {
  return AddMember<TmvUnionSubQuery>(this, std::move(node));
}

TmvUnionGroup* TmvUnionGroup::AddGroupAST(TmvOwned<TSQLSubQueryExpressions> node) {
  return AddMember<TmvUnionGroup>(this, std::move(node));
}

void TmvUnionGroup::Move(int from, int to) {
  if (from < 0 || from >= Count()) RaiseListIndexError(from, Count());
  if (to < 0 || to >= Count()) RaiseListIndexError(to, Count());
  if (from == to) return;
  TmvQueryBase* item = items_[from];
  items_.erase(items_.begin() + from);
  items_.insert(items_.begin() + to, item);
  NotifySQLUpdated();
  if (RootQuery()) RootQuery()->UpdateUnionSubQueriesOrder();
}

void TmvUnionGroup::Remove(TmvQueryBase* item) {
  if (IndexOf(item) < 0) return;
  TmvUpdateScope update(this);
  if (item->Parent()) item->Parent()->DestroyChild(item);
}

void TmvUnionGroup::Delete(int index) { Remove(Items(index)); }

// --- Bracket moves ---

namespace {

// Puts `member` into `group` at `index`.
void PlaceMember(TmvQueryBase* member, TmvUnionGroup* group, int index) {
  member->SetParentQuery(group);
  group->Move(group->IndexOf(member), std::min(index, group->Count() - 1));
}

}  // namespace

void TmvUnionGroup::AddToBegin(TmvQueryBase* bound) {
  TmvUnionGroup* parent = ParentQuery();
  const int last = parent ? parent->IndexOf(bound) : -1;
  if (last < 0) return;
  TmvUpdateScope update(parent);
  for (int i = parent->IndexOf(this) - 1; i >= last; --i) PlaceMember(parent->Items(i), this, 0);
  RootQuery()->UpdateUnionSubQueriesOrder();
}

void TmvUnionGroup::AddToEnd(TmvQueryBase* bound) {
  TmvUnionGroup* parent = ParentQuery();
  const int last = parent ? parent->IndexOf(bound) : -1;
  if (last < 0) return;
  TmvUpdateScope update(parent);
  for (int n = last - parent->IndexOf(this); n > 0; --n) PlaceMember(parent->Items(parent->IndexOf(this) + 1), this, Count());
  RootQuery()->UpdateUnionSubQueriesOrder();
}

void TmvUnionGroup::RemoveFromBegin(TmvQueryBase* bound) {
  TmvUnionGroup* parent = ParentQuery();
  const int last = IndexOf(bound);
  if (!parent || last < 0) return;
  TmvUpdateScope update(parent);
  for (int n = 0; n <= last; ++n) PlaceMember(items_.front(), parent, parent->IndexOf(this));
  RootQuery()->UpdateUnionSubQueriesOrder();
}

void TmvUnionGroup::RemoveFromEnd(TmvQueryBase* bound) {
  TmvUnionGroup* parent = ParentQuery();
  const int first = IndexOf(bound);
  if (!parent || first < 0) return;
  TmvUpdateScope update(parent);
  for (int n = Count() - first; n > 0; --n) PlaceMember(items_.back(), parent, parent->IndexOf(this) + 1);
  RootQuery()->UpdateUnionSubQueriesOrder();
}

void TmvUnionGroup::DestroyIfEmpty() {
  if (items_.empty() && ParentQuery() && Parent()) Parent()->DestroyChild(this);
}

// The left bracket stands between a member's operator and the member, so
// its moves hand the operators over: the text keeps each operator between
// the two SELECTs it joined. (The right bracket stands after a member and
// moves without that.)
void TmvUnionGroup::MoveLeftForwardEvent() {
  TmvUnionGroup* parent = ParentQuery();
  const int index = parent ? parent->IndexOf(this) : -1;
  if (index <= 0) return;
  TmvQueryBase* left = parent->Items(index - 1);
  TmvUpdateScope update(parent);
  const WideString groupOperator = GetUnionOperatorFull();
  if (!items_.empty()) items_.front()->SetUnionOperatorFull(groupOperator);
  SetUnionOperatorFull(left->GetUnionOperatorFull());
  AddToBegin(left);
}

void TmvUnionGroup::MoveLeftBackwardEvent() {
  if (items_.empty()) return;
  TmvQueryBase* first = items_.front();
  {
    TmvUpdateScope update(ParentQuery());
    const WideString groupOperator = GetUnionOperatorFull();
    if (items_.size() > 1) SetUnionOperatorFull(items_[1]->GetUnionOperatorFull());
    first->SetUnionOperatorFull(groupOperator);
    RemoveFromBegin(first);
  }
  DestroyIfEmpty();
}

void TmvUnionGroup::MoveRightForwardEvent() {
  if (!items_.empty()) RemoveFromEnd(items_.back());
  DestroyIfEmpty();
}

void TmvUnionGroup::MoveRightBackwardEvent() {
  TmvUnionGroup* parent = ParentQuery();
  const int index = parent ? parent->IndexOf(this) : -1;
  if (index >= 0 && index + 1 < parent->Count()) AddToEnd(parent->Items(index + 1));
}

void TmvUnionGroup::RemoveBracketsEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return;
  if (!items_.empty()) {
    TmvUpdateScope update(parent);
    items_.front()->SetUnionOperatorFull(GetUnionOperatorFull());
    RemoveFromBegin(items_.back());
  }
  DestroyIfEmpty();
}

// --- Contents ---

std::vector<TmvUnionSubQuery*> TmvUnionGroup::GetUnionSubQueriesList() const {
  std::vector<TmvUnionSubQuery*> list;
  GatherUnionSubQueries(list);
  return list;
}

void TmvUnionGroup::GatherUnionSubQueries(std::vector<TmvUnionSubQuery*>& list) const {
  for (TmvQueryBase* item : items_) {
    if (auto* member = TmvCast<TmvUnionSubQuery>(item))
      list.push_back(member);
    else if (auto* group = TmvCast<TmvUnionGroup>(item))
      group->GatherUnionSubQueries(list);
  }
}

void TmvUnionGroup::Clear() {
  TmvUpdateScope update(this);
  while (!items_.empty()) {
    TmvQueryBase* item = items_.back();
    if (item->Parent())
      item->Parent()->DestroyChild(item);
    else
      items_.pop_back();
  }
}

TSQLSubQueryExpressions* TmvUnionGroup::GetUnionGroupAst() const { return TmvCast<TSQLSubQueryExpressions>(QueryAST()); }

void TmvUnionGroup::LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) {
  TmvUpdateScope update(this);
  TmvQueryBase::LoadFromAST(std::move(node));
  LoadMembers();
}

void TmvUnionGroup::LoadMembers() {
  TSQLSubQueryExpressions* group = GetUnionGroupAst();
  if (!group) return;
  // The members leave the node as they become members of the model.
  std::vector<TmvOwned<TSQLSubQueryExpression>> members;
  while (group->GetCount() > 0) members.push_back(group->Extract(0));
  for (auto& member : members) {
    if (TmvCast<TSQLSubQuerySelectExpression>(member.get()))
      AddAST(TmvOwned<TSQLSubQuerySelectExpression>(static_cast<TSQLSubQuerySelectExpression*>(member.release())));
    else if (TmvCast<TSQLSubQueryExpressions>(member.get()))
      AddGroupAST(TmvOwned<TSQLSubQueryExpressions>(static_cast<TSQLSubQueryExpressions*>(member.release())));
  }
  NotifySQLUpdated();
}

ImvUnionOperatorControl* TmvUnionGroup::GetUnionOperatorControl() const {
  return dynamic_cast<ImvUnionOperatorControl*>(GetControls(2));
}

TmvOwned<TastNode> TmvUnionGroup::CreateResultAST() {
  if (!QueryAST()) return nullptr;
  auto group = QueryAST()->CloneAs<TSQLSubQueryExpressions>(SQLContext());
  if (!group) return nullptr;
  for (TmvQueryBase* item : items_) {
    TmvOwned<TastNode> member = item->MakeResultAST();
    if (auto* expression = TmvCast<TSQLSubQueryExpression>(member.get())) {
      member.release();
      group->Add(TmvOwned<TSQLSubQueryExpression>(expression));
    }
  }
  return group;
}

}  // namespace mv
