#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchRunner.h"
#include "RunTool.h"

namespace {

using mvtest::TempFile;

std::string ArgumentError(const std::vector<std::string>& args) {
  try {
    mv::ParseBenchArguments(args);
  } catch (const std::invalid_argument& e) {
    return e.what();
  }
  return "";
}

bool Contains(const mv::TmvBenchStatement& s, const std::string& what) {
  return s.Utf8.find(what) != std::string::npos;
}

TEST(BenchRunner, ArgumentsHaveDefaultsAndOverrides) {
  const auto defaults = mv::ParseBenchArguments({"set.sql"});
  EXPECT_EQ(defaults.StatementsPath, "set.sql");
  EXPECT_EQ(defaults.Runs, 5);
  EXPECT_DOUBLE_EQ(defaults.BudgetSeconds, 10);
  EXPECT_DOUBLE_EQ(defaults.MinRunSeconds, 0.05);
  EXPECT_FALSE(defaults.Verbose);
  EXPECT_TRUE(defaults.OnlyPath.empty());

  const auto all = mv::ParseBenchArguments({"--runs", "3", "--budget", "2.5", "--min-time", "0", "--only", "o.txt",
                                            "--accepted-out", "a.txt", "--verbose", "x.sql"});
  EXPECT_EQ(all.Runs, 3);
  EXPECT_DOUBLE_EQ(all.BudgetSeconds, 2.5);
  EXPECT_DOUBLE_EQ(all.MinRunSeconds, 0);
  EXPECT_EQ(all.OnlyPath, "o.txt");
  EXPECT_EQ(all.AcceptedOutPath, "a.txt");
  EXPECT_TRUE(all.Verbose);
  EXPECT_EQ(all.StatementsPath, "x.sql");
}

TEST(BenchRunner, BadArgumentsAreExplained) {
  EXPECT_EQ(ArgumentError({}), "no statements file given");
  EXPECT_EQ(ArgumentError({"a.sql", "b.sql"}), "one statements file only, not also 'b.sql'");
  EXPECT_EQ(ArgumentError({"--fast", "a.sql"}), "unknown option --fast");
  EXPECT_EQ(ArgumentError({"a.sql", "--runs"}), "--runs needs a value");
  EXPECT_EQ(ArgumentError({"--runs", "0", "a.sql"}), "--runs needs a whole number of at least 1, not '0'");
  EXPECT_EQ(ArgumentError({"--runs", "3x", "a.sql"}), "--runs needs a whole number of at least 1, not '3x'");
  EXPECT_EQ(ArgumentError({"--budget", "-1", "a.sql"}), "--budget needs a number of seconds, not '-1'");
  EXPECT_EQ(ArgumentError({"--min-time", "nan", "a.sql"}), "--min-time needs a number of seconds, not 'nan'");
}

TEST(BenchRunner, LoadsEntriesWithUtf8TextAndKeepsOnlyListedOnes) {
  TempFile statements("SELECT 1\n;;\n\n;;\nSELECT '\xE2\x82\xAC'\n;;\nSELECT 3\n", ".sql");
  const auto all = mv::LoadBenchStatements(statements.path(), "");
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[1].Index, 3);  // the blank entry 2 still counts
  EXPECT_EQ(all[1].Utf8, "SELECT '\xE2\x82\xAC'");
  EXPECT_EQ(all[1].Text, u"SELECT '\u20AC'");

  TempFile only("# kept\n4\n\n 1 \r\n", ".txt");
  const auto some = mv::LoadBenchStatements(statements.path(), only.path());
  ASSERT_EQ(some.size(), 2u);
  EXPECT_EQ(some[0].Utf8, "SELECT 1");
  EXPECT_EQ(some[1].Utf8, "SELECT 3");
}

