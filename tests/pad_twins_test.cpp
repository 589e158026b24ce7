// The widget and the QML item side by side, fed the same recorded input through the platform's path
// (QWindowSystemInterface, queued as a platform plugin queues it): a finger, a pen with pressure and
// tilt, and the mouse give both the same samples and the same record; disabled and read-only, neither
// takes input of any kind; both tell the same signals and describe themselves the same way.
#include <scrivlet/signature_area.h>
#include <scrivlet/signature_pad.h>
#include <scrivlet/stroke_json.h>

#include "qt_input.h"

#include <QAccessible>
#include <QQuickView>
#include <QSignalSpy>
#include <qpa/qwindowsysteminterface.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace qt_test;

// One recorded sample: where, when, how hard and how tilted (a pen's).
struct Sample {
  enum Kind { finger, pen, mouse } kind;
  QPointF at;
  ulong ms;
  double pressure = 0;
  int xTilt = 0, yTilt = 0;
};
using Recording = std::vector<Sample>;  // one stroke: pressed on the first sample, lifted on the last

Recording wave(Sample::Kind kind, int n, double y, ulong ms) {
  Recording r;
  for (int i = 0; i < n; ++i) {
    QPointF at(30.5 + 17.25 * i, y + 24 * std::sin(i * 0.7));
    // A mouse reaches widgets at whole pixels: it is recorded so.
    if (kind == Sample::mouse) at = at.toPoint();
    r.push_back({kind, at, ms + 7 * ulong(i), 0.15 + 0.04 * i, -30 + 5 * i, 12});
  }
  return r;
}

// A pad under test: the widget or the item, with its window.
struct Twin {
  const char* name;
  QObject* pad;
  QWindow* window;
  std::function<QImage()> grab;
  QnStrokeListRef strokes() const { return strokesFromJson(pad->property("strokesJson").toString().toStdString()); }
};

class Twins : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QWindowSystemInterface::registerInputDevice(pen_);
  }
  void SetUp() override {
    widget_.resize(400, 200), widget_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget_));
    QDir(SCRIVLET_TEST_OUTPUT_DIR).mkpath("qml");
    const QString file = QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/twin.qml";
    QFile qml(file);
    ASSERT_TRUE(qml.open(QIODevice::WriteOnly));
    qml.write("import QtQuick\nimport Scrivlet\nSignatureArea { width: 400; height: 200 }\n");
    qml.close();
    quick_.setSource(QUrl::fromLocalFile(file));
    ASSERT_EQ(quick_.status(), QQuickView::Ready);
    quick_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&quick_));
    area_ = qobject_cast<SignatureArea*>(quick_.rootObject());
    ASSERT_TRUE(area_);
    twins_ = {{"widget", &widget_, widget_.windowHandle(), [this] { return widget_.grab().toImage(); }},
              {"item", area_, &quick_, [this] { return quick_.grabWindow(); }}};
  }

  // Queues a stroke's events as a platform plugin does and lets the application take them in.
  void play(QWindow* window, const Recording& stroke) {
    for (size_t i = 0; i < stroke.size(); ++i) {
      const Sample& s = stroke[i];
      bool first = i == 0, last = i + 1 == stroke.size();
      QPointF global = window->mapToGlobal(s.at);
      switch (s.kind) {
        case Sample::finger: {
          QWindowSystemInterface::TouchPoint point;
          point.id = 1;
          point.state = first ? QEventPoint::State::Pressed : last ? QEventPoint::State::Released : QEventPoint::State::Updated;
          point.area = QRectF(global - QPointF(4, 4), QSizeF(8, 8));
          point.pressure = 1;
          QWindowSystemInterface::handleTouchEvent(window, s.ms, screen_, {point});
          break;
        }
        case Sample::pen:
          QWindowSystemInterface::handleTabletEvent(window, s.ms, pen_, s.at, global, last ? Qt::NoButton : Qt::LeftButton,
                                                    last ? 0 : s.pressure, s.xTilt, s.yTilt, 0, 0, 0);
          break;
        case Sample::mouse:
          QWindowSystemInterface::handleMouseEvent(
              window, s.ms, s.at, global, last ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
              first ? QEvent::MouseButtonPress : last ? QEvent::MouseButtonRelease : QEvent::MouseMove);
          break;
      }
    }
    QWindowSystemInterface::flushWindowSystemEvents();
    QCoreApplication::processEvents();
  }
  void playAll(QWindow* window, const std::vector<Recording>& strokes) {
    for (const Recording& stroke : strokes) play(window, stroke);
  }
  SignatureRecord recordOf(QObject* pad) {
    QSignalSpy ready(pad, SIGNAL(signatureReady(scrivlet::SignatureRecord)));
    QMetaObject::invokeMethod(pad, "done");
    if (ready.isEmpty()) EXPECT_TRUE(ready.wait(20000));
    return ready.isEmpty() ? SignatureRecord() : ready.first().at(0).value<SignatureRecord>();
  }

  static inline QPointingDevice* screen_ = QTest::createTouchDevice();
  static inline QPointingDevice* pen_ = makePen(601);
  SignaturePad widget_;
  QQuickView quick_;
  SignatureArea* area_ = nullptr;
  std::vector<Twin> twins_;
};

