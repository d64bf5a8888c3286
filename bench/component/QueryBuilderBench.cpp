// bench_query_builder: the model round trip of the query builder (SetSql, then
// GetSql) against the plain parse and print of the same statements through
// the same builder's context (ParseSelect, then the one-line print for the
// server that GetSql uses), SQL-92, no metadata.
//
//   build-bench/bin/bench_query_builder [--benchmark_filter=shape/]
//
//   set/parse+print        the statement set: ParseSelect + one-line print
//   set/roundtrip/clear    one builder: Clear, SetSql, GetSql per statement
//   set/roundtrip/fresh    a new builder per statement: made, SetSql,
//                          GetSql, freed
//   set/parse              the statement set: ParseSelect alone
//   set/statistics         the statistics of each statement's fixed-up tree
//                          (parsed before the timing): gathered on the nodes
//                          until nothing is added, then the three lists
//   shape/<kind>/parse+print/N, shape/<kind>/roundtrip/N
//                          one adversarial shape of N terms, items or levels
//                          (the round trip with Clear between)
//
// Only statements that both the plain parse and the round trip take are
// timed (the rejected ones are counted). After the runs a summary prints
// each round trip's CPU time against its baseline and, per shape kind, the
// cost of one term, item or level at each size: flat down a kind is linear.
//
// The corpus comes from $MV_CORPUS_DIR (else ../shared/corpus next to the
// sources); without it only the shapes run.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "ShapeGenerator.h"
#include "StatementSet.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "model/QueryStatistics.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

