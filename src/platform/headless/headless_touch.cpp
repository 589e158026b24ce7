// Headless touches.
#include <scrivlet/headless_touch.h>

#include <cmath>

namespace scrivlet {

namespace {
bool isFinite(QnPoint p) { return std::isfinite(p.x) && std::isfinite(p.y); }
}  // namespace

HeadlessTouch::HeadlessTouch(QnPoint location, double timestamp, int type)
    : location_(location),
      previous_(location),
      timestamp_(timestamp),
      type_(type),
      hasLocation_(isFinite(location)),
      keptLastSample_(hasLocation_) {}

void HeadlessTouch::moveTo(QnPoint location, double timestamp, std::optional<QnPoint> precise) {
  keptLastSample_ = isFinite(location) && (!precise || isFinite(*precise));
  if (!keptLastSample_) return;
  // The first finite sample of a touch made without one is where it lands.
  previous_ = hasLocation_ ? location_ : location;
  hasLocation_ = true;
  location_ = location;
  timestamp_ = timestamp;
  if (precise_) {
    precisePrevious_ = precise_;
    precise_ = precise.value_or(location);
  }
}

void HeadlessTouch::setPreciseLocation(std::optional<QnPoint> precise) {
  precise_ = precise;
  precisePrevious_ = precise;
}

void HeadlessTouch::setForce(double force, double maximumPossibleForce) {
  force_ = force;
  maximumForce_ = maximumPossibleForce;
}

}  // namespace scrivlet
