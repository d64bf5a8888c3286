// The Oracle dialect: the size of its grammar and scanner, what it reads and
// prints back (hierarchical queries in both orders, the outer join mark,
// MODEL, WITH with SEARCH and CYCLE, analytic functions, sources), what
// each version reads, the ROWNUM limits, dates, and the catalog texts with
// hostile names.
#include <gtest/gtest.h>

#include <functional>

#include "DialectFixture.h"
#include "ORACLEPars.h"
#include "ORACLEScan.h"
#include "ScanTokens.h"
#include "dialects/oracle/OracleCatalogQueries.h"
#include "dialects/oracle/OracleSyntaxProvider.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/fetchers/FilterMacros.h"
#include "support/DateTime.h"
#include "tree/QualifiedNamesList.h"

using namespace mv;
using mvtest::ScanTokens;

namespace {

class OracleDialectTest : public mvtest::DialectFixture<TmvOracleSyntaxProvider> {
 protected:
  void Use(TmvQBServerVersionOracle version) {
    provider_.SetServerVersion(version);
    context_.SetSyntaxProvider(nullptr);
    context_.SetSyntaxProvider(&provider_);
  }
  // Each text prints so (or gives that error), and the print reads again to itself.
  struct Case {
    const char* text;
    const char* print;
  };
  void ExpectPrints(std::initializer_list<Case> cases) { ExpectPrintsBack(cases); }
};

// The kinds of the tokens the scanner reads from `text`, blanks and
// comments left out.
std::vector<int32_t> Kinds(const WideString& text) {
  TmvOwned<ORACLEScanner> scanner = TmvCreate<ORACLEScanner>();
  scanner->Init(text);
  std::vector<int32_t> kinds;
  for (const TmvToken& token : scanner->GetTokens())
    if (!token.IsHidden()) kinds.push_back(token.Kind);
  return kinds;
}

}  // namespace

TEST_F(OracleDialectTest, GrammarScannerAndLists) {
  EXPECT_EQ(ORACLEParser::RuleCount, 97);
  EXPECT_EQ(ORACLEParser::IterCount, 31);
  // The 240 words of the dialect's list and the 37 other words of its grammar.
  EXPECT_EQ(ORACLEScanner::KeywordCount, 277);
  EXPECT_EQ(provider_.GetKeywords().size(), 240u);
  TSQLQualifiedNamesList names(&context_, true);
  provider_.GetBuiltinFunctionNames(names);
  EXPECT_EQ(names.Count(), 172);
  EXPECT_EQ(provider_.ServerName(), u"Oracle");
  EXPECT_EQ(provider_.GetSimpleEmptyFromSubquery(), u"(SELECT NULL FROM DUAL)");
  EXPECT_EQ(provider_.GetQueryToLoadFieldsTemplate(), u"select {0} from {1} a where rownum<0");
  EXPECT_EQ(provider_.CreateWrapperForStoredProc(u"f(1)"), u"TABLE(f(1))");
  EXPECT_EQ(provider_.GetEmptySchemaName(&context_)->Token, u"PUBLIC");
  EXPECT_FALSE(provider_.IsFixedSizeType(u"VarChar2"));
  EXPECT_FALSE(provider_.IsFixedSizeType(u"raw"));
  EXPECT_TRUE(provider_.IsFixedSizeType(u"number"));
  EXPECT_EQ(provider_.GetStringTokenIds(),
            (std::vector<int32_t>{ORACLEScanner::tkStringToken, ORACLEScanner::tkNationalStringToken}));
  EXPECT_NE(SyntaxProvidersList().FindClassByClassName("tmvoraclesyntaxprovider"), nullptr);
}

