// Sub-queries and the main query: their registries, the active SELECT, the
// statement they keep, captions and text.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "model/SubSelectProxy.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvSubQuery, TmvUnionGroup)
MV_DEFINE_CLASS(TmvQuery, TmvSubQuery)

// --- TmvSubQueriesList ---

TmvSubQuery* TmvSubQueriesList::Item(int index) const {
  if (index < 0 || index >= Count()) RaiseListIndexError(index, Count());
  return items_[index];
}

int TmvSubQueriesList::IndexOf(const TmvSubQuery* subQuery) const {
  auto found = std::find(items_.begin(), items_.end(), subQuery);
  return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void TmvSubQueriesList::RegisterSubQuery(TmvSubQuery* subQuery) {
  if (IndexOf(subQuery) < 0) items_.push_back(subQuery);
}

void TmvSubQueriesList::UnregisterSubQuery(TmvSubQuery* subQuery) { std::erase(items_, subQuery); }

void TmvSubQueriesList::Collect(std::vector<TmvSubQuery*>& list) const {
  list.insert(list.end(), items_.begin(), items_.end());
}

// --- TmvSubQuery ---

TmvSubQuery::TmvSubQuery(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* parent) : TmvUnionGroup(host, parent) {}

TmvSubQuery::~TmvSubQuery() = default;

void TmvSubQuery::AfterConstruction() {
  TmvUnionGroup::AfterConstruction();
  fields_ = TmvCreate<TmvMetadataFieldsList>(nullptr, SQLContext());
  fields_->GetOnUpdated().AddHandler(TmvHandlerId(this, 1), [this](TmvObject*) { FieldsUpdated(); });
  for (TmvQueryBuilderControlOwner* owner = Parent(); owner; owner = owner->Parent()) {
    if (auto* subQuery = TmvCast<TmvSubQuery>(owner)) {
      parentSubQuery_ = subQuery;
      subQuery->subQueries_.RegisterSubQuery(this);
      break;
    }
  }
  if (Host()) Host()->RegisterSubQuery(this);
}

void TmvSubQuery::Destroying() {
  activeUnionSubQuery_ = nullptr;
  TmvUnionGroup::Destroying();
  if (parentSubQuery_) parentSubQuery_->subQueries_.UnregisterSubQuery(this);
  if (Host()) Host()->UnregisterSubQuery(this);
}

TSQLSubSelectStatement* TmvSubQuery::GetSubQueryAST() const { return TmvCast<TSQLSubSelectStatement>(QueryAST()); }

// --- The active SELECT ---

void TmvSubQuery::RegisterUnionSubQuery(TmvUnionSubQuery* member) {
  if (std::find(unionSubQueries_.begin(), unionSubQueries_.end(), member) == unionSubQueries_.end())
    unionSubQueries_.push_back(member);
  if (!activeUnionSubQuery_) activeUnionSubQuery_ = member;
}

void TmvSubQuery::UnregisterUnionSubQuery(TmvUnionSubQuery* member) {
  auto found = std::find(unionSubQueries_.begin(), unionSubQueries_.end(), member);
  if (found == unionSubQueries_.end()) return;
  if (activeUnionSubQuery_ == member) {
    // The next SELECT, else the one before, else none.
    TmvUnionSubQuery* successor = nullptr;
    if (found + 1 != unionSubQueries_.end())
      successor = *(found + 1);
    else if (found != unionSubQueries_.begin())
      successor = *(found - 1);
    ActiveMemberDestroying(successor);
  }
  unionSubQueries_.erase(std::find(unionSubQueries_.begin(), unionSubQueries_.end(), member));
}

void TmvSubQuery::ActiveMemberDestroying(TmvUnionSubQuery* successor) {
  TmvUnionSubQuery* old = activeUnionSubQuery_;
  const bool isActive = Host() && Host()->ActiveSubQuery() == this;
  if (isActive) Host()->NotifyActiveUnionSubQueryChanging(this);
  activeUnionSubQuery_ = successor;
  if (isActive) Host()->NotifyActiveUnionSubQueryChanged(this, old);
}

bool TmvSubQuery::SetActiveUnionSubquery(TmvUnionSubQuery* member) {
  if (member == activeUnionSubQuery_) return true;
  const bool isActive = Host() && Host()->ActiveSubQuery() == this;
  if (isActive && !Host()->NotifyActiveUnionSubQueryChanging(this)) return false;
  TmvUnionSubQuery* old = activeUnionSubQuery_;
  ImvControlFactory* factory = ControlFactory();
  if (factory && member && member->GetControls(0)) factory->ShowControl(member->GetControls(0), true);
  if (factory && old && old->GetControls(0)) factory->ShowControl(old->GetControls(0), false);
  activeUnionSubQuery_ = member;
  if (isActive) Host()->NotifyActiveUnionSubQueryChanged(this, old);
  for (TmvUnionSubQuery* each : unionSubQueries_)
    if (auto* button = dynamic_cast<ImvUnionSubQueryNavButtonControl*>(each->GetControls(1)))
      button->SetActive(each == member);
  return true;
}

void TmvSubQuery::UpdateUnionSubQueriesOrder() {
  if (unionSubQueries_.empty() || Count() == 0) return;
  std::vector<TmvUnionSubQuery*> ordered = GetUnionSubQueriesList();
  // Members not placed in a group yet keep their places at the end.
  for (TmvUnionSubQuery* member : unionSubQueries_)
    if (std::find(ordered.begin(), ordered.end(), member) == ordered.end()) ordered.push_back(member);
  unionSubQueries_ = std::move(ordered);
}

TmvUnionSubQuery* TmvSubQuery::FirstSelect() const {
  const TmvUnionGroup* group = this;
  while (group && group->Count() > 0) {
    TmvQueryBase* first = group->Items(0);
    if (auto* member = TmvCast<TmvUnionSubQuery>(first)) return member;
    group = TmvCast<TmvUnionGroup>(first);
  }
  return nullptr;
}

bool TmvSubQuery::IsQueryWithUnions() const {
  return Count() > 1 || (Count() == 1 && !TmvCast<TmvUnionSubQuery>(Items(0)));
}

void TmvSubQuery::SetKind(TSQLWithClauseItem* cteItem, TmvDatasourceQuery* derivedTable,
                          TmvQueryBuilderControlOwner* selectItem) {
  cteItem_ = cteItem;
  derivedTable_ = derivedTable;
  parentSelectItem_ = selectItem;
}

void TmvSubQuery::FieldsUpdated() {
  if (!cteItem_) return;
  TmvMetadataFieldsList* target = cteItem_->FieldsList();
  if (!target || target == fields_.get()) return;
  target->BeginUpdate();
  target->Assign(fields_.get());
  // An explicit column list names the columns.
  if (TastNodeWithList* names = cteItem_->ColumnNames.get()) {
    for (int i = 0; i < names->Items.Count() && i < target->Count(); ++i)
      if (auto* token = TmvCast<TastToken>(names->Items.Item(i))) target->Items(i)->SetNameToken(TmvCast<TastTokenIdentifier>(token));
  }
  target->EndUpdate();
}

// --- Captions ---

WideString TmvSubQuery::GetCaption() {
  WideString caption;
  if (GetIsMainQuery()) {
    caption = MessageText(mvQBMainQuery);
  } else if (cteItem_ && cteItem_->Name) {
    caption = u"CTE: " + cteItem_->Name->Token;
  } else if (derivedTable_ && !derivedTable_->GetAlias().empty()) {
    caption = derivedTable_->GetAlias();
  } else if (WideString alias = SelectItemCaption(); !alias.empty()) {
    caption = alias;
  } else {
    caption = GetSql();
    caption = WideStringReplace(caption, u"SELECT ", u"SEL ", rfReplaceAll | rfIgnoreCase);
    caption = WideStringReplace(caption, u" FROM ", u" FRM ", rfReplaceAll | rfIgnoreCase);
    if (caption.size() > 25) caption = caption.substr(0, 25) + u" ...";
  }
  if (Host() && Host()->OnGetTabHeaderText) Host()->OnGetTabHeaderText(Host(), this, caption);
  return caption;
}

WideString TmvSubQuery::SelectItemCaption() const {
  auto* row = TmvCast<TmvSelectItem>(parentSelectItem_);
  if (!row || !row->IsSupportsAlias()) return {};
  WideString alias = row->GetAliasString();
  if (alias.empty()) return alias;
  // Sub-queries that hang on one row are told apart by their place.
  std::vector<const TmvSubQuery*> siblings;
  for (TmvSubSelectStatementProxy* proxy : row->SubQueryProxies())
    if (proxy->SubQuery() && proxy->SubQuery()->ParentSelectItem() == row) siblings.push_back(proxy->SubQuery());
  if (siblings.size() >= 2) {
    auto found = std::find(siblings.begin(), siblings.end(), this);
    if (found != siblings.end()) alias += u"[" + IntToWide(found - siblings.begin() + 1) + u"]";
  }
  return alias;
}

void TmvSubQuery::UpdateCaption() {
  if (auto* tab = dynamic_cast<ImvSubQueryControl*>(GetControls(0))) tab->SetCaption(GetCaption());
}

bool TmvSubQuery::CanCreateControls() const {
  return TmvUnionGroup::CanCreateControls() || (Host() && Host()->HasControls());
}

void TmvSubQuery::DoAfterUpdated() {
  TmvUnionGroup::DoAfterUpdated();
  UpdateCaption();
}

// --- Text ---

WideString TmvSubQuery::GetSql() {
  if (!SQLContext()) return {};
  TmvOwned<TastNode> tree = GetResultAST();
  return tree ? tree->SimpleSQL(SQLContext()->SQLBuilderExpression()) : WideString();
}

TmvOwned<TSQLSubSelectStatement> CreateEmptyStatement(TmvBaseSQLContext* context, bool main) {
  TmvOwned<TSQLSubSelectStatement> statement;
  if (main)
    statement = TastCreate<TSQLSelectStatement>(context);
  else
    statement = TastCreate<TSQLSubSelectStatement>(context);
  auto select = TastCreate<TSQLSubQuerySelectExpression>(context);
  select->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
  select->SelectItems->Items.Add(TastCreate<TSQLSelectItemAllColumns>(context));
  TmvBaseSyntaxProvider* provider = context->SyntaxProvider();
  if (provider && provider->IsFromClauseMandatory()) select->FromClause.Set(TastCreate<TSQLFromClause>(context));
  statement->Add(std::move(select));
  return statement;
}

bool IsQueryTreeEmpty(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1 || statement->OrderBy) return false;
  if (statement->With && statement->With->Items.Count() > 0) return false;
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
  if (!select) return false;
  if (select->FromClause && select->FromClause->Items.Count() > 0) return false;
  if (select->Where || select->GroupBy || select->Having || select->OrderBy) return false;
  if (!select->SelectItems) return true;
  int count = select->SelectItems->Items.Count();
  if (count == 0) return true;
  if (count > 1) return false;
  return TmvCast<TSQLSelectItemAllColumns>(select->SelectItems->Items.Item(0)) != nullptr;
}

