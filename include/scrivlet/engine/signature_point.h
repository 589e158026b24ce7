// One captured sample of the pen or finger: where, when, how fast, how hard, and how wide the ink is.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/geometry.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace scrivlet {

class QnTouch;
class QnView;

struct SCRIVLET_EXPORT QnSignaturePoint {
  QnPoint location;      // in the capture view, points
  QnPoint velocity;      // metres per second, per axis
  QnPoint acceleration;  // metres per second squared, per axis
  double timestamp = 0;  // seconds, the touch's monotonic clock
  float azimuthAngle = 0;   // radians; 0 where unknown
  float altitudeAngle = 0;  // radians; the factory gives pi/2 where unknown
  float pressure = 0;       // force over maximum force; 0 without force sensing
  float diameter = 0;       // ink diameter in points, set by the stroke model
  uint64_t id = 0;          // sequence number, set by the stroke model

  // A point from a touch in a view, with zero kinematics, diameter and id. A missing touch gives a
  // point at (0, 0) with the defaults of a device without a stylus.
  static QnSignaturePoint pointWithTouchInView(const QnTouch* touch, const QnView* view);
  // The precise location where the touch offers one, else the plain one; (0, 0) without a touch.
  static QnPoint locationOfTouchInView(const QnTouch* touch, const QnView* view);
  static float azimuthAngleForTouchInView(const QnTouch* touch, const QnView* view);
  static float altitudeAngleForTouch(const QnTouch* touch);
  static float pressureForTouch(const QnTouch* touch);

  // Velocity and acceleration from the point before, with one screen point being metersPerPoint metres.
  void updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(const QnSignaturePoint& previous,
                                                                    float metersPerPoint);

  QnSignaturePoint copyWithZone() const { return *this; }
  std::string description() const;
};

// An ordered list of points in capture order, shared: the stroke being drawn is the same object as the
// last stroke of the list.
using QnStroke = std::vector<QnSignaturePoint>;
using QnStrokeRef = std::shared_ptr<QnStroke>;
// An ordered list of strokes, oldest first, shared by reference.
using QnStrokeList = std::vector<QnStrokeRef>;
using QnStrokeListRef = std::shared_ptr<QnStrokeList>;

// A deep copy of the strokes, every point moved by the offset; a missing list gives an empty one.
SCRIVLET_EXPORT QnStrokeListRef copyOfStrokesMovedBy(const QnStrokeListRef& strokes, QnPoint offset);
// Whether moving the strokes by the offset would carry a finite point beyond the largest number,
// where it would be lost.
SCRIVLET_EXPORT bool movingStrokesLosesPoints(const QnStrokeListRef& strokes, QnPoint offset);

}  // namespace scrivlet
