// The catalog loaders that InterBase and Firebird share: both keep their
// catalog in the RDB$ tables, and the two servers differ only in the
// statements (RdbCatalogQueries holds one server's set). Each loader runs
// its statement on the provider and hands the rows to a fetcher; a loader
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

// The catalog statements of one server of the family.
struct TmvRdbCatalogQueries {
  const char16_t* Probe;
  // TABLE_NAME, TABLE_SYSTEM (1 for the server's own objects).
  const char16_t* Tables;
  const char16_t* Views;
  // Opens only where the catalog table RDB$PROCEDURES exists.
  const char16_t* ProceduresProbe;
  // TABLE_NAME.
  const char16_t* Procedures;
  // PK_TABLE_NAME, PK_FIELD_NAME, FK_TABLE_NAME, FK_FIELD_NAME, ORDINAL.
  const char16_t* Relations;
  // field_name, field_type, field_length, field_precision, field_scale,
  // field_not_null_constraint, field_default_value, field_pk,
  // field_description of the object named.
  WideString (*Fields)(WideStringView objectName);
};

// The fields line: the type's name comes padded too, and the catalog keeps
// a scale as a negative power of ten (-2 for two decimals), which becomes
// the count of decimals.
class TmvRdbMetadataFieldsFetcherFromQuery : public TmvMetadataFieldsFetcherFromQuery {
 public:
  using TmvMetadataFieldsFetcherFromQuery::TmvMetadataFieldsFetcherFromQuery;

 protected:
  WideString CalcTypeOnServer() override;
  int CalcScale() override;
};

// scsSupport when the probe runs, scsNotSupport when it fails, scsDontKnow
// without SQL.
TmvSyntaxSupportConectedServer IsConnectedServerRdb(const TmvRdbCatalogQueries& queries,
                                                    TmvBaseMetadataProvider* provider, TmvConnection* connection);
// Tables, then views, then the stored procedures where RDB$PROCEDURES
// exists; false when the tables cannot be read.
bool LoadMetadataObjectsRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                            TmvConnection* connection, TmvMetadataContainer* container,
                            const TmvMetadataFilter* filter);
// The foreign keys, one row a pair of fields.
bool LoadMetadataRelationsRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                              TmvConnection* connection, TmvMetadataContainer* container,
                              const TmvMetadataFilter* filter);
// Types, sizes, nullability, defaults, primary key and descriptions of the
// fields of `object`.
bool LoadFieldsForObjectRdb(const TmvRdbCatalogQueries& queries, TmvBaseSQLContext* context,
                            TmvConnection* connection, TmvMetadataObject* object);

}  // namespace mv