void MoveOrderByToLoneSelect(TSQLSubSelectStatement* statement) {
  // The sort of a query of one SELECT is that SELECT's, so that its names
  // bind to the SELECT's sources.
  if (statement->OrderBy && statement->GetCount() == 1)
    if (auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)); select && !select->OrderBy)
      select->OrderBy.Set(statement->OrderBy.Release());
}

void TmvSubQuery::SetSql(const WideString& text) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context) return;
  TmvOwned<TSQLSubSelectStatement> statement;
  if (WideTrim(text).empty())
    statement = CreateEmptyStatement(context, GetIsMainQuery());
  else if (GetIsMainQuery())
    statement = context->ParseSelect(text);
  else
    statement = context->ParseSubQuery(text);
  MoveOrderByToLoneSelect(statement.get());
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  GatherPrepareAndFixupContext(cteList, fromSources, false);
  statement->PrepareAndFixupRecursive(cteList, fromSources);
  Host()->BeginUpdate();
  TmvUpdateScope update(this);
  try {
    TmvReloadScope reload(Host(), this);
    ClearInternal();
    LoadFromStatement(std::move(statement));
    NotifySQLUpdatedRecursive();
    reload.Loaded();
  } catch (...) {
    Host()->EndUpdate();
    throw;
  }
  Host()->EndUpdate();
}

