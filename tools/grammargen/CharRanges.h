// A set of UTF-16 code units held as sorted, disjoint, inclusive ranges.
#pragma once

#include <cstdint>
#include <vector>

namespace grammargen {

class CharRanges {
 public:
  static constexpr uint32_t kMax = 0xFFFF;

  struct Range {
    uint32_t lo;
    uint32_t hi;
    bool operator==(const Range&) const = default;
  };

  CharRanges() = default;
  static CharRanges Single(uint32_t c) {
    CharRanges r;
    r.Add(c, c);
    return r;
  }
  static CharRanges All() {
    CharRanges r;
    r.Add(0, kMax);
    return r;
  }

  void Add(uint32_t lo, uint32_t hi);
  void Add(const CharRanges& other);
  CharRanges Complement() const;
  // The set as the scanner sees it: its automaton compares lower-cased
  // characters, so capital ASCII letters stand for their small ones.
  CharRanges FoldCase() const;
  bool Contains(uint32_t c) const;
  bool Empty() const { return ranges_.empty(); }
  const std::vector<Range>& Ranges() const { return ranges_; }
  bool operator==(const CharRanges&) const = default;

 private:
  std::vector<Range> ranges_;
};

}  // namespace grammargen
