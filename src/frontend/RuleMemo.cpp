#include "frontend/RuleMemo.h"

namespace mv {

namespace {

uint64_t HashStart(int32_t rule) { return 0x9E3779B97F4A7C15ull * (static_cast<uint64_t>(rule) + 1); }

uint64_t HashMix(uint64_t h, int32_t position) {
  h ^= static_cast<uint32_t>(position + 1);
  h *= 0xBF58476D1CE4E5B9ull;
  return h ^ (h >> 31);
}

}  // namespace

uint64_t TmvRuleMemo::Hash(int32_t rule, const TmvWayPointsList& list) {
  uint64_t h = HashStart(rule);
  for (const TmvWayPoint* p : list.Raw()) h = HashMix(h, p->TokenIndex);
  return h;
}

bool TmvRuleMemo::Matches(const Entry& e, int32_t rule, const TmvWayPointsList& list) const {
  if (e.rule != rule || e.positionCount != list.Count()) return false;
  for (int32_t i = 0; i < e.positionCount; ++i) {
    if (positions_[e.firstPosition + i] != list[i]->TokenIndex) return false;
  }
  return true;
}

int32_t TmvRuleMemo::Find(int32_t rule, const TmvWayPointsList& list) const {
  if (slots_.empty()) return -1;
  const size_t mask = slots_.size() - 1;
  for (size_t i = Hash(rule, list) & mask;; i = (i + 1) & mask) {
    const int32_t index = slots_[i];
    if (index < 0) return -1;
    if (Matches(entries_[index], rule, list)) return index;
  }
}

void TmvRuleMemo::Grow() {
  // Half full at most, so that a probe ends soon at a free slot.
  const size_t size = slots_.empty() ? 256 : slots_.size() * 2;
  slots_.assign(size, -1);
  const size_t mask = size - 1;
  for (size_t e = 0; e < entries_.size(); ++e) {
    const Entry& entry = entries_[e];
    uint64_t h = HashStart(entry.rule);
    for (int32_t k = 0; k < entry.positionCount; ++k) h = HashMix(h, positions_[entry.firstPosition + k]);
    size_t i = h & mask;
    while (slots_[i] >= 0) i = (i + 1) & mask;
    slots_[i] = static_cast<int32_t>(e);
  }
}

int32_t TmvRuleMemo::Add(int32_t rule, const TmvWayPointsList& list) {
  if (2 * (entries_.size() + 1) > slots_.size()) Grow();
  const int32_t index = static_cast<int32_t>(entries_.size());
  entries_.push_back(Entry{rule, State::Entered, static_cast<int32_t>(positions_.size()), list.Count(), 0, 0, -1});
  for (const TmvWayPoint* p : list.Raw()) positions_.push_back(p->TokenIndex);
  const size_t mask = slots_.size() - 1;
  size_t i = Hash(rule, list) & mask;
  while (slots_[i] >= 0) i = (i + 1) & mask;
  slots_[i] = index;
  return index;
}

void TmvRuleMemo::Store(int32_t entry, const TmvWayPointsList& ways, int32_t maxTokenIndex) {
  Entry& e = entries_[entry];
  e.state = State::Done;
  e.firstResult = static_cast<int32_t>(results_.size());
  e.resultCount = ways.Count();
  e.maxTokenIndex = maxTokenIndex;
  for (TmvWayPoint* tip : ways.Raw()) {
    ++tip->RefCount;
    results_.push_back(Result{tip->Origin, tip});
  }
}

void TmvRuleMemo::Clear() {
  for (const Result& r : results_) ReleaseWayPoint(r.Tip);
  results_.clear();
  entries_.clear();
  positions_.clear();
  slots_.clear();
}

}  // namespace mv
