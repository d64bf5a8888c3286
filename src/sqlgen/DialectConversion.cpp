#include "sqlgen/DialectConversion.h"

#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\r' || c == u'\n' || c == u'\t'; }

// The words of `before` that `after` lacks: what lies between the longest
// common beginning and end of the two, widened to whole words.
WideString Missing(const WideString& before, const WideString& after) {
  size_t begin = 0;
  while (begin < before.size() && begin < after.size() && before[begin] == after[begin]) ++begin;
  size_t end = 0;
  while (end < before.size() - begin && end < after.size() - begin &&
         before[before.size() - 1 - end] == after[after.size() - 1 - end])
    ++end;
  // A cut inside a word moves to the word's edge.
  auto inWord = [&](size_t at) { return at > 0 && at < before.size() && !IsBlank(before[at - 1]) && !IsBlank(before[at]); };
  while (inWord(begin)) --begin;
  size_t stop = before.size() - end;
  while (inWord(stop)) ++stop;
  WideString part = before.substr(begin, stop - begin);
  while (!part.empty() && IsBlank(part.front())) part.erase(0, 1);
  while (!part.empty() && IsBlank(part.back())) part.pop_back();
  return part;
}

// Keeps a context's provider set for as long as its nodes live, and unset after.
struct ProviderScope {
  TmvBaseSQLContext& context;
  ProviderScope(TmvBaseSQLContext& c, TmvBaseSyntaxProvider* provider) : context(c) { context.SetSyntaxProvider(provider); }
  ~ProviderScope() { context.SetSyntaxProvider(nullptr); }
};

}  // namespace

WideString ConvertSelectDialect(WideStringView sql, TmvBaseSyntaxProvider& from, TmvBaseSyntaxProvider& to,
                                TSQLBuilder& builder) {
  const WideString target = to.ServerName();
  TmvBaseSQLContext context;
  ProviderScope scope(context, &from);
  TmvOwned<TSQLSubSelectStatement> statement = context.ParseSelect(WideString(sql));

  // The row limit leaves the tree in the source's terms and comes back in the target's.
  WideString offset, count;
  const bool limited = from.GetQueryLimits(statement.get(), offset, count) && (!offset.empty() || !count.empty());
  if (limited) {
    if (!to.IsSupportLimitCount() && !to.IsSupportLimitOffset())
      throw EmvQueryBuilderError(u"Cannot convert to " + target + u": it has no row limit (offset \"" + offset +
                                 u"\", count \"" + count + u"\")");
    if (offset.size() > 0 && !to.IsSupportLimitOffset())
      throw EmvQueryBuilderError(u"Cannot convert to " + target + u": it has no row offset (offset \"" + offset + u"\")");
    statement = from.TransformQueryLimits(statement.get(), u"", u"");
  }

  // What the source prints now must print the same after a visit to the
  // target: a part the target's extenders do not hold is lost on the way.
  TSQLBuilderFast oneLine;
  const WideString before = statement->SimpleSQL(oneLine);
  WideString result;
  context.SetSyntaxProvider(&to);
  {
    TmvOwned<TSQLSubSelectStatement> withLimit;
    if (limited) {
      withLimit = to.TransformQueryLimits(statement.get(), offset, count);
      WideString offsetThere, countThere;
      to.GetQueryLimits(withLimit.get(), offsetThere, countThere);
      if (offsetThere != offset || countThere != count)
        throw EmvQueryBuilderError(u"Cannot convert to " + target + u": its row limit cannot say offset \"" + offset +
                                   u"\", count \"" + count + u"\"");
    }
    result = (withLimit ? withLimit.get() : statement.get())->SimpleSQL(builder);
  }
  context.SetSyntaxProvider(&from);
  const WideString after = statement->SimpleSQL(oneLine);
  if (after != before)
    throw EmvQueryBuilderError(u"Cannot convert to " + target + u": \"" + Missing(before, after) +
                               u"\" has no form there");

  // Nodes of the source dialect print in its syntax: the target must read the result.
  TmvBaseSQLContext check;
  ProviderScope checkScope(check, &to);
  try {
    check.ParseSelect(result);
  } catch (const EmvSQLError& e) {
    throw EmvQueryBuilderError(u"Cannot convert to " + target + u": what it would read is not in its syntax. " +
                               e.Message());
  }
  return result;
}

}  // namespace mv
