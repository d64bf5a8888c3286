#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "RunTool.h"
#include "Thrown.h"
#include "support/Exceptions.h"
#include "support/LogHelper.h"
#include "support/Loggers.h"
#include "support/Persistent.h"

using namespace mv;

namespace {

// Remembers what reached each level, unformatted.
class RecordingLogger : public ImvLogger {
 public:
  void Debug(WideStringView m) override { lines.push_back(u"D " + WideString(m)); }
  void Info(WideStringView m) override { lines.push_back(u"I " + WideString(m)); }
  void Warn(WideStringView m) override { lines.push_back(u"W " + WideString(m)); }
  void Error(WideStringView m) override { lines.push_back(u"E " + WideString(m)); }
  void Fatal(WideStringView m) override { lines.push_back(u"F " + WideString(m)); }
  std::vector<WideString> lines;
};

class Options : public TmvPersistent {
  MV_DECLARE_CLASS()
 public:
  void DescribeProperties(TmvPropertyWriter& w) const override {
    TmvPersistent::DescribeProperties(w);
    w.WriteInteger(u"RightMargin", 80);
    w.WriteText(u"Name", u"it's");
    w.WriteBoolean(u"Quote", true);
    w.WriteObject(u"Child", child);
  }
  const Options* child = nullptr;
};
MV_DEFINE_CLASS(Options, TmvPersistent)

// A line "hh:nn:ss.zzz: XXXXXXXX: Lvl: message".
const std::regex kEntry(R"(^(\d\d):([0-5]\d):([0-5]\d)\.\d{3}: ([0-9A-F]{8}): ([A-Za-z]{3}): (.*)$)");

std::string Utf8(const WideString& w) { return UTF8Encode(w); }

std::string ThisThreadHex() {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%08X", static_cast<unsigned>(gettid()));
  return buf;
}

// Splits UTF-16 LE bytes at CR LF; fails the test on an odd length or on a
// line end that is not a whole UTF-16 CR LF.
std::vector<WideString> Utf16Lines(const std::string& bytes) {
  EXPECT_EQ(bytes.size() % 2, 0u);
  WideString text;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2)
    text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
  std::vector<WideString> lines;
  size_t start = 0;
  for (size_t pos; (pos = text.find(u"\r\n", start)) != WideString::npos; start = pos + 2)
    lines.push_back(text.substr(start, pos - start));
  EXPECT_EQ(start, text.size()) << "text after the last CR LF";
  for (const WideString& line : lines) EXPECT_EQ(line.find_first_of(u"\r\n"), WideString::npos);
  return lines;
}

std::string TempPath(const char* name) {
  return testing::TempDir() + "mvlog-" + std::to_string(getpid()) + "-" + name + ".log";
}

}  // namespace

// --- Helper ---

TEST(LogHelper, WithoutLoggerNothingIsFormattedAndItIsInactive) {
  TmvLogHelper log(u"P.");
  EXPECT_FALSE(log.IsActive());
  // Templates that would not fit their arguments are never looked at: with
  // an active helper each of these raises (see LevelsPrefixFormatsAndExceptionsReachTheLogger).
  EXPECT_NO_THROW(log.Debug(u"%d", u"not a number"));
  EXPECT_NO_THROW(log.Info(u"%s %s", u"one"));
  EXPECT_NO_THROW(log.Fatal(u"%q", 1));
  EXPECT_NO_THROW(log.Exception(u"failed", std::runtime_error("boom")));
  EXPECT_NO_THROW(log.Persistent(nullptr));
}

TEST(LogHelper, LevelsPrefixFormatsAndExceptionsReachTheLogger) {
  auto logger = std::make_shared<RecordingLogger>();
  TmvLogHelper log(u"P.");
  log.SetLogger(logger);
  EXPECT_TRUE(log.IsActive());
  log.Debug(u"d");
  log.Info(u"i");
  log.Warn(u"w");
  log.Error(u"e");
  log.Fatal(u"f");
  // A plain message with "%" passes unchanged; the format forms go through WideFormat.
  log.Info(u"100% done, %s %d %");
  log.Debug(u"%d objects in %s", 3, u"dbo");
  log.Warn(u"%1:s-%0:s", u"a", u"b");
  EXPECT_THROW(log.Info(u"%d", u"text"), EConvertError);
  // Exceptions report their class name.
  log.Exception(u"Parse", mv::Exception(u"plain"));
  log.Exception(u"Load", EmvQueryBuilderError(u"no provider"));
  log.Exception(u"Std", std::runtime_error("from the library"));
  EXPECT_EQ(logger->lines, (std::vector<WideString>{
                               u"D P.d", u"I P.i", u"W P.w", u"E P.e", u"F P.f", u"I P.100% done, %s %d %",
                               u"D P.3 objects in dbo", u"W P.b-a",
                               u"E P.Parse: Exception: Exception; Message: plain",
                               u"E P.Load: Exception: EmvQueryBuilderError; Message: no provider",
                               u"E P.Std: Exception: Exception; Message: from the library",
                           }));
}

