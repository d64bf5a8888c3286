#include "dialects/informix/InformixCatalog.h"

#include "dialects/informix/InformixCatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

namespace mv {

bool LoadMetadataObjectsInformix(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kInformixObjectsQuery;
  fetcher.SchemaFieldName = u"TABLE_OWNER";
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.UserTableTypeValue = TmvVariant(TmvVariantArray{TmvVariant(WideString(u"T")), TmvVariant(WideString(u"S"))});
  fetcher.UserViewTypeValue = WideString(u"V");
  fetcher.SetTrimSpaces(true);
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  system->AddIdentifier(kInformixSystemSchema);
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsInformix(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kInformixRelationsQuery;
  UseStandardRelationColumns(fetcher, true);
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectInformix(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = InformixFieldsQuery(object->Schema() ? object->SchemaStrNotQuoted() : WideString(),
                                    object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLNAME";
  fetcher.TypeFieldName = u"COLTYPE";
  fetcher.SizeFieldName = u"COLLENGTH";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
