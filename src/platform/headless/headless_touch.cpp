// Headless touches.
#include <scrivlet/headless_touch.h>

#include <cmath>

namespace scrivlet {

namespace {
bool isFinite(QnPoint p) { return std::isfinite(p.x) && std::isfinite(p.y); }
}  // namespace

// What the touch holds: its latest sample and the one before.
struct HeadlessTouch::Sample {
  QnPoint location;
  QnPoint previous;
  std::optional<QnPoint> precise;
  std::optional<QnPoint> precisePrevious;
  double timestamp;
  int type;
  std::optional<double> force;
  std::optional<double> maximumForce;
  std::optional<double> azimuth;
  std::optional<double> altitude;
  bool hasLocation;
  bool keptLastSample;
};

HeadlessTouch::HeadlessTouch(QnPoint location, double timestamp, int type)
    : d_(new Sample{location, location, {}, {}, timestamp, type, {}, {}, {}, {}, isFinite(location), isFinite(location)}) {}

HeadlessTouch::~HeadlessTouch() = default;

void HeadlessTouch::moveTo(QnPoint location, double timestamp, std::optional<QnPoint> precise) {
  Sample& d = *d_;
  d.keptLastSample = isFinite(location) && (!precise || isFinite(*precise));
  if (!d.keptLastSample) return;
  // The first finite sample of a touch made without one is where it lands.
  d.previous = d.hasLocation ? d.location : location;
  d.hasLocation = true;
  d.location = location;
  d.timestamp = timestamp;
  if (d.precise) {
    d.precisePrevious = d.precise;
    d.precise = precise.value_or(location);
  }
}

void HeadlessTouch::setPreciseLocation(std::optional<QnPoint> precise) {
  d_->precise = precise;
  d_->precisePrevious = precise;
}

void HeadlessTouch::setForce(double force, double maximumPossibleForce) {
  d_->force = force;
  d_->maximumForce = maximumPossibleForce;
}

void HeadlessTouch::setAzimuthAngle(std::optional<double> azimuth) { d_->azimuth = azimuth; }
void HeadlessTouch::setAltitudeAngle(std::optional<double> altitude) { d_->altitude = altitude; }
void HeadlessTouch::setTimestamp(double timestamp) { d_->timestamp = timestamp; }
void HeadlessTouch::setType(int type) { d_->type = type; }

bool HeadlessTouch::hasLocation() const { return d_->hasLocation; }
bool HeadlessTouch::keptLastSample() const { return d_->keptLastSample; }
QnPoint HeadlessTouch::locationInView(const QnView*) const { return d_->location; }
QnPoint HeadlessTouch::previousLocationInView(const QnView*) const { return d_->previous; }
std::optional<QnPoint> HeadlessTouch::preciseLocationInView(const QnView*) const { return d_->precise; }
std::optional<QnPoint> HeadlessTouch::precisePreviousLocationInView(const QnView*) const { return d_->precisePrevious; }
double HeadlessTouch::timestamp() const { return d_->timestamp; }
int HeadlessTouch::type() const { return d_->type; }
std::optional<double> HeadlessTouch::force() const { return d_->force; }
std::optional<double> HeadlessTouch::maximumPossibleForce() const { return d_->maximumForce; }
std::optional<double> HeadlessTouch::azimuthAngleInView(const QnView*) const { return d_->azimuth; }
std::optional<double> HeadlessTouch::altitudeAngle() const { return d_->altitude; }

}  // namespace scrivlet
