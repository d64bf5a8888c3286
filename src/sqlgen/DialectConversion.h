// Converting a SELECT from one dialect to another. The text is parsed in the
// source dialect and its tree moves to the target dialect: the extenders the
// two dialects share keep their parts, a row limit goes through the source's
// GetQueryLimits and the target's TransformQueryLimits, and names print with
// the target's quotes and case rules. What the target has no form for is an
// error that names it; nothing is dropped silently.
//
//   TmvPGSQLSyntaxProvider from;  TmvSQLiteSyntaxProvider to;  TSQLBuilderFast builder;
//   WideString text = ConvertSelectDialect(u"select a from t limit 5", from, to, builder);
#pragma once

#include "support/WideString.h"

namespace mv {

class TmvBaseSyntaxProvider;
class TSQLBuilder;

// The statement `sql` of the dialect of `from`, printed by `builder` for the
// dialect of `to`. Raises EmvSQLError (with its position) when `sql` does not
// parse under `from`, and EmvQueryBuilderError naming the part that `to`
// cannot write: a clause its extenders do not hold, a row limit it has no
// form for, or text of the source dialect that the target does not read.
WideString ConvertSelectDialect(WideStringView sql, TmvBaseSyntaxProvider& from, TmvBaseSyntaxProvider& to,
                                TSQLBuilder& builder);

}  // namespace mv
