// Names of the field types: the text of each type, and the type of the
// names that metadata XML files carry (the database type names of one
// platform, the JDBC type numbers of another, or an ordinal).
#pragma once

#include "support/FieldType.h"
#include "support/Variant.h"
#include "support/WideString.h"

namespace mv {

// "String", "Smallint", ... ; empty for ftUnknown and for a value that is
// no field type.
WideString FieldTypeToString(TFieldType type);

// A database type name ("INT32", "ANSISTRING", ...), without regard to case;
// an unknown name gives ftUnknown.
TFieldType DBTypeXMLToFieldType(WideStringView text);

// A JDBC type number (4: INTEGER, 12: VARCHAR, ...); an unknown number gives
// ftUnknown.
TFieldType JavaTypeXMLToFieldType(int number);

// A type value of unknown form: empty or null is ftUnknown; a text is read
// as an ordinal, or when it is no integer as a database type name; any
// other value is converted to an integer ordinal. An ordinal that names no
// field type gives ftUnknown.
TFieldType GuessTypeFromXMLValue(const TmvVariant& value);

}  // namespace mv
