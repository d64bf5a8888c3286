// The metadata XML file on a large catalog: 10,000 tables of 20 fields each
// (types, sizes, a primary key, a foreign key per table) saved to a file and
// loaded back, and names looked up in containers loaded from XML of 1,000,
// 10,000 and 100,000 tables.
//
//   build-bench/bin/bench_metadata_xml --benchmark_counters_tabular=true
//
// Run one benchmark a process (--benchmark_filter=BM_XmlSave, ...) to read
// its own peak memory: peak_rss_MB is the process's peak resident set
// (getrusage), which only grows. file_MB is the size of the file,
// container_MB what the filled container itself holds (resident set before
// and after filling it).
//
//   BM_XmlSave/T       SaveToXMLFile of T tables
//   BM_XmlLoad/T       LoadFromXMLFile of that file into an empty container
//   BM_XmlLookup/T     1,000 FindTableByFullName lookups (bare names through
//                      the default schema) in a container loaded from the
//                      XML of T tables; per_lookup stays flat as T grows
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"

namespace {

using namespace mv;

constexpr int kFieldsPerTable = 20;
constexpr int kLookups = 1000;

// A letter and a number (appended, not concatenated: GCC 12 warns wrongly on that at -O3).
WideString NumberedName(char16_t letter, int index) {
  WideString name(1, letter);
  name += IntToWide(index);
  return name;
}

WideString TableName(int index) { return NumberedName(u'T', index); }

// The resident set now, from /proc (0 where there is none).
double CurrentRssMB() {
  long pages = 0;
  long resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
  }
  return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

double PeakRssMB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return double(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

// A context on the SQL-92 dialect and a container on it, default database D
// and default schema dbo.
struct TCatalog {
  TCatalog() {
    InitializeEngine();
    context.SetSyntaxProvider(&provider);
    container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    context.SetMetadataContainer(container.get());
    // Saving fetches nothing.
    container->SetWorkOffline(true);
  }
  ~TCatalog() {
    context.SetMetadataContainer(nullptr);
    container.reset();
    context.SetSyntaxProvider(nullptr);
  }

  // D.dbo.T0 ... with `fields` fields each; every table but the first has a
  // foreign key to the one before it.
  void Fill(int tables, int fields) {
    TmvUpdateBatch batch(*container);
    container->SetDefaultDatabaseNameStr(u"D");
    container->SetDefaultSchemaNamesStr(u"dbo");
    container->SetCapacity(tables);
    auto schema = TastCreate<TastTokenIdentifier>(&context, u"dbo", false);
    for (int i = 0; i < tables; ++i) {
      auto name = TastCreate<TastTokenIdentifier>(&context, TableName(i), false);
      TmvMetadataTable* table = container->AddTable(schema.get(), name.get(), false, container->DefaultDatabaseName());
      TmvMetadataFieldsList* list = table->GetFields();
      TmvUpdateBatch fieldsBatch(*list);
      for (int f = 0; f < fields; ++f) {
        auto fieldName = TastCreate<TSQLQualifiedName>(&context);
        fieldName->AddName(NumberedName(u'F', f), false);
        TmvMetadataField* field = list->AddField(fieldName.get(), f == 0 ? ftInteger : ftString, f == 0 ? 0 : 40,
                                                 f != 0);
        field->SetFieldTypeName(f == 0 ? u"INTEGER" : u"VARCHAR");
        field->SetPrimaryKey(f == 0);
      }
      if (i > 0) {
        TmvMetadataRelation* relation = table->GetRelations()->Add();
        relation->SetForeignKey(true);
        relation->KeyFields()->Add(u"F1");
        relation->SetChildTable(container->Items(i - 1)->FullName());
        relation->ChildFields()->Add(u"F0");
      }
    }
  }

  TmvSQL92SyntaxProvider provider;
  TmvBaseSQLContext context;
  TmvOwned<TmvMetadataContainer> container;
};

std::string TempPath(const char* name) {
  std::string file = "mv-bench-";
  file += name;
  file += ".xml";
  return (std::filesystem::temp_directory_path() / file).string();
}

// The file of `tables` tables, written once per process by a child
// process, so that the peak memory of this one is that of loading.
const std::string& SavedFile(int tables) {
  static std::map<int, std::string> files;
  auto it = files.find(tables);
  if (it != files.end()) return it->second;
  std::string suffix = "load-";
  suffix += std::to_string(tables);
  const std::string path = TempPath(suffix.c_str());
  const pid_t child = fork();
  if (child == 0) {
    TCatalog catalog;
    catalog.Fill(tables, kFieldsPerTable);
    catalog.container->SaveToXMLFile(UTF8Decode(path));
    _exit(0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error("the file to load could not be written");
  return files.emplace(tables, path).first->second;
}

void SetFileCounters(benchmark::State& state, const std::string& path) {
  state.counters["file_MB"] = double(std::filesystem::file_size(path)) / (1024.0 * 1024.0);
  state.counters["peak_rss_MB"] = PeakRssMB();
}

void BM_XmlSave(benchmark::State& state) {
  const int tables = int(state.range(0));
  // Measured on the first run only: later runs reuse the memory that the
  // first one freed.
  static double container = -1;
  const double before = CurrentRssMB();
  TCatalog catalog;
  catalog.Fill(tables, kFieldsPerTable);
  if (container < 0) container = CurrentRssMB() - before;
  const std::string path = TempPath("save");
  for (auto _ : state) catalog.container->SaveToXMLFile(UTF8Decode(path));
  SetFileCounters(state, path);
  state.counters["container_MB"] = container;
  std::remove(path.c_str());
}

void BM_XmlLoad(benchmark::State& state) {
  const int tables = int(state.range(0));
  const std::string& path = SavedFile(tables);
  for (auto _ : state) {
    state.PauseTiming();
    auto catalog = std::make_unique<TCatalog>();
    state.ResumeTiming();
    catalog->container->LoadFromXMLFile(UTF8Decode(path));
    benchmark::DoNotOptimize(catalog->container->Count());
    state.PauseTiming();
    if (catalog->container->Count() != tables) state.SkipWithError("not every table was read");
    catalog.reset();
    state.ResumeTiming();
  }
  SetFileCounters(state, path);
}

// Lookups in a container read from XML: the index it was filled through.
void BM_XmlLookup(benchmark::State& state) {
  const int tables = int(state.range(0));
  TCatalog source;
  source.Fill(tables, 2);
  TCatalog catalog;
  catalog.container->LoadFromXML(source.container->GetXML());
  std::vector<TmvOwned<TSQLQualifiedName>> names;
  for (int i = 0; i < kLookups; ++i) {
    auto name = TastCreate<TSQLQualifiedName>(&catalog.context);
    name->AddName(TableName(int(int64_t(i) * tables / kLookups)), false);
    names.push_back(std::move(name));
  }
  for (auto _ : state) {
    for (const auto& name : names) {
      TmvMetadataTable* table = catalog.container->FindTableByFullName(name.get());
      if (!table) state.SkipWithError("a table was not found");
      benchmark::DoNotOptimize(table);
    }
  }
  state.counters["per_lookup"] =
      benchmark::Counter(kLookups, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

BENCHMARK(BM_XmlSave)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(BM_XmlLoad)->Arg(10000)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(BM_XmlLookup)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
