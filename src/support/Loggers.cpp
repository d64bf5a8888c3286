#include "support/Loggers.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "support/Exceptions.h"

namespace mv {

namespace {

// The time of day as hh:nn:ss.zzz, local time.
WideString TimeOfDayNow() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto millis =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char buf[16];
  std::snprintf(buf, sizeof buf, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>(millis));
  return WideFromAscii(buf);
}

WideString ThreadIdText() {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%08X", static_cast<unsigned>(gettid()));
  return WideFromAscii(buf);
}

[[noreturn]] void RaiseFileError(const char* what, const std::string& fileName, int error) {
  throw EmvQueryBuilderError(WideFormat(u"Cannot %s log file \"%s\". %s",
                                        {WideFromAscii(what), UTF8Decode(fileName), UTF8Decode(std::strerror(error))}));
}

}  // namespace

// --- Buffered logger ---

WideString TmvBufferedLogger::FormatEntry(WideStringView level, WideStringView message) {
  return WideFormat(u"%s: %s: %s: %s", {TimeOfDayNow(), ThreadIdText(), level, message});
}

void TmvBufferedLogger::Log(WideStringView level, WideStringView message) {
  const WideString entry = FormatEntry(level, message);
  {
    std::lock_guard<std::mutex> guard(lock_);
    WriteEntry(entry);
  }
  NotifyEntryWritten();
}

// --- File logger ---

TmvFileLogger::TmvFileLogger(const std::string& fileName, WideStringView header) : fileName_(fileName) {
  fd_ = ::open(fileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd_ < 0) RaiseFileError("create", fileName, errno);
  // Written directly rather than through the virtual operations, which a
  // subclass might override and which it could not run before it exists.
  if (!header.empty()) Append(header);
  Append(FormatEntry(u"Log", u"Log opened"));
  ::fsync(fd_);
}

TmvFileLogger::~TmvFileLogger() {
  if (fd_ >= 0) ::close(fd_);
}

void TmvFileLogger::WriteEntry(WideStringView text) { Append(text); }

void TmvFileLogger::NotifyEntryWritten() { ::fsync(fd_); }

void TmvFileLogger::Append(WideStringView text) {
  // Little-endian code units, then CR LF as code units too: one write per
  // entry, so that an entry never mixes with another process's.
  std::string bytes;
  bytes.reserve((text.size() + 2) * 2);
  auto put = [&bytes](char16_t unit) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  };
  for (char16_t unit : text) put(unit);
  put(u'\r');
  put(u'\n');
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      RaiseFileError("write to", fileName_, errno);
    }
    done += static_cast<size_t>(n);
  }
}

// --- Strings logger ---

TmvStringsLogger::TmvStringsLogger(WideStringView header) : lines_(&own_) {
  if (!header.empty()) own_.emplace_back(header);
}

TmvStringsLogger::TmvStringsLogger(std::vector<WideString>* lines) : lines_(lines ? lines : &own_) {}

std::vector<WideString> TmvStringsLogger::Snapshot() {
  Lock();
  try {
    std::vector<WideString> copy = *lines_;
    Unlock();
    return copy;
  } catch (...) {
    Unlock();
    throw;
  }
}

void TmvStringsLogger::WriteEntry(WideStringView text) { lines_->emplace_back(text); }

// --- Debugger output ---

namespace {

std::mutex gSinkLock;
std::shared_ptr<const TmvDebugOutputSink> gSink;

void WriteToStandardError(WideStringView text) {
  std::string line = UTF8Encode(text);
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void OutputDebugText(WideStringView text) {
  std::shared_ptr<const TmvDebugOutputSink> sink;
  {
    std::lock_guard<std::mutex> guard(gSinkLock);
    sink = gSink;
  }
  if (sink) {
    (*sink)(text);
  } else {
    WriteToStandardError(text);
  }
}

TmvDebugOutputSink SetDebugOutputSink(TmvDebugOutputSink sink) {
  auto replacement = sink ? std::make_shared<const TmvDebugOutputSink>(std::move(sink)) : nullptr;
  std::lock_guard<std::mutex> guard(gSinkLock);
  TmvDebugOutputSink previous = gSink ? *gSink : TmvDebugOutputSink();
  gSink = std::move(replacement);
  return previous;
}

TmvOutputDebugStringLogger::TmvOutputDebugStringLogger(WideStringView header) {
  if (!header.empty()) OutputDebugText(header);
}

void TmvOutputDebugStringLogger::WriteEntry(WideStringView text) { OutputDebugText(text); }

}  // namespace mv
