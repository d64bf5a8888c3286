// Real SQL through the dialects: for every statement of the shared corpus
// that parses, the one-line print parses again to the same print, and the
// formatted text formats again to the same text. Statements the grammar does
// not take are counted, not failed: the corpus is written for a score of
// other dialects. One test per corpus folder and dialect: SQL-92 in the quick
// suite, the other dialects of the build in the slow one.
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/StatementList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

// A provider class name and a corpus folder.
using Param = std::tuple<const char*, const char*>;

class CorpusRoundTrip : public ::testing::TestWithParam<Param> {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  CorpusRoundTrip() {
    const TmvSyntaxProviderClass* providerClass = SyntaxProvidersList().FindClassByClassName(std::get<0>(GetParam()));
    if (providerClass) provider.reset(providerClass->CreateRaw());
    context.SetSyntaxProvider(provider.get());
  }
  ~CorpusRoundTrip() override { context.SetSyntaxProvider(nullptr); }

  // The print of a parse through `builder`; false when the text does not parse.
  bool PrintOf(const WideString& text, TSQLBuilder& builder, WideString& print) {
    try {
      TmvOwned<TSQLSelectStatement> statement = context.ParseSelect(text);
      print = statement->SimpleSQL(builder);
      return true;
    } catch (const EmvSQLError&) {
      return false;
    }
  }

  // Whether the print of `text` through `builder` is a fixed point; false,
  // with a few examples reported, when it is not.
  bool Stable(const TmvStatementEntry& entry, const WideString& first, TSQLBuilder& builder, int& differ) {
    WideString second;
    const bool again = PrintOf(first, builder, second);
    if (again && second == first) return true;
    // A few examples are enough to see what went wrong.
    if (++differ <= 5)
      ADD_FAILURE() << std::get<1>(GetParam()) << " #" << entry.Index << " (line " << entry.Line << ")\n  "
                    << UTF8Encode(first) << "\n  " << (again ? UTF8Encode(second) : "(the print does not parse)");
    return false;
  }

  // Parses every statement of the folder and checks what parses.
  void Run() {
    MV_CORPUS_SELECTS(entries, std::get<1>(GetParam()));
    ASSERT_TRUE(provider) << std::get<0>(GetParam());
    int parsed = 0, printed = 0, formatted = 0, differ = 0;
    TSQLBuilderFast fast;
    TSQLBuilderPiped piped;
    for (const TmvStatementEntry& entry : entries) {
      TmvOwned<TSQLSelectStatement> tree;
      try {
        tree = context.ParseSelect(entry.Text);
      } catch (const EmvSQLError&) {
        continue;
      }
      ++parsed;
      printed += Stable(entry, tree->SimpleSQL(fast), fast, differ);
      formatted += Stable(entry, tree->SimpleSQL(piped), piped, differ);
    }
    EXPECT_EQ(differ, 0);
    std::ostringstream summary;
    summary << entries.size() << " entries, " << parsed << " parse, " << printed << " print back, " << formatted
            << " format back";
    RecordProperty("summary", summary.str());
    std::cout << "  " << std::get<0>(GetParam()) << " " << std::get<1>(GetParam()) << ": " << summary.str() << "\n";
  }

  TmvOwned<TmvBaseSyntaxProvider> provider;
  TmvBaseSQLContext context;
};

std::vector<Param> Params(bool reference) {
  std::vector<Param> params;
  InitializeEngine();
  for (const TmvSyntaxProviderClass* c : SyntaxProvidersList().Classes()) {
    if ((c == &SyntaxProvidersList().Items(0)) != reference) continue;
    for (const char* folder : mvtest::kCorpusSelectFolders) params.emplace_back(c->ClassName().data(), folder);
  }
  return params;
}

std::string ParamName(const ::testing::TestParamInfo<Param>& info) {
  std::string dialect = std::get<0>(info.param);
  // TmvSQL2003SyntaxProvider -> SQL2003
  dialect = dialect.substr(3, dialect.size() - 3 - std::string("SyntaxProvider").size());
  return dialect + "_" + mvtest::CorpusTestName(std::get<1>(info.param));
}

}  // namespace

TEST_P(CorpusRoundTrip, PrintParsesToTheSamePrint) { Run(); }

INSTANTIATE_TEST_SUITE_P(Folders, CorpusRoundTrip, ::testing::ValuesIn(Params(true)), ParamName);

// Suites whose names end in Slow carry the CTest label slow.
class CorpusRoundTripSlow : public CorpusRoundTrip {};

TEST_P(CorpusRoundTripSlow, PrintParsesToTheSamePrint) { Run(); }

INSTANTIATE_TEST_SUITE_P(Dialects, CorpusRoundTripSlow, ::testing::ValuesIn(Params(false)), ParamName);
