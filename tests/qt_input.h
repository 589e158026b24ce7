// Test support for the Qt backend: synthesized mouse, pen and finger input with explicit times, a
// delegate that logs its calls, stroke traces and saved screenshots.
#pragma once

#include <scrivlet/delegate.h>
#include <scrivlet/signature.h>

#include <QCoreApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QTest>
#include <QWidget>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace scrivlet::qt_test {

inline void sendMouse(QWidget* widget, QEvent::Type type, QPointF position, quint64 ms,
                      const QPointingDevice* device = QPointingDevice::primaryPointingDevice()) {
  Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
  Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
  QMouseEvent event(type, position, widget->mapToGlobal(position), button, held, Qt::NoModifier, device);
  event.setTimestamp(ms);
  QCoreApplication::sendEvent(widget, &event);
}

// Press on the first position, move through the others, release on the last; 20 ms apart.
inline void mouseStroke(QWidget* widget, const std::vector<QPointF>& points, quint64 startMs) {
  for (size_t i = 0; i < points.size(); ++i) {
    QEvent::Type type = i == 0                   ? QEvent::MouseButtonPress
                        : i + 1 == points.size() ? QEvent::MouseButtonRelease
                                                 : QEvent::MouseMove;
    sendMouse(widget, type, points[i], startMs + 20 * i);
  }
}

// A pen with pressure and tilt; each systemId is another physical pen.
inline QPointingDevice* makePen(qint64 systemId) {
  using Cap = QInputDevice::Capability;
  return new QPointingDevice(QString("pen %1").arg(systemId), systemId, QInputDevice::DeviceType::Stylus,
                             QPointingDevice::PointerType::Pen,
                             Cap::Position | Cap::Pressure | Cap::XTilt | Cap::YTilt, 1, 2, QString(),
                             QPointingDeviceUniqueId(), qApp);
}

struct PenSample {
  QPointF position;
  double pressure = 0.5;
  float xTilt = 0, yTilt = 0;
};

// A pen with pressure 0 moves without touching the surface.
inline void sendTablet(QWidget* widget, const QPointingDevice* pen, QEvent::Type type, const PenSample& s,
                       quint64 ms) {
  bool touching = type == QEvent::TabletPress || (type == QEvent::TabletMove && s.pressure > 0);
  Qt::MouseButton button = type == QEvent::TabletMove ? Qt::NoButton : Qt::LeftButton;
  QTabletEvent event(type, pen, s.position, widget->mapToGlobal(s.position), s.pressure, s.xTilt, s.yTilt,
                     0, 0, 0, Qt::NoModifier, button, touching ? Qt::LeftButton : Qt::NoButton);
  event.setTimestamp(ms);
  QCoreApplication::sendEvent(widget, &event);
}

inline void penStroke(QWidget* widget, const QPointingDevice* pen, const std::vector<PenSample>& samples,
                      quint64 startMs) {
  for (size_t i = 0; i < samples.size(); ++i) {
    QEvent::Type type = i == 0                    ? QEvent::TabletPress
                        : i + 1 == samples.size() ? QEvent::TabletRelease
                                                  : QEvent::TabletMove;
    sendTablet(widget, pen, type, samples[i], startMs + 20 * i);
  }
}

// One finger: pressed on the first position, moved through the others, lifted on the last.
inline void fingerStroke(QWidget* widget, QPointingDevice* screen, const std::vector<QPoint>& points) {
  auto touch = QTest::touchEvent(widget, screen, false);
  for (size_t i = 0; i < points.size(); ++i) {
    if (i == 0) touch.press(0, points[i]);
    else if (i + 1 == points.size()) touch.release(0, points[i]);
    else touch.move(0, points[i]);
    touch.commit();
  }
}

using Trace = std::vector<std::vector<QPointF>>;

inline Trace traceOf(const QnStrokeListRef& strokes) {
  Trace trace;
  if (!strokes) return trace;
  for (const QnStrokeRef& stroke : *strokes) {
    trace.emplace_back();
    if (stroke)
      for (const QnSignaturePoint& p : *stroke) trace.back().emplace_back(p.location.x, p.location.y);
  }
  return trace;
}

inline Trace traceOf(const std::vector<QPointF>& points) { return {points}; }

// Every delegate call as one line, in order, with notes of the test's own events in between.
struct CallLog {
  CallLog() : delegate(std::make_shared<QnScrivletControllerDelegate>()) {
    delegate->scrivletDidEndLineWithSignaturePointCount = [this](auto, unsigned long n) {
      calls.push_back("didEndLine " + std::to_string(n));
    };
    delegate->scrivletWillCompleteWithSignature = [this](auto, auto record) {
      calls.push_back("willComplete");
      records.push_back(record);
    };
    delegate->scrivletDidCompleteWithSignature = [this](auto, auto record) {
      calls.push_back("didComplete");
      records.push_back(record);
    };
    delegate->scrivletDidCompleteWithNoSignature = [this](auto) { calls.push_back("noSignature"); };
    delegate->scrivletDidCancelModalView = [this](auto) { calls.push_back("cancel"); };
  }
  bool has(const std::string& call) const { return indexOf(call) >= 0; }
  // Where a call or note stands in the log; -1 when it never came.
  int indexOf(const std::string& call) const {
    for (size_t i = 0; i < calls.size(); ++i)
      if (calls[i] == call) return static_cast<int>(i);
    return -1;
  }

  std::shared_ptr<QnScrivletControllerDelegate> delegate;
  std::vector<std::string> calls;
  std::vector<std::shared_ptr<QnSignature>> records;
};

// Saves what the widget shows as <output>/qt/<name>.png and returns it.
inline QImage saveGrab(QWidget* widget, const QString& name) {
  QImage image = widget->grab().toImage();
  QDir dir(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qt");
  dir.mkpath(".");
  image.save(dir.filePath(name + ".png"));
  return image;
}

// Ink is black: a pixel counts as inked when it is nearly black.
inline bool inked(const QImage& image, int x, int y) { return qGray(image.pixel(x, y)) < 96; }

}  // namespace scrivlet::qt_test
