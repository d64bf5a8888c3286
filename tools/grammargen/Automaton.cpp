#include "Automaton.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace grammargen {

namespace {

struct NfaState {
  std::vector<std::pair<CharRanges, int>> moves;
  std::vector<int> empty;  // moves on no character
  int form = -1;           // the description entry the state belongs to
  bool accepts = false;
};

class Nfa {
 public:
  int NewState(int form) {
    states.push_back(NfaState{});
    states.back().form = form;
    return static_cast<int>(states.size()) - 1;
  }

  // Thompson's construction: returns the entry and exit states of `p`.
  std::pair<int, int> Build(const Pattern& p, int form) {
    switch (p.type) {
      case Pattern::Type::Chars: {
        int a = NewState(form), b = NewState(form);
        states[a].moves.push_back({p.chars, b});
        return {a, b};
      }
      case Pattern::Type::Seq: {
        int a = NewState(form), cur = a;
        for (const Pattern& part : p.parts) {
          auto [s, e] = Build(part, form);
          states[cur].empty.push_back(s);
          cur = e;
        }
        return {a, cur};
      }
      case Pattern::Type::Alt: {
        int a = NewState(form), b = NewState(form);
        for (const Pattern& part : p.parts) {
          auto [s, e] = Build(part, form);
          states[a].empty.push_back(s);
          states[e].empty.push_back(b);
        }
        return {a, b};
      }
      case Pattern::Type::Star:
      case Pattern::Type::Plus:
      case Pattern::Type::Opt: {
        int a = NewState(form), b = NewState(form);
        auto [s, e] = Build(p.parts[0], form);
        states[a].empty.push_back(s);
        states[e].empty.push_back(b);
        if (p.type != Pattern::Type::Plus) states[a].empty.push_back(b);
        if (p.type != Pattern::Type::Opt) states[e].empty.push_back(s);
        return {a, b};
      }
    }
    return {0, 0};
  }

  std::vector<int> Closure(std::vector<int> set) const {
    std::vector<int> stack = set;
    std::set<int> seen(set.begin(), set.end());
    while (!stack.empty()) {
      int s = stack.back();
      stack.pop_back();
      for (int t : states[s].empty) {
        if (seen.insert(t).second) stack.push_back(t);
      }
    }
    return std::vector<int>(seen.begin(), seen.end());
  }

