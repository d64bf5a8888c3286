#include "support/LogHelper.h"

#include "support/Exceptions.h"
#include "support/Persistent.h"

namespace mv {

void TmvLogHelper::Write(Level level, WideStringView message) const {
  if (!logger_) return;
  WideString text;
  text.reserve(prefix_.size() + message.size());
  text.append(prefix_).append(message);
  switch (level) {
    case Level::Debug: logger_->Debug(text); break;
    case Level::Info: logger_->Info(text); break;
    case Level::Warn: logger_->Warn(text); break;
    case Level::Error: logger_->Error(text); break;
    case Level::Fatal: logger_->Fatal(text); break;
  }
}

void TmvLogHelper::Exception(WideStringView message, const std::exception& e) const {
  if (!IsActive()) return;
  Error(u"%s: Exception: %s; Message: %s", message, WideFromAscii(ExceptionClassName(e)), ExceptionMessage(e));
}

void TmvLogHelper::Persistent(const TmvPersistent* object) const {
  if (!IsActive()) return;
  if (!object) {
    Info(u"nil");
    return;
  }
  for (const WideString& line : TmvPropertyWriter::Describe(*object)) Info(line);
}

WideString TmvLogHelper::ObjectPrefix(const TmvObject* object) {
  const WideString name = object ? WideFromAscii(object->ClassName()) : WideString(u"nil");
  return WideFormat(u"%s(%p).", {name, static_cast<const void*>(object)});
}

}  // namespace mv
