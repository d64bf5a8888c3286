// The MySQL dialect: the size of its grammar, its two scanners, what it
// reads and prints back, its server version as number and text, its row
// limits and dates.
#include <gtest/gtest.h>

#include "DialectFixture.h"
#include "MariaDbChinook.h"

#include "MYSQLANSIScan.h"
#include "MYSQLPars.h"
#include "MYSQLScan.h"
#include "ScanTokens.h"
#include "dialects/EngineInit.h"
#include "dialects/mysql/MYSQLNodes.h"
#include "dialects/mysql/MYSQLSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilder.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class MySQLDialectTest : public mvtest::DialectFixture<TmvMYSQLSyntaxProvider> {
 protected:
  // Switches the scanner by AnsiQuotes; the context takes the new one.
  void SetAnsiQuotes(bool value) {
    context_.SetSyntaxProvider(nullptr);
    provider_.SetAnsiQuotes(value);
    context_.SetSyntaxProvider(&provider_);
  }
};

}  // namespace

TEST_F(MySQLDialectTest, GrammarAndScannerSize) {
  // One rule more than the dialect's reference grammar: what follows the
  // left side of a condition is one rule that both chains of conditions
  // share. One repetition more: a run of strings is one literal.
  EXPECT_EQ(MYSQLParser::RuleCount, 66);
  EXPECT_EQ(MYSQLParser::IterCount, 21);
  EXPECT_EQ(MYSQLParser::OptCount, 72);
  EXPECT_EQ(MYSQLParser::AltCount, 73);
  // The two scanners number every kind alike; the double-quoted name of the
  // ANSI scanner is a keyword no query holds in the plain one.
  EXPECT_EQ(MYSQLScanner::NoSym, MYSQLANSIScanner::NoSym);
  EXPECT_EQ(MYSQLScanner::KeywordCount, MYSQLANSIScanner::KeywordCount + 1);
  EXPECT_EQ(MYSQLScanner::kwANSIIDENTIFIERTOKEN, MYSQLANSIScanner::tkAnsiIdentifierToken);
  EXPECT_EQ(MYSQLScanner::kwSELECT, MYSQLANSIScanner::kwSELECT);
  EXPECT_EQ(MYSQLScanner::tkNullSafeEqual, MYSQLANSIScanner::tkNullSafeEqual);
}

TEST_F(MySQLDialectTest, ScannerStringsCommentsAndNames) {
  using T = MYSQLScanner;
  using A = MYSQLANSIScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> plain;
    std::vector<mvtest::ScannedToken> ansi;
  };
  const Case cases[] = {
      {u"'a\\'b' 'c''d'", {{T::tkStringToken, u"'a\\'b'"}, {T::tkStringToken, u"'c''d'"}}, {}},
      {u"\"a\\\"b\"", {{T::tkStringToken, u"\"a\\\"b\""}}, {{A::tkAnsiIdentifierToken, u"\"a\\\""}, {A::tkIdentifierToken, u"b"}, {A::tkAnsiIdentifierToken, u"\"", true}}},
      {u"\"a\"\"b\"", {{T::tkStringToken, u"\"a\"\"b\""}}, {{A::tkAnsiIdentifierToken, u"\"a\"\"b\""}}},
      {u"`a``b` # note\nx", {{T::tkQuotedIdentifierToken, u"`a``b`"}, {T::tkIdentifierToken, u"x"}}, {}},
      {u"a -- note\n/* b */ c", {{T::tkIdentifierToken, u"a"}, {T::tkIdentifierToken, u"c"}}, {}},
      {u"@v @@global.sql_mode :p ?q ?", {{T::tkVariableToken, u"@v"}, {T::tkVariableToken, u"@@global.sql_mode"},
                                         {T::tkParameterToken, u":p"}, {T::tkParameterToken, u"?q"},
                                         {T::tkQuestionMark, u"?"}}, {}},
      {u"a<=>b&&c:=d<<1", {{T::tkIdentifierToken, u"a"}, {T::tkNullSafeEqual, u"<=>"}, {T::tkIdentifierToken, u"b"},
                           {T::tkDoubleAmpersand, u"&&"}, {T::tkIdentifierToken, u"c"}, {T::tkColonEqual, u":="},
                           {T::kwD, u"d"}, {T::tkShiftLeft, u"<<"}, {T::tkIntegerToken, u"1"}}, {}},
      {u"a ! b", {{T::tkIdentifierToken, u"a"}, {T::tkNotEqualBang, u"!", true}, {T::tkIdentifierToken, u"b"}}, {}},
      {u"0x1F x'0a' $a", {{T::tkLiteralToken, u"0x1F"}, {T::tkLiteralToken, u"x'0a'"}, {T::tkIdentifierToken, u"$a"}}, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ScanTokens<MYSQLScanner>(c.text), c.plain) << UTF8Encode(c.text);
    // The ANSI scanner reads all but the double quote alike.
    EXPECT_EQ(ScanTokens<MYSQLANSIScanner>(c.text), c.ansi.empty() ? c.plain : c.ansi) << UTF8Encode(c.text);
  }
}

