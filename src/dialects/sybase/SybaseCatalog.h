// The catalog operations of the Sybase family that the provider runs
// through the metadata provider (texts in SybaseCatalogQueries.h). Each
// answers false or nothing when it cannot run SQL or the server refuses the
// statement, so that the metadata provider answers instead.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;

// Sybase when the ASA or the ASE probe names the family; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsSybase(TmvBaseMetadataProvider* provider,
                                                         TmvConnection* connection);
// True when the ASA probe names the family.
bool IsConnectedServerIsSybaseASA(TmvBaseMetadataProvider* provider, TmvConnection* connection);
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameSybase(TmvBaseSQLContext* context, TmvConnection* connection);
bool GetDefaultSchemaNamesSybase(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names);
bool GetDatabasesListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
bool GetSchemasListSybase(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);

}  // namespace mv
