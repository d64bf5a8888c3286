#include "dialects/mysql/MySQLCatalog.h"

#include "dialects/mysql/MYSQLSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataProvider.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/Tokens.h"

namespace mv {

const char16_t* const kMySQLProbeQuery = u"select DATABASE() as `database`, VERSION() as `version`";
const char16_t* const kMySQLVersionQuery = u"select version()";
const char16_t* const kMySQLDefaultDatabaseQuery = u"select DATABASE()";
const char16_t* const kMySQLDatabasesQuery = u"show databases";

WideString MySQLQuoteString(WideStringView text) {
  WideString quoted = u"'";
  for (char16_t c : text) {
    if (c == u'\'' || c == u'\\') quoted += c;
    quoted += c;
  }
  return quoted + u"'";
}

WideString MySQLQuoteName(WideStringView name) {
  WideString quoted = u"`";
  for (char16_t c : name) {
    if (c == u'`') quoted += c;
    quoted += c;
  }
  return quoted + u"`";
}

WideString MySQLObjectsQuery(WideStringView database) {
  return u"select table_name,table_type from information_schema.tables where table_schema like " +
         MySQLQuoteString(database);
}

WideString MySQLShowTablesQuery(WideStringView database) {
  return database.empty() ? WideString(u"show tables") : u"show tables from " + MySQLQuoteName(database);
}

WideString MySQLRelationsQuery(WideStringView database) {
  return u"select cast(kcu.REFERENCED_TABLE_SCHEMA as char(255)) as PK_TABLE_DATABASE, "
         u"cast(kcu.REFERENCED_TABLE_NAME as char(255)) as PK_TABLE_NAME, cast(kcu.REFERENCED_COLUMN_NAME as "
         u"char(255)) as PK_FIELD_NAME, cast(kcu.TABLE_SCHEMA as char(255)) as FK_TABLE_DATABASE, "
         u"cast(kcu.TABLE_NAME as char(255)) as FK_TABLE_NAME, cast(kcu.COLUMN_NAME as char(255)) as FK_FIELD_NAME, "
         u"kcu.ORDINAL_POSITION as ORDINAL from INFORMATION_SCHEMA.KEY_COLUMN_USAGE kcu where "
         u"(kcu.REFERENCED_COLUMN_NAME is not null)and  (kcu.TABLE_SCHEMA like " +
         (database.empty() ? WideString(u"'%'") : MySQLQuoteString(database)) + u")";
}

WideString MySQLFieldsQuery(WideStringView database, WideStringView name) {
  // Without a known database the current one is meant.
  return u"select * from INFORMATION_SCHEMA.COLUMNS isc where isc.TABLE_NAME=" + MySQLQuoteString(name) +
         u" and isc.TABLE_SCHEMA=" + (database.empty() ? WideString(u"DATABASE()") : MySQLQuoteString(database));
}

WideString MySQLShowColumnsQuery(WideStringView database, WideStringView name) {
  return u"show columns from " + (database.empty() ? WideString() : MySQLQuoteName(database) + u".") +
         MySQLQuoteName(name);
}

void TmvMySQLMetadataObjectFetcherFromQuery::CalcObjectName(TastTokenIdentifier& /*schema*/,
                                                             TastTokenIdentifier& name) {
  TmvDataSet* rows = Dataset();
  if (!rows || rows->FieldCount() == 0) return;
  SetCatalogIdentifier(name, TrimName(rows->Fields()[0].AsWideString()));
}

namespace {

// The first column of the first row of `sql`; empty for none or NULL. A
// statement the server refuses raises.
WideString FirstValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, WideStringView sql) {
  std::unique_ptr<TmvDataSet> rows = provider.ExecSQLDatasetUR(connection, sql, nullptr);
  if (!rows || rows->Eof() || rows->FieldCount() == 0 || rows->Fields()[0].IsNull()) return {};
  return rows->Fields()[0].AsWideString();
}

// The current database; empty without one or an answer.
WideString CurrentDatabase(TmvBaseMetadataProvider& provider, TmvConnection* connection) {
  try {
    return provider.TrimName(FirstValue(provider, connection, kMySQLDefaultDatabaseQuery));
  } catch (const Exception&) {
    return {};
  }
}

// The objects of one database; `database` null for the current one, whose name is `name`.
bool LoadObjectsOfDatabase(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database, WideStringView name,
                           int version) {
  TmvMySQLMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SetFilter(filter);
  if (version >= kMySQLInformationSchemaVersion) {
    fetcher.SQL = MySQLObjectsQuery(name);
    fetcher.NameFieldName = u"table_name";
    fetcher.TypeFieldName = u"table_type";
    fetcher.UserTableTypeValue = u"BASE TABLE";
    fetcher.SystemTableTypeValue = u"SYSTEM TABLE";
    fetcher.UserViewTypeValue = u"VIEW";
    fetcher.SystemViewTypeValue = u"SYSTEM VIEW";
    if (TryLoadCatalogMetadata(fetcher, container, filter, database)) return true;
  }
  // Before 5.0.0, or a server without information_schema.tables: every row a table.
  TmvMySQLMetadataObjectFetcherFromQuery tables(context, connection);
  tables.SetFilter(filter);
  tables.SQL = MySQLShowTablesQuery(database ? name : WideStringView());
  tables.SetDefaultObjectClass(&TmvMetadataTable::StaticClass());
  return TryLoadCatalogMetadata(tables, container, filter, database);
}

}  // namespace

