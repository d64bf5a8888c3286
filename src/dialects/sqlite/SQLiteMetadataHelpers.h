// The catalog of a SQLite database as the SQLite provider reads it through
// the metadata provider: the probe, the default database (main), the
// attached databases, objects, the fields of one object and the foreign keys
// of one table. The main database of a SQLite connection of our own dataset
// layer is read whole by LoadSQLiteCatalog (metadata/dataset/SQLiteCatalog.h);
// other databases and other connections by the statements below. Names go
// into statements in double quotes, a quote inside doubled. A loader answers
// false when the provider cannot run SQL or the statement is refused, and
// the caller falls back on the metadata provider.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvMetadataTable;
class TSQLQualifiedName;

// scsSupport when "select NAME from sqlite_master" runs, scsNotSupport when
// it is refused, scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsSQLite(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// `main`; null without SQL.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSQLite(TmvBaseSQLContext* context, TmvConnection* connection);
// The names of "pragma database_list".
bool GetDatabasesListSQLite(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
// The tables and views of `database` (main when it is null or empty).
bool LoadMetadataObjectsSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                               const TmvMetadataFilter* filter, const TSQLQualifiedName* database);
// The fields of one object from "pragma [db.]table_info(name);".
bool LoadFieldsSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);
// The foreign keys of one table from "pragma [db.]foreign_key_list(name);".
bool LoadRelationsOfTableSQLite(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table);

// A name in double quotes, a quote inside doubled.
WideString SQLiteQuotedName(WideStringView name);
// The statements of the loaders.
WideString SQLiteObjectsQuery(WideStringView database);
WideString SQLitePragmaQuery(WideStringView pragma, WideStringView database, WideStringView name);

}  // namespace mv
