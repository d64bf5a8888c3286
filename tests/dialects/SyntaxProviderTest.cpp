// The syntax provider contract: the defaults of the base, the answers of the
// SQL-92 provider, keyword resources, the fields query, dates, limits and
// the providers list.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "SQL92Scan.h"
#include "Thrown.h"
#include "dialects/EngineInit.h"
#include "frontend/KeywordResources.h"
#include "frontend/SyntaxProvidersList.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "tree/Expressions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

// A provider that changes nothing of the contract but the required parts,
// and has no keyword resource of its own.
class TTestBareSyntaxProvider : public TmvSQL92SyntaxProvider {
  MV_DECLARE_CLASS()
};
MV_DEFINE_CLASS(TTestBareSyntaxProvider, TmvSQL92SyntaxProvider)

// A provider that can detect its server's version.
class TTestDetectingSyntaxProvider : public TmvSQL92SyntaxProvider {
 public:
  bool CanDetectServerVersion() const override { return true; }
};

class SyntaxProviderTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }
  SyntaxProviderTest() : provider(TmvCreate<TmvSQL92SyntaxProvider>()) { context.SetSyntaxProvider(provider.get()); }
  ~SyntaxProviderTest() override { context.SetSyntaxProvider(nullptr); }

  std::vector<WideString> Names(void (TmvBaseSyntaxProvider::*list)(TSQLQualifiedNamesList&) const) {
    TSQLQualifiedNamesList names(&context, true);
    (provider.get()->*list)(names);
    std::vector<WideString> out;
    for (int i = 0; i < names.Count(); ++i) out.push_back(names.Items(i)->GetQualifiedName());
    return out;
  }

  TmvOwned<TmvSQL92SyntaxProvider> provider;
  TmvBaseSQLContext context;
};

}  // namespace

TEST_F(SyntaxProviderTest, CapabilitiesOfSQL92) {
  const TmvBaseSyntaxProvider& p = *provider;
  // The provider's column of the capability table, in the table's order:
  // joins, expressions, objects, unions and CTEs, ordering and grouping,
  // sub-query forms, names, optional keywords, limits, version detection.
  const bool answers[] = {
      p.IsSupportANSIJoins(), p.IsForceBinaryANSIJoins(), p.IsBracketsInComplexJoinMandatory(),
      p.IsSupportOracleJoins(), p.IsSupportTransactSQLJoins(), p.IsSupportCrossJoin(), p.IsSupportLeftANSIJoin(),
      p.IsSupportRightANSIJoin(), p.IsSupportFullANSIJoin(), p.IsUniversalExpressions(),
      p.IsSupportAllTableFieldsSelection(), p.IsSupportOrderByAlias(), p.IsSupportViews(), p.IsSupportProcedures(),
      p.IsSupportSynonyms(), p.IsSupportUnions(), p.IsSupportBracketsInUnions(), p.IsSupportDerivedTables(),
      p.IsSupportCTE(), p.IsCTEColumnNamesMandatory(), p.IsSupportRecursiveCTE(), p.IsSupportNullOrdering(),
      p.IsSupportGroupByStar(), p.IsSupportGroupByAlias(), p.IsSupportSubQueryUnions(),
      p.IsSupportSubQueryBracketsInUnions(), p.IsSupportSubQueryDerivedTables(), p.IsSupportSubQueryCTE(),
      p.IsSupportDatabases(), p.IsSupportSchemas(), p.IsSupportEmptyBracketsInStoredProcs(),
      p.IsOuterKeywordInLinksMandatory(), p.IsInnerKeywordInLinksMandatory(),
      p.IsAsKeywordInExpressionAliasMandatory(), p.IsAsKeywordInObjectAliasMandatory(), p.IsFromClauseMandatory(),
      p.GetUseObjectNamesAsDefaultAliases(), p.IsSupportLimitOffset(), p.IsSupportLimitCount(),
      p.CanDetectServerVersion(),
  };
  std::string column;
  for (bool answer : answers) column += answer ? 'T' : 'F';
  EXPECT_EQ(column, "TFFFFTTTTFTTTFFTTTFFTFFFTTTFTTTFTFFFFFFF");
}