TmvSyntaxSupportConectedServer IsConnectedServerIsMySQL(TmvBaseMetadataProvider* provider,
                                                        TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    provider->ExecSQLDatasetUR(connection, kMySQLProbeQuery, nullptr);
    return scsSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

int CalcServerVersionMySQL(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return kMySQLHighestServerVersion;
  WideString text;
  try {
    text = FirstValue(*provider, connection, kMySQLVersionQuery);
  } catch (const Exception&) {
    return kMySQLHighestServerVersion;
  }
  if (text.empty()) return kMySQLHighestServerVersion;
  return ParseServerVersionMySQL(UTF8Encode(text));
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameMySQL(TmvBaseSQLContext* context, TmvConnection* connection) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  return OnePartCatalogName(context, CurrentDatabase(*provider, connection));
}

bool GetDatabasesListMySQL(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  return LoadCatalogDatabasesList(context, connection, kMySQLDatabasesQuery, u"DATABASE", list);
}

bool LoadMetadataObjectsMySQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const int version = CalcServerVersionMySQL(provider, connection);
  if (!IsQualifiedNameEmpty(database))
    return LoadObjectsOfDatabase(context, connection, container, filter, database,
                                 database->GetQualifiedNameWithoutQuotes(), version);
  if (const WideString current = CurrentDatabase(*provider, connection); !current.empty())
    return LoadObjectsOfDatabase(context, connection, container, filter, nullptr, current, version);
  std::vector<WideString> databases;
  if (!GetDatabasesListMySQL(context, connection, databases)) return false;
  bool loaded = false;
  for (const WideString& name : databases) {
    auto each = TastCreate<TSQLQualifiedName>(context);
    each->AddName(name, false);
    loaded = LoadObjectsOfDatabase(context, connection, container, filter, each.get(), name, version) || loaded;
  }
  return loaded;
}

bool LoadMetadataRelationsMySQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  if (CalcServerVersionMySQL(provider, connection) < kMySQLInformationSchemaVersion) return false;
  TmvMetadataRelationsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = MySQLRelationsQuery(IsQualifiedNameEmpty(database) ? WideString()
                                                                   : database->GetQualifiedNameWithoutQuotes());
  fetcher.PrimaryDatabaseFieldName = u"PK_TABLE_DATABASE";
  fetcher.PrimaryNameFieldName = u"PK_TABLE_NAME";
  fetcher.PrimaryFieldFieldName = u"PK_FIELD_NAME";
  fetcher.ChildDatabaseFieldName = u"FK_TABLE_DATABASE";
  fetcher.ChildNameFieldName = u"FK_TABLE_NAME";
  fetcher.ChildFieldFieldName = u"FK_FIELD_NAME";
  fetcher.KeySequenceFieldName = u"ORDINAL";
  return TryLoadCatalogMetadata(fetcher, container, filter, database);
}

bool LoadFieldsForObjectMySQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object,
                              int version) {
  if (!CatalogSqlProvider(context) || !object) return false;
  const WideString database = object->DatabaseStrNotQuoted();
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.NullableTrueValue = u"YES";
  fetcher.NullableFalseValue = u"NO";
  fetcher.PrimaryTrueValue = u"PRI";
  if (version >= kMySQLInformationSchemaVersion) {
    fetcher.SQL = MySQLFieldsQuery(database, object->NameStrNotQuoted());
    fetcher.NameFieldName = u"COLUMN_NAME";
    fetcher.TypeFieldName = u"DATA_TYPE";
    fetcher.SizeFieldName = u"CHARACTER_MAXIMUM_LENGTH";
    fetcher.PrecisionFieldName = u"NUMERIC_PRECISION";
    fetcher.ScaleFieldName = u"NUMERIC_SCALE";
    fetcher.DefaultValueFieldName = u"COLUMN_DEFAULT";
    fetcher.NullableFieldName = u"IS_NULLABLE";
    fetcher.PrimaryFieldName = u"COLUMN_KEY";
    fetcher.ShortDescriptionFieldName = u"COLUMN_COMMENT";
  } else {
    fetcher.SQL = MySQLShowColumnsQuery(database, object->NameStrNotQuoted());
    fetcher.NameFieldName = u"Field";
    fetcher.TypeFieldName = u"Type";
    fetcher.DefaultValueFieldName = u"Default";
    fetcher.NullableFieldName = u"Null";
    fetcher.PrimaryFieldName = u"Key";
  }
  return TryLoadCatalogFields(fetcher, object);
}

}  // namespace mv