TEST_F(Twins, AFingerAPenWithPressureAndTiltAndTheMouseGiveBothTheSameSamplesAndTheSameRecord) {
  const std::vector<Recording> strokes = {wave(Sample::finger, 20, 50, 1000), wave(Sample::pen, 14, 100, 3000),
                                          wave(Sample::mouse, 12, 150, 5000)};
  std::vector<QnStrokeListRef> captured;
  std::vector<QImage> records;
  for (const Twin& twin : twins_) {
    playAll(twin.window, strokes);
    captured.push_back(twin.strokes());
    ASSERT_TRUE(captured.back()) << twin.name;
    // Every sample, where it was: Qt Quick merges none of the finger's moves. (Qt moves the mouse to
    // where a button is released before releasing it.)
    Trace expected;
    for (const Recording& stroke : strokes) {
      expected.emplace_back();
      for (const Sample& s : stroke) expected.back().emplace_back(s.at.x(), s.at.y());
    }
    expected[2].push_back(expected[2].back());
    EXPECT_EQ(traceOf(captured.back()), expected) << twin.name;
    // The pen's pressure (the release's, 0, excepted) and lean; no force for finger and mouse.
    const QnStroke& pen = *captured.back()->at(1);
    for (size_t i = 0; i + 1 < pen.size(); ++i) EXPECT_EQ(pen[i].pressure, float(strokes[1][i].pressure)) << twin.name << i;
    EXPECT_EQ(pen[0].altitudeAngle, float(M_PI / 2 - std::atan(std::hypot(std::tan(-30 * M_PI / 180), std::tan(12 * M_PI / 180)))));
    for (int s : {0, 2})
      for (const QnSignaturePoint& p : *captured.back()->at(s)) EXPECT_EQ(p.pressure, 0.0f) << twin.name;
    SignatureRecord record = recordOf(twin.pad);
    records.push_back(record.image());
    EXPECT_EQ(traceOf(record.strokes()), expected) << twin.name;
    twin.grab().save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/twin_" + twin.name + ".png");
  }
  // Every field of every point, to the bit, and the record's pixels.
  EXPECT_EQ(strokesToJson(captured[0]), strokesToJson(captured[1]));
  ASSERT_FALSE(records[0].isNull());
  EXPECT_TRUE(records[0] == records[1]);
  records[0].save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/twin_record.png");
}

TEST_F(Twins, DisabledOrReadOnlyNeitherTakesAFingerAPenNorTheMouseAndAStrokeUnderWayIsKept) {
  const std::vector<Recording> strokes = {wave(Sample::finger, 6, 50, 1000), wave(Sample::pen, 6, 100, 2000),
                                          wave(Sample::mouse, 6, 150, 3000)};
  for (const Twin& twin : twins_) {
    QSignalSpy began(twin.pad, SIGNAL(strokeBegan())), changed(twin.pad, SIGNAL(changed()));
    for (const char* property : {"enabled", "readOnly"}) {
      twin.pad->setProperty(property, property == std::string("readOnly"));
      playAll(twin.window, strokes);
      EXPECT_EQ(std::tuple(twin.pad->property("empty").toBool(), began.size(), changed.size()),
                std::tuple(true, qsizetype(0), qsizetype(0)))
          << twin.name << " " << property;
      twin.pad->setProperty(property, property != std::string("readOnly"));
    }
    // Taken again: all three draw. Disabled halfway through a stroke, the stroke so far is kept.
    playAll(twin.window, strokes);
    EXPECT_EQ(twin.pad->property("strokeCount").toInt(), 3) << twin.name;
    Recording half = wave(Sample::mouse, 6, 180, 4000);
    play(twin.window, Recording(half.begin(), half.begin() + 3));
    twin.pad->setProperty("enabled", false);
    play(twin.window, Recording(half.begin() + 3, half.end()));
    EXPECT_EQ(traceOf(twin.strokes()).back(), (Path{{31, 180}, {48, 195}, {65, 204}, {65, 204}}))
        << twin.name;
    twin.pad->setProperty("enabled", true);
  }
}

}  // namespace
}  // namespace scrivlet
