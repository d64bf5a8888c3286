#include "CharRanges.h"

#include <algorithm>

namespace grammargen {

void CharRanges::Add(uint32_t lo, uint32_t hi) {
  if (lo > hi) return;
  ranges_.push_back({lo, hi});
  std::sort(ranges_.begin(), ranges_.end(), [](const Range& a, const Range& b) { return a.lo < b.lo; });
  std::vector<Range> merged;
  for (const Range& r : ranges_) {
    if (!merged.empty() && r.lo <= merged.back().hi + 1) {
      merged.back().hi = std::max(merged.back().hi, r.hi);
    } else {
      merged.push_back(r);
    }
  }
  ranges_ = std::move(merged);
}

void CharRanges::Add(const CharRanges& other) {
  for (const Range& r : other.ranges_) Add(r.lo, r.hi);
}

CharRanges CharRanges::Complement() const {
  CharRanges out;
  uint32_t next = 0;
  for (const Range& r : ranges_) {
    if (r.lo > next) out.ranges_.push_back({next, r.lo - 1});
    next = r.hi + 1;
  }
  if (next <= kMax) out.ranges_.push_back({next, kMax});
  return out;
}

CharRanges CharRanges::FoldCase() const {
  CharRanges out = *this;
  for (const Range& r : ranges_) {
    uint32_t lo = std::max<uint32_t>(r.lo, 'A');
    uint32_t hi = std::min<uint32_t>(r.hi, 'Z');
    if (lo <= hi) out.Add(lo + 32, hi + 32);
  }
  return out;
}

bool CharRanges::Contains(uint32_t c) const {
  for (const Range& r : ranges_) {
    if (c < r.lo) return false;
    if (c <= r.hi) return true;
  }
  return false;
}

}  // namespace grammargen
