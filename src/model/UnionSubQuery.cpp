// One SELECT of a union: the node it keeps, the tree it generates, and the
// moves of its page's controls.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "tree/FromClause.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvUnionSubQuery, TmvQueryBase)

void TmvUnionSubQuery::AfterConstruction() {
  TmvQueryBase::AfterConstruction();
  auto group = TmvCreate<TmvDatasourceGroup>(Host(), this, nullptr, this);
  datasources_ = group.get();
  RegisterChild(std::move(group));
  datasources_->SetUpdateParent(this);
  auto list = TmvCreate<TmvSelectList>(Host(), this);
  selectList_ = list.get();
  RegisterChild(std::move(list));
  selectList_->SetUpdateParent(this);
  if (TmvSubQuery* root = RootQuery()) root->RegisterUnionSubQuery(this);
}

void TmvUnionSubQuery::Destroying() {
  TmvSubQuery* root = RootQuery();
  if (root && !root->IsDestroying()) root->UnregisterUnionSubQuery(this);
  TmvQueryBase::Destroying();
}

TSQLSubQuerySelectExpression* TmvUnionSubQuery::SelectAST() const {
  return TmvCast<TSQLSubQuerySelectExpression>(QueryAST());
}

void TmvUnionSubQuery::LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) {
  TmvUpdateScope update(this);
  TmvQueryBase::LoadFromAST(std::move(node));
  TSQLSubQuerySelectExpression* select = SelectAST();
  if (!select) return;
  // Each clause leaves the node as it is taken, so that the node cannot
  // free what the model now owns.
  const bool hasFrom = static_cast<bool>(select->FromClause);
  if (hasFrom) datasources_->LoadFromAST(select->FromClause.Release());
  selectList_->LoadSelectListFromAST(select->SelectItems.Release());
  selectList_->StartConditionsLoading();
  // Links from ON expressions and from WHERE come here, once every
  // datasource and row is in.
  if (hasFrom) {
    datasources_->LoadJoins();
    if (select->Where) {
      TmvOwned<TSQLExpressionItem> rest = datasources_->LoadWhereJoins(select->Where.Release());
      if (rest) select->Where.Set(std::move(rest));
    }
  }
  selectList_->LoadGroupByListFromAST(select->GroupBy.Release());
  if (select->Where) selectList_->LoadConditionFromAST(select->Where.Release(), ctWhere);
  if (select->Having) selectList_->LoadConditionFromAST(select->Having.Release(), ctHaving);
  selectList_->FinalizeLoading();
  // What stays on the node keeps its sub-selects as sub-queries of the model.
  LoadSubQueries(select);
  NotifySQLUpdated();
}

ImvUnionOperatorControl* TmvUnionSubQuery::GetUnionOperatorControl() const {
  return dynamic_cast<ImvUnionOperatorControl*>(GetControls(2));
}

bool TmvUnionSubQuery::MakeVisible(int index) const { return index != 0; }

void TmvUnionSubQuery::SetRatio(double value) {
  value = std::clamp(value, 0.0, 1.0);
  if (ratio_ == value) return;
  ratio_ = value;
  if (ImvControl* page = GetControls(0)) page->UpdateControlVisualParams(this);
}

TmvOwned<TastNode> TmvUnionSubQuery::CreateResultAST() {
  if (!SelectAST()) return nullptr;
  auto select = SelectAST()->CloneAs<TSQLSubQuerySelectExpression>(SQLContext());
  select->SelectItems.Set(selectList_->GetSelectItemsTree());
  if (datasources_->Count() > 0) {
    TmvOwned<TastNode> from = datasources_->GetResultAST();
    if (auto* clause = TmvCast<TSQLFromClause>(from.get())) {
      from.release();
      select->FromClause.Set(TmvOwned<TSQLFromClause>(clause));
    }
  }
  // Where-links print first in WHERE.
  select->Where.Set(datasources_->AddWhereJoinConditions(selectList_->GetConditionTree({ctWhere})));
  select->GroupBy.Set(selectList_->GetGroupByTree());
  select->Having.Set(selectList_->GetConditionTree({ctHaving}));
  // The sort keys of the rows belong to the whole query, which prints them;
  // a member's own ORDER BY that stayed on its node prints from there.
  return select;
}

