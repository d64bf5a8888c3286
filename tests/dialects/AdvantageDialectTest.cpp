// The Advantage dialect: the size of its grammar, what it reads and prints
// back (TOP ... START AT, [names], the bit operators, IIF, POSITION ... IN,
// CONTAINS), the row limits read back and written, dates, and the catalog
// statements with hostile names.
#include <gtest/gtest.h>

#include "AdvantagePars.h"
#include "AdvantageScan.h"
#include "DialectFixture.h"
#include "ScanTokens.h"
#include "dialects/advantage/AdvantageCatalogQueries.h"
#include "dialects/advantage/AdvantageSyntaxProvider.h"
#include "support/DateTime.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;

namespace {

class AdvantageDialectTest : public mvtest::DialectFixture<TmvAdvantageSyntaxProvider> {};

}  // namespace

TEST_F(AdvantageDialectTest, SizesAndLists) {
  EXPECT_EQ(AdvantageParser::RuleCount, 62);
  EXPECT_EQ(AdvantageParser::IterCount, 16);
  EXPECT_EQ(provider_.GetKeywords().size(), 87u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 86);
  for (const char16_t* sized : {u"char", u"VARCHAR", u"varbinary"}) EXPECT_FALSE(provider_.IsFixedSizeType(sized));
  for (const char16_t* fixed : {u"integer", u"memo", u"nchar"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
}

TEST_F(AdvantageDialectTest, ReadsAndPrintsBack) {
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select top 10 start at 20 a from t", "Select Top 10 Start At 20 a From t"},
      // Names in brackets print in the dialect's quotes.
      {"select distinct top 5 percent [a b], \"c\" from [t x]", "Select Distinct Top 5 Percent \"a b\", c From \"t x\""},
      {"select a << 2 | b & 3 ^ c >> 1, -a % 2 from t", "Select a << 2 | b & 3 ^ c >> 1, -a % 2 From t"},
      {"select a // to the line's end\r\nfrom t -- and this", "Select a From t"},
      // A name that starts with a bracket keeps its quotes.
      {"select \"[1,2]\" from t", "Select \"[1,2]\" From t"},
      // IIF takes the condition and one value.
      {"select iif(a > 1, 'x'), position('a' in b), x = c from t",
       "Select IIf(a > 1, 'x'), Position('a' In b), x = c From t"},
      {"select a from t where contains(b, 'word') or contains(*, 'x') and a <> 1",
       "Select a From t Where Contains(b, 'word') Or (Contains(*, 'x') And a <> 1)"},
      {"select a from t union all select b from u order by 1", "Select a From t union All Select b From u Order By 1"},
      // No || or !=, no EXCEPT.
      {"select a || b from t", "error: Invalid SELECT statement.\r\n Unexpected token \"|\" at line 1, pos 11"},
      {"select a from t where a != 1", "error: Invalid SELECT statement.\r\n Unexpected token \"!\" at line 1, pos 25"},
      {"select a from t except select b from u",
       "error: Invalid SELECT statement.\r\n Unexpected token \"except\" at line 1, pos 17"},
  };
  for (const Case& c : cases) {
    const std::string print = Print(c.text);
    EXPECT_EQ(print, c.print) << c.text;
    if (print.rfind("error", 0) != 0) {
      EXPECT_EQ(Print(print), print) << c.text;
    }
  }
}

TEST_F(AdvantageDialectTest, Limits) {
  struct Read {
    const char* text;
    bool has;
    const char16_t* offset;
    const char16_t* count;
  };
  const Read reads[] = {{"select top 10 start at 20 a from t", true, u"20", u"10"},
                        {"select top ? a from t", true, u"", u"?"},
                        {"select top 10 percent a from t", true, u"", u""},
                        {"select a from t", false, u"", u""},
                        {"select top 2 a from t union select b from u", false, u"", u""}};
  for (const Read& r : reads) {
    auto statement = context_.ParseSelect(UTF8Decode(r.text));
    WideString offset = u"x", count = u"x";
    EXPECT_EQ(provider_.GetQueryLimits(statement.get(), offset, count), r.has) << r.text;
    EXPECT_EQ(offset, r.offset) << r.text;
    EXPECT_EQ(count, r.count) << r.text;
  }
  struct Write {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Write writes[] = {
      {"select top 1 percent a from t", u"20", u"10", "Select Top 10 Start At 20 a From t"},
      // An offset alone still makes a top.
      {"select a from t", u"20", u"", "Select Top Start At 20 a From t"},
      {"select top 5 a from t", u"", u"", "Select a From t"},
      {"select a from t union select b from u", u"", u"3",
       "Select Top 3 * From (Select a From t union Select b From u) q"},
  };
  for (const Write& w : writes) {
    auto statement = context_.ParseSelect(UTF8Decode(w.text));
    EXPECT_EQ(Print(provider_.TransformQueryLimits(statement.get(), w.offset, w.count).get()), w.print) << w.text;
  }
}

TEST_F(AdvantageDialectTest, Dates) {
  const TmvDateTime when = ComposeDateTime(EncodeDate(2024, 2, 29), EncodeTime(13, 5, 9, 0));
  EXPECT_EQ(provider_.GetDateString(when), u"'2024-02-29'");
  EXPECT_EQ(provider_.GetDateTimeString(when), u"'2024-02-29 13:05:09'");
  EXPECT_EQ(provider_.GetTimeString(when), u"'13:05:09'");
  struct Case {
    const char16_t* text;
    const char16_t* value;
  };
  const Case cases[] = {{u"(('2024-02-29'))", u"2024-02-29"}, {u"'it''s'", u"it's"}, {u"#2024-02-29#", u""},
                        {u"'a' + 'b'", u""}, {u"20240229", u""}};
  for (const Case& c : cases) {
    auto expression = context_.ParseExpression(c.text);
    EXPECT_EQ(provider_.GetDate(expression.get()), c.value) << UTF8Encode(c.text);
    EXPECT_EQ(provider_.GetDateTime(expression.get()), c.value) << UTF8Encode(c.text);
  }
}

TEST_F(AdvantageDialectTest, CatalogStatements) {
  EXPECT_EQ(AdvantageObjectsQuery(u""), u"execute procedure sp_GetTables(Database(),null,null,null)");
  EXPECT_EQ(AdvantageFieldsQuery(u"db", u"t"), u"execute procedure sp_GetColumns('db',null,'t',null)");
  const auto kinds = [](const WideString& text) {
    std::vector<int32_t> result;
    for (const mvtest::ScannedToken& token : mvtest::ScanTokens<AdvantageScanner>(text)) result.push_back(token.kind);
    return result;
  };
  using Build = WideString (*)(WideStringView);
  const auto fields = [](WideStringView n) { return AdvantageFieldsQuery(n, n); };
  const auto keys = [](WideStringView n) { return AdvantagePrimaryKeysQuery(n, n); };
  for (Build build : {Build(&AdvantageObjectsQuery), Build(&AdvantageRelationsQuery), Build(+fields), Build(+keys)}) {
    const std::vector<int32_t> plain = kinds(build(u"d"));
    for (const WideString& name : {WideString(u"o'brien',null) --"), WideString(u"x'); drop table t; --"),
                                   WideString(u"''/*")})
      EXPECT_EQ(kinds(build(name)), plain) << UTF8Encode(build(name));
  }
}
