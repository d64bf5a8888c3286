// Small conversions and tests on loosely typed values and integer lists.
#pragma once

#include <initializer_list>
#include <span>
#include <vector>

#include "support/Variant.h"

namespace mv {

// Null gives `fallback`; a text gives its integer, or `fallback` when it is
// none; any other value converts (EVariantError when it cannot, e.g. an
// array). Empty converts to 0.
int ConvertVariantToIntDef(const TmvVariant& value, int fallback);

// With an array `pattern`: whether `value` equals one of its elements. With
// an Empty pattern: false. Otherwise whether the two are equal (the loose
// equality of TmvVariant).
bool IsValueLikeVariant(const TmvVariant& value, const TmvVariant& pattern);

bool IsIntInArray(int value, std::span<const int> values);
inline bool IsIntInArray(int value, std::initializer_list<int> values) {
  return IsIntInArray(value, std::span<const int>(values.begin(), values.size()));
}
std::vector<int> ToIntegerDynArray(std::initializer_list<int> values);

}  // namespace mv
