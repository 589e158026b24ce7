// A touch as the platform reports it: positions, time, type, and the optional force and stylus angles.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/geometry.h>

#include <memory>
#include <optional>
#include <vector>

namespace scrivlet {

class QnView;
class QnGestureRecognizer;

enum QnTouchType { kQnTouchTypeDirect = 0, kQnTouchTypeIndirect = 1, kQnTouchTypeStylus = 2 };

// The optional members answer nothing when the platform does not offer them.
class SCRIVLET_EXPORT QnTouch {
 public:
  virtual ~QnTouch() = default;

  virtual QnPoint locationInView(const QnView* view) const = 0;
  virtual QnPoint previousLocationInView(const QnView* view) const = 0;
  virtual std::optional<QnPoint> preciseLocationInView(const QnView*) const { return {}; }
  virtual std::optional<QnPoint> precisePreviousLocationInView(const QnView*) const { return {}; }
  // Seconds on a monotonic clock.
  virtual double timestamp() const = 0;
  virtual int type() const { return kQnTouchTypeDirect; }
  virtual std::optional<double> force() const { return {}; }
  virtual std::optional<double> maximumPossibleForce() const { return {}; }
  virtual std::optional<double> azimuthAngleInView(const QnView*) const { return {}; }
  virtual std::optional<double> altitudeAngle() const { return {}; }
};

// The touches of one phase, in the platform's enumeration order.
using QnTouchSet = std::vector<std::shared_ptr<QnTouch>>;

// The event a phase belongs to: every touch currently on the view.
class SCRIVLET_EXPORT QnEvent {
 public:
  QnEvent() = default;
  explicit QnEvent(QnTouchSet allTouches) : allTouches_(std::move(allTouches)) {}
  const QnTouchSet& allTouches() const { return allTouches_; }
  // The touches delivered to a recognizer of the view: all of them.
  const QnTouchSet& touchesForGestureRecognizer(const QnGestureRecognizer*) const {
    return allTouches_;
  }

 private:
  QnTouchSet allTouches_;
};

}  // namespace scrivlet
