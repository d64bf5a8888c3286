// The catalog queries of Oracle as text: the probe, the version, the
// default schema, the schemas, the objects of each kind (tables, views,
// materialized views, synonyms, pipelined functions) with the filter macro
// of their kind, the foreign keys and the fields of an object. Objects of a
// database link are read through the link. Names that go into a query are
// quoted the server's way (names in double quotes, texts in single quotes),
// so that no name changes the statement around it.
#pragma once

#include <vector>

#include "support/WideString.h"

namespace mv {

// The first field of the first row holds "Oracle".
extern const char16_t* const kOracleProbeQuery;
// BANNER, whose second group of non-blanks starts with the major version.
extern const char16_t* const kOracleVersionQuery;
extern const char16_t* const kOracleDefaultSchemaQuery;
extern const char16_t* const kOracleSchemasQuery;  // NAME
// Owners whose objects are system objects.
extern const char16_t* const kOracleSystemSchemas[10];

// Whether a probe's answer names the server.
bool IsOracleProbeAnswer(WideStringView value);
// The major version of a banner ("CORE\t11.2.0.4.0\tProduction" gives 11),
// kept within 7 to 11; 11 when the banner names none.
int ParseServerVersionOracle(WideStringView banner);

// "name" with each " doubled.
WideString OracleQuoteName(WideStringView name);
// "@" and the quoted link; empty for no link.
WideString OracleLinkSuffix(WideStringView link);

// The objects of one kind, read through `link` when it is not empty; each
// holds the filter macro of its kind over the columns named beside it.
WideString OracleTablesQuery(WideStringView link);          // OWNER, TABLE_NAME, COMMENTS
WideString OracleViewsQuery(WideStringView link);           // OWNER, VIEW_NAME, COMMENTS
// withComments: all_mview_comments exists there.
WideString OracleMViewsQuery(WideStringView link, bool withComments);  // OWNER, MVIEW_NAME, COMMENTS
WideString OracleSynonymsQuery(WideStringView link);        // OWNER, SYNONYM_NAME, TABLE_OWNER, TABLE_NAME, DB_LINK
WideString OraclePipelinedFunctionsQuery(WideStringView link);  // OWNER, OBJECT_NAME
// The query a materialized view's comments need, to learn whether the
// catalog has them.
WideString OracleMViewCommentsProbe(WideStringView link);

// The foreign keys, one row a column pair: PK_SCHEMA_NAME, PK_TABLE_NAME,
// PK_FIELD_NAME, FK_SCHEMA_NAME, FK_TABLE_NAME, FK_FIELD_NAME, ORDINAL;
// `pkCondition` and `fkCondition` limit the two sides (the filter's
// conditions over the aliases of each side).
WideString OracleRelationsQuery(WideStringView link, WideStringView pkCondition, WideStringView fkCondition);
// The columns of a table or view, named by the parameters :ObjectSchema and
// :ObjectName: COLUMN_NAME, DATA_TYPE, DATA_LENGTH, DATA_PRECISION,
// DATA_SCALE, NULLABLE.
extern const char16_t* const kOracleFieldsQuery;

}  // namespace mv
