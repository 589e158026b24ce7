// Qt's touch, tablet and mouse events as touch phases on a view: shared by the capture widget and the
// Qt Quick item.
#pragma once

#include <scrivlet/qt_export.h>

#include <scrivlet/engine/view.h>

#include <QPointF>
#include <QtGlobal>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class QEventPoint;
class QMouseEvent;
class QTabletEvent;
class QTouchEvent;

namespace scrivlet {

class QtTouch;

// Exported for the Qt Quick item; not a public API.
class SCRIVLET_QT_EXPORT QtInputTranslator {
 public:
  explicit QtInputTranslator(std::shared_ptr<QnView> view) : view_(std::move(view)) {}

  // Where an event point lies in the view, or nothing for a point that is not the view's.
  using Placement = std::function<std::optional<QPointF>(const QEventPoint&)>;

  // The points whose state changed form each phase's set; all the view's points are its touches.
  // Without a placement every point is the view's, at its position.
  void touch(QTouchEvent* event, const Placement& place = {});
  // A pen: pressure as force out of 1, and azimuth and altitude from the tilt; each pen apart. At its
  // position, or where given.
  void tablet(QTabletEvent* event, std::optional<QPointF> at = std::nullopt);
  // Whether a pen is down: its moves and release are the view's wherever they are.
  bool penDown(const QTabletEvent* event) const;
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