void TmvSubQuery::Clear() {
  TmvUpdateScope update(this);
  TmvUnionGroup::Clear();
  if (TSQLSubSelectStatement* statement = GetSubQueryAST()) statement->With.Reset();
}

void TmvSubQuery::ClearInternal() {
  if (!IsDestroying()) activeUnionSubQuery_ = nullptr;
  Clear();
  if (Host() && GetIsMainQuery()) Host()->ResetUniqueQueryNameCounter();
}

void TmvSubQuery::LoadFromStatement(TmvOwned<TSQLSubSelectStatement> statement) {
  if (!statement) statement = CreateEmptyStatement(SQLContext(), GetIsMainQuery());
  LoadFromAST(std::move(statement));
}

void TmvSubQuery::LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) {
  TmvUpdateScope update(this);
  SetQueryAST(std::move(node));
  // The common table expressions first, so that FROM entries find them.
  if (TSQLSubSelectStatement* statement = GetSubQueryAST(); statement && statement->With)
    LoadSubQueries(statement->With.get());
  LoadMembers();
  LoadOrderBy();
  if (!activeUnionSubQuery_) activeUnionSubQuery_ = FirstSelect();
  NotifySQLUpdated();
}

void TmvSubQuery::LoadOrderBy() {
  TmvUnionSubQuery* first = FirstSelect();
  TSQLSubSelectStatement* statement = GetSubQueryAST();
  if (!first || !statement) return;
  TSQLSubQuerySelectExpression* select = first->SelectAST();
  // The rows of the first SELECT hold the sort of the whole query.
  if (statement->OrderBy) {
    if (select && select->OrderBy && !IsQueryWithUnions()) select->OrderBy.Reset();
    first->SelectList()->LoadOrderByListFromAST(statement->OrderBy.Release());
  } else if (select && select->OrderBy) {
    first->SelectList()->LoadOrderByListFromAST(select->OrderBy.Release());
  }
}

