// The Sybase dialect: the size of its grammar and scanner, what each
// version reads and how it prints back (FIRST, TOP ... START AT, alias =
// value, *= and =*, IF ... ENDIF, CONVERT, hints, FOR and OPTION, @ and @@
// variables), errors with their position, and the row limits read back and
// transformed.
#include <gtest/gtest.h>

#include <algorithm>

#include "DialectFixture.h"
#include "ScanTokens.h"
#include "SybasePars.h"
#include "SybaseScan.h"
#include "dialects/sybase/SybaseNodes.h"
#include "dialects/sybase/SybaseSyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;

namespace {

class SybaseDialectTest : public mvtest::DialectFixture<TmvSybaseSyntaxProvider> {
 protected:
  void Use(TmvQBServerVersionSybase version) {
    provider_.SetServerVersion(version);
    context_.SetSyntaxProvider(nullptr);
    context_.SetSyntaxProvider(&provider_);
  }
};

}  // namespace

TEST_F(SybaseDialectTest, SizesAndLists) {
  EXPECT_EQ(SybaseParser::RuleCount, 57);
  EXPECT_EQ(SybaseParser::IterCount, 18);
  EXPECT_EQ(SybaseScanner::KeywordCount, 180);
  // One kind more than the 223 of the table of scanners: the scanner has its
  // own kinds for both @ and @@, as the grammar reads them as tokens.
  EXPECT_EQ(SybaseScanner::NoSym, 224);
  EXPECT_EQ(provider_.GetKeywords().size(), 173u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 183);
  EXPECT_EQ(provider_.ServerName(), u"Sybase ASA/ASE");
  EXPECT_EQ(provider_.GetDefaultSchema(), u"dbo");
  EXPECT_EQ(provider_.GetServerVersion(), svSybaseASA);
  provider_.SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_EQ(provider_.GetIdentCaseSens(), icsNonSensitive);
  for (const char16_t* sized : {u"char", u"NCHAR", u"varchar", u"nvarchar", u"binary", u"varbinary"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"int", u"datetime", u"money"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvsybasesyntaxprovider"), nullptr);
}

TEST_F(SybaseDialectTest, Scanner) {
  using T = SybaseScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"#tmp a$b@c", {{T::tkIdentifierToken, u"#tmp"}, {T::tkIdentifierToken, u"a$b@c"}}},
      {u"\"a\"\"b\" [c]]d]", {{T::tkQuotedIdentifierToken, u"\"a\"\"b\""}, {T::tkBracketIdentifierToken, u"[c]]d]"}}},
      {u"@@version @p", {{T::tkDoubleAtSign, u"@@"}, {T::tkIdentifierToken, u"version"}, {T::tkAtSign, u"@"},
                         {T::tkIdentifierToken, u"p"}}},
      {u"F_Version endif", {{T::kwF_VERSION, u"F_Version"}, {T::kwENDIF, u"endif"}}},
      {u"*= =* != !< !> !", {{T::tkAsterisk, u"*"}, {T::tkEqual, u"="}, {T::tkEqual, u"="}, {T::tkAsterisk, u"*"},
                             {T::tkNotEqualBang, u"!="}, {T::tkNotLess, u"!<"}, {T::tkNotGreater, u"!>"},
                             {T::tkNotEqualBang, u"!", true}}},
      {u"0x1F 'it''s' & ^ | || ~", {{T::tkLiteralToken, u"0x1F"}, {T::tkStringToken, u"'it''s'"},
                                    {T::tkAmpersand, u"&"}, {T::tkCaret, u"^"}, {T::tkBar, u"|"},
                                    {T::tkConcatenation, u"||"}, {T::tkTildeSign, u"~"}}},
      {u"N'x' ]", {{T::tkIdentifierToken, u"N"}, {T::tkStringToken, u"'x'"}, {T::NoSym, u"]"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(mvtest::ScanTokens<SybaseScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(SybaseDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select first a from t order by a", "Select First a From t Order By a"},
      {"select distinct top 5 start at 10 a from t", "Select Distinct Top 5 Start At 10 a From t"},
      {"select top (2 + 1) * from t", "Select Top (2 + 1) * From t"},
      {"select x = a + 1, b as y, c z, 'w' = d from t", "Select x = a + 1, b As y, c z, 'w' = d From t"},
      {"select a from t, u where t.a *= u.a and u.b =* t.b", "Select a From t, u Where t.a *= u.a And u.b =* t.b"},
      {"select a from t where a != 1 and b !< 2 and c !> 3", "Select a From t Where a != 1 And b !< 2 And c !> 3"},
      {"select if a > 1 then 'x' else 'y' endif, if b is null then 0 endif from t",
       "Select If a > 1 Then 'x' Else 'y' EndIf, If b Is Null Then 0 EndIf From t"},
      {"select convert(varchar(10), d, 120), convert(numeric(10, 2), a), cast(b as nvarchar(5)) from t",
       "Select Convert(VarChar(10),d,120), Convert(Numeric(10, 2),a), Cast(b As NVarChar(5)) From t"},
      {"select @@version, @@rowcount, f_version, @p, :q, ?, ?2 from t",
       "Select @@version, @@rowcount, f_version, @p, :q, ?, ?2 From t"},
      {"select a + b * c - d & e | f ^ g || h, ~a, -b % 2 from t",
       "Select a + b * c - d & e | f ^ g || h, ~ a, -b % 2 From t"},
      {"select a from db..t x with (nolock, holdlock) where x.a = 1", "Select a From db..t x With (nolock, holdlock) Where x.a = 1"},
      // t (x) alone is a table function; after an alias the brackets hold hints.
      {"select a from t (x), t y (readpast) left outer merge join u on t.a = u.a inner hash join v on v.a = u.a",
       "Select a From t(x), t y With (readpast) Left Outer Merge Join u On t.a = u.a Inner Hash Join v On v.a = u.a"},
      {"select a from t join u", "Select a From t Join u"},
      {"select a from t left join u on t.a = u.a right outer join v on 1 = 1",
       "Select a From t Left Join u On t.a = u.a Right Outer Join v On 1 = 1"},
      {"select a from t order by a for xml auto, elements option (fast 10, hash join, keepfixed plan)",
       "Select a From t Order By a For Xml Auto, Elements Option (Fast 10, Hash Join, KeepFixed Plan)"},
      {"select a from t for browse", "Select a From t For Browse"},
      {"with c as (select a from t) select a from c union all select b from u",
       "With c As (Select a From t) Select a From c union All Select b From u"},
      {"select a from t except select b from u intersect select c from v",
       "Select a From t except Select b From u intersect Select c From v"},
      {"select a from t where a is unknown or b = true", "Select a From t Where a Is Unknown Or b = true"},
      {"select {fn ucase(a)}, {d '2001-01-01'}, {guid '00000000-0000-0000-0000-000000000000'} from t",
       "Select {fn ucase(a)}, {d '2001-01-01'}, {guid '00000000-0000-0000-0000-000000000000'} From t"},
      {"select count(*), count(distinct a), list(b), left(c, 2), identitycol from [my t] \"q\"",
       "Select count(*), Count(Distinct a), List(b), left(c, 2), IdentityCol From [my t] q"},
      {"select a from @@f(1) x", "Select a From @@f(1) x"},
      // Errors with the place where the text stops making sense.
      {"select top from t", "error: Invalid SELECT statement.\r\n Unexpected token \"from\" at line 1, pos 12"},
      {"select a from t where a == 1", "error: Invalid SELECT statement.\r\n Unexpected token \"=\" at line 1, pos 26"},
      {"select a from t limit 5", "error: Invalid SELECT statement.\r\n Unexpected token \"5\" at line 1, pos 23"},
      {"select if a then 1 endif from t", "error: Invalid SELECT statement.\r\n Unexpected token \"then\" at line 1, pos 13"},
      {"select a from t for xml path", "error: Invalid SELECT statement.\r\n Unexpected token \"path\" at line 1, pos 25"},
      {"select a from t with (nolock", "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 29"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(SybaseDialectTest, WhatEachVersionReadsAndAnswers) {
  // ASA reads EXCEPT, INTERSECT and the truth tests and offers common table
  // expressions; ASE does neither.
  const char* const texts[] = {"select a from t except select b from u",
                               "select a from t intersect select b from u",
                               "select a from t where a is not true"};
  for (const TmvQBServerVersionSybase version : {svSybaseASA, svSybaseASE}) {
    Use(version);
    const bool asa = version == svSybaseASA;
    for (const char* text : texts) EXPECT_EQ(Print(text).rfind("error", 0) != 0, asa) << text;
    EXPECT_EQ(provider_.IsSupportCTE(), asa);
    std::vector<WideString> operators;
    provider_.GetUnionOperatorsList(operators);
    EXPECT_EQ(std::find(operators.begin(), operators.end(), u"Except") != operators.end(), asa);
  }
}

TEST_F(SybaseDialectTest, LimitsReadBack) {
  // The count of TOP, "1" for FIRST; a start is never read as an offset.
  struct Case {
    const char* text;
    bool has;
    const char16_t* count;
  };
  const Case cases[] = {{"select top 5 start at 10 a from t", true, u"5"},
                        {"select first a from t", true, u"1"},
                        {"select top (2 + 3) a from t", true, u"(2 + 3)"},
                        {"select a from t", false, u""},
                        {"select top 5 a from t union select b from u", false, u""},
                        {"select a from t where a in (select top 1 b from u)", false, u""}};
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(UTF8Decode(c.text));
    WideString offset = u"x", count = u"x";
    EXPECT_EQ(provider_.GetQueryLimits(statement.get(), offset, count), c.has) << c.text;
    EXPECT_EQ(offset, u"") << c.text;
    EXPECT_EQ(count, c.count) << c.text;
  }
}

TEST_F(SybaseDialectTest, TransformedLimits) {
  // {count, offset, both} x {single select, union}: the print and the limits
  // read back from it. The offset cannot be carried: TOP has no start that
  // GetQueryLimits reads, so an offset alone gives no top and with a count
  // only the count is applied.
  struct Case {
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case single[] = {{u"", u"5", "Select Top 5 a From t Order By a"},
                         {u"10", u"", "Select a From t Order By a"},
                         {u"10", u"5", "Select Top 5 a From t Order By a"}};
  const Case unions[] = {{u"", u"5", "Select Top 5 * From (Select a From t union Select b From u) q"},
                         {u"10", u"", "Select * From (Select a From t union Select b From u) q"},
                         {u"10", u"5", "Select Top 5 * From (Select a From t union Select b From u) q"}};
  const std::pair<const char*, const Case*> queries[] = {{"select first a from t order by a", single},
                                                         {"select a from t union select b from u", unions}};
  for (const auto& [query, cases] : queries) {
    auto statement = context_.ParseSelect(UTF8Decode(query));
    for (int i = 0; i < 3; ++i) {
      const Case& c = cases[i];
      auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
      const std::string print = Print(limited.get());
      EXPECT_EQ(print, c.print) << query;
      EXPECT_EQ(Print(print), print);
      WideString offset, count;
      EXPECT_EQ(provider_.GetQueryLimits(limited.get(), offset, count), c.count[0] != 0) << print;
      EXPECT_EQ(offset, u"") << print;
      EXPECT_EQ(count, c.count) << print;
    }
  }
  // A count that is no expression gives no top.
  auto statement = context_.ParseSelect(u"select top 3 a from t");
  EXPECT_EQ(Print(provider_.TransformQueryLimits(statement.get(), u"", u"five)").get()), "Select a From t");
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}
