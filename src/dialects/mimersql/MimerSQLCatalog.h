// The catalog operations of Mimer SQL that the provider runs through the
// metadata provider (texts in MimerSQLCatalogQueries.h). Each answers false
// when it cannot run SQL or the server refuses the statement, so that the
// provider can fall back on its base.
#pragma once

#include "frontend/SyntaxProvider.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Mimer SQL when the probe answers a row; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsMimerSQL(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection);
// Tables and views of information_schema, then the synonyms where the
// server has their view; the schemas of kMimerSQLSystemSchemas are the
// system's.
bool LoadMetadataObjectsMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                 const TSQLQualifiedName* database);
// The foreign keys by the standard views.
bool LoadMetadataRelationsMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
// The columns of a table or view with their place in the primary key.
bool LoadFieldsForObjectMimerSQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
