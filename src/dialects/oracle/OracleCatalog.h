// The catalog operations of Oracle that the provider runs through the
// metadata provider (texts in OracleCatalogQueries.h). Each answers false or
// nothing when it cannot run SQL or the server refuses the statement, so
// that the metadata provider answers instead.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Oracle when the probe's first field names it; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The major version from the banner, within 7 to 11; 11 when none is read.
int CalcServerVersionOracle(TmvBaseMetadataProvider* provider, TmvConnection* connection);
// The current schema of the session.
bool GetDefaultSchemaNamesOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TSQLIdentifiersCollection& names);
// The users that own tables.
bool GetSchemasListOracle(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);

// Tables, views, materialized views (as views), synonyms and, from Oracle 9,
// pipelined functions (as procedures), each kind by its own statement; a
// database names a database link to read them through. The owners of
// kOracleSystemSchemas make system objects. False when the tables query is
// refused; a later kind the server lacks is left out.
bool LoadMetadataObjectsOracle(TmvBaseSQLContext* context, TmvConnection* connection, int majorVersion,
                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                               const TSQLQualifiedName* database);
// The foreign keys, one row a column pair, limited by the filter's table
// conditions on either side.
bool LoadMetadataRelationsOracle(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database);

// The columns of a table or view by ALL_TAB_COLUMNS, the owner and name
// passed as parameters; an object without a schema is the current schema's.
bool LoadFieldsForObjectOracle(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
