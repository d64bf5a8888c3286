// The Mimer SQL dialect: the size of its grammar, what it reads and prints
// back (UNION DISTINCT, the strings and types of SQL-2003, column names after
// a derived table, no common table expressions), no row limits, and the
// catalog statements with hostile names.
#include <gtest/gtest.h>

#include "DialectFixture.h"
#include "MimerSQLPars.h"
#include "MimerSQLScan.h"
#include "ScanTokens.h"
#include "dialects/mimersql/MimerSQLCatalogQueries.h"
#include "dialects/mimersql/MimerSQLSyntaxProvider.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

class MimerSQLDialectTest : public mvtest::DialectFixture<TmvMimerSQLSyntaxProvider> {};

}  // namespace

TEST_F(MimerSQLDialectTest, SizesAndLists) {
  EXPECT_EQ(MimerSQLParser::RuleCount, 84);
  EXPECT_EQ(MimerSQLParser::IterCount, 17);
  EXPECT_EQ(provider_.GetKeywords().size(), 300u);  // SQL-2003's
  EXPECT_EQ(provider_.GetIdentCaseSens(), icsSensitiveUpperCase);
  for (const char16_t* sized : {u"national char varying", u"NCLOB", u"binary large object", u"varbinary"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"integer", u"date", u"bit"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
  EXPECT_EQ(provider_.CreateWrapperForStoredProc(u"p(1)"), u"p(1)");
}

TEST_F(MimerSQLDialectTest, ReadsAndPrintsBack) {
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t union distinct select b from u union all select c from v",
       "Select a From t union Select b From u union All Select c From v"},
      {"select n'x', x'1f', u&'y', y = b from t", "Select n'x', x'1f', u&'y', y = b From t"},
      {"select a from (select b, c from u) x (p, q), f(1) g", "Select a From (Select b, c From u) x(p, q), f(1) g"},
      {"select cast(a as national character varying(10)), interval '1' day(2) from t where a > 1 or not b = 2",
       "Select Cast(a As National Character Varying(10)), Interval '1' Day(2) From t Where a > 1 Or Not b = 2"},
      // Common table expressions, EXCEPT, NULLS LAST and a bare condition
      // are SQL-2003's, not Mimer SQL's.
      {"with w as (select 1) select * from w", "error: Invalid SELECT statement.\r\n Unexpected token \"with\" at line 1, pos 1"},
      {"select a from t except select b from u",
       "error: Invalid SELECT statement.\r\n Unexpected token \"except\" at line 1, pos 17"},
      {"select a from t order by a nulls last",
       "error: Invalid SELECT statement.\r\n Unexpected token \"nulls\" at line 1, pos 28"},
      {"select a from t where b", "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 24"},
  };
  for (const Case& c : cases) {
    const std::string print = Print(c.text);
    EXPECT_EQ(print, c.print) << c.text;
    if (print.rfind("error", 0) != 0) {
      EXPECT_EQ(Print(print), print) << c.text;
    }
  }
}

TEST_F(MimerSQLDialectTest, NoLimits) {
  auto statement = context_.ParseSelect(u"select a from t");
  WideString offset, count;
  EXPECT_FALSE(provider_.GetQueryLimits(statement.get(), offset, count));
  EXPECT_THROW(provider_.TransformQueryLimits(statement.get(), u"1", u"2"), Exception);
}

TEST_F(MimerSQLDialectTest, CatalogStatements) {
  const auto kinds = [](const WideString& text) {
    std::vector<int32_t> result;
    for (const mvtest::ScannedToken& token : mvtest::ScanTokens<MimerSQLScanner>(text)) result.push_back(token.kind);
    return result;
  };
  const std::vector<int32_t> plain = kinds(MimerSQLFieldsQuery(u"o", u"t"));
  for (const WideString& name : {WideString(u"o'brien' or 1=1 --"), WideString(u"x'; drop table t; --"),
                                 WideString(u"''/*")})
    EXPECT_EQ(kinds(MimerSQLFieldsQuery(name, name)), plain) << UTF8Encode(name);
}
