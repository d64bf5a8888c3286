// The SQL Server dialect: the size of its grammar, what each server version
// reads and how it prints back, the row limits of every version, dates, and
// a change of provider on a parsed tree.
#include <gtest/gtest.h>

#include <algorithm>

#include "MSSQLPars.h"
#include "dialects/EngineInit.h"
#include "dialects/mssql/MSSQLNodes.h"
#include "dialects/mssql/MSSQLSyntaxProvider.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/DateTime.h"
#include "support/Exceptions.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class MSSQLDialectTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }

  void Use(TmvQBServerVersionMSSQL version) {
    provider_.SetServerVersion(version);
    context_.SetSyntaxProvider(&provider_);
  }
  void TearDown() override { context_.SetSyntaxProvider(nullptr); }

  std::string Print(TastNode* node) {
    TSQLBuilderFast builder;
    return UTF8Encode(node->SimpleSQL(builder));
  }
  // The one-line print of `text`, or "error" when it does not parse.
  std::string Print(const std::string& text) {
    try {
      return Print(context_.ParseSelect(UTF8Decode(text)).get());
    } catch (const EmvSQLError&) {
      return "error";
    }
  }

  TmvMSSQLSyntaxProvider provider_;
  TmvBaseSQLContext context_;
};

constexpr TmvQBServerVersionMSSQL kVersions[] = {svMSSQLAuto, svMSSQL7,    svMSSQL2000, svMSSQL2005,
                                                 svMSSQL2008, svMSSQL2012, svMSSQL2014};

}  // namespace

TEST_F(MSSQLDialectTest, GrammarSize) {
  EXPECT_EQ(MSSQLParser::RuleCount, 77);
  EXPECT_EQ(MSSQLParser::IterCount, 32);
}

TEST_F(MSSQLDialectTest, WhatEachVersionReadsAndPrints) {
  // Each text is refused (nullptr) or parses under the version, its print
  // holds the given part and parses again to the same print.
  constexpr const char* kRefused = nullptr;
  struct Case {
    TmvQBServerVersionMSSQL version;
    const char* text;
    const char* printHolds;
  };
  const Case cases[] = {
      {svMSSQL2008, "select top 10 percent with ties a from t order by a", "Select Top 10 Percent With Ties a From t"},
      {svMSSQL2008, "select top (5) * from [my table] x with (nolock, index(ix1)) where x.a = @p",
       "Top (5) * From [my table] x With (nolock, Index (ix1)) Where x.a = @p"},
      {svMSSQL2008, "select a into #tmp from db..t", "a Into #tmp From db..t"},
      {svMSSQL2008, "select a, count(*) from t group by all a with rollup", "Group By All a With Rollup"},
      {svMSSQL2008, "select a from t order by a compute sum(a), max(a) by a", "Compute Sum(a), Max(a) By a"},
      {svMSSQL2008, "select a from t for xml path('r'), root('x'), elements xsinil", "For Xml Path ('r'), Root ('x'), Elements xsinil"},
      {svMSSQL2008, "select a from t option (maxdop 1, optimize for (@p unknown))", "Option (maxdop 1, Optimize For"},
      {svMSSQL2008, "select a collate latin1_general_ci_as, n'x', 0x1f, @@rowcount from t",
       "a Collate latin1_general_ci_as, n'x', 0x1f, @@rowcount"},
      {svMSSQL2008, "select convert(varchar(max), a, 120), a ^ b | c, ~a, a % 2 from t", "Convert(varchar(Max),a,120), a ^ b | c, ~ a, a % 2"},
      {svMSSQL2008, "select datediff(dd, a, b), iif(a > 1, 1, 2) from t", "datediff(dd, a, b)"},
      {svMSSQL2008, "select * from containstable(t, *, 'x', 5) k", "containstable(t, *, 'x', 5) k"},
      {svMSSQL2008, "select * from t where contains(a, 'x') and a !< 1", "contains(a,'x') And a !< 1"},
      {svMSSQL2008, "select a from t except select a from u", "Except"},
      {svMSSQL2000, "select a from t except select a from u", kRefused},
      {svMSSQL2000, "select * from t, u where t.a *= u.a", "t.a *= u.a"},
      {svMSSQL2005, "select * from t, u where t.a *= u.a", kRefused},
      {svMSSQL2008, "select a from t order by a offset 5 rows fetch next 10 rows only", kRefused},
      {svMSSQL2012, "select a from t order by a offset 5 rows fetch next 10 rows only", "Offset 5 Rows Fetch"},
      {svMSSQLAuto, "select a from t order by a offset 5 rows", "Offset 5 Rows"},
      {svMSSQL2012, "select sum(a) over (partition by b order by c rows between unbounded preceding and current row) from t",
       "Over (Partition By b Order By c Rows Between Unbounded Preceding And Current Row)"},
      {svMSSQL2008, "select sum(a) over (order by c rows unbounded preceding) from t", kRefused},
      {svMSSQL2008, "with c (x) as (select 1 from t) select x from c; go", "With c"},
      // A join hint only after a join kind: "hash" alone is an alias.
      {svMSSQL2008, "select * from t hash join u on t.a = u.a", "From t hash Inner Join u"},
  };
  for (const Case& c : cases) {
    Use(c.version);
    const std::string print = Print(c.text);
    if (!c.printHolds) {
      EXPECT_EQ(print, "error") << c.version << ": " << c.text;
      continue;
    }
    // Words of hints and clauses keep the case they were written in.
    EXPECT_NE(WideLowerCase(UTF8Decode(print)).find(WideLowerCase(UTF8Decode(c.printHolds))), WideString::npos)
        << c.version << ": " << c.text << " gave " << print;
    EXPECT_EQ(Print(print), print) << c.version << ": the print of " << c.text;
  }
}

