// The Firebird dialect: the size of its grammar, its scanner's names,
// parameters and literals, what it reads and prints back, the language
// levels of the server versions, and its row limits.
#include <gtest/gtest.h>

#include "DialectFixture.h"
#include "FirebirdChinook.h"

#include "FBPars.h"
#include "FBScan.h"
#include "ScanTokens.h"
#include "dialects/EngineInit.h"
#include "dialects/firebird/FirebirdCatalogQueries.h"
#include "dialects/firebird/FirebirdNodes.h"
#include "dialects/firebird/FirebirdSyntaxProvider.h"
#include "dialects/interbase/IBSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class FirebirdDialectTest : public mvtest::DialectFixture<TmvFirebirdSyntaxProvider> {
 protected:
  // The print under another server version.
  std::string PrintAt(TmvFirebirdVersion version, const std::string& text) {
    provider_.SetServerVersion(version);
    context_.SetSyntaxProvider(nullptr);
    context_.SetSyntaxProvider(&provider_);
    std::string print = Print(text);
    provider_.SetServerVersion(svFirebird2);
    return print;
  }
};

}  // namespace

TEST_F(FirebirdDialectTest, GrammarAndScannerSize) {
  EXPECT_EQ(FBParser::RuleCount, 79);
  EXPECT_EQ(FBParser::IterCount, 21);
  // The scanner's words are those of the grammar and the dialect's reserved
  // words together; the words of the grammar that are not reserved
  // (DATEADD, WEEK, the ODBC words, ...) make the list longer than the
  // family's own.
  EXPECT_EQ(FBScanner::KeywordCount, 323);
  EXPECT_EQ(FBScanner::NoSym, 361);
}

