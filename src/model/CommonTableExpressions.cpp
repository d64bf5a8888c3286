// Common table expressions of a query: adding, naming, renaming, removing.
#include <algorithm>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "model/Datasources.h"
#include "model/ModelMessages.h"
#include "model/QueryTree.h"
#include "model/SubSelectProxy.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

std::vector<TSQLWithClauseItem*> WithItems(const TSQLSubSelectStatement* statement) {
  std::vector<TSQLWithClauseItem*> items;
  if (statement && statement->With)
    for (int i = 0; i < statement->With->Items.Count(); ++i)
      if (auto* item = TmvCast<TSQLWithClauseItem>(statement->With->Items.Item(i))) items.push_back(item);
  return items;
}

// Every datasource of every SELECT of the model that names `cte`.
std::vector<std::pair<TmvUnionSubQuery*, TmvDataSourceObject*>> CteUses(TmvQueryModelHost* host,
                                                                         const TmvSubQuery* cte) {
  std::vector<std::pair<TmvUnionSubQuery*, TmvDataSourceObject*>> uses;
  for (TmvSubQuery* subQuery : host->SubQueries())
    for (TmvUnionSubQuery* member : subQuery->UnionSubQueries()) {
      TmvDatasourceList datasources;
      member->Datasources()->GetDatasources(datasources);
      for (TmvDatasource* datasource : datasources)
        if (auto* object = TmvCast<TmvDataSourceObject>(datasource); object && object->CteSubQuery() == cte)
          uses.emplace_back(member, object);
    }
  return uses;
}

}  // namespace

TSQLWithClause* TmvSubQuery::SubQueryCTEClauseAST() const {
  if (!cteItem_ || !parentSubQuery_ || !parentSubQuery_->GetSubQueryAST()) return nullptr;
  return parentSubQuery_->GetSubQueryAST()->With.get();
}

int TmvSubQuery::SubQueryCTEIndex() const {
  TSQLWithClause* clause = SubQueryCTEClauseAST();
  return clause ? clause->Items.IndexOf(cteItem_) : -1;
}

TSQLWithClauseItem* TmvSubQuery::InsertCTEItem(int index, TmvOwned<TSQLSubSelectStatement> statement,
                                               TmvOwned<TastTokenIdentifier> name) {
  TmvBaseSQLContext* context = SQLContext();
  TSQLSubSelectStatement* own = GetSubQueryAST();
  if (!own) return nullptr;
  const int count = own->With ? own->With->Items.Count() : 0;
  if (index < 0 || index > count) RaiseListIndexError(index, count);
  TmvUpdateScope update(this);
  auto item = TastCreate<TSQLWithClauseItem>(context);
  item->Name.Set(std::move(name));
  if (statement) {
    statement->PrepareAndFixupRecursive();
  } else {
    statement = TastCreate<TSQLSubSelectStatement>(context);
    auto select = TastCreate<TSQLSubQuerySelectExpression>(context);
    select->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
    select->FromClause.Set(TastCreate<TSQLFromClause>(context));
    statement->Add(std::move(select));
  }
  item->Query.Set(std::move(statement));
  if (!own->With) own->With.Set(TastCreate<TSQLWithClause>(context));
  TSQLWithClauseItem* added = item.get();
  own->With->Items.Insert(index, std::move(item));
  LoadSubQueries(added);
  NotifySQLUpdated();
  return added;
}

TSQLWithClauseItem* TmvSubQuery::AddNewCTE(const TSQLSubSelectStatement* statement, const TastTokenIdentifier* name) {
  const int count = GetSubQueryAST() && GetSubQueryAST()->With ? GetSubQueryAST()->With->Items.Count() : 0;
  return InsertNewCTE(count, statement, name);
}

TSQLWithClauseItem* TmvSubQuery::InsertNewCTE(int index, const TSQLSubSelectStatement* statement,
                                              const TastTokenIdentifier* name) {
  return InsertCTEItem(index, statement ? statement->CloneAs<TSQLSubSelectStatement>(SQLContext()) : nullptr,
                       name ? name->CloneAs<TastTokenIdentifier>(SQLContext()) : nullptr);
}

TSQLWithClauseItem* TmvSubQuery::AddNewCTE(const WideString& subQueryText, const WideString& name) {
  const int count = GetSubQueryAST() && GetSubQueryAST()->With ? GetSubQueryAST()->With->Items.Count() : 0;
  return InsertNewCTE(count, subQueryText, name);
}

TSQLWithClauseItem* TmvSubQuery::InsertNewCTE(int index, const WideString& subQueryText, const WideString& name) {
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLSubSelectStatement> statement;
  if (!WideTrim(subQueryText).empty()) statement = context->ParseSubQuery(subQueryText);
  return InsertCTEItem(index, std::move(statement), context->ParseIdentifierQuoteIfNeed(name));
}

bool TmvSubQuery::IsUniqueCTEName(const TastTokenIdentifier* name) const {
  for (TSQLWithClauseItem* item : WithItems(GetSubQueryAST()))
    if (item->Name && SQLContext()->CompareTokens(item->Name.get(), name) == 0) return false;
  return true;
}

