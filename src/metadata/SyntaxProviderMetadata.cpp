// The metadata operations of the syntax provider's contract. The base knows
// no server catalog: object, relation and field loads fall back on the
// context's metadata provider, which reads what the driver tells.
#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataProvider.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

// The context's metadata provider, for the operation `operation` that falls
// back on it: logged as "SyntaxProvider.<operation>"; without a provider an
// error is logged and raised.
TmvBaseMetadataProvider& RequireMetadataProvider(TmvBaseSQLContext* context, const TmvLogHelper& log,
                                                 const char16_t* operation) {
  TmvBaseMetadataProvider* provider = context ? context->MetadataProvider() : nullptr;
  const WideString message = MetadataMessage(mvQBNoMetadataProvider);
  if (!provider) {
    log.Error(u"SyntaxProvider.%s: %s", operation, message);
    throw EmvQueryBuilderError(message);
  }
  log.Debug(u"SyntaxProvider.%s", operation);
  return *provider;
}

// Fills a fields or parameters list unless it is loaded: the dialect's
// catalog first, then the driver's description. A failure passes on and
// leaves the list empty and not loaded, never half filled.
template <class List, class FromServer, class FromDriver>
void FillUnlessLoaded(List& list, FromServer fromServer, FromDriver fromDriver) {
  if (list.Loaded()) return;
  list.Clear();
  try {
    fromServer();
    fromDriver();
  } catch (...) {
    list.Clear();
    list.SetLoaded(false);
    throw;
  }
}

// One kind's operations: of the syntax provider, and of the metadata provider.
template <class Object>
using TmvServerLoad = void (TmvBaseSyntaxProvider::*)(TmvBaseSQLContext*, TmvConnection*, Object*);
template <class Object>
using TmvProviderLoad = void (TmvBaseMetadataProvider::*)(TmvBaseSQLContext*, TmvConnection*, Object*);

// The field load of one object: with SQL, FillUnlessLoaded from `fromServer`
// and `fromDriver`; without, the metadata provider's `fallback` for the kind.
template <class Object>
void LoadObjectFields(TmvBaseSyntaxProvider& syntax, TmvBaseSQLContext* context, TmvConnection* connection,
                      const char16_t* operation, Object* object, TmvServerLoad<Object> fromServer,
                      TmvProviderLoad<Object> fromDriver, TmvProviderLoad<Object> fallback) {
  TmvBaseMetadataProvider& provider = RequireMetadataProvider(context, syntax.LogHelper(), operation);
  if (!provider.GetCanExecSQL()) {
    (provider.*fallback)(context, connection, object);
    return;
  }
  TmvUpdateBatch batch(*object);
  FillUnlessLoaded(
      *object->GetFields(), [&] { (syntax.*fromServer)(context, connection, object); },
      [&] { (provider.*fromDriver)(context, connection, object); });
}

}  // namespace

void TmvBaseSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                             std::vector<WideString>& list) {
  RequireMetadataProvider(context, LogHelper(), u"GetDatabasesList").GetDatabasesList(context, connection, list);
}

void TmvBaseSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                           std::vector<WideString>& list, const TSQLQualifiedName* database) {
  RequireMetadataProvider(context, LogHelper(), u"GetSchemasList").GetSchemasList(context, connection, list, database);
}

void TmvBaseSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                const TSQLQualifiedName* database) {
  RequireMetadataProvider(context, LogHelper(), u"LoadMetadataObjects")
      .LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvBaseSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                  const TSQLQualifiedName* database) {
  RequireMetadataProvider(context, LogHelper(), u"LoadMetadataRelations")
      .LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvBaseSyntaxProvider::LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TmvMetadataTable* table) {
  LoadObjectFields(*this, context, connection, u"LoadMetadataForTable", table,
                   &TmvBaseSyntaxProvider::LoadFieldsForTableFromServer,
                   &TmvBaseMetadataProvider::LoadFieldsForTableFromDriver,
                   &TmvBaseMetadataProvider::LoadMetadataForTable);
}

