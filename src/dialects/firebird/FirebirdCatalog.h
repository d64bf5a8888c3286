// The catalog of a Firebird server read through the metadata provider: the
// probe, the tables and views (system ones by RDB$SYSTEM_FLAG), the stored
// procedures, the foreign keys and the fields of one table or view, over
// the statements of FirebirdCatalogQueries.h. Each loader runs its
// statement on the provider and hands the rows to a fetcher; a loader
// answers false when the provider cannot run SQL or the server refuses the
// statement, and the caller falls back on the metadata provider. The
// catalog's names come padded with blanks: every fetcher trims them. A
// connection reaches one database, and names have no database or schema.
#pragma once

#include "frontend/SyntaxProvider.h"
#include "metadata/fetchers/FieldsFetcher.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;

// The fields line on FirebirdFieldsQuery: the type's name comes padded
// too, and the catalog keeps a scale as a negative power of ten (-2 for two
// decimals), which becomes the count of decimals.
class TmvFirebirdMetadataFieldsFetcherFromQuery : public TmvMetadataFieldsFetcherFromQuery {
 public:
  using TmvMetadataFieldsFetcherFromQuery::TmvMetadataFieldsFetcherFromQuery;

 protected:
  WideString CalcTypeOnServer() override;
  int CalcScale() override;
};

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
