// Small helpers for the names that metadata objects hold as tokens.
#pragma once

#include "tree/QualifiedNames.h"

namespace mv {

// Makes `target` equal to `source`: cleared for null, assigned from an
// identifier, or an unquoted identifier of any other token's text.
void AssignIdentifier(TastTokenIdentifier& target, const TastToken* source);
// Makes `target` equal to `source` (cleared for null), link included.
void AssignQualifiedName(TSQLQualifiedName& target, const TSQLQualifiedName* source);
// Builds a name from the inside out: `name`, then `schema` unless it is
// empty, then the parts of `database`; clears `target` first.
void BuildFullName(TSQLQualifiedName& target, const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                   const TSQLQualifiedName* database);
// A token's text as the context's SQLBuilderExpression writes it.
WideString TokenSQL(const TastToken* token);
// Whether the identifier is absent or has no text.
inline bool IsIdentifierEmpty(const TastTokenIdentifier* id) { return !id || id->IsEmpty(); }

}  // namespace mv
