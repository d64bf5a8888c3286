#include "dialects/advantage/AdvantageCatalog.h"

#include "dialects/advantage/AdvantageCatalogQueries.h"
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
  return OtherDatabaseName(context, database, GetDefaultDatabaseNameAdvantage(context, connection).get());
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsAdvantage(TmvBaseMetadataProvider* provider,
                                                            TmvConnection* connection) {
  return CatalogProbeAnswer(provider, connection, kAdvantageProbeQuery);
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameAdvantage(TmvBaseSQLContext* context, TmvConnection* connection) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  return OnePartCatalogName(
      context, provider->TrimName(FirstColumnOrEmpty(*provider, connection, kAdvantageDefaultDatabaseQuery)));
}

bool GetDatabasesListAdvantage(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogDatabasesList(context, connection, kAdvantageDatabasesQuery, u"TABLE_CAT", list);
}

bool LoadMetadataObjectsAdvantage(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                  const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = AdvantageObjectsQuery(DatabaseOfLoad(context, connection, database));
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.UserTableTypeValue = WideString(u"TABLE");
  fetcher.UserViewTypeValue = WideString(u"VIEW");
  fetcher.SetTrimSpaces(true);
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsAdvantage(TmvBaseSQLContext* context, TmvConnection* connection,
                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                    const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = AdvantageRelationsQuery(DatabaseOfLoad(context, connection, database));
  fetcher.PrimaryNameFieldName = u"PKTABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PKCOLUMN_NAME";
  fetcher.ChildNameFieldName = u"FKTABLE_NAME";
  fetcher.ChildFieldFieldName = u"FKCOLUMN_NAME";
  fetcher.KeySequenceFieldName = u"KEY_SEQ";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectAdvantage(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  const WideString database = DatabaseOfLoad(context, connection, object->Database());
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = AdvantageFieldsQuery(database, object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN_NAME";
  fetcher.TypeFieldName = u"TYPE_NAME";
  fetcher.SizeFieldName = u"COLUMN_SIZE";
  fetcher.PrecisionFieldName = u"NUM_PREC_RADIX";
  fetcher.ScaleFieldName = u"DECIMAL_DIGITS";
  fetcher.NullableFieldName = u"NULLABLE";
  fetcher.NullableTrueValue = 1;
  fetcher.SetTrimSpaces(true);
  if (!TryLoadCatalogFields(fetcher, object)) return false;
  TryMarkCatalogKeyFields(context, connection, AdvantagePrimaryKeysQuery(database, object->NameStrNotQuoted()),
                          u"COLUMN_NAME", object);
  return true;
}

}  // namespace mv
