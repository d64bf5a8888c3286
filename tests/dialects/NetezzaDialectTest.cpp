// The Netezza dialect: the size of its grammar, what it reads and prints
// back (LIMIT and OFFSET, MINUS, db..table, AS before an alias), the row
// limits read back and written (also on PostgreSQL, whose limits these
// are), and the catalog statements with hostile names.
#include <gtest/gtest.h>

#include "ChinookLoader.h"
#include "DialectFixture.h"
#include "NetezzaPars.h"
#include "NetezzaScan.h"
#include "PostgresServer.h"
#include "ScanTokens.h"
#include "dialects/netezza/NetezzaCatalogQueries.h"
#include "dialects/netezza/NetezzaSyntaxProvider.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;

namespace {

class NetezzaDialectTest : public mvtest::DialectFixture<TmvNetezzaSyntaxProvider> {};

}  // namespace

TEST_F(NetezzaDialectTest, SizesAndLists) {
  EXPECT_EQ(NetezzaParser::RuleCount, 93);
  EXPECT_EQ(NetezzaParser::IterCount, 18);
  EXPECT_EQ(provider_.GetKeywords().size(), 164u);
  EXPECT_EQ(provider_.ServerName(), u"Netezza");
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_GT(names.Count(), 300);  // PostgreSQL's
  for (const char16_t* sized : {u"char", u"CHARACTER VARYING", u"varbit", u"bit varying"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"integer", u"nchar", u"timestamp"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
}

TEST_F(NetezzaDialectTest, ReadsAndPrintsBack) {
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t order by a limit 5 offset 10", "Select a From t Order By a Limit 5 Offset 10"},
      {"select a from (select b from u limit 2) x", "Select a From (Select b From u Limit 2) x"},
      {"select a from t minus select b from u intersect all select c from v",
       "Select a From t minus Select b From u intersect All Select c From v"},
      {"select t.a as x, y = b from db..t", "Select t.a As x, y = b From db..t"},
      {"select db..t.a, current_catalog from t", "Select db..t.a, Current_Catalog From t"},
      {"with w (c) as (select 1) select c from w order by c nulls last",
       "With w(c) As (Select 1) Select c From w Order By c Nulls Last"},
      {"select cast(a as numeric(10, 2)), a > 1 or b from table(f(1)) z",
       "Select Cast(a As Numeric(10, 2)), a > 1 Or b From Table(f(1)) z"},
      // An alias needs AS; N'..' is no string of the dialect; a limit is a
      // number.
      {"select a x from t", "error: Invalid SELECT statement.\r\n Unexpected token \"x\" at line 1, pos 10"},
      {"select n'a' from t", "error: Invalid SELECT statement.\r\n Unexpected token \"'a'\" at line 1, pos 9"},
      {"select a from t limit all", "error: Invalid SELECT statement.\r\n Unexpected token \"all\" at line 1, pos 23"},
  };
  for (const Case& c : cases) {
    const std::string print = Print(c.text);
    EXPECT_EQ(print, c.print) << c.text;
    if (print.rfind("error", 0) != 0) {
      EXPECT_EQ(Print(print), print) << c.text;
    }
  }
}

TEST_F(NetezzaDialectTest, Limits) {
  WideString offset = u"x", count = u"x";
  auto read = context_.ParseSelect(u"select a from t limit 5 offset 10");
  ASSERT_TRUE(provider_.GetQueryLimits(read.get(), offset, count));
  EXPECT_EQ(offset, u"10");
  EXPECT_EQ(count, u"5");
  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t limit 3", u"", u"5", "Select a From t Limit 5"},
      {"select a from t", u"2", u"", "Select a From t Offset 2"},
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
  }
  EXPECT_THROW(provider_.TransformQueryLimits(read.get(), u"", u"5 rows"), EmvQueryBuilderError);
  EXPECT_THROW(provider_.TransformQueryLimits(read.get(), u"-1", u""), EmvQueryBuilderError);
}

TEST_F(NetezzaDialectTest, LimitsRunOnPostgreSQL) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  mvtest::PostgresServer& pg = mvtest::ChinookOnPostgres();
  ExpectLimitsOnServer(u"SELECT \"TrackId\", \"Name\" FROM \"Track\" WHERE \"AlbumId\" < 5 ORDER BY \"TrackId\"",
                       CommonLimitsCases(), [&](const WideString& sql) { return pg.Query(sql); });
}

TEST_F(NetezzaDialectTest, CatalogStatements) {
  EXPECT_EQ(NetezzaSchemasQuery(u""),
            u"select schema as schema_name from _v_schema where database=current_catalog");
  EXPECT_EQ(NetezzaObjectsQuery(u"sales"), u"select * from \"sales\".._v_odbc_tables3 where table_cat='sales'");
  EXPECT_EQ(NetezzaFieldsQuery(u"d", u"s", u"t"),
            u"select * from \"d\".._v_odbc_columns3 where table_cat='d' and table_schem='s' and table_name='t'");
  // Hostile names stay one token each: the statements keep their shape.
  const auto kinds = [](const WideString& text) {
    std::vector<int32_t> result;
    for (const mvtest::ScannedToken& token : mvtest::ScanTokens<NetezzaScanner>(text)) result.push_back(token.kind);
    return result;
  };
  using Build = WideString (*)(WideStringView);
  const auto fields = [](WideStringView n) { return NetezzaFieldsQuery(n, n, n); };
  const auto keys = [](WideStringView n) { return NetezzaPrimaryKeysQuery(n, n, n); };
  for (Build build : {Build(&NetezzaSchemasQuery), Build(&NetezzaDefaultSchemaOfDatabaseQuery),
                      Build(&NetezzaObjectsQuery), Build(&NetezzaRelationsQuery), Build(+fields), Build(+keys)}) {
    const std::vector<int32_t> plain = kinds(build(u"d"));
    for (const WideString& name : {WideString(u"o'brien' or 1=1 --"), WideString(u"x\"; drop table t; --"),
                                   WideString(u"''\"/*")})
      EXPECT_EQ(kinds(build(name)), plain) << UTF8Encode(build(name));
  }
}
