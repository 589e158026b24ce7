// A touch made from plain values, for programs and tests without a screen.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/touch.h>

#include <memory>

namespace scrivlet {

// Positions are in the coordinates of the view the touch lands on, whatever view is asked. A sample
// whose position is not finite is dropped here: the touch keeps its last finite one, and a touch made
// at a position that is not finite has no location until its first finite sample.
class SCRIVLET_EXPORT HeadlessTouch : public QnTouch {
 public:
  HeadlessTouch(QnPoint location, double timestamp, int type = kQnTouchTypeDirect);
  ~HeadlessTouch() override;

  // Moves the touch: the old location becomes the previous one. A touch that offers precise
  // locations moves its precise location too, to the one given or else to the plain one.
  void moveTo(QnPoint location, double timestamp, std::optional<QnPoint> precise = {});
  // Whether the touch has had a finite sample, and whether it kept the latest one it was given.
  bool hasLocation() const;
  bool keptLastSample() const;
  // Makes the touch offer precise locations (or stop offering them).
  void setPreciseLocation(std::optional<QnPoint> precise);
  void setForce(double force, double maximumPossibleForce);
  void setAzimuthAngle(std::optional<double> azimuth);
  void setAltitudeAngle(std::optional<double> altitude);
  void setTimestamp(double timestamp);
  void setType(int type);

  QnPoint locationInView(const QnView*) const override;
  QnPoint previousLocationInView(const QnView*) const override;
  std::optional<QnPoint> preciseLocationInView(const QnView*) const override;
  std::optional<QnPoint> precisePreviousLocationInView(const QnView*) const override;
  double timestamp() const override;
  int type() const override;
  std::optional<double> force() const override;
  std::optional<double> maximumPossibleForce() const override;
  std::optional<double> azimuthAngleInView(const QnView*) const override;
  std::optional<double> altitudeAngle() const override;

 private:
  struct Sample;
  std::unique_ptr<Sample> d_;
};

}  // namespace scrivlet
