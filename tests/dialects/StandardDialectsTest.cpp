// The SQL-89, SQL-2003 and universal dialects: the size of their grammars,
// what each reads and refuses, that what it reads prints back to text it
// reads to the same print, and the universal provider's server descriptors.
#include <gtest/gtest.h>

#include "SQL2003Pars.h"
#include "SQL2003Scan.h"
#include "SQL89Pars.h"
#include "SQL92Pars.h"
#include "SQL92Scan.h"
#include "Thrown.h"
#include "UniversalPars.h"
#include "dialects/EngineInit.h"
#include "dialects/matrix/CapabilityMatrix.h"
#include "dialects/sql2003/SQL2003SyntaxProvider.h"
#include "dialects/sql89/SQL89SyntaxProvider.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "dialects/universal/UniversalSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNamesList.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

class StandardDialectsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { InitializeEngine(); }

  // A new provider of the dialect of that short name.
  static TmvOwned<TmvBaseSyntaxProvider> Provider(const char* className) {
    return TmvOwned<TmvBaseSyntaxProvider>(SyntaxProvidersList().FindClassByClassName(className)->CreateRaw());
  }

  // The one-line print of `text` under the provider, or "error: ..." when
  // it does not parse.
  static std::string Print(TmvBaseSyntaxProvider& provider, const std::string& text) {
    TmvBaseSQLContext context;
    context.SetSyntaxProvider(&provider);
    std::string result;
    try {
      TSQLBuilderFast builder;
      result = UTF8Encode(context.ParseSelect(UTF8Decode(text))->SimpleSQL(builder));
    } catch (const EmvSQLError& error) {
      result = "error: " + UTF8Encode(error.Message());
    }
    context.SetSyntaxProvider(nullptr);
    return result;
  }
};

}  // namespace

TEST_F(StandardDialectsTest, GrammarSizes) {
  // Rule pairs (the goal rule included) and repetitions of each parser, and
  // the keywords and noSym of the scanners whose word lists the dialect
  // gives in full.
  struct Size {
    const char* parser;
    int rules, rulesExpected, iterations, iterationsExpected;
  };
  const Size sizes[] = {
      {"SQL92Parser", SQL92Parser::RuleCount, 58, SQL92Parser::IterCount, 15},
      {"SQL89Parser", SQL89Parser::RuleCount, 46, SQL89Parser::IterCount, 14},
      {"SQL2003Parser", SQL2003Parser::RuleCount, 91, SQL2003Parser::IterCount, 18},
      {"UNIVERSALParser", UNIVERSALParser::RuleCount, 53, UNIVERSALParser::IterCount, 15},
  };
  for (const Size& size : sizes) {
    EXPECT_EQ(size.rules, size.rulesExpected) << size.parser;
    EXPECT_EQ(size.iterations, size.iterationsExpected) << size.parser;
  }
  EXPECT_EQ(SQL92Scanner::KeywordCount, 233);
  EXPECT_EQ(SQL92Scanner::NoSym, 271);
  EXPECT_EQ(SQL2003Scanner::KeywordCount, 306);
  EXPECT_EQ(SQL2003Scanner::NoSym, 344);
}