TEST_F(SyntaxProviderTest, TextsAndSettingsOfSQL92) {
  EXPECT_EQ(provider->ServerName(), u"ANSI SQL92");
  EXPECT_EQ(provider->GetQuoteBegin(), u"\"");
  EXPECT_EQ(provider->GetQuoteEnd(), u"\"");
  EXPECT_EQ(provider->GetObjectNameSeparator(), u".");
  EXPECT_EQ(provider->GetIdentCaseSens(), icsNonSensitive);
  EXPECT_FALSE(provider->IsIdentifiersCaseSensitive());
  EXPECT_EQ(provider->GetQueryToLoadFieldsTemplate(), u"select %0:s from %1:s a where 0<>0");
  EXPECT_EQ(provider->GetSimpleEmptyFromSubquery(), u"(SELECT NULL)");
  EXPECT_EQ(provider->GetUpperCaseFunctionName(), u"upper");
  EXPECT_FALSE(provider->GetUseInformationSchema());
  EXPECT_EQ(provider->GetStringTokenIds(), std::vector<int32_t>{SQL92Scanner::tkStringToken});
  EXPECT_EQ(&provider->GetScannerClass(), &SQL92Scanner::ScannerClass());
  provider->SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_TRUE(provider->IsIdentifiersCaseSensitive() && provider->IsNonQuotedIdentifiersToUpperCase());
  provider->SetIdentCaseSens(icsSensitiveLowerCase);
  EXPECT_TRUE(provider->IsIdentifiersCaseSensitive() && !provider->IsNonQuotedIdentifiersToUpperCase());
}

TEST_F(SyntaxProviderTest, NameListsOfSQL92) {
  EXPECT_EQ(Names(&TmvBaseSyntaxProvider::GetStarAggregateNames), std::vector<WideString>{u"Count"});
  EXPECT_TRUE(Names(&TmvBaseSyntaxProvider::Get1ParamAggregateNames).empty());
  EXPECT_EQ(Names(&TmvBaseSyntaxProvider::GetPrefixed1ParamAggregateNames),
            (std::vector<WideString>{u"Avg", u"Count", u"Max", u"Min", u"Sum"}));
  EXPECT_TRUE(Names(&TmvBaseSyntaxProvider::GetMultiParamAggregateNames).empty());
  EXPECT_EQ(Names(&TmvBaseSyntaxProvider::GetBuiltinFunctionNames),
            (std::vector<WideString>{u"Position", u"Char_Length", u"Character_Length", u"Octet_Length",
                                     u"Bit_Length", u"Extract", u"SubString", u"Upper", u"Lower", u"Convert",
                                     u"Translate", u"Trim", u"Current_Time", u"Current_Timestamp", u"NullIf",
                                     u"Coalesce"}));
  std::vector<std::string> operators;
  provider->GetComparisonOperators(operators);
  EXPECT_EQ(operators, (std::vector<std::string>{"=", ">", ">=", "<", "<=", "<>"}));
  // A list is left alone, added to or cleared first, as the contract says.
  TSQLQualifiedNamesList names(&context, true);
  names.AddBuiltin(u"Keep");
  provider->GetMultiParamAggregateNames(names);
  EXPECT_EQ(names.Count(), 1);
  provider->GetStarAggregateNames(names);
  EXPECT_EQ(names.Count(), 2);
  provider->Get1ParamAggregateNames(names);
  EXPECT_EQ(names.Count(), 0);
}

TEST_F(SyntaxProviderTest, UnionOperatorsKeepTheirSpelling) {
  std::vector<WideString> list;
  provider->GetUnionOperatorsList(list);
  EXPECT_EQ(list, (std::vector<WideString>{u"Union", u"Union All", u"Except", u"Intersect"}));
  EXPECT_EQ(provider->NormalizeUnionOperator(u"UNION ALL"), u"Union All");
  EXPECT_EQ(provider->NormalizeUnionOperator(u"except"), u"Except");
  EXPECT_EQ(provider->NormalizeUnionOperator(u"MINUS"), u"MINUS");
  EXPECT_EQ(TmvBaseSyntaxProvider::GetUnionOperatorIcon(u"minus"), TmvUnionOperatorIcon::Except);
  EXPECT_EQ(TmvBaseSyntaxProvider::GetUnionOperatorIcon(u"Intersect All"), TmvUnionOperatorIcon::IntersectAll);
  EXPECT_EQ(TmvBaseSyntaxProvider::GetUnionOperatorIcon(u"Union Distinct"), TmvUnionOperatorIcon::None);
}

