// The Access dialect: the size of its grammar and scanner, its names, dates,
// GUIDs and parameters, what it reads and prints back, the language levels
// of the JET versions and the provider's settings, and its dates.
#include <gtest/gtest.h>

#include "ACCESSPars.h"
#include "ACCESSScan.h"
#include "DialectFixture.h"
#include "ScanTokens.h"
#include "dialects/access/AccessSyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"
#include "support/DateTime.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class AccessDialectTest : public mvtest::DialectFixture<TmvMSAccessSyntaxProvider> {
 protected:
  // The print under another server version.
  std::string PrintAt(TmvQBServerVersionMSAccess version, const std::string& text) {
    provider_.SetServerVersion(version);
    context_.SetSyntaxProvider(nullptr);
    context_.SetSyntaxProvider(&provider_);
    std::string print = Print(text);
    provider_.SetServerVersion(svMSJET4);
    return print;
  }
};

}  // namespace

TEST_F(AccessDialectTest, GrammarScannerAndLists) {
  EXPECT_EQ(ACCESSParser::RuleCount, 48);
  EXPECT_EQ(ACCESSParser::IterCount, 13);
  // The words of the grammar and of the dialect's list, and "~": two fewer
  // than the 400 of the design's table, which names no further word.
  EXPECT_EQ(ACCESSScanner::KeywordCount, 398);
  EXPECT_EQ(ACCESSScanner::NoSym, 440);
  EXPECT_EQ(provider_.GetKeywords().size(), 293u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 120);
  EXPECT_EQ(provider_.ServerName(), u"MS Access");
  EXPECT_EQ(provider_.GetUpperCaseFunctionName(), u"UCase");
  provider_.SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_EQ(provider_.GetIdentCaseSens(), icsNonSensitive);
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvmsaccesssyntaxprovider"), nullptr);
}