TEST(BenchRunner, OnlyListNamingNoEntryOrGarbageFails) {
  TempFile statements("SELECT 1\n;;\n\n;;\nSELECT 3\n", ".sql");
  TempFile blankEntry("2\n", ".txt");
  EXPECT_THROW(mv::LoadBenchStatements(statements.path(), blankEntry.path()), std::runtime_error);
  TempFile garbage("1\nthree\n", ".txt");
  try {
    mv::LoadBenchStatements(statements.path(), garbage.path());
    FAIL() << "no error for a bad entry number";
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(std::string(e.what()), garbage.path() + ":2: entry number needs a whole number of at least 1, not 'three'");
  }
  EXPECT_THROW(mv::LoadBenchStatements(statements.path(), "/nonexistent/only.txt"), std::runtime_error);
  EXPECT_THROW(mv::LoadBenchStatements("/nonexistent/set.sql", ""), std::exception);
}

TEST(BenchRunner, CountsAcceptedRejectedAndBytesPerMode) {
  TempFile statements("ok one\n;;\nbad two\n;;\nok three\n;;\nfour\n", ".sql");
  TempFile accepted("", ".txt");
  const auto loaded = mv::LoadBenchStatements(statements.path(), "");
  int calls = 0;
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "keyword",
       [&](const mv::TmvBenchStatement& s, std::string& error) {
         ++calls;
         if (Contains(s, "ok")) return true;
         error = "no ok in it\nsecond line";
         return false;
       }},
      {"parse+print", "throwing",
       [](const mv::TmvBenchStatement& s, std::string&) {
         if (Contains(s, "bad")) throw std::runtime_error("bad statement");
         return true;
       }},
  };
  mv::TmvBenchOptions options;
  options.Runs = 3;
  options.MinRunSeconds = 0;
  options.AcceptedOutPath = accepted.path();
  options.Verbose = true;
  std::ostringstream log;
  const auto results = mv::RunBenchModes("fake", modes, loaded, options, log);
  ASSERT_EQ(results.size(), 2u);

  EXPECT_EQ(results[0].Tool, "fake");
  EXPECT_EQ(results[0].Mode, "parse");
  EXPECT_EQ(results[0].Work, "keyword");
  EXPECT_EQ(results[0].Statements, 4);
  EXPECT_EQ(results[0].Accepted, 2);
  EXPECT_EQ(results[0].Rejected, 2);
  EXPECT_EQ(results[0].Bytes, std::string("ok one").size() + std::string("ok three").size());
  EXPECT_EQ(results[0].Runs, 3);
  EXPECT_EQ(results[0].Reps, 1);
  EXPECT_GT(results[0].Seconds, 0);
  // Warm-up over all four, then the sizing pass and three runs over the two accepted.
  EXPECT_EQ(calls, 4 + 2 + 3 * 2);

  EXPECT_EQ(results[1].Accepted, 3);
  EXPECT_EQ(results[1].Rejected, 1);
  EXPECT_EQ(results[1].Bytes, 6u + 8u + 4u);

  EXPECT_EQ(log.str(),
            "fake parse: entry 2 rejected: no ok in it\n"
            "fake parse: entry 4 rejected: no ok in it\n"
            "fake parse+print: entry 2 rejected: bad statement\n");
  // Accepted by every mode: 1 and 3.
  EXPECT_EQ(mvtest::ReadFileBytes(accepted.path()), "1\n3\n");
}

TEST(BenchRunner, ShortPassesAreRepeatedAndTheBudgetEndsRuns) {
  TempFile statements("SELECT 1\n", ".sql");
  const auto loaded = mv::LoadBenchStatements(statements.path(), "");
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "nothing", [](const mv::TmvBenchStatement&, std::string&) { return true; }}};
  mv::TmvBenchOptions options;
  options.Runs = 50;
  options.BudgetSeconds = 0;  // the first run always happens, no second one
  options.MinRunSeconds = 0.01;
  std::ostringstream log;
  const auto results = mv::RunBenchModes("fake", modes, loaded, options, log);
  ASSERT_EQ(results.size(), 1u);
  EXPECT_EQ(results[0].Runs, 1);
  EXPECT_GT(results[0].Reps, 100);
  EXPECT_LT(results[0].Seconds, 0.001);
  EXPECT_TRUE(log.str().empty());
}

