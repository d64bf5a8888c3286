// The catalog statements of Teradata as text: the probe, the current
// database, the databases (the schemas of the model), the tables and views,
// the referential constraints, and the columns of one object, whose names go
// in as texts in single quotes, so that no name changes the statement
// around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// A server that answers it with a VERSION column is Teradata.
extern const char16_t* const kTeradataProbeQuery;
// Database: the current database.
extern const char16_t* const kTeradataDefaultSchemaQuery;
// DATABASE_NAME.
extern const char16_t* const kTeradataSchemasQuery;
// DatabaseName, TableName, TableKind (T or V), CommentString.
extern const char16_t* const kTeradataObjectsQuery;
// ParentDB, ParentTable, ParentKeyColumn, ChildDB, ChildTable,
// ChildKeyColumn, IndexID.
extern const char16_t* const kTeradataRelationsQuery;
// The databases the server keeps for itself.
extern const char16_t* const kTeradataSystemSchemas[13];

// COLUMN_NAME, TYPE_NAME (the ColumnType code as a type name), COLUMN_SIZE,
// DECIMAL_DIGITS, NULLABLE (Y or N), PRIMARY_KEY (1 for a column of the
// primary key) and REMARKS of an object, in column order.
WideString TeradataFieldsQuery(WideStringView database, WideStringView object);

}  // namespace mv
