#include "dialects/sqlite/SQLiteMetadataHelpers.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "metadata/fetchers/FetcherBase.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/NamesFetchers.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "metadata/fetchers/RelationsFetcher.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

namespace {

constexpr const char16_t* kProbeQuery = u"select NAME from sqlite_master";
constexpr const char16_t* kDatabasesQuery = u"pragma database_list";

// The database of a name, empty for none.
WideString DatabaseName(const TSQLQualifiedName* database) {
  return database && database->GetCount() > 0 ? database->Token(0)->Token : WideString();
}

bool IsMain(WideStringView database) { return database.empty() || WideSameText(database, u"main"); }

// The keys of one table: the rows name the referenced table, and the table
// that holds the keys is the one asked about (ChildName).
class TSQLiteTableKeysFetcher final : public TmvMetadataRelationsFetcherFromQuery {
 public:
  using TmvMetadataRelationsFetcherFromQuery::TmvMetadataRelationsFetcherFromQuery;

 protected:
  void CalcChildObjectName(TSQLQualifiedName& database, TastTokenIdentifier& schema,
                           TastTokenIdentifier& name) override {
    TmvBaseMetadataRelationsFetcher::CalcChildObjectName(database, schema, name);
  }
};

}  // namespace

WideString SQLiteQuotedName(WideStringView name) {
  WideString quoted = u"\"";
  for (char16_t c : name) {
    quoted += c;
    if (c == u'"') quoted += c;
  }
  return quoted + u"\"";
}

WideString SQLiteObjectsQuery(WideStringView database) {
  if (WideSameText(database, u"temp")) return u"select * from temp.sqlite_temp_master";
  return u"select * from " + (database.empty() ? WideString(u"main") : SQLiteQuotedName(database)) + u".sqlite_master";
}

WideString SQLitePragmaQuery(WideStringView pragma, WideStringView database, WideStringView name) {
  WideString text = u"pragma ";
  if (!database.empty()) text += SQLiteQuotedName(database) + u".";
  return text + WideString(pragma) + u"(" + SQLiteQuotedName(name) + u");";
}

TmvSyntaxSupportConectedServer IsConnectedServerIsSQLite(TmvBaseMetadataProvider* provider, TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    provider->ExecSQLDatasetUR(connection, kProbeQuery, nullptr);
    return scsSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSQLite(TmvBaseSQLContext* context, TmvConnection*) {
  if (!CatalogSqlProvider(context)) return nullptr;
  auto name = TastCreate<TSQLQualifiedName>(context);
  name->AddName(u"main", false);
  return name;
}

bool GetDatabasesListSQLite(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) {
  if (!CatalogSqlProvider(context)) return false;
  TmvMetadataDatabasesFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = kDatabasesQuery;
  fetcher.NameFieldName = u"NAME";
  TSQLQualifiedNamesList names(context, true);
  try {
    fetcher.CreateDataset();
    fetcher.LoadDatabases(names);
  } catch (const Exception&) {
    return false;
  }
  list.clear();
  for (int i = 0; i < names.Count(); ++i) list.push_back(names.Items(i)->GetQualifiedNameWithoutQuotes());
  return true;
}

bool LoadMetadataObjectsSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                               const TmvMetadataFilter* filter, const TSQLQualifiedName* database) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider || !container) return false;
  const WideString name = DatabaseName(database);
  // The main database of our own connection: objects, fields and keys at once.
  if (IsMain(name) && dynamic_cast<TmvSQLiteConnection*>(provider->Connection())) {
    try {
      LoadSQLiteCatalog(context, container, filter);
      return true;
    } catch (const Exception&) {
      return false;
    }
  }
  TmvMetadataObjectFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = SQLiteObjectsQuery(name);
  fetcher.NameFieldName = u"NAME";
  fetcher.TypeFieldName = u"TYPE";
  fetcher.UserTableTypeValue = u"table";
  fetcher.UserViewTypeValue = u"view";
  try {
    fetcher.SetFilter(filter);
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadMetadata(container, filter, IsMain(name) ? nullptr : database);
  return true;
}

bool LoadFieldsSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  if (!CatalogSqlProvider(context) || !object) return false;
  TmvMetadataFieldsFetcherFromQuery fetcher(context, connection);
  fetcher.SQL = SQLitePragmaQuery(u"table_info", DatabaseName(object->Database()), object->NameStrNotQuoted());
  fetcher.NameFieldName = u"name";
  fetcher.TypeFieldName = u"type";
  fetcher.NullableFieldName = u"notnull";
  fetcher.NullableFalseValue = 1;
  fetcher.PrimaryFieldName = u"pk";
  fetcher.PrimaryFalseValue = 0;
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadFields(object->GetFields());
  return true;
}

bool LoadRelationsOfTableSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) {
  if (!CatalogSqlProvider(context) || !table || !table->Container()) return false;
  TSQLiteTableKeysFetcher fetcher(context, connection);
  const WideString database = DatabaseName(table->Database());
  fetcher.SQL = SQLitePragmaQuery(u"foreign_key_list", database, table->NameStrNotQuoted());
  fetcher.ChildName = SQLiteQuotedName(table->NameStrNotQuoted());
  fetcher.PrimaryNameFieldName = u"table";
  fetcher.PrimaryFieldFieldName = u"to";
  fetcher.ChildFieldFieldName = u"from";
  fetcher.RelationIdFieldName = u"id";
  fetcher.KeySequenceFieldName = u"seq";
  try {
    fetcher.CreateDataset();
  } catch (const Exception&) {
    return false;
  }
  fetcher.LoadMetadata(table->Container(), nullptr, table->Database());
  return true;
}

}  // namespace mv
