#include "dialects/oracle/OracleCatalog.h"

#include "dialects/oracle/OracleCatalogQueries.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

// The first column of the first row; empty when the server refuses the
// statement.
WideString FirstValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, const char16_t* sql) {
  try {
    auto dataset = provider.ExecSQLDatasetUR(connection, sql, nullptr);
    if (!dataset || dataset->Eof() || dataset->FieldCount() == 0) return {};
    return dataset->Fields()[0].AsWideString();
  } catch (const Exception&) {
    return {};
  }
}

// The database link a load names; empty for none.
WideString LinkOf(const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0 || !database->Token(0)) return {};
  return database->Token(0)->Token;
}

// Every row of `sql` an object of `objectClass`, named by its owner and
// `nameField`; false when the statement is refused.
bool LoadKind(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
              const TmvMetadataFilter* filter, const TSQLQualifiedName* database, const WideString& sql,
              const TmvMetadataClass& objectClass, const char16_t* nameField, const char16_t* descriptionField) {
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = sql;
  fetcher.SchemaFieldName = u"OWNER";
  fetcher.NameFieldName = nameField;
  if (descriptionField) fetcher.ShortDescriptionFieldName = descriptionField;
  fetcher.SetDefaultObjectClass(&objectClass);
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  for (const char16_t* schema : kOracleSystemSchemas) system->AddIdentifier(schema);
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  return IsOracleProbeAnswer(FirstValue(*provider, connection, kOracleProbeQuery)) ? scsSupport : scsNotSupport;
}

int CalcServerVersionOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return 11;
  return ParseServerVersionOracle(FirstValue(*provider, connection, kOracleVersionQuery));
}

bool GetDefaultSchemaNamesOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  const WideString schema = provider->TrimName(FirstValue(*provider, connection, kOracleDefaultSchemaQuery));
  if (schema.empty()) return false;
  if (!names.ContainsSameIdStr(schema)) names.AddIdentifier(schema);
  return true;
}

bool GetSchemasListOracle(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataSchemasFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kOracleSchemasQuery;
  fetcher.NameFieldName = u"NAME";
  auto schemas = TastCreate<TSQLIdentifiersCollection>(context);
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadSchemas(*schemas);
  list.clear();
  for (int i = 0; i < schemas->GetCount(); ++i) list.push_back(schemas->Identifier(i)->Token);
  return true;
}

bool LoadMetadataObjectsOracle(TmvBaseSQLContext* context, TmvConnection* connection, int majorVersion,
                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                               const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const WideString link = LinkOf(database);
  if (!LoadKind(context, connection, container, filter, database, OracleTablesQuery(link),
                TmvMetadataTable::StaticClass(), u"TABLE_NAME", u"COMMENTS"))
    return false;
  LoadKind(context, connection, container, filter, database, OracleViewsQuery(link), TmvMetadataView::StaticClass(),
           u"VIEW_NAME", u"COMMENTS");
  bool mviewComments = true;
  try {
    provider->ExecSQLDatasetUR(connection, OracleMViewCommentsProbe(link), nullptr);
  } catch (const Exception&) {
    mviewComments = false;
  }
  LoadKind(context, connection, container, filter, database, OracleMViewsQuery(link, mviewComments),
           TmvMetadataView::StaticClass(), u"MVIEW_NAME", u"COMMENTS");
  LoadKind(context, connection, container, filter, database, OracleSynonymsQuery(link),
           TmvMetadataSynonym::StaticClass(), u"SYNONYM_NAME", nullptr);
  if (majorVersion >= 9)
    LoadKind(context, connection, container, filter, database, OraclePipelinedFunctionsQuery(link),
             TmvMetadataProcedure::StaticClass(), u"OBJECT_NAME", nullptr);
  return true;
}

bool LoadMetadataRelationsOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  const WideString pk = filter ? filter->CreatePrefilterCondition(context, u"PK_SCHEMA_NAME", u"PK_TABLE_NAME", mfTables)
                               : WideString();
  const WideString fk = filter ? filter->CreatePrefilterCondition(context, u"FK_SCHEMA_NAME", u"FK_TABLE_NAME", mfTables)
                               : WideString();
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = OracleRelationsQuery(LinkOf(database), pk, fk);
  fetcher.PrimarySchemaFieldName = u"PK_SCHEMA_NAME";
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PK_FIELD_NAME";
  fetcher.ChildSchemaFieldName = u"FK_SCHEMA_NAME";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"FK_FIELD_NAME";
  fetcher.KeySequenceFieldName = u"ORDINAL";
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

}  // namespace mv
