// A touch fed from Qt's touch, tablet and mouse events.
#pragma once

#include <scrivlet/engine/touch.h>

namespace scrivlet {

// Positions are in the capture widget's coordinates; the view asked for is the widget's view.
class QtTouch : public QnTouch {
 public:
  explicit QtTouch(int type) : type_(type) {}

  // Takes the next sample: the position it had becomes the previous one.
  void moveTo(QnPoint position, double timestamp);
  // Pressure from 0 to 1 as force against a maximum of 1; nothing for a device without pressure.
  void setPressure(std::optional<double> pressure) { pressure_ = pressure; }
  // A pen's angles from its tilt towards x and y, in degrees.
  void setTilt(double xTiltDegrees, double yTiltDegrees);
  void setOffersPreciseLocation(bool offers) { precise_ = offers; }

  QnPoint locationInView(const QnView*) const override { return location_; }
  QnPoint previousLocationInView(const QnView*) const override { return previous_; }
  std::optional<QnPoint> preciseLocationInView(const QnView*) const override;
  std::optional<QnPoint> precisePreviousLocationInView(const QnView*) const override;
  double timestamp() const override { return timestamp_; }
  int type() const override { return type_; }
  std::optional<double> force() const override { return pressure_; }
  std::optional<double> maximumPossibleForce() const override;
  std::optional<double> azimuthAngleInView(const QnView*) const override { return azimuth_; }
  std::optional<double> altitudeAngle() const override { return altitude_; }

 private:
  int type_;
  bool started_ = false;
  bool precise_ = false;
  QnPoint location_;
  QnPoint previous_;
  double timestamp_ = 0;
  std::optional<double> pressure_;
  std::optional<double> azimuth_;
  std::optional<double> altitude_;
};

}  // namespace scrivlet