TEST_F(StandardDialectsTest, WhatEachDialectReads) {
  // Each text either is refused (a syntax error) or parses, and then its
  // print holds the given part and parses again to the same print.
  constexpr const char* kRefused = nullptr;
  struct Case {
    const char* dialect;
    const char* text;
    const char* printHolds;
  };
  const Case cases[] = {
      {"TmvSQL89SyntaxProvider", "select a as b from t, u", "a As b From t, u"},
      {"TmvSQL89SyntaxProvider", "select * from a inner join b on a.x = b.x", kRefused},
      {"TmvSQL89SyntaxProvider", "select extract(year from d) from t", kRefused},
      {"TmvSQL89SyntaxProvider", "select cast(a as char(3)), user from t", "Cast(a As Char(3)), User"},
      {"TmvSQL89SyntaxProvider", "select cast(a as varchar(3)) from t", kRefused},
      // No keyword there: a column of that name.
      {"TmvSQL89SyntaxProvider", "select current_date from t", "current_date"},
      {"TmvSQL2003SyntaxProvider", "select * from t where a !> 1", kRefused},
      {"TmvSQL2003SyntaxProvider", "select * from t where a <> 1", "a <> 1"},
      {"TmvSQL2003SyntaxProvider", "with c (x) as (select 1 from t) select x from c order by x desc nulls last",
       "Nulls Last"},
      {"TmvSQL2003SyntaxProvider", "select * from table(f(1)) a", "Table(f(1)) a"},
      {"TmvSQL2003SyntaxProvider", "select * from f(1) a", kRefused},
      {"TmvSQL2003SyntaxProvider", "select * from (select 1 from t) s (x)", "s(x)"},
      {"TmvSQL2003SyntaxProvider", "select a > 1 or b from t where (a, b) overlaps (c, d)", "Overlaps"},
      {"TmvSQL2003SyntaxProvider", "select n'x', x'1f', u&'y', true, localtimestamp from t", "n'x', x'1f', u&'y'"},
      // No hexadecimal literal: the integer 0 and the name x1f.
      {"TmvSQL2003SyntaxProvider", "select 0x1f from t", "0 x1f"},
      // TRUE is a constant where one may stand: a name so spelled keeps its quotes.
      {"TmvSQL2003SyntaxProvider", "select \"true\", true from t", "\"true\", True"},
      {"TmvSQL2003SyntaxProvider", "select cast(a as time(3) wthout time zone) from t", "Wthout Time Zone"},
      {"TmvSQL2003SyntaxProvider", "select cast(a as time without time zone) from t", kRefused},
      {"TmvSQL2003SyntaxProvider", "select cast(a as character varying(10 octets) collate x), interval - '1' day from t",
       "Octets"},
      {"TmvSQL2003SyntaxProvider", "select cast(a as row(x int, y blob(2 k))) from t", "Row("},
      {"TmvSQL2003SyntaxProvider", "select cast(a as ref(t) scope module), cast(b as nchar large object) from t",
       "Scope"},
      {"TmvSQL2003SyntaxProvider", "select cast(b as national char large object) from t", kRefused},
      {"TmvUniversalSyntaxProvider", "select [a b], `c`, \"d\", #t.e from #t where x = @p and y = :q", "@p"},
      {"TmvUniversalSyntaxProvider", "select left(a, 2), substring(a from 1 for 2), iif(a > b, 1, 2) from t",
       "SubString(a From 1 For 2"},
      {"TmvUniversalSyntaxProvider", "select count(*), a from t inner join u on t.x = u.x", "Inner Join"},
      {"TmvUniversalSyntaxProvider", "select date '2001-01-01' from t", kRefused},
      // A name that starts with a quote keeps quotes.
      {"TmvUniversalSyntaxProvider", "select ```ab`, \"[c\" from t", "[`ab], [[c]"},
      {"TmvUniversalSyntaxProvider", "select extract(year from d) from t", kRefused},
  };
  for (const Case& c : cases) {
    TmvOwned<TmvBaseSyntaxProvider> provider = Provider(c.dialect);
    const std::string print = Print(*provider, c.text);
    if (!c.printHolds) {
      EXPECT_EQ(print.rfind("error", 0), 0u) << c.dialect << ": " << c.text << " gave " << print;
      continue;
    }
    EXPECT_NE(print.find(c.printHolds), std::string::npos) << c.dialect << ": " << c.text << " gave " << print;
    EXPECT_EQ(Print(*provider, print), print) << c.dialect << ": the print of " << c.text;
  }
}

