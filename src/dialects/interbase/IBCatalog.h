// The catalog of an InterBase server read through the metadata provider,
// over the statements of IBCatalogQueries.h by the loaders the family
// shares (RdbCatalog.h, where the rules of loading are). The statements are
// Firebird's but for the fields, whose type is always the name the catalog
// gives the type, never the domain.
#pragma once

#include "dialects/interbase/RdbCatalog.h"

namespace mv {

// The statements of InterBase's catalog as the shared loaders take them.
extern const TmvRdbCatalogQueries kIBCatalogQueries;

// scsSupport when the probe runs, scsNotSupport when it fails, scsDontKnow
// without SQL. A Firebird server passes the probe too.
TmvSyntaxSupportConectedServer IsConnectedServerIsInterbase(TmvBaseMetadataProvider* provider,
                                                            TmvConnection* connection);
// Tables, then views, then the stored procedures where RDB$PROCEDURES
// exists; false when the tables cannot be read.
bool LoadMetadataObjectsInterbase(TmvBaseSQLContext* context, TmvConnection* connection,
                                  TmvMetadataContainer* container, const TmvMetadataFilter* filter);
// The foreign keys, one row a pair of fields.
bool LoadMetadataRelationsInterbase(TmvBaseSQLContext* context, TmvConnection* connection,
                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter);
// Types, sizes, nullability, defaults, primary key and descriptions of the
// fields of `object`.
bool LoadFieldsForObjectInterbase(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
