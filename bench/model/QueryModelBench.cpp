// The query model on large queries: a SELECT of N datasources, each a table
// of 50 fields in the metadata, built through the adding path, printed and
// freed; and the cost of one change made inside an open update, which must
// not grow with the objects that did not change.
//
//   build-bench/bin/bench_query_model --benchmark_counters_tabular=true
//
//   BM_BuildPrintFree/N   a fresh host; N datasources added one by one
//                         inside one update, the text printed, all freed
//   BM_ChangeInUpdate/N   inside an update open on the query: the news of a
//                         change of one datasource of N (what every setter
//                         of the model ends in) climbs to the top; nothing
//                         is generated; per_change stays flat
//   BM_AliasInUpdate/N    the same for a new alias, whose news reaches every
//                         datasource of the SELECT (column prefixes anywhere
//                         may print differently): per_change grows with N
//   BM_EditAndPrint/N     one alias changed and the text printed again
//                         (only the changed datasource is generated anew)
//   BM_RelinkInUpdate/N   every link replaced by a chain in a new order
//                         inside one update; its end reorders the FROM
//                         clause once (reorders_per_update stays 1)
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"

namespace {

using namespace mv;

constexpr int kFields = 50;

// A host on SQL-92 with a catalog of `tables` tables T0.. of 50 fields.
struct Fixture {
  explicit Fixture(int tables) {
    InitializeEngine();
    host->SetSyntaxProvider(provider.get());
    TmvMetadataContainer* container = host->MetadataContainer();
    for (int t = 0; t < tables; ++t) {
      TmvMetadataTable* table = container->AddTable(u"T" + IntToWide(t));
      for (int f = 0; f < kFields; ++f) table->GetFields()->AddField(u"F" + IntToWide(f));
    }
  }
  void AddAll(int count) {
    host->BeginUpdate();
    for (int t = 0; t < count; ++t) host->Query()->FirstSelect()->AddObject(u"T" + IntToWide(t), u"");
    host->EndUpdate();
  }
  TmvDatasource* Datasource(int index) {
    return TmvCast<TmvDatasource>(host->Query()->FirstSelect()->Datasources()->Items(index));
  }

  TmvOwned<TmvSQL92SyntaxProvider> provider = TmvCreate<TmvSQL92SyntaxProvider>();
  TmvOwned<TmvQueryModelHost> host = TmvCreate<TmvQueryModelHost>();
};

void BM_BuildPrintFree(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto fixture = std::make_unique<Fixture>(count);
    state.ResumeTiming();
    fixture->AddAll(count);
    benchmark::DoNotOptimize(fixture->host->Query()->GetSql().size());
    fixture->host.reset();
    state.PauseTiming();
    fixture.reset();
    state.ResumeTiming();
  }
  state.counters["datasources"] = count;
}

// Runs `change` 1,000 times inside one update on the query; the update's
// end, where the news is acted on, is not timed.
template <class Change>
void MeasureChanges(benchmark::State& state, Fixture& fixture, Change change) {
  const int changes = 1000;
  int round = 0;
  for (auto _ : state) {
    state.PauseTiming();
    fixture.host->BeginUpdate();
    state.ResumeTiming();
    for (int i = 0; i < changes; ++i) change(round * changes + i);
    state.PauseTiming();
    fixture.host->EndUpdate();
    state.ResumeTiming();
    ++round;
  }
  state.counters["per_change"] =
      benchmark::Counter(static_cast<double>(changes) * state.iterations(),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_ChangeInUpdate(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  Fixture fixture(count);
  fixture.AddAll(count);
  TmvDatasource* target = fixture.Datasource(count / 2);
  MeasureChanges(state, fixture, [target](int) { target->NotifySQLUpdated(); });
}

void BM_AliasInUpdate(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  Fixture fixture(count);
  fixture.AddAll(count);
  TmvDatasource* target = fixture.Datasource(count / 2);
  MeasureChanges(state, fixture, [target](int i) { target->SetAlias(u"a" + IntToWide(i % 7)); });
}

void BM_EditAndPrint(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  Fixture fixture(count);
  fixture.AddAll(count);
  TmvDatasource* target = fixture.Datasource(count / 2);
  int round = 0;
  for (auto _ : state) {
    target->SetAlias(u"a" + IntToWide(round++ % 7));
    benchmark::DoNotOptimize(fixture.host->Query()->GetSql().size());
  }
}

// Inside one update on the query: every link of the SELECT goes and N-1
// new ones chain the datasources in another order; the update's end, where
// the FROM clause is reordered once, is timed with it.
void BM_RelinkInUpdate(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  Fixture fixture(count);
  fixture.AddAll(count);
  TmvUnionSubQuery* select = fixture.host->Query()->FirstSelect();
  TmvDatasourceGroup* group = select->Datasources();
  std::vector<TmvDatasource*> order;
  for (int i = 0; i < count; ++i) order.push_back(fixture.Datasource(i));
  const int before = TmvDatasourceGroup::ReorderCount();
  int round = 0;
  for (auto _ : state) {
    fixture.host->BeginUpdate();
    while (group->LinksCount() > 0) group->DestroyChild(group->Links(group->LinksCount() - 1));
    // Each round links in steps of another stride (1, 3 or 7, prime to
    // 100): a chain through all in a new order.
    static constexpr int kStrides[] = {1, 3, 7};
    const int stride = kStrides[round++ % 3];
    for (int i = 1; i < count; ++i)
      select->AddLink(order[(i - 1) * stride % count], u"F" + IntToWide(i % kFields), u"F" + IntToWide(i % kFields),
                      order[i * stride % count]);
    fixture.host->EndUpdate();
  }
  benchmark::DoNotOptimize(select->GetSql().size());
  state.counters["links"] = count - 1;
  state.counters["reorders_per_update"] =
      static_cast<double>(TmvDatasourceGroup::ReorderCount() - before) / static_cast<double>(state.iterations());
}

}  // namespace

BENCHMARK(BM_BuildPrintFree)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_ChangeInUpdate)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AliasInUpdate)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_EditAndPrint)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RelinkInUpdate)->Arg(100)->Unit(benchmark::kMillisecond);