TEST_F(OracleDialectTest, ScannerTokens) {
  using T = ORACLEScanner;
  struct Case {
    std::u16string text;
    std::vector<mvtest::ScannedToken> tokens;
  };
  const Case cases[] = {
      {u"a#1$ \"x\"\"y\" _a", {{T::tkIdentifierToken, u"a#1$"}, {T::tkQuotedIdentifierToken, u"\"x\"\"y\""},
                               {T::NoSym, u"_"}, {T::tkIdentifierToken, u"a"}}},
      {u"'a''b' N'c' n", {{T::tkStringToken, u"'a''b'"}, {T::tkNationalStringToken, u"N'c'"},
                          {T::tkIdentifierToken, u"n"}}},
      {u":p ?p ? &v :1 ?=", {{T::tkParameterToken, u":p"}, {T::tkParameterToken, u"?p"}, {T::tkParameterToken, u"?"},
                             {T::tkParameterToken, u"&v"}, {T::tkParameterToken, u":1"},
                             {T::tkQuestionMarkEqual, u"?="}}},
      {u"x => a(+) t@l s[1]", {{T::tkIdentifierToken, u"x"}, {T::tkArrow, u"=>"}, {T::tkIdentifierToken, u"a"},
                               {T::tkLeftParenthesis, u"("}, {T::tkPlusSign, u"+"}, {T::tkRightParenthesis, u")"},
                               {T::kwT, u"t"}, {T::tkAtSign, u"@"}, {T::tkIdentifierToken, u"l"},
                               {T::tkIdentifierToken, u"s"}, {T::tkLeftBracket, u"["}, {T::tkIntegerToken, u"1"},
                               {T::tkRightBracket, u"]"}}},
      {u"sequental Connect_By_Root rownum %", {{T::kwSEQUENTAL, u"sequental"}, {T::kwCONNECT_BY_ROOT, u"Connect_By_Root"},
                                               {T::kwROWNUM, u"rownum"}, {T::NoSym, u"%"}}},
  };
  for (const Case& c : cases) EXPECT_EQ(ScanTokens<ORACLEScanner>(c.text), c.tokens) << UTF8Encode(c.text);
}

TEST_F(OracleDialectTest, ReadsAndPrintsBack) {
  ExpectPrints({
      {"select unique a, t.b x, c as y from s.t@lnk t where a != 1 minus select 1, 2, 3 from dual",
       "Select Unique a, t.b x, c As y From s.t@lnk t Where a != 1 minus Select 1, 2, 3 From dual"},
      {"select a from t where a is not nan and b is empty and c is of type (only t1, t2)",
       "Select a From t Where a Is Not NaN And b Is Empty And c Is Of Type (Only t1, t2)"},
      // IN takes any value: a list, a sub-query, one value in brackets.
      {"select a from t where a in (1, 2) and b not in (select b from u) and c in (3) and regexp_like(d, 'x')",
       "Select a From t Where a In (1, 2) And b Not In (Select b From u) And c In (3) And RegExp_Like(d, 'x')"},
      {"select a from t where a = any (1, 2) and b > all (select b from u)",
       "Select a From t Where a = Any(1, 2) And b > All(Select b From u)"},
      {"select f(x => 1, y => 'a'), sysdate, systimestamp, level, rowid, user, n'x' from dual",
       "Select f(x => 1, y => 'a'), SysDate, SysTimestamp, Level, RowId, User, n'x' From dual"},
      {"select cast(a as varchar2(10 byte)), cast(b as number(5, 2)), cast(c as timestamp(3) with local time zone),"
       " cast(d as interval day(2) to second(3)) from t",
       "Select Cast(a As VarChar2(10 Byte)), Cast(b As Number(5, 2)), Cast(c As TimeStamp(3) With Local Time Zone),"
       " Cast(d As Interval Day(2) To Second(3)) From t"},
      {"select a at time zone 'UTC', b at local, date '2024-01-31', interval '1' day, interval '1-2' year to month"
       " from t",
       "Select a At Time Zone 'UTC', b At Local, Date '2024-01-31', Interval '1' Day, Interval '1-2' Year To Month"
       " From t"},
      {"select trim(both 'x' from a), translate(a using nchar_cs), extract(year from d), (d1 - d2) day to second"
       " from t",
       "Select Trim(Both 'x' From a), Translate(a Using nchar_cs), Extract(Year From d), (d1 - d2) Day To Second"
       " From t"},
      {"select a from t order by a desc nulls last, b nulls first for update of a, b nowait",
       "Select a From t Order By a Desc Nulls Last, b Nulls First For Update Of a, b NoWait"},
      {"select a from t for update wait 5;", "Select a From t For Update Wait 5"},
      {"select * from (select a from t with check option constraint c1) q, table(f(1)) x, only (v) w",
       "Select * From (Select a From t With Check Option Constraint c1) q, Table(f(1)) x, Only(v) w"},
      {"select * from t partition (p1) sample block (10) seed (3) x, u subpartition (s) y",
       "Select * From t Partition(p1) Sample Block (10) Seed (3) x, u SubPartition(s) y"},
      {"select * from t left outer join u on t.a = u.a cross join v full join w on 1 = 1",
       "Select * From t Left Outer Join u On t.a = u.a Cross Join v Full Join w On 1 = 1"},
      {"select a from t with read only", "Select a From t With Read Only"},
      // Errors with the place where the text stops making sense.
      {"select a from t where a % 2 = 1", "error: Invalid SELECT statement.\r\n Unexpected token \"%\" at line 1, pos 25"},
      {"select a 'x' from t", "error: Invalid SELECT statement.\r\n Unexpected token \"'x'\" at line 1, pos 10"},
      {"select _a from t", "error: Invalid SELECT statement.\r\n Unexpected token \"_\" at line 1, pos 8"},
      {"select a from t for update wait", "error: Invalid SELECT statement.\r\n Unexpected token \"EOF\" at line 1, pos 32"},
  });
}

