// Qt touches.
#include "qt_touch.h"

#include <cmath>

namespace scrivlet {

void QtTouch::moveTo(QnPoint position, double timestamp) {
  previous_ = started_ ? location_ : position;
  location_ = position;
  timestamp_ = timestamp;
  started_ = true;
}

void QtTouch::setTilt(double xTiltDegrees, double yTiltDegrees) {
  // The pen leans towards (tan x, tan y); its altitude is the angle between it and the surface.
  double tx = std::tan(xTiltDegrees * M_PI / 180.0), ty = std::tan(yTiltDegrees * M_PI / 180.0);
  azimuth_ = std::atan2(ty, tx);
  altitude_ = M_PI / 2 - std::atan(std::hypot(tx, ty));
}

std::optional<QnPoint> QtTouch::preciseLocationInView(const QnView*) const {
  if (!precise_) return {};
  return location_;
}

std::optional<QnPoint> QtTouch::precisePreviousLocationInView(const QnView*) const {
  if (!precise_) return {};
  return previous_;
}

std::optional<double> QtTouch::maximumPossibleForce() const {
  if (!pressure_) return {};
  return 1.0;
}

}  // namespace scrivlet
