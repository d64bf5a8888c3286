#include "BenchRunner.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "support/StatementList.h"

namespace mv {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

int ParseCount(const std::string& option, const std::string& text, int minimum) {
  size_t used = 0;
  long value = 0;
  try {
    value = std::stol(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used == 0 || used != text.size() || value < minimum || value > 1000000)
    throw std::invalid_argument(option + " needs a whole number of at least " + std::to_string(minimum) +
                                ", not '" + text + "'");
  return static_cast<int>(value);
}

double ParseSeconds(const std::string& option, const std::string& text) {
  size_t used = 0;
  double value = -1;
  try {
    value = std::stod(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used == 0 || used != text.size() || !(value >= 0) || !std::isfinite(value))
    throw std::invalid_argument(option + " needs a number of seconds, not '" + text + "'");
  return value;
}

std::set<int> ReadEntryNumbers(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::set<int> numbers;
  std::string line;
  int lineNumber = 0;
  while (std::getline(in, line)) {
    ++lineNumber;
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    const auto last = line.find_last_not_of(" \t\r");
    const std::string text = line.substr(first, last - first + 1);
    try {
      numbers.insert(ParseCount("entry number", text, 1));
    } catch (const std::invalid_argument& e) {
      throw std::runtime_error(path + ":" + std::to_string(lineNumber) + ": " + e.what());
    }
  }
  return numbers;
}

// One pass over the statements; returns false when any of them failed.
bool RunPass(const TmvBenchMode& mode, const std::vector<const TmvBenchStatement*>& statements) {
  bool allAccepted = true;
  std::string error;
  for (const TmvBenchStatement* s : statements) {
    try {
      if (!mode.Run(*s, error)) allAccepted = false;
    } catch (const std::exception&) {
      allAccepted = false;
    }
  }
  return allAccepted;
}

std::string FirstLine(const std::string& text) {
  const auto end = text.find_first_of("\r\n");
  return end == std::string::npos ? text : text.substr(0, end);
}

}  // namespace

std::string BenchUsage(const std::string& program) {
  return "usage: " + program +
         " [options] STATEMENTS\n"
         "Times the statements of STATEMENTS (entries separated by lines holding only ';;')\n"
         "and prints one 'bench-result' line per kind of work.\n"
         "  --runs N           timed runs after the warm-up, the best counts (default 5)\n"
         "  --budget SECONDS   start no new run after this much timing (default 10; one run at least)\n"
         "  --min-time SECONDS a run repeats the pass until it lasts this long, and\n"
         "                     the warm-up lasts as long (default 0.05)\n"
         "  --only FILE        keep only the entry numbers listed in FILE (one a line)\n"
         "  --accepted-out FILE  write the entry numbers that every kind of work accepted\n"
         "  --verbose          name each rejected statement and the reason on standard error\n";
}

TmvBenchOptions ParseBenchArguments(const std::vector<std::string>& args) {
  TmvBenchOptions options;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    auto value = [&]() -> const std::string& {
      if (i + 1 >= args.size()) throw std::invalid_argument(arg + " needs a value");
      return args[++i];
    };
    if (arg == "--runs") {
      options.Runs = ParseCount(arg, value(), 1);
    } else if (arg == "--budget") {
      options.BudgetSeconds = ParseSeconds(arg, value());
    } else if (arg == "--min-time") {
      options.MinRunSeconds = ParseSeconds(arg, value());
    } else if (arg == "--only") {
      options.OnlyPath = value();
    } else if (arg == "--accepted-out") {
      options.AcceptedOutPath = value();
    } else if (arg == "--verbose") {
      options.Verbose = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      throw std::invalid_argument("unknown option " + arg);
    } else if (options.StatementsPath.empty()) {
      options.StatementsPath = arg;
    } else {
      throw std::invalid_argument("one statements file only, not also '" + arg + "'");
    }
  }
  if (options.StatementsPath.empty()) throw std::invalid_argument("no statements file given");
  return options;
}

std::vector<TmvBenchStatement> LoadBenchStatements(const std::string& path, const std::string& onlyPath) {
  std::vector<TmvStatementEntry> entries = ReadStatementList(path);
  std::set<int> only;
  if (!onlyPath.empty()) only = ReadEntryNumbers(onlyPath);
  std::vector<TmvBenchStatement> statements;
  statements.reserve(entries.size());
  for (auto& entry : entries) {
    if (!onlyPath.empty() && !only.erase(entry.Index)) continue;
    TmvBenchStatement s;
    s.Index = entry.Index;
    s.Utf8 = UTF8Encode(entry.Text);
    s.Text = std::move(entry.Text);
    statements.push_back(std::move(s));
  }
  if (!only.empty())
    throw std::runtime_error(onlyPath + " names entry " + std::to_string(*only.begin()) + ", which " + path +
                             " does not hold");
  return statements;
}

std::vector<TmvBenchResult> RunBenchModes(const std::string& tool, const std::vector<TmvBenchMode>& modes,
                                          const std::vector<TmvBenchStatement>& statements,
                                          const TmvBenchOptions& options, std::ostream& log) {
  std::vector<TmvBenchResult> results;
  std::vector<bool> acceptedByAll(statements.size(), true);
  for (const TmvBenchMode& mode : modes) {
    TmvBenchResult result;
    result.Tool = tool;
    result.Mode = mode.Name;
    result.Work = mode.Work;
    result.Statements = static_cast<int>(statements.size());

    // Warm-up: every statement once, which also tells which ones the tool accepts.
    std::vector<const TmvBenchStatement*> accepted;
    for (size_t i = 0; i < statements.size(); ++i) {
      const TmvBenchStatement& s = statements[i];
      std::string error;
      bool ok = false;
      try {
        ok = mode.Run(s, error);
      } catch (const std::exception& e) {
        error = e.what();
      }
      if (ok) {
        accepted.push_back(&s);
        result.Bytes += s.Utf8.size();
      } else {
        acceptedByAll[i] = false;
        if (options.Verbose)
          log << tool << " " << mode.Name << ": entry " << s.Index << " rejected: " << FirstLine(error) << "\n";
      }
    }
    result.Accepted = static_cast<int>(accepted.size());
    result.Rejected = result.Statements - result.Accepted;

    if (!accepted.empty()) {
      // More passes, for at least the length of one run, finish the warm-up
      // (caches, allocators, a JIT) and size the runs: short passes are
      // repeated so that the clock's resolution does not dominate.
      const auto probeStart = Clock::now();
      int probes = 0;
      do {
        RunPass(mode, accepted);
        ++probes;
      } while (SecondsSince(probeStart) < options.MinRunSeconds && probes < 1000000);
      const double probe = std::max(SecondsSince(probeStart) / probes, 1e-9);
      result.Reps = static_cast<int>(std::clamp(std::ceil(options.MinRunSeconds / probe), 1.0, 1e6));

      double best = 0, spent = 0;
      bool consistent = true;
      for (int run = 0; run < options.Runs && (run == 0 || spent < options.BudgetSeconds); ++run) {
        const auto start = Clock::now();
        for (int rep = 0; rep < result.Reps; ++rep) consistent = RunPass(mode, accepted) && consistent;
        const double elapsed = SecondsSince(start);
        spent += elapsed;
        const double perPass = elapsed / result.Reps;
        if (run == 0 || perPass < best) best = perPass;
        ++result.Runs;
      }
      result.Seconds = best;
      if (!consistent)
        log << tool << " " << mode.Name << ": a statement accepted in the warm-up failed in a timed run\n";
    }
    results.push_back(result);
  }

  if (!options.AcceptedOutPath.empty()) {
    std::ofstream out(options.AcceptedOutPath, std::ios::binary | std::ios::trunc);
    for (size_t i = 0; i < statements.size(); ++i)
      if (acceptedByAll[i]) out << statements[i].Index << "\n";
    if (!out) throw std::runtime_error("cannot write " + options.AcceptedOutPath);
  }
  return results;
}

std::string FormatBenchResult(const TmvBenchResult& r) {
  const double mbPerSecond = r.Seconds > 0 ? static_cast<double>(r.Bytes) / r.Seconds / 1e6 : 0;
  char numbers[96];
  std::snprintf(numbers, sizeof numbers, "seconds=%.9g mb_per_s=%.3f", r.Seconds, mbPerSecond);
  std::ostringstream line;
  line << "bench-result tool=" << r.Tool << " mode=" << r.Mode << " work=" << r.Work
       << " statements=" << r.Statements << " accepted=" << r.Accepted << " rejected=" << r.Rejected
       << " bytes=" << r.Bytes << " " << numbers << " runs=" << r.Runs << " reps=" << r.Reps;
  return line.str();
}

int BenchRunnerMain(int argc, char** argv, const std::string& tool, const std::vector<TmvBenchMode>& modes) {
  const std::string program = argc > 0 ? argv[0] : tool;
  std::vector<std::string> args(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (std::find(args.begin(), args.end(), "--help") != args.end()) {
    std::cout << BenchUsage(program);
    return 0;
  }
  TmvBenchOptions options;
  try {
    options = ParseBenchArguments(args);
  } catch (const std::invalid_argument& e) {
    std::cerr << program << ": " << e.what() << "\n" << BenchUsage(program);
    return 2;
  }
  try {
    const auto statements = LoadBenchStatements(options.StatementsPath, options.OnlyPath);
    for (const TmvBenchResult& r : RunBenchModes(tool, modes, statements, options, std::cerr))
      std::cout << FormatBenchResult(r) << "\n";
    std::cout.flush();
    return std::cout ? 0 : 1;
  } catch (const std::exception& e) {
    std::cerr << program << ": " << e.what() << "\n";
    return 1;
  }
}

}  // namespace mv
