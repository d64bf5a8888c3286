#include "support/VariantHelpers.h"

#include <algorithm>
#include <limits>

namespace mv {

int ConvertVariantToIntDef(const TmvVariant& value, int fallback) {
  if (value.IsNull()) return fallback;
  if (value.IsString()) {
    int result;
    return TryStrToInt(value.AsWideString(), result) ? result : fallback;
  }
  return value.AsInteger();
}

bool IsValueLikeVariant(const TmvVariant& value, const TmvVariant& pattern) {
  if (pattern.IsArray()) {
    const TmvVariantArray& items = pattern.AsArray();
    return std::any_of(items.begin(), items.end(), [&value](const TmvVariant& item) { return value == item; });
  }
  if (pattern.IsEmpty()) return false;
  return value == pattern;
}

bool IsIntInArray(int value, std::span<const int> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

std::vector<int> ToIntegerDynArray(std::initializer_list<int> values) { return std::vector<int>(values); }

}  // namespace mv
