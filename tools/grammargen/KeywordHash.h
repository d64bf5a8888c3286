// A perfect hash of a scanner's keywords, found by the generator and spelled
// out in the generated scanner: every keyword gets a slot of its own, so a
// word is looked up with one hash over its small letters and one comparison.
//
// Two levels (hash and displace): the word's hash picks a bucket, the
// bucket's displacement turns the same hash into the slot. The generator
// tries displacements bucket by bucket, largest first, until the words of
// each land on free slots.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace grammargen {

struct KeywordHash {
  uint32_t buckets = 1;
  uint32_t slotBits = 0;                // the table has 2^slotBits slots
  std::vector<uint16_t> displacements;  // one per bucket
  std::vector<int> slots;               // index of the keyword, -1 for a free slot
};

// The hash of a word in small letters (FNV-1a, 32 bits); the generated code
// computes the same while it lowers the letters.
uint32_t KeywordWordHash(const std::string& word);

// The slot of a word's hash under displacement `d` in a table of 2^bits slots.
// The generated code repeats this expression: keep the two alike.
inline uint32_t KeywordSlot(uint32_t hash, uint32_t d, uint32_t bits) {
  return bits == 0 ? 0 : ((hash ^ (d * 0x9E3779B1u)) * 0x85EBCA6Bu) >> (32 - bits);
}

// A perfect hash of `words` (distinct, in small letters). Raises
// std::runtime_error if none is found, which does not happen for a table
// twice the size of the word list.
KeywordHash FindKeywordHash(const std::vector<std::string>& words);

}  // namespace grammargen
