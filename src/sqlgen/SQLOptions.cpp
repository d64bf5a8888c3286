#include "sqlgen/SQLOptions.h"

#include <iterator>

#include "sqlgen/PropertyTable.h"

namespace mv {

namespace {

// Names in ordinal order; the counts are checked against the last member.
constexpr const char16_t* kKeywordFormat[] = {u"akfFirstUpper", u"akfUpperCase", u"akfLowerCase"};
constexpr const char16_t* kIdentQuotation[] = {u"icNone", u"icIfNeed", u"icAll"};
constexpr const char16_t* kSkipKeywordMode[] = {u"skDontCare", u"skSkipIfPossible", u"skPrintAlways"};
constexpr const char16_t* kObjectPrefixSkipping[] = {u"opsSkipAll", u"opsSkipDatabase", u"opsSkipNone"};
constexpr const char16_t* kQueryPart[] = {u"mvqpQuery", u"mvqpSubQuery", u"mvqpUnionSubQuery"};
constexpr const char16_t* kConditionFormatNL[] = {u"nlNone", u"nlTopmostOr", u"nlTopmostLogical", u"nlAllLogical"};

static_assert(std::size(kKeywordFormat) == akfLowerCase + 1);
static_assert(std::size(kIdentQuotation) == icAll + 1);
static_assert(std::size(kSkipKeywordMode) == skPrintAlways + 1);
static_assert(std::size(kObjectPrefixSkipping) == opsSkipNone + 1);
static_assert(std::size(kQueryPart) == mvqpUnionSubQuery + 1);
static_assert(std::size(kConditionFormatNL) == nlAllLogical + 1);

}  // namespace

const TmvEnumType& TmvEnumTypeOf(TmvKeywordFormat) {
  static const TmvEnumType type{u"TmvKeywordFormat", kKeywordFormat};
  return type;
}

const TmvEnumType& TmvEnumTypeOf(TmvIdentQuotation) {
  static const TmvEnumType type{u"TmvIdentQuotation", kIdentQuotation};
  return type;
}

const TmvEnumType& TmvEnumTypeOf(TmvSkipKeywordMode) {
  static const TmvEnumType type{u"TmvSkipKeywordMode", kSkipKeywordMode};
  return type;
}

const TmvEnumType& TmvEnumTypeOf(TmvObjectPrefixSkipping) {
  static const TmvEnumType type{u"TmvObjectPrefixSkipping", kObjectPrefixSkipping};
  return type;
}

const TmvEnumType& TmvEnumTypeOf(TmvQueryPart) {
  static const TmvEnumType type{u"TmvQueryPart", kQueryPart};
  return type;
}

const TmvEnumType& TmvEnumTypeOf(TSQLBuilderConditionFormatNL) {
  static const TmvEnumType type{u"TSQLBuilderConditionFormatNL", kConditionFormatNL};
  return type;
}

}  // namespace mv