  std::vector<NfaState> states;
};

struct Interval {
  uint32_t lo, hi;
  std::vector<int> targets;
};

// The moves out of a set of states, split into intervals of equal targets.
std::vector<Interval> Moves(const Nfa& nfa, const std::vector<int>& set) {
  std::vector<uint32_t> bounds;
  for (int s : set) {
    for (const auto& [chars, target] : nfa.states[s].moves) {
      for (const auto& r : chars.Ranges()) {
        bounds.push_back(r.lo);
        bounds.push_back(r.hi + 1);
      }
    }
  }
  std::sort(bounds.begin(), bounds.end());
  bounds.erase(std::unique(bounds.begin(), bounds.end()), bounds.end());
  std::vector<Interval> out;
  for (size_t i = 0; i + 1 < bounds.size(); ++i) {
    uint32_t lo = bounds[i], hi = bounds[i + 1] - 1;
    std::vector<int> targets;
    for (int s : set) {
      for (const auto& [chars, target] : nfa.states[s].moves) {
        if (chars.Contains(lo)) targets.push_back(target);
      }
    }
    if (targets.empty()) continue;
    std::sort(targets.begin(), targets.end());
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    out.push_back({lo, hi, std::move(targets)});
  }
  return out;
}

// Moves with targets renamed by `rename`, adjacent moves to one target joined.
std::vector<DfaTransition> Renamed(const std::vector<DfaTransition>& moves, const std::vector<int>& rename) {
  std::vector<DfaTransition> out;
  for (const DfaTransition& t : moves) {
    int target = rename[t.target];
    if (!out.empty() && out.back().hi + 1 == t.lo && out.back().target == target) {
      out.back().hi = t.hi;
    } else {
      out.push_back({t.lo, t.hi, target});
    }
  }
  return out;
}

// Merges states that no text can tell apart: same outcome, and moves on the
// same characters to states that are the same in turn (partition refinement).
Dfa Minimize(const Dfa& dfa) {
  const size_t n = dfa.states.size();
  std::vector<int> block(n, 0);
  size_t blocks = 0;
  {
    std::map<std::tuple<int, bool, bool>, int> ids;
    for (size_t s = 1; s < n; ++s) {
      const DfaState& st = dfa.states[s];
      auto [it, added] = ids.emplace(std::make_tuple(st.kind, st.partial, st.checksKeywords), static_cast<int>(ids.size()) + 1);
      block[s] = it->second;
    }
    blocks = ids.size();
  }
  for (;;) {
    std::map<std::pair<int, std::vector<std::tuple<uint32_t, uint32_t, int>>>, int> ids;
    std::vector<int> next(n, 0);
    for (size_t s = 1; s < n; ++s) {
      std::vector<std::tuple<uint32_t, uint32_t, int>> signature;
      for (const DfaTransition& t : Renamed(dfa.states[s].moves, block)) signature.emplace_back(t.lo, t.hi, t.target);
      auto [it, added] = ids.emplace(std::make_pair(block[s], signature), static_cast<int>(ids.size()) + 1);
      next[s] = it->second;
    }
    block = next;
    if (ids.size() == blocks) break;
    blocks = ids.size();
  }
  // Number the merged states in the order the start and the moves reach them.
  std::vector<int> number(blocks + 1, 0);
  std::vector<size_t> representative;
  auto visit = [&](int state) {
    int b = block[state];
    if (number[b] == 0) {
      representative.push_back(state);
      number[b] = static_cast<int>(representative.size());
    }
  };
  for (const DfaTransition& t : dfa.start) visit(t.target);
  for (size_t i = 0; i < representative.size(); ++i) {
    for (const DfaTransition& t : dfa.states[representative[i]].moves) visit(t.target);
  }
  std::vector<int> rename(n, 0);
  for (size_t s = 1; s < n; ++s) rename[s] = number[block[s]];
  Dfa out;
  out.states.resize(representative.size() + 1);
  for (size_t i = 0; i < representative.size(); ++i) {
    out.states[i + 1] = dfa.states[representative[i]];
    out.states[i + 1].moves = Renamed(dfa.states[representative[i]].moves, rename);
  }
  out.start = Renamed(dfa.start, rename);
  return out;
}

}  // namespace

