// Shared rule results of one first pass.
//
// What a rule's first pass does with a way list depends on nothing but the
// token positions of its ways (the parser's settings stay fixed during a
// pass). Where a choice tries two alternatives that both read the same rule
// from the same place (brackets that may open a sub-query or an expression),
// the second reading would redo all the work of the first, and inside each
// other such readings would double the work at every level. The parser
// therefore remembers which rules it has entered at which positions while a
// choice still has alternatives to try; entered again, a rule runs once more
// from local roots of its own, its result is kept, and every later entry
// reuses it through one join point per resulting way.
//
// A result is the list of ways the rule left, each a chain from one of the
// local roots (its Origin says which way of the input it continues) to a tip;
// join points name a result by a negative Choice (see IsJoinPoint).
#pragma once

#include <cstdint>
#include <vector>

#include "frontend/WayPoint.h"

namespace mv {

class TmvRuleMemo {
 public:
  enum class State : uint8_t {
    Entered,    // run once; a second entry runs it from local roots
    Computing,  // running from local roots (an entry inside it runs plainly)
    Done,       // the result is kept
  };

  struct Result {
    int32_t Origin;    // index of the input way the result continues
    TmvWayPoint* Tip;  // holds a reference
  };

  TmvRuleMemo() = default;
  ~TmvRuleMemo() { Clear(); }
  TmvRuleMemo(const TmvRuleMemo&) = delete;
  TmvRuleMemo& operator=(const TmvRuleMemo&) = delete;

  bool IsEmpty() const { return entries_.empty(); }

  // The entry of `rule` at the positions of `list`'s ways, in order; -1 when
  // there is none.
  int32_t Find(int32_t rule, const TmvWayPointsList& list) const;
  // Records `rule` at the positions of `list` as entered once; returns the entry.
  int32_t Add(int32_t rule, const TmvWayPointsList& list);

  State StateOf(int32_t entry) const { return entries_[entry].state; }
  void SetState(int32_t entry, State state) { entries_[entry].state = state; }

  // Keeps what running the rule from local roots left in `ways`, and the
  // highest token index it read (-1 for none). The entry is Done.
  void Store(int32_t entry, const TmvWayPointsList& ways, int32_t maxTokenIndex);

  // The kept result of a Done entry.
  int32_t MaxTokenIndexOf(int32_t entry) const { return entries_[entry].maxTokenIndex; }
  int32_t FirstResultOf(int32_t entry) const { return entries_[entry].firstResult; }
  int32_t ResultCountOf(int32_t entry) const { return entries_[entry].resultCount; }
  const Result& ResultAt(int32_t index) const { return results_[index]; }

  // The Choice of a join point to result `index`, and back.
  static int32_t JoinChoice(int32_t index) { return -index - 1; }
  const Result& JoinedResult(const TmvWayPoint* join) const { return results_[-join->Choice - 1]; }

  // Forgets every entry and releases the kept ways.
  void Clear();
  // Forgets the entries, which no rule can be looked up in any more, but
  // keeps the results that join points name.
  void ForgetEntries();
  size_t EntryCount() const { return entries_.size(); }

 private:
  // Open addressing; a slot keeps the hash of its key, so that a probe
  // compares entries only when the hashes agree.
  struct Slot {
    uint64_t hash;
    int32_t entry;  // -1 when free
  };
  struct Entry {
    int32_t rule;
    State state;
    int32_t firstPosition, positionCount;  // in positions_
    int32_t firstResult, resultCount;      // in results_
    int32_t maxTokenIndex;
  };

  static uint64_t Hash(int32_t rule, const TmvWayPointsList& list);
  bool Matches(const Entry& e, int32_t rule, const TmvWayPointsList& list) const;
  void Grow();
  void Place(const Slot& slot);

  std::vector<Entry> entries_;
  std::vector<int32_t> positions_;
  std::vector<Result> results_;
  std::vector<Slot> slots_;
};

}  // namespace mv
