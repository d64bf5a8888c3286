// Filter macros: marks that a catalog statement holds where the objects of
// one kind are to be limited by the metadata filter. Before the statement is
// sent, each mark becomes the filter's condition for that kind, or a
// condition that is always true.
//
//   select NAME from catalog where TYPE = 'T' and {D2A96EA6-30C3-45CB-9C88-C71927284386}
//     no filter:    ... and (0=0)
//     a filter:     ... and (upper(NAME) like 'ORD%')
#pragma once

#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TmvMetadataFilter;

inline constexpr const char16_t* mvQBTableFilterMacro = u"{D2A96EA6-30C3-45CB-9C88-C71927284386}";
inline constexpr const char16_t* mvQBViewFilterMacro = u"{ECDC625C-F3BD-4A65-AC25-828D3C06DAD0}";
inline constexpr const char16_t* mvQBProcedureFilterMacro = u"{C9B6D410-A51F-4FD8-9A70-F947D847697A}";
inline constexpr const char16_t* mvQBSynonymFilterMacro = u"{9A785FEF-8428-4D8A-8059-21AA7B87C31E}";
// The condition that holds for every row.
inline constexpr const char16_t* mvQBSQLTrue = u"(0=0)";

// `sql` with every macro it holds (tables, views, procedures, synonyms, in
// that order) replaced by the filter's prefilter condition for that kind
// over the columns `schemaExpression` and `nameExpression`, or by
// mvQBSQLTrue where there is no filter or the condition is empty. A
// statement without macros comes back unchanged.
WideString ReplaceFilterMacros(WideStringView sql, const TmvBaseSQLContext* context, const TmvMetadataFilter* filter,
                               WideStringView schemaExpression, WideStringView nameExpression);

}  // namespace mv
