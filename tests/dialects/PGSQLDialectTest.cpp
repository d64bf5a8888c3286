// The PostgreSQL dialect: the size of its grammar, its scanner's strings and
// operators, what it reads and prints back, the comparison operators as a
// setting, and its row limits, which also run on a PostgreSQL server.
#include <gtest/gtest.h>

#include "ChinookLoader.h"
#include "DialectFixture.h"
#include "PGSQLPars.h"
#include "PGSQLScan.h"
#include "PostgresServer.h"
#include "ScanTokens.h"
#include "dialects/EngineInit.h"
#include "dialects/pgsql/PGSQLNodes.h"
#include "dialects/pgsql/PGSQLSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class PGSQLDialectTest : public mvtest::DialectFixture<TmvPGSQLSyntaxProvider> {
 protected:
  // The condition of the first select of `text`.
  TSQLExpressionItem* Where(const std::string& text) {
    statement_ = context_.ParseSelect(UTF8Decode(text));
    return TmvCast<TSQLSubQuerySelectExpression>(statement_->GetItems(0))->Where.get();
  }
  TmvOwned<TSQLSelectStatement> statement_;
};

}  // namespace

TEST_F(PGSQLDialectTest, GrammarAndScannerSize) {
  EXPECT_EQ(PGSQLParser::RuleCount, 89);
  // One repetition more than the dialect's reference grammar: a run of plain
  // strings is one literal. One keyword more: PRECEDING beside PRECEEDING.
  EXPECT_EQ(PGSQLParser::IterCount, 36);
  EXPECT_EQ(PGSQLScanner::KeywordCount, 237);
  EXPECT_EQ(PGSQLScanner::NoSym, 265);
}

