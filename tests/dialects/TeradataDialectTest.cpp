// The Teradata dialect: the size of its grammar and lists, its scanner, what
// it reads and prints back (SEL, TOP, QUALIFY, the comparison words, **, MOD,
// conversions, strings with prefixes, suffixes and escapes, Unicode names),
// and no row limits.
#include <gtest/gtest.h>

#include "DialectFixture.h"
#include "ScanTokens.h"
#include "TeradataPars.h"
#include "TeradataScan.h"
#include "dialects/teradata/TeradataSyntaxProvider.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;

namespace {

class TeradataDialectTest : public mvtest::DialectFixture<TmvTeradataSyntaxProvider> {};

}  // namespace

TEST_F(TeradataDialectTest, SizesAndLists) {
  EXPECT_EQ(TeradataParser::RuleCount, 75);
  EXPECT_EQ(TeradataParser::IterCount, 21);
  EXPECT_EQ(provider_.GetKeywords().size(), 226u);  // the base's
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 216);
  EXPECT_EQ(provider_.GetQueryToLoadFieldsTemplate(), u"select top 1 {0} from {1} a");
  for (const char16_t* sized : {u"char", u"VARCHAR", u"varying", u"varbinary"})
    EXPECT_FALSE(provider_.IsFixedSizeType(sized)) << UTF8Encode(sized);
  for (const char16_t* fixed : {u"integer", u"byte", u"character"}) EXPECT_TRUE(provider_.IsFixedSizeType(fixed));
}

TEST_F(TeradataDialectTest, Scanner) {
  using T = TeradataScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"#t $y a#$ _latin", {{T::tkIdentifierToken, u"#t"}, {T::tkIdentifierToken, u"$y"},
                             {T::tkIdentifierToken, u"a#$"}, {T::kw_LATIN, u"_latin"}}},
      {u"U&\"a\" u&'b' N'c'", {{T::tkUnicodeIdentifierToken, u"U&\"a\""}, {T::tkUnicodeStringToken, u"u&'b'"},
                               {T::tkIdentifierToken, u"N"}, {T::tkStringToken, u"'c'"}}},
      // No 0x form: the integer 0 and a name.
      {u"0x1F", {{T::tkIntegerToken, u"0"}, {T::tkIdentifierToken, u"x1F"}}},
      {u"a~b ~= ** * ^= ^", {{T::tkIdentifierToken, u"a"}, {T::tkTilde, u"~"}, {T::tkIdentifierToken, u"b"},
                             {T::tkTildeEqual, u"~="}, {T::tkDoubleAsterisk, u"**"}, {T::tkAsterisk, u"*"},
                             {T::tkCaretEqual, u"^="}, {T::tkCaretEqual, u"^", true}}},
      // No !< or !>: a partial ! and the comparison.
      {u"!<", {{T::tkNotEqualBang, u"!", true}, {T::tkLess, u"<"}}},
      // Beyond ASCII nothing starts a name.
      {u"é", {{T::NoSym, u"é"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(mvtest::ScanTokens<TeradataScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(TeradataDialectTest, ReadsAndPrintsBack) {
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t where 5 EQ 5 and a ~= b or a ^= c and d lt e",
       "Select a From t Where (5 EQ 5 And a ~= b) Or (a ^= c And d LT e)"},
      {"select U&\"a\\0041\" UESCAPE '!' from t", "Select U&\"a\\0041\" UEscape '!' From t"},
      {"select top 5 percent with ties a from t group by rollup(a, b) having count(*) > 1 "
       "qualify rank() over (partition by a order by b rows between unbounded preceding and current row) <= 3 "
       "order by 1",
       "Select Top 5 Percent With Ties a From t Group By Rollup(a, b) Having count(*) > 1 Qualify Rank() Over "
       "(Partition By a Order By b Rows Between Unbounded Preceding And Current Row) <= 3 Order By 1"},
      // A suffix after a value; in the select list XB would be an alias.
      {"select _latin 'abc', a ** 2 mod 3, ~a from db.t where b = 'FF'xb and c = u&'x' uescape '!'",
       "Select _LATIN 'abc', a ** 2 Mod 3, ~ a From db.t Where b = 'FF'XB And c = u&'x' UEscape '!'"},
      {"with recursive w (x) as (select 1) select * from w minus select b from t order by 1 nulls first",
       "With Recursive w(x) As (Select 1) Select * From w minus Select b From t Order By 1 Nulls First"},
      {"select a (integer) (format 'z9'), cast(b as varchar(10) character set latin not casespecific), "
       "interval '1' day to hour, current_timestamp(0), current_date at local, sum(c) returns dec(9, 2) from t",
       "Select a (Integer) (Format 'z9'), Cast(b As VarChar(10) Character Set latin Not CaseSpecific), "
       "Interval '1' Day To Hour, Current_TimeStamp(0), Current_Date At Local, Sum(c) Returns Dec(9, 2) From t"},
      // A quoted True stays a name.
      {"select \"true\", \"TRUE\", \"x\" from t", "Select \"true\", \"TRUE\", x From t"},
      {"select a from t where a is not until_changed and b overlaps c and d = any (1, 2)",
       "Select a From t Where a Is Not Until_Changed And b Overlaps c And d = Any(1, 2)"},
      // No !< and no name of three parts; K is a keyword.
      {"select a from t where a !< 1", "error: Invalid SELECT statement.\r\n Unexpected token \"<\" at line 1, pos 26"},
      {"select a from s.t.u", "error: Invalid SELECT statement.\r\n Unexpected token \".\" at line 1, pos 18"},
      {"select k from t", "error: Invalid SELECT statement.\r\n Unexpected token \"k\" at line 1, pos 8"},
  };
  ExpectPrintsBack(cases);
}

// SEL reads as Select, and the qualify part prints after the having part.
TEST_F(TeradataDialectTest, SelAndQualify) {
  EXPECT_EQ(Print("SEL a FROM t QUALIFY ROW_NUMBER() OVER (ORDER BY a) = 1"),
            "Select a From t Qualify Row_Number() Over (Order By a) = 1");
  EXPECT_EQ(Print("select * from (sel a from t group by a having count(*) > 1 qualify rank() over (order by a) = 1) x"),
            "Select * From (Select a From t Group By a Having count(*) > 1 Qualify Rank() Over (Order By a) = 1) x");
}

TEST_F(TeradataDialectTest, NoLimits) {
  auto statement = context_.ParseSelect(u"select top 3 a from t");
  WideString offset, count;
  EXPECT_FALSE(provider_.GetQueryLimits(statement.get(), offset, count));
  try {
    provider_.TransformQueryLimits(statement.get(), u"1", u"2");
    ADD_FAILURE() << "no exception";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message(), u"This syntax does not support TransformQueryLimits");
  }
}