TEST_F(MySQLDialectTest, ReadsAndPrintsBack) {
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select a from t limit 5, 10", "Select a From t Limit 5, 10"},
      {"select a from t limit 10 offset 5", "Select a From t Limit 10 Offset 5"},
      {"select a from t where b = 1 order by a desc limit 3", "Select a From t Where b = 1 Order By a Desc Limit 3"},
      {"select distinctrow high_priority sql_no_cache sql_calc_found_rows straight_join a from t",
       "Select DistinctRow High_Priority Straight_Join SQL_No_Cache SQL_Calc_Found_Rows a From t"},
      {"select a, count(*) from t group by a with rollup", "Select a, count(*) From t Group By a With Rollup"},
      {"select _utf8'abc' collate utf8_bin, n'x', 'a' 'b'", "Select _utf8'abc' Collate utf8_bin, n'x', 'a' 'b'"},
      {"select a 'b', a \"c\" from t", "Select a 'b', a \"c\" From t"},
      {"select a into outfile '/tmp/f' fields terminated by ',' optionally enclosed by '\"' lines terminated by '\\n' from t",
       "Select a Into Outfile '/tmp/f' Fields Terminated By ',' Optionally Enclosed By '\"' Lines Terminated By '\\n' From t"},
      {"select a into dumpfile '/tmp/f' from t", "Select a Into Dumpfile '/tmp/f' From t"},
      {"select a from t for update", "Select a From t For Update"},
      {"select a from t lock in share mode", "Select a From t Lock In Share Mode"},
      {"select a from t procedure analyse(10)", "Select a From t Procedure analyse(10)"},
      {"select a from t where a <=> b && c || d and not e xor1",
       "error: Invalid SELECT statement.\r\n Unexpected token \"xor1\" at line 1, pos 51"},
      {"select a from t where a <=> b && c || d", "Select a From t Where (a <=> b And c) Or d"},
      {"select a div 2, a mod 3, a | b & c ^ d << 1, binary a, @v := 1, ~a from t",
       "Select a Div 2, a Mod 3, a | b & c ^ d << 1, Binary a, @v := 1, ~ a From t"},
      {"select a from t where a rlike 'x' and b not regexp 'y' and c not like 'z' escape '!'",
       "Select a From t Where a RLike 'x' And b Not Regexp 'y' And c Not Like 'z' Escape '!'"},
      {"select group_concat(distinct a, b order by a desc separator ';') from t",
       "Select Group_Concat(Distinct a, b Order By a Desc Separator ';') From t"},
      {"select convert(a using utf8), convert(a, char(3)), trim(leading 'x' from a), trim(a) from t",
       "Select Convert(a Using utf8), Convert(a, Char(3)), Trim(Leading 'x' From a), Trim(a) From t"},
      {"select substring(a, 2, 3), substring(a from 2), now() + interval 1 day_hour, current_date() from t",
       "Select SubString(a, 2, 3), SubString(a From 2), now() + Interval 1 Day_Hour, Current_Date() From t"},
      {"select `a b`.c from `a b` join u cross join v inner join w on 1 = 1",
       "Select `a b`.c From `a b` Inner Join (u Cross Join v Inner Join w) On 1 = 1"},
      {"select a from t join u cross join v", "Select a From t Inner Join u Cross Join v"},
      {"select a from t where a = ? and b = :p and c in (select d from u)",
       "Select a From t Where a = ? And b = :p And c In (Select d From u)"},
      {"(select a from t limit 1) union all (select b from u) order by 1",
       "(Select a From t Limit 1) Union All (Select b From u) Order By 1"},
      // The order of the statement after the limit of its select, as the grammar reads it.
      {"select a from t limit 5 order by a", "Select a From t Limit 5 Order By a"},
      {"select a from t limit 4294967296",
       "error: Invalid SELECT statement.\r\n Unexpected token \"4294967296\" at line 1, pos 23"},
      {"select a from t except select b from u",
       "error: Invalid SELECT statement.\r\n Unexpected token \"select\" at line 1, pos 24"},
  };
  ExpectPrintsBack(cases);
}

