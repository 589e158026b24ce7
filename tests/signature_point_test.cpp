// Signature points made from touches, their kinematics, copies and description.
#include <scrivlet/signature_point.h>

#include "platform/format.h"
#include "platform/headless/headless_touch.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace scrivlet {
namespace {

TEST(SignaturePoint, FingerWithoutForceSensingGetsTheDefaults) {
  HeadlessTouch finger({12.5, 30.25}, 17.5);
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&finger, nullptr);
  EXPECT_EQ(p.location, (QnPoint{12.5, 30.25}));
  EXPECT_EQ(p.timestamp, 17.5);
  EXPECT_EQ(p.pressure, 0.0f);
  EXPECT_EQ(p.azimuthAngle, 0.0f);
  EXPECT_EQ(p.altitudeAngle, 1.5707964f);
  EXPECT_EQ(p.velocity, (QnPoint{0, 0}));
  EXPECT_EQ(p.acceleration, (QnPoint{0, 0}));
  EXPECT_EQ(p.diameter, 0.0f);
  EXPECT_EQ(p.id, 0u);

  // A device that offers force but whose maximum is 0 has no force sensing.
  finger.setForce(3.0, 0.0);
  EXPECT_EQ(QnSignaturePoint::pressureForTouch(&finger), 0.0f);
}

TEST(SignaturePoint, StylusGivesPreciseLocationForceAndAngles) {
  HeadlessTouch pen({10, 10}, 1.0, kQnTouchTypeStylus);
  pen.setPreciseLocation(QnPoint{10.25, 9.75});
  pen.setForce(1.0, 3.0);
  pen.setAzimuthAngle(0.5);
  pen.setAltitudeAngle(0.25);
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&pen, nullptr);
  EXPECT_EQ(p.location, (QnPoint{10.25, 9.75}));
  // Divided in double precision, then narrowed: no scaling, offset or clamping.
  EXPECT_EQ(p.pressure, static_cast<float>(1.0 / 3.0));
  EXPECT_EQ(p.azimuthAngle, 0.5f);
  EXPECT_EQ(p.altitudeAngle, 0.25f);
  pen.setForce(6.0, 3.0);
  EXPECT_EQ(QnSignaturePoint::pressureForTouch(&pen), 2.0f);
}

TEST(SignaturePoint, MissingTouchGivesTheOrigin) {
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(nullptr, nullptr);
  EXPECT_EQ(p.location, (QnPoint{0, 0}));
  EXPECT_EQ(p.timestamp, 0.0);
  EXPECT_EQ(p.pressure, 0.0f);
  EXPECT_EQ(p.altitudeAngle, 1.5707964f);
}

QnSignaturePoint pointAt(double x, double y, double t) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.timestamp = t;
  return p;
}

TEST(SignaturePoint, VelocityAndAccelerationComeFromThePointBefore) {
  QnSignaturePoint a = pointAt(0, 0, 1.0);
  a.velocity = {0.02, -0.01};
  QnSignaturePoint b = pointAt(10, -20, 1.01);
  b.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(a, 0.0001f);
  double m = 0.0001f, dt = 1.01 - 1.0;
  EXPECT_NEAR(b.velocity.x, 0.1, 1e-7);  // 10 points in 0.01 s, 0.1 mm a point
  EXPECT_EQ(b.velocity.x, 10 * m / dt);
  EXPECT_EQ(b.velocity.y, -20 * m / dt);
  EXPECT_EQ(b.acceleration.x, (b.velocity.x - 0.02) / dt);
  EXPECT_EQ(b.acceleration.y, (b.velocity.y + 0.01) / dt);
  EXPECT_EQ(a.velocity, (QnPoint{0.02, -0.01})) << "the previous point is not changed";
}

TEST(SignaturePoint, NoTimeOrTimeGoingBackwardsGivesZeroKinematics) {
  QnSignaturePoint a = pointAt(0, 0, 2.0);
  a.velocity = {5, 5};
  for (double t : {2.0, 1.5, std::numeric_limits<double>::quiet_NaN()}) {
    SCOPED_TRACE(t);
    QnSignaturePoint b = pointAt(100, 100, t);
    b.velocity = {1, 1};
    b.acceleration = {1, 1};
    b.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(a, 0.0001f);
    EXPECT_EQ(b.velocity, (QnPoint{0, 0}));
    EXPECT_EQ(b.acceleration, (QnPoint{0, 0}));
  }
}

TEST(SignaturePoint, CopyKeepsEveryFieldAndIsIndependent) {
  QnSignaturePoint p = pointAt(1, 2, 3);
  p.velocity = {4, 5};
  p.acceleration = {6, 7};
  p.azimuthAngle = 0.1f;
  p.altitudeAngle = 0.2f;
  p.pressure = 0.3f;
  p.diameter = 3.5f;
  p.id = 123;
  QnSignaturePoint copy = p.copyWithZone();
  EXPECT_EQ(copy.description(), p.description());
  copy.location.x = 99;
  EXPECT_EQ(p.location.x, 1);
}

TEST(SignaturePoint, DescriptionListsEveryFieldInOrder) {
  QnSignaturePoint fresh;
  EXPECT_EQ(fresh.description(),
            "\nlocation: 0.000000,0.000000\nvelocity: 0.000000,0.000000\nacceleration: "
            "0.000000,0.000000\ntimestamp: 0.000000\nazimuthAngle: 0.000000\naltitudeAngle: "
            "0.000000\npressure: 0.000000\ndiameter: 0.000000\nid: 0");

  HeadlessTouch finger({100.5, 200.25}, 12.125);
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&finger, nullptr);
  p.velocity = {0.0625, -1.5};
  p.acceleration = {-3, 2.75};
  p.pressure = 0.5f;
  p.diameter = 3.1111114f;
  p.id = 100;
  EXPECT_EQ(p.description(),
            "\nlocation: 100.500000,200.250000\nvelocity: 0.062500,-1.500000\nacceleration: "
            "-3.000000,2.750000\ntimestamp: 12.125000\nazimuthAngle: 0.000000\naltitudeAngle: "
            "1.570796\npressure: 0.500000\ndiameter: 3.111111\nid: 100");
}

TEST(SignaturePoint, NonFiniteTouchValuesAreKeptWithoutFailing) {
  HeadlessTouch touch({NAN, INFINITY}, NAN);
  touch.setForce(NAN, 1.0);
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&touch, nullptr);
  EXPECT_TRUE(std::isnan(p.location.x));
  EXPECT_TRUE(std::isnan(p.pressure));
  QnSignaturePoint next = pointAt(1, 1, 1);
  next.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(p, 0.0001f);
  EXPECT_EQ(next.velocity, (QnPoint{0, 0})) << "an unknown time step gives no speed";
  EXPECT_FALSE(p.description().empty());
}

}  // namespace
}  // namespace scrivlet
