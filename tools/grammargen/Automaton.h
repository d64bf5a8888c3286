// Builds the scanner automaton from the token forms of a description: one
// nondeterministic automaton for all forms, then the deterministic one by
// subset construction over ranges of code units.
//
// The scanner runs the automaton as far as it can move and never backs up: the
// state where it stops gives the kind. A final state takes the lowest kind
// among the forms it completes; a state that is not final takes the lowest
// kind among the forms still under way there, and the token is partial.
#pragma once

#include <cstdint>
#include <vector>

#include "TokenDescription.h"

namespace grammargen {

struct DfaTransition {
  uint32_t lo;
  uint32_t hi;
  int target;  // a state number, from 1
};

struct DfaState {
  int kind = 0;          // the kind of a token that stops here
  bool partial = false;  // no form is complete here
  bool checksKeywords = false;
  std::vector<DfaTransition> moves;  // sorted by lo, disjoint
};

struct Dfa {
  // states[0] is unused: state 0 is "no token" (noSym) in the scanner.
  std::vector<DfaState> states;
  // The state each first character leads to (0: it starts nothing).
  std::vector<DfaTransition> start;
};

// Fails on a form that matches the empty text or can never be completed.
Dfa BuildDfa(const TokenDescription& description);

// Runs `text` (small letters) from the start; the state it ends in, or 0.
int RunDfa(const Dfa& dfa, const std::u16string& text);

}  // namespace grammargen