TEST_F(FirebirdDialectTest, ScannerNamesParametersAndLiterals) {
  using T = FBScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"a$1_b", {{T::tkIdentifierToken, u"a$1_b"}}},
      {u"_a", {{T::NoSym, u"_"}, {T::tkIdentifierToken, u"a"}}},
      {u"\u00e9t\u00e9", {{T::NoSym, u"\u00e9"}, {T::kwT, u"t"}, {T::NoSym, u"\u00e9"}}},
      {u":p1 ?p ? @v ?=", {{T::tkColonParameterToken, u":p1"}, {T::tkQuestionParameterToken, u"?p"},
                           {T::tkQuestionParameterToken, u"?"}, {T::tkVariableToken, u"@v"},
                           {T::tkQuestionMarkEqual, u"?="}}},
      {u"x'0F' X'' 0x1f xy", {{T::tkLiteralToken, u"x'0F'"}, {T::tkLiteralToken, u"X''"},
                              {T::tkLiteralToken, u"0x1f"}, {T::tkIdentifierToken, u"xy"}}},
      {u"'it''s' \"a\"\"b\"", {{T::tkStringToken, u"'it''s'"}, {T::tkQuotedIdentifierToken, u"\"a\"\"b\""}}},
      {u"~a RDB$DB_KEY", {{T::tkTilde, u"~"}, {T::tkIdentifierToken, u"a"}, {T::kwRDBDBKEY, u"RDB$DB_KEY"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(ScanTokens<FBScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(FirebirdDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select first 10 skip 5 a from t", "Select First 10 Skip 5 a From t"},
      {"select first (1+2) distinct a from t", "Select First (1 + 2) Distinct a From t"},
      {"select skip 5 a from t", "error: Invalid SELECT statement.\r\n Unexpected token \"skip\" at line 1, pos 8"},
      {"select transaction tr1 a from t", "Select Transaction tr1 a From t"},
      {"select a from t where a starting b and a starting with 'x' and a not starting with c",
       "Select a From t Where a Starting b And a Starting With 'x' And a Not Starting With c"},
      {"select a from t where a not containing 'x' or a containing b",
       "Select a From t Where a Not Containing 'x' Or a Containing b"},
      {"select a from t where singular (select b from u where u.c = t.c)",
       "Select a From t Where Singular(Select b From u Where u.c = t.c)"},
      {"select a from t order by a desc nulls last rows 1 to 10 for update of a, t.b",
       "Select a From t Order By a Desc Nulls Last Rows 1 To 10 For Update Of a, t.b"},
      {"select a from t for update", "Select a From t For Update"},
      {"select a from t where a in (select b from u rows 3)", "Select a From t Where a In (Select b From u Rows 3)"},
      {"select a from t plan (t natural)", "Select a From t Plan (t Natural)"},
      {"select a from t join u on t.a = u.a plan join (t natural, u index (ix1, ix2))",
       "Select a From t Inner Join u On t.a = u.a Plan Join (t Natural, u Index (ix1, ix2))"},
      {"select a from t plan sort merge (sort (t order ix1), sort (u natural))",
       "Select a From t Plan Sort Merge (Sort (t Order ix1), Sort (u Natural))"},
      {"with recursive r (n) as (select 1 from rdb$database union all select n + 1 from r) select n from r",
       "With Recursive r(n) As (Select 1 From rdb$database union All Select n + 1 From r) Select n From r"},
      {"select iif(a > 1, 'x', 'y'), dateadd(day, 1, d), dateadd(1 day to d), datediff(hour from a to b) from t",
       "Select IIF(a > 1, 'x', 'y'), DateAdd(Day, 1, d), DateAdd(1 Day To d), DateDiff(Hour From a To b) From t"},
      {"select overlay(a placing 'x' from 2 for 1), position('a' in b), position('a', b, 2), "
       "trim(leading 'x' from a), trim(from a) from t",
       "Select Overlay(a Placing 'x' From 2 For 1), Position('a' In b), Position('a', b, 2), "
       "Trim(Leading 'x' From a), Trim(From a) From t"},
      {"select extract(weekday from d), extract(millisecond from d), cast(a as bigint), cast(b as varchar(10)) from t",
       "Select Extract(WeekDay From d), Extract(MilliSecond From d), Cast(a As BigInt), Cast(b As VarChar(10)) From t"},
      {"select rdb$db_key, current_connection, x'FF', :p, ?, @v, left(a, 2) from t where a = :p",
       "Select RDB$DB_KEY, Current_Connection, x'FF', :p, ?, @v, Left(a, 2) From t Where a = :p"},
      {"select q.a from (select a from t) q (a)", "Select q.a From (Select a From t) q(a)"},
      {"select a from s.t", "error: Invalid SELECT statement.\r\n Unexpected token \".\" at line 1, pos 16"},
      // Farthest: a dotted function name, which wants its bracket.
      {"select a.b.c from t", "error: Invalid SELECT statement.\r\n Unexpected token \"from\" at line 1, pos 14"},
      {"select a % 2 from t", "error: Invalid SELECT statement.\r\n Unexpected token \"%\" at line 1, pos 10"},
      // EXCEPT is no word of the dialect: it is read as the table's alias.
      {"select a from t except select b from u",
       "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 24"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(FirebirdDialectTest, LanguageLevelsOfTheVersions) {
  // One row a construct, one column a version (1, 1.5, 2, 2.5): whether it parses.
  struct Case {
    const char* text;
    bool parses[4];
  };
  const Case cases[] = {
      {"select case when a = 1 then 2 end from t", {false, true, true, true}},
      {"select q.a from (select a from t) q", {false, false, true, true}},
      {"select a from t where a is distinct from b", {false, false, false, true}},
      {"select a from t where a similar to 'x'", {false, false, false, true}},
      {"select first 1 a from t where a containing 'x'", {true, true, true, true}},
  };
  for (const Case& c : cases)
    for (int v = svFirebird1; v <= svFirebird2_5; ++v)
      EXPECT_EQ(PrintAt(static_cast<TmvFirebirdVersion>(v), c.text).rfind("error", 0) != 0, c.parses[v])
          << c.text << " at version " << v;
  EXPECT_EQ(PrintAt(svFirebird2_5, "select a from t where a is not distinct from b and a not similar to 'x%'"),
            "Select a From t Where a Is Not Distinct From b And a Not Similar To 'x%'");
  // A construct whose level fails is an error at its first token.
  EXPECT_EQ(PrintAt(svFirebird1, "select case when a = 1 then 2 end from t"),
            "error: Invalid SELECT statement.\r\n Unexpected token \"case\" at line 1, pos 8");
}

TEST_F(FirebirdDialectTest, VersionSettingsAndAnswers) {
  struct Case {
    TmvFirebirdVersion version;
    int32_t level;
    bool derivedTables, nullOrdering;
  };
  const Case cases[] = {{svFirebird1, 10, false, false},
                        {svFirebird1_5, 15, false, true},
                        {svFirebird2, 20, true, true},
                        {svFirebird2_5, 25, true, true}};
  int notified = 0;
  const TmvHandlerId id = TmvHandlerId::Unique();
  provider_.GetOnUpdate().AddHandler(id, [&](TmvObject*) { ++notified; });
  for (const Case& c : cases) {
    provider_.SetServerVersion(c.version);
    EXPECT_EQ(TmvFirebirdSyntaxProvider::LanguageLevel(c.version), c.level);
    EXPECT_EQ(provider_.IsSupportDerivedTables(), c.derivedTables) << c.level;
    EXPECT_EQ(provider_.IsSupportSubQueryDerivedTables(), c.derivedTables) << c.level;
    EXPECT_EQ(provider_.IsSupportOrderByAlias(), c.derivedTables) << c.level;
    EXPECT_EQ(provider_.IsSupportNullOrdering(), c.nullOrdering) << c.level;
    EXPECT_TRUE(provider_.IsSupportCTE());
  }
  provider_.SetServerVersion(svFirebird2_5);
  EXPECT_EQ(notified, 4);
  TmvFirebirdSyntaxProvider copy;
  copy.Assign(&provider_);
  EXPECT_EQ(copy.GetServerVersion(), svFirebird2_5);
  provider_.GetOnUpdate().RemoveHandler(id);
  provider_.SetServerVersion(svFirebird2);
  EXPECT_FALSE(provider_.IsFixedSizeType(u"Character Varying"));
  EXPECT_TRUE(provider_.IsFixedSizeType(u"blob"));
  EXPECT_EQ(Print("select a from proc_1()"), "Select a From proc_1");
}

TEST_F(FirebirdDialectTest, LimitsByFirstAndSkip) {
  WideString offset = u"x", count = u"x";
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
  auto plain = context_.ParseSelect(u"select a from t");
  EXPECT_FALSE(provider_.GetQueryLimits(plain.get(), offset, count));
  EXPECT_TRUE(offset.empty() && count.empty());
  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {"select first 3 a from t", u"", u"5", "Select First 5 a From t"},
      // The clause prints First before Skip even with no count; the server
      // text of an offset alone is not one the grammar reads back.
      {"select a from t", u"2", u"", "Select First Skip 2 a From t"},
      {"select first 1 skip 9 a from t order by a", u"2", u"5", "Select First 5 Skip 2 a From t Order By a"},
      {"select a from t union select b from u", u"", u"5",
       "Select First 5 * From (Select a From t union Select b From u) q"},
      {"select a from t union select b from u", u"2", u"", "Select First Skip 2 * From (Select a From t union Select b From u) q"},
      {"select a from t union all select b from u", u"2", u"5",
       "Select First 5 Skip 2 * From (Select a From t union All Select b From u) q"},
  };
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(UTF8Decode(c.text));
    auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
    EXPECT_EQ(Print(limited.get()), c.print) << c.text;
    ASSERT_TRUE(provider_.GetQueryLimits(limited.get(), offset, count)) << c.text;
    EXPECT_EQ(offset, c.offset) << c.text;
    EXPECT_EQ(count, c.count) << c.text;
  }
  auto cleared = provider_.TransformQueryLimits(context_.ParseSelect(u"select first 1 a from t").get(), u"", u"");
  EXPECT_EQ(Print(cleared.get()), "Select a From t");
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"", u"5 rows"), EmvQueryBuilderError);
}

TEST_F(FirebirdDialectTest, CatalogStatementsReadUnderTheDialect) {
  for (const WideString& text :
       {WideString(kFirebirdProbeQuery), WideString(kFirebirdTablesQuery), WideString(kFirebirdViewsQuery),
        WideString(kFirebirdProceduresProbeQuery), WideString(kFirebirdProceduresQuery),
        WideString(kFirebirdRelationsQuery), FirebirdFieldsQuery(u"EMPLOYEE")})
    EXPECT_NO_THROW(context_.ParseSelect(text)) << UTF8Encode(text);
  // A hostile name stays one string: the condition compares with it alone.
  const WideString query = FirebirdFieldsQuery(u"T' or 1=1 --");
  EXPECT_NE(query.find(u"rf.rdb$relation_name = 'T'' or 1=1 --' order by rf.rdb$field_position"), WideString::npos);
  auto statement = context_.ParseSelect(query);
  auto* where = TmvCast<TSQLExpressionOperatorBinary>(
      TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0))->Where.get());
  ASSERT_NE(where, nullptr);
  EXPECT_EQ(Print(where->Right.get()), "'T'' or 1=1 --'");
}

