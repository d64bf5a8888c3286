#include "dialects/pgsql/PGSQLCatalog.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FilterMacros.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

namespace mv {

const char16_t* const kPostgreSQLProbeQuery =
    u"select cast(version() as char(10)), (select 1 from pg_catalog.pg_class limit 1) as t";
const char16_t* const kPostgreSQLDefaultDatabaseQuery = u"select cast(current_database() as varchar(255))";
const char16_t* const kPostgreSQLDefaultSchemasQuery =
    u"select cast(array_to_string(current_schemas(true),';') as varchar(255))";
const char16_t* const kPostgreSQLSchemasQuery = u"select nspname as name from pg_catalog.pg_namespace order by name";
const char16_t* const kPostgreSQLObjectsQuery =
    u"select * from (select ns.nspname as SCHEMANAME, c.relname as TABLENAME, c.relkind as TABLETYPE  from "
    u"pg_catalog.pg_class c    inner join pg_catalog.pg_namespace ns on c.relnamespace=ns.oid) q where "
    u"((q.TABLETYPE='v' or q.TABLETYPE='m') and {ECDC625C-F3BD-4A65-AC25-828D3C06DAD0})or   ((q.TABLETYPE='r' or "
    u"q.TABLETYPE='t' or q.TABLETYPE='f') and {D2A96EA6-30C3-45CB-9C88-C71927284386})";
const char16_t* const kPostgreSQLRelationsQuery =
    u"select current_database() as PK_TABLE_DATABASE, pns.nspname as PK_SCHEMA_NAME, pt.relname as PK_TABLE_NAME, "
    u"array_to_string(ARRAY(select attname from pg_catalog.pg_attribute where attrelid=pt.oid and ARRAY[attnum] <@ "
    u"c.confkey),';') as pk_field_name, current_database() as FK_TABLE_DATABASE, kns.nspname as FK_SCHEMA_NAME, "
    u"kt.relname as FK_TABLE_NAME, array_to_string(ARRAY(select attname from pg_catalog.pg_attribute where "
    u"attrelid=kt.oid and ARRAY[attnum] <@ c.conkey),';') as fk_field_name from pg_catalog.pg_constraint c inner join "
    u"pg_catalog.pg_class kt on kt.oid=c.conrelid inner join pg_catalog.pg_namespace kns on kns.oid=kt.relnamespace "
    u"inner join pg_catalog.pg_class pt on pt.oid=c.confrelid inner join pg_catalog.pg_namespace pns on "
    u"pns.oid=pt.relnamespace where c.contype='f'";
const char16_t* const kPostgreSQLCustomAggregatesQuery =
    u"select distinct cast(a.aggfnoid as varchar) from pg_aggregate a inner join pg_proc p on a.aggfnoid=p.oid where "
    u"p.pronargs=1";

WideString PostgreSQLFieldsQuery(WideStringView schema, WideStringView name) {
  const WideString where =
      schema.empty() ? WideString(u"pg_catalog.pg_table_is_visible(c.oid)") : u"n.nspname=" + SQLQuoteString(schema);
  return u"select a.attname, t.typname, case when t.typname in ('varchar','bpchar') and a.atttypmod>4 then "
         u"a.atttypmod-4 end as size, case when t.typname='numeric' and a.atttypmod>4 then ((a.atttypmod-4)>>16)&65535 "
         u"end as \"precision\", case when t.typname='numeric' and a.atttypmod>4 then (a.atttypmod-4)&65535 end as "
         u"scale, pg_catalog.pg_get_expr(d.adbin, d.adrelid) as defval, a.attnotnull, exists(select 1 from "
         u"pg_catalog.pg_constraint k where k.conrelid=c.oid and k.contype='p' and a.attnum=any(k.conkey)) as ispk, "
         u"pg_catalog.col_description(c.oid, a.attnum) as description from pg_catalog.pg_attribute a inner join "
         u"pg_catalog.pg_class c on c.oid=a.attrelid inner join pg_catalog.pg_namespace n on n.oid=c.relnamespace "
         u"inner join pg_catalog.pg_type t on t.oid=a.atttypid left join pg_catalog.pg_attrdef d on "
         u"d.adrelid=a.attrelid and d.adnum=a.attnum where a.attnum>0 and not a.attisdropped and " +
         where + u" and c.relname=" + SQLQuoteString(name) + u" order by a.attnum";
}

bool TmvPgSQLMetadataObjectFetcherFromQuery::CalcSystemFlag() {
  return TmvMetadataObjectFetcherFromQuery::CalcSystemFlag() || WideStartsText(u"pg_", ColumnText(SchemaFieldName));
}

TmvVariant TmvPgSQLMetadataFieldsFetcherFromQuery::GetNullable() {
  TmvVariant notNull = TmvMetadataFieldsFetcherFromQuery::GetNullable();
  if (notNull.IsClear()) return notNull;
  try {
    return TmvVariant(!notNull.AsBoolean());
  } catch (const Exception&) {
    return TmvVariant::Null();
  }
}

namespace {

// Whether `database` names a database other than the connected one, which
// no statement of this connection reaches.
bool IsOtherDatabase(TmvBaseMetadataProvider& provider, TmvConnection* connection, const TSQLQualifiedName* database) {
  if (IsQualifiedNameEmpty(database)) return false;
  const WideString name = database->GetQualifiedNameWithoutQuotes();
  try {
    return FirstCatalogValue(provider, connection, kPostgreSQLDefaultDatabaseQuery, u"current_database") != name;
  } catch (const Exception&) {
    return true;
  }
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsPostgreSQL(TmvBaseMetadataProvider* provider,
                                                             TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    std::unique_ptr<TmvDataSet> probe = provider->ExecSQLDatasetUR(connection, kPostgreSQLProbeQuery, nullptr);
    if (probe->IsEmpty() || probe->FieldCount() == 0) return scsNotSupport;
    return probe->Fields()[0].AsWideString().find(u"PostgreSQL") != WideString::npos ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNamePostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection) {
  return CatalogNameFromQuery(context, connection, kPostgreSQLDefaultDatabaseQuery, u"current_database");
}

bool GetDefaultSchemaNamesPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TSQLIdentifiersCollection& names) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return false;
  WideString path;
  try {
    path = FirstCatalogValue(*provider, connection, kPostgreSQLDefaultSchemasQuery, u"array_to_string");
  } catch (const Exception&) {
    return false;
  }
  const std::vector<WideString> schemas = SplitFieldList(path, u";");
  if (schemas.empty()) return false;
  for (const WideString& schema : schemas)
    if (!names.ContainsSameIdStr(schema)) names.AddIdentifier(schema);
  return true;
}

bool GetSchemasListPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection, const TSQLQualifiedName* database,
                              std::vector<WideString>& list) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || IsOtherDatabase(*provider, connection, database)) return false;
  return LoadCatalogSchemasList(context, connection, kPostgreSQLSchemasQuery, u"name", list);
}

