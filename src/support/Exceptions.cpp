#include "support/Exceptions.h"

#include "support/WideFormat.h"

namespace mv {

Exception::Exception(WideString message) : message_(std::move(message)), utf8_(UTF8Encode(message_)) {}

Exception::~Exception() = default;

void Exception::SetMessage(WideString message) {
  message_ = std::move(message);
  utf8_ = UTF8Encode(message_);
}

const char* ExceptionClassName(const std::exception& e) {
  if (auto* own = dynamic_cast<const Exception*>(&e)) return own->ClassName();
  return "Exception";
}

WideString ExceptionMessage(const std::exception& e) {
  if (auto* own = dynamic_cast<const Exception*>(&e)) return own->Message();
  return UTF8Decode(e.what());
}

void RaiseListIndexError(int64_t index, int64_t count) {
  throw EListError(WideFormat(u"List index out of bounds (%d); the list holds %d entries", {index, count}));
}

}  // namespace mv
