// Test support for the Qt backend: synthesized mouse, pen and finger input with explicit times, and
// saved screenshots.
#pragma once

#include <scrivlet/qt_capture_widget.h>

#include "delegate_log.h"

#include <QMouseEvent>
#include <QTabletEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace scrivlet::qt_test {

using namespace test_support;

// Step i of n: a press first, a release last, moves between.
inline QEvent::Type step(size_t i, size_t n, QEvent::Type press, QEvent::Type move, QEvent::Type release) {
  return i == 0 ? press : i + 1 == n ? release : move;
}

inline void sendMouse(QWidget* widget, QEvent::Type type, QPointF at, quint64 ms,
                      const QPointingDevice* device = QPointingDevice::primaryPointingDevice()) {
  QMouseEvent event(type, at, widget->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                    type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier, device);
  event.setTimestamp(ms);
  QCoreApplication::sendEvent(widget, &event);
}

// Press on the first point, move through the others, release on the last; 20 ms apart.
inline void mouseStroke(QWidget* widget, const Path& path, quint64 ms) {
  for (size_t i = 0; i < path.size(); ++i)
    sendMouse(widget, step(i, path.size(), QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease),
              {path[i].first, path[i].second}, ms + 20 * i);
}

// A pen with pressure and tilt; each systemId is another physical pen.
inline QPointingDevice* makePen(qint64 systemId) {
  using Cap = QInputDevice::Capability;
  return new QPointingDevice(QString("pen %1").arg(systemId), systemId, QInputDevice::DeviceType::Stylus,
                             QPointingDevice::PointerType::Pen, Cap::Position | Cap::Pressure | Cap::XTilt | Cap::YTilt,
                             1, 2, QString(), QPointingDeviceUniqueId(), qApp);
}

// With pressure 0 the pen moves without touching the surface.
struct PenSample { QPointF at; double pressure = 0.5; float xTilt = 0, yTilt = 0; };

inline void sendTablet(QWidget* widget, const QPointingDevice* pen, QEvent::Type type, const PenSample& s, quint64 ms) {
  bool touching = type == QEvent::TabletPress || (type == QEvent::TabletMove && s.pressure > 0);
  QTabletEvent event(type, pen, s.at, widget->mapToGlobal(s.at), s.pressure, s.xTilt, s.yTilt, 0, 0, 0, Qt::NoModifier,
                     type == QEvent::TabletMove ? Qt::NoButton : Qt::LeftButton, touching ? Qt::LeftButton : Qt::NoButton);
  event.setTimestamp(ms);
  QCoreApplication::sendEvent(widget, &event);
}

inline void penStroke(QWidget* widget, const QPointingDevice* pen, const std::vector<PenSample>& samples, quint64 ms) {
  for (size_t i = 0; i < samples.size(); ++i)
    sendTablet(widget, pen, step(i, samples.size(), QEvent::TabletPress, QEvent::TabletMove, QEvent::TabletRelease),
               samples[i], ms + 20 * i);
}

// Saves what the widget shows as <output>/qt/<name>.png and returns it.
inline QImage saveGrab(QWidget* widget, const QString& name) {
  QImage image = widget->grab().toImage();
  QDir(SCRIVLET_TEST_OUTPUT_DIR).mkpath("qt");
  image.save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qt/" + name + ".png");
  return image;
}

// Ink is black: a pixel counts as inked when it is nearly black.
inline bool inked(const QImage& image, int x, int y) { return qGray(image.pixel(x, y)) < 96; }

}  // namespace scrivlet::qt_test