TEST_F(StandardDialectsTest, TextsAndListsOfTheProviders) {
  struct Texts {
    const char* className;
    const char16_t* serverName;
    TmvIdentCaseSensitivity caseSens;
    size_t keywords, builtins, unionOperators;
  };
  // The universal provider's case and quotes are those of its first
  // descriptor, SQL Server's.
  const Texts texts[] = {
      {"TmvSQL89SyntaxProvider", u"ANSI SQL89", icsSensitiveUpperCase, 226, 0, 2},
      {"TmvSQL2003SyntaxProvider", u"ANSI SQL2003", icsNonSensitive, 300, 31, 4},
      {"TmvUniversalSyntaxProvider", u"Universal Syntax", icsNonSensitive, 226, 16, 4},
  };
  TmvBaseSQLContext context;
  for (const Texts& t : texts) {
    TmvOwned<TmvBaseSyntaxProvider> provider = Provider(t.className);
    EXPECT_EQ(provider->ServerName(), t.serverName);
    EXPECT_EQ(provider->GetIdentCaseSens(), t.caseSens) << t.className;
    EXPECT_EQ(provider->GetKeywords().size(), t.keywords) << t.className;
    TSQLQualifiedNamesList names(&context, true);
    provider->GetBuiltinFunctionNames(names);
    EXPECT_EQ(static_cast<size_t>(names.Count()), t.builtins) << t.className;
    std::vector<WideString> unions;
    provider->GetUnionOperatorsList(unions);
    EXPECT_EQ(unions.size(), t.unionOperators) << t.className;
    // The words come back in their listed spelling whatever case they are asked in.
    for (const WideString& op : unions) EXPECT_EQ(provider->NormalizeUnionOperator(WideUpperCase(op)), op);
    EXPECT_FALSE(provider->IsFixedSizeType(u"national chararacter")) << t.className;
    EXPECT_TRUE(provider->IsFixedSizeType(u"national character")) << t.className;
  }
  TmvSQL2003SyntaxProvider sql2003;
  EXPECT_EQ(sql2003.CreateWrapperForStoredProc(u"p(1)"), u"TABLE(p(1))");
}

TEST_F(StandardDialectsTest, TheUniversalProviderAnswersByItsDescriptor) {
  // Per server: the case of names, the five answers the descriptor gives
  // (force binary joins, cross join, universal expressions, databases,
  // schemas) and the opening quote.
  struct Server {
    TmvUniversalSyntaxServerType type;
    TmvIdentCaseSensitivity caseSens;
    const char* answers;
    const char16_t* quote;
  };
  const Server servers[] = {
      {ustMSSQL, icsNonSensitive, "FTFTT", u"["},         {ustMSAccess, icsNonSensitive, "TFTFF", u"["},
      {ustMySQL, icsSensitiveUpperCase, "FTTTF", u"`"},   {ustOracle, icsSensitiveUpperCase, "FTFFT", u"\""},
      {ustPostgreSQL, icsSensitiveLowerCase, "FTTTT", u"\""}, {ustFirebird, icsSensitiveUpperCase, "FFFFF", u"\""},
      {ustInterbase, icsSensitiveUpperCase, "FFFFF", u"\""}, {ustDB2, icsSensitiveUpperCase, "FTFTT", u"\""},
      {ustSybase, icsNonSensitive, "FTFTT", u"["},        {ustInformix, icsSensitiveUpperCase, "FTFTT", u"\""},
      {ustSQLite, icsSensitiveUpperCase, "FTFFF", u"\""}, {ustUnknown, icsNonSensitive, "FTFTT", u"\""},
  };
  TmvUniversalSyntaxProvider provider;
  EXPECT_EQ(provider.GetUsedServer(), ustMSSQL);
  for (const Server& server : servers) {
    provider.SetUsedServer(server.type);
    std::string answers;
    for (TmvCapability c : {TmvCapability::IsForceBinaryANSIJoins, TmvCapability::IsSupportCrossJoin,
                            TmvCapability::IsUniversalExpressions, TmvCapability::IsSupportDatabases,
                            TmvCapability::IsSupportSchemas})
      answers += AskCapability(provider, c) ? 'T' : 'F';
    EXPECT_EQ(answers, server.answers) << int(server.type);
    EXPECT_EQ(provider.GetIdentCaseSens(), server.caseSens) << int(server.type);
    EXPECT_EQ(provider.GetQuoteBegin(), server.quote) << int(server.type);
    // The stored value is never consulted.
    provider.SetIdentCaseSens(icsSensitiveLowerCase);
    EXPECT_EQ(provider.GetIdentCaseSens(), server.caseSens);
  }
  EXPECT_EQ(mvtest::ThrownMessage([&] { provider.SetUsedServer(TmvUniversalSyntaxServerType(99)); }),
            u"TmvUniversalSyntaxProvider.FindServerDescriptorByServerType: unknown server type");
}