TEST_F(SyntaxProviderTest, KeywordsAreTheScannersReservedWords) {
  const std::vector<WideString> keywords = provider->GetKeywords();
  ASSERT_EQ(keywords.size(), 226u);
  EXPECT_TRUE(std::is_sorted(keywords.begin(), keywords.end()));
  // The words the scanner turns into keyword kinds 11 to 237, without the
  // end-exec token and the words of the ODBC escapes.
  std::set<WideString> scannerWords;
  for (const TmvKeywordEntry& entry : SQL92Scanner::Keywords())
    if (entry.Kind >= SQL92Scanner::kwAVG && entry.Kind <= SQL92Scanner::kwZONE) scannerWords.insert(WideFromAscii(entry.Text));
  EXPECT_EQ(std::set<WideString>(keywords.begin(), keywords.end()), scannerWords);
  // The base has the same list under its own name.
  EXPECT_EQ(*FindKeywordResource("BASESYNTAXPROVIDER_KEYWORDS"), *FindKeywordResource("SQL92SYNTAXPROVIDER_KEYWORDS"));
  EXPECT_EQ(KeywordResourceName("TmvMSSQLCESyntaxProvider"), "MSSQLCESYNTAXPROVIDER_KEYWORDS");
  // A provider without a resource of its own takes its ancestor's.
  TTestBareSyntaxProvider bare;
  EXPECT_EQ(FindKeywordResource(KeywordResourceName(bare.ClassName())), nullptr);
  EXPECT_EQ(bare.GetKeywords(), keywords);
}

TEST_F(SyntaxProviderTest, FieldsQueryTemplates) {
  EXPECT_EQ(provider->GetQueryToLoadFieldsForTable(u"", u"T"), u"select * from T a where 0<>0");
  // Both placeholder forms give the same text.
  provider->SetQueryToLoadFieldsTemplate(u"select {0} from {1} a limit 0");
  const WideString braces = provider->GetQueryToLoadFieldsForView(u"a, b", u"s.v");
  provider->SetQueryToLoadFieldsTemplate(u"select %0:s from %1:s a limit 0");
  EXPECT_EQ(provider->GetQueryToLoadFieldsForView(u"a, b", u"s.v"), braces);
  EXPECT_EQ(braces, u"select a, b from s.v a limit 0");
  // Setting the default text clears the property.
  provider->SetQueryToLoadFieldsTemplate(u"select %0:s from %1:s a where 0<>0");
  EXPECT_EQ(provider->GetQueryToLoadFieldsTemplateProperty(), u"");
  provider->SetAppendLimitsForFieldsQuery(false);
  EXPECT_EQ(provider->GetQueryToLoadFieldsForObject(u"", u"T"), u"select * from T a");
  EXPECT_EQ(provider->GetQueryToLoadFieldsForProcedure(u"x", u"p", u""), u"select x from p() a");
  EXPECT_EQ(provider->GetQueryToLoadFieldsForProcedure(u"x", u"p", u"1, 2"), u"select x from p(1, 2) a");
}

namespace {
class TTestNoBracketsSyntaxProvider : public TmvSQL92SyntaxProvider {
 public:
  bool IsSupportEmptyBracketsInStoredProcs() const override { return false; }
  WideString CreateWrapperForStoredProc(WideStringView call) const override { return u"TABLE(" + WideString(call) + u")"; }
};
}  // namespace

TEST_F(SyntaxProviderTest, AProcedureWithoutParametersMayGoWithoutBrackets) {
  TTestNoBracketsSyntaxProvider p;
  EXPECT_EQ(p.GetQueryToLoadFieldsForProcedure(u"", u"p", u""), u"select * from TABLE(p) a where 0<>0");
  EXPECT_EQ(p.GetQueryToLoadFieldsForProcedure(u"", u"p", u"1"), u"select * from TABLE(p(1)) a where 0<>0");
}

