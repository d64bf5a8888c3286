// The catalog of a SQL Server (and a SQL Server Compact) database read
// through the metadata provider: the probes, the version, databases,
// schemas, objects and relations. Each loader runs its catalog query (see
// MSSQLCatalogQueries.h) on the provider and hands the rows to a fetcher;
// a loader answers false when the provider cannot run SQL or the server
// refuses the query, and the caller falls back on the metadata provider.
// `major` is the server's major version number (7 to 12).
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
class TSQLQualifiedName;
class TSQLIdentifiersCollection;

// scsSupport when "exec sp_server_info 1" names the server as SQL Server,
// scsNotSupport when it fails or names another, scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsMSSQL(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// scsSupport when the compact edition's probe opens.
TmvSyntaxSupportConectedServer IsConnectedServerIsMSSQLCompact(TmvBaseMetadataProvider* provider,
                                                               TmvConnection* connection);
// The major version the server reports (CalcServerVersionMSSQL of the answer).
int ReadServerVersionMSSQL(TmvBaseMetadataProvider* provider, TmvConnection* connection);

// The connected database; null when the server names none.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameMSSQL(TmvBaseSQLContext* context, TmvConnection* connection);
// The user's own schema; false when the server gives no answer.
bool GetDefaultSchemaNamesMSSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                TSQLIdentifiersCollection& names);
bool GetDatabasesListMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                           std::vector<WideString>& list);
bool GetSchemasListMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                         const TSQLQualifiedName* database, std::vector<WideString>& list);
bool LoadMetadataObjectsMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                              TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                              const TSQLQualifiedName* database);
bool LoadMetadataRelationsMSSQL(TmvBaseSQLContext* context, TmvConnection* connection, int major,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database);
bool LoadMetadataObjectsMSSQLCompact(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter);
bool LoadMetadataRelationsMSSQLCompact(TmvBaseSQLContext* context, TmvConnection* connection,
                                       TmvMetadataContainer* container, const TmvMetadataFilter* filter);

// The compact edition's catalog statements.
extern const char16_t* const kMSSQLCompactObjectsQuery;
extern const char16_t* const kMSSQLCompactRelationsQuery;

}  // namespace mv
