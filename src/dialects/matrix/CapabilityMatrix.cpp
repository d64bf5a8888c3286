#include "dialects/matrix/CapabilityMatrix.h"

#include "support/WideString.h"

namespace mv {

namespace {

using S = TmvCapabilitySetting;

constexpr TmvCapabilityAnswer From(S setting, int value) { return {setting, value, 1 << 30}; }
constexpr TmvCapabilityAnswer Exactly(S setting, int value) { return {setting, value, value}; }

constexpr TmvCapabilityAnswer T = {S::Fixed, 1, 1};
constexpr TmvCapabilityAnswer F = {S::Fixed, 0, 0};
constexpr TmvCapabilityAnswer kNever = F;

// Ordinals of the providers' version enumerations, in their order.
enum { kMSSQLAuto, kMSSQL7, kMSSQL2000, kMSSQL2005, kMSSQL2008, kMSSQL2012, kMSSQL2014 };
enum { kOracle7, kOracle8, kOracle9, kOracle10, kOracle11 };
enum { kFirebird1, kFirebird1_5, kFirebird2, kFirebird2_5 };
enum { kJet3, kJet4 };
enum { kSybaseASAVersion, kSybaseASEVersion };
enum { kSqlNaming, kSystemNamingConvention };

// The conditional answers: SQL Server 7 and 2000 only, or from 2005 on; Oracle
// from 9 on; Firebird from 2 and from 1.5 on; Access from JET 4 on; the
// property BracketsInComplexJoinMandatory; MySQL version numbers (major, two
// digits of minor, two of release); Sybase ASA; DB2's system naming; and what
// the universal provider's server descriptor answers.
constexpr TmvCapabilityAnswer kMSSQL7Or2000 = {S::ServerVersion, kMSSQL7, kMSSQL2000};
constexpr TmvCapabilityAnswer kFromMSSQL2005 = From(S::ServerVersion, kMSSQL2005);
constexpr TmvCapabilityAnswer kFromOracle9 = From(S::ServerVersion, kOracle9);
constexpr TmvCapabilityAnswer kFromFirebird2 = From(S::ServerVersion, kFirebird2);
constexpr TmvCapabilityAnswer kFromFirebird1_5 = From(S::ServerVersion, kFirebird1_5);
constexpr TmvCapabilityAnswer kFromJet4 = From(S::ServerVersion, kJet4);
constexpr TmvCapabilityAnswer kBracketsProperty = Exactly(S::BracketsInComplexJoinMandatory, 1);
constexpr TmvCapabilityAnswer kFromMySQL50010 = From(S::ServerVersion, 50010);
constexpr TmvCapabilityAnswer kFromMySQL40000 = From(S::ServerVersion, 40000);
constexpr TmvCapabilityAnswer kAboveMySQL40100 = From(S::ServerVersion, 40101);
constexpr TmvCapabilityAnswer kFromMySQL40100 = From(S::ServerVersion, 40100);
constexpr TmvCapabilityAnswer kSybaseASA = Exactly(S::ServerVersion, kSybaseASAVersion);
constexpr TmvCapabilityAnswer kSystemNaming = Exactly(S::NamingConvention, kSystemNamingConvention);
constexpr TmvCapabilityAnswer kDescriptor = {S::Descriptor, 0, 0};

constexpr int kProviderCount = 20;

// The answers: one line per operation, one column per provider class in the
// order of kRows (92 89 03 MS CE OR MY PG IB FB D2 IF AC SB SL TD NZ AD MI UN).
constexpr TmvCapabilityAnswer kAnswers[kCapabilityCount][kProviderCount] = {
    /* IsSupportANSIJoins */
    {T, F, T, T, T, kFromOracle9, T, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsForceBinaryANSIJoins */
    {F, F, F, F, F, F, F, F, F, F, F, F, T, F, F, F, F, F, F, kDescriptor},
    /* IsBracketsInComplexJoinMandatory */
    {F, F, F, F, F, F, F, F, F, F, F, F, kBracketsProperty, F, F, F, F, F, F, F},
    /* IsSupportOracleJoins */
    {F, F, F, F, F, T, F, F, F, F, F, F, F, F, F, F, F, F, F, F},
    /* IsSupportTransactSQLJoins */
    {F, F, F, kMSSQL7Or2000, F, F, F, F, F, F, F, F, F, T, F, F, F, F, F, F},
    /* IsSupportCrossJoin */
    {T, F, T, T, T, kFromOracle9, T, T, F, F, T, T, F, T, T, T, T, T, T, kDescriptor},
    /* IsSupportLeftANSIJoin */
    {T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportRightANSIJoin */
    {T, T, T, T, T, T, T, T, T, T, T, T, T, T, F, T, T, T, T, T},
    /* IsSupportFullANSIJoin */
    {T, T, T, T, T, T, T, T, T, T, T, T, F, T, F, T, T, T, T, T},
    /* IsUniversalExpressions */
    {F, F, T, F, F, F, T, T, F, F, F, F, T, F, T, F, T, F, F, kDescriptor},
    /* IsSupportAllTableFieldsSelection */
    {T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportOrderByAlias */
    {T, T, T, T, T, T, T, T, T, kFromFirebird2, T, T, F, T, T, T, T, T, T, T},
    /* IsSupportViews */
    {T, T, T, T, F, T, kFromMySQL50010, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportProcedures */
    {F, F, F, T, F, kFromOracle9, F, F, T, T, F, F, F, T, F, T, F, F, F, T},
    /* IsSupportSynonyms */
    {F, F, F, F, F, T, F, F, F, F, F, F, F, F, F, F, F, F, F, T},
    /* IsSupportUnions */
    {T, T, T, T, T, T, kFromMySQL40000, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportBracketsInUnions */
    {T, T, T, T, T, T, F, T, F, F, T, T, T, T, F, T, T, T, T, T},
    /* IsSupportDerivedTables */
    {T, T, T, T, T, T, kAboveMySQL40100, T, F, kFromFirebird2, T, F, kFromJet4, T, T, T, T, T, T, T},
    /* IsSupportCTE */
    {F, F, T, T, F, kFromOracle9, F, T, F, T, T, F, F, kSybaseASA, T, T, T, F, F, F},
    /* IsCTEColumnNamesMandatory */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, T, F, F, F, F},
    /* IsSupportRecursiveCTE */
    {T, T, T, T, T, F, T, T, T, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportNullOrdering */
    {F, F, T, F, F, T, F, T, F, kFromFirebird1_5, T, F, F, F, F, F, T, F, F, F},
    /* IsSupportGroupByStar */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F},
    /* IsSupportGroupByAlias */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F},
    /* IsSupportSubQueryUnions */
    {T, T, T, T, T, T, kFromMySQL40000, T, F, T, T, T, T, T, T, T, T, T, T, T},
    /* IsSupportSubQueryBracketsInUnions */
    {T, T, T, T, T, T, F, T, F, F, T, T, T, T, F, T, T, T, T, T},
    /* IsSupportSubQueryDerivedTables */
    {T, T, T, T, T, T, kFromMySQL40100, T, F, kFromFirebird2, T, F, T, T, T, T, T, T, T, T},
    /* IsSupportSubQueryCTE */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, T, F, F, F, F, F},
    /* IsSupportDatabases */
    {T, T, T, T, F, F, T, T, F, F, T, T, F, T, T, F, T, T, T, kDescriptor},
    /* IsSupportSchemas */
    {T, T, T, T, F, T, F, T, F, F, T, T, F, T, F, T, T, F, T, kDescriptor},
    /* IsSupportEmptyBracketsInStoredProcs */
    {T, T, T, T, T, T, T, T, F, F, T, T, T, T, T, T, T, T, T, T},
    /* IsOuterKeywordInLinksMandatory */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, T},
    /* IsInnerKeywordInLinksMandatory */
    {T, T, T, F, F, T, F, T, F, F, T, T, T, T, T, F, T, T, T, T},
    /* IsAsKeywordInExpressionAliasMandatory */
    {F, F, F, F, F, F, F, T, F, F, F, F, T, F, F, F, T, F, F, T},
    /* IsAsKeywordInObjectAliasMandatory */
    {F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F, F},
    /* IsFromClauseMandatory */
    {F, F, F, F, F, T, F, F, F, F, T, F, F, F, F, F, F, F, F, F},
    /* GetUseObjectNamesAsDefaultAliases */
    {F, F, F, F, F, F, F, F, F, F, kSystemNaming, F, F, F, F, F, F, F, F, F},
    /* IsSupportLimitOffset */
    {F, F, F, kFromMSSQL2005, kFromMSSQL2005, T, T, T, T, T, T, T, F, F, T, F, T, T, F, F},
    /* IsSupportLimitCount */
    {F, F, F, T, T, T, T, T, T, T, T, T, T, T, T, F, T, T, F, F},
    /* CanDetectServerVersion */
    {F, F, F, T, F, T, T, F, F, F, F, T, F, T, F, F, F, F, F, F},
};

constexpr const char16_t* kAnsiAggregates = u"Avg,Count,Max,Min,Sum";
constexpr const char16_t* kWhereTemplate = u"select %0:s from %1:s a where 0<>0";
constexpr const char* kAnsiComparisons = "=,>,>=,<,<=,<>";
constexpr const char* kTransactSQLComparisons = "=,<,<=,>,>=,<>,!=,!>,!<";
constexpr const char* kInterbaseComparisons = "=,<,>,<=,>=,!<,!>,<>,!=";
constexpr const char16_t* kUnion = u"Union,Union All";
constexpr const char16_t* kUnionExceptIntersect = u"Union,Union All,Except,Intersect";
constexpr const char16_t* kUnionAllForms = u"Union,Union All,Except,Except All,Intersect,Intersect All";
constexpr const char16_t* kExceptIntersect = u"Except,Intersect";
constexpr const char16_t* kMSSQLPrefixed = u"Avg,Count,Count_Big,Checksum_Agg,Max,Min,Sum,StDev,StDevP,Var,VarP";
constexpr const char16_t* kPostgreSQLPrefixed = u"Avg,Bit_And,Bit_Or,Bool_And,Bool_Or,Count,Every,Max,Min,StdDev,Sum,Variance";
constexpr const char16_t* kPostgreSQLMultiParam =
    u"Corr,Covar_Pop,Covar_Samp,Regr_AvgX,Regr_AvgY,Regr_Count,Regr_Intercept,Regr_R2,Regr_Slope,Regr_SXX,"
    u"Regr_SXY,Regr_SYY,String_Agg";
constexpr const char* kPostgreSQLComparisons = "=,>,<,>=,<=,<>,!=,~~,~~*,!~~,!~~*,~,~*,!~,!~*";

// Fields: class, column, server name, quotes, separator, other separator and
// when, case, fixed, by descriptor, fields template, empty FROM sub-query,
// upper-case function, comparison operators, union operators, more union
// operators and when, aggregates: star, one parameter, one parameter with a
// prefix, several parameters.
constexpr TmvCapabilityRow kRows[kProviderCount] = {
    {"TmvSQL92SyntaxProvider", "92", u"ANSI SQL92", u"\"", u"\"", u".", nullptr, kNever, icsNonSensitive, false, false,
     kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnionExceptIntersect, nullptr, kNever, u"Count",
     u"", kAnsiAggregates, u""},
    {"TmvSQL89SyntaxProvider", "89", u"ANSI SQL89", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveUpperCase, false,
     false, kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnion, nullptr, kNever, u"Count", u"",
     kAnsiAggregates, u""},
    {"TmvSQL2003SyntaxProvider", "03", u"ANSI SQL2003", u"\"", u"\"", u".", nullptr, kNever, icsNonSensitive, false,
     false, kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnionExceptIntersect, nullptr, kNever,
     u"Count", u"", kAnsiAggregates, u""},
    {"TmvMSSQLSyntaxProvider", "MS", u"MS SQL Server", u"[", u"]", u".", nullptr, kNever, icsNonSensitive, false,
     false, u"select top 0 {0} from {1} a", u"(SELECT NULL)", u"upper", kTransactSQLComparisons, kUnion,
     kExceptIntersect, kFromMSSQL2005, u"Count,Count_Big", u"", kMSSQLPrefixed, u""},
    {"TmvMSSQLCESyntaxProvider", "CE", u"MS SQL Server Compact Edition", u"[", u"]", u".", nullptr, kNever,
     icsNonSensitive, false, false, u"select top (1) {0} from {1} a", u"(SELECT NULL)", u"upper",
     kTransactSQLComparisons, kUnion, kExceptIntersect, kFromMSSQL2005, u"Count,Count_Big", u"", kMSSQLPrefixed,
     u""},
    {"TmvOracleSyntaxProvider", "OR", u"Oracle", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveUpperCase, false,
     false, u"select {0} from {1} a where rownum<0", u"(SELECT NULL FROM DUAL)", u"upper", kTransactSQLComparisons,
     u"Union,Union All,Intersect,Minus", nullptr, kNever, u"Count",
     u"Grouping,Grouping_Id,Median,Stats_Mode,StdDev_Pop,StdDev_Samp,Sys_XmlAgg,Var_Pop,Var_Samp,XmlAgg",
     u"Avg,Collect,Count,Max,Min,StdDev,Sum,Variance", u""},
    {"TmvMYSQLSyntaxProvider", "MY", u"MySQL", u"`", u"`", u".", nullptr, kNever, icsNonSensitive, false, false,
     u"select {0} from {1} a limit 0", u"(SELECT NULL)", u"upper", "=,<=>,<,<=,>,>=,<>,!=", kUnion, nullptr, kNever,
     u"Count", u"Bit_And,Bit_Or,Bit_XOr,Std,StdDev,StdDev_Pop,StdDev_Samp,Var_Pop,Var_Samp,Variance",
     u"Avg,Count,Max,Min,Sum,Group_Concat", u""},
    {"TmvPGSQLSyntaxProvider", "PG", u"PostgreSQL", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveLowerCase, false,
     false, u"select {0} from {1} a limit 0", u"(SELECT NULL)", u"upper", kPostgreSQLComparisons, kUnionAllForms,
     nullptr, kNever, u"Count", u"", kPostgreSQLPrefixed, kPostgreSQLMultiParam},
    {"TmvIBSyntaxProvider", "IB", u"Interbase", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveUpperCase, false,
     false, kWhereTemplate, u"(SELECT NULL)", u"upper", kInterbaseComparisons, kUnion, nullptr, kNever, u"Count", u"",
     kAnsiAggregates, u""},
    {"TmvFirebirdSyntaxProvider", "FB", u"Firebird", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveUpperCase, false,
     false, u"select first 1 {0} from {1} a", u"(SELECT NULL)", u"upper", kInterbaseComparisons, kUnion, nullptr,
     kNever, u"Count", u"", u"Avg,Count,Max,Min,Sum,List", u""},
    {"TmvDB2SyntaxProvider", "D2", u"IBM DB2", u"\"", u"\"", u".", u"/", kSystemNaming, icsSensitiveUpperCase, false,
     false, u"select {0} from {1} a fetch first row only", u"(SELECT NULL FROM SYSIBM.SYSDUMMY1)", u"upper",
     kAnsiComparisons, kUnionAllForms, nullptr, kNever, u"Count,Count_Big", u"Grouping",
     u"Avg,Count,Count_Big,Max,Min,StdDev,StdDev_Samp,Sum,Var,Var_Pop,Variance,Var_Samp,Variance_Samp", u""},
    {"TmvInformixSyntaxProvider", "IF", u"Informix", u"\"", u"\"", u".", nullptr, kNever, icsNonSensitive, false,
     false, kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnion, nullptr, kNever, u"Count", u"",
     u"Avg,Count,Max,Min,Sum,Range,StdEv,Variance", u""},
    {"TmvMSAccessSyntaxProvider", "AC", u"MS Access", u"[", u"]", u".", nullptr, kNever, icsNonSensitive, true, false,
     u"select top 1 {0} from {1} a", u"(SELECT NULL)", u"UCase", "=,<>,>,>=,<,<=", kUnion, nullptr, kNever,
     u"Count", u"Count,Avg,Max,Min,Sum", u"", u""},
    {"TmvSybaseSyntaxProvider", "SB", u"Sybase ASA/ASE", u"[", u"]", u".", nullptr, kNever, icsNonSensitive, true,
     false, u"select top 1 {0} from {1} a", u"(SELECT NULL)", u"upper", kTransactSQLComparisons, kUnion,
     kExceptIntersect, kSybaseASA, u"Count,Count_Big", u"StdDev,StdDev_Pop,StdDev_Samp,Var_Pop,Var_Samp,Variance",
     u"Avg,Count,List,Max,Min,Sum", u""},
    {"TmvSQLiteSyntaxProvider", "SL", u"SQLite", u"\"", u"\"", u".", nullptr, kNever, icsNonSensitive, false, false,
     kWhereTemplate, u"(SELECT NULL)", u"upper", "=,==,<>,!=,>,>=,<,<=", kUnion, nullptr, kNever, u"Count", u"",
     u"Avg,Count,Group_Concat,Max,Min,Sum,Total", u""},
    {"TmvTeradataSyntaxProvider", "TD", u"Teradata", u"\"", u"\"", u".", nullptr, kNever, icsNonSensitive, false,
     false, u"select top 1 {0} from {1} a", u"(SELECT NULL)", u"upper", kTransactSQLComparisons, kUnionAllForms,
     nullptr, kNever, u"Count", u"Grouping,AggGeomUnion,AggGeomIntersection",
     u"Avg,Ave,Average,Count,Grouping,Kurtosis,Max,Min,Sum,Skew,StdDev_Pop,StdDev_Samp,Var_Pop,Var_Samp", u""},
    {"TmvNetezzaSyntaxProvider", "NZ", u"Netezza", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveLowerCase, false,
     false, u"select {0} from {1} a limit 0", u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnionAllForms, nullptr,
     kNever, u"Count", u"", kPostgreSQLPrefixed, kPostgreSQLMultiParam},
    {"TmvAdvantageSyntaxProvider", "AD", u"Advantage Database Server", u"\"", u"\"", u".", nullptr, kNever,
     icsNonSensitive, false, false, u"select top 0 {0} from {1} a", u"(SELECT NULL)", u"upper", "=,<,<=,>,>=,<>",
     kUnion, nullptr, kNever, u"Count", u"Avg,Max,Min,Sum", u"Count", u""},
    {"TmvMimerSQLSyntaxProvider", "MI", u"Mimer SQL", u"\"", u"\"", u".", nullptr, kNever, icsSensitiveUpperCase,
     false, false, kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons, kUnion, nullptr, kNever, u"Count",
     u"", kAnsiAggregates, u""},
    {"TmvUniversalSyntaxProvider", "UN", u"Universal Syntax", nullptr, nullptr, u".", nullptr, kNever,
     icsNonSensitive, false, true, kWhereTemplate, u"(SELECT NULL)", u"upper", kAnsiComparisons,
     kUnionExceptIntersect, nullptr, kNever, u"Count", u"", kAnsiAggregates, u""},
};

constexpr const char* kNames[] = {
#define MV_CAPABILITY_NAME(name) #name,
    MV_CAPABILITY_OPERATIONS(MV_CAPABILITY_NAME)
#undef MV_CAPABILITY_NAME
};

using Operation = bool (TmvBaseSyntaxProvider::*)() const;
constexpr Operation kOperations[] = {
#define MV_CAPABILITY_OPERATION(name) &TmvBaseSyntaxProvider::name,
    MV_CAPABILITY_OPERATIONS(MV_CAPABILITY_OPERATION)
#undef MV_CAPABILITY_OPERATION
};

}  // namespace

const char* CapabilityName(TmvCapability capability) { return kNames[static_cast<int>(capability)]; }

bool FindCapability(std::string_view name, TmvCapability& capability) {
  for (int i = 0; i < kCapabilityCount; ++i)
    if (AnsiSameText(name, kNames[i])) {
      capability = static_cast<TmvCapability>(i);
      return true;
    }
  return false;
}

bool AskCapability(const TmvBaseSyntaxProvider& provider, TmvCapability capability) {
  return (provider.*kOperations[static_cast<int>(capability)])();
}

std::span<const TmvCapabilityRow> CapabilityRows() { return kRows; }

const TmvCapabilityRow* FindCapabilityRow(std::string_view className) {
  for (const TmvCapabilityRow& row : kRows)
    if (AnsiSameText(className, row.className)) return &row;
  return nullptr;
}

const TmvCapabilityAnswer& CapabilityAnswer(const TmvCapabilityRow& row, TmvCapability capability) {
  return kAnswers[static_cast<int>(capability)][&row - kRows];
}

}  // namespace mv