TmvOwned<TSQLSubQuerySelectExpression> TmvUnionSubQuery::GetResultQueryAST() {
  TmvOwned<TastNode> tree = GetResultAST();
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(tree.get());
  if (!select) return nullptr;
  tree.release();
  return TmvOwned<TSQLSubQuerySelectExpression>(select);
}

WideString TmvUnionSubQuery::GetSql() {
  TmvOwned<TSQLSubQuerySelectExpression> select = GetResultQueryAST();
  if (!select || !SQLContext()) return {};
  TmvSubQuery* root = RootQuery();
  // The sort of the whole query is held by its first SELECT's rows, and
  // shown with it when it stands alone.
  if (!select->OrderBy && root && root->FirstSelect() == this) select->OrderBy.Set(selectList_->GetOrderByClause());
  return select->SimpleSQL(SQLContext()->SQLBuilderExpression());
}

void TmvUnionSubQuery::SetSql(const WideString& text) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return;
  TmvOwned<TSQLSubQuerySelectExpression> node;
  if (!WideTrim(text).empty()) {
    node = context->ParseUnionSubQuery(text);
  } else {
    node = TastCreate<TSQLSubQuerySelectExpression>(context);
    node->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
    node->SelectItems->Items.Add(TastCreate<TSQLSelectItemAllColumns>(context));
  }
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  GatherPrepareAndFixupContext(cteList, fromSources, false);
  node->PrepareAndFixupRecursive(cteList, fromSources);
  node->UnionOperator = GetUnionOperator();
  node->UnionAll = GetUnionAllFlag();
  TmvUpdateScope update(this);
  TmvReloadScope reload(Host(), this);
  datasources_->Clear();
  selectList_->Clear();
  LoadFromAST(std::move(node));
  reload.Loaded();
  if (TSQLSubQuerySelectExpression* select = SelectAST(); select && select->OrderBy)
    selectList_->LoadOrderByListFromAST(select->OrderBy.Release());
  NotifySQLUpdatedRecursive();
}

WideString TmvUnionSubQuery::ClauseText(const std::function<TastNode*(TSQLSubQuerySelectExpression*)>& clause) {
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(GetResultASTInternal());
  TastNode* node = select ? clause(select) : nullptr;
  return node && SQLContext() ? node->SimpleSQL(SQLContext()->SQLBuilderExpression()) : WideString();
}

WideString TmvUnionSubQuery::GetSelectListString() {
  return ClauseText([](TSQLSubQuerySelectExpression* s) { return s->SelectItems.get(); });
}
WideString TmvUnionSubQuery::GetFromClauseString() {
  return ClauseText([](TSQLSubQuerySelectExpression* s) { return s->FromClause.get(); });
}
WideString TmvUnionSubQuery::GetWhereClauseString() {
  return ClauseText([](TSQLSubQuerySelectExpression* s) { return s->Where.get(); });
}
WideString TmvUnionSubQuery::GetGroupByClauseString() {
  return ClauseText([](TSQLSubQuerySelectExpression* s) { return s->GroupBy.get(); });
}
WideString TmvUnionSubQuery::GetHavingClauseString() {
  return ClauseText([](TSQLSubQuerySelectExpression* s) { return s->Having.get(); });
}
WideString TmvUnionSubQuery::GetOrderByClauseString() {
  WideString text = ClauseText([](TSQLSubQuerySelectExpression* s) { return s->OrderBy.get(); });
  // The rows' sort is the whole query's, and prints with it.
  if (text.empty() && SQLContext())
    if (TmvOwned<TSQLOrderByClause> clause = selectList_->GetOrderByClause())
      text = clause->SimpleSQL(SQLContext()->SQLBuilderExpression());
  return text;
}

// --- Moves of the page's controls ---

void TmvUnionSubQuery::MoveLeftEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return;
  const int index = parent->IndexOf(this);
  if (index == 0) {
    if (!parent->ParentQuery()) return;
    {
      TmvUpdateScope update(parent->ParentQuery());
      SetUnionOperatorFull(parent->GetUnionOperatorFull());
      parent->RemoveFromBegin(this);
    }
    parent->DestroyIfEmpty();
    return;
  }
  TmvUpdateScope update(parent);
  TmvQueryBase* left = parent->Items(index - 1);
  if (auto* group = TmvCast<TmvUnionGroup>(left)) {
    group->AddToEnd(this);
    return;
  }
  if (index == 1) left->SetUnionOperatorFull(GetUnionOperatorFull());
  parent->Move(index, index - 1);
}

