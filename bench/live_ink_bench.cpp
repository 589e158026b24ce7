// Cost of live ink per point at the start and at the end of a long signature, and of a full redraw.
#include "bench_data.h"
#include <scrivlet/engine/device.h>
#include <scrivlet/headless_view.h>

#include "capture/drawing_controller.h"

#include <benchmark/benchmark.h>

namespace scrivlet {
namespace {

std::vector<QnSignaturePoint> loadPoints(const char* name) {
  std::vector<QnSignaturePoint> points;
  for (const bench::Sample& s : bench::loadSamples(name)) {
    QnSignaturePoint p;
    p.location = {s.x, s.y};
    p.timestamp = s.tMs / 1000.0;
    p.pressure = static_cast<float>(s.pressure);
    points.push_back(p);
  }
  return points;
}

// Feeds points [from, to) of a one-stroke signature: the first begins it, the last ends it.
void feed(QnDemoDrawingController& controller, const std::vector<QnSignaturePoint>& points,
          size_t from, size_t to) {
  for (size_t i = from; i < to; ++i) {
    if (i == 0)
      controller.drawTouchBeganWithPoint(points[i]);
    else if (i == points.size() - 1)
      controller.drawTouchEndedWithPoint(points[i]);
    else
      controller.drawTouchMovedWithPoint(points[i]);
  }
}

// The screen the live ink is drawn for: 1000 x 400 points at scale 2 (2000 x 800 pixels), as
// signature_pad's canvas is measured.
struct ScreenOfScale2 {
  ScreenOfScale2() { QnDevice::setScreenScale(2); }
  ~ScreenOfScale2() { QnDevice::setScreenScale(1); }
};

// Times 500 points of the 5,000-point stroke starting at the given index.
void BM_LiveInk500PointsFrom(benchmark::State& state) {
  static const auto points = loadPoints("points_single_5000.csv");
  size_t start = static_cast<size_t>(state.range(0));
  ScreenOfScale2 screen;
  for (auto _ : state) {
    state.PauseTiming();
    auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
    QnDemoDrawingController controller(view);
    feed(controller, points, 0, start);
    state.ResumeTiming();
    feed(controller, points, start, start + 500);
  }
  state.SetItemsProcessed(state.iterations() * 500);
  state.counters["per_point"] = benchmark::Counter(
      500.0 * state.iterations(), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_LiveInk500PointsFrom)->Arg(0)->Arg(4500)->Unit(benchmark::kMillisecond);

void BM_LiveInkMultiStroke2000Points(benchmark::State& state) {
  static const auto samples = bench::loadSamples("points_multi_20x100.csv");
  static const auto points = loadPoints("points_multi_20x100.csv");
  ScreenOfScale2 screen;
  for (auto _ : state) {
    state.PauseTiming();
    auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
    QnDemoDrawingController controller(view);
    state.ResumeTiming();
    for (size_t i = 0; i < points.size(); ++i) {
      bool first = i == 0 || samples[i - 1].stroke != samples[i].stroke;
      bool last = i + 1 == points.size() || samples[i + 1].stroke != samples[i].stroke;
      if (first)
        controller.drawTouchBeganWithPoint(points[i]);
      else if (last)
        controller.drawTouchEndedWithPoint(points[i]);
      else
        controller.drawTouchMovedWithPoint(points[i]);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(points.size()));
  state.counters["per_point"] =
      benchmark::Counter(double(points.size()) * state.iterations(),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_LiveInkMultiStroke2000Points)->Unit(benchmark::kMillisecond);

// One redraw of the whole 5,000-point signature into the cache.
void BM_FullRedraw5000Points(benchmark::State& state) {
  static const auto points = loadPoints("points_single_5000.csv");
  auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  QnDemoDrawingController controller(view);
  feed(controller, points, 0, points.size());
  for (auto _ : state) controller.redraw();
}
BENCHMARK(BM_FullRedraw5000Points)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace scrivlet