TEST_F(MySQLDialectTest, AnsiQuotesDecideWhatDoubleQuotesAre) {
  for (bool ansi : {false, true}) {
    SetAnsiQuotes(ansi);
    EXPECT_EQ(&provider_.GetScannerClass(),
              ansi ? &MYSQLANSIScanner::ScannerClass() : &MYSQLScanner::ScannerClass());
    auto statement = context_.ParseSelect(u"select \"a\" from t");
    auto* select = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
    auto* item = TmvCast<TSQLSelectItemExpression>(select->SelectItems->GetItems(0))->Expression.get();
    EXPECT_EQ(TmvCast<TSQLExpressionColumn>(item) != nullptr, ansi);
    EXPECT_EQ(TmvCast<TSQLExpressionConstant>(item) != nullptr, !ansi);
    EXPECT_EQ(Print(statement.get()), ansi ? "Select a From t" : "Select \"a\" From t");
  }
  SetAnsiQuotes(false);
}

TEST_F(MySQLDialectTest, IntoClauseAndTypes) {
  EXPECT_TRUE(provider_.IsQueryWithIntoClause(context_.ParseSelect(u"select a into dumpfile 'f' from t").get()));
  EXPECT_FALSE(provider_.IsQueryWithIntoClause(context_.ParseSelect(u"select a from t").get()));
  provider_.SetDenyIntoClause(true);
  EXPECT_EQ(Print("select a into outfile 'f' from t").rfind("error", 0), 0u);
  provider_.SetDenyIntoClause(false);
  for (const char16_t* type : {u"CHAR", u"varchar", u"Binary", u"varbinary"}) EXPECT_FALSE(provider_.IsFixedSizeType(type));
  EXPECT_TRUE(provider_.IsFixedSizeType(u"int"));
}

TEST_F(MySQLDialectTest, ServerVersionAsNumberAndText) {
  struct Case {
    const char* text;
    int number;
  };
  const Case reads[] = {{"5.1.40", 51040}, {"5.1.40-log", 51040}, {"4.1", 41000},     {"4.01", 40100},
                        {"5", 50000},      {"10.11.6-MariaDB", 101160},  {"5.0.1", 50010}};
  for (const Case& c : reads) EXPECT_EQ(ParseServerVersionMySQL(c.text), c.number) << c.text;
  for (const char* bad : {"", "v5.1", ".5"}) EXPECT_THROW(ParseServerVersionMySQL(bad), Exception) << bad;
  const Case texts[] = {{"5.02", 50200}, {"4.1", 41000}, {"4.01", 40100}, {"5.0.1", 50010}, {"5.1.04", 51004}};
  for (const Case& c : texts) {
    EXPECT_EQ(ServerVersionTextMySQL(c.number), c.text);
    EXPECT_EQ(ParseServerVersionMySQL(ServerVersionTextMySQL(c.number)), c.number);
  }
  EXPECT_EQ(provider_.GetServerVersion(), "5.02");

  int notified = 0;
  const TmvHandlerId id = TmvHandlerId::Unique();
  provider_.GetOnUpdate().AddHandler(id, [&](TmvObject*) { ++notified; });
  provider_.SetServerVersion("4.01");
  provider_.SetServerVersion("4.01");
  EXPECT_EQ(notified, 1);
  EXPECT_THROW(provider_.SetServerVersion("x"), Exception);
  EXPECT_EQ(provider_.GetServerVersionInt(), 40100);
  EXPECT_TRUE(provider_.IsSupportSubQueryDerivedTables());
  EXPECT_FALSE(provider_.IsSupportDerivedTables());
  EXPECT_FALSE(provider_.IsSupportViews());
  provider_.SetServerVersionInt(50010);
  EXPECT_TRUE(provider_.IsSupportDerivedTables());
  EXPECT_TRUE(provider_.IsSupportViews());
  provider_.SetServerVersionInt(39999);
  EXPECT_FALSE(provider_.IsSupportUnions());
  TmvMYSQLSyntaxProvider copy;
  copy.Assign(&provider_);
  EXPECT_EQ(copy.GetServerVersionInt(), 39999);
  provider_.GetOnUpdate().RemoveHandler(id);
  provider_.SetAutoCalcServerVersion(false);
  EXPECT_FALSE(provider_.GetDetectServerVersion());
}

