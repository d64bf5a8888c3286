// The catalog operations of Advantage that the provider runs through the
// metadata provider (texts in AdvantageCatalogQueries.h), by the system
// procedures. Each answers false or nothing when it cannot run SQL or the
// server refuses the statement, so that the provider can fall back on the
// metadata provider.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mv {

class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// Advantage when the probe answers a row; scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsAdvantage(TmvBaseMetadataProvider* provider,
                                                            TmvConnection* connection);
// DATABASE(); null when none is read.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNameAdvantage(TmvBaseSQLContext* context, TmvConnection* connection);
bool GetDatabasesListAdvantage(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list);
// Tables and views of the database (the connected one for none).
bool LoadMetadataObjectsAdvantage(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                  const TSQLQualifiedName* database);
// The foreign keys in key order.
bool LoadMetadataRelationsAdvantage(TmvBaseSQLContext* context, TmvConnection* connection,
                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                    const TSQLQualifiedName* database);
// The columns of a table or view of the database its name has (Database()
// for none or the connected one), then its primary key.
bool LoadFieldsForObjectAdvantage(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