TmvOwned<TastNode> TmvSubQuery::CreateResultAST() {
  TmvOwned<TastNode> tree = TmvUnionGroup::CreateResultAST();
  auto* statement = TmvCast<TSQLSubSelectStatement>(tree.get());
  if (!statement) return tree;
  if (statement->With && statement->With->Items.Count() == 0) statement->With.Reset();
  // The sort of the whole query, from the first SELECT's rows: a lone
  // SELECT takes it itself.
  if (TmvUnionSubQuery* first = FirstSelect()) {
    TmvOwned<TSQLOrderByClause> orderBy = first->SelectList()->GetOrderByClause();
    auto* only = statement->GetCount() == 1 ? TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)) : nullptr;
    if (only)
      only->OrderBy.Set(std::move(orderBy));
    else
      statement->OrderBy.Set(std::move(orderBy));
  }
  return tree;
}

void TmvSubQuery::GatherPrepareAndFixupContext(std::vector<TSQLWithClauseItem*>& cteList,
                                               std::vector<TSQLFromSource*>& fromSources, bool includeOwn) {
  if (includeOwn)
    if (TSQLSubSelectStatement* statement = GetSubQueryAST(); statement && statement->With)
      for (int i = 0; i < statement->With->Items.Count(); ++i)
        if (auto* item = TmvCast<TSQLWithClauseItem>(statement->With->Items.Item(i))) cteList.push_back(item);
  if (Parent()) Parent()->GatherPrepareAndFixupContext(cteList, fromSources, true);
}

void TmvSubQuery::CollectVisibleCte(std::vector<TSQLWithClauseItem*>& list) {
  if (TSQLSubSelectStatement* statement = GetSubQueryAST(); statement && statement->With) {
    std::vector<TSQLWithClauseItem*> own;
    for (int i = 0; i < statement->With->Items.Count(); ++i)
      if (auto* item = TmvCast<TSQLWithClauseItem>(statement->With->Items.Item(i))) own.push_back(item);
    list.insert(list.begin(), own.begin(), own.end());
  }
  TmvUnionGroup::CollectVisibleCte(list);
}

// --- TmvQuery ---

TSQLSelectStatement* TmvQuery::GetQueryAST() const { return TmvCast<TSQLSelectStatement>(QueryAST()); }

void TmvQuery::DoAfterUpdated() {
  TmvSubQuery::DoAfterUpdated();
  if (!IsDestroying() && Host() && !Host()->IsDestroying()) Host()->SQLUpdated();
}

}  // namespace mv
