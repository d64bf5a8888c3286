// Small helpers for the names that metadata objects hold as tokens.
#pragma once

#include "tree/QualifiedNames.h"

namespace mv {

class TmvBaseSQLContext;

// Makes `target` equal to `source`: cleared for null, assigned from an
// identifier, or an unquoted identifier of any other token's text.
void AssignIdentifier(TastTokenIdentifier& target, const TastToken* source);
// Makes `target` equal to `source` (cleared for null), link included.
void AssignQualifiedName(TSQLQualifiedName& target, const TSQLQualifiedName* source);
// Builds a name from the inside out: `name`, then `schema` unless it is
// empty, then the parts of `database`; clears `target` first.
void BuildFullName(TSQLQualifiedName& target, const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                   const TSQLQualifiedName* database);
// Splits a full name into `name`, `schema` and `database`; an empty name
// clears the three. Without a context a non-empty name raises "no syntax provider".
void SplitFullName(TmvBaseSQLContext* context, const TSQLQualifiedName* fullName, TastTokenIdentifier& name,
                   TastTokenIdentifier& schema, TSQLQualifiedName& database);
// A token's text as the context's SQLBuilderExpression writes it.
WideString TokenSQL(const TastToken* token);
// Whether the identifier is absent or has no text.
inline bool IsIdentifierEmpty(const TastTokenIdentifier* id) { return !id || id->IsEmpty(); }

// A name read from SQL text, quoted where it has to be; null without a
// context, for empty text and for text that is no name.
TmvOwned<TSQLQualifiedName> ParseNameOrNull(TmvBaseSQLContext* context, WideStringView text);
// The same, raising "Invalid object name" where that gives null.
TmvOwned<TSQLQualifiedName> ParseName(TmvBaseSQLContext* context, WideStringView text);
// For the setters that take text: null for empty text (which clears), else ParseName.
TmvOwned<TSQLQualifiedName> ParseOptionalName(TmvBaseSQLContext* context, WideStringView text);

}  // namespace mv
