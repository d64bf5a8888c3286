#include "dialects/firebird/FirebirdCatalog.h"

#include "dialects/firebird/FirebirdCatalogQueries.h"

namespace mv {

const TmvRdbCatalogQueries kFirebirdCatalogQueries = {
    kFirebirdProbeQuery,     kFirebirdTablesQuery,     kFirebirdViewsQuery, kFirebirdProceduresProbeQuery,
    kFirebirdProceduresQuery, kFirebirdRelationsQuery, FirebirdFieldsQuery,
};

TmvSyntaxSupportConectedServer IsConnectedServerIsFirebird(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection) {
  return IsConnectedServerRdb(kFirebirdCatalogQueries, provider, connection);
}

bool LoadMetadataObjectsFirebird(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  return LoadMetadataObjectsRdb(kFirebirdCatalogQueries, context, connection, container, filter);
}

bool LoadMetadataRelationsFirebird(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  return LoadMetadataRelationsRdb(kFirebirdCatalogQueries, context, connection, container, filter);
}

bool LoadFieldsForObjectFirebird(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  return LoadFieldsForObjectRdb(kFirebirdCatalogQueries, context, connection, object);
}

}  // namespace mv
