// The catalog operations of Oracle that the provider runs through the
// metadata provider (texts in OracleCatalogQueries.h). Each answers false or
// nothing when it cannot run SQL or the server refuses the statement, so
// that the metadata provider answers instead.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;

// Oracle when the probe's first field names it; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The major version from the banner, within 7 to 11; 11 when none is read.
int CalcServerVersionOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The current schema of the session.
bool GetDefaultSchemaNamesOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names);
// The users that own tables.
bool GetSchemasListOracle(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);

}  // namespace mv
