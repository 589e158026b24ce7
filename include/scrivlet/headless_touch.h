// A touch made from plain values, for programs and tests without a screen.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/touch.h>

namespace scrivlet {

// Positions are in the coordinates of the view the touch lands on, whatever view is asked. A sample
// whose position is not finite is dropped here: the touch keeps its last finite one, and a touch made
// at a position that is not finite has no location until its first finite sample.
class SCRIVLET_EXPORT HeadlessTouch : public QnTouch {
 public:
  HeadlessTouch(QnPoint location, double timestamp, int type = kQnTouchTypeDirect);

  // Moves the touch: the old location becomes the previous one. A touch that offers precise
  // locations moves its precise location too, to the one given or else to the plain one.
  void moveTo(QnPoint location, double timestamp, std::optional<QnPoint> precise = {});
  // Whether the touch has had a finite sample, and whether it kept the latest one it was given.
  bool hasLocation() const { return hasLocation_; }
  bool keptLastSample() const { return keptLastSample_; }
  // Makes the touch offer precise locations (or stop offering them).
  void setPreciseLocation(std::optional<QnPoint> precise);
  void setForce(double force, double maximumPossibleForce);
  void setAzimuthAngle(std::optional<double> azimuth) { azimuth_ = azimuth; }
  void setAltitudeAngle(std::optional<double> altitude) { altitude_ = altitude; }
  void setTimestamp(double timestamp) { timestamp_ = timestamp; }
  void setType(int type) { type_ = type; }

  QnPoint locationInView(const QnView*) const override { return location_; }
  QnPoint previousLocationInView(const QnView*) const override { return previous_; }
  std::optional<QnPoint> preciseLocationInView(const QnView*) const override { return precise_; }
  std::optional<QnPoint> precisePreviousLocationInView(const QnView*) const override {
    return precisePrevious_;
  }
  double timestamp() const override { return timestamp_; }
  int type() const override { return type_; }
  std::optional<double> force() const override { return force_; }
  std::optional<double> maximumPossibleForce() const override { return maximumForce_; }
  std::optional<double> azimuthAngleInView(const QnView*) const override { return azimuth_; }
  std::optional<double> altitudeAngle() const override { return altitude_; }

 private:
  QnPoint location_;
  QnPoint previous_;
  std::optional<QnPoint> precise_;
  std::optional<QnPoint> precisePrevious_;
  double timestamp_;
  int type_;
  std::optional<double> force_;
  std::optional<double> maximumForce_;
  std::optional<double> azimuth_;
  std::optional<double> altitude_;
  bool hasLocation_;
  bool keptLastSample_;
};

}  // namespace scrivlet
