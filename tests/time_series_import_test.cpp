// The time series read back: a three-stroke signature written by the library and read again to the
// precision of its channels, strokes split at their pauses, and refused documents.
#include <scrivlet/time_series_import.h>

#include "export_fixture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace export_test;

QnSignaturePoint sample(double x, double y, double t, QnPoint v, QnPoint a, float pressure, float azimuth, float altitude) {
  QnSignaturePoint p;
  p.location = {x, y}, p.timestamp = t, p.velocity = v, p.acceleration = a;
  p.pressure = pressure, p.azimuthAngle = azimuth, p.altitudeAngle = altitude;
  return p;
}

class TimeSeriesImport : public ControllerTest {};

TEST_F(TimeSeriesImport, ASignatureReadsBackToThePrecisionOfItsChannels) {
  const QnPoint rest{0, 0};
  auto strokes = std::make_shared<QnStrokeList>();
  // A stroke that starts at rest and moves, a tap (two points at rest) after a pause, and one more.
  strokes->push_back(std::make_shared<QnStroke>(QnStroke{
      sample(40.26, 70.5, 10.000, rest, rest, 0.5f, 0.2f, 1.2f), sample(52.11, 64.0, 10.008, {0.31, -0.17}, {38.2, -21.1}, 0.6f, 0.3f, 1.1f),
      sample(61.5, 60.25, 10.016, {0.227, -0.09}, {-10.4, 9.5}, 0.7f, 0.35f, 1.0f),
      sample(70.0, 61.0, 10.024, {0.2, 0.02}, {-3.3, 13.8}, 0.65f, 0.4f, 0.9f), sample(70.0, 61.0, 10.031, {0.2, 0.02}, rest, 0.6f, 0.4f, 0.9f)}));
  strokes->push_back(std::make_shared<QnStroke>(QnStroke{sample(90.04, 44.4, 10.5, rest, rest, 0.3f, 0, 1.5707964f),
                                                         sample(90.04, 44.4, 10.57, rest, rest, 0.3f, 0, 1.5707964f)}));
  strokes->push_back(std::make_shared<QnStroke>(QnStroke{
      sample(20, 90, 11.2, rest, rest, 0, 0, 1.5707964f), sample(30, 92, 11.212, {0.15, 0.03}, {12.5, 2.5}, 0, 0, 1.5707964f),
      sample(45, 95, 11.224, {0.22, 0.04}, {5.8, 0.8}, 0, 0, 1.5707964f), sample(45, 95, 11.233, {0.22, 0.04}, rest, 0, 0, 1.5707964f)}));
  c->setMyBrushStrokes(strokes);
  QnStrokeListRef back = strokesFromTimeSeriesXml(c->createXmlString());
  ASSERT_TRUE(back);
  ASSERT_EQ(back->size(), 3u);
  const QnPoint corner{20, 44.4};  // the strokes' top-left corner
  double start = 10.0;
  uint64_t id = 100;
  for (size_t s = 0; s < 3; ++s) {
    ASSERT_EQ(back->at(s)->size(), strokes->at(s)->size()) << s;
    for (size_t i = 0; i < back->at(s)->size(); ++i) {
      const QnSignaturePoint &was = strokes->at(s)->at(i), &is = back->at(s)->at(i);
      SCOPED_TRACE(testing::Message() << "stroke " << s << ", point " << i);
      EXPECT_NEAR(is.location.x, was.location.x - corner.x, 0.05 + 1e-9);
      EXPECT_NEAR(is.location.y, was.location.y - corner.y, 0.1 + 1e-9);  // the bottom edge comes from the rounded top sample
      EXPECT_NEAR(is.timestamp, was.timestamp - start, 0.0015 * (i + 1 + s * 5));  // each step to the millisecond
      EXPECT_NEAR(is.velocity.x, was.velocity.x, 0.005 + 1e-9);
      EXPECT_NEAR(is.velocity.y, was.velocity.y, 0.005 + 1e-9);
      EXPECT_NEAR(is.acceleration.x, was.acceleration.x, 0.005 + 1e-9);
      EXPECT_NEAR(is.acceleration.y, was.acceleration.y, 0.005 + 1e-9);
      EXPECT_NEAR(is.pressure, was.pressure, 1 / 1961.33 + 1e-6);
      EXPECT_NEAR(is.altitudeAngle, was.altitudeAngle, 0.0088);
      const double turn = 2 / M_PI;  // the azimuth is kept modulo 2/pi radians
      EXPECT_NEAR(std::fmod(is.azimuthAngle + M_PI / 2, turn), std::fmod(was.azimuthAngle + M_PI / 2, turn), 0.0088);
      EXPECT_EQ(is.id, id++);
    }
  }
}

TEST_F(TimeSeriesImport, DocumentsThatAreNotTimeSeriesAreRefusedWithOneLine) {
  c->setMyBrushStrokes(strokesSpanning(10, 10, 40, 20));
  const std::string good = c->createXmlString();
  ASSERT_TRUE(strokesFromTimeSeriesXml(good));
  auto replaced = [&good](const std::string& what, const std::string& with) {
    std::string text = good;
    return text.replace(text.find(what), what.size(), with);
  };
  for (const std::string& bad :
       {std::string(""), std::string("not xml"), good.substr(0, good.size() / 2), std::string("<svg></svg>"),
        replaced("<sig:SamplePointList>", "<sig:OtherList>"), replaced("<cmn:X>", "<cmn:W>"),
        replaced("<sig:DTChannel>", "<sig:DTChannel>99999999999"), replaced("<cmn:Y>", "<cmn:Y>NaN"),
        replaced("<sig:FChannel>", "<sig:FChannel>x")}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(strokesFromTimeSeriesXml(bad), nullptr) << bad.substr(0, 80);
    std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(said.starts_with("Scrivlet: no strokes read from the time series: ") &&
                std::count(said.begin(), said.end(), '\n') == 1) << said;
  }
}

}  // namespace
}  // namespace scrivlet
