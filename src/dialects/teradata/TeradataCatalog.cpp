#include "dialects/teradata/TeradataCatalog.h"

#include "dialects/teradata/TeradataCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

namespace mv {

TmvSyntaxSupportConectedServer IsConnectedServerIsTeradata(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    auto dataset = provider->ExecSQLDatasetUR(connection, kTeradataProbeQuery, nullptr);
    return dataset && dataset->FindField(u"VERSION") ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

bool GetDefaultSchemaNamesTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TSQLIdentifiersCollection& names) {
  auto schema = CatalogNameFromQuery(context, connection, kTeradataDefaultSchemaQuery, u"Database");
  if (!schema) return false;
  AddDefaultSchemaName(names, schema->GetQualifiedNameWithoutQuotes());
  return true;
}

bool GetSchemasListTeradata(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogSchemasList(context, connection, kTeradataSchemasQuery, u"DATABASE_NAME", list, true);
}

bool LoadMetadataObjectsTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kTeradataObjectsQuery;
  fetcher.SchemaFieldName = u"DatabaseName";
  fetcher.NameFieldName = u"TableName";
  fetcher.TypeFieldName = u"TableKind";
  fetcher.ShortDescriptionFieldName = u"CommentString";
  fetcher.UserTableTypeValue = WideString(u"T");
  fetcher.UserViewTypeValue = WideString(u"V");
  fetcher.SetTrimSpaces(true);
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  for (const char16_t* schema : kTeradataSystemSchemas) system->AddIdentifier(schema);
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kTeradataRelationsQuery;
  fetcher.PrimarySchemaFieldName = u"ParentDB";
  fetcher.PrimaryNameFieldName = u"ParentTable";
  fetcher.PrimaryFieldFieldName = u"ParentKeyColumn";
  fetcher.ChildSchemaFieldName = u"ChildDB";
  fetcher.ChildNameFieldName = u"ChildTable";
  fetcher.ChildFieldFieldName = u"ChildKeyColumn";
  fetcher.RelationIdFieldName = u"IndexID";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectTeradata(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = TeradataFieldsQuery(object->Schema() ? object->SchemaStrNotQuoted() : WideString(),
                                    object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN_NAME";
  fetcher.TypeFieldName = u"TYPE_NAME";
  fetcher.SizeFieldName = u"COLUMN_SIZE";
  fetcher.ScaleFieldName = u"DECIMAL_DIGITS";
  fetcher.NullableFieldName = u"NULLABLE";
  fetcher.NullableTrueValue = WideString(u"Y");
  fetcher.NullableFalseValue = WideString(u"N");
  fetcher.PrimaryFieldName = u"PRIMARY_KEY";
  fetcher.ShortDescriptionFieldName = u"REMARKS";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