TEST_F(MSSQLDialectTest, VersionSettings) {
  TmvMSSQLSyntaxProvider provider;
  EXPECT_EQ(provider.GetServerVersion(), svMSSQLAuto);
  EXPECT_TRUE(provider.GetDetectServerVersion());
  provider.SetDetectServerVersion(false);
  EXPECT_EQ(provider.GetServerVersion(), svMSSQL2008);
  provider.SetServerVersion(svMSSQL2012);
  EXPECT_FALSE(provider.GetDetectServerVersion());
  provider.SetServerVersionFromMajor(15);
  EXPECT_EQ(provider.GetServerVersion(), svMSSQL2012);
  provider.SetServerVersionFromMajor(9);
  EXPECT_EQ(provider.GetServerVersion(), svMSSQL2005);
  provider.SetDetectServerVersion(true);
  EXPECT_EQ(provider.GetServerVersion(), svMSSQLAuto);
  // Only from 2005 on, and never while the version is detected.
  for (TmvQBServerVersionMSSQL version : kVersions) {
    provider.SetServerVersion(version);
    EXPECT_EQ(provider.IsSupportLimitOffset(), version >= svMSSQL2005) << version;
    std::vector<WideString> unions;
    provider.GetUnionOperatorsList(unions);
    const bool exceptIntersect = std::find(unions.begin(), unions.end(), u"Except") != unions.end();
    EXPECT_EQ(exceptIntersect, version >= svMSSQL2005) << version;
  }
  TmvMSSQLCESyntaxProvider compact;
  EXPECT_FALSE(compact.CanDetectServerVersion());
  EXPECT_EQ(compact.ServerName(), u"MS SQL Server Compact Edition");
  EXPECT_EQ(SyntaxProvidersList().FindClassByClassName("TmvMSSQLCESyntaxProvider")->ClassName(),
            std::string("TmvMSSQLCESyntaxProvider"));
  EXPECT_FALSE(provider.IsFixedSizeType(u"NVarChar"));
  EXPECT_TRUE(provider.IsFixedSizeType(u"int"));
}

TEST_F(MSSQLDialectTest, DefaultSchemaJoinsTheMetadataProvidersAnswer) {
  Use(svMSSQL2008);
  TmvConnectionMetadataProvider metadata;
  context_.SetMetadataProvider(&metadata);
  auto names = TastCreate<TSQLIdentifiersCollection>(&context_);
  names->AddIdentifier(u"DBO");
  provider_.GetDefaultSchemaNames(&context_, nullptr, *names);
  EXPECT_EQ(names->GetCount(), 1);
  names->Clear();
  provider_.SetDefaultSchema(u"sales");
  provider_.GetDefaultSchemaNames(&context_, nullptr, *names);
  ASSERT_EQ(names->GetCount(), 1);
  EXPECT_EQ(names->Identifier(0)->Token, u"sales");
  provider_.SetDefaultSchema(u"dbo");
  context_.SetMetadataProvider(nullptr);
}

