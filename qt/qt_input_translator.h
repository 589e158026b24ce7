// Qt's touch, tablet and mouse events as touch phases on a view: shared by the capture widget and the
// Qt Quick item.
#pragma once

#include <scrivlet/qt_export.h>

#include <scrivlet/view.h>

#include <QtGlobal>

#include <map>
#include <memory>

class QMouseEvent;
class QTabletEvent;
class QTouchEvent;

namespace scrivlet {

class QtTouch;

// Exported for the Qt Quick item; not a public API.
class SCRIVLET_QT_EXPORT QtInputTranslator {
 public:
  explicit QtInputTranslator(std::shared_ptr<QnView> view) : view_(std::move(view)) {}

  // The points whose state changed form each phase's set; all points are the event's touches.
  void touch(QTouchEvent* event);
  // A pen: pressure as force out of 1, and azimuth and altitude from the tilt; each pen apart.
  void tablet(QTabletEvent* event);
  // The left button as a finger without force; mouse events Qt makes up from touch or pen are left out.
  void mousePress(QMouseEvent* event);
  void mouseMove(QMouseEvent* event);
  void mouseRelease(QMouseEvent* event);
  // Ends every touch still down where it last was, keeping what it drew.
  void endAll();

 private:
  // Delivers one phase; the event holds every touch down.
  void deliver(QnTouchPhase phase, const QnTouchSet& touches);
  std::shared_ptr<QtTouch> touchFor(qint64 key, int type);

  std::shared_ptr<QnView> view_;
  // Touches down, by key: touch point ids, the mouse, and each pen by its device.
  std::map<qint64, std::shared_ptr<QtTouch>> down_;
};

}  // namespace scrivlet
