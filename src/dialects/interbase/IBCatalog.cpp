#include "dialects/interbase/IBCatalog.h"

#include "dialects/interbase/IBCatalogQueries.h"

namespace mv {

const TmvRdbCatalogQueries kIBCatalogQueries = {
    kIBProbeQuery,      kIBTablesQuery,    kIBViewsQuery, kIBProceduresProbeQuery,
    kIBProceduresQuery, kIBRelationsQuery, IBFieldsQuery,
};

TmvSyntaxSupportConectedServer IsConnectedServerIsInterbase(TmvBaseMetadataProvider* provider,
                                                            TmvConnection* connection) {
  return IsConnectedServerRdb(kIBCatalogQueries, provider, connection);
}

bool LoadMetadataObjectsInterbase(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  return LoadMetadataObjectsRdb(kIBCatalogQueries, context, connection, container, filter);
}

bool LoadMetadataRelationsInterbase(TmvBaseSQLContext* context, TmvConnection* connection,
                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter) {
  return LoadMetadataRelationsRdb(kIBCatalogQueries, context, connection, container, filter);
}

bool LoadFieldsForObjectInterbase(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object) {
  return LoadFieldsForObjectRdb(kIBCatalogQueries, context, connection, object);
}

}  // namespace mv
