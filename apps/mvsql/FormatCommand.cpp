// mvsql format: parses a SELECT statement through the SQL context of a
// dialect and prints it laid out by the formatting builder, under the format
// options (their defaults unless --set gives others).
//
// --set NAME=VALUE (repeatable) sets one option by its property name, a
// nested one by a dotted path: RightMargin=60, KeywordFormat=akfUpperCase,
// MainQueryFormat.WhereFormat.NewLineAfter=nlAllLogical. --one-line prints
// the statement on one line with single blanks; the settings that only
// shape lines (margins, breaks, indents) then have no effect. A syntax
// error prints the parser's message on standard error and exits with 1.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

namespace mvsql {

namespace {

// The part of a "NAME=VALUE" setting before the first dot or "=".
mv::WideString FirstName(const mv::WideString& setting) {
  return setting.substr(0, setting.find_first_of(u".="));
}

}  // namespace

int RunFormat(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "set"}, {"one-line"});
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = CreateDialect(arguments.Value("dialect", "sql92"));

  // Every setting is checked on the formatting builder, also for one line.
  mv::TSQLBuilderPiped piped;
  mv::TSQLBuilderFast fast;
  const bool oneLine = arguments.Has("one-line");
  for (const std::string& setting : arguments.Values("set")) {
    const mv::WideString text = mv::UTF8Decode(setting);
    try {
      piped.PropertyTable().SetAssignment(piped, text);
      if (oneLine && mv::TSQLBuilder::Properties().Find(FirstName(text)))
        fast.PropertyTable().SetAssignment(fast, text);
    } catch (const mv::Exception& e) {
      throw UsageError{"--set " + setting + ": " + mv::UTF8Encode(e.Message())};
    }
  }
  mv::TSQLBuilder& builder = oneLine ? static_cast<mv::TSQLBuilder&>(fast) : piped;

  const mv::WideString sql = mv::ReadTextFile(arguments.InputPath());
  mv::TmvBaseSQLContext context;
  context.SetSyntaxProvider(provider.get());
  int code = kExitSuccess;
  try {
    mv::TmvOwned<mv::TSQLSelectStatement> tree = context.ParseSelect(sql);
    out << mv::UTF8Encode(tree->SimpleSQL(builder)) << "\r\n";
  } catch (const mv::EmvSQLError& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    code = kExitFailure;
  }
  context.SetSyntaxProvider(nullptr);
  return code;
}

}  // namespace mvsql
