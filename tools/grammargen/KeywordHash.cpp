#include "KeywordHash.h"

#include <algorithm>
#include <stdexcept>

namespace grammargen {

uint32_t KeywordWordHash(const std::string& word) {
  uint32_t h = 2166136261u;
  for (unsigned char c : word) h = (h ^ c) * 16777619u;
  return h;
}

KeywordHash FindKeywordHash(const std::vector<std::string>& words) {
  KeywordHash out;
  const size_t n = words.size();
  // A table at most half full, and buckets of three words on average.
  while ((size_t(1) << out.slotBits) < 2 * n) ++out.slotBits;
  out.buckets = static_cast<uint32_t>(std::max<size_t>(1, n / 3));
  out.displacements.assign(out.buckets, 0);
  out.slots.assign(size_t(1) << out.slotBits, -1);
  std::vector<uint32_t> hashes(n);
  std::vector<std::vector<size_t>> members(out.buckets);
  for (size_t i = 0; i < n; ++i) {
    hashes[i] = KeywordWordHash(words[i]);
    members[hashes[i] % out.buckets].push_back(i);
  }
  std::vector<uint32_t> order(out.buckets);
  for (uint32_t b = 0; b < out.buckets; ++b) order[b] = b;
  std::stable_sort(order.begin(), order.end(),
                   [&](uint32_t a, uint32_t b) { return members[a].size() > members[b].size(); });
  for (uint32_t b : order) {
    if (members[b].empty()) continue;
    bool placed = false;
    for (uint32_t d = 0; d < 65536 && !placed; ++d) {
      std::vector<uint32_t> taken;
      bool fits = true;
      for (size_t i : members[b]) {
        const uint32_t slot = KeywordSlot(hashes[i], d, out.slotBits);
        if (out.slots[slot] >= 0 || std::find(taken.begin(), taken.end(), slot) != taken.end()) {
          fits = false;
          break;
        }
        taken.push_back(slot);
      }
      if (!fits) continue;
      for (size_t k = 0; k < taken.size(); ++k) out.slots[taken[k]] = static_cast<int>(members[b][k]);
      out.displacements[b] = static_cast<uint16_t>(d);
      placed = true;
    }
    if (!placed) throw std::runtime_error("no perfect hash found for the keywords");
  }
  return out;
}

}  // namespace grammargen