TEST_F(OracleDialectTest, HierarchicalQueriesAndAnalytics) {
  ExpectPrints({
      // Each order of the two clauses prints back in its own order.
      {"select a from t connect by prior a = b start with c = 1",
       "Select a From t Connect By Prior a = b Start With c = 1"},
      {"select a from t where x = 1 start with c = 1 connect by nocycle prior a = b order siblings by a",
       "Select a From t Where x = 1 Start With c = 1 Connect By NoCycle Prior a = b Order Siblings By a"},
      {"select connect_by_root a, sys_connect_by_path(a, '/'), level from t connect by prior a = b",
       "Select Connect_By_Root a, sys_connect_by_path(a, '/'), Level From t Connect By Prior a = b"},
      // The outer join mark stays on its column.
      {"select * from a, b where a.id = b.id (+) and b.x(+) = 1", "Select * From a, b Where a.id = b.id(+) And b.x(+) = 1"},
      {"select rank() over (partition by a order by b desc rows between unbounded preceding and current row),"
       " sum(c) over (), count(*) over (partition by (a, b)) from t",
       "Select rank() Over (Partition By a Order By b Desc Rows Between Unbounded Preceding And Current Row),"
       " Sum(c) Over (), count(*) Over (Partition By (a, b)) From t"},
      {"select max(a) keep (dense_rank first order by b) over (partition by c),"
       " listagg(a, ',') within group (order by a), xmlagg(x order by y) from t",
       "Select Max(a) Keep (Dense_Rank First Order By b) Over (Partition By c),"
       " ListAgg(a, ',') Within Group (Order By a), XMLAgg(x Order By y) From t"},
      {"select cast(multiset(select a from u) as tt), cursor(select b from v) from t",
       "Select Cast(MultiSet(Select a From u) As tt), Cursor(Select b From v) From t"},
      {"with q (x, y) as (select a, b from t) search depth first by x desc nulls last set o"
       " cycle x, y set c to 1 default 0 select * from q",
       "With q(x, y) As (Select a, b From t) Search Depth First By x Desc Nulls Last Set o"
       " Cycle x, y Set c To 1 Default 0 Select * From q"},
  });
}