void TmvBaseSyntaxProvider::LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataView* view) {
  LoadObjectFields(*this, context, connection, u"LoadMetadataForView", view,
                   &TmvBaseSyntaxProvider::LoadFieldsForViewFromServer,
                   &TmvBaseMetadataProvider::LoadFieldsForViewFromDriver,
                   &TmvBaseMetadataProvider::LoadMetadataForView);
}

void TmvBaseSyntaxProvider::LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataProcedure* procedure) {
  TmvBaseMetadataProvider& provider = RequireMetadataProvider(context, LogHelper(), u"LoadMetadataForProcedure");
  if (!provider.GetCanExecSQL()) {
    provider.LoadMetadataForProcedure(context, connection, procedure);
    return;
  }
  TmvUpdateBatch batch(*procedure);
  FillUnlessLoaded(
      *procedure->Parameters(), [&] { LoadParamsForProcedureFromServer(context, connection, procedure); },
      [&] { provider.LoadParamsForProcedureFromDriver(context, connection, procedure); });
  LoadObjectFields(*this, context, connection, u"LoadMetadataForProcedure", procedure,
                   &TmvBaseSyntaxProvider::LoadFieldsForProcedureFromServer,
                   &TmvBaseMetadataProvider::LoadFieldsForProcedureFromDriver,
                   &TmvBaseMetadataProvider::LoadMetadataForProcedure);
}

void TmvBaseSyntaxProvider::LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataSynonym* synonym) {
  LoadObjectFields(*this, context, connection, u"LoadMetadataForSynonym", synonym,
                   &TmvBaseSyntaxProvider::LoadFieldsForSynonymFromServer,
                   &TmvBaseMetadataProvider::LoadFieldsForSynonymFromDriver,
                   &TmvBaseMetadataProvider::LoadMetadataForSynonym);
}

void TmvBaseSyntaxProvider::LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection,
                                               WideStringView sql, TmvMetadataFieldsList& fields) {
  RequireMetadataProvider(context, LogHelper(), u"LoadFieldsForQuery")
      .LoadFieldsForQuery(context, connection, sql, fields);
}

void TmvBaseSyntaxProvider::LoadFieldsForTableFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                         TmvMetadataTable* table) {
  LoadFieldsForObjectFromServer(context, connection, table);
}

void TmvBaseSyntaxProvider::LoadFieldsForViewFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                        TmvMetadataView* view) {
  LoadFieldsForObjectFromServer(context, connection, view);
}

void TmvBaseSyntaxProvider::LoadFieldsForProcedureFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                             TmvMetadataProcedure* procedure) {
  LoadFieldsForObjectFromServer(context, connection, procedure);
}

void TmvBaseSyntaxProvider::LoadFieldsForSynonymFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                           TmvMetadataSynonym* synonym) {
  LoadFieldsForObjectFromServer(context, connection, synonym);
}

TmvOwned<TSQLQualifiedName> TmvBaseSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                          TmvConnection* connection) {
  if (!IsSupportDatabases()) throw EmvQueryBuilderError(kNoDatabasesText);
  return RequireMetadataProvider(context, LogHelper(), u"GetDefaultDatabaseName")
      .GetDefaultDatabaseName(context, connection);
}

void TmvBaseSyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  TSQLIdentifiersCollection& names) {
  if (!IsSupportSchemas()) throw EmvQueryBuilderError(kNoSchemasText);
  RequireMetadataProvider(context, LogHelper(), u"GetDefaultSchemaNames")
      .GetDefaultSchemaNames(context, connection, names);
}

TmvOwned<TastTokenIdentifier> TmvBaseSyntaxProvider::GetEmptySchemaName(TmvBaseSQLContext*) const { return nullptr; }

}  // namespace mv