TEST_F(MSSQLDialectTest, JoinHintsAndComputeNamesPrintExactly) {
  Use(svMSSQL2008);
  struct Case {
    const char* text;
    const char* print;
  };
  const Case cases[] = {
      {"select * from t inner hash join u on t.a = u.a", "Select * From t Inner Hash Join u On t.a = u.a"},
      {"select * from t left outer merge join u on 1 = 1", "Select * From t Left Outer Merge Join u On 1 = 1"},
      {"select * from t right loop join u on 1 = 1 full remote join v on 2 = 2",
       "Select * From t Right Loop Join u On 1 = 1 Full Remote Join v On 2 = 2"},
      {"select a from t order by a compute sum(a), STDEV(a), varp(a) by a",
       "Select a From t Order By a Compute Sum(a), StDev(a), VarP(a) By a"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Print(c.text), c.print);
    EXPECT_EQ(Print(c.print), c.print);
  }
  // Another dialect has no join hints: the join stays, the hint goes.
  auto statement = context_.ParseSelect(u"select * from t inner hash join u on t.a = u.a");
  TmvSQL92SyntaxProvider sql92;
  context_.SetSyntaxProvider(&sql92);
  EXPECT_EQ(Print(statement.get()), "Select * From t Inner Join u On t.a = u.a");
  context_.SetSyntaxProvider(&provider_);
}

TEST_F(MSSQLDialectTest, DenyIntoClauseRefusesInto) {
  Use(svMSSQL2008);
  auto statement = context_.ParseSelect(u"select a into n from t");
  EXPECT_TRUE(provider_.IsQueryWithIntoClause(statement.get()));
  provider_.SetDenyIntoClause(true);
  EXPECT_EQ(Print("select a into n from t"), "error");
  provider_.SetDenyIntoClause(false);
}

TEST_F(MSSQLDialectTest, LimitsOfEveryVersion) {
  // Every version x {count, offset, both} x {single select, union}: the
  // statement the limit gives parses again, and reads back as the limit
  // where the version writes it as a clause or a top.
  struct Limit {
    const char16_t* offset;
    const char16_t* count;
  };
  const Limit limits[] = {{u"", u"5"}, {u"10", u""}, {u"10", u"5"}};
  const char16_t* queries[] = {u"select a from t order by a", u"select a from t union select a from u"};
  for (TmvQBServerVersionMSSQL version : kVersions) {
    Use(version);
    const bool rowNumbers = version == svMSSQL2005 || version == svMSSQL2008;
    for (const char16_t* query : queries) {
      auto statement = context_.ParseSelect(query);
      for (const Limit& limit : limits) {
        SCOPED_TRACE(std::to_string(version) + " " + UTF8Encode(query) + " " + UTF8Encode(limit.offset) + "/" +
                     UTF8Encode(limit.count));
        auto limited = provider_.TransformQueryLimits(statement.get(), limit.offset, limit.count);
        const std::string print = Print(limited.get());
        // 7 and 2000 are given OFFSET and FETCH too, which their own parser
        // does not read.
        if (!(limit.offset[0] && version >= svMSSQL7 && version <= svMSSQL2000)) {
          EXPECT_EQ(Print(print), print);
        }
        WideString offset, count;
        const bool has = provider_.GetQueryLimits(limited.get(), offset, count);
        if (rowNumbers && limit.offset[0]) {
          EXPECT_NE(print.find("ROW_NUMBER() Over (Order By"), std::string::npos) << print;
          EXPECT_NE(print.find("RNColumn > 10"), std::string::npos) << print;
          EXPECT_FALSE(has);
        } else {
          EXPECT_TRUE(has) << print;
          EXPECT_EQ(offset, limit.offset) << print;
          EXPECT_EQ(count, limit.count) << print;
        }
      }
    }
  }
}

