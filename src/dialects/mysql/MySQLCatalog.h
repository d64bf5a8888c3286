// The catalog of a MySQL or MariaDB server read through the metadata
// provider: the probe, the version, the default database, the databases,
// the tables and views of one database or of all, their foreign keys and the
// fields of one object. Each loader runs its catalog statement on the
// provider and hands the rows to a fetcher; a loader answers false when the
// provider cannot run SQL or the server refuses the statement, and the
// caller falls back on the metadata provider.
//
// The server's version is asked for once per load; from 5.0.0 on the
// loaders read information_schema, below it "show tables" and "show
// columns", and there are no foreign keys. Names that go into a statement
// are string literals (single quotes and backslashes doubled, since the
// server reads a backslash in a string as an escape) or names in back
// quotes (back quotes doubled), so that no name changes the statement.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TSQLQualifiedName;

extern const char16_t* const kMySQLProbeQuery;            // database, version
extern const char16_t* const kMySQLVersionQuery;          // version()
extern const char16_t* const kMySQLDefaultDatabaseQuery;  // DATABASE(): NULL without one
extern const char16_t* const kMySQLDatabasesQuery;        // Database
// The version assumed where none can be read.
inline constexpr int kMySQLHighestServerVersion = 999999;
// The first version with information_schema.
inline constexpr int kMySQLInformationSchemaVersion = 50000;

// A string literal the server reads back as `text` whether or not it takes
// a backslash as an escape: quotes doubled, backslashes doubled.
WideString MySQLQuoteString(WideStringView text);
// A name in back quotes, back quotes doubled.
WideString MySQLQuoteName(WideStringView name);

// table_name, table_type of the objects of `database` (a LIKE pattern).
WideString MySQLObjectsQuery(WideStringView database);
// "show tables", of `database` when there is one.
WideString MySQLShowTablesQuery(WideStringView database);
// The foreign keys, one row a pair of fields: PK_TABLE_DATABASE,
// PK_TABLE_NAME, PK_FIELD_NAME, FK_TABLE_DATABASE, FK_TABLE_NAME,
// FK_FIELD_NAME, ORDINAL; of `database`, of every database when it is empty.
WideString MySQLRelationsQuery(WideStringView database);
// The columns of one table from information_schema, and the form before 5.0.0.
WideString MySQLFieldsQuery(WideStringView database, WideStringView name);
WideString MySQLShowColumnsQuery(WideStringView database, WideStringView name);

// The objects line on the catalog query: the name is the first column,
// whatever its title ("show tables" names it after the database).
class TmvMySQLMetadataObjectFetcherFromQuery : public TmvMetadataObjectFetcherFromQuery {
 public:
  using TmvMetadataObjectFetcherFromQuery::TmvMetadataObjectFetcherFromQuery;

 protected:
  void CalcObjectName(TastTokenIdentifier& schema, TastTokenIdentifier& name) override;
};

// scsSupport when the probe runs, scsNotSupport when it fails, scsDontKnow
// without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsMySQL(TmvBaseMetadataProvider* provider,
                                                        TmvConnection* connection);
// The version number of the server (ParseServerVersionMySQL, which may
// raise); kMySQLHighestServerVersion without SQL or an answer.
int CalcServerVersionMySQL(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The current database; null without one.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameMySQL(TmvBaseSQLContext* context, TmvConnection* connection);
bool GetDatabasesListMySQL(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
// The objects of `database`; without one, of the current database, or of
// every database when there is no current one.
bool LoadMetadataObjectsMySQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter, const TSQLQualifiedName* database);
// The foreign keys of `database`, or of every database without one (keys
// whose objects are not in the container are read past).
bool LoadMetadataRelationsMySQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database);
// Types, sizes, nullability, defaults, primary key and comments of the
// fields of `object`, in the object's database or the current one; `version`
// (the provider's) picks information_schema or "show columns".
bool LoadFieldsForObjectMySQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object,
                              int version);

}  // namespace mv