TEST(BenchRunner, NothingAcceptedGivesZeroTimeAndNoRuns) {
  TempFile statements("a\n;;\nb\n", ".sql");
  const auto loaded = mv::LoadBenchStatements(statements.path(), "");
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "refuse", [](const mv::TmvBenchStatement&, std::string&) { return false; }}};
  std::ostringstream log;
  const auto results = mv::RunBenchModes("fake", modes, loaded, {}, log);
  EXPECT_EQ(results[0].Accepted, 0);
  EXPECT_EQ(results[0].Runs, 0);
  EXPECT_EQ(results[0].Seconds, 0);
  EXPECT_EQ(mv::FormatBenchResult(results[0]),
            "bench-result tool=fake mode=parse work=refuse statements=2 accepted=0 rejected=2 bytes=0 "
            "seconds=0 mb_per_s=0.000 runs=0 reps=0");
}

TEST(BenchRunner, StatementThatFailsOnlyWhenTimedIsReported) {
  TempFile statements("SELECT 1\n", ".sql");
  const auto loaded = mv::LoadBenchStatements(statements.path(), "");
  int calls = 0;
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "flaky", [&](const mv::TmvBenchStatement&, std::string&) { return ++calls == 1; }}};
  mv::TmvBenchOptions options;
  options.Runs = 1;
  options.MinRunSeconds = 0;
  std::ostringstream log;
  const auto results = mv::RunBenchModes("fake", modes, loaded, options, log);
  EXPECT_EQ(results[0].Accepted, 1);
  EXPECT_EQ(log.str(), "fake parse: a statement accepted in the warm-up failed in a timed run\n");
}

TEST(BenchRunner, ResultLineHasFixedFieldsAndMegabytesPerSecond) {
  mv::TmvBenchResult r;
  r.Tool = "libpg_query";
  r.Mode = "parse+print";
  r.Work = "a+b";
  r.Statements = 10;
  r.Accepted = 8;
  r.Rejected = 2;
  r.Bytes = 3000000;
  r.Seconds = 0.25;
  r.Runs = 5;
  r.Reps = 2;
  EXPECT_EQ(mv::FormatBenchResult(r),
            "bench-result tool=libpg_query mode=parse+print work=a+b statements=10 accepted=8 rejected=2 "
            "bytes=3000000 seconds=0.25 mb_per_s=12.000 runs=5 reps=2");
  r.Seconds = 1.5e-7;
  r.Bytes = 30;
  EXPECT_NE(mv::FormatBenchResult(r).find("seconds=1.5e-07 mb_per_s=200.000"), std::string::npos);
}

TEST(BenchRunner, MainReturnsUsageAndFailureCodes) {
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "all", [](const mv::TmvBenchStatement&, std::string&) { return true; }}};
  auto run = [&](std::vector<std::string> args) {
    std::vector<char*> argv;
    static std::string program = "bench_fake";
    argv.push_back(program.data());
    for (auto& a : args) argv.push_back(a.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = mv::BenchRunnerMain(static_cast<int>(argv.size()), argv.data(), "fake", modes);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    return std::make_tuple(code, out, err);
  };
  auto [helpCode, helpOut, helpErr] = run({"--help"});
  EXPECT_EQ(helpCode, 0);
  EXPECT_EQ(helpOut.rfind("usage: bench_fake [options] STATEMENTS", 0), 0u);

  auto [badCode, badOut, badErr] = run({"--runs"});
  EXPECT_EQ(badCode, 2);
  EXPECT_EQ(badErr.rfind("bench_fake: --runs needs a value\nusage:", 0), 0u);

  auto [missingCode, missingOut, missingErr] = run({"/nonexistent/set.sql"});
  EXPECT_EQ(missingCode, 1);
  EXPECT_TRUE(missingOut.empty());
  EXPECT_NE(missingErr.find("/nonexistent/set.sql"), std::string::npos) << missingErr;

  TempFile statements("SELECT 1\n;;\nSELECT 22\n", ".sql");
  auto [okCode, okOut, okErr] = run({"--runs", "1", "--min-time", "0", statements.path()});
  EXPECT_EQ(okCode, 0);
  EXPECT_EQ(okOut.rfind("bench-result tool=fake mode=parse work=all statements=2 accepted=2 rejected=0 bytes=17 ", 0), 0u)
      << okOut;
  EXPECT_EQ(okOut.back(), '\n');
}

}  // namespace