namespace {

using namespace mv;

TmvSQL92SyntaxProvider& Provider() {
  static TmvOwned<TmvSQL92SyntaxProvider> provider = TmvCreate<TmvSQL92SyntaxProvider>();
  return *provider;
}

TmvOwned<TmvQueryBuilder> NewBuilder() {
  TmvOwned<TmvQueryBuilder> builder = TmvCreate<TmvQueryBuilder>();
  builder->SetSyntaxProvider(&Provider());
  return builder;
}

// The builder every benchmark but the fresh round trip works on.
TmvQueryBuilder& TheBuilder() {
  static TmvOwned<TmvQueryBuilder> builder = NewBuilder();
  return *builder;
}

// The baseline: what the round trip cannot do without.
size_t ParseAndPrint(TmvQueryBuilder& builder, const WideString& text) {
  TmvBaseSQLContext* context = builder.SQLContext();
  return context->ParseSelect(text)->SimpleSQL(context->SQLBuilderExpressionForServer()).size();
}

size_t RoundTrip(TmvQueryBuilder& builder, const WideString& text) {
  builder.Clear();
  builder.SetSql(text);
  return builder.GetSql().size();
}

size_t FreshRoundTrip(const WideString& text) {
  TmvOwned<TmvQueryBuilder> builder = NewBuilder();
  builder->SetSql(text);
  return builder->GetSql().size();
}

struct StatementSet {
  std::vector<WideString> texts;  // taken by the plain parse and by the round trip
  int64_t bytes = 0;              // their UTF-8 bytes
  int read = 0;
  int parseRejected = 0;          // ParseSelect refused
  int roundTripRejected = 0;      // parsed, but the builder refused or printed nothing
};

std::string CorpusDir() {
  if (const char* env = std::getenv("MV_CORPUS_DIR")) return env;
  return MV_BENCH_DIR "/../../shared/corpus";
}

StatementSet LoadSet() {
  StatementSet set;
  std::error_code ec;
  if (!std::filesystem::is_directory(CorpusDir(), ec)) return set;
  const std::string setFile = MV_BENCH_DIR "/statement-set.txt";
  const auto sources = ParseStatementSet(ReadAllBytes(setFile), setFile);
  for (const TmvSelectedStatement& s : SelectStatements(sources, CorpusDir())) {
    ++set.read;
    try {
      ParseAndPrint(TheBuilder(), s.Text);
    } catch (const std::exception&) {
      ++set.parseRejected;
      continue;
    }
    try {
      if (RoundTrip(TheBuilder(), s.Text) == 0) {
        ++set.roundTripRejected;
        continue;
      }
    } catch (const std::exception&) {
      ++set.roundTripRejected;
      continue;
    }
    set.texts.push_back(s.Text);
    set.bytes += int64_t(UTF8Encode(s.Text).size());
  }
  return set;
}

void SetCounters(benchmark::State& state, const StatementSet& set) {
  state.SetBytesProcessed(state.iterations() * set.bytes);
  state.counters["statements"] = double(set.texts.size());
  state.counters["rejected"] = double(set.parseRejected + set.roundTripRejected);
}

void SetParsePrint(benchmark::State& state, const StatementSet& set) {
  for (auto _ : state)
    for (const WideString& text : set.texts) benchmark::DoNotOptimize(ParseAndPrint(TheBuilder(), text));
  SetCounters(state, set);
}

void SetRoundTripClear(benchmark::State& state, const StatementSet& set) {
  for (auto _ : state)
    for (const WideString& text : set.texts) benchmark::DoNotOptimize(RoundTrip(TheBuilder(), text));
  SetCounters(state, set);
}

void SetRoundTripFresh(benchmark::State& state, const StatementSet& set) {
  for (auto _ : state)
    for (const WideString& text : set.texts) benchmark::DoNotOptimize(FreshRoundTrip(text));
  SetCounters(state, set);
}

void SetParse(benchmark::State& state, const StatementSet& set) {
  for (auto _ : state)
    for (const WideString& text : set.texts)
      benchmark::DoNotOptimize(TheBuilder().SQLContext()->ParseSelect(text).get());
  SetCounters(state, set);
}

// What the statistics read: each statement's tree as the builder fixes it up.
const std::vector<TmvOwned<TSQLSelectStatement>>& FixedUpTrees(const StatementSet& set) {
  static const std::vector<TmvOwned<TSQLSelectStatement>> trees = [&set] {
    std::vector<TmvOwned<TSQLSelectStatement>> list;
    for (const WideString& text : set.texts)
      if (TmvOwned<TSQLSelectStatement> tree = TheBuilder().ParseSQL(text)) list.push_back(std::move(tree));
    return list;
  }();
  return trees;
}

size_t Statistics(TSQLSelectStatement* tree) {
  tree->PrepareCalcStatisticsRecursive();
  while (tree->CalcStatisticsRecursive() > 0) {
  }
  TmvQueryStatistics* statistics = TheBuilder().QueryStatistics();
  statistics->ReloadStatistics(tree);
  return size_t(statistics->UsedDatabaseObjects()->GetCount() + statistics->UsedColumns()->GetCount() +
                statistics->OutputColumns()->GetCount());
}

void SetStatistics(benchmark::State& state, const StatementSet& set) {
  const auto& trees = FixedUpTrees(set);
  for (auto _ : state)
    for (const auto& tree : trees) benchmark::DoNotOptimize(Statistics(tree.get()));
  TheBuilder().QueryStatistics()->SetStatisticsInvalid();
  SetCounters(state, set);
}

void ShapeParsePrint(benchmark::State& state, const std::string& kind) {
  const WideString text = UTF8Decode(MakeShapeSql(kind, int(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(ParseAndPrint(TheBuilder(), text));
  state.counters["units"] = double(state.range(0));
}

void ShapeRoundTrip(benchmark::State& state, const std::string& kind) {
  const WideString text = UTF8Decode(MakeShapeSql(kind, int(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(RoundTrip(TheBuilder(), text));
  state.counters["units"] = double(state.range(0));
}

// The shapes of the goal, three sizes each: terms of an AND chain in WHERE,
// items of an IN list, levels of nested IN sub-queries.
struct ShapeSizes {
  const char* kind;
  const char* unit;
  std::vector<int> sizes;
};
const std::vector<ShapeSizes>& Shapes() {
  static const std::vector<ShapeSizes> shapes = {
      {"and", "term", {250, 500, 1000}},
      {"in", "item", {2500, 5000, 10000}},
      {"subquery", "level", {12, 25, 50}},
  };
  return shapes;
}

void Register() {
  static const StatementSet set = LoadSet();
  if (set.read == 0) {
    std::fprintf(stderr, "bench_query_builder: no corpus at %s, only the shapes run\n", CorpusDir().c_str());
  } else {
    std::fprintf(stderr,
                 "bench_query_builder: %d statements read, %d refused by ParseSelect, %d more by the builder, "
                 "%zu timed (%lld bytes)\n",
                 set.read, set.parseRejected, set.roundTripRejected, set.texts.size(),
                 static_cast<long long>(set.bytes));
    benchmark::RegisterBenchmark("set/parse+print", SetParsePrint, std::cref(set))->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("set/roundtrip/clear", SetRoundTripClear, std::cref(set))
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("set/roundtrip/fresh", SetRoundTripFresh, std::cref(set))
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("set/parse", SetParse, std::cref(set))->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("set/statistics", SetStatistics, std::cref(set))->Unit(benchmark::kMillisecond);
  }
  for (const ShapeSizes& shape : Shapes()) {
    const std::string kind = shape.kind;
    auto* plain = benchmark::RegisterBenchmark(("shape/" + kind + "/parse+print").c_str(), ShapeParsePrint, kind);
    auto* model = benchmark::RegisterBenchmark(("shape/" + kind + "/roundtrip").c_str(), ShapeRoundTrip, kind);
    for (int size : shape.sizes) {
      plain->Arg(size);
      model->Arg(size);
    }
    plain->Unit(benchmark::kMicrosecond);
    model->Unit(benchmark::kMicrosecond);
  }
}

// The console output, then the ratios of the round trips to their baselines
// and the cost per unit of the shapes, from the CPU times of the runs.
class SummaryReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    benchmark::ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
      // Seconds of CPU per iteration.
      cpu_[run.benchmark_name()] = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }

  void Finalize() override {
    benchmark::ConsoleReporter::Finalize();
    std::printf("\nround trip against plain parse+print (CPU time per pass)\n");
    std::printf("%-24s %15s %15s %9s\n", "input", "parse+print", "roundtrip", "ratio");
    for (const char* way : {"clear", "fresh"})
      Ratio(std::string("set, ") + way, "set/parse+print", std::string("set/roundtrip/") + way);
    for (const ShapeSizes& shape : Shapes())
      for (int size : shape.sizes)
        Ratio(ShapeName(shape.kind, "-", size), ShapeName(shape.kind, "/parse+print/", size),
              ShapeName(shape.kind, "/roundtrip/", size));
    std::printf("\nstatistics of the fixed-up trees against the parse alone (CPU time per pass)\n");
    Ratio("set, statistics", "set/parse", "set/statistics");
    std::printf("\ncost of one term, item or level (ns), and against the smallest size of its kind\n");
    std::printf("%-24s %12s %8s %12s %8s\n", "shape", "parse+print", "growth", "roundtrip", "growth");
    for (const ShapeSizes& shape : Shapes()) {
      double firstPlain = 0, firstModel = 0;
      for (int size : shape.sizes) {
        const double plain = PerUnit(ShapeName(shape.kind, "/parse+print/", size), size);
        const double model = PerUnit(ShapeName(shape.kind, "/roundtrip/", size), size);
        if (plain <= 0 || model <= 0) continue;
        if (firstPlain == 0) firstPlain = plain, firstModel = model;
        std::printf("%-24s %12.1f %8.2f %12.1f %8.2f\n", ShapeName(shape.kind, "-", size).c_str(), plain,
                    plain / firstPlain, model, model / firstModel);
      }
    }
  }

 private:
  void Ratio(const std::string& label, const std::string& base, const std::string& other) {
    auto b = cpu_.find(base), o = cpu_.find(other);
    if (b == cpu_.end() || o == cpu_.end() || b->second <= 0) return;
    std::printf("%-24s %12.3f ms %12.3f ms %8.2fx\n", label.c_str(), b->second * 1e3, o->second * 1e3,
                o->second / b->second);
  }
  // "shape/<kind>/roundtrip/N" and the like (built by appends: GCC 12 warns
  // falsely on some chains of string additions).
  static std::string ShapeName(const char* kind, const char* middle, int size) {
    std::string name(middle[0] == '-' ? "" : "shape/");
    name.append(kind).append(middle).append(std::to_string(size));
    return name;
  }
  double PerUnit(const std::string& name, int units) const {
    auto it = cpu_.find(name);
    return it == cpu_.end() ? 0 : it->second * 1e9 / units;
  }

  std::map<std::string, double> cpu_;
};

}  // namespace

int main(int argc, char** argv) {
  InitializeEngine();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  Register();
  SummaryReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
