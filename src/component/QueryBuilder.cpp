#include "component/QueryBuilder.h"

#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/QueryFixup.h"
#include "model/Datasources.h"
#include "model/QueryStatistics.h"
#include "model/QueryTree.h"
#include "support/MainThread.h"
#include "support/MessageCatalog.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

MV_DEFINE_CLASS(TmvQueryBuilder, TmvQueryModelHost)

TmvQueryBuilder::TmvQueryBuilder()
    : parameters_(this), metadataFilter_(std::make_unique<TmvMetadataFilter>()), asyncLoading_(*this) {
  Options.CanReorderDatasources = true;
  Options.LoadJoinsFromWhereClause = true;
  properties_ = TmvCreate<TmvQueryBuilderProperties>(*this);
  TmvMetadataContainer* container = TmvQueryModelHost::MetadataContainer();
  container->GetMetadataObjectVisible = [this](TmvObject*, TmvMetadataObject* object, bool& visible) {
    visible = true;
    TmvMetadataFilterApplyFor kind;
    if (!TmvMetadataFilter::KindOf(object, kind)) return;
    const std::function<void(TmvQueryBuilder*, const WideString&, bool&)>* handler = nullptr;
    switch (kind) {
      case mfTables: handler = &OnFilterTable; break;
      case mfViews: handler = &OnFilterView; break;
      case mfProcedures: handler = &OnFilterProcedure; break;
      case mfSynonyms: handler = &OnFilterSynonym; break;
    }
    if (handler && *handler) (*handler)(this, object->FullNameStrNotQuoted(), visible);
  };
}

TmvQueryBuilder::~TmvQueryBuilder() { *alive_ = false; }

void TmvQueryBuilder::AfterConstruction() {
  TmvQueryModelHost::AfterConstruction();
  TmvQueryModelHost::MetadataContainer()->GetOnUpdated().AddHandler(this, &TmvQueryBuilder::MetadataContainerUpdated);
  ResetUniqueQueryNameCounter();
}

void TmvQueryBuilder::BeforeDestruction() {
  // No background load may reach what is being freed.
  CancelAsyncMetadataLoading();
  TmvQueryModelHost::MetadataContainer()->GetOnUpdated().RemoveHandler(this, &TmvQueryBuilder::MetadataContainerUpdated);
  *alive_ = false;
  DestroyingNotification.Fire(this);
  // What waits for the deferred call goes now: the call will not come.
  controlsInUse_.clear();
  DestroyContainedControls();
  resultQueryAST_.reset();
  parameters_.SetParametersInvalid();
  TmvMetadataContainer* container = TmvQueryModelHost::MetadataContainer();
  if (container) container->GetMetadataObjectVisible = nullptr;
  TmvQueryModelHost::BeforeDestruction();
}

// --- Text ---


WideString TmvQueryBuilder::GetSql() {
  if (sleepMode_) return sleepModeText_;
  TSQLSelectStatement* tree = GetResultQueryAST();
  if (!tree || IsQueryTreeEmpty(tree)) return {};
  return tree->SimpleSQL(SQLContext()->SQLBuilderExpressionForServer());
}

bool TmvQueryBuilder::IsSelectStatement(const WideString& text) { return SQLContext()->IsSelectStatement(text); }

TmvOwned<TSQLSelectStatement> TmvQueryBuilder::ParseSQL(const WideString& text) {
  TmvBaseSQLContext* context = SQLContext();
  if (!context->SyntaxProvider()) throw EmvQueryBuilderError(MessageText(mvQBNoSyntaxProvider));
  try {
    TmvOwned<TSQLSelectStatement> statement;
    if (!WideTrim(text).empty()) {
      statement = context->ParseSelect(text);
      MoveOrderByToLoneSelect(statement.get());
    } else {
      statement.reset(static_cast<TSQLSelectStatement*>(CreateEmptyStatement(context, true).release()));
    }
    statement->SimplifyTreeRecursive();
    std::vector<TSQLWithClauseItem*> cteList;
    std::vector<TSQLFromSource*> fromSources;
    statement->PrepareAndFixupRecursive(cteList, fromSources);
    if (ParsingErrorOnUnknownObjects) CheckUnknownObjects(statement.get());
    return statement;
  } catch (const EmvSQLError& error) {
    // SetSql puts text that is not a SELECT to sleep instead.
    if (!OnSQLError || (sleepOnNotSelect_ && error.Kind == ekNotSelectStatement)) throw;
    OnSQLError(this, text, error.Message(), error.TokenText, error.Line, error.Col);
    return nullptr;
  }
}