void TmvUnionSubQuery::MoveRightEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return;
  const int index = parent->IndexOf(this);
  if (index == parent->Count() - 1) {
    if (!parent->ParentQuery()) return;
    parent->RemoveFromEnd(this);
    parent->DestroyIfEmpty();
    return;
  }
  TmvUpdateScope update(parent);
  TmvQueryBase* right = parent->Items(index + 1);
  if (auto* group = TmvCast<TmvUnionGroup>(right)) {
    if (group->Count() > 0) group->Items(0)->SetUnionOperatorFull(group->GetUnionOperatorFull());
    group->AddToBegin(this);
    return;
  }
  if (index == 0) SetUnionOperatorFull(right->GetUnionOperatorFull());
  parent->Move(index, index + 1);
}

void TmvUnionSubQuery::BracketsEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return;
  const int index = parent->IndexOf(this);
  TmvUpdateScope update(this);
  TmvUnionGroup* group = parent->AddGroup();
  parent->Move(parent->IndexOf(group), index);
  SetParentQuery(group);
  group->SetUnionOperatorFull(GetUnionOperatorFull());
}

void TmvUnionSubQuery::RemoveEvent() {
  TmvSubQuery* root = RootQuery();
  // The last SELECT of a query stays: the entry is offered only with two or more.
  if (!root || root->UnionSubQueries().size() < 2) return;
  TmvUnionGroup* parent = ParentQuery();
  TmvUpdateScope update(root);
  Parent()->DestroyChild(this);
  if (parent && parent != root && parent->Count() == 0) parent->Parent()->DestroyChild(parent);
}

TmvUnionSubQuery* TmvUnionSubQuery::NewEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return nullptr;
  TmvUpdateScope update(parent);
  TmvUnionSubQuery* member = parent->Add();
  RootQuery()->SetActiveUnionSubquery(member);
  return member;
}

TmvUnionSubQuery* TmvUnionSubQuery::CopyToNewEvent() {
  TmvUnionGroup* parent = ParentQuery();
  if (!parent) return nullptr;
  TmvUpdateScope update(parent);
  TmvUnionSubQuery* member = parent->Add();
  TmvOwned<TSQLSubQuerySelectExpression> copy = GetResultQueryAST();
  if (copy) {
    copy->RestoreColumnPrefixRecursive(true);
    std::vector<TSQLWithClauseItem*> cteList;
    std::vector<TSQLFromSource*> fromSources;
    member->GatherPrepareAndFixupContext(cteList, fromSources, false);
    copy->PrepareAndFixupRecursive(cteList, fromSources);
    // The copy joins the union by the new member's operator.
    copy->UnionOperator = member->GetUnionOperator();
    copy->UnionAll = member->GetUnionAllFlag();
    member->LoadFromAST(std::move(copy));
  }
  RootQuery()->SetActiveUnionSubquery(member);
  return member;
}

// --- Fix-up context and datasource news ---

void TmvUnionSubQuery::GatherPrepareAndFixupContext(std::vector<TSQLWithClauseItem*>& cteList,
                                                    std::vector<TSQLFromSource*>& fromSources, bool includeOwn) {
  if (includeOwn) {
    TmvDatasourceList own;
    datasources_->GetDatasources(own);
    std::vector<TSQLFromSource*> sources;
    for (TmvDatasource* datasource : own)
      if (datasource->FromSource()) sources.push_back(datasource->FromSource());
    fromSources.insert(fromSources.begin(), sources.begin(), sources.end());
  }
  if (Parent()) Parent()->GatherPrepareAndFixupContext(cteList, fromSources, true);
}

void TmvUnionSubQuery::CollectVisibleDatasources(TmvDatasourceList& list) {
  datasources_->GetDatasources(list);
  TmvQueryBase::CollectVisibleDatasources(list);
}

bool TmvUnionSubQuery::NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) {
  TSQLFromSource* source = datasource->FromSource();
  if (!QueryAST() || !source) return false;
  // The rows and links hear of it themselves; this is for what stays on the node.
  NotifySQLUpdated();
  return !QueryAST()->RemoveReferencesToDatasource(source);
}

void TmvUnionSubQuery::NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) {
  if (QueryAST() && oldDatasource->FromSource() && newDatasource->FromSource() &&
      QueryAST()->ReplaceReferencesToDatasourceRecursive(oldDatasource->FromSource(), newDatasource->FromSource()))
    NotifySQLUpdated();
}

}  // namespace mv
