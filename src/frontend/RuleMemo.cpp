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
  const uint64_t hash = Hash(rule, list);
  for (size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& slot = slots_[i];
    if (slot.entry < 0) return -1;
    if (slot.hash == hash && Matches(entries_[slot.entry], rule, list)) return slot.entry;
  }
}

void TmvRuleMemo::Grow() {
  // Half full at most, so that a probe ends soon at a free slot.
  const size_t size = slots_.empty() ? 256 : slots_.size() * 2;
  std::vector<Slot> old = std::move(slots_);
  slots_.assign(size, Slot{0, -1});
  for (const Slot& slot : old) {
    if (slot.entry >= 0) Place(slot);
  }
}

void TmvRuleMemo::Place(const Slot& slot) {
  const size_t mask = slots_.size() - 1;
  size_t i = slot.hash & mask;
  while (slots_[i].entry >= 0) i = (i + 1) & mask;
  slots_[i] = slot;
}

int32_t TmvRuleMemo::Add(int32_t rule, const TmvWayPointsList& list) {
  if (2 * (entries_.size() + 1) > slots_.size()) Grow();
  const int32_t index = static_cast<int32_t>(entries_.size());
  entries_.push_back(Entry{rule, State::Entered, static_cast<int32_t>(positions_.size()), list.Count(), 0, 0, -1});
  for (const TmvWayPoint* p : list.Raw()) positions_.push_back(p->TokenIndex);
  Place(Slot{Hash(rule, list), index});
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

void TmvRuleMemo::ForgetEntries() {
  entries_.clear();
  positions_.clear();
  slots_.clear();
}

void TmvRuleMemo::Clear() {
  for (const Result& r : results_) ReleaseWayPoint(r.Tip);
  results_.clear();
  entries_.clear();
  positions_.clear();
  slots_.clear();
}

}  // namespace mv
