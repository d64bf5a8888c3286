// The catalog queries of the Sybase family as text: the two probes, the
// default database and schema, databases, schemas, objects, relations and
// the fields of an object, for ASA and ASE where they differ. Names that go
// into a query are quoted the server's way (names in brackets, texts in
// single quotes), so that no name changes the statement around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// ASA: the value holds "Sybase" or "iAnywhere".
extern const char16_t* const kSybaseASAProbeQuery;
// ASE: the value holds "Adaptive Server Enterprise".
extern const char16_t* const kSybaseASEProbeQuery;
extern const char16_t* const kSybaseDefaultDatabaseQuery;
extern const char16_t* const kSybaseDefaultSchemaQuery;
extern const char16_t* const kSybaseDatabasesQuery;  // DATABASE_NAME
extern const char16_t* const kSybaseSchemasQuery;    // NAME

// Whether a probe's answer names the family.
bool IsSybaseASAProbeAnswer(WideStringView value);
bool IsSybaseASEProbeAnswer(WideStringView value);

// [name] with each ] doubled.
WideString SybaseQuoteName(WideStringView name);
// '[database].' before the objects of another database; empty for none.
WideString SybaseDatabasePrefix(WideStringView database);

// sp_tables of the connected database or of another one (TABLE_OWNER,
// TABLE_NAME, TABLE_TYPE).
WideString SybaseObjectsQuery(WideStringView database);
// The foreign keys, one row a column pair: FOREIGN_KEY_ID, PK_SCHEMA_NAME,
// PK_TABLE_NAME, PK_FIELD_NAME, FK_SCHEMA_NAME, FK_TABLE_NAME,
// FK_FIELD_NAME; ASE adds PK_DATABASE_NAME and FK_DATABASE_NAME, `database`
// standing for a key's database the catalog leaves empty (the connected one
// when empty).
WideString SybaseASARelationsQuery(WideStringView database);
WideString SybaseASERelationsQuery(WideStringView database);
// The columns of a table or view: cname, coltype, length, default_value,
// nulls, in_primary_key (ASA); name, column_type, length, prec, scale, nulls
// (ASE).
WideString SybaseASAFieldsQuery(WideStringView schema, WideStringView object);
WideString SybaseASEFieldsQuery(WideStringView schema, WideStringView object);

}  // namespace mv
