// Cost of preparing every output of a signature (hash, PNG, PDF, SVG, XML) by its number of points, and
// of each output alone, at export scale 2 (a 2000 x 800 PNG for the shared signatures).
#include "bench_data.h"

#include <scrivlet/headless_view.h>
#include <scrivlet/engine/scrivlet_controller.h>

#include "capture/drawing_controller.h"

#include <benchmark/benchmark.h>

namespace scrivlet {
namespace {

// The first count points of a shared signature as strokes, with the stroke model's kinematics and
// diameters; past the file's end it runs on from its start, a stroke later.
QnStrokeListRef signatureOf(const std::vector<bench::Sample>& samples, size_t count,
                            QnDemoDrawingController& model) {
  for (size_t i = 0; i < count; ++i) {
    const bench::Sample& s = samples[i % samples.size()];
    size_t round = i / samples.size();
    QnSignaturePoint p;
    p.location = {s.x, s.y};
    p.timestamp = s.tMs / 1000.0 + round * 30.0;
    p.pressure = static_cast<float>(s.pressure);
    bool first = i % samples.size() == 0 || samples[(i - 1) % samples.size()].stroke != s.stroke;
    bool last = i + 1 == count || (i + 1) % samples.size() == 0 ||
                samples[(i + 1) % samples.size()].stroke != s.stroke;
    if (first)
      model.drawTouchBeganWithPoint(p);
    else if (last)
      model.drawTouchEndedWithPoint(p);
    else
      model.drawTouchMovedWithPoint(p);
  }
  return QnScrivletController::copyOfStrokesWithOffset(model.drawingArray(), {0, 0});
}

void BM_PrepareScrivletData(benchmark::State& state) {
  size_t count = static_cast<size_t>(state.range(0));
  auto samples = bench::loadSamples(count == 2000 ? "points_multi_20x100.csv" : "points_single_5000.csv");
  auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  auto controller = QnScrivletController::create(view, {}, {});
  controller->setMyBrushStrokes(signatureOf(samples, count, *controller->drawingController()));
  controller->setCopyOfTargetViewBounds(view->bounds());
  controller->setExportScale(2);
  for (auto _ : state) controller->prepareScrivletData();
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}
BENCHMARK(BM_PrepareScrivletData)->Arg(500)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Each output alone, by the number of points.
void BM_ExportFormat(benchmark::State& state, const char* format) {
  size_t count = static_cast<size_t>(state.range(0));
  auto samples = bench::loadSamples(count == 2000 ? "points_multi_20x100.csv" : "points_single_5000.csv");
  auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  auto controller = QnScrivletController::create(view, {}, {});
  controller->setMyBrushStrokes(signatureOf(samples, count, *controller->drawingController()));
  controller->setExportScale(2);
  size_t bytes = 0;
  for (auto _ : state) {
    if (std::string(format) == "XML")
      bytes = controller->createXmlString().size();
    else
      bytes = controller->getImageData(format).value_or(std::vector<uint8_t>{}).size();
  }
  state.counters["bytes"] = double(bytes);
}
BENCHMARK_CAPTURE(BM_ExportFormat, PNG, "PNG")->Arg(500)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportFormat, PDF, "PDF")->Arg(500)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportFormat, SVG, "SVG")->Arg(500)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportFormat, XML, "XML")->Arg(500)->Arg(2000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace scrivlet
