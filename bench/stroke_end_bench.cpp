// What the signer's UI thread pays when a stroke ends with many points already on the canvas, for the
// main-queue step that stores a prepared record, and the heap each captured sample costs.
#include "bench_data.h"

#include <scrivlet/engine/facade.h>
#include <scrivlet/headless.h>
#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/signature_session.h>

#include "capture/drawing_controller.h"

#include <utility>

#include <benchmark/benchmark.h>
#include <malloc.h>

namespace scrivlet {
namespace {

// The shared 20-stroke signature run on until `count` points, each round a little lower, as strokes
// with the stroke model's kinematics and diameters.
QnStrokeListRef strokesOf(size_t count) {
  static const auto samples = bench::loadSamples("points_multi_20x100.csv");
  auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  QnDemoDrawingController model(view);
  for (size_t i = 0; i < count; ++i) {
    const bench::Sample& s = samples[i % samples.size()];
    size_t round = i / samples.size();
    QnSignaturePoint p;
    p.location = {s.x, s.y + (round % 8)};
    p.timestamp = s.tMs / 1000.0 + round * 30.0;
    p.pressure = static_cast<float>(s.pressure);
    bool first = i % samples.size() == 0 || samples[(i - 1) % samples.size()].stroke != s.stroke;
    bool last = i + 1 == count || samples[(i + 1) % samples.size()].stroke != s.stroke;
    if (first) model.drawTouchBeganWithPoint(p);
    else if (last) model.drawTouchEndedWithPoint(p);
    else model.drawTouchMovedWithPoint(p);
  }
  return model.drawingArray();
}

// A signing session on a 1000 x 400 view with `count` points on the canvas.
struct Canvas {
  explicit Canvas(size_t count) {
    QnScheduler::setCurrent(loop);
    session.setStrokes(strokesOf(count));
    loop->advance(1), loop->runUntilIdle();
  }
  std::shared_ptr<HeadlessRunLoop> loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  SignatureSession session{view};
};

// The end of a 10-point stroke drawn over `count` points: the touch's end and everything the UI thread
// does for it at once (the record's preparation runs later, in the background).
void BM_StrokeEndWithPointsOnCanvas(benchmark::State& state) {
  Canvas canvas(static_cast<size_t>(state.range(0)));
  double t = 100;
  for (auto _ : state) {
    state.PauseTiming();
    auto pen = std::make_shared<HeadlessTouch>(QnPoint{300, 200}, t += 1);
    canvas.view->beginTouches({pen});
    for (int i = 1; i < 10; ++i) pen->moveTo({300.0 + 8 * i, 200.0 + (i % 3) * 5}, t + 0.01 * i), canvas.view->moveTouches({pen});
    state.ResumeTiming();
    canvas.view->endTouches({pen});
    state.PauseTiming();
    canvas.session.undo();  // the same number of points for the next round
    state.ResumeTiming();
  }
}
BENCHMARK(BM_StrokeEndWithPointsOnCanvas)->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);

// Draws samples [from, to) of the shared signatures through the view as touches, one touch a stroke;
// the end of the last stroke is left to the caller when `endLast` is false. Past the file's end the
// samples run on from its start, moved a little, so that a stroke can be as long as wanted.
std::shared_ptr<HeadlessTouch> drawSamples(HeadlessView& view, const std::vector<bench::Sample>& samples,
                                           size_t from, size_t to, bool endLast) {
  std::shared_ptr<HeadlessTouch> pen;
  auto at = [&](size_t i) {
    const bench::Sample& s = samples[i % samples.size()];
    size_t round = i / samples.size();
    return std::pair(QnPoint{s.x + (round % 5) * 3.0, s.y + (round % 7) * 2.0}, s.tMs / 1000 + round * 25.0);
  };
  for (size_t i = from; i < to; ++i) {
    auto [location, time] = at(i);
    bool first = i == from || samples[i % samples.size()].stroke != samples[(i - 1) % samples.size()].stroke;
    if (first) {
      if (pen) view.endTouches({pen});
      pen = std::make_shared<HeadlessTouch>(location, time);
      view.beginTouches({pen});
    } else {
      pen->moveTo(location, time), view.moveTouches({pen});
    }
  }
  if (endLast && pen) view.endTouches({pen});
  return pen;
}

// The end of the 20th stroke of the 2,000-point signature (100 points), with the 19 before it on the
// canvas, as a signer draws them.
void BM_StrokeEndOfTwentiethStroke(benchmark::State& state) {
  static const auto samples = bench::loadSamples("points_multi_20x100.csv");
  for (auto _ : state) {
    state.PauseTiming();
    Canvas canvas(0);
    drawSamples(*canvas.view, samples, 0, 1900, true);
    auto pen = drawSamples(*canvas.view, samples, 1900, 2000, false);
    state.ResumeTiming();
    canvas.view->endTouches({pen});
  }
}
BENCHMARK(BM_StrokeEndOfTwentiethStroke)->Iterations(50)->Unit(benchmark::kMillisecond);

// The end of one stroke of `count` points on an empty canvas: the 5,000-point stroke, cut short or
// run on.
void BM_StrokeEndOfOneStroke(benchmark::State& state) {
  static const auto samples = [] {
    auto all = bench::loadSamples("points_single_5000.csv");
    for (auto& s : all) s.stroke = 0;
    return all;
  }();
  size_t count = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    Canvas canvas(0);
    auto pen = drawSamples(*canvas.view, samples, 0, count, false);
    state.ResumeTiming();
    canvas.view->endTouches({pen});
  }
}
BENCHMARK(BM_StrokeEndOfOneStroke)->Arg(1000)->Arg(5000)->Iterations(20)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StrokeEndOfOneStroke)->Arg(100000)->Iterations(3)->Unit(benchmark::kMillisecond);

