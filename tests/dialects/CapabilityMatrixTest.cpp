// The conditional answers of the capability matrix: a provider built on a
// row of the matrix answers as its settings (server version, properties)
// say, and its union operators and separator follow them too. The rows of
// dialects this build lacks are driven through a stand-in provider.
#include <gtest/gtest.h>

#include <map>

#include "SQL92Pars.h"
#include "SQL92Scan.h"
#include "dialects/matrix/MatrixSyntaxProvider.h"
#include "support/Exceptions.h"

using namespace mv;

namespace {

// A provider on any row of the matrix whose settings a test sets.
class TTestMatrixProvider : public TmvMatrixSyntaxProvider {
 public:
  explicit TTestMatrixProvider(const char* className) : TmvMatrixSyntaxProvider(className) {}
  const TmvScannerClass& GetScannerClass() const override { return SQL92Scanner::ScannerClass(); }
  const TmvParserClass& GetParserClass() const override { return SQL92Parser::ParserClass(); }
  std::vector<int32_t> GetStringTokenIds() const override { return {SQL92Scanner::tkStringToken}; }
  int CapabilitySetting(TmvCapabilitySetting setting) const override {
    auto it = settings.find(setting);
    return it == settings.end() ? 0 : it->second;
  }
  std::map<TmvCapabilitySetting, int> settings;
};

std::string Unions(const TmvBaseSyntaxProvider& provider) {
  std::vector<WideString> list;
  provider.GetUnionOperatorsList(list);
  std::string text;
  for (const WideString& op : list) text += (text.empty() ? "" : ",") + UTF8Encode(op);
  return text;
}

}  // namespace

TEST(CapabilityMatrix, ConditionalAnswersFollowTheSettings) {
  using S = TmvCapabilitySetting;
  using C = TmvCapability;
  struct Case {
    const char* className;
    S setting;
    int value;
    C capability;
    bool answer;
  };
  // Versions are the ordinals of each provider's enumeration (SQL Server:
  // Auto, 7, 2000, 2005, ...; Oracle 7 to 11; Firebird 1, 1.5, 2, 2.5; JET 3,
  // 4; Sybase ASA, ASE) or MySQL's version number.
  const Case cases[] = {
      {"TmvMSSQLSyntaxProvider", S::ServerVersion, 0, C::IsSupportTransactSQLJoins, false},
      {"TmvMSSQLSyntaxProvider", S::ServerVersion, 2, C::IsSupportTransactSQLJoins, true},
      {"TmvMSSQLSyntaxProvider", S::ServerVersion, 3, C::IsSupportTransactSQLJoins, false},
      {"TmvMSSQLSyntaxProvider", S::ServerVersion, 2, C::IsSupportLimitOffset, false},
      {"TmvMSSQLSyntaxProvider", S::ServerVersion, 3, C::IsSupportLimitOffset, true},
      // Compact Edition takes the letter of SQL Server, decided by its own version.
      {"TmvMSSQLCESyntaxProvider", S::ServerVersion, 0, C::IsSupportLimitOffset, false},
      {"TmvMSSQLCESyntaxProvider", S::ServerVersion, 6, C::IsSupportLimitOffset, true},
      {"TmvOracleSyntaxProvider", S::ServerVersion, 1, C::IsSupportCrossJoin, false},
      {"TmvOracleSyntaxProvider", S::ServerVersion, 2, C::IsSupportCTE, true},
      {"TmvFirebirdSyntaxProvider", S::ServerVersion, 1, C::IsSupportDerivedTables, false},
      {"TmvFirebirdSyntaxProvider", S::ServerVersion, 1, C::IsSupportNullOrdering, true},
      {"TmvFirebirdSyntaxProvider", S::ServerVersion, 0, C::IsSupportNullOrdering, false},
      {"TmvMSAccessSyntaxProvider", S::ServerVersion, 0, C::IsSupportDerivedTables, false},
      {"TmvMSAccessSyntaxProvider", S::BracketsInComplexJoinMandatory, 1, C::IsBracketsInComplexJoinMandatory, true},
      {"TmvMYSQLSyntaxProvider", S::ServerVersion, 40100, C::IsSupportDerivedTables, false},
      {"TmvMYSQLSyntaxProvider", S::ServerVersion, 40100, C::IsSupportSubQueryDerivedTables, true},
      {"TmvMYSQLSyntaxProvider", S::ServerVersion, 40101, C::IsSupportDerivedTables, true},
      {"TmvMYSQLSyntaxProvider", S::ServerVersion, 39999, C::IsSupportUnions, false},
      {"TmvMYSQLSyntaxProvider", S::ServerVersion, 50009, C::IsSupportViews, false},
      {"TmvSybaseSyntaxProvider", S::ServerVersion, 1, C::IsSupportCTE, false},
      {"TmvDB2SyntaxProvider", S::NamingConvention, 1, C::GetUseObjectNamesAsDefaultAliases, true},
  };
  for (const Case& c : cases) {
    TTestMatrixProvider provider(c.className);
    provider.settings[c.setting] = c.value;
    EXPECT_EQ(AskCapability(provider, c.capability), c.answer)
        << c.className << " at " << c.value << ": " << CapabilityName(c.capability);
  }
}

TEST(CapabilityMatrix, TextsThatFollowTheSettings) {
  TTestMatrixProvider mssql("TmvMSSQLSyntaxProvider");
  EXPECT_EQ(Unions(mssql), "Union,Union All");
  mssql.settings[TmvCapabilitySetting::ServerVersion] = 3;
  EXPECT_EQ(Unions(mssql), "Union,Union All,Except,Intersect");
  TTestMatrixProvider sybase("TmvSybaseSyntaxProvider");
  EXPECT_EQ(Unions(sybase), "Union,Union All,Except,Intersect");
  // Access and Sybase keep their case whatever is set.
  sybase.SetIdentCaseSens(icsSensitiveUpperCase);
  EXPECT_EQ(sybase.GetIdentCaseSens(), icsNonSensitive);
  TTestMatrixProvider db2("TmvDB2SyntaxProvider");
  EXPECT_EQ(db2.GetObjectNameSeparator(), u".");
  db2.settings[TmvCapabilitySetting::NamingConvention] = 1;
  EXPECT_EQ(db2.GetObjectNameSeparator(), u"/");
  EXPECT_EQ(db2.GetSimpleEmptyFromSubquery(), u"(SELECT NULL FROM SYSIBM.SYSDUMMY1)");
  EXPECT_EQ(TTestMatrixProvider("TmvMSAccessSyntaxProvider").GetUpperCaseFunctionName(), u"UCase");
  EXPECT_EQ(TTestMatrixProvider("TmvOracleSyntaxProvider").GetQueryToLoadFieldsTemplate(),
            u"select {0} from {1} a where rownum<0");
  EXPECT_EQ(Unions(TTestMatrixProvider("TmvOracleSyntaxProvider")), "Union,Union All,Intersect,Minus");
  // Every row's operators come back in their listed spelling.
  for (const TmvCapabilityRow& row : CapabilityRows()) {
    TTestMatrixProvider provider(row.className);
    std::vector<WideString> list;
    provider.GetUnionOperatorsList(list);
    for (const WideString& op : list) EXPECT_EQ(provider.NormalizeUnionOperator(WideUpperCase(op)), op);
  }
  EXPECT_THROW(TTestMatrixProvider("TmvNoSuchSyntaxProvider"), EmvQueryBuilderError);
}