TEST_F(SyntaxProviderTest, ServerVersionDetectionNeedsTheAbility) {
  EXPECT_FALSE(provider->GetDetectServerVersion());
  provider->SetDetectServerVersion(true);
  EXPECT_FALSE(provider->GetDetectServerVersion());
  auto detecting = TmvCreate<TTestDetectingSyntaxProvider>();
  EXPECT_TRUE(detecting->GetDetectServerVersion());  // the default follows the ability
  detecting->DoDetectServerVersion(nullptr, nullptr);
  EXPECT_FALSE(detecting->GetDetectServerVersion());  // detection runs once
  EXPECT_EQ(provider->IsSupportConnectedServer(nullptr, nullptr), scsDontKnow);
}

TEST_F(SyntaxProviderTest, AssignCopiesTheSettings) {
  auto other = TmvCreate<TTestDetectingSyntaxProvider>();
  other->SetIdentCaseSens(icsSensitiveLowerCase);
  other->SetDenyIntoClause(true);
  other->SetAppendLimitsForFieldsQuery(false);
  other->SetDetectServerVersion(true);
  provider->Assign(other.get());
  EXPECT_EQ(provider->GetIdentCaseSens(), icsSensitiveLowerCase);
  EXPECT_TRUE(provider->GetDenyIntoClause());
  EXPECT_FALSE(provider->GetAppendLimitsForFieldsQuery());
  EXPECT_FALSE(provider->GetDetectServerVersion());  // it cannot detect
  EXPECT_THROW(provider->Assign(static_cast<const TmvPersistent*>(&context)), Exception);
}

TEST_F(SyntaxProviderTest, ASettingThatChangesParsingTellsTheContexts) {
  int updates = 0;
  provider->GetOnUpdate().AddHandler(TmvHandlerId::Unique(), [&](TmvObject*) { ++updates; });
  provider->SetIdentCaseSens(icsSensitiveUpperCase);
  provider->SetIdentCaseSens(icsSensitiveUpperCase);  // no change, no notice
  provider->SetDenyIntoClause(true);
  EXPECT_EQ(updates, 2);
  // The parser a provider makes carries the setting.
  auto scanner = provider->CreateScanner();
  auto parser = provider->CreateParser(scanner.get(), &context);
  EXPECT_TRUE(parser->DenyIntoClause);
  EXPECT_EQ(parser->Context, &context);
}

TEST_F(SyntaxProviderTest, LimitsOfTheBase) {
  auto statement = context.ParseSelect(u"SELECT a FROM t");
  WideString offset = u"x", count = u"y";
  EXPECT_FALSE(provider->GetQueryLimits(statement.get(), offset, count));
  EXPECT_EQ(offset, u"x");  // nothing set but the result
  EXPECT_FALSE(provider->IsQueryWithIntoClause(statement.get()));
  EXPECT_EQ(mvtest::ThrownMessage([&] { provider->TransformQueryLimits(statement.get(), u"1", u"2"); }),
            u"This syntax does not support TransformQueryLimits");
}

TEST_F(SyntaxProviderTest, DatesAsLiterals) {
  const TmvDateTime date = EncodeDate(2024, 3, 5);
  const TmvDateTime moment = ComposeDateTime(date, EncodeTime(13, 4, 5, 0));
  EXPECT_EQ(provider->GetDateString(date), u"cast('2024-03-05' as date)");
  EXPECT_EQ(provider->GetTimeString(moment), u"cast('13:04:05' as time)");
  EXPECT_EQ(provider->GetDateTimeString(moment), u"cast('2024-03-05 13:04:05' as timestamp)");
  EXPECT_EQ(provider->GetDateTimeString(date), u"cast('2024-03-05' as date)");
  EXPECT_EQ(provider->QuoteDateLiteral(u"it's"), u"'it''s'");

  TmvDateTime value;
  ASSERT_TRUE(provider->TryParseDate(u"2024-03-05", value));
  EXPECT_EQ(value, date);
  ASSERT_TRUE(provider->TryParseDateTime(u"2024-03-05 13:04:05", value));
  EXPECT_EQ(value, moment);
  ASSERT_TRUE(provider->TryParseTime(u"13:04:05", value));
  EXPECT_EQ(value, EncodeTime(13, 4, 5, 0));
  EXPECT_FALSE(provider->TryParseDate(u"2024-02-30", value));
  EXPECT_FALSE(provider->TryParseTime(u"25:00:00", value));
}