TEST_F(PGSQLDialectTest, ScannerStringsNamesAndOperators) {
  using T = PGSQLScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"'a''b'", {{T::tkStringToken, u"'a'"}, {T::tkStringToken, u"'b'"}}},
      {u"'a\\'b'", {{T::tkStringToken, u"'a\\'b'"}}},
      {u"$$abc$$ $q$x$y$q$", {{T::tkStringToken, u"$$abc$$"}, {T::tkStringToken, u"$q$x$y$q$"}}},
      {u"$$abc", {{T::tkIdentifierToken, u"$$abc"}}},
      {u"$1", {{T::tkIdentifierToken, u"$1"}}},
      {u"E'a\\'b' U&'x' B'01'", {{T::tkEscapeStringToken, u"E'a\\'b'"}, {T::tkUnicodeStringToken, u"U&'x'"},
                                  {T::tkLiteralToken, u"B'01'"}}},
      {u"a~~*b", {{T::tkIdentifierToken, u"a"}, {T::tkOperatorToken, u"~~*"}, {T::tkIdentifierToken, u"b"}}},
      {u"a=b<>z", {{T::tkIdentifierToken, u"a"}, {T::kwEQUAL, u"="}, {T::tkIdentifierToken, u"b"},
                   {T::tkOperatorToken, u"<>"}, {T::tkIdentifierToken, u"z"}}},
      {u"x::int[1]", {{T::tkIdentifierToken, u"x"}, {T::tkDoubleColon, u"::"}, {T::kwINT, u"int"},
                      {T::tkLeftBracket, u"["}, {T::tkIntegerToken, u"1"}, {T::tkRightBracket, u"]"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(ScanTokens<PGSQLScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(PGSQLDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t where a ~~ 'x' and b >= 2 or c <> 3", "Select a From t Where (a ~~ 'x' And b >= 2) Or c <> 3"},
      {"select OPERATOR(pg_catalog.+) 1, OPERATOR(+) 2 from t", "Select Operator(pg_catalog.+) 1, Operator(+) 2 From t"},
      {"select $1, $ 2 from t where a = $3", "Select $1, $2 From t Where a = $3"},
      {"select x[1:2], x[3], ARRAY[1,2], ARRAY[[1],[2]], ARRAY(select 1) from t",
       "Select x[1:2], x[3], Array[1,2], Array[[1],[2]], Array(Select 1) From t"},
      {"select a into temp t from s", "Select a Into Temporary Table t From s"},
      {"select a into table t from s", "Select a Into Table t From s"},
      {"with recursive q(n) as (select 1) select n from q", "With Recursive q(n) As (Select 1) Select n From q"},
      {"select a from t order by a desc nulls first limit 5 offset 10",
       "Select a From t Order By a Desc Nulls First Limit 5 Offset 10"},
      {"select a || b, a::numeric(10,2), 'it''s' from t", "Select a || b, a::numeric(10, 2), 'it''s' From t"},
      {"select a from t where a is not null and b isnull and c notnull and d ilike 'x' and e similar to 'y'",
       "Select a From t Where a Is Not Null And b IsNull And c NotNull And d ILike 'x' And e Similar To 'y'"},
      {"select a from t where b = any(array[1]) and c not between 1 and 2 and d not in (select 1)",
       "Select a From t Where b = Any(Array[1]) And c Not Between 1 And 2 And d Not In (Select 1)"},
      {"select string_agg(a, ',' order by b), now() at time zone 'utc', interval '1' hour to minute from t",
       "Select string_agg(a, ',' Order By b), now() At Time Zone 'utc', Interval '1' Hour To Minute From t"},
      {"select sum(a) over (partition by b order by c rows between unbounded preceeding and current row) from t",
       "Select Sum(a) Over (Partition By b Order By c Rows Between Unbounded Preceeding And Current Row) From t"},
      {"select a from t window w as (partition by a), v as (order by b)",
       "Select a From t Window w As (Partition By a), v As (Order By b)"},
      {"select row(1, 2), (3, 4), position('a' in b), char_length(c) from t",
       "Select Row(1, 2), (3, 4), Position('a' In b), char_length(c) From t"},
      {"select a from t limit 5, 10", "error: Invalid SELECT statement.\r\n Unexpected token \",\" at line 1, pos 24"},
      {"select a from t limit 4294967296", "error: Invalid SELECT statement.\r\n Unexpected token \"4294967296\" at line 1, pos 23"},
      {"select a from t offset 5 limit 10",
       "error: Invalid SELECT statement.\r\n Unexpected token \"limit\" at line 1, pos 26"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(PGSQLDialectTest, NodesOfTheDialect) {
  auto statement = context_.ParseSelect(u"select $7, x[1], a from t where a ~~ OPERATOR(s.~) b");
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
  auto item = [&](int i) { return TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(i))->Expression.get(); };
  auto* parameter = TmvCast<TPGSQLPositionalParam>(item(0));
  ASSERT_NE(parameter, nullptr);
  EXPECT_EQ(parameter->Number, 7);
  EXPECT_NE(TmvCast<TPGSQLExpressionArraySelection>(item(1)), nullptr);
  auto* comparison = TmvCast<TSQLExpressionOperatorBinary>(select->Where.get());
  ASSERT_NE(comparison, nullptr);
  auto* named = TmvCast<TPGSQLOperator>(TmvCast<TSQLExpressionOperatorPrefixWithSpace>(comparison->Right.get())->Operator.get());
  ASSERT_NE(named, nullptr);
  EXPECT_EQ(named->Schema->Token, u"s");
  EXPECT_TRUE(provider_.IsQueryWithIntoClause(context_.ParseSelect(u"select a into t from s").get()));
  EXPECT_FALSE(provider_.IsQueryWithIntoClause(statement.get()));
  provider_.SetDenyIntoClause(true);
  EXPECT_EQ(Print("select a into t from s").rfind("error", 0), 0u);
  provider_.SetDenyIntoClause(false);
}

TEST_F(PGSQLDialectTest, ComparisonOperatorsDecideHowTheSameTextParses) {
  // Listed, ~~ compares the whole right side; unlisted, it is an operator
  // of the level of ||, read from left to right.
  auto* listed = TmvCast<TSQLExpressionOperatorBinary>(Where("select a from t where a ~~ 'x' || 'y'"));
  ASSERT_NE(listed, nullptr);
  EXPECT_EQ(listed->Operator->Text, u"~~");
  provider_.SetComparisonOperatorsText(u"=,<>");
  std::vector<std::string> list;
  provider_.GetComparisonOperators(list);
  EXPECT_EQ(list, (std::vector<std::string>{"=", "<>"}));
  context_.SetSyntaxProvider(nullptr);
  context_.SetSyntaxProvider(&provider_);
  auto* generic = TmvCast<TSQLExpressionOperatorBinary>(Where("select a from t where a ~~ 'x' || 'y'"));
  ASSERT_NE(generic, nullptr);
  EXPECT_EQ(generic->Operator->Text, u"||");
  EXPECT_EQ(Print(statement_.get()), "Select a From t Where a ~~ 'x' || 'y'");
  TmvPGSQLSyntaxProvider copy;
  copy.Assign(&provider_);
  EXPECT_EQ(copy.GetComparisonOperatorsProperty().size(), 2u);
}

TEST_F(PGSQLDialectTest, LimitsOnTheStatement) {
  WideString offset = u"x", count = u"x";
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
  auto plain = context_.ParseSelect(u"select 1");
  EXPECT_TRUE(provider_.GetQueryLimits(plain.get(), offset, count));
  EXPECT_TRUE(offset.empty() && count.empty());
  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t limit 3", u"", u"5", "Select a From t Limit 5"},
      {"select a from t", u"2", u"", "Select a From t Offset 2"},
      {"select a from t offset 9", u"2", u"5", "Select a From t Limit 5 Offset 2"},
      {"select a from t union select b from u order by 1", u"2", u"5",
       "Select a From t union Select b From u Order By 1 Limit 5 Offset 2"},
      {"select a from t limit 3 offset 1", u"", u"", "Select a From t"},
  };
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(UTF8Decode(c.text));
    auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
    EXPECT_EQ(Print(limited.get()), c.print) << c.text;
    ASSERT_TRUE(provider_.GetQueryLimits(limited.get(), offset, count));
    EXPECT_EQ(offset, c.offset) << c.text;
    EXPECT_EQ(count, c.count) << c.text;
    EXPECT_EQ(Print(c.print), c.print);
  }
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"", u"5 rows"), EmvQueryBuilderError);
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"-1", u""), EmvQueryBuilderError);
}

TEST_F(PGSQLDialectTest, LimitsRunOnTheServer) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  ExpectLimitsOnServer(u"SELECT \"TrackId\", \"Name\" FROM \"Track\" WHERE \"AlbumId\" < 5 ORDER BY \"TrackId\"",
                       CommonLimitsCases(), [&](const WideString& sql) { return pg.Query(sql); });
}
