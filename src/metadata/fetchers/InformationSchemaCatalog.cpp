#include "metadata/fetchers/InformationSchemaCatalog.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/QualifiedNames.h"

namespace mv {

const char16_t* const kInformationSchemaProbeQuery = u"select 1 from information_schema.tables";
const char16_t* const kInformationSchemaDefaultDatabaseQuery =
    u"select distinct cast(table_catalog as varchar(255)) as CATALOG_NAME from information_schema.tables";

WideString InformationSchemaTablesQuery(WideStringView prefix, WideStringView database) {
  WideString sql = u"select cast(table_schema as varchar(255)) as TABLE_SCHEMA, cast(table_name as varchar(255)) as "
                   u"TABLE_NAME, cast(table_type as varchar(255)) as TABLE_TYPE from " +
                   WideString(prefix) + u"information_schema.tables";
  if (!database.empty()) sql += u" where TABLE_CATALOG=" + SQLQuoteString(database);
  return sql;
}

WideString InformationSchemaViewsQuery(WideStringView prefix, WideStringView database) {
  WideString sql = u"select cast(table_schema as varchar(255)) as TABLE_SCHEMA, cast(table_name as varchar(255)) as "
                   u"TABLE_NAME from " +
                   WideString(prefix) + u"information_schema.views";
  if (!database.empty()) sql += u" where TABLE_CATALOG=" + SQLQuoteString(database);
  return sql;
}

WideString InformationSchemaRelationsQuery(WideStringView prefix) {
  const WideString p(prefix);
  return u"select cast(pf.TABLE_CATALOG as varchar(255)) as PK_TABLE_DATABASE, cast(pf.TABLE_SCHEMA as "
         u"varchar(255)) as PK_SCHEMA_NAME, cast(pf.TABLE_NAME as varchar(255)) as PK_TABLE_NAME, "
         u"cast(pf.COLUMN_NAME as varchar(255)) as PK_FIELD_NAME, cast(ff.TABLE_CATALOG as varchar(255)) as "
         u"FK_TABLE_DATABASE, cast(ff.TABLE_SCHEMA as varchar(255)) as FK_SCHEMA_NAME, cast(ff.TABLE_NAME as "
         u"varchar(255)) as FK_TABLE_NAME, cast(ff.COLUMN_NAME as varchar(255)) as FK_FIELD_NAME, "
         u"pf.ORDINAL_POSITION as ORDINAL from " + p + u"INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS rc inner join " +
         p + u"INFORMATION_SCHEMA.KEY_COLUMN_USAGE ff on rc.CONSTRAINT_NAME = ff.CONSTRAINT_NAME and "
         u"rc.CONSTRAINT_SCHEMA = ff.CONSTRAINT_SCHEMA and rc.CONSTRAINT_CATALOG = ff.CONSTRAINT_CATALOG inner join " +
         p + u"INFORMATION_SCHEMA.KEY_COLUMN_USAGE pf on rc.UNIQUE_CONSTRAINT_NAME = pf.CONSTRAINT_NAME and "
         u"rc.UNIQUE_CONSTRAINT_SCHEMA = pf.CONSTRAINT_SCHEMA and rc.UNIQUE_CONSTRAINT_CATALOG = "
         u"pf.CONSTRAINT_CATALOG and ff.ORDINAL_POSITION = pf.ORDINAL_POSITION order by pf.TABLE_SCHEMA, "
         u"pf.TABLE_NAME, ff.TABLE_SCHEMA, ff.TABLE_NAME, pf.ORDINAL_POSITION";
}

WideString InformationSchemaFieldsQuery(WideStringView database, WideStringView schema, WideStringView name) {
  WideString sql =
      u"select c.TABLE_CATALOG, c.TABLE_SCHEMA, c.TABLE_NAME, c.COLUMN_NAME, c.DATA_TYPE, "
      u"c.CHARACTER_MAXIMUM_LENGTH, c.NUMERIC_PRECISION, c.IS_NULLABLE, c.COLUMN_DEFAULT, ccu.COLUMN_NAME as "
      u"PRIMARY_KEY from INFORMATION_SCHEMA.COLUMNS c left join (INFORMATION_SCHEMA.TABLE_CONSTRAINTS tc inner join  "
      u"INFORMATION_SCHEMA.CONSTRAINT_COLUMN_USAGE ccu on \tccu.CONSTRAINT_NAME=tc.CONSTRAINT_NAME and "
      u"ccu.CONSTRAINT_SCHEMA=tc.CONSTRAINT_SCHEMA and \tccu.CONSTRAINT_CATALOG=tc.CONSTRAINT_CATALOG and "
      u"tc.CONSTRAINT_TYPE='PRIMARY KEY') on c.TABLE_NAME=tc.TABLE_NAME and c.TABLE_SCHEMA=tc.TABLE_SCHEMA and "
      u"c.TABLE_CATALOG=tc.TABLE_CATALOG and c.COLUMN_NAME=ccu.COLUMN_NAME ";
  WideString where;
  auto add = [&where](const char16_t* column, WideStringView value) {
    where += (where.empty() ? u"where " : u" and ") + WideString(column) + u"=" + SQLQuoteString(value);
  };
  if (!database.empty()) add(u"c.TABLE_CATALOG", database);
  if (!schema.empty()) add(u"c.TABLE_SCHEMA", schema);
  add(u"c.TABLE_NAME", name);
  return sql + where + u" order by c.ORDINAL_POSITION";
}

namespace {

// The database a load is for, and the prefix it gives the views: none for no
// database or the connected one (asked of the server again for each load).
struct TDatabaseScope {
  WideString Name;
  WideString Prefix;
};

TDatabaseScope ScopeOf(TmvBaseSQLContext* context, TmvConnection* connection, const TSQLQualifiedName* database) {
  if (!database || database->GetCount() == 0) return {};
  TmvOwned<TSQLQualifiedName> current = GetDefaultDatabaseNameSQL92(context, connection);
  if (current && context->IsQualifiedNamesEqual(current.get(), database)) return {};
  return {database->GetQualifiedNameWithoutQuotes(), database->GetQualifiedNameForServer() + u"."};
}

template <class Fetcher>
bool TryOpen(Fetcher& fetcher) {
  try {
    fetcher.CreateDataset();
    return true;
  } catch (const Exception&) {
    return false;
  }
}

// The primary key column holds the key's column name, or NULL.
class TInformationSchemaFieldsFetcher final : public TmvMetadataFieldsFetcherFromQuery {
 public:
  using TmvMetadataFieldsFetcherFromQuery::TmvMetadataFieldsFetcherFromQuery;

