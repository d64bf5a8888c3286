// What the PostgreSQL dialect prints, PostgreSQL's own parser reads: every
// statement of the PostgreSQL regression corpus that both that parser and
// ours take is printed on one line and formatted, and both texts must parse
// there again.
#include <gtest/gtest.h>

#include <regex>

#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "dialects/pgsql/PGSQLSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "tree/SelectStatement.h"

#ifdef MV_HAVE_PG_QUERY
#include <pg_query.h>
#endif

using namespace mv;

namespace {

#ifdef MV_HAVE_PG_QUERY
// PostgreSQL's parser's message, or "" when it reads the text.
std::string PostgresError(const WideString& text) {
  PgQueryParseResult result = pg_query_parse(UTF8Encode(text).c_str());
  std::string error = result.error ? result.error->message : "";
  pg_query_free_parse_result(result);
  return error;
}

// The tree PostgreSQL's parser makes of a text, as JSON without the
// positions, and with an ascending order written out read as the default
// one (which our tree does not tell apart): equal for texts that mean the
// same to PostgreSQL, whatever their spacing and case.
std::string Tree(const WideString& text) {
  PgQueryParseResult result = pg_query_parse(UTF8Encode(text).c_str());
  std::string tree = result.parse_tree ? result.parse_tree : "";
  pg_query_free_parse_result(result);
  static const std::regex location(R"(,?"location":-?\d+)");
  tree = std::regex_replace(tree, location, "");
  static const std::regex ascending("SORTBY_ASC");
  return std::regex_replace(tree, ascending, "SORTBY_DEFAULT");
}
#endif

}  // namespace

TEST(PGSQLServerParser, ReadsWhatWePrintOfTheRegressionCorpus) {
#ifndef MV_HAVE_PG_QUERY
  GTEST_SKIP() << "libpg_query is not installed (Debian: libpg-query-dev)";
#else
  MV_CORPUS_SELECTS(entries, "postgres-regress");
  InitializeEngine();
  TmvPGSQLSyntaxProvider provider;
  TmvBaseSQLContext context;
  context.SetSyntaxProvider(&provider);
  TSQLBuilderFast fast;
  TSQLBuilderPiped piped;
  int both = 0, refused = 0, changed = 0;
  for (const TmvStatementEntry& entry : entries) {
    if (!PostgresError(entry.Text).empty()) continue;
    TmvOwned<TSQLSelectStatement> statement;
    try {
      statement = context.ParseSelect(entry.Text);
    } catch (const EmvSQLError&) {
      continue;
    }
    ++both;
    for (TSQLBuilder* builder : {static_cast<TSQLBuilder*>(&fast), static_cast<TSQLBuilder*>(&piped)}) {
      const WideString print = statement->SimpleSQL(*builder);
      const std::string error = PostgresError(print);
      if (!error.empty() && ++refused <= 40)
        ADD_FAILURE() << "#" << entry.Index << " (line " << entry.Line << "): " << error << "\n  "
                      << UTF8Encode(entry.Text) << "\n  " << UTF8Encode(print);
      if (error.empty() && Tree(print) != Tree(entry.Text) && ++changed <= 40)
        ADD_FAILURE() << "#" << entry.Index << " (line " << entry.Line << "): the print reads differently\n  "
                      << UTF8Encode(entry.Text) << "\n  " << UTF8Encode(print);
    }
  }
  std::cout << "  postgres-regress: " << entries.size() << " statements, " << both
            << " read by both parsers, " << refused << " prints refused, " << changed << " read differently\n";
  EXPECT_EQ(refused, 0);
  EXPECT_EQ(changed, 0);
  context.SetSyntaxProvider(nullptr);
#endif
}
