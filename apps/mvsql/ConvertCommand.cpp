// mvsql convert: reads a SELECT in one dialect and prints it for another.
// The row limit, the quoting of names and every clause the two dialects
// share are carried over; a part the target cannot write is named in an
// error (exit 1), as is a syntax error of the input.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "frontend/SQLError.h"
#include "sqlgen/DialectConversion.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

namespace mvsql {

int RunConvert(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"from", "to"}, {"format"});
  if (!arguments.Has("from") || !arguments.Has("to")) throw UsageError{"convert needs --from and --to"};
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> from = CreateDialect(arguments.Value("from"));
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> to = CreateDialect(arguments.Value("to"));
  const mv::WideString sql = mv::ReadTextFile(arguments.InputPath());
  mv::TSQLBuilderFast fast;
  mv::TSQLBuilderPiped piped;
  mv::TSQLBuilder& builder = arguments.Has("format") ? static_cast<mv::TSQLBuilder&>(piped) : fast;
  try {
    out << mv::UTF8Encode(mv::ConvertSelectDialect(sql, *from, *to, builder)) << "\n";
  } catch (const mv::Exception& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    return kExitFailure;
  }
  return kExitSuccess;
}

}  // namespace mvsql
