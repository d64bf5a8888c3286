#include "dialects/interbase/RdbCatalog.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"

namespace mv {

WideString TmvRdbMetadataFieldsFetcherFromQuery::CalcTypeOnServer() {
  return TrimName(TmvMetadataFieldsFetcherFromQuery::CalcTypeOnServer());
}

int TmvRdbMetadataFieldsFetcherFromQuery::CalcScale() {
  const int scale = TmvMetadataFieldsFetcherFromQuery::CalcScale();
  return scale < 0 ? -scale : scale;
}

namespace {

// Every row of `sql` an object of `objectClass`; false when the statement is refused.
bool LoadObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                 const TmvMetadataFilter* filter, WideStringView sql, const TmvMetadataClass& objectClass,
                 bool systemColumn) {
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = WideString(sql);
  fetcher.NameFieldName = u"TABLE_NAME";
  if (systemColumn) {
    fetcher.SystemFieldName = u"TABLE_SYSTEM";
    fetcher.SystemFlagValue = TmvVariant(int{1});
  }
  fetcher.SetDefaultObjectClass(&objectClass);
  fetcher.SetTrimSpaces(true);
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, nullptr);
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerRdb(const TmvRdbCatalogQueries& queries,
                                                    TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    provider->ExecSQLDatasetUR(connection, queries.Probe, nullptr);
    return scsSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

bool LoadMetadataObjectsRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                            TmvConnection* connection, TmvMetadataContainer* container,
                            const TmvMetadataFilter* filter) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  if (!LoadObjects(context, connection, container, filter, queries.Tables, TmvMetadataTable::StaticClass(),
                   true))
    return false;
  LoadObjects(context, connection, container, filter, queries.Views, TmvMetadataView::StaticClass(), true);
  bool procedures = false;
  try {
    provider->ExecSQLDatasetUR(connection, queries.ProceduresProbe, nullptr);
    procedures = true;
  } catch (const Exception&) {
    // A server without stored procedures.
  }
  if (procedures)
    LoadObjects(context, connection, container, filter, queries.Procedures,
                TmvMetadataProcedure::StaticClass(), false);
  return true;
}

bool LoadMetadataRelationsRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                              TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = queries.Relations;
  UseStandardRelationColumns(fetcher, false);
  fetcher.KeySequenceFieldName = u"ORDINAL";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogMetadata(fetcher, container, filter, nullptr);
}

bool LoadFieldsForObjectRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                            TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvRdbMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = queries.Fields(object->NameStrNotQuoted());
  fetcher.NameFieldName = u"field_name";
  fetcher.TypeFieldName = u"field_type";
  fetcher.SizeFieldName = u"field_length";
  fetcher.PrecisionFieldName = u"field_precision";
  fetcher.ScaleFieldName = u"field_scale";
  fetcher.NullableFieldName = u"field_not_null_constraint";
  fetcher.NullableTrueValue = TmvVariant(int{0});  // the column says "not null"
  fetcher.DefaultValueFieldName = u"field_default_value";
  fetcher.PrimaryFieldName = u"field_pk";
  fetcher.ShortDescriptionFieldName = u"field_description";
  fetcher.SetTrimSpaces(true);
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
