// Headless touches.
#include <scrivlet/headless_touch.h>

namespace scrivlet {

HeadlessTouch::HeadlessTouch(QnPoint location, double timestamp, int type)
    : location_(location), previous_(location), timestamp_(timestamp), type_(type) {}

void HeadlessTouch::moveTo(QnPoint location, double timestamp, std::optional<QnPoint> precise) {
  previous_ = location_;
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