TEST_F(OracleDialectTest, ModelClause) {
  ExpectPrints({
      {"select * from t model dimension by (a) measures (b) rules (b[1] = 2)",
       "Select * From t Model Dimension By (a) Measures (b) Rules (b[1] = 2)"},
      // Every part in its place; Iterate has no blank before its bracket.
      {"select * from t model ignore nav unique single reference return updated rows"
       " reference r on (select k, v from u) dimension by (k) measures (v) keep nav"
       " main m partition by (p) x dimension by (a as d, b) measures (c m1) unique dimension"
       " rules upsert all sequental order iterate (3) until (m1[1] > 10)"
       " (update m1[1] order by d = m1[2] * 2, upsert m1[d = 1, 2] = r.v[1], m1[3] = 0)",
       "Select * From t Model Ignore Nav Unique Single Reference Return Updated Rows"
       " Reference r On (Select k, v From u) Dimension By (k) Measures (v) Keep Nav"
       " MAIN m Partition By (p) x Dimension By (a As d, b) Measures (c m1) Unique Dimension"
       " Rules Upsert All Sequental Order Iterate(3) Until (m1[1] > 10)"
       " (Update m1[1] Order By d = m1[2] * 2, Upsert m1[d = 1, 2] = r.v[1], m1[3] = 0)"},
      {"select * from t model dimension by (a) measures (b) rules automatic order (b[1] = 2)",
       "Select * From t Model Dimension By (a) Measures (b) Rules Automatic Order (b[1] = 2)"},
      // The one spelling of the word is Sequental.
      {"select * from t model dimension by (a) measures (b) rules sequential order (b[1] = 2)",
       "error: Invalid SELECT statement.\r\n Unexpected token \"sequential\" at line 1, pos 59"},
  });
}

TEST_F(OracleDialectTest, WhatEachVersionReads) {
  struct Case {
    const char* text;
    int from;  // the first version that reads it
  };
  const Case cases[] = {
      {"select * from a, b where a.x = b.x(+)", 7},
      {"with q as (select 1 from dual) select * from q", 9},
      {"select * from a cross join b", 9},
      {"select * from a join b on a.x = b.x", 9},
      {"select a from t connect by prior a = b", 9},
      {"select a from t for update wait 3", 9},
      {"select a from t connect by nocycle prior a = b", 10},
      {"select a from t sample (5) seed (1)", 10},
  };
  const std::pair<TmvQBServerVersionOracle, int> versions[] = {
      {svOracle7, 7}, {svOracle8, 8}, {svOracle9, 9}, {svOracle10, 10}, {svOracle11, 10}};
  for (const auto& [version, level] : versions) {
    Use(version);
    EXPECT_EQ(TmvOracleSyntaxProvider::LanguageLevel(version), level);
    EXPECT_EQ(provider_.IsSupportCrossJoin(), level >= 9);
    EXPECT_EQ(provider_.IsSupportCTE(), level >= 9);
    for (const Case& c : cases) EXPECT_EQ(Print(c.text).rfind("error", 0) != 0, level >= c.from) << c.text << " at " << level;
  }
  Use(svOracle8);
  EXPECT_EQ(Print("with q as (select 1 from dual) select * from q"),
            "error: Invalid SELECT statement.\r\n Unexpected token \"with\" at line 1, pos 1");
  EXPECT_EQ(Print("select * from a cross join b"),
            "error: Invalid SELECT statement.\r\n Unexpected token \"cross\" at line 1, pos 17");
  Use(svOracle11);
}