TEST_F(AccessDialectTest, ScannerTokens) {
  using T = ACCESSScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"[a]]b] `c``d` Chr$ a$b", {{T::tkBracketIdentifierToken, u"[a]]b]"}, {T::tkBackQuotedIdentifierToken, u"`c``d`"},
                                   {T::kwCHRDOLLAR, u"Chr$"}, {T::tkIdentifierToken, u"a$"}, {T::tkIdentifierToken, u"b"}}},
      {u"'a''b' \"c\"\"d\"", {{T::tkStringToken, u"'a''b'"}, {T::tkStringToken, u"\"c\"\"d\""}}},
      {u"#2024-01-31# ## #1/2", {{T::tkDateToken, u"#2024-01-31#"}, {T::tkDoubleHash, u"##"},
                                 {T::tkDateToken, u"#1/2", true}}},
      {u"{6F9619FF-8B86-D011-B42D-00C04FC964FF} {ts", {{T::tkGuidToken, u"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
                                                       {T::tkLeftBrace, u"{"}, {T::kwTS, u"ts"}}},
      // A hexadecimal digit after a brace goes on as a GUID.
      {u"{d '1'", {{T::tkGuidToken, u"{d", true}, {T::tkStringToken, u"'1'"}}},
      {u":p ?p ? :[a b] @v @[x] ?=", {{T::tkParameterToken, u":p"}, {T::tkParameterToken, u"?p"},
                                      {T::tkParameterToken, u"?"}, {T::tkParameterToken, u":[a b]"},
                                      {T::tkVariableToken, u"@v"}, {T::tkVariableToken, u"@[x]"},
                                      {T::tkQuestionMarkEqual, u"?="}}},
      {u"1.5 .5 1. 0x1F", {{T::tkRealToken, u"1.5"}, {T::tkRealToken, u".5"}, {T::tkRealToken, u"1.", true},
                           {T::tkLiteralToken, u"0x1F"}}},
      {u"a!b&c\\x^e||f!=g %", {{T::tkIdentifierToken, u"a"}, {T::tkBang, u"!"}, {T::tkIdentifierToken, u"b"},
                               {T::tkAmpersand, u"&"}, {T::tkIdentifierToken, u"c"}, {T::tkBackslash, u"\\"},
                               {T::tkIdentifierToken, u"x"}, {T::tkCaret, u"^"}, {T::tkIdentifierToken, u"e"},
                               {T::tkBar, u"|"}, {T::tkBar, u"|"}, {T::tkIdentifierToken, u"f"},
                               {T::tkBang, u"!"}, {T::tkEqual, u"="}, {T::tkIdentifierToken, u"g"},
                               {T::NoSym, u"%"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(ScanTokens<ACCESSScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(AccessDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select all a as x, t.* from t where a = 1 and b <> 2 or not c is null",
       "Select All a As x, t.* From t Where (a = 1 And b <> 2) Or Not c Is Null"},
      {"select count(*), sum(a) from t group by b having count(*) > 1 order by 1 desc",
       "Select count(*), Sum(a) From t Group By b Having count(*) > 1 Order By 1 Desc"},
      {"select a from t union all select b from u union select c from v order by 1",
       "Select a From t union All Select b From u union Select c From v Order By 1"},
      {"select a from t where a between 1 and 2 and b not like 'x*' and c in (1, 2) and d not in (select d from u)"
       " and exists (select 1 from v)",
       "Select a From t Where a Between 1 And 2 And b Not Like 'x*' And c In (1, 2) And d Not In (Select d From u)"
       " And Exists(Select 1 From v)"},
      // Comparisons nest to the right; a condition is a value.
      {"select a = b = c, (a > 1) + 1 from t", "Select a = b = c, (a > 1) + 1 From t"},
      {"select convert(a, varchar(10)), { fn Now() }, {ts '2024-01-31 10:00:00'}, {guid 'x'}, :p, ?, @v from t",
       "Select Convert(a, VarChar(10)), { fn Now()}, { ts '2024-01-31 10:00:00'}, { guid 'x'}, :p, ?, @v From t"},
      {"select yes, no, null, 0x1F, \"s\" from t cross join u", "Select Yes, No, Null, 0x1F, \"s\" From t Cross Join u"},
      {"select x.a from t as x left outer join u on x.a = u.a right join v on v.b = u.b",
       "Select x.a From t As x Left Outer Join u On x.a = u.a Right Join v On v.b = u.b"},
      // An alias needs AS; no FULL join, EXCEPT, CASE, || or !=.
      {"select a b from t", "error: Invalid SELECT statement.\r\n Unexpected token \"b\" at line 1, pos 10"},
      {"select a from t full join u on 1 = 1",
       "error: Invalid SELECT statement.\r\n Unexpected token \"full\" at line 1, pos 17"},
      {"select a from t except select b from u",
       "error: Invalid SELECT statement.\r\n Unexpected token \"except\" at line 1, pos 17"},
      {"select case when a = 1 then 2 end from t",
       "error: Invalid SELECT statement.\r\n Unexpected token \"when\" at line 1, pos 13"},
      {"select a || b from t", "error: Invalid SELECT statement.\r\n Unexpected token \"|\" at line 1, pos 10"},
      {"select a from t where a != 1", "error: Invalid SELECT statement.\r\n Unexpected token \"=\" at line 1, pos 26"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(AccessDialectTest, VersionsAndSettings) {
  struct Case {
    TmvQBServerVersionMSAccess version;
    int32_t level;
    const char* derived;
  };
  const Case cases[] = {
      {svMSJET3, 3, "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 18"},
      {svMSJET4, 4, "Select q.a From (Select a From t) As q"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TmvMSAccessSyntaxProvider::LanguageLevel(c.version), c.level);
    EXPECT_EQ(PrintAt(c.version, "select q.a from (select a from t) as q"), c.derived);
    provider_.SetServerVersion(c.version);
    EXPECT_EQ(provider_.IsSupportDerivedTables(), c.version == svMSJET4);
  }
  int notified = 0;
  const TmvHandlerId id = TmvHandlerId::Unique();
  provider_.GetOnUpdate().AddHandler(id, [&](TmvObject*) { ++notified; });
  provider_.SetServerVersion(svMSJET3);
  provider_.SetServerVersion(svMSJET3);
  provider_.SetBracketsInComplexJoinMandatory(true);
  EXPECT_EQ(notified, 2);
  EXPECT_TRUE(provider_.IsBracketsInComplexJoinMandatory());
  provider_.SetLoadLinkedTables(false);
  TmvMSAccessSyntaxProvider copy;
  copy.Assign(&provider_);
  EXPECT_EQ(copy.GetServerVersion(), svMSJET3);
  EXPECT_TRUE(copy.GetBracketsInComplexJoinMandatory());
  EXPECT_FALSE(copy.GetLoadLinkedTables());
  provider_.GetOnUpdate().RemoveHandler(id);
  provider_.SetServerVersion(svMSJET4);
  // DenyIntoClause closes INTO; with it open, the query has an into clause.
  auto into = context_.ParseSelect(u"select a into b from t");
  EXPECT_TRUE(provider_.IsQueryWithIntoClause(into.get()));
  provider_.SetDenyIntoClause(true);
  context_.SetSyntaxProvider(nullptr);
  context_.SetSyntaxProvider(&provider_);
  EXPECT_EQ(Print("select a into b from t"),
            "error: Invalid SELECT statement.\r\n Unexpected token \"into\" at line 1, pos 10");
}

TEST_F(AccessDialectTest, Dates) {
  const TmvDateTime date = EncodeDate(2024, 2, 29);
  const TmvDateTime time = EncodeTime(10, 20, 30, 0);
  EXPECT_EQ(provider_.GetDateString(date), u"#2024-02-29#");
  EXPECT_EQ(provider_.GetDateTimeString(date), u"#2024-02-29#");
  EXPECT_EQ(provider_.GetDateTimeString(ComposeDateTime(date, time)), u"#2024-02-29 10:20:30#");
  EXPECT_EQ(provider_.GetTimeString(time), u"#10:20:30#");
  EXPECT_EQ(provider_.QuoteDateLiteral(u"1/2/03"), u"#1/2/03#");
  // A date, a string or either in brackets gives its text; other values none.
  const char16_t* values[][2] = {{u"#2024-02-29#", u"2024-02-29"}, {u"('2024-02-29 10:20:30')", u"2024-02-29 10:20:30"},
                                 {u"((#10:20:30#))", u"10:20:30"}, {u"1", u""}, {u"a", u""}};
  for (const auto& v : values) {
    auto expression = context_.ParseExpression(v[0]);
    ASSERT_TRUE(expression) << UTF8Encode(v[0]);
    EXPECT_EQ(provider_.GetDate(expression.get()), v[1]);
    EXPECT_EQ(provider_.GetDateTime(expression.get()), v[1]);
  }
}

TEST_F(AccessDialectTest, Limits) {
  // {count, offset, both} x {single select, union}: the print and the limits
  // read back from it. TOP carries the count; an offset cannot be written
  // in the dialect and is dropped, so none reads back.
  struct Case {
    const char16_t* offset;
    const char16_t* count;
    const char* single;
    const char* unionPrint;
  };
  const Case cases[] = {
      {u"", u"5", "Select Top 5 a From t Order By a", "Select Top 5 * From (Select a From t union Select b From u) q"},
      {u"10", u"", "Select a From t Order By a", "Select * From (Select a From t union Select b From u) q"},
      {u"10", u"5", "Select Top 5 a From t Order By a", "Select Top 5 * From (Select a From t union Select b From u) q"},
  };
  auto single = context_.ParseSelect(u"select top 3 percent a from t order by a");
  auto both = context_.ParseSelect(u"select a from t union select b from u");
  for (const Case& c : cases) {
    for (auto* statement : {single.get(), both.get()}) {
      auto limited = provider_.TransformQueryLimits(statement, c.offset, c.count);
      const std::string print = Print(limited.get());
      EXPECT_EQ(print, statement == single.get() ? c.single : c.unionPrint);
      EXPECT_EQ(Print(print), print);
      WideString offset = u"x", count = u"x";
      EXPECT_EQ(provider_.GetQueryLimits(limited.get(), offset, count), c.count[0] != 0) << print;
      EXPECT_EQ(offset, u"") << print;
      EXPECT_EQ(count, c.count) << print;
    }
  }
  // TOP in percent has limits without a count; a count that is no
  // expression gives no TOP; no statement gives none.
  WideString offset, count = u"x";
  EXPECT_TRUE(provider_.GetQueryLimits(single.get(), offset, count));
  EXPECT_EQ(count, u"");
  EXPECT_EQ(Print(provider_.TransformQueryLimits(single.get(), u"", u"5 rows").get()), "Select a From t Order By a");
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}

TEST_F(AccessDialectTest, EdgeCases) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select #2024-01-31#, #10:20:30# from t where d > #1/2/2003#",
       "Select #2024-01-31#, #10:20:30# From t Where d > #1/2/2003#"},
      {"select {guid {6F9619FF-8B86-D011-B42D-00C04FC964FF}}, {6f9619ff-8b86-d011-b42d-00c04fc964ff} from t",
       "Select {Guid {6F9619FF-8B86-D011-B42D-00C04FC964FF}}, {6f9619ff-8b86-d011-b42d-00c04fc964ff} From t"},
      // ! reads as . in columns and qualified names.
      {"select a!b, [x]![y], d.t!c, f!g(1) from t", "Select a.b, x.y, d.t.c, f.g(1) From t"},
      {"select distinctrow top 10 percent a from t", "Select DistinctRow Top 10 Percent a From t"},
      {"select distinct top 5 a from t order by a", "Select Distinct Top 5 a From t Order By a"},
      {"select * from ((a inner join b on a.id = b.id) inner join c on b.id = c.id) left join d on c.id = d.id",
       "Select * From ((a Inner Join b On a.id = b.id) Inner Join c On b.id = c.id) Left Join d On c.id = d.id"},
      {"select * from a inner join (b inner join c on b.id = c.id) on a.id = b.id",
       "Select * From a Inner Join (b Inner Join c On b.id = c.id) On a.id = b.id"},
      {"select iif(a > 1, chr$(65), mid$(b, 2)), ucase(c) from t",
       "Select IIF(a > 1, Chr$(65), Mid$(b, 2)), UCase(c) From t"},
      {"select a mod 2 + 1, a & 'x' & b, 7 \\ 2, 2 ^ 3 * 4 from t",
       "Select a Mod 2 + 1, a & 'x' & b, 7 \\ 2, 2 ^ 3 * 4 From t"},
      // A name with an underscore is quoted; a keyword after a qualifier
      // is a column name, quoted.
      {"select first_name, t.last_name, t.select, [my col] from my_table t",
       "Select [first_name], t.[last_name], t.[select], [my col] From [my_table] t"},
      {"select a, b into new_t in_db from t", "error: Invalid SELECT statement.\r\n Unexpected token \"in_db\" at line 1, pos 24"},
      {"select a, b into db!new_t from t where a = 1", "Select a, b Into db.[new_t] From t Where a = 1"},
      // An unclosed date runs to the end of the text, as an unclosed string does.
      {"select #2024-01-31 from t", "Select #2024-01-31 from t"},
      {"select top 5 percent percent a from t", "error: Invalid SELECT statement.\r\n Unexpected token \"a\" at line 1, pos 30"},
      {"select a!!b from t", "error: Invalid SELECT statement.\r\n Unexpected token \"!\" at line 1, pos 10"},
  };
  ExpectPrintsBack(cases);
}
