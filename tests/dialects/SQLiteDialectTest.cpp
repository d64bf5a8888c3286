// The SQLite dialect: the size of its grammar and scanner, what it reads and
// how it prints back (names that are strings, two levels of comparison,
// COLLATE before DESC, the three LIMIT forms), errors with their position,
// and the row limits, also run on the Chinook database.
#include <gtest/gtest.h>

#include "ChinookLoader.h"
#include "SQLitePars.h"
#include "SQLiteScan.h"
#include "dialects/EngineInit.h"
#include "dialects/sqlite/SQLiteNodes.h"
#include "dialects/sqlite/SQLiteSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvidersList.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class SQLiteDialectTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  void SetUp() override { context_.SetSyntaxProvider(&provider_); }
  void TearDown() override { context_.SetSyntaxProvider(nullptr); }

  static std::string Print(TastNode* node) {
    TSQLBuilderFast builder;
    return UTF8Encode(node->SimpleSQL(builder));
  }
  // The one-line print of `text`, or "error at <pos>" when it does not parse.
  std::string Print(const std::string& text) {
    try {
      return Print(context_.ParseSelect(UTF8Decode(text)).get());
    } catch (const EmvSQLError& e) {
      return "error at " + std::to_string(e.Pos);
    }
  }
  TSQLExpressionItem* FirstItem(TSQLSelectStatement* statement) {
    auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
    return TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(0))->Expression.get();
  }

  TmvSQLiteSyntaxProvider provider_;
  TmvBaseSQLContext context_;
};

}  // namespace

TEST_F(SQLiteDialectTest, SizesAndLists) {
  EXPECT_EQ(SQLiteParser::RuleCount, 57);
  EXPECT_EQ(SQLiteParser::IterCount, 22);
  EXPECT_EQ(SQLiteScanner::KeywordCount, 118);
  EXPECT_EQ(SQLiteScanner::NoSym, 162);
  EXPECT_EQ(provider_.GetKeywords().size(), 106u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 37);
  EXPECT_EQ(provider_.ServerName(), u"SQLite");
  EXPECT_FALSE(provider_.IsFixedSizeType(u"int"));
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvsqlitesyntaxprovider"), nullptr);
}

TEST_F(SQLiteDialectTest, ReadsAndPrints) {
  // Each text prints as given (or fails at the given position) and the print
  // reads back to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select \"a\", t.\"a\", [b c], `d`, t.rowid, _rowid_ from t", "Select \"a\", t.a, \"b c\", d, t.rowid, _rowid_ From t"},
      // A name that starts with a quote of the dialect prints in quotes.
      {"select [`a], `[b`, [a`] from t", "Select \"`a\", \"[b\", \"a`\" From t"},
      // A tilde or a dollar sign starts a name: ~a and $x are columns.
      {"select ~ a, ~a, $x, $ x from t", "Select ~ a, ~a, $x, $x From t"},
      {"select a from t where a == 1 < 2", "Select a From t Where a == 1 < 2"},
      {"select a from t order by a collate nocase desc, b asc", "Select a From t Order By a Collate nocase Desc, b"},
      {"select a from t limit 5 offset 10", "Select a From t Limit 5 Offset 10"},
      {"select a from t limit 10, 5", "Select a From t Limit 10, 5"},
      {"select a from t limit 5", "Select a From t Limit 5"},
      {"select a from t union all select b from u except select c from v intersect select d from w order by 1 limit 3",
       "Select a From t union All Select b From u except Select c From v intersect Select d From w Order By 1 Limit 3"},
      {"with recursive c(n) as (select 1 union all select n + 1 from c limit 5) select n from c",
       "With Recursive c(n) As (Select 1 union All Select n + 1 From c Limit 5) Select n From c"},
      {"select a from t where a glob 'x*' and b not regexp 'y' and c match 'z' and d like 'p%' escape '\\'",
       "Select a From t Where a Glob 'x*' And b Not Regexp 'y' And c Match 'z' And d Like 'p%' Escape '\\'"},
      {"select a notnull, b isnull, c is not null, d is 5, e not between 1 and 2 from t",
       "Select a NotNull, b IsNull, c Is Not Null, d Is 5, e Not Between 1 And 2 From t"},
      {"select !b, a << 2 | b & 3 >> 1, a || b, -a % 2 != 1, a <> b from t",
       "Select !b, a << 2 | b & 3 >> 1, a || b, -a % 2 != 1, a <> b From t"},
      {"select cast(a as varchar(10)), cast(b as timestamp without time zone), char(65) from t",
       "Select Cast(a As VarChar(10)), Cast(b As TimeStamp Without Time Zone), Char(65) From t"},
      {"select ?1, :name, count(*), count(distinct a) from t", "Select ?1, :name, count(*), Count(Distinct a) From t"},
      {"select * from t left join u on t.a = u.a cross join v", "Select * From t Left Join u On t.a = u.a Cross Join v"},
      {"select a from t where a in (1, 2) and b in (select b from u) and not exists (select 1 from v)",
       "Select a From t Where a In (1, 2) And b In (Select b From u) And Not Exists(Select 1 From v)"},
      {"select a from main.t x where x.a > 0", "Select a From main.t x Where x.a > 0"},
      // Errors: a bracketed union member, a limit that is no number, !<,
      // a variable, four-part names (at the farthest token a way reached:
      // a.b.c.d could still be a function's name), a join that nests its ON.
      {"select a from t union (select b from u)", "error at 22"},
      {"select a from t limit x", "error at 22"},
      {"select a from t limit 1 offset 4294967296", "error at 31"},
      {"select a from t where a !< 1", "error at 24"},
      {"select @a from t", "error at 7"},
      {"select a.b.c.d from t", "error at 15"},
      {"select * from t join u join v on 1 = 1 on 2 = 2", "error at 23"},
  };
  for (const Case& c : cases) {
    const std::string print = Print(c.text);
    EXPECT_EQ(print, c.print) << c.text;
    if (print.rfind("error", 0) != 0) {
      EXPECT_EQ(Print(print), print) << c.text;
    }
  }
}

