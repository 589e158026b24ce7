// The time-series XML document: its fixed frame and every sample channel as 16-bit integer text,
// clamped above and wrapped below as the worked cases show; and the screen densities it is scaled by.
#include "capture/dpi_calculator.h"
#include "export/xml_serializer.h"
#include "export_fixture.h"

namespace scrivlet::export_test {
namespace {

// 2026-11-22T10:20:30Z: 20779 days (1970 to 22 November 2026) * 86400 plus 10:20:30 = 37230 s.
constexpr double kExportTime = 1795342830.0;

std::string el(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

// Sample points from their channels: X, Y, velocity X and Y, acceleration X and Y, azimuth,
// elevation, DT and force.
using Samples = std::vector<std::array<int, 10>>;
std::string samplePoints(const Samples& samples) {
  std::string text;
  for (const std::array<int, 10>& s : samples) {
    auto n = [&s](int i) { return std::to_string(s[i]); };
    text += el("sig:SamplePoint",
               el("sig:PenTipCoord", el("cmn:X", n(0)) + el("cmn:Y", n(1)) + el("cmn:Z", "0")) +
                   el("sig:PenTipVelocity", el("sig:VelocityX", n(2)) + el("sig:VelocityY", n(3))) +
                   el("sig:PenTipAcceleration",
                      el("sig:AccelerationX", n(4)) + el("sig:AccelerationY", n(5))) +
                   el("sig:PenOrient", el("sig:PenAzimuth", n(6)) + el("sig:PenElevation", n(7))) +
                   el("sig:DTChannel", n(8)) + el("sig:FChannel", n(9)));
  }
  return text;
}

// The whole document for a 264 ppi screen at native scale 2, exported at kExportTime.
std::string expectedDocument(const Samples& samples) {
  const std::string sig = "http://standards.iso.org/iso-iec/19794/-7/ed-1/amd/1";
  const std::string cmn = "http://standards.iso.org/iso-iec/19794/-1/ed-2/amd/2";
  const std::string xsi = "http://www.w3.org/2001/XMLSchema-instance";
  auto scaling = [](const std::string& channel, const std::string& value) {
    return el("sig:" + channel + "ChannelDescription", el("sig:ScalingValue", value));
  };
  // Orientation: metersPerPoint = float(1/264f * 0.0254f) * 2 = 13223293 * 2^-36; its inverse
  // 5196.850492 is 5196.8505859375 in float, times 10 gives 51968.5078125 in float: 51969.
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><sig:SignatureSignTimeSeries xmlns:sig=\"" +
         sig + "\" xmlns:cmn=\"" + cmn + "\" xmlns:xsi=\"" + xsi + "\" "
         "cmn:SchemaVersion=\"1.0\" xsi:schemaLocation=\"" + sig + " 19794-7_ed2_amd1.xsd\">" +
         el("sig:Version", el("cmn:Major", "1") + el("cmn:Minor", "0")) +
         el("sig:RepresentationList",
            el("sig:Representation",
               el("sig:CaptureDateAndTime", "2026-11-22T10:20:30Z") +
                   el("sig:CaptureDevice", el("sig:DeviceID", el("cmn:Organization", "259") +
                                                                  el("cmn:Identifier", "1")) +
                                               el("sig:DeviceTechnology", "Unknown")) +
                   el("sig:InclusionField", "DDC6") +
                   el("sig:ChannelDescriptionList",
                      scaling("PenTipOrientation", "51969") + scaling("PenTipAcceleration", "100") +
                          scaling("PenTipVelocity", "100") + scaling("DT", "1000") +
                          scaling("F", "100")) +
                   el("sig:SamplePointList", samplePoints(samples)))) +
         el("sig:VendorSpecificData", el("cmn:TypeCode", "0") + el("cmn:Data", "")) +
         "</sig:SignatureSignTimeSeries>";
}

QnSignaturePoint point(double x, double y, double t, QnPoint v = {}, QnPoint a = {},
                       float azimuth = 0, float altitude = 0, float pressure = 0) {
  return {{x, y}, v, a, t, azimuth, altitude, pressure, 0, 0};
}

using test_support::strokeList;

class TimeSeriesExport : public ControllerTest {
 protected:
  void SetUp() override {
    setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad6,11", 1);  // 264 ppi
    QnDevice::setNativeScale(2.0);
    ControllerTest::SetUp();
    QnClock::setFixedTime(kExportTime);
  }
  void TearDown() override {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    ControllerTest::TearDown();
  }
};

TEST_F(TimeSeriesExport, ThreeStrokeSignatureGivesTheWholeDocument) {
  // Box (100, 50, 200, 150): X = (x - 100) * 10, Y = (200 - y) * 10.
  const float halfPi = 1.5707964f;
  c->setMyBrushStrokes(strokeList({
      {point(100, 50, 123456.0, {0, 0}, {0, 0}, 0.0f, halfPi, 0.5f),
       point(100.25, 200, 123456.001953125, {400, -1.5}, {-0.025, 0.015}, -3.0f, 0.5f, -0.25f)},
      {point(300, 125, 123526.001953125, {-400, 0.25}, {-327.68, 500}, 1.0f, 0.0f, 1.0f)},
      {point(180, 130, 123526.251953125, {-0.015, 0.015}, {1000, -1000}, 0.3f, 1.25f, 40.0f)},
  }));
  // Azimuth: fmod(a + pi/2, 0.63661975) * 57.29577951308232. Force: p * 19.6133f * 100 in float.
  // The document is stored, so that every later build writes the same.
  const std::string document = c->createXmlString(),
                    golden = test_support::readText(SCRIVLET_TEST_DATA_DIR "/time_series_three_strokes.xml");
  EXPECT_EQ(document, golden);
  EXPECT_EQ(golden, expectedDocument({
      // Top-left corner, first DT 0. Azimuth 0: fmod(1.5707963, 0.6366197) = 0.2975568 -> 17.0488
      // -> 17. Elevation pi/2 -> 90.0000025 -> 90. Force 0.5 * 19.6133 * 100 = 980.665 -> 981.
      {0, 1500, 0, 0, 0, 0, 17, 90, 0, 981},
      // X 2.5 -> 3 and acceleration -2.5 -> -3: halves away from zero. Velocity 40000 clamps;
      // -(-1.5 * 100) = 150; -(1.5) -> -2. Azimuth -3 + pi/2 plus two moduli = -0.1559642 ->
      // -8.936 -> -9. Elevation 0.5 -> 28.648 -> 29. DT 1/512 s -> 2. Force -490.33 -> -490 wraps.
      {3, 0, 32767, 150, -3, -2, -9, 29, 2, 65046},
      // The next stroke carries the 70 s pause: 70000 clamps. Velocity -40000 wraps to 25536.
      // Acceleration -32768 stays; -(50000) wraps. Azimuth 1 + pi/2 minus four moduli = 0.0243173
      // -> 1.393 -> 1. Elevation 0. Force 1961.33 -> 1961.
      {2000, 750, 25536, -25, -32768, 15536, 1, 0, 65535, 1961},
      // After 0.25 s. Velocity -1.5 -> -2 twice; acceleration 100000 and -(-100000) clamp.
      // Azimuth 0.3 + pi/2 minus two moduli = 0.5975568 -> 34.237 -> 34. Elevation 1.25 -> 71.62
      // -> 72. Force 40 * 19.6133 * 100 = 78453 clamps.
      {800, 700, -2, -2, 32767, 32767, 34, 72, 250, 65535},
  }));
  expectPasses("xmllint --noout", document, "document.xml");
  // The capture time is the time of export in UTC: 978307200 plus one day and 3:04:05.
  QnClock::setFixedTime(978307200.0 + 86400 + 3 * 3600 + 4 * 60 + 5);
  EXPECT_EQ(c->xmlDateString(), "2001-01-02T03:04:05Z");
}

TEST_F(TimeSeriesExport, ClippingDropsPointsOutsideTheViewAndBoxesTheRest) {
  c->setClipSignatureToBounds(true);  // to the view's 300 x 200
  c->setMyBrushStrokes(strokeList({
      {point(10, 20, 5), point(300, 30, 6) /* right edge: out */, point(50, 60, 7)},
      {point(40, 200, 8) /* bottom edge: out */, point(0, 100, 9) /* left edge: in */},
  }));
  // Box (0, 20, 50, 80), so Y = (100 - y) * 10; DT runs from one exported point to the next.
  const std::string document = c->createXmlString();
  EXPECT_EQ(document, expectedDocument({{100, 800, 0, 0, 0, 0, 17, 0, 0, 0},
                                        {500, 400, 0, 0, 0, 0, 17, 0, 2000, 0},
                                        {0, 0, 0, 0, 0, 0, 17, 0, 2000, 0}}));
  expectPasses("xmllint --noout", document, "document.xml");
  SCOPED_TRACE("clipping empties the first stroke: the first point left starts the clock");
  c->setMyBrushStrokes(strokeList({{point(400, 10, 1)}, {point(20, 30, 2), point(40, 50, 3)}}));
  EXPECT_EQ(c->createXmlString(), expectedDocument({{0, 200, 0, 0, 0, 0, 17, 0, 0, 0},
                                                    {200, 0, 0, 0, 0, 0, 17, 0, 1000, 0}}));
}

TEST_F(TimeSeriesExport, NoPointsGiveAnEmptySampleList) {
  const std::pair<QnStrokeListRef, bool> cases[] = {
      {strokeList({}), false}, {strokeList({{}, {}}), true}, {strokeList({{point(350, 50, 1)}}), true}};
  for (const auto& [strokes, clip] : cases) {
    SCOPED_TRACE(testing::Message() << strokes->size() << " strokes, clipped " << clip);
    c->setMyBrushStrokes(strokes);
    c->setClipSignatureToBounds(clip);
    EXPECT_EQ(c->createXmlString(), expectedDocument({}));
  }
  expectPasses("xmllint --noout", expectedDocument({}), "empty.xml");
}

TEST_F(TimeSeriesExport, ElevationUsesTheAzimuthPrescaler) {
  // Prescalers: location 1, time 1000, velocity 1, acceleration 1, pressure 1, azimuth 2,
  // elevation 5 (unused). One point: a box of zero size at it.
  QnXMLSerializer xml;
  QnScrivletController::
      writeSamplePointListStrokesLocationPrescalerTimePrescalerVelocityPrescalerAccelerationPrescalerPressurePrescalerAzimuthPrescalerElevationPrescaler(
          xml, strokeList({{point(3, 4, 9, {1.5, -2.5}, {-0.5, 0.5}, 0.0f, 1.0f, 1.0f)}}), 1.0f,
          1000.0f, 1.0f, 1.0f, 1.0f, 2.0f, 5.0f);
  // Azimuth 17.0488 * 2 -> 34; elevation 57.2958 * 2 = 114.59 -> 115. Force 19.6133 -> 20.
  EXPECT_EQ(xml.toString(), samplePoints({{0, 0, 2, 3, -1, -1, 34, 115, 0, 20}}));
}

// The model comes from the environment first; keys match exactly and the prefix fallback never
// matches, so unknown tablets and phones are not 264 or 458 but 401.
TEST(DPICalculator, KnownModelsGetTheirDensityAndEveryOtherModel401) {
  for (const auto& [model, dpi] : {std::pair("iPad6,11", 264), {"iPhone10,3", 458}, {"iPad99,1", 401},
                                   {"iPhone99,1", 401}, {"ipad6,11", 401}, {"", 401}}) {
    setenv("SIMULATOR_MODEL_IDENTIFIER", model, 1);
    if (*model) { EXPECT_EQ(QnDPICalculator::deviceModel(), model); }
    EXPECT_EQ(QnDPICalculator::deviceDpi(), dpi) << model;
  }
  unsetenv("SIMULATOR_MODEL_IDENTIFIER");
}

}  // namespace
}  // namespace scrivlet::export_test