WideString TmvSubQuery::CreateUniqueCTEName(const WideString& base) const {
  TmvBaseSQLContext* context = SQLContext();
  for (int i = 0; i < 2147483646; ++i) {
    const WideString name = i == 0 ? base : base + IntToWide(i);
    TmvOwned<TastTokenIdentifier> token = context->ParseIdentifierQuoteIfNeed(name);
    if (IsUniqueCTEName(token.get())) return name;
  }
  throw EmvQueryBuilderError(base, u"No unique common table expression name for " + base);
}

bool TmvSubQuery::CanRenameCTETo(const TastTokenIdentifier* name) const {
  TmvBaseSQLContext* context = SQLContext();
  TmvQuery* main = Host()->Query();
  for (TSQLWithClauseItem* item : WithItems(main->GetSubQueryAST()))
    if (item->Name && context->CompareIdentifiers(item->Name.get(), name) == 0) return false;
  // An object that is named by the expression itself takes the new name as its name in its SELECT.
  for (auto& [member, object] : CteUses(Host(), this))
    if (object->GetAlias().empty() && !member->IsUniqueAlias(name->Token)) return false;
  return true;
}

void TmvSubQuery::RenameCTE(const TastTokenIdentifier* name) {
  if (!cteItem_ || !name) return;
  Host()->BeginUpdate();
  try {
    cteItem_->Name.Set(name->CloneAs<TastTokenIdentifier>(SQLContext()));
    for (auto& [member, object] : CteUses(Host(), this)) object->RenameObject(name);
    Host()->Query()->NotifySQLUpdatedRecursive();
  } catch (...) {
    Host()->EndUpdate();
    throw;
  }
  Host()->EndUpdate();
}

void TmvSubQuery::RenameCTEEvent() {
  if (!cteItem_ || !cteItem_->Name) return;
  ImvUserInteraction* user = Host()->UserInteraction();
  WideString answer = cteItem_->Name->Token;
  if (!user || !user->InputBox(MessageText(mvQBCteRenameCaption), MessageText(mvQBCteRenameEnterNewName), answer))
    return;
  answer = WideTrim(answer);
  if (answer.empty()) throw Exception(MessageText(mvQBCteRenameNewNameCannotBeEmpty));
  if (answer == cteItem_->Name->Token) return;
  TmvOwned<TastTokenIdentifier> name = SQLContext()->ParseIdentifierQuoteIfNeed(answer);
  if (!CanRenameCTETo(name.get())) throw Exception(MessageFormat(mvQBCteRenameNewNameConflict, {answer}));
  RenameCTE(name.get());
}

void TmvSubQuery::RemoveCTEEvent() {
  TSQLWithClause* clause = SubQueryCTEClauseAST();
  TmvQueryModelHost* host = Host();
  ImvUserInteraction* user = host->UserInteraction();
  if (!clause || !user || !user->Confirm(MessageText(mvQBCteRemoveConfirm))) return;
  TSQLWithClauseItem* item = cteItem_;
  host->BeginUpdate();
  try {
    // Freeing the item frees its proxy and with it this sub-query: no
    // member of this object is read after it.
    clause->Items.Remove(item);
    host->Query()->NotifySQLUpdatedRecursive();
  } catch (...) {
    host->EndUpdate();
    throw;
  }
  host->EndUpdate();
}

// --- Using expressions from a SELECT ---

std::vector<TSQLWithClauseItem*> TmvUnionSubQuery::GetUsableCTEs() const {
  std::vector<TSQLWithClauseItem*> items = WithItems(Host()->Query()->GetSubQueryAST());
  TmvSubQuery* root = RootQuery();
  if (!root || !root->IsSubQueryCTE()) return items;
  const int index = root->SubQueryCTEIndex();
  TmvBaseSyntaxProvider* provider = SQLContext()->SyntaxProvider();
  const bool self = provider && provider->IsSupportRecursiveCTE() && root->FirstSelect() != this;
  items.resize(std::min<size_t>(items.size(), index + (self ? 1 : 0)));
  return items;
}

TmvDataSourceObject* TmvUnionSubQuery::AddNewCTEEvent() {
  TmvQueryModelHost* host = Host();
  TmvQuery* main = host->Query();
  TmvSubQuery* root = RootQuery();
  const int count = main->GetSubQueryAST() && main->GetSubQueryAST()->With ? main->GetSubQueryAST()->With->Items.Count() : 0;
  const int index = root && root->IsSubQueryCTE() ? root->SubQueryCTEIndex() : count;
  TmvUpdateScope update(main);
  TSQLWithClauseItem* item = main->InsertNewCTE(index, u"", host->CreateUniqueQueryNameStr());
  return AddExistingCTEEvent(item);
}

TmvDataSourceObject* TmvUnionSubQuery::AddExistingCTEEvent(TSQLWithClauseItem* item) {
  if (!item || !item->Name) return nullptr;
  const WideString name = item->Name->SimpleSQL(SQLContext()->SQLBuilderExpression());
  const WideString alias = IsUniqueAlias(item->Name->Token) ? WideString() : CreateUniqueAlias(item->Name->Token);
  return AddObject(name, alias);
}

TmvMenu TmvSubQuery::GetPopupMenu(ImvControl*) {
  TmvMenu menu;
  if (!cteItem_) return menu;
  menu.push_back({mvQBDeleteCTE, MessageText(mvQBDeleteCTE), true, false, {}, [this] { RemoveCTEEvent(); }});
  menu.push_back({mvQBRenameCTE, MessageText(mvQBRenameCTE), true, false, {}, [this] { RenameCTEEvent(); }});
  return menu;
}

}  // namespace mv
