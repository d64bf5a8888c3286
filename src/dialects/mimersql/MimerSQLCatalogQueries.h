// The catalog statements of Mimer SQL as text: the probe, the tables and
// views, the synonyms, and the columns of an object with its primary key.
// Names go in as texts in single quotes, so that no name changes the
// statement around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// Any row answers: the server is Mimer SQL.
extern const char16_t* const kMimerSQLProbeQuery;
// TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE ("BASE TABLE", "VIEW").
extern const char16_t* const kMimerSQLObjectsQuery;
// SYNONYM_SCHEMA, SYNONYM_NAME, where the view exists.
extern const char16_t* const kMimerSQLSynonymsQuery;
// The schemas of the system, separated by commas.
extern const char16_t* const kMimerSQLSystemSchemas;

// COLUMN, DATATYPE, LENGTH, SCALE, NULLABLE, PRIMARY_KEY (the column's place
// in the key, null outside it) of the object creator.object, by COLNO.
WideString MimerSQLFieldsQuery(WideStringView creator, WideStringView object);

}  // namespace mv
