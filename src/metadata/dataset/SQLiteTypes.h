// How a column's declared type in SQLite becomes a generic field type. SQLite
// keeps whatever type text a table was created with; the common spellings map
// to their exact types, and the rest follow SQLite's own affinity rules.
#pragma once

#include "support/FieldType.h"
#include "support/WideString.h"

namespace mv {

struct TmvSQLiteColumnType {
  TFieldType DataType = ftUnknown;
  int Size = 0;       // "varchar(30)" -> 30
  int Precision = 0;  // "numeric(10,2)" -> 10
  int Scale = 0;      // "numeric(10,2)" -> 2
};

// `declared` is the type text of the column ("NVARCHAR(160)", "integer");
// an empty text (an expression, or a column declared without type) gives ftUnknown.
TmvSQLiteColumnType SQLiteColumnType(WideStringView declared);

}  // namespace mv
