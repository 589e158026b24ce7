// Cost of drawing a recorded stroke through the dual-target context, as raster and as SVG text.
#include "bench_data.h"
#include "platform/image.h"
#include "render/combo_context.h"

#include <benchmark/benchmark.h>

namespace scrivlet {
namespace {

void drawPolyline(QnComboContext& combo, const std::vector<bench::Sample>& samples) {
  combo.setLineWidth(2.0);
  combo.setLineCap(kQnLineCapRound);
  for (size_t i = 1; i < samples.size(); ++i) {
    combo.beginPath();
    combo.moveToPoint({samples[i - 1].x, samples[i - 1].y});
    combo.addLineToPoint({samples[i].x, samples[i].y});
    combo.strokePath();
  }
}

void BM_ComboContextRasterSegments(benchmark::State& state) {
  auto samples = bench::loadSamples("points_single_5000.csv");
  QnBitmapContext bitmap({1000, 400}, 1.0);
  QnComboContext combo(&bitmap.context());
  for (auto _ : state) drawPolyline(combo, samples);
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(samples.size()));
}
BENCHMARK(BM_ComboContextRasterSegments)->Unit(benchmark::kMillisecond);

void BM_ComboContextSVGSegments(benchmark::State& state) {
  auto samples = bench::loadSamples("points_single_5000.csv");
  for (auto _ : state) {
    QnComboContext combo(nullptr);
    combo.setIsSVG(true);
    combo.setScaleCTMXY(1, 1);
    drawPolyline(combo, samples);
    benchmark::DoNotOptimize(combo.serializeSVG({1000, 400}));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(samples.size()));
}
BENCHMARK(BM_ComboContextSVGSegments)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace scrivlet

