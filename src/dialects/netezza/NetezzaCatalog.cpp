#include "dialects/netezza/NetezzaCatalog.h"

#include "dialects/netezza/NetezzaCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

// The database a load names, empty for the connected one (asked again each time).
WideString DatabaseOfLoad(TmvBaseSQLContext* context, TmvConnection* connection, const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0) return {};
  return OtherDatabaseName(context, database, GetDefaultDatabaseNameNetezza(context, connection).get());
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsNetezza(TmvBaseMetadataProvider* provider,
                                                          TmvConnection* connection) {
  return CatalogProbeAnswer(provider, connection, kNetezzaProbeQuery);
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameNetezza(TmvBaseSQLContext* context, TmvConnection* connection) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  return OnePartCatalogName(context,
                            provider->TrimName(FirstColumnOrEmpty(*provider, connection, kNetezzaDefaultDatabaseQuery)));
}

bool GetDefaultSchemaNamesNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  return AddDefaultSchemaName(names,
                              provider->TrimName(FirstColumnOrEmpty(*provider, connection, kNetezzaDefaultSchemaQuery)));
}

bool GetSchemasListNetezza(TmvBaseSQLContext* context, TmvConnection* connection, const TSQLQualifiedName* database,
                           std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  const WideString name = DatabaseOfLoad(context, connection, database);
  return LoadCatalogSchemasList(context, connection, NetezzaSchemasQuery(name), u"SCHEMA_NAME", list, true) ||
         LoadCatalogSchemasList(context, connection, NetezzaDefaultSchemaOfDatabaseQuery(name), u"SCHEMA_NAME", list,
                                true);
}

bool LoadMetadataObjectsNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = NetezzaObjectsQuery(DatabaseOfLoad(context, connection, database));
  fetcher.SchemaFieldName = u"TABLE_SCHEM";
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.ShortDescriptionFieldName = u"DESCRIPTION";
  fetcher.UserTableTypeValue = WideString(u"TABLE");
  fetcher.SystemTableTypeValue = TmvVariantArray{u"SYSTEM TABLE", u"MANAGEMENT TABLE"};
  fetcher.UserViewTypeValue = WideString(u"VIEW");
  fetcher.SystemViewTypeValue = TmvVariantArray{u"SYSTEM VIEW", u"MANAGEMENT VIEW"};
  fetcher.SetTrimSpaces(true);
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                  const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = NetezzaRelationsQuery(DatabaseOfLoad(context, connection, database));
  // PKTABLE_CAT and FKTABLE_CAT are the database of the load: a key stays
  // within one database, and its name read back from the view would be
  // quoted where the container holds it plain.
  fetcher.PrimarySchemaFieldName = u"PKTABLE_SCHEM";
  fetcher.PrimaryNameFieldName = u"PKTABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PKCOLUMN_NAME";
  fetcher.ChildSchemaFieldName = u"FKTABLE_SCHEM";
  fetcher.ChildNameFieldName = u"FKTABLE_NAME";
  fetcher.ChildFieldFieldName = u"FKCOLUMN_NAME";
  fetcher.KeySequenceFieldName = u"key_seq";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectNetezza(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  WideString database = object->DatabaseStrNotQuoted();
  if (database.empty())
    if (auto current = GetDefaultDatabaseNameNetezza(context, connection))
      database = current->GetQualifiedNameWithoutQuotes();
  const WideString schema = object->Schema() ? object->SchemaStrNotQuoted() : WideString();
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = NetezzaFieldsQuery(database, schema, object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN_NAME";
  fetcher.TypeFieldName = u"TYPE_NAME";
  fetcher.SizeFieldName = u"COLUMN_SIZE";
  fetcher.PrecisionFieldName = u"NUM_PREC_RADIX";
  fetcher.ScaleFieldName = u"DECIMAL_DIGITS";
  fetcher.NullableFieldName = u"NULLABLE";
  fetcher.NullableTrueValue = 1;
  fetcher.ShortDescriptionFieldName = u"REMARKS";
  fetcher.SetTrimSpaces(true);
  if (!TryLoadCatalogFields(fetcher, object)) return false;
  TryMarkCatalogKeyFields(context, connection, NetezzaPrimaryKeysQuery(database, schema, object->NameStrNotQuoted()),
                          u"COLUMN_NAME", object);
  return true;
}

}  // namespace mv
