// Union members: their place in a group and the operator that joins each to
// the member before it.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/QueryTree.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryBase, TmvQueryBuilderControlOwner)

TmvQueryBase::TmvQueryBase(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* parent)
    : TmvQueryBuilderControlOwner(host, parent) {}

TmvQueryBase::~TmvQueryBase() = default;

void TmvQueryBase::AfterConstruction() {
  TmvQueryBuilderControlOwner::AfterConstruction();
  // A sub-query is its own root; a member lies in the sub-query that owns it.
  if (auto* subQuery = TmvCast<TmvSubQuery>(this))
    rootQuery_ = subQuery;
  else if (auto* owner = TmvCast<TmvQueryBase>(Parent()))
    rootQuery_ = owner->RootQuery();
}

void TmvQueryBase::Destroying() {
  if (parentQuery_) {
    TmvUnionGroup* group = parentQuery_;
    std::erase(group->items_, this);
    parentQuery_ = nullptr;
    if (!group->IsDestroying()) group->NotifySQLUpdated();
  }
  TmvQueryBuilderControlOwner::Destroying();
  queryAST_.reset();
}

int TmvQueryBase::IndexInParent() const { return parentQuery_ ? parentQuery_->IndexOf(this) : -1; }

void TmvQueryBase::SetParentQuery(TmvUnionGroup* group) {
  if (group == parentQuery_) return;
  if (TmvUnionGroup* old = parentQuery_) {
    std::erase(old->items_, this);
    if (!old->IsDestroying()) old->NotifySQLUpdated();
  }
  parentQuery_ = group;
  SetUpdateParent(group);
  if (group) {
    group->items_.push_back(this);
    group->NotifySQLUpdated();
  }
  if (rootQuery_) rootQuery_->UpdateUnionSubQueriesOrder();
}

void TmvQueryBase::ParentGroupDestroying() {
  if (IsDestroying()) {
    parentQuery_ = nullptr;
    return;
  }
  SetParentQuery(rootQuery_ != this ? rootQuery_ : nullptr);
}

// --- Operators ---

WideString TmvQueryBase::GetUnionOperator() const { return queryAST_ ? queryAST_->UnionOperator : WideString(); }

bool TmvQueryBase::GetUnionAllFlag() const { return queryAST_ && queryAST_->UnionAll; }

WideString TmvQueryBase::GetUnionOperatorFull() const {
  if (!queryAST_ || !SQLContext()) return {};
  return queryAST_->GetSimpleUnionOperator(SQLContext()->SQLBuilderExpression());
}

void TmvQueryBase::SetUnionOperator(const WideString& text) {
  if (!queryAST_ || WideSameText(text, queryAST_->UnionOperator)) return;
  queryAST_->UnionOperator = WideStringReplace(text, u" ALL", u"", rfReplaceAll | rfIgnoreCase);
  NotifySQLUpdated();
  UpdateUnionOperator();
}

void TmvQueryBase::SetUnionAllFlag(bool value) {
  if (!queryAST_ || queryAST_->UnionAll == value) return;
  queryAST_->UnionAll = value;
  NotifySQLUpdated();
  UpdateUnionOperator();
}

void TmvQueryBase::SetUnionOperatorFull(const WideString& text) {
  if (!queryAST_ || WideSameText(text, GetUnionOperatorFull())) return;
  const WideString upper = WideUpperCase(text);
  const bool all = upper.find(u" ALL") != WideString::npos;
  TmvUpdateScope update(this);
  queryAST_->UnionOperator = WideStringReplace(upper, u" ALL", u"", rfReplaceAll);
  queryAST_->UnionAll = all;
  NotifySQLUpdated();
  UpdateUnionOperator();
}

void TmvQueryBase::UpdateUnionOperator() {
  ImvUnionOperatorControl* control = GetUnionOperatorControl();
  if (!control) return;
  const bool shown = queryAST_ && parentQuery_ && IndexInParent() > 0;
  if (ImvControlFactory* factory = ControlFactory()) factory->ShowControl(control, shown);
  if (!shown) return;
  control->SetUnionOperator(GetUnionOperator());
  control->SetAll(GetUnionAllFlag());
}

// --- Placing other members ---

void TmvQueryBase::InsertAfter(TmvQueryBase* other) {
  if (!other || other == this || !parentQuery_) return;
  TmvUnionGroup* group = parentQuery_;
  TmvUpdateScope update(group);
  if (other->ParentQuery() != group) {
    other->SetParentQuery(group);
    group->Move(group->IndexOf(other), IndexInParent() + 1);
  } else {
    // Taking `other` out from before this member moves this one down.
    const int from = group->IndexOf(other);
    group->Move(from, from < IndexInParent() ? IndexInParent() : IndexInParent() + 1);
  }
  group->NotifySQLUpdated();
}

void TmvQueryBase::InsertBefore(TmvQueryBase* other) {
  if (!other || other == this || !parentQuery_) return;
  TmvUnionGroup* group = parentQuery_;
  TmvUpdateScope update(group);
  if (other->ParentQuery() != group) other->SetParentQuery(group);
  // Taking `other` out from before this member moves this one down.
  const int from = group->IndexOf(other);
  group->Move(from, from < IndexInParent() ? IndexInParent() - 1 : IndexInParent());
  group->NotifySQLUpdated();
}

void TmvQueryBase::LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) { SetQueryAST(std::move(node)); }

void TmvQueryBase::SetQueryAST(TmvOwned<TSQLSubQueryExpression> node) {
  if (node.get() != queryAST_.get()) queryAST_ = std::move(node);
  UpdateUnionOperator();
}

}  // namespace mv
