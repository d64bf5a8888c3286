// The catalog operations of Netezza that the provider runs through the
// metadata provider (texts in NetezzaCatalogQueries.h). Each answers false or
// nothing when it cannot run SQL or the server refuses the statement, so that
// the provider can fall back on the metadata provider.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TSQLIdentifiersCollection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Netezza when the probe answers a row; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsNetezza(TmvBaseMetadataProvider* provider,
                                                          TmvConnection* connection);
// current_catalog; null when none is read.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameNetezza(TmvBaseSQLContext* context, TmvConnection* connection);
// current_schema.
bool GetDefaultSchemaNamesNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TSQLIdentifiersCollection& names);
// The schemas of the database (the connected one for none); a server without
// schemas gives the database's default schema.
bool GetSchemasListNetezza(TmvBaseSQLContext* context, TmvConnection* connection, const TSQLQualifiedName* database,
                           std::vector<WideString>& list);
// Tables and views, user, system and management ones, with their
// descriptions.
bool LoadMetadataObjectsNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                const TSQLQualifiedName* database);
// The foreign keys in key order.
bool LoadMetadataRelationsNetezza(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                  const TSQLQualifiedName* database);
// The columns of a table or view of its database (the connected one when
// the name has none), then its primary key.
bool LoadFieldsForObjectNetezza(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
