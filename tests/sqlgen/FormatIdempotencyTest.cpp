// Formatting is idempotent: every corpus statement that parses under SQL-92,
// formatted, parses again and formats to the same text. Checked under the
// default options and under options that break and indent everywhere.
#include <gtest/gtest.h>

#include <string>

#include "Corpus.h"
#include "dialects/EngineInit.h"
#include "ReferenceDialect.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/StatementList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class FormatIdempotency : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  FormatIdempotency() : provider(mvtest::NewReferenceProvider()) { context.SetSyntaxProvider(provider.get()); }
  ~FormatIdempotency() override { context.SetSyntaxProvider(nullptr); }

  // The formatted text, or nothing when the text does not parse.
  bool Format(const WideString& sql, TSQLBuilder& builder, WideString& text) {
    try {
      TmvOwned<TSQLSelectStatement> tree = context.ParseSelect(sql);
      text = tree->SimpleSQL(builder);
      return true;
    } catch (const EmvSQLError&) {
      return false;
    }
  }

  struct Counts {
    int statements = 0;
    int parsed = 0;
  };

  // Formats every statement of the corpus twice; reports statements whose
  // formatted text does not parse or formats differently.
  Counts Check(TSQLBuilder& builder) {
    Counts counts;
    int failures = 0;
    for (const std::string& file : mvtest::CorpusFiles("", {"selects.sql"})) {
      for (const TmvStatementEntry& entry : ReadStatementList(file)) {
        ++counts.statements;
        WideString first;
        if (!Format(entry.Text, builder, first)) continue;
        ++counts.parsed;
        WideString second;
        const bool again = Format(first, builder, second);
        if (again && second == first) continue;
        // A few reports say enough; the count tells the rest.
        if (++failures <= 5)
          ADD_FAILURE() << file << " #" << entry.Index << (again ? " formats differently" : " no longer parses")
                        << "\n--- first\n"
                        << UTF8Encode(first) << "\n--- second\n"
                        << UTF8Encode(second);
      }
    }
    EXPECT_EQ(failures, 0);
    return counts;
  }

  TmvOwned<TmvBaseSyntaxProvider> provider;
  TmvBaseSQLContext context;
};

}  // namespace

// Suites whose names end in Slow carry the CTest label slow.
using FormatIdempotencySlow = FormatIdempotency;

TEST_F(FormatIdempotencySlow, CorpusUnderTheDefaults) {
  MV_REQUIRE_CORPUS();
  TSQLBuilderPiped builder;
  const Counts counts = Check(builder);
  // The corpus is large and SQL-92 reads most of its portable part.
  EXPECT_GT(counts.statements, 10000);
  EXPECT_GT(counts.parsed, counts.statements / 2);
}

TEST_F(FormatIdempotencySlow, CorpusUnderBreaksEverywhere) {
  MV_REQUIRE_CORPUS();
  TSQLBuilderPiped builder;
  for (const char16_t* setting :
       {u"RightMargin=40", u"DynamicIndents=True", u"KeywordFormat=akfUpperCase", u"QuoteIdentifiers=icAll",
        u"MainQueryFormat.NewLineAfterPartKeywords=True", u"MainQueryFormat.IndentGlobal=3",
        u"MainQueryFormat.SelectListFormat.NewLineBeforeComma=True",
        u"MainQueryFormat.WhereFormat.NewLineBefore=nlAllLogical",
        u"MainQueryFormat.WhereFormat.NewLineAfter=nlAllLogical",
        u"MainQueryFormat.FromClauseFormat.NewLineAfterJoin=True",
        u"MainQueryFormat.FromClauseFormat.NewLineBeforeJoinExpression=True",
        u"MainQueryFormat.FromClauseFormat.NewLineBeforeComma=True",
        u"ExpressionsSubQueryFormat.MainPartsFromNewLine=True", u"FromSubQueryFormat.IndentGlobal=4",
        u"CTESubQueryFormat.NewLineAfterPartKeywords=True", u"ParenthesizeSingleCriterion=True"})
    builder.PropertyTable().SetAssignment(builder, setting);
  Check(builder);
}

TEST_F(FormatIdempotency, OneLineAndFormattedAgree) {
  // A handful of shapes: both builders print texts that parse to the same
  // one-line text.
  for (const char16_t* sql : {
           u"select a, b from t where a = 1 and (b = 2 or c = 3)",
           u"select * from t1 x inner join t2 y on x.id = y.id left outer join t3 on y.id = t3.id, t4",
           u"select a, count(*) from t group by a having count(*) > 1 order by 2 desc",
           u"select a from t union all (select b from u union select c from v) order by 1",
           u"select (select max(b) from u where u.a = t.a) m from t where exists (select 1 from v)",
           u"select case when a = 1 then 'x' when a = 2 then 'y' else 'z' end from t",
       }) {
    SCOPED_TRACE(UTF8Encode(sql));
    TSQLBuilderPiped piped;
    TSQLBuilderFast fast;
    WideString formatted, oneLine, again;
    ASSERT_TRUE(Format(sql, piped, formatted));
    ASSERT_TRUE(Format(sql, fast, oneLine));
    ASSERT_TRUE(Format(formatted, fast, again));
    EXPECT_EQ(again, oneLine);
    EXPECT_NE(formatted.find(u"\r\n"), WideString::npos);
    EXPECT_EQ(oneLine.find(u"\r\n"), WideString::npos);
  }
}
