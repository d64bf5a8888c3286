#include "sqlgen/SQLOptions.h"

#include <iterator>

#include "sqlgen/PropertyTable.h"

namespace mv {

// The type of one enumeration: its name and its members' names in ordinal
// order, their count checked against the last member.
#define MV_DEFINE_ENUM_TYPE(Enum, Last, ...)                     \
  const TmvEnumType& TmvEnumTypeOf(Enum) {                       \
    static constexpr const char16_t* kMembers[] = {__VA_ARGS__}; \
    static_assert(std::size(kMembers) == Last + 1);              \
    static constexpr TmvEnumType kType{u"" #Enum, kMembers};     \
    return kType;                                                \
  }

MV_DEFINE_ENUM_TYPE(TmvKeywordFormat, akfLowerCase, u"akfFirstUpper", u"akfUpperCase", u"akfLowerCase")
MV_DEFINE_ENUM_TYPE(TmvIdentQuotation, icAll, u"icNone", u"icIfNeed", u"icAll")
MV_DEFINE_ENUM_TYPE(TmvSkipKeywordMode, skPrintAlways, u"skDontCare", u"skSkipIfPossible", u"skPrintAlways")
MV_DEFINE_ENUM_TYPE(TmvObjectPrefixSkipping, opsSkipNone, u"opsSkipAll", u"opsSkipDatabase", u"opsSkipNone")
MV_DEFINE_ENUM_TYPE(TmvQueryPart, mvqpUnionSubQuery, u"mvqpQuery", u"mvqpSubQuery", u"mvqpUnionSubQuery")
MV_DEFINE_ENUM_TYPE(TSQLBuilderConditionFormatNL, nlAllLogical, u"nlNone", u"nlTopmostOr", u"nlTopmostLogical",
                    u"nlAllLogical")

#undef MV_DEFINE_ENUM_TYPE

}  // namespace mv