TEST(LogHelper, PersistentIsDumpedReadably) {
  auto logger = std::make_shared<RecordingLogger>();
  TmvLogHelper log;
  log.SetLogger(logger);
  Options inner, outer;
  outer.child = &inner;
  log.Persistent(&outer);
  EXPECT_EQ(logger->lines, (std::vector<WideString>{
                               u"I object Options",
                               u"I   RightMargin = 80",
                               u"I   Name = 'it''s'",
                               u"I   Quote = True",
                               u"I   object Child: Options",
                               u"I     RightMargin = 80",
                               u"I     Name = 'it''s'",
                               u"I     Quote = True",
                               u"I     Child = nil",
                               u"I   end",
                               u"I end",
                           }));
}

TEST(LogHelper, ObjectDumpOfACycleStops) {
  Options a;
  a.child = &a;
  const auto lines = TmvPropertyWriter::Describe(a);
  EXPECT_LT(lines.size(), 200u);
  EXPECT_NE(std::find(lines.begin(), lines.end(),
                      WideString(32, u' ') + u"Child = (nested too deep)"),
            lines.end());
}

TEST(LogHelper, ObjectPrefixHasClassAndAddress) {
  Options o;
  const std::string prefix = Utf8(TmvLogHelper::ObjectPrefix(&o));
  EXPECT_TRUE(std::regex_match(prefix, std::regex(R"(Options\([0-9A-F]{16}\)\.)"))) << prefix;
  char expected[32];
  std::snprintf(expected, sizeof expected, "%016llX",
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&o)));
  EXPECT_NE(prefix.find(expected), std::string::npos);
}

// --- Buffered loggers ---

TEST(Loggers, StringsLoggerWritesEachLevelAsTimeThreadLevelMessage) {
  TmvStringsLogger logger(u"header");
  logger.Debug(u"1");
  logger.Info(u"2");
  logger.Warn(u"3");
  logger.Error(u"4");
  logger.Fatal(u"a: b %s");
  const auto lines = logger.Snapshot();
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], u"header");
  const char* levels[] = {"Dbg", "Inf", "Wrn", "Err", "Ftl"};
  for (int i = 0; i < 5; ++i) {
    std::smatch m;
    const std::string line = Utf8(lines[i + 1]);
    ASSERT_TRUE(std::regex_match(line, m, kEntry)) << line;
    EXPECT_LT(std::stoi(m[1]), 24);
    EXPECT_EQ(m[4], ThisThreadHex());
    EXPECT_EQ(m[5], levels[i]);
    EXPECT_EQ(m[6], i < 4 ? std::to_string(i + 1) : "a: b %s");
  }
  EXPECT_EQ(logger.GetBuffer()->size(), 6u);
}

TEST(Loggers, StringsLoggerOnAGivenListLeavesItToTheCaller) {
  std::vector<WideString> lines{u"kept"};
  {
    auto logger = std::make_shared<TmvStringsLogger>(&lines);
    TmvLogHelper log(u"X.");
    log.SetLogger(logger);
    log.Info(u"Привет, 世界");
    EXPECT_EQ(logger->GetBuffer(), &lines);
  }
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], u"kept");
  EXPECT_TRUE(lines[1].ends_with(u": Inf: X.Привет, 世界"));
}

TEST(Loggers, FileLoggerFirstLineIsLogOpenedInUtf16WithCrLf) {
  const std::string path = TempPath("first");
  {
    TmvFileLogger logger(path);
    logger.Info(u"Ünïcødé €");
    logger.Error(u"");
  }
  const std::string bytes = mvtest::ReadFileBytes(path);
  unlink(path.c_str());
  // No byte order mark: the first bytes are the first digit of the time.
  ASSERT_GE(bytes.size(), 4u);
  EXPECT_TRUE(bytes[0] >= '0' && bytes[0] <= '2');
  EXPECT_EQ(bytes[1], '\0');
  // The last four bytes are CR LF as UTF-16 LE.
  EXPECT_EQ(bytes.substr(bytes.size() - 4), std::string("\r\0\n\0", 4));
  const auto lines = Utf16Lines(bytes);
  ASSERT_EQ(lines.size(), 3u);
  std::smatch m;
  std::string line = Utf8(lines[0]);
  ASSERT_TRUE(std::regex_match(line, m, kEntry)) << line;
  EXPECT_EQ(m[5], "Log");
  EXPECT_EQ(m[6], "Log opened");
  line = Utf8(lines[1]);
  ASSERT_TRUE(std::regex_match(line, m, kEntry)) << line;
  EXPECT_EQ(m[5], "Inf");
  EXPECT_EQ(lines[1].substr(lines[1].size() - 9), u"Ünïcødé €");
  EXPECT_TRUE(lines[2].ends_with(u": Err: "));
}

