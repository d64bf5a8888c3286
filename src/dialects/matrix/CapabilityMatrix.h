// The capability matrix: what each provider class answers to the capability
// operations of the syntax provider, with the texts, the case rule, the
// fields-query template and the name lists that go with them, as one table
// with a column (here: a row) per provider class, in the order of the table of
// providers. An answer that depends on a setting of the provider (its server
// version, a property) is written as a condition on that setting; the
// provider reads the setting out through TmvMatrixSyntaxProvider.
//
// The table also holds the providers of dialects that this build may lack;
// nothing but a provider of that class reads their rows.
#pragma once

#include <span>
#include <string_view>

#include "frontend/SyntaxProvider.h"

namespace mv {

// The capability operations of the contract, in the order of the matrix.
#define MV_CAPABILITY_OPERATIONS(X)                                                                            \
  X(IsSupportANSIJoins) X(IsForceBinaryANSIJoins) X(IsBracketsInComplexJoinMandatory) X(IsSupportOracleJoins) \
  X(IsSupportTransactSQLJoins) X(IsSupportCrossJoin) X(IsSupportLeftANSIJoin) X(IsSupportRightANSIJoin)       \
  X(IsSupportFullANSIJoin) X(IsUniversalExpressions) X(IsSupportAllTableFieldsSelection)                      \
  X(IsSupportOrderByAlias) X(IsSupportViews) X(IsSupportProcedures) X(IsSupportSynonyms) X(IsSupportUnions)   \
  X(IsSupportBracketsInUnions) X(IsSupportDerivedTables) X(IsSupportCTE) X(IsCTEColumnNamesMandatory)         \
  X(IsSupportRecursiveCTE) X(IsSupportNullOrdering) X(IsSupportGroupByStar) X(IsSupportGroupByAlias)          \
  X(IsSupportSubQueryUnions) X(IsSupportSubQueryBracketsInUnions) X(IsSupportSubQueryDerivedTables)           \
  X(IsSupportSubQueryCTE) X(IsSupportDatabases) X(IsSupportSchemas) X(IsSupportEmptyBracketsInStoredProcs)    \
  X(IsOuterKeywordInLinksMandatory) X(IsInnerKeywordInLinksMandatory) X(IsAsKeywordInExpressionAliasMandatory) \
  X(IsAsKeywordInObjectAliasMandatory) X(IsFromClauseMandatory) X(GetUseObjectNamesAsDefaultAliases)          \
  X(IsSupportLimitOffset) X(IsSupportLimitCount) X(CanDetectServerVersion)

enum class TmvCapability : uint8_t {
#define MV_CAPABILITY_ENUM(name) name,
  MV_CAPABILITY_OPERATIONS(MV_CAPABILITY_ENUM)
#undef MV_CAPABILITY_ENUM
};

#define MV_CAPABILITY_COUNT(name) +1
inline constexpr int kCapabilityCount = 0 MV_CAPABILITY_OPERATIONS(MV_CAPABILITY_COUNT);
#undef MV_CAPABILITY_COUNT

// The name of the operation ("IsSupportANSIJoins").
const char* CapabilityName(TmvCapability capability);
// The capability of that name, compared without regard to case; false if none.
bool FindCapability(std::string_view name, TmvCapability& capability);
// Calls the operation on the provider (through its virtual function).
bool AskCapability(const TmvBaseSyntaxProvider& provider, TmvCapability capability);

// What a conditional answer depends on.
enum class TmvCapabilitySetting : uint8_t {
  Fixed,                           // nothing: true when the range holds 1
  ServerVersion,                   // the ordinal of the version enumeration, or the version number
  BracketsInComplexJoinMandatory,  // the property, 0 or 1
  NamingConvention,                // the ordinal of the naming convention
  Descriptor,                      // the server descriptor in use decides (no range)
};

// True when the setting's value lies in [low, high].
struct TmvCapabilityAnswer {
  TmvCapabilitySetting setting;
  int low;
  int high;
};

// One provider class. Lists are separated by commas.
struct TmvCapabilityRow {
  const char* className;
  const char* column;  // the short heading of the class's column ("92", "MS")
  const char16_t* serverName;
  // Null when the descriptor in use gives them.
  const char16_t* quoteBegin;
  const char16_t* quoteEnd;
  const char16_t* separator;
  // Stands for the separator where the condition holds; null when never.
  const char16_t* otherSeparator;
  TmvCapabilityAnswer otherSeparatorWhen;
  TmvIdentCaseSensitivity identCaseSens;  // what a new object has
  bool identCaseSensFixed;                // whatever was set
  bool identCaseSensByDescriptor;
  const char16_t* fieldsTemplate;  // the default of QueryToLoadFieldsTemplate
  const char16_t* simpleEmptyFromSubquery;
  const char16_t* upperCaseFunctionName;
  const char* comparisonOperators;
  const char16_t* unionOperators;
  // Added to the union operators where the condition holds.
  const char16_t* moreUnionOperators;
  TmvCapabilityAnswer moreUnionOperatorsWhen;
  const char16_t* starAggregates;
  const char16_t* oneParamAggregates;
  const char16_t* prefixedAggregates;
  const char16_t* multiParamAggregates;
};

// The rows, in the order of the table of providers.
std::span<const TmvCapabilityRow> CapabilityRows();
// The row of the class of that name (without regard to case); null if none.
const TmvCapabilityRow* FindCapabilityRow(std::string_view className);
// The fixed or conditional answer of a row.
const TmvCapabilityAnswer& CapabilityAnswer(const TmvCapabilityRow& row, TmvCapability capability);

}  // namespace mv