TEST_F(SQLiteDialectTest, CriteriaWithoutTheirLeftSide) {
  // Where the caller allows it (a criterion of the grid), a predicate may
  // lack its left side at either level of comparison; elsewhere it may not.
  const char* cases[][2] = {{"< 5", "< 5"},
                            {"== 1", "== 1"},
                            {"is not null", "Is Not Null"},
                            {"not like 'a%'", "Not Like 'a%'"},
                            {"not between 1 and 2", "Not Between 1 And 2"},
                            {"in (1, 2)", "In (1, 2)"},
                            {"notnull", "NotNull"},
                            {"> 1 and a < 2", "> 1 And a < 2"}};
  for (const auto& c : cases) {
    auto criterion = context_.ParseLogicalExpression(UTF8Decode(c[0]), false);
    ASSERT_TRUE(criterion) << c[0];
    EXPECT_EQ(Print(criterion.get()), c[1]);
    EXPECT_FALSE(context_.ParseLogicalExpression(UTF8Decode(c[0]), true)) << c[0];
  }
}

TEST_F(SQLiteDialectTest, TreeShapes) {
  // A double-quoted word alone is a string, after a qualifier a column.
  auto strings = context_.ParseSelect(u"select \"a\", t.\"a\" from t");
  auto* select = TmvCast<TSQLSubQuerySelectExpression>(strings->GetItems(0));
  EXPECT_NE(TmvCast<TSQLExpressionConstant>(TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(0))->Expression.get()), nullptr);
  EXPECT_NE(TmvCast<TSQLExpressionColumn>(TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(1))->Expression.get()), nullptr);
  // a == 1 < 2 is (a == 1) < 2; a < 1 == 2 is a < (1 == 2).
  auto tighter = context_.ParseSelect(u"select a == 1 < 2, a < 1 == 2");
  select = TmvCast<TSQLSubQuerySelectExpression>(tighter->GetItems(0));
  for (int i = 0; i < 2; ++i) {
    auto* top = TmvCast<TSQLExpressionOperatorBinary>(
        TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(i))->Expression.get());
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(top->Operator->Text, u"<");
    auto* inner = TmvCast<TSQLExpressionOperatorBinary>(i == 0 ? top->Expression.get() : top->Right.get());
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->Operator->Text, u"==");
  }
  // The collation stays with the order item's extender.
  auto ordered = context_.ParseSelect(u"select a from t order by a collate nocase desc");
  auto* extender = SQLiteExtenderOf<TSQLOrderByItemExtender>(ordered->OrderBy->GetItems(0));
  ASSERT_NE(extender, nullptr);
  EXPECT_TRUE(extender->Collate);
}