TEST(Loggers, FileLoggerReplacesAnExistingFileAndWritesTheHeaderFirst) {
  const std::string path = TempPath("header");
  {
    TmvFileLogger first(path);
    for (int i = 0; i < 50; ++i) first.Info(u"old entry");
  }
  {
    TmvFileLogger second(path, u"My header");
    EXPECT_EQ(second.GetFileName(), path);
  }
  const auto lines = Utf16Lines(mvtest::ReadFileBytes(path));
  unlink(path.c_str());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], u"My header");
  EXPECT_TRUE(lines[1].ends_with(u": Log: Log opened"));
}

TEST(Loggers, FileLoggerThatCannotCreateItsFileRaises) {
  EXPECT_NE(mvtest::ThrownMessage<EmvQueryBuilderError>([&] {
              TmvFileLogger logger("/nonexistent-folder/x.log");
            }).find(u"/nonexistent-folder/x.log"),
            WideString::npos);
}

TEST(Loggers, EntriesAreFlushedAsTheyAreWritten) {
  const std::string path = TempPath("flush");
  TmvFileLogger logger(path);
  logger.Warn(u"visible at once");
  // Read while the logger is still open.
  const auto lines = Utf16Lines(mvtest::ReadFileBytes(path));
  unlink(path.c_str());
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(lines[1].ends_with(u": Wrn: visible at once"));
}

TEST(Loggers, ThreadsLoggingAtOnceGiveWholeLines) {
  const std::string path = TempPath("threads");
  constexpr int kThreads = 8, kLines = 150;
  std::set<std::string> threadIds;
  {
    auto logger = std::make_shared<TmvFileLogger>(path);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([logger, t] {
        TmvLogHelper log(WideFormat(u"T%d.", {t}));
        log.SetLogger(logger);
        for (int i = 0; i < kLines; ++i) log.Info(u"line %d of thread %d with some padding text", i, t);
      });
    }
    for (auto& thread : threads) thread.join();
  }
  const auto lines = Utf16Lines(mvtest::ReadFileBytes(path));
  unlink(path.c_str());
  ASSERT_EQ(lines.size(), 1u + kThreads * kLines);
  std::vector<int> next(kThreads, 0);
  std::vector<std::string> idOfThread(kThreads);
  const std::regex body(R"(T(\d+)\.line (\d+) of thread (\d+) with some padding text)");
  for (size_t i = 1; i < lines.size(); ++i) {
    std::smatch m, b;
    const std::string line = Utf8(lines[i]);
    ASSERT_TRUE(std::regex_match(line, m, kEntry)) << line;
    const std::string text = m[6];
    ASSERT_TRUE(std::regex_match(text, b, body)) << text;
    const int t = std::stoi(b[1]);
    ASSERT_EQ(std::stoi(b[3]), t);
    // Each thread's lines come in its own order, and each thread has one id.
    EXPECT_EQ(std::stoi(b[2]), next[t]++);
    if (idOfThread[t].empty()) idOfThread[t] = m[4];
    EXPECT_EQ(idOfThread[t], m[4]);
    threadIds.insert(m[4]);
  }
  EXPECT_EQ(threadIds.size(), static_cast<size_t>(kThreads));
}

TEST(Loggers, StringsLoggerSharedByThreads) {
  auto logger = std::make_shared<TmvStringsLogger>();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([logger] {
      for (int i = 0; i < 200; ++i) logger->Debug(u"x");
    });
  }
  for (auto& thread : threads) thread.join();
  const auto lines = logger->Snapshot();
  EXPECT_EQ(lines.size(), 800u);
  for (const auto& line : lines) EXPECT_TRUE(line.ends_with(u": Dbg: x"));
}

TEST(Loggers, DebugOutputGoesToTheReplaceableSink) {
  std::vector<WideString> seen;
  std::mutex seenLock;
  TmvDebugOutputSink previous = SetDebugOutputSink([&](WideStringView text) {
    std::lock_guard<std::mutex> guard(seenLock);
    seen.emplace_back(text);
  });
  {
    TmvOutputDebugStringLogger logger(u"start");
    logger.Info(u"to the debugger");
  }
  SetDebugOutputSink(previous);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0], u"start");
  EXPECT_TRUE(seen[1].ends_with(u": Inf: to the debugger"));
}

TEST(Loggers, DefaultDebugSinkWritesAUtf8LineToStandardError) {
  SetDebugOutputSink({});
  testing::internal::CaptureStderr();
  OutputDebugText(u"héllo");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "h\xC3\xA9llo\n");
}
