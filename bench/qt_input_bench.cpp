// Cost of one input event through the Qt capture widget, from the event to the ink in the cache, at
// the start and at the end of a 5,000-point signature.
#include "bench_data.h"

#include <scrivlet/facade.h>

#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>

#include <QApplication>
#include <QMouseEvent>

#include <benchmark/benchmark.h>

namespace scrivlet {
namespace {

void send(QWidget* widget, QEvent::Type type, const bench::Sample& s) {
  QPointF position(s.x, s.y);
  Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
  Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
  QMouseEvent event(type, position, widget->mapToGlobal(position), button, held, Qt::NoModifier);
  event.setTimestamp(static_cast<quint64>(1000 + s.tMs));
  QCoreApplication::sendEvent(widget, &event);
}

// Times 500 move events of the 5,000-point stroke from the given index.
void BM_QtInputEvent500From(benchmark::State& state) {
  static const auto samples = bench::loadSamples("points_single_5000.csv");
  size_t start = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    QnQtCaptureWidget widget;
    widget.resize(1000, 400);
    auto delegate = std::make_shared<QnScrivletControllerDelegate>();
    auto scrivlet = QnScrivlet::scrivletWithViewDelegate(widget.view(), delegate);
    send(&widget, QEvent::MouseButtonPress, samples[0]);
    for (size_t i = 1; i < start; ++i) send(&widget, QEvent::MouseMove, samples[i]);
    state.ResumeTiming();
    for (size_t i = std::max<size_t>(start, 1); i < start + 500; ++i)
      send(&widget, QEvent::MouseMove, samples[i]);
  }
  state.counters["per_event"] = benchmark::Counter(
      500.0 * state.iterations(), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_QtInputEvent500From)->Arg(0)->Arg(4500)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace scrivlet

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  scrivlet::installQtPlatform();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
