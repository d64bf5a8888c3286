// Option enums shared by the SQL builders, the format objects and the nodes
// that print through them. Their member order is fixed: option files store
// them by ordinal.
#pragma once

#include <cstdint>

namespace mv {

// How `WriteKeyword` cases a keyword. Node code writes every keyword with a
// capital first letter ("Select", "From"), so `akfFirstUpper` leaves it as is.
enum TmvKeywordFormat : uint8_t { akfFirstUpper, akfUpperCase, akfLowerCase };

// When an identifier is put in quotes.
enum TmvIdentQuotation : uint8_t { icNone, icIfNeed, icAll };

// Whether an optional keyword (Inner, Outer, As) is printed.
enum TmvSkipKeywordMode : uint8_t { skDontCare, skSkipIfPossible, skPrintAlways };

// Which prefixes of an object name may be left out when they are the defaults.
// The order matters: code tests "below opsSkipNone".
enum TmvObjectPrefixSkipping : uint8_t { opsSkipAll, opsSkipDatabase, opsSkipNone };

// Which part of a query a builder component prints.
enum TmvQueryPart : uint8_t { mvqpQuery, mvqpSubQuery, mvqpUnionSubQuery };

// Where a logical condition breaks its line at "And" and "Or": never, only at
// an "Or" of the outermost level, at "And" and "Or" of the outermost level,
// at every level.
enum TSQLBuilderConditionFormatNL : uint8_t { nlNone, nlTopmostOr, nlTopmostLogical, nlAllLogical };

// The member names of each enum, for reading and writing options by name
// (PropertyTable.h).
struct TmvEnumType;
const TmvEnumType& TmvEnumTypeOf(TmvKeywordFormat);
const TmvEnumType& TmvEnumTypeOf(TmvIdentQuotation);
const TmvEnumType& TmvEnumTypeOf(TmvSkipKeywordMode);
const TmvEnumType& TmvEnumTypeOf(TmvObjectPrefixSkipping);
const TmvEnumType& TmvEnumTypeOf(TmvQueryPart);
const TmvEnumType& TmvEnumTypeOf(TSQLBuilderConditionFormatNL);

}  // namespace mv
