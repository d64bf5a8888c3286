// The loggers: a buffered base that formats and serialises entries, and its
// three destinations (a file, a list of lines, the debugger output).
//
// An entry is one line "time: thread: level: message", the time as
// hh:nn:ss.zzz and the thread as eight upper-case hexadecimal digits of the
// kernel thread id. Levels are "Dbg", "Inf", "Wrn", "Err", "Ftl" (and "Log"
// for the file logger's first entry). Formatting runs outside the lock, so
// threads format at once; only `WriteEntry` runs under it, and entries appear
// in the order in which they got the lock.
//
//   auto logger = std::make_shared<TmvFileLogger>("/tmp/engine.log");
//   builder.SetLogger(logger);
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/LogHelper.h"

namespace mv {

class TmvBufferedLogger : public ImvLogger {
 public:
  TmvBufferedLogger() = default;
  TmvBufferedLogger(const TmvBufferedLogger&) = delete;
  TmvBufferedLogger& operator=(const TmvBufferedLogger&) = delete;

  void Debug(WideStringView message) override { Log(u"Dbg", message); }
  void Info(WideStringView message) override { Log(u"Inf", message); }
  void Warn(WideStringView message) override { Log(u"Wrn", message); }
  void Error(WideStringView message) override { Log(u"Err", message); }
  void Fatal(WideStringView message) override { Log(u"Ftl", message); }

  // Formats the entry (unlocked), writes it (locked), then tells the
  // subclass it was written (unlocked).
  void Log(WideStringView level, WideStringView message);
  // "%s: %s: %s: %s" with the time now, the calling thread, level, message.
  static WideString FormatEntry(WideStringView level, WideStringView message);

 protected:
  // Writes one formatted entry; called with the lock held.
  virtual void WriteEntry(WideStringView text) = 0;
  // Runs after an entry was written, without the lock.
  virtual void NotifyEntryWritten() {}

  void Lock() { lock_.lock(); }
  void Unlock() { lock_.unlock(); }

 private:
  std::mutex lock_;
};

// Writes to a file, created anew (an existing one is replaced). Each entry is
// its UTF-16 LE code units followed by CR LF as UTF-16, with no byte order
// mark; the file is flushed to the disk after each entry, so a crash loses
// none. A non-empty header is written first as a line of its own; then an
// entry of level "Log" with the text "Log opened".
class TmvFileLogger : public TmvBufferedLogger {
 public:
  // Raises EmvQueryBuilderError naming the file when it cannot be created.
  explicit TmvFileLogger(const std::string& fileName, WideStringView header = {});
  ~TmvFileLogger() override;

  const std::string& GetFileName() const { return fileName_; }

 protected:
  void WriteEntry(WideStringView text) override;
  void NotifyEntryWritten() override;

 private:
  void Append(WideStringView text);

  std::string fileName_;
  int fd_ = -1;
};

// Adds entries at the end of a list of lines: its own list, or one that the
// caller gives and keeps owning. Entries stay wide text. A non-empty header
// becomes the first line.
class TmvStringsLogger : public TmvBufferedLogger {
 public:
  explicit TmvStringsLogger(WideStringView header = {});
  // Writes to `lines`, which must outlive the logger.
  explicit TmvStringsLogger(std::vector<WideString>* lines);

  // The list written to. Reading it while other threads log is the
  // caller's to arrange; `Snapshot` is the safe way.
  std::vector<WideString>* GetBuffer() const { return lines_; }
  std::vector<WideString> Snapshot();

 protected:
  void WriteEntry(WideStringView text) override;

 private:
  std::vector<WideString> own_;
  std::vector<WideString>* lines_;
};

// Sends each entry to the debugger output (see OutputDebugText). A
// non-empty header is sent first.
class TmvOutputDebugStringLogger : public TmvBufferedLogger {
 public:
  explicit TmvOutputDebugStringLogger(WideStringView header = {});

 protected:
  void WriteEntry(WideStringView text) override;
};

// --- The debugger output ---

// Where debugger output goes: by default a line in UTF-8 on standard error.
// A sink may be called from several threads at once.
using TmvDebugOutputSink = std::function<void(WideStringView text)>;

// Sends one text to the current sink.
void OutputDebugText(WideStringView text);
// Replaces the sink (an empty one restores the default) and returns the
// previous one. Safe while other threads write.
TmvDebugOutputSink SetDebugOutputSink(TmvDebugOutputSink sink);

}  // namespace mv
