// The catalog statements of DB2 as text: the probe, the default database
// and schema, the schemas, the objects (SYSIBM's catalog, or QSYS2's on DB2
// for i), the table functions, the foreign keys and the fields of an
// object. Names that go into a statement are quoted the server's way (names
// in double quotes, texts in single quotes), so that no name changes the
// statement around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// Any row answers: the server is DB2.
extern const char16_t* const kDB2ProbeQuery;
extern const char16_t* const kDB2DefaultDatabaseQuery;  // CATALOG_NAME
extern const char16_t* const kDB2DefaultSchemaQuery;    // DEF_SCHEMA
extern const char16_t* const kDB2SchemasQuery;          // NAME
// One row a column pair of a foreign key: PKTABLE_SCHEM, PKTABLE_NAME,
// PKCOLUMN_NAME, FKTABLE_SCHEM, FKTABLE_NAME, FKCOLUMN_NAME, KEY_SEQ; a
// column that refers to itself is left out.
extern const char16_t* const kDB2RelationsQuery;
// The schemas whose objects are the system's.
extern const char16_t* const kDB2SystemSchemas;       // comma separated
extern const char16_t* const kDB2QSYS2SystemSchemas;  // the same with qsys and qsys2

// "name" with each " doubled.
WideString DB2QuoteName(WideStringView name);
// "database". before the catalog of another database; empty for none.
WideString DB2DatabasePrefix(WideStringView database);

// Tables, views and synonyms (TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE,
// REF_TABLE_SCHEMA, REF_TABLE_NAME), each kind kept where its condition
// holds: the conditions are the filter's, for the columns TABLE_SCHEMA and
// TABLE_NAME.
WideString DB2ObjectsQuery(bool qsys2, WideStringView database, WideStringView tableCondition,
                           WideStringView viewCondition, WideStringView synonymCondition);
// Table functions (ROUTINESCHEMA, ROUTINENAME) where the condition holds.
WideString DB2TableFunctionsQuery(bool qsys2, WideStringView condition);
// The columns of a table or view: NAME, COLTYPE (a user type as its
// quoted schema and name), LENGTH, SCALE, DEFAULT, NULLS, KEYSEQ,
// GENERATED, REMARKS.
WideString DB2FieldsQuery(bool qsys2, WideStringView schema, WideStringView object);

}  // namespace mv
