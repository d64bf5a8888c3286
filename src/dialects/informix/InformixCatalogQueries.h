// The catalog statements of Informix as text: the probe, the version, the
// schemas (owners), the objects, the foreign keys and the fields of an
// object. Names that go into a statement are quoted as texts in single
// quotes, so that no name changes the statement around it.
#pragma once

#include "support/WideString.h"

namespace mv {

// Any row answers: the server is Informix.
extern const char16_t* const kInformixProbeQuery;
// The major version number (8 to 11 and beyond).
extern const char16_t* const kInformixVersionQuery;
extern const char16_t* const kInformixSchemasQuery;  // NAME
// Opened before the objects: the owners (TABLE_OWNER).
extern const char16_t* const kInformixOwnersQuery;
// TABLE_NAME, TABLE_OWNER, TABLE_TYPE ("T" and "S" tables, "V" views); the
// catalog pads its names.
extern const char16_t* const kInformixObjectsQuery;
// One row a foreign key, by the first column of each side only.
extern const char16_t* const kInformixRelationsQuery;
// The owner of the system's objects.
extern const char16_t* const kInformixSystemSchema;

// The columns of a table or view: COLNAME, COLTYPE, COLLENGTH, in their
// order.
WideString InformixFieldsQuery(WideStringView owner, WideStringView object);

}  // namespace mv
