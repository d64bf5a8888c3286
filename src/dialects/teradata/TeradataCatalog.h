// The catalog operations of Teradata that the provider runs through the
// metadata provider (texts in TeradataCatalogQueries.h). Each answers false
// or nothing when it cannot run SQL or the server refuses the statement, so
// that the provider can fall back on the metadata provider.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Teradata when dbc.dbcinfo answers with a VERSION column; scsDontKnow
// without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsTeradata(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection);
// The current database, the one default schema.
bool GetDefaultSchemaNamesTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TSQLIdentifiersCollection& names);
// The databases of the server.
bool GetSchemasListTeradata(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
// Tables and views with their comments; those of the server's own databases
// are system objects.
bool LoadMetadataObjectsTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database);
// The referential constraints, a column pair a row, one constraint an index.
bool LoadMetadataRelationsTeradata(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
// The columns of a table or view of its database (the current one when the
// name has none).
bool LoadFieldsForObjectTeradata(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
