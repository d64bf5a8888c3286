// Real SQL through the SQL-92 dialect: for every statement of the shared
// corpus that parses, the one-line print parses again to the same print.
// Statements the grammar does not take are counted, not failed: the corpus
// is written for a score of other dialects. One test per corpus folder.
#include <gtest/gtest.h>

#include <sstream>

#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "support/StatementList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class CorpusRoundTrip : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  CorpusRoundTrip() { context.SetSyntaxProvider(&provider); }
  ~CorpusRoundTrip() override { context.SetSyntaxProvider(nullptr); }

  // The one-line print of a parse, or false when the text does not parse.
  bool PrintOf(const WideString& text, WideString& print) {
    try {
      TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(text);
      TSQLBuilderFast builder;
      print = statement->SimpleSQL(builder);
      return true;
    } catch (const EmvSQLError&) {
      return false;
    }
  }

  TmvSQL92SyntaxProvider provider;
  TmvBaseSQLContext context;
};

}  // namespace

TEST_P(CorpusRoundTrip, PrintParsesToTheSamePrint) {
  MV_CORPUS_SELECTS(entries, GetParam());
  int parsed = 0;
  int differ = 0;
  for (const TmvStatementEntry& entry : entries) {
    WideString first, second;
    if (!PrintOf(entry.Text, first)) continue;
    ++parsed;
    const bool again = PrintOf(first, second);
    if (again && second == first) continue;
    // A few examples are enough to see what went wrong.
    if (++differ <= 5)
      ADD_FAILURE() << GetParam() << " #" << entry.Index << " (line " << entry.Line << ")\n  "
                    << UTF8Encode(first) << "\n  " << (again ? UTF8Encode(second) : "(the print does not parse)");
  }
  EXPECT_EQ(differ, 0);
  std::ostringstream summary;
  summary << entries.size() << " entries, " << parsed << " parse";
  RecordProperty("summary", summary.str());
  std::cout << "  " << GetParam() << ": " << summary.str() << "\n";
}

INSTANTIATE_TEST_SUITE_P(Folders, CorpusRoundTrip, ::testing::ValuesIn(mvtest::kCorpusSelectFolders),
                         [](const ::testing::TestParamInfo<const char*>& info) { return mvtest::CorpusTestName(info.param); });
