// Diagnostic logging. Logging is off unless a program hands an `ImvLogger`
// to a query builder, a provider or a context; every class that holds a
// `TmvLogHelper` then writes through it. One logger may be shared by all of
// them (std::shared_ptr) and reached from several threads; a helper belongs
// to its owner's thread.
//
//   TmvLogHelper log(TmvLogHelper::ObjectPrefix(this));   // "TmvFoo(00007F...)."
//   log.SetLogger(logger);
//   log.Info(u"metadata loaded");
//   log.Debug(u"%d objects in %s", count, name);          // formatted only when active
//   if (log.IsActive()) log.Debug(ExpensiveText());
#pragma once

#include <exception>
#include <memory>

#include "support/WideFormat.h"
#include "support/WideString.h"

namespace mv {

class TmvObject;
class TmvPersistent;

// A destination of log entries, one operation per level.
class ImvLogger {
 public:
  virtual ~ImvLogger() = default;
  virtual void Debug(WideStringView message) = 0;
  virtual void Info(WideStringView message) = 0;
  virtual void Warn(WideStringView message) = 0;
  virtual void Error(WideStringView message) = 0;
  virtual void Fatal(WideStringView message) = 0;
};

class TmvLogHelper {
 public:
  TmvLogHelper() = default;
  explicit TmvLogHelper(WideString prefix) : prefix_(std::move(prefix)) {}

  const std::shared_ptr<ImvLogger>& GetLogger() const { return logger_; }
  void SetLogger(std::shared_ptr<ImvLogger> logger) { logger_ = std::move(logger); }
  const WideString& GetPrefix() const { return prefix_; }
  void SetPrefix(WideString prefix) { prefix_ = std::move(prefix); }

  // A logger is set. Without one every operation returns at once and
  // nothing is formatted.
  bool IsActive() const { return logger_ != nullptr; }

  // The prefix followed by the message, unchanged (a '%' stays a '%').
  void Debug(WideStringView message) const { Write(Level::Debug, message); }
  void Info(WideStringView message) const { Write(Level::Info, message); }
  void Warn(WideStringView message) const { Write(Level::Warn, message); }
  void Error(WideStringView message) const { Write(Level::Error, message); }
  void Fatal(WideStringView message) const { Write(Level::Fatal, message); }

  // The prefix followed by WideFormat(format, args).
  template <class First, class... Rest>
  void Debug(WideStringView format, const First& first, const Rest&... rest) const {
    if (IsActive()) Write(Level::Debug, WideFormat(format, {TmvFormatArg(first), TmvFormatArg(rest)...}));
  }
  template <class First, class... Rest>
  void Info(WideStringView format, const First& first, const Rest&... rest) const {
    if (IsActive()) Write(Level::Info, WideFormat(format, {TmvFormatArg(first), TmvFormatArg(rest)...}));
  }
  template <class First, class... Rest>
  void Warn(WideStringView format, const First& first, const Rest&... rest) const {
    if (IsActive()) Write(Level::Warn, WideFormat(format, {TmvFormatArg(first), TmvFormatArg(rest)...}));
  }
  template <class First, class... Rest>
  void Error(WideStringView format, const First& first, const Rest&... rest) const {
    if (IsActive()) Write(Level::Error, WideFormat(format, {TmvFormatArg(first), TmvFormatArg(rest)...}));
  }
  template <class First, class... Rest>
  void Fatal(WideStringView format, const First& first, const Rest&... rest) const {
    if (IsActive()) Write(Level::Fatal, WideFormat(format, {TmvFormatArg(first), TmvFormatArg(rest)...}));
  }

  // Error "<message>: Exception: <class name>; Message: <text>". A plain or
  // foreign exception shows as "Exception".
  void Exception(WideStringView message, const std::exception& e) const;

  // The object's readable form (TmvPropertyWriter::Describe), one Info line each.
  void Persistent(const TmvPersistent* object) const;

  // The usual prefix of an object's helper: "TClass(ADDRESS)." with the
  // address as 16 upper-case hexadecimal digits.
  static WideString ObjectPrefix(const TmvObject* object);

 private:
  enum class Level { Debug, Info, Warn, Error, Fatal };
  void Write(Level level, WideStringView message) const;

  std::shared_ptr<ImvLogger> logger_;
  WideString prefix_;
};

}  // namespace mv
