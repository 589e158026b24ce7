// Test support: the widget and the QML item side by side, each in its window, and recorded input
// queued through the platform's path (QWindowSystemInterface) as a platform plugin queues it.
#pragma once

#include <scrivlet/signature_area.h>
#include <scrivlet/signature_pad.h>
#include <scrivlet/stroke_json.h>

#include "qt_input.h"

#include <QQuickView>
#include <QSignalSpy>
#include <qpa/qwindowsysteminterface.h>

#include <cmath>

namespace scrivlet::qt_test {

// Writes a QML document as <output>/qml/<name>-<process id>.qml and returns its path: ctest runs the
// Qt tests side by side, offscreen and on Xvfb.
inline QString writeQml(const QString& name, const char* text) {
  QDir(SCRIVLET_TEST_OUTPUT_DIR).mkpath("qml");
  const QString file =
      QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/" + name + "-" + QString::number(QCoreApplication::applicationPid()) + ".qml";
  QFile qml(file);
  EXPECT_TRUE(qml.open(QIODevice::WriteOnly) && qml.write(text) > 0);
  return file;
}

// One recorded sample: where, when, how hard and how tilted (a pen's).
struct Sample {
  enum Kind { finger, pen, mouse } kind;
  QPointF at;
  ulong ms;
  double pressure = 0;
  int xTilt = 0, yTilt = 0;
};
using Recording = std::vector<Sample>;  // one stroke: pressed on the first sample, lifted on the last

inline Recording wave(Sample::Kind kind, int n, double y, ulong ms) {
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
  QnStrokeListRef strokes() const {
    return strokesFromJson(pad->property("strokesJson").toString().toStdString()).value_or(nullptr);
  }
};

class Twins : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // Made once the application exists, and registered as a platform plugin registers its devices.
    screen_ = QTest::createTouchDevice();
    pen_ = makePen(601);
    QWindowSystemInterface::registerInputDevice(pen_);
  }
  void SetUp() override {
    widget_.resize(400, 200), widget_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget_));
    quick_.setSource(
        QUrl::fromLocalFile(writeQml("twin", "import QtQuick\nimport Scrivlet\nSignatureArea { width: 400; height: 200 }\n")));
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
    if (ready.isEmpty()) {
      EXPECT_TRUE(ready.wait(20000));
    }
    return ready.isEmpty() ? SignatureRecord() : ready.first().at(0).value<SignatureRecord>();
  }

  static inline QPointingDevice* screen_ = nullptr;
  static inline QPointingDevice* pen_ = nullptr;
  SignaturePad widget_;
  QQuickView quick_;
  SignatureArea* area_ = nullptr;
  std::vector<Twin> twins_;
};

}  // namespace scrivlet::qt_test
