// Signature points from touches, and their kinematics.
#include <scrivlet/engine/signature_point.h>

#include <scrivlet/engine/touch.h>

#include "platform/format.h"
#include "platform/narrowing.h"

#include <cmath>

namespace scrivlet {

namespace {
constexpr float kUprightAltitude = 1.5707963267948966f;  // pi/2, a pen held upright
}

QnSignaturePoint QnSignaturePoint::pointWithTouchInView(const QnTouch* touch, const QnView* view) {
  QnSignaturePoint point;
  point.location = locationOfTouchInView(touch, view);
  point.velocity = {0, 0};
  point.acceleration = {0, 0};
  point.timestamp = touch ? touch->timestamp() : 0.0;
  point.azimuthAngle = azimuthAngleForTouchInView(touch, view);
  point.altitudeAngle = altitudeAngleForTouch(touch);
  point.pressure = pressureForTouch(touch);
  point.diameter = 0;
  point.id = 0;
  return point;
}

QnPoint QnSignaturePoint::locationOfTouchInView(const QnTouch* touch, const QnView* view) {
  if (!touch) return {0, 0};
  if (auto precise = touch->preciseLocationInView(view)) return *precise;
  return touch->locationInView(view);
}

float QnSignaturePoint::azimuthAngleForTouchInView(const QnTouch* touch, const QnView* view) {
  if (!touch) return 0;
  return narrowToFloat(touch->azimuthAngleInView(view).value_or(0.0));
}

float QnSignaturePoint::altitudeAngleForTouch(const QnTouch* touch) {
  if (!touch) return kUprightAltitude;
  if (auto altitude = touch->altitudeAngle()) return narrowToFloat(*altitude);
  return kUprightAltitude;
}

float QnSignaturePoint::pressureForTouch(const QnTouch* touch) {
  if (!touch) return 0;
  std::optional<double> maximum = touch->maximumPossibleForce();
  if (!maximum || *maximum == 0) return 0;
  return narrowToFloat(touch->force().value_or(0.0) / *maximum);
}

void QnSignaturePoint::updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(
    const QnSignaturePoint& previous, float metersPerPoint) {
  double dt = timestamp - previous.timestamp;
  if (dt > 0) {
    double m = metersPerPoint;
    velocity.x = (location.x - previous.location.x) * m / dt;
    velocity.y = (location.y - previous.location.y) * m / dt;
    acceleration.x = (velocity.x - previous.velocity.x) / dt;
    acceleration.y = (velocity.y - previous.velocity.y) / dt;
  } else {
    velocity = {0, 0};
    acceleration = {0, 0};
  }
}

std::string QnSignaturePoint::description() const {
  return cformat(
      "\nlocation: %f,%f\nvelocity: %f,%f\nacceleration: %f,%f\ntimestamp: %f\nazimuthAngle: "
      "%f\naltitudeAngle: %f\npressure: %f\ndiameter: %f\nid: %lu",
      location.x, location.y, velocity.x, velocity.y, acceleration.x, acceleration.y, timestamp,
      azimuthAngle, altitudeAngle, pressure, diameter, static_cast<unsigned long>(id));
}

bool movingStrokesLosesPoints(const QnStrokeListRef& strokes, QnPoint offset) {
  // No move loses nothing: the layout at every stroke's end then costs nothing per point.
  if ((offset.x == 0 && offset.y == 0) || !strokes) return false;
  auto lost = [](double at, double by) { return std::isfinite(at) && !std::isfinite(at + by); };
  for (const QnStrokeRef& stroke : *strokes)
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      if (lost(p.location.x, offset.x) || lost(p.location.y, offset.y)) return true;
  return false;
}

QnStrokeListRef copyOfStrokesMovedBy(const QnStrokeListRef& strokes, QnPoint offset) {
  auto copy = std::make_shared<QnStrokeList>();
  if (!strokes) return copy;
  copy->reserve(strokes->size());
  for (const QnStrokeRef& stroke : *strokes) {
    auto moved = std::make_shared<QnStroke>();
    if (stroke) {
      moved->reserve(stroke->size());
      for (const QnSignaturePoint& point : *stroke) {
        QnSignaturePoint p = point.copyWithZone();
        p.location = {p.location.x + offset.x, p.location.y + offset.y};
        moved->push_back(p);
      }
    }
    copy->push_back(std::move(moved));
  }
  return copy;
}

}  // namespace scrivlet
