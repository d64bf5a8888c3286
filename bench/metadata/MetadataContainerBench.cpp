// The metadata container on large catalogs: N tables of a few fields each
// (N = 1,000, 10,000, 100,000) are added, then each is looked up once.
// The per_object counter is the time of one add or one lookup; near-linear
// work keeps it about constant as N grows, and ->Complexity() names the fit.
//
//   build-bench/bin/bench_metadata_container --benchmark_counters_tabular=true
//
// Lookups, all resolved through the name index under the SQL-92 rules:
//   bare        T123        found through the default schema dbo
//   quoted      "T123"      the same name in quotes
//   qualified   dbo.T123    schema given, database completed from the default
//   text        dbo.T123    as SQL text, parsed on every lookup
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"

namespace {

using namespace mv;

constexpr int kFieldsPerTable = 4;

WideString TableName(int index) { return u"T" + IntToWide(index); }

// A context on the SQL-92 dialect and an empty container with default
// database D and default schema dbo.
struct TCatalog {
  TCatalog() {
    InitializeEngine();
    context.SetSyntaxProvider(&provider);
    container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    context.SetMetadataContainer(container.get());
    auto database = TastCreate<TSQLQualifiedName>(&context);
    database->AddName(u"D", false);
    container->SetDefaultDatabaseName(database.get());
    container->DefaultSchemaNames()->AddIdentifier(u"dbo");
  }
  ~TCatalog() {
    context.SetMetadataContainer(nullptr);
    container.reset();
    context.SetSyntaxProvider(nullptr);
  }

  // Adds D.dbo.T0 ... D.dbo.T<n-1>, each with its fields.
  void Load(int n) {
    TmvUpdateBatch batch(*container);
    container->SetCapacity(n);
    auto schema = TastCreate<TastTokenIdentifier>(&context, u"dbo", false);
    for (int i = 0; i < n; ++i) {
      auto name = TastCreate<TastTokenIdentifier>(&context, TableName(i), false);
      TmvMetadataTable* table = container->AddTable(schema.get(), name.get(), false, container->DefaultDatabaseName());
      TmvMetadataFieldsList* fields = table->GetFields();
      TmvUpdateBatch fieldsBatch(*fields);
      for (int f = 0; f < kFieldsPerTable; ++f) {
        auto fieldName = TastCreate<TSQLQualifiedName>(&context);
        fieldName->AddName(u"F" + IntToWide(f), false);
        fields->AddField(fieldName.get(), ftInteger);
      }
    }
  }

  TmvSQL92SyntaxProvider provider;
  TmvBaseSQLContext context;
  TmvOwned<TmvMetadataContainer> container;
};

enum TLookup { lkBare, lkQuoted, lkQualified, lkText };

// The names the lookups of one mode use, made before timing.
std::vector<TmvOwned<TSQLQualifiedName>> LookupNames(TmvBaseSQLContext& context, int n, TLookup mode) {
  std::vector<TmvOwned<TSQLQualifiedName>> names;
  names.reserve(size_t(n));
  for (int i = 0; i < n; ++i) {
    auto name = TastCreate<TSQLQualifiedName>(&context);
    if (mode == lkQualified) name->AddName(u"dbo", false);
    name->AddName(TableName(i), mode == lkQuoted);
    names.push_back(std::move(name));
  }
  return names;
}

void SetPerObject(benchmark::State& state, int n) {
  state.SetComplexityN(n);
  state.SetItemsProcessed(int64_t(state.iterations()) * n);
  state.counters["per_object"] =
      benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Adding n tables with their fields to an empty container.
void BM_Load(benchmark::State& state) {
  const int n = int(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto catalog = std::make_unique<TCatalog>();
    state.ResumeTiming();
    catalog->Load(n);
    benchmark::DoNotOptimize(catalog->container->Count());
    state.PauseTiming();
    catalog.reset();
    state.ResumeTiming();
  }
  SetPerObject(state, n);
}

// Looking each of n tables up once.
void BM_Lookup(benchmark::State& state) {
  const int n = int(state.range(0));
  const auto mode = TLookup(state.range(1));
  TCatalog catalog;
  catalog.Load(n);
  std::vector<TmvOwned<TSQLQualifiedName>> names;
  std::vector<WideString> texts;
  if (mode == lkText) {
    for (int i = 0; i < n; ++i) texts.push_back(u"dbo." + TableName(i));
  } else {
    names = LookupNames(catalog.context, n, mode);
  }
  for (auto _ : state) {
    int found = 0;
    for (int i = 0; i < n; ++i) {
      TmvMetadataTable* table = mode == lkText ? catalog.container->FindTableByFullName(texts[size_t(i)])
                                               : catalog.container->FindTableByFullName(names[size_t(i)].get());
      found += table != nullptr;
    }
    if (found != n) state.SkipWithError("a table was not found");
    benchmark::DoNotOptimize(found);
  }
  SetPerObject(state, n);
}

// The same 1,000 lookups (every n/1000-th table) in containers of n tables:
// the cost of one lookup apart from how much of the catalog the lookups
// walk through, which is what makes BM_Lookup per object grow with n
// (cache misses over a working set of hundreds of megabytes).
void BM_LookupSample(benchmark::State& state) {
  const int n = int(state.range(0));
  constexpr int kSample = 1000;
  TCatalog catalog;
  catalog.Load(n);
  std::vector<TmvOwned<TSQLQualifiedName>> names;
  for (int i = 0; i < kSample; ++i) {
    auto name = TastCreate<TSQLQualifiedName>(&catalog.context);
    name->AddName(TableName(int(int64_t(i) * n / kSample)), false);
    names.push_back(std::move(name));
  }
  for (auto _ : state) {
    int found = 0;
    for (const auto& name : names) found += catalog.container->FindTableByFullName(name.get()) != nullptr;
    if (found != kSample) state.SkipWithError("a table was not found");
    benchmark::DoNotOptimize(found);
  }
  SetPerObject(state, kSample);
}

// Both, as a host loading a catalog and resolving the names of its queries.
void BM_LoadAndLookup(benchmark::State& state) {
  const int n = int(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto catalog = std::make_unique<TCatalog>();
    auto names = LookupNames(catalog->context, n, lkBare);
    state.ResumeTiming();
    catalog->Load(n);
    int found = 0;
    for (const auto& name : names) found += catalog->container->FindTableByFullName(name.get()) != nullptr;
    if (found != n) state.SkipWithError("a table was not found");
    state.PauseTiming();
    names.clear();
    catalog.reset();
    state.ResumeTiming();
  }
  SetPerObject(state, n);
}

}  // namespace

BENCHMARK(BM_Load)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond)->Complexity();
BENCHMARK(BM_Lookup)
    ->ArgsProduct({{1000, 10000, 100000}, {lkBare, lkQuoted, lkQualified, lkText}})
    ->ArgNames({"n", "mode"})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LookupSample)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadAndLookup)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond)->Complexity();
