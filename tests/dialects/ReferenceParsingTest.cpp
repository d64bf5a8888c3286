// The parser's shared work changes nothing but its cost: every statement of
// the shared corpus, under every dialect of the build, parses to the same way,
// tree, print and error with it and with the plain exploration of every way
// (ReferenceMode). Statements on which the plain exploration meets one of its
// limits are left out: there only the shared work finishes. One test per
// corpus folder; the suite is slow, since the reference is.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "support/StatementList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

// What one parse of a statement gives: the picked way and, through the
// context, the tree and its print, or the error with its position.
struct Outcome {
  bool limited = false;  // the first pass met a limit
  std::string way;
  std::string tree;
  std::string print;
  std::string error;

  bool operator==(const Outcome& o) const {
    return way == o.way && tree == o.tree && print == o.print && error == o.error;
  }
  std::string Describe() const {
    return error.empty() ? "way " + way + "\n    " + print : "error " + error;
  }
};

Outcome ParseWith(TmvBaseSQLContext& context, const WideString& text) {
  Outcome out;
  {
    TmvOwned<TmvBaseScanner> scanner = context.SyntaxProvider()->CreateScanner();
    scanner->Init(text);
    TmvOwned<TmvBaseParser> parser = context.SyntaxProvider()->CreateParser(scanner.get(), &context);
    if (parser->FindWay(TmvParserEntry::peSelect)) {
      out.way = parser->WayStr();
    } else {
      out.limited = parser->LimitExceeded();
    }
  }
  try {
    TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(text);
    out.tree = DumpParseTree(statement.get());
    TSQLBuilderFast builder;
    out.print = UTF8Encode(statement->SimpleSQL(builder));
  } catch (const EmvSQLError& e) {
    std::ostringstream s;
    s << UTF8Encode(e.Message()) << " @" << e.Line << ":" << e.Col << ":" << e.Pos;
    out.error = s.str();
  }
  return out;
}

class ReferenceParsingSlow : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
};

}  // namespace

TEST_P(ReferenceParsingSlow, SharedWorkGivesWhatThePlainExplorationGives) {
  MV_CORPUS_SELECTS(entries, GetParam());
  const std::vector<const TmvSyntaxProviderClass*> dialects = SyntaxProvidersList().Classes();
  ASSERT_FALSE(dialects.empty());
  for (const TmvSyntaxProviderClass* dialect : dialects) {
    if (dialect->IsAbstract()) continue;
    TmvOwned<TmvBaseSyntaxProvider> provider(dialect->CreateRaw());
    TmvBaseSQLContext shared, reference;
    shared.SetSyntaxProvider(provider.get());
    reference.SetSyntaxProvider(provider.get());
    reference.ReferenceParsing = true;
    int compared = 0, limited = 0, differ = 0;
    for (const TmvStatementEntry& entry : entries) {
      const Outcome expected = ParseWith(reference, entry.Text);
      if (expected.limited) {
        ++limited;
        continue;
      }
      ++compared;
      const Outcome got = ParseWith(shared, entry.Text);
      if (got == expected) continue;
      if (++differ <= 3)
        ADD_FAILURE() << dialect->ClassName() << " " << GetParam() << " #" << entry.Index << " (line " << entry.Line
                      << ")\n  reference: " << expected.Describe() << "\n  shared:    " << got.Describe();
    }
    EXPECT_EQ(differ, 0) << dialect->ClassName();
    shared.SetSyntaxProvider(nullptr);
    reference.SetSyntaxProvider(nullptr);
    std::cout << "  " << GetParam() << " " << dialect->ClassName() << ": " << compared << " compared, " << limited
              << " past the reference's limits\n";
  }
}

INSTANTIATE_TEST_SUITE_P(Folders, ReferenceParsingSlow, ::testing::ValuesIn(mvtest::kCorpusSelectFolders),
                         [](const ::testing::TestParamInfo<const char*>& info) { return mvtest::CorpusTestName(info.param); });
