// The catalog of a Firebird server read through the metadata provider: the
// probe, the tables and views (system ones by RDB$SYSTEM_FLAG), the stored
// procedures, the foreign keys and the fields of one table or view, over
// the statements of FirebirdCatalogQueries.h by the loaders the family
// shares (dialects/interbase/RdbCatalog.h, where the rules of loading are).
#pragma once

#include "dialects/interbase/RdbCatalog.h"

namespace mv {

// The statements of Firebird's catalog as the shared loaders take them.
extern const TmvRdbCatalogQueries kFirebirdCatalogQueries;

// scsSupport when the probe runs, scsNotSupport when it fails, scsDontKnow
// without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsFirebird(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection);
// Tables, then views, then the stored procedures where RDB$PROCEDURES
// exists; false when the tables cannot be read.
bool LoadMetadataObjectsFirebird(TmvBaseSQLContext* context, TmvConnection* connection,
                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter);
// The foreign keys, one row a pair of fields.
bool LoadMetadataRelationsFirebird(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter);
// Types, sizes, nullability, defaults, primary key and descriptions of the
// fields of `object`.
bool LoadFieldsForObjectFirebird(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