TEST_F(MSSQLDialectTest, LimitTexts) {
  struct Case {
    TmvQBServerVersionMSSQL version;
    const char16_t* query;
    const char16_t* offset;
    const char16_t* count;
    const char* print;
  };
  const Case cases[] = {
      {svMSSQL2008, u"select a from t order by a", u"", u"5", "Select Top 5 a From t Order By a"},
      {svMSSQL2012, u"select a from t", u"10", u"5",
       "Select a From t Order By 'a' Offset 10 Rows Fetch First 5 Rows Only"},
      {svMSSQL2008, u"select a from t order by a", u"10", u"5",
       "Select q.a From (Select a, ROW_NUMBER() Over (Order By a) As RNColumn From t) q "
       "Where (q.RNColumn > 10) And (q.RNColumn <= 10 + 5) Order By q.a"},
      {svMSSQL2005, u"select a x, b from t", u"10", u"",
       "Select q.x, q.b From (Select a x, b, ROW_NUMBER() Over (Order By @@version) As RNColumn From t) q "
       "Where (q.RNColumn > 10)"},
      {svMSSQL2008, u"select a from t union select b from u order by 1", u"", u"5",
       "Select Top 5 * From (Select a From t union Select b From u) q Order By 1"},
      {svMSSQL2008, u"select a from t union select b from u order by a", u"10", u"5",
       "Select q.a From (Select q.a, ROW_NUMBER() Over (Order By q.a) As RNColumn "
       "From (Select a From t union Select b From u) q) q Where (q.RNColumn > 10) And (q.RNColumn <= 10 + 5) "
       "Order By q.a"},
  };
  for (const Case& c : cases) {
    Use(c.version);
    auto statement = context_.ParseSelect(c.query);
    EXPECT_EQ(Print(provider_.TransformQueryLimits(statement.get(), c.offset, c.count).get()), c.print);
  }
  Use(svMSSQL2008);
  auto percent = context_.ParseSelect(u"select top 10 percent with ties a from t order by a");
  WideString offset, count;
  EXPECT_TRUE(provider_.GetQueryLimits(percent.get(), offset, count));
  EXPECT_EQ(offset + count, u"");
}

TEST_F(MSSQLDialectTest, CompactEditionAppliesTheCountOnly) {
  TmvMSSQLCESyntaxProvider compact;
  context_.SetSyntaxProvider(&compact);
  auto statement = context_.ParseSelect(u"select a from t");
  auto limited = compact.TransformQueryLimits(statement.get(), u"10", u"5");
  EXPECT_EQ(Print(limited.get()), "Select Top 5 a From t");
  context_.SetSyntaxProvider(nullptr);
}

TEST_F(MSSQLDialectTest, Dates) {
  const TmvDateTime date = EncodeDate(2024, 2, 29);
  const TmvDateTime moment{date.value + EncodeTime(13, 5, 9, 0).value};
  EXPECT_EQ(provider_.GetDateString(date), u"convert(datetime, '2024-02-29', 120)");
  EXPECT_EQ(provider_.GetDateTimeString(date), u"convert(datetime, '2024-02-29', 120)");
  EXPECT_EQ(provider_.GetDateTimeString(moment), u"convert(datetime, '2024-02-29 13:05:09', 120)");
  EXPECT_EQ(provider_.GetTimeString(moment), u"convert(time, '13:05:09', 108)");
  Use(svMSSQL2008);
  // Each text reads back from its own literal.
  auto dateTime = context_.ParseExpression(provider_.GetDateTimeString(moment));
  EXPECT_EQ(provider_.GetDateTime(dateTime.get()), u"2024-02-29 13:05:09");
  auto time = context_.ParseExpression(provider_.GetTimeString(moment));
  EXPECT_EQ(provider_.GetTime(time.get()), u"13:05:09");
  EXPECT_EQ(provider_.GetDate(time.get()), u"");
}

TEST_F(MSSQLDialectTest, ProviderSwitchKeepsWhatBothDialectsHave) {
  Use(svMSSQL2008);
  auto statement = context_.ParseSelect(u"select top 5 a from t x with (nolock) where a = 1");
  TmvSQL92SyntaxProvider sql92;
  context_.SetSyntaxProvider(&sql92);
  const std::string plain = Print(statement.get());
  EXPECT_EQ(plain, "Select a From t x Where a = 1");
  context_.SetSyntaxProvider(&provider_);
  EXPECT_NE(Print(statement.get()).find("Select a From t x Where a = 1"), std::string::npos);
}
