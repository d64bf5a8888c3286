// The common frame of the throughput runners (our own and the native peers):
// reads a statement collection, finds out once which statements a tool
// accepts, then times passes over the accepted ones and prints one result line
// per kind of work. The Node.js runners in bench/peers/bench-runner.js follow
// the same rules and print the same line, so compare-peers.sh reads both alike.
//
// Result line (one per mode, on standard output, fields separated by one space,
// values never hold spaces):
//   bench-result tool=T mode=M work=W statements=N accepted=A rejected=R
//                bytes=B seconds=S mb_per_s=X runs=K reps=P
// bytes: UTF-8 bytes of the accepted statements; seconds: the best time of one
// pass over them; mb_per_s: bytes / seconds / 10^6.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "support/WideString.h"

namespace mv {

struct TmvBenchStatement {
  int Index = 0;       // entry number in its file (one-based)
  WideString Text;     // the entry as the engine reads it
  std::string Utf8;    // the same text in UTF-8; its size is what "bytes" counts
};

// One kind of work a runner measures. Run returns true when the tool accepted
// the statement; it rejects it by returning false (with a reason in `error`) or
// by throwing any std::exception.
struct TmvBenchMode {
  std::string Name;    // "parse" or "parse+print": modes of the same name are compared
  std::string Work;    // what one statement goes through, e.g. "pg_query_parse_protobuf"
  std::function<bool(const TmvBenchStatement&, std::string& error)> Run;
};

struct TmvBenchOptions {
  std::string StatementsPath;
  std::string OnlyPath;          // file of entry numbers to keep; empty keeps all
  std::string AcceptedOutPath;   // receives the entry numbers every mode accepted
  int Runs = 5;                  // timed runs after the warm-up; the best counts
  double BudgetSeconds = 10;     // no new run starts after this much timing (one run at least)
  double MinRunSeconds = 0.05;   // a run repeats the pass until it lasts about this long
  bool Verbose = false;          // name every rejected statement on standard error
};

struct TmvBenchResult {
  std::string Tool;
  std::string Mode;
  std::string Work;
  int Statements = 0;
  int Accepted = 0;
  int Rejected = 0;
  std::uint64_t Bytes = 0;
  double Seconds = 0;            // best time of one pass over the accepted statements
  int Runs = 0;
  int Reps = 0;                  // passes per run
};

// The usage text of the common options, for a runner's --help.
std::string BenchUsage(const std::string& program);

// Parses the common command line (arguments without the program name).
// Raises std::invalid_argument with a message on a bad argument.
TmvBenchOptions ParseBenchArguments(const std::vector<std::string>& args);

// Reads the statements of a file, keeping only the entry numbers listed in
// `onlyPath` when it is not empty (one number a line; blank lines and lines
// starting with '#' are skipped). Raises std::runtime_error on unreadable
// files and numbers that are no entry of the file.
std::vector<TmvBenchStatement> LoadBenchStatements(const std::string& path, const std::string& onlyPath);

// Measures every mode over the statements. Rejections (and, with Verbose,
// their reasons) are reported on `log`. Writes AcceptedOutPath when set.
std::vector<TmvBenchResult> RunBenchModes(const std::string& tool, const std::vector<TmvBenchMode>& modes,
                                          const std::vector<TmvBenchStatement>& statements,
                                          const TmvBenchOptions& options, std::ostream& log);

// The result line, without a line end.
std::string FormatBenchResult(const TmvBenchResult& result);

// The whole main function of a runner: arguments, loading, measuring, printing.
// Returns the process exit code (0 done, 1 failure, 2 bad arguments).
int BenchRunnerMain(int argc, char** argv, const std::string& tool, const std::vector<TmvBenchMode>& modes);

}  // namespace mv