 protected:
  TmvVariant GetPrimary() override {
    return TmvVariant(!CatalogValue(Column(PrimaryFieldName)).IsClear());
  }
};

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsSQL92(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    provider->ExecSQLDatasetUR(connection, kInformationSchemaProbeQuery, nullptr);
    return scsSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSQL92(TmvBaseSQLContext* context, TmvConnection* connection) {
  return CatalogNameFromQuery(context, connection, kInformationSchemaDefaultDatabaseQuery, u"CATALOG_NAME");
}

bool LoadMetadataObjectsSQL92(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  const TDatabaseScope scope = ScopeOf(context, connection, database);
  TmvMetadataObjectFetcherFromQuery tables(context, connection);
  tables.SQL = InformationSchemaTablesQuery(scope.Prefix, scope.Name);
  tables.SchemaFieldName = u"TABLE_SCHEMA";
  tables.NameFieldName = u"TABLE_NAME";
  tables.TypeFieldName = u"TABLE_TYPE";
  tables.UserTableTypeValue = TmvVariantArray{u"BASE TABLE", u"TABLE"};
  tables.SystemTableTypeValue = u"SYSTEM TABLE";
  tables.SetFilter(filter);
  if (!TryOpen(tables)) return false;
  tables.LoadMetadata(container, filter, database);
  TmvMetadataObjectFetcherFromQuery views(context, connection);
  views.SQL = InformationSchemaViewsQuery(scope.Prefix, scope.Name);
  views.SchemaFieldName = u"TABLE_SCHEMA";
  views.NameFieldName = u"TABLE_NAME";
  views.SetDefaultObjectClass(&TmvMetadataView::StaticClass());
  views.SetFilter(filter);
  // The tables stay when a server has no views view.
  if (TryOpen(views)) views.LoadMetadata(container, filter, database);
  return true;
}

bool LoadMetadataRelationsSQL92(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database) {
  if (!CatalogSqlProvider(context) || !container) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = InformationSchemaRelationsQuery(ScopeOf(context, connection, database).Prefix);
  fetcher.PrimaryDatabaseFieldName = u"PK_TABLE_DATABASE";
  fetcher.PrimarySchemaFieldName = u"PK_SCHEMA_NAME";
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PK_FIELD_NAME";
  fetcher.ChildDatabaseFieldName = u"FK_TABLE_DATABASE";
  fetcher.ChildSchemaFieldName = u"FK_SCHEMA_NAME";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"FK_FIELD_NAME";
  fetcher.KeySequenceFieldName = u"ORDINAL";
  if (!TryOpen(fetcher)) return false;
  fetcher.LoadMetadata(container, filter, database);
  return true;
}

bool LoadFieldsForObjectSQL92(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TInformationSchemaFieldsFetcher fetcher(context, connection);
  fetcher.SQL = InformationSchemaFieldsQuery(object->DatabaseStrNotQuoted(), object->SchemaStrNotQuoted(),
                                             object->NameStrNotQuoted());
  fetcher.NameFieldName = u"COLUMN_NAME";
  fetcher.TypeFieldName = u"DATA_TYPE";
  fetcher.SizeFieldName = u"CHARACTER_MAXIMUM_LENGTH";
  fetcher.PrecisionFieldName = u"NUMERIC_PRECISION";
  fetcher.DefaultValueFieldName = u"COLUMN_DEFAULT";
  fetcher.NullableFieldName = u"IS_NULLABLE";
  fetcher.NullableTrueValue = u"YES";
  fetcher.PrimaryFieldName = u"PRIMARY_KEY";
  if (!TryOpen(fetcher)) return false;
  fetcher.LoadFields(object->GetFields());
  return true;
}

}  // namespace mv
