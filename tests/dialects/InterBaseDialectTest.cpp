// The InterBase dialect: the size of its grammar, its scanner, what it
// reads and prints back (the plan as typed nodes), its row limits, and its
// catalog statements, which its own grammar reads.
#include <gtest/gtest.h>

#include "DialectFixture.h"

#include "IBPars.h"
#include "IBScan.h"
#include "ScanTokens.h"
#include "dialects/EngineInit.h"
#include "dialects/interbase/IBCatalogQueries.h"
#include "dialects/interbase/IBNodes.h"
#include "dialects/interbase/IBSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class InterBaseDialectTest : public mvtest::DialectFixture<TmvIBSyntaxProvider> {};

}  // namespace

TEST_F(InterBaseDialectTest, GrammarAndScannerSize) {
  EXPECT_EQ(IBParser::RuleCount, 56);
  EXPECT_EQ(IBParser::IterCount, 18);
  // The scanner's words are the family's reserved words before Firebird's
  // additions and the words of the grammar: five more than the dialect's
  // own count (CASE, TRUE, FALSE, ROWS and the time zone fields are words of
  // the grammar that the older list lacks).
  EXPECT_EQ(IBScanner::KeywordCount, 295);
  EXPECT_EQ(IBScanner::NoSym, 332);
}

TEST_F(InterBaseDialectTest, Scanner) {
  using T = IBScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"_a @v", {{T::NoSym, u"_"}, {T::tkIdentifierToken, u"a"}, {T::NoSym, u"@"}, {T::tkIdentifierToken, u"v"}}},
      {u":p ?1", {{T::tkColon, u":"}, {T::tkIdentifierToken, u"p"}, {T::tkQuestionMark, u"?"},
                  {T::tkIntegerToken, u"1"}}},
      {u"x'0F' 0x1f", {{T::tkIdentifierToken, u"x"}, {T::tkStringToken, u"'0F'"}, {T::tkLiteralToken, u"0x1f"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(ScanTokens<IBScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(InterBaseDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select transaction tr a from t where a starting with 'x' and b not containing :p and c = ? 2",
       "Select Transaction tr a From t Where a Starting With 'x' And b Not Containing :p And c = ?2"},
      {"select a from t plan join (t natural, u index (ix1, ix2), v order ix3)",
       "Select a From t Plan Join (t Natural, u Index (ix1, ix2), v Order ix3)"},
      {"select a from t plan sort merge (sort (t natural), merge (u natural))",
       "Select a From t Plan Sort Merge (Sort (t Natural), Merge (u Natural))"},
      {"select a from t order by a rows 5 by 2 percent with ties for update of a, b",
       "Select a From t Order By a Rows 5 By 2 Percent With Ties FOR UPDATE OF a, b"},
      {"select a from t rows 1 to 10", "Select a From t Rows 1 To 10"},
      {"select extract(yearday from d), cast(a as blob), rdb$db_key from t where singular (select 1 from u)",
       "Select Extract(YearDay From d), Cast(a As Blob), RDB$DB_KEY From t Where Singular(Select 1 From u)"},
      {"select a from t where a in (select b from u rows 1)",
       "error: Invalid SELECT statement.\r\n Unexpected token \"rows\" at line 1, pos 45"},
      {"select q.a from (select a from t) q", "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 18"},
      {"select first 1 a from t", "error: Invalid SELECT statement.\r\n Unexpected token \"1\" at line 1, pos 14"},
      {"with q as (select 1 from t) select * from q",
       "error: Invalid SELECT statement.\r\n Unexpected token \"with\" at line 1, pos 1"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(InterBaseDialectTest, PlanNodes) {
  auto statement = context_.ParseSelect(u"select a from t plan sort merge (t index (i1, i2), join (u natural))");
  auto* extender = IBExtenderOf<TIBSQLSubQuerySelectExpressionExtender>(statement->GetItems(0));
  ASSERT_TRUE(extender && extender->Plan);
  TIBSQLPlanExpression& plan = *extender->Plan;
  EXPECT_EQ(plan.Kind, ptSortMerge);
  ASSERT_EQ(plan.GetCount(), 2);
  auto* item = TmvCast<TIBSQLPlanItem>(plan.GetItems(0));
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->Kind, piIndex);
  EXPECT_EQ(item->GetCount(), 2);
  auto* inner = TmvCast<TIBSQLPlanExpression>(plan.GetItems(1));
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->Kind, ptJoin);
}

TEST_F(InterBaseDialectTest, LimitsByRows) {
  WideString offset = u"x", count = u"x";
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
  auto plain = context_.ParseSelect(u"select a from t");
  EXPECT_FALSE(provider_.GetQueryLimits(plain.get(), offset, count));
  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t rows 3", u"", u"5", "Select a From t Rows 5"},
      {"select a from t order by a", u"10", u"5", "Select a From t Order By a Rows 10 + 1 To 10 + 5"},
      {"select a from t union select b from u", u"", u"5", "Select a From t union Select b From u Rows 5"},
      {"select a from t union all select b from u", u"10", u"5",
       "Select a From t union All Select b From u Rows 10 + 1 To 10 + 5"},
  };
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(UTF8Decode(c.text));
    auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
    EXPECT_EQ(Print(limited.get()), c.print) << c.text;
    ASSERT_TRUE(provider_.GetQueryLimits(limited.get(), offset, count)) << c.text;
    EXPECT_EQ(offset, c.offset) << c.text;
    EXPECT_EQ(count, c.count) << c.text;
  }
  // Rows as written: whole numbers read as offset and count; a percentage
  // and other shapes are no limit of rows.
  struct Read {
    const char* text;
    bool limits;
    const char16_t* offset;
    const char16_t* count;
  };
  const Read reads[] = {{"select a from t rows 1 to 10", true, u"", u"10"},
                        {"select a from t rows 11 to 15", true, u"10", u"5"},
                        {"select a from t rows 10 percent", false, u"", u""},
                        {"select a from t rows :a to :b", false, u"", u""}};
  for (const Read& r : reads) {
    EXPECT_EQ(provider_.GetQueryLimits(context_.ParseSelect(UTF8Decode(r.text)).get(), offset, count), r.limits)
        << r.text;
    EXPECT_EQ(offset, r.offset) << r.text;
    EXPECT_EQ(count, r.count) << r.text;
  }
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"10", u""), EmvQueryBuilderError);
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"", u"5 rows"), EmvQueryBuilderError);
}

TEST_F(InterBaseDialectTest, CatalogStatementsReadUnderTheDialect) {
  for (const WideString& text : {WideString(kIBProbeQuery), WideString(kIBTablesQuery), WideString(kIBViewsQuery),
                                 WideString(kIBProceduresProbeQuery), WideString(kIBProceduresQuery),
                                 WideString(kIBRelationsQuery), IBFieldsQuery(u"EMPLOYEE")})
    EXPECT_NO_THROW(context_.ParseSelect(text)) << UTF8Encode(text);
  // A hostile name stays one string: the condition compares with it alone.
  const WideString query = IBFieldsQuery(u"T' or 1=1 --");
  EXPECT_NE(query.find(u"rf.rdb$relation_name = 'T'' or 1=1 --' order by rf.rdb$field_position"), WideString::npos);
  auto statement = context_.ParseSelect(query);
  auto* where = TmvCast<TSQLExpressionOperatorBinary>(
      TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0))->Where.get());
  ASSERT_NE(where, nullptr);
  EXPECT_EQ(Print(where->Right.get()), "'T'' or 1=1 --'");
}
