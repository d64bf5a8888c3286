// bench_frontend: scan, parse and print under the SQL-92 dialect, per folder
// of the statement set and per adversarial shape, for profiling and for
// following our own speed across commits (Google Benchmark).
//
//   scan/<folder>   the scanner over each statement to its end
//   parse/<folder>  ParseSelect of each statement that parses
//   print/<folder>  the one-line print of trees parsed before the loop
//   shape/<kind>/N  parse and print of one shape; the fit names its growth
//   short/parse, short/parse+print  one short statement (SELECT a, b FROM t
//                   WHERE c = 1), the fixed cost of a call
//
// The corpus comes from $MV_CORPUS_DIR (else ../shared/corpus next to the
// sources); without it only the shapes run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ShapeGenerator.h"
#include "StatementSet.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

namespace {

// One context for all benchmarks, made before any of them runs.
struct Engine {
  Engine() {
    mv::InitializeEngine();
    context.SetSyntaxProvider(&provider);
  }
  ~Engine() { context.SetSyntaxProvider(nullptr); }
  mv::TmvSQL92SyntaxProvider provider;
  mv::TmvBaseSQLContext context;
};

Engine& TheEngine() {
  static Engine engine;
  return engine;
}

struct FolderSet {
  std::string folder;
  std::vector<mv::WideString> all;       // every statement of the folder's sample
  std::vector<mv::WideString> parsing;   // those that parse
  int64_t allBytes = 0;
  int64_t parsingBytes = 0;
};

std::string CorpusDir() {
  if (const char* env = std::getenv("MV_CORPUS_DIR")) return env;
  return MV_BENCH_DIR "/../../shared/corpus";
}

std::vector<FolderSet> LoadFolders() {
  std::vector<FolderSet> folders;
  std::error_code ec;
  if (!std::filesystem::is_directory(CorpusDir(), ec)) return folders;
  const std::string setFile = MV_BENCH_DIR "/statement-set.txt";
  const auto sources = mv::ParseStatementSet(mv::ReadAllBytes(setFile), setFile);
  for (const mv::TmvSelectedStatement& s : mv::SelectStatements(sources, CorpusDir())) {
    if (folders.empty() || folders.back().folder != s.Folder) folders.push_back({s.Folder, {}, {}, 0, 0});
    FolderSet& set = folders.back();
    const int64_t bytes = int64_t(mv::UTF8Encode(s.Text).size());
    set.all.push_back(s.Text);
    set.allBytes += bytes;
    try {
      TheEngine().context.ParseSelect(s.Text);
      set.parsing.push_back(s.Text);
      set.parsingBytes += bytes;
    } catch (const mv::EmvSQLError&) {
    }
  }
  return folders;
}

void Scan(benchmark::State& state, const FolderSet& set) {
  mv::TmvOwned<mv::TmvBaseScanner> scanner = TheEngine().provider.CreateScanner();
  for (auto _ : state)
    for (const mv::WideString& text : set.all) {
      scanner->Init(text);
      benchmark::DoNotOptimize(scanner->GetCount());
    }
  state.SetBytesProcessed(state.iterations() * set.allBytes);
}

void Parse(benchmark::State& state, const FolderSet& set) {
  for (auto _ : state)
    for (const mv::WideString& text : set.parsing) benchmark::DoNotOptimize(TheEngine().context.ParseSelect(text));
  state.SetBytesProcessed(state.iterations() * set.parsingBytes);
}

void Print(benchmark::State& state, const FolderSet& set) {
  std::vector<mv::TmvOwned<mv::TSQLSelectStatement>> trees;
  for (const mv::WideString& text : set.parsing) trees.push_back(TheEngine().context.ParseSelect(text));
  mv::TSQLBuilderFast builder;
  for (auto _ : state)
    for (const auto& tree : trees) benchmark::DoNotOptimize(tree->SimpleSQL(builder));
  state.SetBytesProcessed(state.iterations() * set.parsingBytes);
}

void Shape(benchmark::State& state, const std::string& kind) {
  const std::string sql = mv::MakeShapeSql(kind, int(state.range(0)));
  const mv::WideString text = mv::UTF8Decode(sql);
  mv::TSQLBuilderFast builder;
  for (auto _ : state) benchmark::DoNotOptimize(TheEngine().context.ParseSelect(text)->SimpleSQL(builder));
  state.SetBytesProcessed(state.iterations() * int64_t(sql.size()));
  state.SetComplexityN(int64_t(sql.size()));
}

const mv::WideString kShortStatement = u"SELECT a, b FROM t WHERE c = 1";

void ShortParse(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TheEngine().context.ParseSelect(kShortStatement));
}

void ShortParsePrint(benchmark::State& state) {
  mv::TSQLBuilderFast builder;
  for (auto _ : state) benchmark::DoNotOptimize(TheEngine().context.ParseSelect(kShortStatement)->SimpleSQL(builder));
}

// Registers everything before Google Benchmark's main runs.
const bool kRegistered = [] {
  benchmark::RegisterBenchmark("short/parse", ShortParse)->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("short/parse+print", ShortParsePrint)->Unit(benchmark::kMicrosecond);
  static const std::vector<FolderSet> folders = LoadFolders();
  for (const FolderSet& set : folders) {
    benchmark::RegisterBenchmark(("scan/" + set.folder).c_str(), Scan, std::cref(set));
    benchmark::RegisterBenchmark(("parse/" + set.folder).c_str(), Parse, std::cref(set));
    benchmark::RegisterBenchmark(("print/" + set.folder).c_str(), Print, std::cref(set));
  }
  std::vector<std::string> kinds;
  for (const mv::TmvBenchShape& shape : mv::BenchShapes())
    if (kinds.empty() || kinds.back() != shape.Kind) kinds.push_back(shape.Kind);
  for (const std::string& kind : kinds) {
    benchmark::internal::Benchmark* b = benchmark::RegisterBenchmark(("shape/" + kind).c_str(), Shape, kind);
    for (const mv::TmvBenchShape& shape : mv::BenchShapes())
      if (shape.Kind == kind) b->Arg(shape.Size);
    b->Complexity()->Unit(benchmark::kMillisecond);
  }
  return true;
}();

}  // namespace
