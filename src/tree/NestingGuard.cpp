#include "tree/NestingGuard.h"

#include <mutex>

#include "support/Exceptions.h"
#include "support/MessageCatalog.h"

namespace mv {

namespace {

void RegisterTreeMessages() {
  static std::once_flag once;
  std::call_once(once, [] {
    MessageCatalog().Register(mvQBTreeNestingTooDeep,
                              u"The expression is nested too deeply: more than %d levels");
  });
}

// The levels open on this thread. Kept to this file: every access goes
// through the functions below rather than through another file's inline
// code.
thread_local int32_t nestingDepth = 0;

}  // namespace

TastNestingGuard::TastNestingGuard() {
  if (nestingDepth >= TastMaxNestingDepth) {
    RegisterTreeMessages();
    throw EmvQueryBuilderError(MessageFormat(mvQBTreeNestingTooDeep, {TastMaxNestingDepth}));
  }
  ++nestingDepth;
}

TastNestingGuard::~TastNestingGuard() { --nestingDepth; }

int32_t TastNestingGuard::Depth() { return nestingDepth; }

}  // namespace mv