TEST_F(OracleDialectTest, Limits) {
  // No limit reads back, not even from the ROWNUM conditions a transform
  // writes; an offset and a count go before the old where condition.
  struct Case {
    const char16_t* offset;
    const char16_t* count;
    const char* single;
    const char* unionPrint;
  };
  const Case cases[] = {
      {u"", u"5", "Select a From t Where RowNum <= 5 And x = 1 Order By a",
       "Select * From (Select a From t union Select b From u) q Where RowNum <= 5"},
      {u"10", u"", "Select a From t Where RowNum > 10 And x = 1 Order By a",
       "Select * From (Select a From t union Select b From u) q Where RowNum > 10"},
      {u"10", u"5", "Select a From t Where RowNum > 10 And RowNum <= 15 And x = 1 Order By a",
       "Select * From (Select a From t union Select b From u) q Where RowNum > 10 And RowNum <= 15"},
      {u":o", u":c", "Select a From t Where RowNum > :o And RowNum <= (:o + :c) And x = 1 Order By a",
       "Select * From (Select a From t union Select b From u) q Where RowNum > :o And RowNum <= (:o + :c)"},
      {u"", u"", "Select a From t Where x = 1 Order By a", "Select a From t union Select b From u"},
  };
  auto single = context_.ParseSelect(u"select a from t where x = 1 order by a");
  auto both = context_.ParseSelect(u"select a from t union select b from u");
  for (const Case& c : cases) {
    for (auto* statement : {single.get(), both.get()}) {
      auto limited = provider_.TransformQueryLimits(statement, c.offset, c.count);
      const std::string print = Print(limited.get());
      EXPECT_EQ(print, statement == single.get() ? c.single : c.unionPrint);
      EXPECT_EQ(Print(print), print);
      WideString offset = u"x", count = u"x";
      EXPECT_FALSE(provider_.GetQueryLimits(limited.get(), offset, count)) << print;
      EXPECT_EQ(offset + count, u"") << print;
    }
  }
  EXPECT_EQ(provider_.TransformQueryLimits(nullptr, u"1", u"2"), nullptr);
}

TEST_F(OracleDialectTest, DatesAndTypes) {
  const TmvDateTime date = EncodeDate(2001, 2, 3);
  const TmvDateTime time = EncodeTime(10, 20, 30, 0);
  EXPECT_EQ(provider_.GetDateString(date), u"to_date('2001-02-03', 'YYYY-MM-DD')");
  EXPECT_EQ(provider_.GetDateTimeString(date), u"to_date('2001-02-03', 'YYYY-MM-DD')");
  EXPECT_EQ(provider_.GetDateTimeString(ComposeDateTime(date, time)),
            u"to_date('2001-02-03 10:20:30', 'YYYY-MM-DD HH24:MI:SS')");
  EXPECT_EQ(provider_.GetTimeString(time), u"to_date('10:20:30', 'HH24:MI:SS')");
  // A call of to_date on a string gives the string; other values the base's answer.
  const char16_t* values[][2] = {{u"to_date('2001-02-03', 'YYYY-MM-DD')", u"2001-02-03"},
                                 {u"(TO_DATE('10:20:30'))", u"10:20:30"},
                                 {u"to_char('2001-02-03')", u""},
                                 {u"to_date(a)", u""}};
  for (const auto& v : values) {
    auto expression = context_.ParseExpression(v[0]);
    ASSERT_TRUE(expression) << UTF8Encode(v[0]);
    EXPECT_EQ(provider_.GetDate(expression.get()), v[1]) << UTF8Encode(v[0]);
    EXPECT_EQ(provider_.GetDateTime(expression.get()), v[1]) << UTF8Encode(v[0]);
  }
  // Result types of calls by the dialect's table.
  const char16_t* types[][2] = {{u"to_number('1')", u"NUMBER"}, {u"instr(a, 'x')", u"Integer"},
                                {u"add_months(d, 1)", u"Date"},  {u"nvl(1, 2)", u"Integer"},
                                {u"decode(a, 1, 'x')", u"Varchar"}, {u"stddev(a)", u"Number"},
                                {u"grouping(a)", u"Integer"},    {u"no_such(1)", u""}};
  for (const auto& t : types) {
    auto expression = context_.ParseExpression(t[0]);
    ASSERT_TRUE(expression) << UTF8Encode(t[0]);
    provider_.CalcExpressionType(expression.get());
    EXPECT_EQ(expression->ExpressionTypeName, t[1]) << UTF8Encode(t[0]);
  }
}

