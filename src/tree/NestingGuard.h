// The limit on the nesting that the recursive operations of the tree take.
//
// Freeing, Clone, Assign, the walks and the rewriting of conditions run in
// loops, and printing runs in a loop through nodes that print in parts
// (operators, Not, brackets, And, Or), so a chain of any length is no
// concern. What still recurses is printing through other nodes nested in
// each other (a function call in a function call, a sub-query in a
// sub-query, a condition in brackets in a condition); each such level
// counts, and past TastMaxNestingDepth levels the operation ends with
// EmvQueryBuilderError instead of overflowing the stack. Text that the
// parsers accept stays far below the limit, for they refuse to nest rules
// more than TmvBaseParser::MaxRuleDepth deep; only trees built by hand can
// reach it.
#pragma once

#include <cstdint>

namespace mv {

// The most levels of nested recursion a tree operation goes through. At the
// limit printing needs about 0.5 MB of stack in an optimised build (more
// with the address sanitizer).
inline constexpr int32_t TastMaxNestingDepth = 2000;

// Message key: the tree is nested more deeply than its operations go.
inline constexpr const char16_t* mvQBTreeNestingTooDeep = u"mvQBTreeNestingTooDeep";

// One level of a recursive tree operation on this thread, for as long as it
// lives. The level past TastMaxNestingDepth raises EmvQueryBuilderError.
class TastNestingGuard {
 public:
  TastNestingGuard();
  ~TastNestingGuard();
  TastNestingGuard(const TastNestingGuard&) = delete;
  TastNestingGuard& operator=(const TastNestingGuard&) = delete;

  // The levels open on this thread.
  static int32_t Depth();
};

}  // namespace mv