// The limits the provider prints run on the Firebird test server over
// Chinook and return the rows they should. An offset alone prints
// "First Skip n", which the server refuses (it wants a count after First):
// the print stays as prescribed and the case is listed as refused.
TEST_F(FirebirdDialectTest, LimitsRunOnTheServer) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const char* chinook = mvtest::kFirebirdChinookDatabase;
  const WideString text = u"SELECT \"TrackId\", \"Name\" FROM \"Track\" WHERE \"AlbumId\" < 5 ORDER BY \"TrackId\"";
  const mvtest::SqlRows all = fb.Query(UTF8Encode(text), chinook);
  ASSERT_GT(all.size(), 20u);
  const WideString union_ = u"SELECT \"GenreId\", \"Name\" FROM \"Genre\" WHERE \"GenreId\" < 4 UNION ALL "
                            u"SELECT \"MediaTypeId\", \"Name\" FROM \"MediaType\"";
  const mvtest::SqlRows unionAll = fb.Query(UTF8Encode(union_), chinook);
  ASSERT_GT(unionAll.size(), 5u);
  struct Case {
    const WideString* text;
    const mvtest::SqlRows* all;
    const char16_t* offset;
    const char16_t* count;
    size_t from, rows;
    bool refused;
  };
  const Case cases[] = {{&text, &all, u"", u"5", 0, 5, false},
                        {&text, &all, u"4", u"6", 4, 6, false},
                        {&text, &all, u"1000", u"2", 0, 0, false},
                        {&text, &all, u"3", u"", 3, all.size() - 3, true},
                        {&union_, &unionAll, u"", u"2", 0, 2, false},
                        {&union_, &unionAll, u"1", u"3", 1, 3, false}};
  for (const Case& c : cases) {
    auto limited = provider_.TransformQueryLimits(context_.ParseSelect(*c.text).get(), c.offset, c.count);
    TSQLBuilderFast builder;
    const std::string sql = UTF8Encode(limited->SimpleSQL(builder));
    if (c.refused) {
      EXPECT_THROW(fb.Query(sql, chinook), std::runtime_error) << sql;
      continue;
    }
    const mvtest::SqlRows rows = fb.Query(sql, chinook);
    // UNION ALL without an order reads its branches in turn.
    mvtest::SqlRows expected((*c.all).begin() + static_cast<std::ptrdiff_t>(std::min(c.from, c.all->size())),
                             (*c.all).begin() + static_cast<std::ptrdiff_t>(std::min(c.from + c.rows, c.all->size())));
    EXPECT_EQ(rows, expected) << sql;
  }
}

