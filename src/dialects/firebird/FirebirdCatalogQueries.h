// The catalog queries of a Firebird server as text: the probe, tables,
// views, procedures, foreign keys and the fields of one table or view. The
// name that goes into the fields query is a string in single quotes with
// each quote doubled, so that no name changes the statement around it. The
// catalog's names come padded with blanks; the reader trims them.
#pragma once

#include "support/WideString.h"

namespace mv {

extern const char16_t* const kFirebirdProbeQuery;
// table_name, table_system (1 for the server's own objects).
extern const char16_t* const kFirebirdTablesQuery;
extern const char16_t* const kFirebirdViewsQuery;
// Opens only where the catalog table RDB$PROCEDURES exists.
extern const char16_t* const kFirebirdProceduresProbeQuery;
// TABLE_NAME.
extern const char16_t* const kFirebirdProceduresQuery;
// PK_TABLE_NAME, PK_FIELD_NAME, FK_TABLE_NAME, FK_FIELD_NAME, ORDINAL.
extern const char16_t* const kFirebirdRelationsQuery;

// field_name, field_type (the domain, or the type's name for a domain the
// server made itself), field_length, field_precision, field_scale,
// field_not_null_constraint, field_default_value, field_pk,
// field_description; in the order of the fields.
WideString FirebirdFieldsQuery(WideStringView objectName);

}  // namespace mv