void TmvQueryBuilder::SetSql(const WideString& text) {
  LogHelper().Debug(u"SetSyncSql: Sql = \"%s\"", text);
  // The parse tells whether the text is a SELECT: scanning it once more
  // beforehand only to ask would cost a twentieth of the whole round trip.
  TmvOwned<TSQLSelectStatement> statement;
  sleepOnNotSelect_ = AllowSleepMode;
  try {
    statement = ParseSQL(text);
  } catch (const EmvSQLError& error) {
    sleepOnNotSelect_ = false;
    if (AllowSleepMode && error.Kind == ekNotSelectStatement) {
      SetSleepMode(true);
      SetSleepModeText(text);
      return;
    }
    SetSleepMode(false);
    throw;
  } catch (...) {
    sleepOnNotSelect_ = false;
    throw;
  }
  sleepOnNotSelect_ = false;
  SetSleepMode(false);
  if (!statement) return;
  // Equal text keeps the model, its positions and active pages.
  // Compared as SQL gives the text: a query with nothing to select (say
  // "SELECT DISTINCT") reads "", and setting "" back changes nothing.
  TSQLBuilder& server = SQLContext()->SQLBuilderExpressionForServer();
  const WideString next = IsQueryTreeEmpty(statement.get()) ? WideString() : statement->SimpleSQL(server);
  if (GetSql() == next) return;
  BeginUpdate();
  SetSettingSql(true);
  try {
    TmvReloadScope reload(this, Query());
    ClearInternal();
    Query()->LoadFromStatement(std::move(statement));
    reload.Loaded();
  } catch (...) {
    SetSettingSql(false);
    EndUpdate();
    throw;
  }
  SetSettingSql(false);
  EndUpdate();
  PostDestroyContainedControlsMsg();
  UpdateVisibleSubQueries();
}

WideString TmvQueryBuilder::GetActivePartSQL(TmvQueryPart part) {
  switch (part) {
    case mvqpQuery:
      if (sleepMode_) return sleepModeText_;
      return GetResultQueryAST()->SimpleSQL(SQLContext()->SQLBuilderExpression());
    case mvqpSubQuery:
      return ActiveSubQuery() ? ActiveSubQuery()->GetSql() : WideString();
    case mvqpUnionSubQuery: {
      TmvUnionSubQuery* member = ActiveSubQuery() ? ActiveSubQuery()->ActiveUnionSubQuery() : nullptr;
      return member ? member->GetSql() : WideString();
    }
  }
  return {};
}

