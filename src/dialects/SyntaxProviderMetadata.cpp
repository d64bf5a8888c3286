// The metadata operations of the syntax provider's contract. The base knows
// no server catalog: object, relation and field loads fall back on the
// context's metadata provider, which reads what the driver tells.
#include "dialects/SyntaxProvider.h"
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

// The field load of one object: with SQL, the dialect's catalog first and
// then the driver's description, unless the list is loaded already;
// without, whatever the metadata provider does for the kind.
template <class Object, class FromServer, class FromDriver, class Fallback>
void LoadObjectFields(TmvBaseSQLContext* context, const TmvLogHelper& log, const char16_t* operation, Object* object,
                      FromServer fromServer, FromDriver fromDriver, Fallback fallback) {
  TmvBaseMetadataProvider& provider = RequireMetadataProvider(context, log, operation);
  if (!provider.GetCanExecSQL()) {
    fallback(provider);
    return;
  }
  TmvUpdateBatch batch(*object);
  TmvMetadataFieldsList* fields = object->GetFields();
  if (fields->Loaded()) return;
  fields->Clear();
  fromServer();
  fromDriver(provider);
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
  LoadObjectFields(
      context, LogHelper(), u"LoadMetadataForTable", table,
      [&] { LoadFieldsForTableFromServer(context, connection, table); },
      [&](TmvBaseMetadataProvider& p) { p.LoadFieldsForTableFromDriver(context, connection, table); },
      [&](TmvBaseMetadataProvider& p) { p.LoadMetadataForTable(context, connection, table); });
}

void TmvBaseSyntaxProvider::LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataView* view) {
  LoadObjectFields(
      context, LogHelper(), u"LoadMetadataForView", view,
      [&] { LoadFieldsForViewFromServer(context, connection, view); },
      [&](TmvBaseMetadataProvider& p) { p.LoadFieldsForViewFromDriver(context, connection, view); },
      [&](TmvBaseMetadataProvider& p) { p.LoadMetadataForView(context, connection, view); });
}

void TmvBaseSyntaxProvider::LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataProcedure* procedure) {
  TmvBaseMetadataProvider& provider = RequireMetadataProvider(context, LogHelper(), u"LoadMetadataForProcedure");
  if (!provider.GetCanExecSQL()) {
    provider.LoadMetadataForProcedure(context, connection, procedure);
    return;
  }
  TmvUpdateBatch batch(*procedure);
  TmvMetadataParametersList* parameters = procedure->Parameters();
  if (!parameters->Loaded()) {
    parameters->Clear();
    LoadParamsForProcedureFromServer(context, connection, procedure);
    provider.LoadParamsForProcedureFromDriver(context, connection, procedure);
  }
  LoadObjectFields(
      context, LogHelper(), u"LoadMetadataForProcedure", procedure,
      [&] { LoadFieldsForProcedureFromServer(context, connection, procedure); },
      [&](TmvBaseMetadataProvider& p) { p.LoadFieldsForProcedureFromDriver(context, connection, procedure); },
      [&](TmvBaseMetadataProvider& p) { p.LoadMetadataForProcedure(context, connection, procedure); });
}

void TmvBaseSyntaxProvider::LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                                   TmvMetadataSynonym* synonym) {
  LoadObjectFields(
      context, LogHelper(), u"LoadMetadataForSynonym", synonym,
      [&] { LoadFieldsForSynonymFromServer(context, connection, synonym); },
      [&](TmvBaseMetadataProvider& p) { p.LoadFieldsForSynonymFromDriver(context, connection, synonym); },
      [&](TmvBaseMetadataProvider& p) { p.LoadMetadataForSynonym(context, connection, synonym); });
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
