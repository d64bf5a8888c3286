// Adding datasources to a SELECT: every form ends in AddDatasourceHelper,
// which binds the new entry, gives it a unique alias and lets the host
// move, change or refuse it. Also the unique aliases and the conversion of
// an entry into a derived table.
#include <algorithm>
#include <functional>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataQualifiedNamesList.h"
#include "metadata/MetadataRelation.h"
#include "model/Datasources.h"
#include "model/PropertyForms.h"
#include "model/QueryTree.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"
#include "support/MessageCatalog.h"

namespace mv {

namespace {

void RequireProvider(TmvBaseSQLContext* context) {
  if (!context || !context->SyntaxProvider()) throw EmvQueryBuilderError(MessageText(mvQBNoSyntaxProvider));
}

}  // namespace

// --- Aliases ---

WideString TmvUnionSubQuery::GetFromSourceBaseName(const TSQLFromSource* node) const {
  if (!node) return {};
  if (node->Alias && node->Alias->Name && !node->Alias->Name->Token.empty()) return node->Alias->Name->Token;
  if (TmvMetadataObject* object = node->GetMetadataObject()) return object->NameStrNotQuoted();
  if (auto* object = TmvCast<TSQLFromObject>(node)) {
    if (object->WithItem && object->WithItem->Name) return object->WithItem->Name->Token;
    // Names are held from the inside out: Items[0] is the object's own name.
    if (object->Object && object->Object->Items.Count() > 0) return object->Object->Token(0)->Token;
  }
  return {};
}

bool TmvUnionSubQuery::IsUniqueAlias(const WideString& name) const {
  TmvDatasourceList datasources;
  datasources_->GetDatasources(datasources);
  for (TmvDatasource* datasource : datasources)
    if (WideSameText(GetFromSourceBaseName(datasource->FromSource()), name)) return false;
  return true;
}

WideString TmvUnionSubQuery::CreateUniqueAlias(const WideString& base) const {
  for (int i = 0; i < 2147483646; ++i) {
    const WideString name = i == 0 ? base : base + IntToWide(i);
    if (IsUniqueAlias(name)) return name;
  }
  throw EmvQueryBuilderError(base, u"No unique alias for " + base);
}

// --- The common path ---

TmvDatasource* TmvUnionSubQuery::AddDatasourceHelper(TmvOwned<TSQLFromSource> node, TmvPoint position,
                                                     const TmvClass& datasourceClass) {
  TmvBaseSQLContext* context = SQLContext();
  TmvQueryModelHost* host = Host();
  host->LogHelper().Debug(u"TmvUnionSubQuery(%p).AddDatasourceHelper: AFromSource = \"%s\"",
                          static_cast<const void*>(this),
                          node && context ? node->SimpleSQL(context->SQLBuilderExpression()) : WideString());
  RequireProvider(context);
  if (!node) return nullptr;
  auto bind = [&] {
    node->RestoreColumnPrefixRecursive(true);
    std::vector<TSQLWithClauseItem*> cteList;
    std::vector<TSQLFromSource*> fromSources;
    GatherPrepareAndFixupContext(cteList, fromSources, false);
    node->PrepareAndFixupRecursive(cteList, fromSources);
  };
  bind();
  const WideString baseName = GetFromSourceBaseName(node.get());
  if (baseName.empty() || !IsUniqueAlias(baseName)) {
    WideString base = baseName;
    if (TmvMetadataObject* object = node->GetMetadataObject(); object && !object->AltName().empty())
      base = object->AltName();
    if (base.empty()) base = TmvCast<TSQLFromQuery>(node.get()) ? u"Query" : u"Object";
    auto alias = TastCreate<TSQLAliasObjectAlias>(context);
    alias->Name.Set(context->ParseIdentifierQuoteIfNeed(CreateUniqueAlias(base)));
    node->Alias.Set(std::move(alias));
  }
  if (host->OnBeforeAddDatasource) {
    bool allow = true;
    host->OnBeforeAddDatasource(host, this, position, allow, node.get());
    if (!allow) return nullptr;
    bind();  // the handler may have changed the node
  }
  // The news of the change is acted on at the end, when the handlers of the
  // host may free anything: the result is read through a watch.
  TmvDestroyWatch result;
  {
    TmvUpdateScope update(host->Query());
    TmvDatasource* datasource;
    {
      TmvUpdateScope groupUpdate(datasources_);
      if (datasourceClass.InheritsFrom(TmvDatasourceQuery::StaticClass()))
        datasource = datasources_->CreateDatasource<TmvDatasourceQuery>(std::move(node));
      else if (datasourceClass.InheritsFrom(TmvDataSourceObject::StaticClass()))
        datasource = datasources_->CreateDatasource<TmvDataSourceObject>(std::move(node));
      else
        datasource = datasources_->CreateDatasource<TmvDatasource>(std::move(node));
      datasource->SetLeft(position.X);
      datasource->SetTop(position.Y);
      datasources_->NotifyReorderNeeded();
    }
    result.Watch(datasource);
    if (HasControls() && datasource->CanCreateControls()) datasource->CreateControl();
    TmvDestroyWatch self;
    self.Watch(this);
    if (host->OnAfterAddDatasource) host->OnAfterAddDatasource(host, this, datasource);
    if (!self.Get() || !result.Get()) return nullptr;
    if (auto* page = dynamic_cast<ImvUnionSubQueryControl*>(GetControls(0)); page && datasource->GetControls(0))
      page->EnsureDatasourceVisible(datasource);
  }
  return static_cast<TmvDatasource*>(result.Get());
}

// --- The forms ---

TmvDataSourceObject* TmvUnionSubQuery::AddObject(const WideString& name, const WideString& alias) {
  return AddObjectAt(name, TmvPoint{}, alias);
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectAt(const WideString& name, TmvPoint position, const WideString& alias) {
  RequireProvider(SQLContext());
  return static_cast<TmvDataSourceObject*>(
      AddDatasourceHelper(SQLContext()->CreateSQLFromObject(name, alias), position, TmvDataSourceObject::StaticClass()));
}

TmvDataSourceObject* TmvUnionSubQuery::AddObject(const TSQLQualifiedName* name, const TastTokenIdentifier* alias) {
  return AddObjectAt(name, TmvPoint{}, alias);
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectAt(const TSQLQualifiedName* name, TmvPoint position,
                                                   const TastTokenIdentifier* alias) {
  RequireProvider(SQLContext());
  return static_cast<TmvDataSourceObject*>(
      AddDatasourceHelper(SQLContext()->CreateSQLFromObject(name, alias), position, TmvDataSourceObject::StaticClass()));
}

TmvDataSourceObject* TmvUnionSubQuery::AddObject(TmvMetadataObject* object, const TastTokenIdentifier* alias) {
  return AddObjectAt(object, TmvPoint{}, alias);
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectAt(TmvMetadataObject* object, TmvPoint position,
                                                   const TastTokenIdentifier* alias) {
  RequireProvider(SQLContext());
  if (!object) throw EmvQueryBuilderError(MessageText(mvQBBadObjectName));
  return AddObjectAt(object->FullName(), position, alias);
}

// --- Objects with their links ---

namespace {

// Links for a new object in one update of the SELECT; the object, or null
// when the host refused it or a handler freed it.
TmvDataSourceObject* LinkNewObject(TmvUnionSubQuery* member, const std::function<TmvDataSourceObject*()>& add) {
  TmvDestroyWatch result;
  {
    TmvUpdateScope update(member);
    TmvDataSourceObject* object = add();
    if (!object) return nullptr;
    result.Watch(object);
    member->AddFKLinksForObject(object);
    if (result.Get() && member->Host()->Options.CreateLinksByIdenticalFieldNames)
      member->AddIdenticalFieldsLinksForObject(object);
  }
  return static_cast<TmvDataSourceObject*>(result.Get());
}

}  // namespace

TmvDataSourceObject* TmvUnionSubQuery::AddObjectWithFK(const WideString& name, const WideString& alias) {
  return AddObjectWithFKAt(name, TmvPoint{}, alias);
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectWithFKAt(const WideString& name, TmvPoint position,
                                                         const WideString& alias) {
  return LinkNewObject(this, [&] { return AddObjectAt(name, position, alias); });
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectWithFK(const TSQLQualifiedName* name, const TastTokenIdentifier* alias) {
  return AddObjectWithFKAt(name, TmvPoint{}, alias);
}

TmvDataSourceObject* TmvUnionSubQuery::AddObjectWithFKAt(const TSQLQualifiedName* name, TmvPoint position,
                                                         const TastTokenIdentifier* alias) {
  return LinkNewObject(this, [&] { return AddObjectAt(name, position, alias); });
}

TmvDataSourceObject* TmvUnionSubQuery::AddLinkedObject(TmvDatasource* datasource, TmvMetadataRelation* relation) {
  TmvMetadataObject* own = datasource ? datasource->GetMetadataObject() : nullptr;
  if (!own || !relation) return nullptr;
  TmvMetadataObject* key = relation->GetKeyMetadataObject();
  TmvMetadataObject* child = relation->GetChildMetadataObject();
  TmvMetadataObject* target = key == own ? child : key;
  if (!target || (key != own && child != own)) return nullptr;
  TmvDestroyWatch result;
  {
    TmvUpdateScope update(this);
    TmvDataSourceObject* other = nullptr;
    for (TmvDatasource* present : datasources_->FindDatasourcesByMetadataObject(target))
      if (present != datasource && (other = TmvCast<TmvDataSourceObject>(present))) break;
    if (!other) other = AddObject(target, nullptr);
    if (!other) return nullptr;
    result.Watch(other);
    TmvDatasource* keySide = key == own ? datasource : other;
    TmvDatasource* childSide = key == own ? other : datasource;
    // Column pairs as far as both lists reach: a column without partner makes no link.
    const int pairs = std::min(relation->KeyFields()->Count(), relation->ChildFields()->Count());
    for (int i = 0; i < pairs; ++i) {
      const TSQLQualifiedName* keyName = relation->KeyFields()->Items(i);
      const TSQLQualifiedName* childName = relation->ChildFields()->Items(i);
      if (FindLink(childSide, childName, keyName, keySide) || FindLink(keySide, keyName, childName, childSide)) continue;
      AddLink(childSide, childName, keyName, keySide);
    }
    if (auto* page = dynamic_cast<ImvUnionSubQueryControl*>(GetControls(0)); page && childSide->GetControls(0))
      page->EnsureDatasourceVisible(childSide);
  }
  return static_cast<TmvDataSourceObject*>(result.Get());
}

TmvDatasource* TmvUnionSubQuery::AddFromExpression(const WideString& text, const WideString& alias) {
  return AddFromExpressionAt(text, TmvPoint{}, alias);
}

TmvDatasource* TmvUnionSubQuery::AddFromExpressionAt(const WideString& text, TmvPoint position,
                                                     const WideString& alias) {
  TmvBaseSQLContext* context = SQLContext();
  RequireProvider(context);
  TmvOwned<TSQLFromSource> node;
  try {
    node = context->ParseDatasource(text);
  } catch (const EmvSQLError&) {
    throw EmvQueryBuilderError(text, MessageText(mvQBBadFromObjectExpression));
  }
  if (!node) throw EmvQueryBuilderError(text, MessageText(mvQBBadFromObjectExpression));
  TmvOwned<TastTokenIdentifier> identifier;
  if (!alias.empty()) identifier = context->ParseIdentifierQuoteIfNeed(alias);
  return AddFromExpressionAt(std::move(node), position, identifier.get());
}

TmvDatasource* TmvUnionSubQuery::AddFromExpressionAt(TmvOwned<TSQLFromSource> node, TmvPoint position,
                                                     const TastTokenIdentifier* alias) {
  if (!Host() || !SQLContext() || !SQLContext()->SyntaxProvider() || !node) return nullptr;
  if (alias) {
    auto aliasNode = TastCreate<TSQLAliasObjectAlias>(SQLContext());
    aliasNode->Name.Set(alias->CloneAs<TastTokenIdentifier>(SQLContext()));
    node->Alias.Set(std::move(aliasNode));
  }
  const TmvClass& datasourceClass = TmvCast<TSQLFromObject>(node.get())  ? TmvDataSourceObject::StaticClass()
                                    : TmvCast<TSQLFromQuery>(node.get()) ? TmvDatasourceQuery::StaticClass()
                                                                         : TmvDatasource::StaticClass();
  return AddDatasourceHelper(std::move(node), position, datasourceClass);
}

TmvDatasource* TmvUnionSubQuery::AddStoredProc(const WideString& name, const WideString& alias) {
  return AddStoredProcAt(name, TmvPoint{}, alias);
}

TmvDatasource* TmvUnionSubQuery::AddStoredProcAt(const WideString& name, TmvPoint position, const WideString& alias) {
  TmvBaseSQLContext* context = SQLContext();
  RequireProvider(context);
  TmvOwned<TSQLQualifiedName> parsed = context->ParseQualifiedName(name);
  if (!parsed) throw EmvQueryBuilderError(name, MessageText(mvQBBadObjectName));
  TmvQueryModelHost* host = Host();
  WideString call;
  if (host->OnQueryProcedureParameters) {
    TmvMetadataContainer* container = context->MetadataContainer();
    TmvMetadataProcedure* procedure = container ? container->FindProcedureByFullName(parsed.get()) : nullptr;
    bool abort = false;
    host->OnQueryProcedureParameters(host, name, procedure, call, abort);
    if (abort) return nullptr;
  }
  // Without the host's answer the user is asked for the parameter values;
  // no one to ask is a cancel.
  if (!host->OnQueryProcedureParameters) {
    TmvProcedureParamsForm form(name);
    ImvUserInteraction* interaction = host->UserInteraction();
    if (!interaction || !interaction->ShowPropertiesForm(form)) return nullptr;
    call = form.GetResultExpression();
  }
  if (call.empty()) return nullptr;
  return AddFromExpressionAt(context->SyntaxProvider()->CreateWrapperForStoredProc(call), position, alias);
}

// --- Derived tables ---

namespace {

// An empty derived table named "QueryN": (SELECT FROM) QueryN.
TmvOwned<TSQLFromQuery> NewDerivedTable(TmvQueryModelHost* host) {
  TmvBaseSQLContext* context = host->SQLContext();
  auto query = TastCreate<TSQLFromQuery>(context);
  auto alias = TastCreate<TSQLAliasObjectAlias>(context);
  alias->Name.Set(context->ParseIdentifierQuoteIfNeed(host->CreateUniqueQueryNameStr()));
  query->Alias.Set(std::move(alias));
  auto statement = TastCreate<TSQLSubSelectStatement>(context);
  auto select = TastCreate<TSQLSubQuerySelectExpression>(context);
  select->SelectItems.Set(TastCreate<TSQLSelectItems>(context));
  select->FromClause.Set(TastCreate<TSQLFromClause>(context));
  statement->Add(std::move(select));
  query->SubQuery.Set(std::move(statement));
  return query;
}

}  // namespace

TmvDatasourceQuery* TmvUnionSubQuery::ConvertDatasourceToDerivedTable(TmvDatasource* datasource) {
  if (!datasource || !datasource->FromSource()) return nullptr;
  TmvUpdateScope update(datasources_);
  TmvOwned<TSQLFromQuery> query = NewDerivedTable(Host());
  TSQLFromClause* from = query->SubQuery->FirstUnionSubQuery()->FromClause.get();
  TmvOwned<TastNode> old = datasource->GetResultAST();
  if (auto* source = TmvCast<TSQLFromSource>(old.get())) {
    source->JoinKind.Reset();
    source->JoinExpression.Reset();
    std::vector<TSQLWithClauseItem*> cteList;
    std::vector<TSQLFromSource*> fromSources;
    GatherPrepareAndFixupContext(cteList, fromSources, false);
    source->RestoreColumnPrefixRecursive(true);
    source->PrepareAndFixupRecursive(cteList, fromSources);
    old.release();
    from->Add(TmvOwned<TSQLFromSource>(source));
  }
  auto* derived = static_cast<TmvDatasourceQuery*>(
      AddDatasourceHelper(std::move(query), TmvPoint{datasource->Left(), datasource->Top()}, TmvDatasourceQuery::StaticClass()));
  if (!derived) return nullptr;
  NotifyDatasourceReplaced(datasource, derived);
  datasources_->TopGroup()->DestroyChild(datasource);
  NotifySQLUpdatedRecursive();
  return derived;
}

TmvDatasourceQuery* TmvUnionSubQuery::AddSubQueryEvent() {
  RequireProvider(SQLContext());
  TmvUpdateScope update(this);
  return static_cast<TmvDatasourceQuery*>(
      AddDatasourceHelper(NewDerivedTable(Host()), TmvPoint{}, TmvDatasourceQuery::StaticClass()));
}

}  // namespace mv