// Undo and redo of the last stroke through the session, with `count` points on the canvas drawn as a
// signer draws them (strokes of 100 points); each timed alone.
void BM_UndoAndRedo(benchmark::State& state, bool timeUndo) {
  static const auto samples = bench::loadSamples("points_multi_20x100.csv");
  Canvas canvas(0);
  drawSamples(*canvas.view, samples, 0, static_cast<size_t>(state.range(0)), true);
  for (auto _ : state) {
    if (!timeUndo) state.PauseTiming();
    canvas.session.undo();
    if (timeUndo) state.PauseTiming(); else state.ResumeTiming();
    canvas.session.redo();
    if (timeUndo) state.ResumeTiming();
  }
}
BENCHMARK_CAPTURE(BM_UndoAndRedo, Undo, true)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_UndoAndRedo, Redo, false)->Arg(2000)->Arg(20000)->Unit(benchmark::kMillisecond);

// From done() right after the last stroke of the 2,000-point signature (export scale 2) to the record
// in the host's hands: the preparation it starts, in the background, and its main-queue step.
void BM_DoneRightAfterLastStroke(benchmark::State& state) {
  static const auto samples = bench::loadSamples("points_multi_20x100.csv");
  for (auto _ : state) {
    state.PauseTiming();
    Canvas canvas(0);
    canvas.session.scrivlet().setExportScale(2);
    bool ready = false;
    canvas.session.setOnSignatureReady([&](std::shared_ptr<QnSignature>) { ready = true; });
    drawSamples(*canvas.view, samples, 0, 2000, true);
    state.ResumeTiming();
    canvas.session.done();
    while (!ready) canvas.loop->advance(0), canvas.loop->runUntilIdle();
  }
}
BENCHMARK(BM_DoneRightAfterLastStroke)->Iterations(20)->Unit(benchmark::kMillisecond);

// The main-queue step that turns a prepared record into the record the host is given, 2,000 points at
// export scale 2.
void BM_RecordStepOnMainQueue(benchmark::State& state) {
  auto view = HeadlessView::create(makeRect(0, 0, 1000, 400));
  auto controller = QnScrivletController::create(view, {}, {});
  controller->setMyBrushStrokes(strokesOf(2000));
  controller->setCopyOfTargetViewBounds(view->bounds());
  controller->setExportScale(2);
  controller->prepareScrivletData();
  for (auto _ : state) benchmark::DoNotOptimize(controller->prepareSignature());
}
BENCHMARK(BM_RecordStepOnMainQueue)->Unit(benchmark::kMillisecond);

// The heap that stays allocated per sample captured through the touches, the controller and the stroke
// model: the 5,000-point signature drawn as 20 strokes of 250 points, the heap (small and mapped blocks)
// taken after 1,000 and after 5,000 samples and divided by the 4,000 between, so that what does not
// grow with the signature (the view's bitmaps, the threads' arenas) is left out. Once with the strokes
// ended (and taken for the record's preparation), once with each stroke's record prepared and kept.
size_t heapInUse() {
  struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

double heapPerSample(const std::vector<bench::Sample>& samples, bool withRecords) {
  // A fixed threshold for mapping large blocks: malloc would otherwise move it as bitmaps come and go,
  // and with it where the bitmaps' memory is counted.
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);
  Canvas canvas(0);
  size_t atThousand = 0;
  for (size_t first = 0; first < samples.size(); first += 250) {
    auto pen = std::make_shared<HeadlessTouch>(QnPoint{samples[first].x, samples[first].y}, samples[first].tMs / 1000);
    canvas.view->beginTouches({pen});
    for (size_t i = first + 1; i < first + 250; ++i) {
      pen->moveTo({samples[i].x, samples[i].y}, samples[i].tMs / 1000);
      if (i + 1 < first + 250) canvas.view->moveTouches({pen});
    }
    canvas.view->endTouches({pen});
    if (withRecords) canvas.loop->advance(1), canvas.loop->runUntilIdle();
    if (first + 250 == 1000) atThousand = heapInUse();
  }
  return (double(heapInUse()) - double(atThousand)) / 4000.0;
}

void BM_HeapPerCapturedSample(benchmark::State& state) {
  static const auto samples = bench::loadSamples("points_single_5000.csv");
  double bytesPerSample = 0, withRecord = 0;
  for (auto _ : state) {
    bytesPerSample = heapPerSample(samples, false);
    withRecord = heapPerSample(samples, true);
  }
  state.counters["bytes_per_sample"] = bytesPerSample;
  state.counters["with_record"] = withRecord;
}
BENCHMARK(BM_HeapPerCapturedSample)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace scrivlet
