#include "dialects/oracle/OracleCatalog.h"

#include "dialects/oracle/OracleCatalogQueries.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

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
  if (&objectClass == &TmvMetadataSynonym::StaticClass()) {
    // What a synonym stands for, on the far side of its link if it has one.
    fetcher.ReferencedDatabaseFieldName = u"DB_LINK";
    fetcher.ReferencedSchemaFieldName = u"TABLE_OWNER";
    fetcher.ReferencedNameFieldName = u"TABLE_NAME";
  }
  fetcher.SetDefaultObjectClass(&objectClass);
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  for (const char16_t* schema : kOracleSystemSchemas) system->AddIdentifier(schema);
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  return IsOracleProbeAnswer(FirstColumnOrEmpty(*provider, connection, kOracleProbeQuery)) ? scsSupport : scsNotSupport;
}

int CalcServerVersionOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return 11;
  return ParseServerVersionOracle(FirstColumnOrEmpty(*provider, connection, kOracleVersionQuery));
}

bool GetDefaultSchemaNamesOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  return AddDefaultSchemaName(names,
                              provider->TrimName(FirstColumnOrEmpty(*provider, connection, kOracleDefaultSchemaQuery)));
}

bool GetSchemasListOracle(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogSchemasList(context, connection, kOracleSchemasQuery, u"NAME", list);
}

bool LoadMetadataObjectsOracle(TmvBaseSQLContext* context, TmvConnection* connection, int majorVersion,
                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                               const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const WideString link = FirstNamePart(database);
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
  fetcher.SQL = OracleRelationsQuery(FirstNamePart(database), pk, fk);
  UseStandardRelationColumns(fetcher, true);
  fetcher.KeySequenceFieldName = u"ORDINAL";
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectOracle(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !object) return false;
  WideString schema = object->Schema() ? object->SchemaStrNotQuoted() : WideString();
  if (schema.empty()) schema = provider->TrimName(FirstColumnOrEmpty(*provider, connection, kOracleDefaultSchemaQuery));
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kOracleFieldsQuery;
  fetcher.Params().CreateParam(ftWideString, u"ObjectSchema").SetAsWideString(schema);
  fetcher.Params().CreateParam(ftWideString, u"ObjectName").SetAsWideString(object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN_NAME";
  fetcher.TypeFieldName = u"DATA_TYPE";
  fetcher.SizeFieldName = u"DATA_LENGTH";
  fetcher.PrecisionFieldName = u"DATA_PRECISION";
  fetcher.ScaleFieldName = u"DATA_SCALE";
  fetcher.NullableFieldName = u"NULLABLE";
  fetcher.NullableTrueValue = WideString(u"Y");
  fetcher.NullableFalseValue = WideString(u"N");
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
