#include "dialects/db2/DB2Catalog.h"

#include "dialects/db2/DB2CatalogQueries.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/FilterMacros.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

namespace mv {

namespace {

TmvVariant Letters(std::initializer_list<const char16_t*> letters) {
  TmvVariantArray values;
  for (const char16_t* letter : letters) values.emplace_back(WideString(letter));
  return TmvVariant(std::move(values));
}

}  // namespace

bool DB2TableExists(TmvBaseSQLContext* context, TmvConnection* connection, const char16_t* table) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  try {
    return provider->ExecSQLDatasetUR(connection, u"select 1 from " + WideString(table) + u" fetch first row only",
                                      nullptr) != nullptr;
  } catch (const Exception&) {
    return false;
  }
}

bool LoadMetadataObjectsDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                            const TmvMetadataFilter* filter, const TSQLQualifiedName* database, bool qsys2) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = DB2ObjectsQuery(qsys2, {}, mvQBTableFilterMacro, mvQBViewFilterMacro, mvQBSynonymFilterMacro);
  fetcher.SchemaFieldName = u"TABLE_SCHEMA";
  fetcher.NameFieldName = u"TABLE_NAME";
  fetcher.TypeFieldName = u"TABLE_TYPE";
  fetcher.ReferencedSchemaFieldName = u"REF_TABLE_SCHEMA";
  fetcher.ReferencedNameFieldName = u"REF_TABLE_NAME";
  fetcher.UserTableTypeValue = Letters({u"H", u"L", u"P", u"T", u"U"});
  fetcher.UserViewTypeValue = Letters({u"V", u"W", u"M", u"S"});
  fetcher.UserSynonymTypeValue = Letters({u"A", u"N"});
  fetcher.SetTrimSpaces(true);
  fetcher.SetTrimQuotes(true);
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  const WideString schemas = qsys2 ? kDB2QSYS2SystemSchemas : kDB2SystemSchemas;
  for (size_t start = 0; start <= schemas.size();) {
    const size_t comma = std::min(schemas.find(u',', start), schemas.size());
    system->AddIdentifier(schemas.substr(start, comma - start));
    start = comma + 1;
  }
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kDB2RelationsQuery;
  fetcher.PrimarySchemaFieldName = u"PKTABLE_SCHEM";
  fetcher.PrimaryNameFieldName = u"PKTABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PKCOLUMN_NAME";
  fetcher.ChildSchemaFieldName = u"FKTABLE_SCHEM";
  fetcher.ChildNameFieldName = u"FKTABLE_NAME";
  fetcher.ChildFieldFieldName = u"FKCOLUMN_NAME";
  fetcher.KeySequenceFieldName = u"KEY_SEQ";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectDB2(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object,
                            bool qsys2) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = DB2FieldsQuery(qsys2, object->Schema() ? object->SchemaStrNotQuoted() : WideString(),
                               object->NameStrNotQuoted());
  fetcher.NameFieldName = u"NAME";
  fetcher.TypeFieldName = u"COLTYPE";
  fetcher.SizeFieldName = u"LENGTH";
  fetcher.ScaleFieldName = u"SCALE";
  fetcher.DefaultValueFieldName = u"DEFAULT";
  fetcher.NullableFieldName = u"NULLS";
  fetcher.NullableTrueValue = WideString(u"Y");
  fetcher.NullableFalseValue = WideString(u"N");
  fetcher.PrimaryFieldName = u"KEYSEQ";
  fetcher.ReadOnlyFieldName = u"GENERATED";
  fetcher.ReadOnlyTrueValue = WideString(u"A");
  fetcher.ShortDescriptionFieldName = u"REMARKS";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
