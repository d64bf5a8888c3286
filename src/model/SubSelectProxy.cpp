#include "model/SubSelectProxy.h"

#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/SelectClauses.h"

namespace mv {

const TastNodeClass& TmvSubSelectStatementProxy::StaticClass() {
  static const TastNodeClass info("TmvSubSelectStatementProxy", &TSQLSubSelectStatementProxy::StaticClass(), nullptr);
  return info;
}

const TSQLSubSelectStatementProxyClass& TmvSubSelectStatementProxy::ProxyClass() {
  static const TSQLSubSelectStatementProxyClass info(
      "TmvSubSelectStatementProxy", &TSQLSubSelectStatementProxy::StaticClass(),
      [](TmvBaseSQLContext* context, TmvObject* owner, TastNodeBase* parent,
         TSQLSubSelectStatement* statement) -> TSQLSubSelectStatementProxy* {
        return new TmvSubSelectStatementProxy(context, owner, parent, statement);
      });
  return info;
}

TmvSubSelectStatementProxy::TmvSubSelectStatementProxy(TmvBaseSQLContext* context, TmvObject* owner,
                                                       TastNodeBase* parent, TSQLSubSelectStatement* statement)
    : TSQLSubSelectStatementProxy(context, owner, parent, statement),
      ownerObject_(TmvCast<TmvQueryBuilderControlOwner>(owner)) {}

void TmvSubSelectStatementProxy::AfterConstruction() {
  TSQLSubSelectStatementProxy::AfterConstruction();
  if (!ownerObject_) throw EmvQueryBuilderError(u"A sub-query proxy needs a model object as its owner");
  ownerObject_->RegisterSubQueryProxy(this);
  // Nodes may be freed after their owner (a node freed while another free
  // runs waits in its queue): the proxy forgets an owner that is gone, and
  // the owner frees the sub-query with its other children.
  ownerObject_->OnDestroying().AddHandler(TmvHandlerId(this, 0), [this](TmvObject*) {
    ReleaseSubQuery();
    ownerObject_ = nullptr;
  });
  auto owned = TmvCreate<TmvSubQuery>(ownerObject_->Host(), ownerObject_);
  subQuery_ = owned.get();
  ownerObject_->RegisterChild(std::move(owned));
  subQuery_->OnDestroying().AddHandler(this, &TmvSubSelectStatementProxy::SubQueryDestroying);

  TastNodeBase* root = RootNode();
  if (auto* item = TmvCast<TSQLWithClauseItem>(root))
    subQuery_->SetKind(item, nullptr, nullptr);
  else if (TmvCast<TSQLFromQuery>(root) && TmvCast<TmvDatasourceQuery>(ownerObject_))
    subQuery_->SetKind(nullptr, static_cast<TmvDatasourceQuery*>(ownerObject_), nullptr);
  else if (TmvCast<TSQLExpressionSelect>(root) && TmvCast<TmvSelectItem>(ownerObject_))
    subQuery_->SetKind(nullptr, nullptr, ownerObject_);

  TmvUpdateScope update(subQuery_);
  subQuery_->SetFieldsRefresh([this] { UpdateFields(); });
  subQuery_->OnUpdated().AddHandler(this, &TmvSubSelectStatementProxy::SubqueryChanged);
  subQuery_->LoadFromStatement(ReleaseStatement());
  if (ownerObject_->HasControls() && subQuery_->CanCreateControls()) subQuery_->CreateControl();
}

TmvSubSelectStatementProxy::~TmvSubSelectStatementProxy() {
  if (!ownerObject_) return;
  ownerObject_->OnDestroying().RemoveHandler(TmvHandlerId(this, 0));
  ownerObject_->UnregisterSubQueryProxy(this);
  if (TmvSubQuery* subQuery = ReleaseSubQuery()) ownerObject_->DestroyChild(subQuery);
}

TmvSubQuery* TmvSubSelectStatementProxy::ReleaseSubQuery() {
  TmvSubQuery* subQuery = subQuery_;
  subQuery_ = nullptr;
  if (subQuery) {
    subQuery->OnDestroying().RemoveHandler(this, &TmvSubSelectStatementProxy::SubQueryDestroying);
    subQuery->OnUpdated().RemoveHandler(this, &TmvSubSelectStatementProxy::SubqueryChanged);
    subQuery->SetFieldsRefresh(nullptr);
  }
  return subQuery;
}

void TmvSubSelectStatementProxy::SubQueryDestroying(TmvObject*) { subQuery_ = nullptr; }

TmvOwned<TSQLSubSelectStatement> TmvSubSelectStatementProxy::GenerateASTTree(TmvBaseSQLContext* context) {
  if (!subQuery_) return nullptr;
  TmvOwned<TastNode> tree = subQuery_->MakeResultAST();
  auto* statement = TmvCast<TSQLSubSelectStatement>(tree.get());
  if (!statement) return nullptr;
  if (context && context != statement->SQLContext()) return statement->CloneAs<TSQLSubSelectStatement>(context);
  tree.release();
  return TmvOwned<TSQLSubSelectStatement>(statement);
}

TSQLSubQuerySelectExpression* TmvSubSelectStatementProxy::FirstUnionSubQuery() const {
  TmvUnionSubQuery* first = subQuery_ ? subQuery_->FirstSelect() : nullptr;
  return first ? TmvCast<TSQLSubQuerySelectExpression>(first->GetResultASTInternal()) : nullptr;
}

namespace {

bool SameFields(const TmvMetadataFieldsList& a, const TmvMetadataFieldsList& b) {
  if (a.Count() != b.Count()) return false;
  for (int i = 0; i < a.Count(); ++i) {
    const TmvMetadataField* x = a.Items(i);
    const TmvMetadataField* y = b.Items(i);
    if (x->NameStr() != y->NameStr() || x->FieldType() != y->FieldType() || x->FieldTypeName() != y->FieldTypeName())
      return false;
  }
  return true;
}

}  // namespace

void TmvSubSelectStatementProxy::SubqueryChanged(TmvObject*) {
  if (!subQuery_ || !ownerObject_ || ownerObject_->IsDestroying()) return;
  // A derived table and a common table expression pass their columns on at
  // once. Other sub-selects (in a condition or an expression) have no one
  // listening, and working the columns out means a bound copy of the whole
  // sub-select with everything nested in it, at every level of nesting: they
  // wait until someone asks.
  if (!subQuery_->IsSubQueryCTE() && !subQuery_->IsSubQueryDerivedTable()) {
    subQuery_->SetFieldsStale();
    return;
  }
  UpdateFields();
}

void TmvSubSelectStatementProxy::UpdateFields() {
  if (!subQuery_ || !ownerObject_ || ownerObject_->IsDestroying()) return;
  TmvOwned<TastNode> tree = subQuery_->GetResultAST();
  auto* statement = TmvCast<TSQLSubSelectStatement>(tree.get());
  if (!statement) return;
  statement->RestoreColumnPrefixRecursive(true);
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  ownerObject_->GatherPrepareAndFixupContext(cteList, fromSources, true);
  statement->PrepareAndFixupRecursive(cteList, fromSources);
  TSQLSubQuerySelectExpression* first = statement->FirstUnionSubQuery();
  TmvMetadataFieldsList* columns = first ? first->ResultFields() : nullptr;
  TmvMetadataFieldsList* fields = subQuery_->Fields();
  if (!columns || SameFields(*columns, *fields)) return;
  fields->BeginUpdate();
  fields->Assign(columns);
  fields->NotifyUpdated();
  fields->EndUpdate();
  subQuery_->DestroyCachedResultASTs();
}

}  // namespace mv