TEST_F(SQLiteDialectTest, LimitsReadBackAsWritten) {
  struct Case {
    const char16_t* text;
    const char16_t* offset;
    const char16_t* count;
  };
  const Case cases[] = {{u"select a from t limit 5 offset 10", u"10", u"5"},
                        {u"select a from t limit 10, 5", u"10", u"5"},
                        {u"select a from t limit 5", u"", u"5"},
                        {u"select a from t", u"", u""}};
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(c.text);
    WideString offset, count;
    EXPECT_TRUE(provider_.GetQueryLimits(statement.get(), offset, count));
    EXPECT_EQ(offset, c.offset) << UTF8Encode(c.text);
    EXPECT_EQ(count, c.count) << UTF8Encode(c.text);
  }
  WideString offset, count;
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
}

TEST_F(SQLiteDialectTest, TransformedLimits) {
  // {count, offset, both} x {single select, union}: the print, and the
  // limits read back from it (an offset alone is not applied).
  struct Case {
    const char16_t* offset;
    const char16_t* count;
    const char* suffix;
  };
  const Case cases[] = {{u"", u"5", " Limit 5"}, {u"10", u"", ""}, {u"10", u"5", " Limit 5 Offset 10"}};
  const char* queries[] = {"select a from t order by a limit 1, 2", "select a from t union select b from u order by 1"};
  for (const char* query : queries) {
    auto statement = context_.ParseSelect(UTF8Decode(query));
    const std::string plain = Print(provider_.TransformQueryLimits(statement.get(), u"", u"").get());
    for (const Case& c : cases) {
      auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
      const std::string print = Print(limited.get());
      EXPECT_EQ(print, plain + c.suffix) << query;
      EXPECT_EQ(Print(print), print);
      WideString offset, count;
      ASSERT_TRUE(provider_.GetQueryLimits(limited.get(), offset, count));
      EXPECT_EQ(offset, c.count[0] ? c.offset : u"") << print;
      EXPECT_EQ(count, c.count) << print;
    }
  }
  auto statement = context_.ParseSelect(u"select a from t");
  EXPECT_THROW(provider_.TransformQueryLimits(statement.get(), u"", u"five"), EConvertError);
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}

TEST_F(SQLiteDialectTest, TransformedLimitsRunOnChinook) {
  MV_REQUIRE_CHINOOK();
  mvtest::SqliteDatabase chinook(mvtest::ChinookSqlitePath());
  const char* queries[] = {
      "select TrackId, Name from Track where GenreId = 2 order by TrackId",
      "select ArtistId as Id, Name from Artist union select AlbumId, Title from Album order by 1, 2"};
  struct Limit {
    int offset;
    int count;
  };
  const Limit limits[] = {{-1, 7}, {12, -1}, {12, 7}, {0, 3}};
  for (const char* query : queries) {
    const mvtest::SqlRows all = chinook.Query(query);
    ASSERT_GT(all.size(), 20u) << query;
    auto statement = context_.ParseSelect(UTF8Decode(query));
    for (const Limit& limit : limits) {
      const WideString offset = limit.offset < 0 ? WideString() : IntToWide(limit.offset);
      const WideString count = limit.count < 0 ? WideString() : IntToWide(limit.count);
      const std::string sql = Print(provider_.TransformQueryLimits(statement.get(), offset, count).get());
      // The rows the limit should leave; an offset without a count is not applied.
      const size_t from = limit.count < 0 ? 0 : static_cast<size_t>(std::max(limit.offset, 0));
      const size_t to = limit.count < 0 ? all.size() : std::min(all.size(), from + limit.count);
      const mvtest::SqlRows expected(all.begin() + from, all.begin() + to);
      EXPECT_EQ(mvtest::RowsDiffer(expected, chinook.Query(sql)), "") << sql;
    }
  }
}
