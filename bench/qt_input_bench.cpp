// What a signer feels on a shown Qt capture widget (offscreen platform): one pen sample with pressure,
// from the tablet event to the ink painted on the widget, at the start and after 4,500 points of the
// 5,000-point stroke; and one repaint of a live dirty rectangle, then of the whole widget.
#include "bench_data.h"

#include <scrivlet/engine/facade.h>

#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>
#include <scrivlet/signature_pad.h>

#include <QApplication>
#include <QPointingDevice>
#include <QTabletEvent>

#include <benchmark/benchmark.h>

namespace scrivlet {
namespace {

const QPointingDevice* pen() {
  using Cap = QInputDevice::Capability;
  static auto* device = new QPointingDevice("bench pen", 7, QInputDevice::DeviceType::Stylus,
                                            QPointingDevice::PointerType::Pen, Cap::Position | Cap::Pressure, 1, 2);
  return device;
}

void send(QWidget* widget, QEvent::Type type, const bench::Sample& s) {
  QPointF at(s.x, s.y);
  bool touching = type != QEvent::TabletRelease;
  QTabletEvent event(type, pen(), at, widget->mapToGlobal(at), s.pressure, 0, 0, 0, 0, 0, Qt::NoModifier,
                     type == QEvent::TabletMove ? Qt::NoButton : Qt::LeftButton,
                     touching ? Qt::LeftButton : Qt::NoButton);
  event.setTimestamp(static_cast<quint64>(1000 + s.tMs));
  QCoreApplication::sendEvent(widget, &event);
}

// A shown widget signed on up to sample `upTo` of the 5,000-point stroke, its paints done.
struct ShownWidget {
  explicit ShownWidget(size_t upTo) {
    widget.resize(1000, 400);
    widget.show();
    scrivlet = QnScrivlet::scrivletWithViewDelegate(widget.view(), delegate);
    QCoreApplication::processEvents();
    send(&widget, QEvent::TabletPress, samples()[0]);
    for (size_t i = 1; i < upTo; ++i) send(&widget, QEvent::TabletMove, samples()[i]);
    QCoreApplication::processEvents();
  }
  static const std::vector<bench::Sample>& samples() {
    static const auto all = bench::loadSamples("points_single_5000.csv");
    return all;
  }
  QnQtCaptureWidget widget;
  std::shared_ptr<QnScrivletControllerDelegate> delegate = std::make_shared<QnScrivletControllerDelegate>();
  std::shared_ptr<QnScrivlet> scrivlet;
};

// 500 samples from the given index, each sent and painted before the next.
void BM_QtPenSampleWithRepaint500From(benchmark::State& state) {
  size_t start = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    ShownWidget shown(start);
    state.ResumeTiming();
    for (size_t i = std::max<size_t>(start, 1); i < start + 500; ++i) {
      send(&shown.widget, QEvent::TabletMove, ShownWidget::samples()[i]);
      QCoreApplication::processEvents();  // the update request: the widget paints its dirty region
    }
  }
  state.counters["per_sample"] = benchmark::Counter(500.0 * state.iterations(),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_QtPenSampleWithRepaint500From)->Arg(0)->Arg(4500)->Unit(benchmark::kMillisecond);

// The signature pad a host shows, 1000 x 400, signed with the pen on the 5,000-point stroke: the cost of
// each of 500 pen events from the given index, with the pad repainted after every `repaintEvery`
// events (4: a 60 Hz screen under 240 Hz input), or never within them (0: painting deferred).
void BM_QtPadPenEvents(benchmark::State& state) {
  const auto& samples = ShownWidget::samples();
  size_t start = static_cast<size_t>(state.range(0));
  int repaintEvery = static_cast<int>(state.range(1));
  for (auto _ : state) {
    state.PauseTiming();
    SignaturePad pad;
    pad.resize(1000, 400);
    pad.show();
    QCoreApplication::processEvents();
    QWidget* surface = pad.childAt(500, 200);
    send(surface, QEvent::TabletPress, samples[0]);
    for (size_t i = 1; i < start; ++i) send(surface, QEvent::TabletMove, samples[i]);
    QCoreApplication::processEvents();
    state.ResumeTiming();
    for (size_t i = std::max<size_t>(start, 1); i < start + 500; ++i) {
      send(surface, QEvent::TabletMove, samples[i]);
      if (repaintEvery && i % repaintEvery == 0) QCoreApplication::processEvents();
    }
    state.PauseTiming();
    QCoreApplication::processEvents();
    state.ResumeTiming();
  }
  state.counters["per_event"] = benchmark::Counter(500.0 * state.iterations(),
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_QtPadPenEvents)->Args({0, 0})->Args({0, 4})->Args({4500, 0})->Args({4500, 4})
    ->Unit(benchmark::kMillisecond);

// One synchronous repaint after 5,000 points: of a live ink's dirty rectangle (48 x 48 points), and of
// the whole widget.
void BM_QtRepaint(benchmark::State& state) {
  static ShownWidget* shown = new ShownWidget(4999);  // kept to the end: widgets may not outlive the app
  QRect rect = state.range(0) ? QRect(500, 180, 48, 48) : shown->widget.rect();
  for (auto _ : state) shown->widget.repaint(rect);
}
BENCHMARK(BM_QtRepaint)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

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
