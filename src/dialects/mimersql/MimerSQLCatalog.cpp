#include "dialects/mimersql/MimerSQLCatalog.h"

#include "dialects/mimersql/MimerSQLCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "support/TextHelpers.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

void UseSystemSchemas(TmvBaseSQLContext* context, TmvMetadataObjectFetcherFromQuery& fetcher) {
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  WideStringView rest = kMimerSQLSystemSchemas;
  while (!rest.empty()) {
    const size_t comma = rest.find(u',');
    system->AddIdentifier(WideString(rest.substr(0, comma)));
    rest = comma == WideStringView::npos ? WideStringView() : rest.substr(comma + 1);
  }
  fetcher.SetSystemSchemaNames(system.get());
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsMimerSQL(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection) {
  return CatalogProbeAnswer(provider, connection, kMimerSQLProbeQuery);
}

bool LoadMetadataObjectsMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery tables(context, connection);
  tables.SQL = kMimerSQLObjectsQuery;
  tables.SchemaFieldName = u"TABLE_SCHEMA";
  tables.NameFieldName = u"TABLE_NAME";
  tables.TypeFieldName = u"TABLE_TYPE";
  tables.UserTableTypeValue = WideString(u"BASE TABLE");
  tables.UserViewTypeValue = WideString(u"VIEW");
  tables.SetTrimSpaces(true);
  UseSystemSchemas(context, tables);
  tables.SetFilter(filter);
  if (!TryLoadCatalogMetadata(tables, container, filter, database)) return false;
  // Synonyms only where the server has their view.
  TmvMetadataObjectFetcherFromQuery synonyms(context, connection);
  synonyms.SQL = kMimerSQLSynonymsQuery;
  synonyms.SchemaFieldName = u"SYNONYM_SCHEMA";
  synonyms.NameFieldName = u"SYNONYM_NAME";
  synonyms.SetDefaultObjectClass(&TmvMetadataSynonym::StaticClass());
  synonyms.SetTrimSpaces(true);
  UseSystemSchemas(context, synonyms);
  synonyms.SetFilter(filter);
  TryLoadCatalogMetadata(synonyms, container, filter, database);
  return true;
}

bool LoadMetadataRelationsMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database) {
  return LoadMetadataRelationsSQL92(context, connection, container, filter, database);
}

bool LoadFieldsForObjectMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = MimerSQLFieldsQuery(object->Schema() ? object->SchemaStrNotQuoted() : WideString(),
                                    object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN";
  fetcher.TypeFieldName = u"DATATYPE";
  fetcher.SizeFieldName = u"LENGTH";
  fetcher.ScaleFieldName = u"SCALE";
  fetcher.NullableFieldName = u"NULLABLE";
  fetcher.NullableTrueValue = WideString(u"YES");
  // The column's place in the key; null outside it.
  fetcher.PrimaryFieldName = u"PRIMARY_KEY";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