TEST_F(OracleDialectTest, CatalogQueries) {
  struct Case {
    WideString text;
    const char16_t* holds;
  };
  const Case cases[] = {
      {kOracleProbeQuery, u"select * from sys.V_$VERSION at where RowNum<2"},
      {kOracleVersionQuery, u"select BANNER from SYS.V_$VERSION where BANNER like 'CORE%'"},
      {kOracleDefaultSchemaQuery, u"select sys_context('userenv','current_schema') from dual"},
      {kOracleSchemasQuery, u"from ALL_USERS u where exists(select * from ALL_TABLES t where t.OWNER=u.USERNAME)"},
      {OracleTablesQuery(u""), u"from all_tables t, all_tab_comments c where (t.owner=c.owner(+))and"},
      {OracleTablesQuery(u"l"), u"from all_tables@\"l\" t, all_tab_comments@\"l\" c"},
      {OracleViewsQuery(u""), u") q where ({ECDC625C-F3BD-4A65-AC25-828D3C06DAD0})"},
      {OracleMViewsQuery(u"", false), u"select t.OWNER, t.MVIEW_NAME, null as COMMENTS from all_mviews t) q"},
      {OracleMViewsQuery(u"l", true), u"all_mview_comments@\"l\" c"},
      {OracleSynonymsQuery(u""), u"o.object_type in ('TABLE','VIEW','SYNONYM')) q where ({9A785FEF"},
      {OraclePipelinedFunctionsQuery(u""), u"where pipelined<>'NO' and procedure_name is null) q where ({C9B6D410"},
      {OracleRelationsQuery(u"l", u"", u"x = 1"), u"ALL_CONS_COLUMNS@\"l\" pkc where (fk.CONSTRAINT_TYPE in ('R'))"},
      {OracleRelationsQuery(u"", u"", u"x = 1"), u"pkc.POSITION as ORDINAL from ALL_CONSTRAINTS fk,"},
      {OracleRelationsQuery(u"", u"", u"x = 1"), u" r where ((0=0)) or (x = 1)"},
      {kOracleFieldsQuery, u"where OWNER=:ObjectSchema and TABLE_NAME=:ObjectName order by COLUMN_ID"},
  };
  for (const Case& c : cases) EXPECT_NE(c.text.find(c.holds), WideString::npos) << UTF8Encode(c.text);
  // The major version is the start of the banner's second group, within 7 to 11.
  const std::pair<const char16_t*, int> banners[] = {{u"CORE\t11.2.0.4.0\tProduction", 11},
                                                     {u"CORE 9.2.0.1.0 Production", 9},
                                                     {u"CORE\t19.0.0.0.0\tProduction", 11},
                                                     {u"CORE 6.0", 7},
                                                     {u"", 11}};
  for (const auto& [banner, major] : banners) EXPECT_EQ(ParseServerVersionOracle(banner), major) << UTF8Encode(banner);
  EXPECT_TRUE(IsOracleProbeAnswer(u"Oracle Database 11g Enterprise Edition Release 11.2.0.4.0"));
  EXPECT_FALSE(IsOracleProbeAnswer(u"PostgreSQL 16"));
  // A hostile link stays one quoted name of the statement.
  using Query = std::function<WideString(const WideString&)>;
  const Query queries[] = {
      [](const WideString& link) { return OracleTablesQuery(link); },
      [](const WideString& link) { return OracleViewsQuery(link); },
      [](const WideString& link) { return OracleMViewsQuery(link, true); },
      [](const WideString& link) { return OracleSynonymsQuery(link); },
      [](const WideString& link) { return OraclePipelinedFunctionsQuery(link); },
      [](const WideString& link) { return OracleRelationsQuery(link, u"a = 1", u"b = 2"); },
  };
  const WideString hostile[] = {u"x\" t, dual --", u"o'brien' or 1=1 --", u"a\"\"b'' /*", u"%0:s%1:s"};
  for (const Query& query : queries) {
    const std::vector<int32_t> plain = Kinds(query(u"lnk"));
    for (const WideString& name : hostile) EXPECT_EQ(Kinds(query(name)), plain) << UTF8Encode(query(name));
  }
}
