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

}  // namespace

thread_local int32_t TastNestingGuard::depth_ = 0;

TastNestingGuard::TastNestingGuard() {
  if (depth_ >= TastMaxNestingDepth) {
    RegisterTreeMessages();
    throw EmvQueryBuilderError(MessageFormat(mvQBTreeNestingTooDeep, {TastMaxNestingDepth}));
  }
  ++depth_;
}

}  // namespace mv
