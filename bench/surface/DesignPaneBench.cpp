// The design pane with many datasources: how long the boxes take to appear
// for new text, a whole repaint of the work area, and a scroll step. A
// frame under about 50 ms reads as no delay.
//
//   QT_QPA_PLATFORM=offscreen build-bench/bin/bench_design_pane
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <string>

#include "component/QueryBuilder.h"
#include "frontend/SyntaxProvidersList.h"
#include "dialects/EngineInit.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/QueryTree.h"
#include "surface/DesignPane.h"
#include "surface/UnionSubQueryPage.h"

namespace {

using namespace mv;

// A query of `tables` tables, each linked to the one before it.
WideString ChainQuery(int tables) {
  std::string sql = "SELECT t0.Name FROM T0 t0";
  for (int i = 1; i < tables; ++i)
    sql += " INNER JOIN T" + std::to_string(i) + " t" + std::to_string(i) + " ON t" + std::to_string(i - 1) +
           ".Id = t" + std::to_string(i) + ".ParentId";
  return UTF8Decode(sql);
}

struct Fixture {
  explicit Fixture(int tables) {
    provider.reset(SyntaxProvidersList().FindClassByClassName("TmvSQL92SyntaxProvider")->CreateRaw());
    builder = TmvCreate<TmvQueryBuilder>();
    builder->SetSyntaxProvider(provider.get());
    for (int i = 0; i < tables; ++i) {
      TmvMetadataTable* table = builder->MetadataContainer()->AddTable(UTF8Decode("T" + std::to_string(i)));
      for (const char16_t* field : {u"Id", u"ParentId", u"Name", u"Created", u"Amount"})
        table->GetFields()->AddField(field);
    }
    builder->MetadataContainer()->SetWorkOffline(true);
    pane.resize(1280, 800);
    pane.SetQueryBuilder(builder.get());
    pane.show();
    sql = ChainQuery(tables);
  }
  ~Fixture() { pane.SetQueryBuilder(nullptr); }
  TmvQueryBuilderWorkArea* WorkArea() {
    return pane.UnionSubQueryPage(builder->Query()->ActiveUnionSubQuery())->WorkArea();
  }

  TmvOwned<TmvBaseSyntaxProvider> provider;
  TmvOwned<TmvQueryBuilder> builder;
  TmvDesignPane pane;
  WideString sql;
};

// New text: every box made, filled, sized and placed, every link made.
void BM_LoadPane(benchmark::State& state) {
  Fixture fixture(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    fixture.builder->SetSql(fixture.sql);
    QCoreApplication::processEvents();
    state.PauseTiming();
    fixture.builder->Clear();
    state.ResumeTiming();
  }
  state.counters["boxes"] = static_cast<double>(state.range(0));
}

// One paint of the whole work area (every box and link), into an image.
void BM_PaintWholeArea(benchmark::State& state) {
  Fixture fixture(static_cast<int>(state.range(0)));
  fixture.builder->SetSql(fixture.sql);
  QCoreApplication::processEvents();
  QWidget* canvas = fixture.WorkArea()->widget();
  QImage image(canvas->size(), QImage::Format_ARGB32_Premultiplied);
  for (auto _ : state) {
    QPainter painter(&image);
    canvas->render(&painter);
  }
  state.counters["area_px"] = static_cast<double>(canvas->width()) * canvas->height();
}

// A scroll step of the visible part, as the wheel gives it, painted.
void BM_ScrollStep(benchmark::State& state) {
  Fixture fixture(static_cast<int>(state.range(0)));
  fixture.builder->SetSql(fixture.sql);
  QCoreApplication::processEvents();
  TmvQueryBuilderWorkArea* area = fixture.WorkArea();
  QScrollBar* bar = area->horizontalScrollBar();
  QImage image(area->viewport()->size(), QImage::Format_ARGB32_Premultiplied);
  int step = 120;
  for (auto _ : state) {
    if (bar->value() + step > bar->maximum() || bar->value() + step < 0) step = -step;
    bar->setValue(bar->value() + step);
    QPainter painter(&image);
    area->viewport()->render(&painter);
  }
}

BENCHMARK(BM_LoadPane)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PaintWholeArea)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScrollStep)->Arg(200)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
  QApplication app(argc, argv);
  InitializeEngine();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