TEST_F(SyntaxProviderTest, ReadingLiteralsBack) {
  auto literal = [&](const char16_t* text) { return context.ParseExpression(text); };
  EXPECT_EQ(provider->GetDate(literal(u"cast('2024-03-05' as date)").get()), u"2024-03-05");
  EXPECT_EQ(provider->GetDate(literal(u"((CAST('2024-03-05' AS DATE)))").get()), u"2024-03-05");
  EXPECT_EQ(provider->GetTime(literal(u"cast('13:04:05' as time)").get()), u"13:04:05");
  EXPECT_EQ(provider->GetDateTime(literal(u"cast('2024-03-05 13:04:05' as timestamp)").get()), u"2024-03-05 13:04:05");
  EXPECT_EQ(provider->GetDateTime(literal(u"cast('2024-03-05' as date)").get()), u"2024-03-05");
  // Not a cast to that type of one string.
  EXPECT_EQ(provider->GetDate(literal(u"cast('2024-03-05' as time)").get()), u"");
  EXPECT_EQ(provider->GetDate(literal(u"cast(d as date)").get()), u"");
  EXPECT_EQ(provider->GetDate(literal(u"'2024-03-05'").get()), u"");
  EXPECT_EQ(TmvBaseSyntaxProvider::GetCastedConstantValue(literal(u"cast('a''b' as char(3))").get(), u"char"), u"");
  EXPECT_EQ(TmvBaseSyntaxProvider::GetCastedConstantValue(literal(u"cast('a''b' as varchar)").get(), u"VarChar"),
            u"a'b");
}

TEST_F(SyntaxProviderTest, TypeNames) {
  EXPECT_TRUE(provider->IsVariablePrecisionType(u"DECIMAL"));
  EXPECT_TRUE(provider->IsVariablePrecisionType(u"numeric"));
  EXPECT_FALSE(provider->IsVariablePrecisionType(u"float"));
  EXPECT_FALSE(provider->IsFixedSizeType(u"VarChar"));
  EXPECT_FALSE(provider->IsFixedSizeType(u"national character varying"));
  EXPECT_FALSE(provider->IsFixedSizeType(u"national chararacter"));
  // The correctly spelled name is not in the list of the ANSI providers.
  EXPECT_TRUE(provider->IsFixedSizeType(u"national character"));
  EXPECT_TRUE(provider->IsFixedSizeType(u"integer"));
}

TEST_F(SyntaxProviderTest, TheProvidersList) {
  InitializeEngine();  // again: nothing changes
  TmvSyntaxProvidersList& list = SyntaxProvidersList();
  ASSERT_GE(list.Count(), 1);
  EXPECT_EQ(&list.Items(0), &TmvSQL92SyntaxProvider::ProviderClass());
  EXPECT_EQ(list.FindClassByClassName("tmvsql92syntaxprovider"), &TmvSQL92SyntaxProvider::ProviderClass());
  EXPECT_EQ(list.FindClassByClassName("TmvNoSuchSyntaxProvider"), nullptr);
  const int count = list.Count();
  list.RegisterSyntaxProvider(TmvSQL92SyntaxProvider::ProviderClass());
  EXPECT_EQ(list.Count(), count);
  EXPECT_THROW(list.Items(count), EListError);
  // A class from the list makes a working provider.
  TmvOwned<TmvBaseSyntaxProvider> made(list.Items(0).CreateRaw());
  EXPECT_EQ(made->ClassName(), "TmvSQL92SyntaxProvider");
  EXPECT_EQ(made->ServerName(), u"ANSI SQL92");
}
