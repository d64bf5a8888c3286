// The catalog statements of Advantage as text: the probe, the default
// database, the databases, and the tables, foreign keys, columns and primary
// key through the system procedures. A database goes in as a text in single
// quotes (Database() when none is named), an object's name inside its
// quotes with them doubled, so that no name changes the statement.
#pragma once

#include "support/WideString.h"

namespace mv {

// Any row answers: the server is Advantage.
extern const char16_t* const kAdvantageProbeQuery;
extern const char16_t* const kAdvantageDefaultDatabaseQuery;  // its first value
extern const char16_t* const kAdvantageDatabasesQuery;        // TABLE_CAT

// TABLE_NAME, TABLE_TYPE ("TABLE", "VIEW").
WideString AdvantageObjectsQuery(WideStringView database);
// PKTABLE_NAME, PKCOLUMN_NAME, FKTABLE_NAME, FKCOLUMN_NAME, KEY_SEQ.
WideString AdvantageRelationsQuery(WideStringView database);
// COLUMN_NAME, TYPE_NAME, COLUMN_SIZE, NUM_PREC_RADIX, DECIMAL_DIGITS,
// NULLABLE of an object; then the COLUMN_NAMEs of its primary key.
WideString AdvantageFieldsQuery(WideStringView database, WideStringView object);
WideString AdvantagePrimaryKeysQuery(WideStringView database, WideStringView object);

}  // namespace mv
