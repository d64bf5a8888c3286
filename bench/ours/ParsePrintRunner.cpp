// bench_parse_print: our engine as a runner of the comparison. Two kinds of
// work on each statement, under the SQL-92 syntax provider: "parse"
// (TmvBaseSQLContext::ParseSelect on the statement's wide text) and
// "parse+print" (the same, then the tree printed back to plain SQL text
// through the one-line builder). A statement that raises EmvSQLError is
// rejected. The context is set up once, outside the timed work.
#include <string>
#include <vector>

#include "BenchRunner.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "tree/SelectStatement.h"

namespace {

// The one context every statement is parsed in.
mv::TmvBaseSQLContext& Context() {
  static mv::TmvSQL92SyntaxProvider provider;
  static mv::TmvBaseSQLContext context;
  if (context.SyntaxProvider() != &provider) context.SetSyntaxProvider(&provider);
  return context;
}

bool Parse(const mv::TmvBenchStatement& statement, std::string&) {
  mv::TmvOwned<mv::TSQLSelectStatement> tree = Context().ParseSelect(statement.Text);
  return tree != nullptr;
}

bool ParseAndPrint(const mv::TmvBenchStatement& statement, std::string& reason) {
  mv::TmvOwned<mv::TSQLSelectStatement> tree = Context().ParseSelect(statement.Text);
  mv::TSQLBuilderFast builder;
  const mv::WideString text = tree->SimpleSQL(builder);
  if (text.empty()) reason = "the print is empty";
  return !text.empty();
}

}  // namespace

int main(int argc, char** argv) {
  mv::InitializeEngine();
  Context();
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "ParseSelect", Parse},
      {"parse+print", "ParseSelect+TSQLBuilderFast", ParseAndPrint},
  };
  const int code = mv::BenchRunnerMain(argc, argv, "mvengine", modes);
  // The context goes before its provider and the trees are gone: unhook now,
  // while both still stand.
  Context().SetSyntaxProvider(nullptr);
  return code;
}
