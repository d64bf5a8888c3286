// The catalog statements of Netezza as text: the probe, the default database
// and schema, the schemas, objects and foreign keys of a database, and the
// columns and primary key of an object. A database name goes in as a quoted
// identifier, every other name as a text in single quotes, so that no name
// changes the statement around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// Any row answers: the server is Netezza.
extern const char16_t* const kNetezzaProbeQuery;
extern const char16_t* const kNetezzaDefaultDatabaseQuery;
extern const char16_t* const kNetezzaDefaultSchemaQuery;

// "db" quoted with its quotes doubled.
WideString NetezzaQuoteName(WideStringView name);
// The schemas of a database (SCHEMA_NAME); the current catalog when none is
// named. Without schemas on the server, the database's default schema.
WideString NetezzaSchemasQuery(WideStringView database);
WideString NetezzaDefaultSchemaOfDatabaseQuery(WideStringView database);
// TABLE_SCHEM, TABLE_NAME, TABLE_TYPE, DESCRIPTION of a database.
WideString NetezzaObjectsQuery(WideStringView database);
// The foreign keys of a database, one row a column pair, with key_seq.
WideString NetezzaRelationsQuery(WideStringView database);
// COLUMN_NAME, TYPE_NAME, COLUMN_SIZE, NUM_PREC_RADIX, DECIMAL_DIGITS,
// NULLABLE, REMARKS of an object; then its primary key's COLUMN_NAMEs.
WideString NetezzaFieldsQuery(WideStringView database, WideStringView schema, WideStringView object);
WideString NetezzaPrimaryKeysQuery(WideStringView database, WideStringView schema, WideStringView object);

}  // namespace mv
