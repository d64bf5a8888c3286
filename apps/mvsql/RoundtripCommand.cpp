// mvsql roundtrip: the input goes into a query builder (its text becomes the
// model) and the model's text comes back: laid out by the formatting builder
// from the builder's result tree, or with --one-line as GetSql gives it. What
// changes between input and output is what the model normalises. A syntax
// error, or text that is no SELECT, prints the parser's message on standard
// error and exits with 1; the metadata of --metadata or --sqlite binds the
// names as the builder binds them.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "BuilderSession.h"
#include "Command.h"
#include "frontend/SQLError.h"
#include "support/TextFile.h"

namespace mvsql {

int RunRoundtrip(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "metadata", "sqlite"}, {"one-line"});
  const mv::WideString sql = mv::ReadTextFile(arguments.InputPath());
  BuilderSession session(arguments);
  try {
    session.Builder().SetSql(sql);
  } catch (const mv::EmvSQLError& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    return kExitFailure;
  }
  out << session.Print(arguments.Has("one-line"));
  return kExitSuccess;
}

}  // namespace mvsql
