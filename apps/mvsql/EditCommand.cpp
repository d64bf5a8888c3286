// mvsql edit: runs an editing script (EditScript.h) on a query builder and
// prints the query after each "print" line, laid out as mvsql roundtrip lays
// it out, or on one line with --one-line.
//
// The query to start from: FILE; "-" reads standard input; without FILE,
// standard input is read unless it is a terminal. Blank text, or none, starts
// from the empty query. A bad line prints "line N: <why>" on standard error
// and exits with 1; nothing after it runs, what was printed before stays.
#include <unistd.h>

#include <cstdio>
#include <ostream>
#include <string>

#include "Arguments.h"
#include "BuilderSession.h"
#include "Command.h"
#include "EditScript.h"
#include "support/TextFile.h"

namespace mvsql {

int RunEdit(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"script", "dialect", "metadata", "sqlite"}, {"one-line"});
  if (!arguments.Has("script")) throw UsageError{"--script FILE is required"};
  const mv::WideString script = mv::ReadTextFile(arguments.Value("script"));
  const bool fromTerminal = arguments.Positional().empty() && isatty(fileno(stdin));
  const mv::WideString sql = fromTerminal ? mv::WideString() : mv::ReadTextFile(arguments.InputPath());

  BuilderSession session(arguments);
  if (!session.LoadSql(sql, err)) return kExitFailure;
  const bool oneLine = arguments.Has("one-line");
  try {
    RunEditScript(session.Builder(), script, [&] { out << session.Print(oneLine) << std::flush; });
  } catch (const EditScriptError& e) {
    err << "line " << e.line << ": " << e.message << "\n";
    return kExitFailure;
  }
  return kExitSuccess;
}

}  // namespace mvsql