namespace {
class InterBaseRowsOnFirebirdTest : public mvtest::DialectFixture<TmvIBSyntaxProvider> {};
}  // namespace

// InterBase's ROWS, which Firebird reads too, on the same server: ROWS n and
// ROWS m + 1 TO m + n on a select and on a union.
TEST_F(InterBaseRowsOnFirebirdTest, LimitsRunOnTheServer) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const char* chinook = mvtest::kFirebirdChinookDatabase;
  const WideString text = u"SELECT \"TrackId\", \"Name\" FROM \"Track\" WHERE \"AlbumId\" < 5 ORDER BY \"TrackId\"";
  const WideString union_ = u"SELECT \"GenreId\", \"Name\" FROM \"Genre\" WHERE \"GenreId\" < 4 UNION ALL "
                            u"SELECT \"MediaTypeId\", \"Name\" FROM \"MediaType\" ORDER BY 1, 2";
  const struct {
    const WideString* text;
    const char16_t* offset;
    const char16_t* count;
    size_t from, rows;
  } cases[] = {{&text, u"", u"5", 0, 5},     {&text, u"4", u"6", 4, 6},  {&text, u"1000", u"2", 0, 0},
               {&union_, u"", u"2", 0, 2},   {&union_, u"1", u"3", 1, 3}};
  for (const auto& c : cases) {
    const mvtest::SqlRows all = fb.Query(UTF8Encode(*c.text), chinook);
    auto limited = provider_.TransformQueryLimits(context_.ParseSelect(*c.text).get(), c.offset, c.count);
    TSQLBuilderFast builder;
    const std::string sql = UTF8Encode(limited->SimpleSQL(builder));
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(std::min(c.from, all.size()));
    EXPECT_EQ(fb.Query(sql, chinook), mvtest::SqlRows(begin, all.begin() + static_cast<std::ptrdiff_t>(
                                                                                 std::min(c.from + c.rows, all.size()))))
        << sql;
  }
}