TEST_F(MySQLDialectTest, LimitsOfASingleSelect) {
  WideString offset = u"x", count = u"x";
  EXPECT_FALSE(provider_.GetQueryLimits(nullptr, offset, count));
  EXPECT_FALSE(provider_.GetQueryLimits(context_.ParseSelect(u"select a from t").get(), offset, count));
  EXPECT_TRUE(offset.empty() && count.empty());
  ASSERT_TRUE(provider_.GetQueryLimits(context_.ParseSelect(u"select a from t limit 5, 10").get(), offset, count));
  EXPECT_EQ(offset, u"5");
  EXPECT_EQ(count, u"10");

  struct Case {
    const char* text;
    const char16_t* offset;
    const char16_t* count;
    const char* print;  // null: no statement comes back
  };
  const Case cases[] = {
      {"select a from t limit 3", u"", u"5", "Select a From t Limit 5"},
      {"select a from t", u"2", u"", "Select a From t"},
      {"select a from t order by a", u"2", u"5", "Select a From t Order By a Limit 5 Offset 2"},
      {"select a from t limit 3 offset 1", u"", u"", "Select a From t"},
      {"select a from t union select b from u", u"", u"5", nullptr},
      {"select a from t union select b from u", u"2", u"", nullptr},
      {"select a from t union select b from u", u"2", u"5", nullptr},
  };
  for (const Case& c : cases) {
    auto statement = context_.ParseSelect(UTF8Decode(c.text));
    auto limited = provider_.TransformQueryLimits(statement.get(), c.offset, c.count);
    if (!c.print) {
      EXPECT_EQ(limited, nullptr) << c.text;
      EXPECT_FALSE(provider_.GetQueryLimits(statement.get(), offset, count));
      continue;
    }
    ASSERT_NE(limited, nullptr) << c.text;
    EXPECT_EQ(Print(limited.get()), c.print) << c.text;
    EXPECT_EQ(Print(c.print), c.print);
    // What was set reads back; an offset without a count sets nothing.
    const bool set = *c.count != 0;
    EXPECT_EQ(provider_.GetQueryLimits(limited.get(), offset, count), set) << c.text;
    EXPECT_EQ(offset, set ? WideString(c.offset) : WideString()) << c.text;
    EXPECT_EQ(count, WideString(c.count)) << c.text;
  }
  auto plain = context_.ParseSelect(u"select 1");
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"", u"5 rows"), EConvertError);
  EXPECT_THROW(provider_.TransformQueryLimits(plain.get(), u"x", u"5"), EConvertError);
}

TEST_F(MySQLDialectTest, LimitsRunOnTheServer) {
  MV_REQUIRE_MARIADB_CHINOOK();
  mvtest::MariaDbServer& db = mvtest::ChinookOnMariaDb();
  db.Exec(std::string("USE ") + mvtest::kMariaDbChinookDatabase);
  // An offset alone is not set: all rows come back.
  ExpectLimitsOnServer(u"SELECT `TrackId`, `Name` FROM `Track` WHERE `AlbumId` < 5 ORDER BY `TrackId`",
                       {{u"", u"5", 0, 5}, {u"3", u"", 0, ~size_t(0)}, {u"4", u"6", 4, 6}, {u"1000", u"2", 1000, 0}},
                       [&](const WideString& sql) { return db.Query(sql); });
  db.Exec("USE test");
}

TEST_F(MySQLDialectTest, DatesAsStrToDate) {
  const TmvDateTime day = EncodeDate(2024, 2, 29);
  const TmvDateTime moment = ComposeDateTime(day, EncodeTime(13, 5, 9, 0));
  EXPECT_EQ(provider_.GetDateString(day), u"str_to_date('2024-02-29', '%Y-%m-%d')");
  EXPECT_EQ(provider_.GetDateTimeString(day), u"str_to_date('2024-02-29', '%Y-%m-%d')");
  EXPECT_EQ(provider_.GetDateTimeString(moment), u"str_to_date('2024-02-29 13:05:09', '%Y-%m-%d %H:%i:%s')");
  EXPECT_EQ(provider_.GetTimeString(moment), u"str_to_date('13:05:09', '%H:%i:%s')");
  auto read = [&](const WideString& text) { return context_.ParseExpression(text); };
  EXPECT_EQ(provider_.GetDate(read(u"(" + provider_.GetDateString(day) + u")").get()), u"2024-02-29");
  EXPECT_EQ(provider_.GetDateTime(read(provider_.GetDateTimeString(moment)).get()), u"2024-02-29 13:05:09");
  EXPECT_EQ(provider_.GetTime(read(u"str_to_date(a, '%H')").get()), u"");
}
