// The catalog of a PostgreSQL database read through the metadata provider:
// the probe, the default database and schemas, the schemas, the tables and
// views, the foreign keys, the fields of one object and the aggregate
// functions of the server. Each loader runs its catalog statement on the
// provider and hands the rows to a fetcher; a loader answers false when the
// provider cannot run SQL or the server refuses the statement, and the
// caller falls back on the metadata provider.
//
// A connection reaches one database: a `database` argument that is neither
// empty nor the connected database (asked again for each load) makes the
// object and relation loaders answer false. Names that go into a statement
// (the fields of one object) are string literals with doubled quotes.
#pragma once

#include <vector>

#include "frontend/SyntaxProvider.h"
#include "metadata/fetchers/FieldsFetcher.h"
#include "metadata/fetchers/ObjectsFetcher.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseMetadataProvider;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TSQLQualifiedName;
class TSQLIdentifiersCollection;

extern const char16_t* const kPostgreSQLProbeQuery;           // the first field holds "PostgreSQL"
extern const char16_t* const kPostgreSQLDefaultDatabaseQuery;  // current_database
extern const char16_t* const kPostgreSQLDefaultSchemasQuery;   // array_to_string: names joined by ";"
extern const char16_t* const kPostgreSQLSchemasQuery;          // name
// SCHEMANAME, TABLENAME, TABLETYPE; the filter macros of views and tables.
extern const char16_t* const kPostgreSQLObjectsQuery;
// One row a foreign key, its fields as ";"-joined lists (pk_field_name, fk_field_name).
extern const char16_t* const kPostgreSQLRelationsQuery;
// aggfnoid: the aggregates of one argument, as names.
extern const char16_t* const kPostgreSQLCustomAggregatesQuery;

// The fields of one object (attname, typname, size, precision, scale,
// defval, attnotnull, ispk, description), in column order. Without a schema
// the object is the one the search path finds.
WideString PostgreSQLFieldsQuery(WideStringView schema, WideStringView name);

// The objects line on the catalog query: a schema whose name starts with
// "pg_" (pg_toast, the temporary schemas) holds system objects, beside the
// system schema names.
class TmvPgSQLMetadataObjectFetcherFromQuery : public TmvMetadataObjectFetcherFromQuery {
 public:
  using TmvMetadataObjectFetcherFromQuery::TmvMetadataObjectFetcherFromQuery;

 protected:
  bool CalcSystemFlag() override;
};

// The fields line on PostgreSQLFieldsQuery: the nullable column is the
// catalog's attnotnull, so its truth is read the other way round.
class TmvPgSQLMetadataFieldsFetcherFromQuery : public TmvMetadataFieldsFetcherFromQuery {
 public:
  using TmvMetadataFieldsFetcherFromQuery::TmvMetadataFieldsFetcherFromQuery;

 protected:
  TmvVariant GetNullable() override;
};

// scsSupport when the probe names the server as PostgreSQL, scsNotSupport
// when it fails or names another, scsDontKnow without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsPostgreSQL(TmvBaseMetadataProvider* provider,
                                                             TmvConnection* connection);
// The connected database; null when the server gives no answer.
TmvOwned<TSQLQualifiedName> GetDefaultDatabaseNamePostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection);
// The schemas of the search path (pg_catalog included) that `names` lacks; false without an answer.
bool GetDefaultSchemaNamesPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TSQLIdentifiersCollection& names);
bool GetSchemasListPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                              const TSQLQualifiedName* database, std::vector<WideString>& list);
bool LoadMetadataObjectsPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
bool LoadMetadataRelationsPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                     const TSQLQualifiedName* database);
// Types, sizes, nullability, defaults, primary key and comments of the
// fields of `object`.
bool LoadFieldsForObjectPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataObject* object);
// Adds the server's one-argument aggregates to the container's custom
// aggregates: a name whose schema is a default schema loses it; names the
// dialect knows, names already there and rows that are no name are skipped.
bool LoadMetadataCustomAggregateNamesPostgreSQL(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataContainer* container);

}  // namespace mv