void TmvQueryBuilder::Clear() {
  BeginUpdate();
  try {
    TmvReloadScope reload(this, Query());
    ClearInternal();
    if (!IsDestroying()) Query()->LoadFromStatement(nullptr);
    reload.Loaded();
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TmvQueryBuilder::ClearInternal() {
  if (!IsDestroying()) {
    if (ActiveSubQuery() == Query()) {
      DoActiveSubQueryChanging(Query());
      DoActiveSubQueryChanged(Query());
    } else {
      bool setting = IsSettingSql();
      // Going back to the main query cannot be refused.
      SetSettingSql(true);
      SetActiveSubQuery(Query());
      SetSettingSql(setting);
    }
  }
  Query()->ClearInternal();
}

// --- The result tree ---

TSQLSelectStatement* TmvQueryBuilder::GetResultQueryAST() {
  if (!resultQueryAST_) GenerateResultQueryAST();
  return resultQueryAST_.get();
}

void TmvQueryBuilder::GenerateResultQueryAST() {
  resultQueryAST_.reset();
  // Made afresh, not kept in the model as well: the builder keeps it.
  TmvOwned<TastNode> tree = Query()->MakeResultAST();
  auto* statement = TmvCast<TSQLSelectStatement>(tree.get());
  if (!statement) {
    parameters_.ReloadParametersListFromAST(nullptr);
    return;
  }
  resultQueryAST_.reset(static_cast<TSQLSelectStatement*>(tree.release()));
  // The cached parts keep each column's binding: write the present prefixes
  // (a renamed alias) before the names are looked up again.
  resultQueryAST_->RestoreColumnPrefixRecursive(true);
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  resultQueryAST_->PrepareAndFixupRecursive(cteList, fromSources);
  parameters_.ReloadParametersListFromAST(resultQueryAST_.get());
}

void TmvQueryBuilder::SetResultQueryASTInvalid() {
  resultQueryAST_.reset();
  parameters_.SetParametersInvalid();
  if (!IsDestroying()) QueryStatistics()->SetStatisticsInvalid();
}

// --- Statistics ---

TmvQueryStatistics* TmvQueryBuilder::GetQueryStatistics() {
  TmvQueryStatistics* statistics = QueryStatistics();
  if (!statistics->Valid()) ReloadStatistics();
  return statistics;
}

void TmvQueryBuilder::ReloadStatistics() {
  if (IsDestroying()) return;
  TSQLSelectStatement* tree = GetResultQueryAST();
  if (tree) {
    tree->PrepareCalcStatisticsRecursive();
    // A pass adds what each node learnt from its children; what a derived
    // table's fields learnt reaches the columns that read them in the next.
    while (tree->CalcStatisticsRecursive() > 0) {
    }
  }
  QueryStatistics()->ReloadStatistics(tree);
}

void TmvQueryBuilder::MetadataContainerUpdated(TmvObject*) {
  if (!IsDestroying()) QueryStatistics()->SetStatisticsInvalid();
}

// --- Updates ---

void TmvQueryBuilder::BeginUpdate() {
  ++updateCount_;
  TmvQueryModelHost::BeginUpdate();
}

void TmvQueryBuilder::EndUpdate() {
  --updateCount_;
  // The model's end runs SQLUpdated, which still reads SilentUpdate.
  TmvQueryModelHost::EndUpdate();
  if (updateCount_ > 0) return;
  silentUpdate_ = false;
  if (PartialMetadataLoading && !WorkOffline() && !refreshingAfterPartialLoading_) DoPartialMetadataLoading();
}

void TmvQueryBuilder::SQLUpdated() {
  bool allow = true;
  if (sleepMode_ && !silentUpdate_ && OnWakeQuery) OnWakeQuery(this, allow);
  if (!allow) {
    // A change on the pane while the text sleeps is thrown away later, so
    // that the handler that made it can end first.
    if (sleepMode_ && !silentClearPosted_) {
      silentClearPosted_ = true;
      std::weak_ptr<bool> alive = alive_;
      MainThreadDispatcher().Post([this, alive] {
        std::shared_ptr<bool> still = alive.lock();
        if (!still || !*still) return;
        silentClearPosted_ = false;
        SilentClearSQL();
      });
    }
    return;
  }
  if (!silentUpdate_) SetSleepMode(false);
  SetResultQueryASTInvalid();
  DoSQLUpdated();
}

void TmvQueryBuilder::DoSQLUpdated() {
  if (loading_) {
    sqlUpdatedPending_ = true;
    return;
  }
  sqlUpdatedPending_ = false;
  if (OnSQLUpdated) OnSQLUpdated(this);
  SQLUpdatedNotification.Fire(this);
}

void TmvQueryBuilder::Loaded() {
  loading_ = false;
  if (sqlUpdatedPending_) DoSQLUpdated();
}

// --- Sleep mode ---

void TmvQueryBuilder::SetSleepMode(bool value) {
  if (value == sleepMode_) return;
  sleepMode_ = value;
  if (value) {
    if (OnSleep) OnSleep(this);
  } else {
    // The held text is gone: the same text later sleeps (and clears) again.
    sleepModeText_.clear();
    if (OnWake) OnWake(this);
  }
}

void TmvQueryBuilder::SetSleepModeText(const WideString& text) {
  if (text == sleepModeText_) return;
  silentUpdate_ = true;
  BeginUpdate();
  try {
    Clear();
    sleepModeText_ = text;
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TmvQueryBuilder::SilentClearSQL() {
  silentUpdate_ = true;
  BeginUpdate();
  try {
    Clear();
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

// --- Controls that wait to be freed ---

void TmvQueryBuilder::DestroyInternalControl(ImvControl* control) {
  if (!control) return;
  if (std::find(controlsToDestroy_.begin(), controlsToDestroy_.end(), control) == controlsToDestroy_.end())
    controlsToDestroy_.push_back(control);
  PostDestroyContainedControlsMsg();
}

void TmvQueryBuilder::PreventInternalControlDestroying(ImvControl* control) {
  if (std::find(controlsInUse_.begin(), controlsInUse_.end(), control) == controlsInUse_.end())
    controlsInUse_.push_back(control);
}

void TmvQueryBuilder::AllowInternalControlDestroying(ImvControl* control) {
  std::erase(controlsInUse_, control);
  if (!controlsToDestroy_.empty()) PostDestroyContainedControlsMsg();
}

void TmvQueryBuilder::PostDestroyContainedControlsMsg() {
  if (destroyControlsPosted_ || controlsToDestroy_.empty()) return;
  destroyControlsPosted_ = true;
  std::weak_ptr<bool> alive = alive_;
  MainThreadDispatcher().Post([this, alive] {
    std::shared_ptr<bool> still = alive.lock();
    if (!still || !*still) return;
    destroyControlsPosted_ = false;
    DestroyContainedControls();
  });
}

void TmvQueryBuilder::DestroyContainedControls() {
  std::vector<ImvControl*> waiting;
  waiting.swap(controlsToDestroy_);
  for (ImvControl* control : waiting) {
    if (std::find(controlsInUse_.begin(), controlsInUse_.end(), control) != controlsInUse_.end())
      controlsToDestroy_.push_back(control);
    else if (ControlFactory())
      ControlFactory()->DestroyControl(control);
  }
}

// --- Active parts ---

bool TmvQueryBuilder::DoActiveSubQueryChanging(TmvSubQuery* subQuery) {
  bool allow = true;
  if (OnActiveSubQueryChanging) OnActiveSubQueryChanging(this, subQuery, allow);
  if (!allow) return false;
  ActiveSubQueryChangingNotification.Fire(this);
  return !subQuery || DoActiveUnionSubQueryChanging(subQuery);
}

void TmvQueryBuilder::DoActiveSubQueryChanged(TmvSubQuery* subQuery) {
  if (OnActiveSubQueryChanged) OnActiveSubQueryChanged(this, subQuery);
  ActiveSubQueryChangedNotification.Fire(this);
  if (subQuery) DoActiveUnionSubQueryChanged(subQuery);
}

bool TmvQueryBuilder::DoActiveUnionSubQueryChanging(TmvSubQuery* subQuery) {
  if (!TmvQueryModelHost::DoActiveUnionSubQueryChanging(subQuery)) return false;
  ActiveUnionSubQueryChangingNotification.Fire(this);
  return true;
}

void TmvQueryBuilder::DoActiveUnionSubQueryChanged(TmvSubQuery* subQuery) {
  TmvQueryModelHost::DoActiveUnionSubQueryChanged(subQuery);
  ActiveUnionSubQueryChangedNotification.Fire(this);
  if (!IsSettingSql()) UpdateVisibleSubQueries();
}

std::vector<TmvUnionSubQuery*> TmvQueryBuilder::GetUnionSubQueriesList() const {
  std::vector<TmvUnionSubQuery*> list;
  for (TmvSubQuery* subQuery : SubQueries())
    list.insert(list.end(), subQuery->UnionSubQueries().begin(), subQuery->UnionSubQueries().end());
  return list;
}

std::vector<TmvSubQuery*> TmvQueryBuilder::GetParentSubQueries(TmvSubQuery* subQuery) const {
  std::vector<TmvSubQuery*> list;
  for (TmvSubQuery* each = subQuery; each; each = each->ParentSubQuery()) list.insert(list.begin(), each);
  return list;
}

namespace {

// Whether `object` lies below `owner` in the ownership of the model.
bool IsBelow(const TmvQueryBuilderControlOwner* object, const TmvQueryBuilderControlOwner* owner) {
  for (const TmvQueryBuilderControlOwner* each = object ? object->Parent() : nullptr; each; each = each->Parent())
    if (each == owner) return true;
  return false;
}

void AddOnce(std::vector<TmvSubQuery*>& list, TmvSubQuery* subQuery) {
  if (std::find(list.begin(), list.end(), subQuery) == list.end()) list.push_back(subQuery);
}

}  // namespace

void TmvQueryBuilder::CollectChildSubQueries(std::vector<TmvSubQuery*>& list,
                                             TmvQueryBuilderControlOwner* owner) const {
  if (!owner) return;
  for (TmvSubQuery* subQuery : SubQueries()) {
    if (!IsBelow(subQuery, owner)) continue;
    AddOnce(list, subQuery);
  }
  // Common table expressions that a SELECT below reads by name.
  std::vector<TmvUnionSubQuery*> members;
  if (auto* member = TmvCast<TmvUnionSubQuery>(owner))
    members.push_back(member);
  else if (auto* group = TmvCast<TmvUnionGroup>(owner))
    members = group->GetUnionSubQueriesList();
  for (TmvSubQuery* subQuery : std::vector<TmvSubQuery*>(list))
    for (TmvUnionSubQuery* member : subQuery->UnionSubQueries()) members.push_back(member);
  for (TmvUnionSubQuery* member : members) {
    TmvDatasourceList datasources;
    member->CollectVisibleDatasources(datasources);
    for (TmvDatasource* datasource : datasources) {
      auto* object = TmvCast<TmvDataSourceObject>(datasource);
      TmvSubQuery* cte = object ? object->CteSubQuery() : nullptr;
      if (!cte || cte == owner || std::find(list.begin(), list.end(), cte) != list.end()) continue;
      list.push_back(cte);
      CollectChildSubQueries(list, cte);
    }
  }
}

std::vector<TmvSubQuery*> TmvQueryBuilder::VisibleSubQueries() const {
  if (FilterTabsByCurrentQueryPart == mvqpQuery || !ActiveSubQuery()) return SubQueries();
  std::vector<TmvSubQuery*> list = GetParentSubQueries(ActiveSubQuery());
  TmvQueryBuilderControlOwner* owner = ActiveSubQuery();
  if (FilterTabsByCurrentQueryPart == mvqpUnionSubQuery && ActiveSubQuery()->ActiveUnionSubQuery())
    owner = ActiveSubQuery()->ActiveUnionSubQuery();
  CollectChildSubQueries(list, owner);
  return list;
}

void TmvQueryBuilder::UpdateVisibleSubQueries() {
  if (!HasControls()) return;
  std::vector<TmvSubQuery*> visible = VisibleSubQueries();
  for (TmvSubQuery* subQuery : SubQueries())
    if (std::find(visible.begin(), visible.end(), subQuery) == visible.end())
      subQuery->DestroyControl();
    else
      subQuery->CreateControl();
}

TmvOwned<TastTokenIdentifier> TmvQueryBuilder::CreateUniqueQueryName() {
  return SQLContext()->ParseIdentifierQuoteIfNeed(CreateUniqueQueryNameStr());
}

// --- Metadata ---

TmvBaseMetadataProvider* TmvQueryBuilder::MetadataProvider() const { return SQLContext()->MetadataProvider(); }

void TmvQueryBuilder::SetMetadataProvider(TmvBaseMetadataProvider* provider) {
  SQLContext()->SetMetadataProvider(provider);
}

bool TmvQueryBuilder::WorkOffline() const { return TmvQueryModelHost::MetadataContainer()->WorkOffline(); }

void TmvQueryBuilder::SetWorkOffline(bool value) { TmvQueryModelHost::MetadataContainer()->SetWorkOffline(value); }

void TmvQueryBuilder::CheckProviders() const {
  RegisterMetadataMessages();
  if (!SyntaxProvider()) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  if (!MetadataProvider()) throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
}

void TmvQueryBuilder::RefreshMetadata() {
  CheckProviders();
  CancelAsyncMetadataLoading();
  TmvMetadataContainer* container = MetadataContainer();
  container->BeginUpdate();
  try {
    container->Clear();
    container->LoadMetadataByFilter(metadataFilter_.get(), nullptr);
  } catch (...) {
    container->EndUpdate();
    throw;
  }
  container->EndUpdate();
  RefreshDatasourcesMetadata(Query());
}

void TmvQueryBuilder::RefreshMetadataAsync() {
  MetadataContainer()->Clear();
  LoadMetadataAsync(nullptr);
}

void TmvQueryBuilder::LoadMetadata(const TSQLQualifiedName* database) {
  LoadMetadataByFilter(metadataFilter_.get(), database);
  if (OnMetadataLoaded) OnMetadataLoaded(this);
}

void TmvQueryBuilder::LoadMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  MetadataContainer()->LoadMetadataByFilter(filter, database);
}

void TmvQueryBuilder::LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                         const TSQLQualifiedName* database) {
  MetadataContainer()->LoadMetadataByMask(objectMask, schemaMask, database, true);
}

void TmvQueryBuilder::LoadMetadataAsync(const TSQLQualifiedName* database) {
  asyncLoading_.LoadMetadataAsync(SyntaxProvider(), MetadataProvider(), metadataFilter_.get(), database);
}

void TmvQueryBuilder::CancelAsyncMetadataLoading() { asyncLoading_.CancelAsyncMetadataLoading(); }

void TmvQueryBuilder::ClearMetadata(const TSQLQualifiedName* database) { ClearMetadataByMask(u"", u"", database); }

void TmvQueryBuilder::ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                                          const TSQLQualifiedName* database) {
  MetadataContainer()->ClearMetadataByMask(objectMask, schemaMask, database, true);
}

void TmvQueryBuilder::MetadataLoaded() {
  if (OnMetadataLoaded) OnMetadataLoaded(this);
  RefreshDatasourcesMetadata();
  MetadataLoadedNotification.Fire(this);
}

void TmvQueryBuilder::NotifyAsyncLoadingStarted() { AsyncLoadingStartedNotification.Fire(this); }

void TmvQueryBuilder::NotifyAsyncLoadingCompleted() { AsyncLoadingCompletedNotification.Fire(this); }

void TmvQueryBuilder::PostRaiseAsyncException(std::exception_ptr error) {
  std::weak_ptr<bool> alive = alive_;
  MainThreadDispatcher().Post([alive, error] {
    std::shared_ptr<bool> still = alive.lock();
    if (still && *still) std::rethrow_exception(error);
  });
}

namespace {

void RefreshGroup(TmvDatasourceGroup* group) {
  for (int i = 0; i < group->Count(); ++i) {
    TmvDatasourceBase* item = group->Items(i);
    if (auto* nested = TmvCast<TmvDatasourceGroup>(item))
      RefreshGroup(nested);
    else if (auto* datasource = TmvCast<TmvDatasource>(item))
      datasource->RefreshMetadata();
  }
}

}  // namespace

void TmvQueryBuilder::RefreshDatasourcesMetadata(TmvSubQuery* subQuery) {
  if (!subQuery) return;
  BeginUpdate();
  try {
    for (TmvUnionSubQuery* member : std::vector<TmvUnionSubQuery*>(subQuery->UnionSubQueries()))
      RefreshGroup(member->Datasources());
    for (TmvSubQuery* child : subQuery->SubQueries().GetList()) RefreshDatasourcesMetadata(child);
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TmvQueryBuilder::RefreshDatasourcesMetadata() {
  BeginUpdate();
  try {
    for (TmvSubQuery* subQuery : std::vector<TmvSubQuery*>(SubQueries()))
      for (TmvUnionSubQuery* member : std::vector<TmvUnionSubQuery*>(subQuery->UnionSubQueries()))
        RefreshGroup(member->Datasources());
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TmvQueryBuilder::DoPartialMetadataLoading() {
  if (WorkOffline()) return;
  const TmvLogHelper& log = LogHelper();
  log.Debug(u"DoPartialMetadataLoding: start");
  // The objects the query reads; those without a metadata object are what
  // the container lacks.
  TmvStatisticsDatabaseObjectsList* objects = GetQueryStatistics()->UsedDatabaseObjects();
  if (objects->GetCount() == 0) {
    log.Debug(u"\tDoPartialMetadataLoding: query does not reference any object");
    log.Debug(u"DoPartialMetadataLoding: end");
    return;
  }
  TmvMetadataFilter filter;
  for (int i = 0; i < objects->GetCount(); ++i) {
    const TmvStatisticsDatabaseObject* object = objects->GetItems(i);
    if (object->MetadataObject()) continue;
    WideString name = object->FullName()->GetNonQualifiedNameNames();
    log.Debug(u"\tDoPartialMetadataLoding: unresolved reference to " + name + u" found");
    // A filter's object mask matches the object's own name (the innermost
    // part), and loosely: the binding decides which of the objects fits.
    if (object->ObjectName()->IsEmpty()) continue;
    TmvMetadataFilterItem* item = filter.Add();
    item->SetObjectMask(object->ObjectName()->Token);
    item->SetObjectMaskCaseSensitive(false);
  }
  if (filter.Count() == 0 || !MetadataProvider()) {
    log.Debug(u"DoPartialMetadataLoding: end");
    return;
  }
  log.Debug(u"\tDoPartialMetadataLoding: loading metadata");
  TmvMetadataContainer* own = MetadataContainer();
  TmvOwned<TmvMetadataContainer> loaded = TmvCreate<TmvMetadataContainer>(nullptr, SQLContext());
  loaded->LoadMetadataByFilter(&filter, nullptr);
  if (IsQualifiedNameEmpty(own->DefaultDatabaseName()) && !IsQualifiedNameEmpty(loaded->DefaultDatabaseName())) {
    log.Debug(u"\tDoPartialMetadataLoding: loading default database name");
    own->SetDefaultDatabaseName(loaded->DefaultDatabaseName());
  }
  if ((!own->DefaultSchemaNames() || own->DefaultSchemaNamesStr().empty()) && loaded->DefaultSchemaNames() &&
      !loaded->DefaultSchemaNamesStr().empty()) {
    log.Debug(u"\tDoPartialMetadataLoding: loading default schema names");
    own->SetDefaultSchemaNamesStr(loaded->DefaultSchemaNamesStr());
  }
  int added = 0;
  for (int i = 0; i < loaded->Count(); ++i) {
    TmvMetadataObject* object = loaded->Items(i);
    if (own->FindObjectByFullName(object->FullName())) continue;
    TmvMetadataObject* copy = own->AddObject(object->FullName(), object->MetadataClass(), object->System());
    copy->Assign(object);
    ++added;
  }
  log.Debug(u"\tDoPartialMetadataLoding: loaded " + IntToWide(added) + u" suitable objects");
  if (added > 0) {
    log.Debug(u"\tDoPartialMetadataLoding: re-fixup loaded query");
    // The end of the refresh's own update looks for nothing more.
    refreshingAfterPartialLoading_ = true;
    try {
      RefreshDatasourcesMetadata();
    } catch (...) {
      refreshingAfterPartialLoading_ = false;
      throw;
    }
    refreshingAfterPartialLoading_ = false;
  }
  log.Debug(u"DoPartialMetadataLoding: end");
}

std::vector<TmvNamedObject> TmvQueryBuilder::GetNames(const TmvClass& kind, bool system) const {
  std::vector<TmvNamedObject> names;
  TmvMetadataContainer* container = TmvQueryModelHost::MetadataContainer();
  for (int i = 0; i < container->Count(); ++i) {
    TmvMetadataObject* object = container->Items(i);
    if (object->System() != system || !object->InheritsFrom(kind)) continue;
    if (!container->IsMetadataObjectVisible(object)) continue;
    names.push_back({object->FullNameStrNotQuoted(), object});
  }
  return names;
}

std::vector<TmvNamedObject> TmvQueryBuilder::GetTableNames(bool system) const {
  return GetNames(TmvMetadataTable::StaticClass(), system);
}
std::vector<TmvNamedObject> TmvQueryBuilder::GetViewNames(bool system) const {
  return GetNames(TmvMetadataView::StaticClass(), system);
}
std::vector<TmvNamedObject> TmvQueryBuilder::GetProcedureNames(bool system) const {
  return GetNames(TmvMetadataProcedure::StaticClass(), system);
}
std::vector<TmvNamedObject> TmvQueryBuilder::GetSynonymNames(bool system) const {
  return GetNames(TmvMetadataSynonym::StaticClass(), system);
}

std::vector<WideString> TmvQueryBuilder::GetDatabasesList() {
  std::vector<WideString> list;
  if (WorkOffline() || !MetadataProvider()) return list;
  SQLContext()->GetDatabasesList(MetadataProvider()->Connection(), list);
  return list;
}

bool TmvQueryBuilder::IsNameOf(const TmvClass& kind, const WideString& name) const {
  TmvOwned<TSQLQualifiedName> parsed = SQLContext()->ParseQualifiedNameQuoteIfNeed(name);
  if (!parsed) return false;
  TmvMetadataObject* object = TmvQueryModelHost::MetadataContainer()->FindObjectByFullName(parsed.get());
  return object && object->InheritsFrom(kind);
}

bool TmvQueryBuilder::IsNameOfTable(const WideString& name) const {
  return IsNameOf(TmvMetadataTable::StaticClass(), name);
}
bool TmvQueryBuilder::IsNameOfView(const WideString& name) const {
  return IsNameOf(TmvMetadataView::StaticClass(), name);
}
bool TmvQueryBuilder::IsNameOfProcedure(const WideString& name) const {
  return IsNameOf(TmvMetadataProcedure::StaticClass(), name);
}

// --- Settings of the SQL builders ---

void TmvQueryBuilder::ChangeBuilders(const std::function<void(TSQLBuilderFast&, int index)>& change) {
  TmvBaseSQLContext* context = SQLContext();
  TSQLBuilderFast* builders[] = {&context->SQLBuilderExpression(),
                                 &context->SQLBuilderExpressionQuoted(),
                                 &context->SQLBuilderExpressionNonQuoted(),
                                 &context->SQLBuilderExpressionForServer(),
                                 &context->SQLBuilderExpressionForServerWithoutQuotes(),
                                 &context->SQLBuilderMetadata()};
  context->BeginUpdate();
  try {
    for (int i = 0; i < 6; ++i) change(*builders[i], i);
  } catch (...) {
    context->EndUpdate();
    throw;
  }
  context->EndUpdate();
}

void TmvQueryBuilder::SetOuterKeywordInLinks(TmvSkipKeywordMode value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int) { builder.SetOuterKeywordInLinks(value); });
  Query()->NotifySQLUpdatedRecursive();
}

void TmvQueryBuilder::SetInnerKeywordInLinks(TmvSkipKeywordMode value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int) { builder.SetInnerKeywordInLinks(value); });
  Query()->NotifySQLUpdatedRecursive();
}

void TmvQueryBuilder::SetAsKeywordInExpressionAlias(TmvSkipKeywordMode value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int) { builder.SetAsKeywordInExpressionAlias(value); });
  Query()->NotifySQLUpdatedRecursive();
}

void TmvQueryBuilder::SetAsKeywordInObjectAlias(TmvSkipKeywordMode value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int) { builder.SetAsKeywordInObjectAlias(value); });
  Query()->NotifySQLUpdatedRecursive();
}

void TmvQueryBuilder::SetUseAltNames(bool value) {
  Options.UseAltNames = value;
  // Not the server's builders: the server knows the real names only.
  ChangeBuilders([value](TSQLBuilderFast& builder, int index) {
    if (index <= 2 || index == 5) builder.SetUseAltNames(value);
  });
  Query()->NotifySQLUpdatedRecursive();
}

bool TmvQueryBuilder::GetQuoteAllIdentifiers() const {
  return SQLContext()->SQLBuilderExpression().QuoteIdentifiers() == icAll;
}

void TmvQueryBuilder::SetQuoteAllIdentifiers(bool value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int index) {
    if (index == 0 || index == 3) builder.SetQuoteIdentifiers(value ? icAll : icIfNeed);
  });
  Query()->NotifySQLUpdatedRecursive();
}

void TmvQueryBuilder::SetObjectPrefixSkipping(TmvObjectPrefixSkipping value) {
  ChangeBuilders([value](TSQLBuilderFast& builder, int) { builder.SetObjectPrefixSkipping(value); });
  Query()->NotifySQLUpdatedRecursive();
}

}  // namespace mv