bool LoadMetadataObjectsPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container || IsOtherDatabase(*provider, connection, database)) return false;
  TmvPgSQLMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kPostgreSQLObjectsQuery;
  fetcher.SchemaFieldName = u"SCHEMANAME";
  fetcher.NameFieldName = u"TABLENAME";
  fetcher.TypeFieldName = u"TABLETYPE";
  fetcher.UserTableTypeValue = TmvVariantArray{u"r", u"t", u"f"};
  fetcher.UserViewTypeValue = TmvVariantArray{u"v", u"m"};
  auto system = TastCreate<TSQLIdentifiersCollection>(context);
  system->AddIdentifier(u"pg_catalog");
  system->AddIdentifier(u"information_schema");
  fetcher.SetSystemSchemaNames(system.get());
  fetcher.SetFilter(filter);
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadMetadataRelationsPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                     const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container || IsOtherDatabase(*provider, connection, database)) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kPostgreSQLRelationsQuery;
  // The database columns name the connected database, which is the one the
  // objects were loaded into (the default, or none where the dialect has no
  // databases): the fetcher completes both sides with it, as it did the objects.
  fetcher.PrimarySchemaFieldName = u"PK_SCHEMA_NAME";
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"pk_field_name";
  fetcher.ChildSchemaFieldName = u"FK_SCHEMA_NAME";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"fk_field_name";
  fetcher.FieldListSeparator = u";";
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvPgSQLMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = PostgreSQLFieldsQuery(object->SchemaStrNotQuoted(), object->NameStrNotQuoted());
  fetcher.NameFieldName = u"attname";
  fetcher.TypeFieldName = u"typname";
  fetcher.SizeFieldName = u"size";
  fetcher.PrecisionFieldName = u"precision";
  fetcher.ScaleFieldName = u"scale";
  fetcher.DefaultValueFieldName = u"defval";
  fetcher.NullableFieldName = u"attnotnull";
  fetcher.PrimaryFieldName = u"ispk";
  fetcher.ShortDescriptionFieldName = u"description";
  return TryLoadCatalogFields(fetcher, object);
}

bool LoadMetadataCustomAggregateNamesPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataContainer* container) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  std::unique_ptr<TmvDataSet> rows;
  try {
    rows = provider->ExecSQLDatasetUR(connection, kPostgreSQLCustomAggregatesQuery, nullptr);
  } catch (const Exception&) {
    return false;
  }
  TmvField* column = FindCatalogColumn(rows.get(), u"aggfnoid");
  if (!column) return false;
  const TSQLIdentifiersCollection* defaults = container->DefaultSchemaNames();
  for (; !rows->Eof(); rows->Next()) {
    TmvOwned<TSQLQualifiedName> name;
    try {
      name = context->ParseQualifiedNameQuoteIfNeed(column->AsWideString());
    } catch (const Exception&) {
      continue;
    }
    if (IsQualifiedNameEmpty(name.get())) continue;
    if (name->GetCount() == 2 && defaults) {
      const auto* schema = TmvCast<TastTokenIdentifier>(name->Token(1));
      if (schema && defaults->ContainsSameId(schema)) name->RemoveFirstPrefix();
    }
    if (context->IsNameOfAggregate(name.get()) || context->IsNameOfPrefixedAggregate(name.get()) ||
        context->IsNameOfStarAggregate(name.get()) || context->IsNameOfMultiparamAggregate(name.get()) ||
        container->CustomAggregateFunctions()->IndexOf(name.get()) >= 0)
      continue;
    container->CustomAggregateFunctions()->Add(name.get());
  }
  return true;
}

}  // namespace mv
