// Signature points made from touches, their kinematics, copies and description. (Touches with samples
// that are not finite: hostile_input_test.cpp.)
#include <scrivlet/signature_point.h>

#include <scrivlet/headless_touch.h>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace scrivlet {
namespace {

QnSignaturePoint pointAt(double x, double y, double t) { return {{x, y}, {}, {}, t}; }

TEST(SignaturePoint, TouchGivesLocationPressureAndAngles) {
  HeadlessTouch finger({12.5, 30.25}, 17.5);
  QnSignaturePoint p = QnSignaturePoint::pointWithTouchInView(&finger, nullptr);
  EXPECT_EQ(std::tuple(p.location, p.timestamp, p.pressure, p.azimuthAngle, p.altitudeAngle),
            std::tuple(QnPoint{12.5, 30.25}, 17.5, 0.0f, 0.0f, 1.5707964f));
  finger.setForce(3.0, 0.0);  // a maximum of 0 means no force sensing
  EXPECT_EQ(QnSignaturePoint::pressureForTouch(&finger), 0.0f);

  HeadlessTouch pen({10, 10}, 1.0, kQnTouchTypeStylus);
  pen.setPreciseLocation(QnPoint{10.25, 9.75});
  pen.setForce(1.0, 3.0), pen.setAzimuthAngle(0.5), pen.setAltitudeAngle(0.25);
  p = QnSignaturePoint::pointWithTouchInView(&pen, nullptr);
  EXPECT_EQ(std::tuple(p.location, p.pressure, p.azimuthAngle, p.altitudeAngle),
            std::tuple(QnPoint{10.25, 9.75}, static_cast<float>(1.0 / 3.0), 0.5f, 0.25f));
  pen.setForce(6.0, 3.0);  // not clamped
  EXPECT_EQ(QnSignaturePoint::pressureForTouch(&pen), 2.0f);
}

TEST(SignaturePoint, VelocityAndAccelerationComeFromThePointBefore) {
  QnSignaturePoint a = pointAt(0, 0, 1.0);
  a.velocity = {0.02, -0.01};
  QnSignaturePoint b = pointAt(10, -20, 1.01);
  b.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(a, 0.0001f);
  const double m = 0.0001f, dt = 1.01 - 1.0;
  EXPECT_NEAR(b.velocity.x, 0.1, 1e-7);  // 10 points in 0.01 s at 0.1 mm a point
  EXPECT_EQ(b.velocity, (QnPoint{10 * m / dt, -20 * m / dt}));
  EXPECT_EQ(b.acceleration, (QnPoint{(b.velocity.x - 0.02) / dt, (b.velocity.y + 0.01) / dt}));

  for (double t : {1.0, 0.5, double(NAN)}) {
    SCOPED_TRACE(t);  // no time step, time going backwards, unknown time
    QnSignaturePoint c = pointAt(100, 100, t);
    c.velocity = c.acceleration = {1, 1};
    c.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(a, 0.0001f);
    EXPECT_EQ(c.velocity, (QnPoint{0, 0}));
    EXPECT_EQ(c.acceleration, (QnPoint{0, 0}));
  }
}

TEST(SignaturePoint, DescriptionListsEveryFieldInOrder) {
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
  EXPECT_EQ(p.copyWithZone().description(), p.description());
}

}  // namespace
}  // namespace scrivlet
