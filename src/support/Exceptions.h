// The engine's exception classes. `Exception` is the plain one; every failure
// the engine raises derives from it, keeps its message as wide text and names
// its class (the logger reports the class name).
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "support/WideString.h"

namespace mv {

class Exception : public std::exception {
 public:
  explicit Exception(WideString message);
  ~Exception() override;

  const WideString& Message() const { return message_; }
  void SetMessage(WideString message);
  // The class name as the logger reports it ("Exception" for a plain one).
  virtual const char* ClassName() const { return "Exception"; }
  // The message in UTF-8.
  const char* what() const noexcept override { return utf8_.c_str(); }

 private:
  WideString message_;
  std::string utf8_;
};

// The engine's general exception. The two-argument form also keeps the text
// the failure is about (a statement, a name).
class EmvQueryBuilderError : public Exception {
 public:
  explicit EmvQueryBuilderError(WideString message) : Exception(std::move(message)) {}
  EmvQueryBuilderError(WideString text, WideString message)
      : Exception(std::move(message)), text_(std::move(text)) {}
  const char* ClassName() const override { return "EmvQueryBuilderError"; }
  const WideString& Text() const { return text_; }

 private:
  WideString text_;
};

// The class name of any exception: ours name themselves, others are "Exception".
const char* ExceptionClassName(const std::exception& e);
// The message of any exception as wide text.
WideString ExceptionMessage(const std::exception& e);

}  // namespace mv

namespace mv {

// A text that cannot be converted, or a format that does not fit its arguments.
class EConvertError : public Exception {
 public:
  using Exception::Exception;
  const char* ClassName() const override { return "EConvertError"; }
};

// The silent exception: a deliberate stop (a load the user aborted, a change
// a handler refused). It is no failure to report, and layers that wrap
// failures in their own messages let it pass as it is.
class EAbort : public Exception {
 public:
  EAbort() : Exception(u"Operation aborted") {}
  using Exception::Exception;
  const char* ClassName() const override { return "EAbort"; }
};

// An index outside a list, or a key that a keyed list does not hold.
class EListError : public Exception {
 public:
  using Exception::Exception;
  const char* ClassName() const override { return "EListError"; }
};

// Raises EListError for `index` of a list with `count` entries:
// "List index out of bounds (5)", with the count for a quick diagnosis.
[[noreturn]] void RaiseListIndexError(int64_t index, int64_t count);

}  // namespace mv