TEST_F(StandardDialectsTest, TheUniversalProviderChoosesItsServer) {
  TmvUniversalSyntaxProvider provider;
  TmvBaseSQLContext context;
  // Without a connection the preferred server is the detected one.
  provider.SetPreferredServer(ustOracle);
  EXPECT_EQ(provider.GetUsedServer(), ustMSSQL);
  EXPECT_EQ(provider.DetectServer(&context, nullptr), ustOracle);
  // With detection off, listing the objects takes the preferred server, and
  // the base then finds no metadata provider.
  provider.SetAutoDetectServer(false);
  EXPECT_THROW(provider.LoadMetadataObjects(&context, nullptr, nullptr, nullptr, nullptr), Exception);
  EXPECT_EQ(provider.GetUsedServer(), ustOracle);
  // Assign takes both servers along.
  TmvUniversalSyntaxProvider copy;
  copy.Assign(&provider);
  EXPECT_EQ(copy.GetPreferredServer(), ustOracle);
  EXPECT_EQ(copy.GetUsedServer(), ustOracle);
  // The built-in names are the property's, which a host may change.
  provider.SetBuiltinFunctionNames({u"IsNull"});
  TSQLQualifiedNamesList names(&context, true);
  provider.GetBuiltinFunctionNames(names);
  ASSERT_EQ(names.Count(), 1);
  EXPECT_EQ(names.Items(0)->GetQualifiedName(), u"IsNull");
}

TEST_F(StandardDialectsTest, TheAutomaticProviderForwardsToWhatItDetected) {
  TmvAutoSyntaxProvider automatic;
  // Before any connection: the shared universal provider, with its first
  // descriptor's quotes, and the universal grammar.
  EXPECT_FALSE(automatic.IsSyntaxProviderDetected());
  EXPECT_EQ(automatic.GetQuoteBegin(), u"[");
  EXPECT_NE(Print(automatic, "select [a] from t where x = @p").rfind("error", 0), 0u);
  // Without a connected metadata provider nothing is detected.
  TmvBaseSQLContext context;
  EXPECT_THROW(automatic.LoadMetadataObjects(&context, nullptr, nullptr, nullptr, nullptr), Exception);
  EXPECT_FALSE(automatic.IsSyntaxProviderDetected());
  // A detection that finds no provider leaves a universal provider for an
  // unknown server, and counts as done.
  automatic.DetectSyntaxProvider(&context, nullptr);
  EXPECT_TRUE(automatic.IsSyntaxProviderDetected());
  EXPECT_EQ(automatic.GetSyntaxProviderInternalClass(), &TmvUniversalSyntaxProvider::ProviderClass());
  EXPECT_EQ(automatic.GetQuoteBegin(), u"\"");
  EXPECT_EQ(automatic.GetIdentCaseSens(), icsNonSensitive);
  // Every answer is the inner provider's, whichever it is.
  for (const TmvSyntaxProviderClass* c : SyntaxProvidersList().Classes()) {
    if (c == &TmvAutoSyntaxProvider::ProviderClass()) continue;
    automatic.SetSyntaxProviderInternalClass(c);
    const TmvBaseSyntaxProvider& inner = *automatic.GetSyntaxProviderInternal();
    EXPECT_EQ(inner.ClassName(), c->ClassName());
    for (int i = 0; i < kCapabilityCount; ++i)
      EXPECT_EQ(AskCapability(automatic, TmvCapability(i)), AskCapability(inner, TmvCapability(i)))
          << c->ClassName() << " " << CapabilityName(TmvCapability(i));
    EXPECT_EQ(&automatic.GetParserClass(), &inner.GetParserClass());
    EXPECT_EQ(automatic.GetKeywords(), inner.GetKeywords());
    EXPECT_EQ(automatic.ServerName(), inner.ServerName());
  }
  automatic.SetSyntaxProviderInternalClass(nullptr);
  EXPECT_FALSE(automatic.IsSyntaxProviderDetected());
}