Dfa BuildDfa(const TokenDescription& description) {
  Nfa nfa;
  int start = nfa.NewState(-1);
  std::vector<int> formEntries;
  for (size_t i = 0; i < description.entries.size(); ++i) {
    const TokenEntry& e = description.entries[i];
    if (!e.IsAutomatonForm()) continue;
    auto [s, f] = nfa.Build(e.pattern, static_cast<int>(i));
    nfa.states[f].accepts = true;
    nfa.states[start].empty.push_back(s);
    // A form must read at least one character: the scanner always does.
    std::vector<int> closure = nfa.Closure({s});
    if (std::find(closure.begin(), closure.end(), f) != closure.end()) {
      Fail(e.where, "the pattern of '" + e.name + "' matches the empty text");
    }
    // Partial texts belong to the form but end in no final state.
    for (const Pattern& partial : e.partials) {
      auto [ps, pf] = nfa.Build(partial, static_cast<int>(i));
      nfa.states[start].empty.push_back(ps);
      std::vector<int> reach = nfa.Closure({ps});
      if (std::find(reach.begin(), reach.end(), pf) != reach.end()) {
        Fail(e.where, "a partial pattern of '" + e.name + "' matches the empty text");
      }
    }
  }

  // Subset construction. Sets are numbered in the order they are found,
  // breadth first from the start, so that the output is the same every run.
  std::map<std::vector<int>, int> ids;
  std::vector<std::vector<int>> sets;
  std::vector<std::vector<Interval>> moves;
  auto idOf = [&](std::vector<int> set) {
    set = nfa.Closure(std::move(set));
    auto [it, added] = ids.emplace(set, static_cast<int>(sets.size()));
    if (added) sets.push_back(set);
    return it->second;
  };
  idOf({start});
  for (size_t i = 0; i < sets.size(); ++i) {
    std::vector<Interval> out = Moves(nfa, sets[i]);
    for (Interval& iv : out) iv.targets = {idOf(iv.targets)};
    moves.push_back(std::move(out));
  }

  // Scanner states are the sets reachable after one character or more; the
  // start set itself is only the start table.
  std::vector<int> number(sets.size(), 0);
  std::vector<int> order;
  auto visit = [&](int set) {
    if (number[set] == 0) {
      order.push_back(set);
      number[set] = static_cast<int>(order.size());
    }
  };
  for (const Interval& iv : moves[0]) visit(iv.targets[0]);
  for (size_t i = 0; i < order.size(); ++i) {
    for (const Interval& iv : moves[order[i]]) visit(iv.targets[0]);
  }

  auto kindOf = [&](int entry) { return description.entries[entry].kind; };
  Dfa dfa;
  dfa.states.resize(order.size() + 1);
  std::set<int> completable;
  for (size_t n = 0; n < order.size(); ++n) {
    const std::vector<int>& set = sets[order[n]];
    DfaState& st = dfa.states[n + 1];
    int finalEntry = -1, openEntry = -1;
    for (int s : set) {
      int form = nfa.states[s].form;
      if (form < 0) continue;
      if (nfa.states[s].accepts && (finalEntry < 0 || kindOf(form) < kindOf(finalEntry))) finalEntry = form;
      if (openEntry < 0 || kindOf(form) < kindOf(openEntry)) openEntry = form;
    }
    if (finalEntry >= 0) {
      st.kind = kindOf(finalEntry);
      st.checksKeywords = description.entries[finalEntry].checksKeywords;
      completable.insert(finalEntry);
    } else {
      st.kind = kindOf(openEntry);
      st.partial = true;
    }
    // Adjacent intervals that lead to the same state become one move.
    for (const Interval& iv : moves[order[n]]) {
      int target = number[iv.targets[0]];
      if (!st.moves.empty() && st.moves.back().hi + 1 == iv.lo && st.moves.back().target == target) {
        st.moves.back().hi = iv.hi;
      } else {
        st.moves.push_back({iv.lo, iv.hi, target});
      }
    }
  }
  for (const Interval& iv : moves[0]) {
    int target = number[iv.targets[0]];
    if (!dfa.start.empty() && dfa.start.back().hi + 1 == iv.lo && dfa.start.back().target == target) {
      dfa.start.back().hi = iv.hi;
    } else {
      dfa.start.push_back({iv.lo, iv.hi, target});
    }
  }

  for (size_t i = 0; i < description.entries.size(); ++i) {
    const TokenEntry& e = description.entries[i];
    if (!e.IsAutomatonForm() || completable.count(static_cast<int>(i))) continue;
    Fail(e.where, "no text scans as '" + e.name + "': forms with lower kinds take all of it");
  }
  return Minimize(dfa);
}

int RunDfa(const Dfa& dfa, const std::u16string& text) {
  const std::vector<DfaTransition>* moves = &dfa.start;
  int state = 0;
  for (char16_t c : text) {
    int next = 0;
    for (const DfaTransition& t : *moves) {
      if (c >= t.lo && c <= t.hi) next = t.target;
    }
    if (next == 0) return 0;
    state = next;
    moves = &dfa.states[state].moves;
  }
  return state;
}

}  // namespace grammargen
