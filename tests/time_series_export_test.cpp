// The time-series XML document: its fixed frame, every sample channel as 16-bit integer text, and
// the writer it is built with.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/device.h>

#include "export/xml_serializer.h"
#include "platform/clock.h"
#include "platform/headless/headless_view.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace scrivlet {
namespace {

// 2026-11-22T10:20:30Z: 56 years 1970-2025 with 14 leap days = 20454 days, 1 January to 22 November
// 2026 = 304 + 21 = 325 days; 20779 days * 86400 = 1795305600, plus 10:20:30 = 37230 seconds.
constexpr double kExportTime = 1795342830.0;

std::string el(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

// The written texts of one sample, in document order.
struct Sample {
  std::string x, y, vx, vy, ax, ay, azimuth, elevation, dt, force;
};

std::string samplePoint(const Sample& s) {
  return el("sig:SamplePoint",
            el("sig:PenTipCoord", el("cmn:X", s.x) + el("cmn:Y", s.y) + el("cmn:Z", "0")) +
                el("sig:PenTipVelocity", el("sig:VelocityX", s.vx) + el("sig:VelocityY", s.vy)) +
                el("sig:PenTipAcceleration",
                   el("sig:AccelerationX", s.ax) + el("sig:AccelerationY", s.ay)) +
                el("sig:PenOrient",
                   el("sig:PenAzimuth", s.azimuth) + el("sig:PenElevation", s.elevation)) +
                el("sig:DTChannel", s.dt) + el("sig:FChannel", s.force));
}

std::string samplePoints(const std::vector<Sample>& samples) {
  std::string text;
  for (const Sample& s : samples) text += samplePoint(s);
  return text;
}

std::string scaling(const std::string& description, const std::string& value) {
  return el(description, el("sig:ScalingValue", value));
}

// The whole document for a 264 ppi screen at native scale 2, exported at kExportTime.
std::string expectedDocument(const std::string& samples) {
  const std::string sigNamespace = "http://standards.iso.org/iso-iec/19794/-7/ed-1/amd/1";
  const std::string cmnNamespace = "http://standards.iso.org/iso-iec/19794/-1/ed-2/amd/2";
  // metersPerPixel = (1/264f) * 0.0254f: 1/264f = 16268816 * 2^-32, 0.0254f = 13636521 * 2^-29;
  // their product 13865628189321 * 2^-57 rounds to 13223293 * 2^-37 (the 20 dropped bits are
  // 508553 / 1048576 < 1/2). Times native scale 2: metersPerPoint = 13223293 * 2^-36.
  // 1 / metersPerPoint = 2^36 / 13223293 = 5196.850492..., to float (step 2^-11): 5196.8505859375.
  // Times 10 = 51968.505859375, to float (step 2^-8, a tie to even): 51968.5078125; rounded: 51969.
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
         "<sig:SignatureSignTimeSeries xmlns:sig=\"" + sigNamespace + "\" xmlns:cmn=\"" +
         cmnNamespace +
         "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" cmn:SchemaVersion=\"1.0\" "
         "xsi:schemaLocation=\"" + sigNamespace + " 19794-7_ed2_amd1.xsd\">" +
         el("sig:Version", el("cmn:Major", "1") + el("cmn:Minor", "0")) +
         el("sig:RepresentationList",
            el("sig:Representation",
               el("sig:CaptureDateAndTime", "2026-11-22T10:20:30Z") +
                   el("sig:CaptureDevice",
                      el("sig:DeviceID",
                         el("cmn:Organization", "259") + el("cmn:Identifier", "1")) +
                          el("sig:DeviceTechnology", "Unknown")) +
                   el("sig:InclusionField", "DDC6") +
                   el("sig:ChannelDescriptionList",
                      scaling("sig:PenTipOrientationChannelDescription", "51969") +
                          scaling("sig:PenTipAccelerationChannelDescription", "100") +
                          scaling("sig:PenTipVelocityChannelDescription", "100") +
                          scaling("sig:DTChannelDescription", "1000") +
                          scaling("sig:FChannelDescription", "100")) +
                   el("sig:SamplePointList", samples))) +
         el("sig:VendorSpecificData", el("cmn:TypeCode", "0") + el("cmn:Data", "")) +
         "</sig:SignatureSignTimeSeries>";
}

std::string samplePointListOf(const std::string& document) {
  const std::string open = "<sig:SamplePointList>", close = "</sig:SamplePointList>";
  size_t begin = document.find(open), end = document.find(close);
  if (begin == std::string::npos || end == std::string::npos || end < begin) return "(missing)";
  return document.substr(begin + open.size(), end - begin - open.size());
}

// Runs xmllint on the text; a missing xmllint fails too.
void expectWellFormed(const std::string& document, const std::string& name) {
  auto path = std::filesystem::temp_directory_path() /
              ("scrivlet-" + std::to_string(getpid()) + "-" + name + ".xml");
  std::ofstream(path, std::ios::binary) << document;
  std::string command = "xmllint --noout '" + path.string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  std::filesystem::remove(path);
}

QnSignaturePoint point(double x, double y, double t, QnPoint velocity = {0, 0},
                       QnPoint acceleration = {0, 0}, float azimuth = 0, float altitude = 0,
                       float pressure = 0) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.velocity = velocity;
  p.acceleration = acceleration;
  p.timestamp = t;
  p.azimuthAngle = azimuth;
  p.altitudeAngle = altitude;
  p.pressure = pressure;
  return p;
}

QnStrokeListRef list(std::vector<QnStroke> strokes) {
  auto result = std::make_shared<QnStrokeList>();
  for (QnStroke& s : strokes) result->push_back(std::make_shared<QnStroke>(std::move(s)));
  return result;
}

class TimeSeriesExport : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad6,11", 1);  // 264 ppi
    QnDevice::setNativeScale(2.0);
    QnClock::setFixedTime(kExportTime);
    c = QnScrivletController::create(HeadlessView::create(makeRect(0, 0, 400, 300)), {}, {});
  }
  void TearDown() override {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    QnDevice::resetToDefaults();
    QnClock::setFixedTime(std::nullopt);
  }
  std::shared_ptr<QnScrivletController> c;
};

TEST_F(TimeSeriesExport, ThreeStrokeSignatureGivesTheWholeDocument) {
  // Box: x 100..300, y 50..200, so (100, 50, 200, 150); X = (x - 100) * 10, Y = (200 - y) * 10.
  const float halfPi = 1.5707964f;
  c->setMyBrushStrokes(list({
      {point(100, 50, 123456.0, {0, 0}, {0, 0}, 0.0f, halfPi, 0.5f),
       point(100.25, 200, 123456.001953125, {400, -1.5}, {-0.025, 0.015}, -3.0f, 0.5f, -0.25f)},
      {point(300, 125, 123526.001953125, {-400, 0.25}, {-327.68, 500}, 1.0f, 0.0f, 1.0f)},
      {point(100.249999999, 199.75, 123526.251953125, {327.67, -327.68}, {0, 0}, -halfPi, 1.0f,
             0.0f),
       point(180, 130, 123526.259765625, {-0.015, 0.015}, {1000, -1000}, 0.3f, 1.25f, 40.0f)},
  }));
  // Azimuth: fmod(a + pi/2, 0.63661975) * 57.29577951308232. Force: p * 19.6133f * 100 in float.
  const std::vector<Sample> samples = {
      // Top-left corner: X 0, Y ten times the box height. DT 0. Azimuth 0:
      // fmod(1.5707963, 0.6366197) = 0.2975568 -> 17.0488 -> 17. Elevation pi/2 -> 90.0000025
      // -> 90. Force 0.5 * 19.6133 * 100 = 980.665 -> 981.
      {"0", "1500", "0", "0", "0", "0", "17", "90", "0", "981"},
      // X 0.25 * 10 = 2.5 -> 3; Y at the bottom edge 0. Velocity 40000 clamps; -(-1.5 * 100) = 150.
      // Acceleration -2.5 -> -3 and -(1.5) -> -2. Azimuth -3 + pi/2 = -1.4292037, plus two moduli
      // = -0.1559642 -> -8.936 -> -9. Elevation 0.5 -> 28.648 -> 29. DT 1/512 s = 1.953 -> 2.
      // Force -0.25 * 19.6133 * 100 = -490.33 -> -490, wrapped to 65536 - 490 = 65046.
      {"3", "0", "32767", "150", "-3", "-2", "-9", "29", "2", "65046"},
      // Next stroke, after a pause of 70 s: 70000 -> 65535. X 2000, Y 750. Velocity -40000 wraps to
      // 65536 - 40000 = 25536; -(25). Acceleration -32768 stays; -(50000) wraps to 15536.
      // Azimuth 1 + pi/2 = 2.5707963, minus four moduli = 0.0243173 -> 1.393 -> 1. Force 1961.33.
      {"2000", "750", "25536", "-25", "-32768", "15536", "1", "0", "65535", "1961"},
      // Third stroke, after 0.25 s: 250. X 2.49999999 becomes 2.5 in float -> 3; Y (150 - 149.75)
      // * 10 = 2.5 -> 3. Velocity 32767 stays; -(-32768) = 32768 clamps. Azimuth -pi/2 in float
      // -> -2.5e-6 degrees -> 0. Elevation 1 rad -> 57.296 -> 57.
      {"3", "3", "32767", "32767", "0", "0", "0", "57", "250", "0"},
      // X 800, Y 700. Velocity -1.5 -> -2 and -(1.5) -> -2. Acceleration 100000 and -(-100000)
      // clamp. Azimuth 0.3 + pi/2 = 1.8707963, minus two moduli = 0.5975568 -> 34.237 -> 34.
      // Elevation 1.25 -> 71.62 -> 72. DT 1/128 s = 7.8125 -> 8. Force 40 * 19.6133 * 100 = 78453
      // clamps.
      {"800", "700", "-2", "-2", "32767", "32767", "34", "72", "8", "65535"},
  };
  const std::string document = c->createXmlString();
  EXPECT_EQ(document, expectedDocument(samplePoints(samples)));
  for (size_t i = 0; i < samples.size(); ++i) {
    SCOPED_TRACE("sample " + std::to_string(i));
    // Repeated per sample so that a mismatch names the sample.
    EXPECT_NE(samplePointListOf(document).find(samplePoint(samples[i])), std::string::npos);
  }
  EXPECT_EQ(document.find('\n'), std::string::npos);
  const std::string opening =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><sig:SignatureSignTimeSeries ";
  EXPECT_EQ(document.compare(0, opening.size(), opening), 0);
  expectWellFormed(document, "three-strokes");
}

TEST_F(TimeSeriesExport, CaptureTimeIsTheTimeOfExportInUtc) {
  EXPECT_EQ(c->xmlDateString(), "2026-11-22T10:20:30Z");
  // 2001-01-02T03:04:05Z: the reference date 978307200 plus one day and 3:04:05.
  QnClock::setFixedTime(978307200.0 + 86400 + 3 * 3600 + 4 * 60 + 5);
  EXPECT_EQ(c->xmlDateString(), "2001-01-02T03:04:05Z");
}

TEST_F(TimeSeriesExport, ClippingDropsPointsOutsideTheViewAndBoxesTheRest) {
  c->setClipSignatureToBounds(true);
  c->setCopyOfTargetViewBounds(makeRect(0, 0, 300, 200));
  c->setMyBrushStrokes(list({
      {point(10, 20, 5), point(300, 30, 6) /* right edge: out */, point(50, 60, 7)},
      {point(40, 200, 8) /* bottom edge: out */, point(0, 100, 9) /* left edge: in */},
  }));
  // Remaining (10, 20), (50, 60), (0, 100): box (0, 20, 50, 80), Y = (100 - y) * 10. The DT runs
  // from one exported point to the next: 7 - 5 and 9 - 7 seconds.
  std::string document = c->createXmlString();
  EXPECT_EQ(samplePointListOf(document),
            samplePoints({{"100", "800", "0", "0", "0", "0", "17", "0", "0", "0"},
                          {"500", "400", "0", "0", "0", "0", "17", "0", "2000", "0"},
                          {"0", "0", "0", "0", "0", "0", "17", "0", "2000", "0"}}));
  expectWellFormed(document, "clipped");

  SCOPED_TRACE("clipping empties the first stroke: the first point left starts the clock");
  c->setMyBrushStrokes(list({{point(400, 10, 1)}, {point(20, 30, 2), point(40, 50, 3)}}));
  EXPECT_EQ(samplePointListOf(c->createXmlString()),
            samplePoints({{"0", "200", "0", "0", "0", "0", "17", "0", "0", "0"},
                          {"200", "0", "0", "0", "0", "0", "17", "0", "1000", "0"}}));
}

TEST_F(TimeSeriesExport, NoPointsGiveAnEmptySampleList) {
  for (QnStrokeListRef strokes : {std::make_shared<QnStrokeList>(), list({{}, {}}), list({{}})}) {
    SCOPED_TRACE("strokes: " + std::to_string(strokes->size()));
    c->setMyBrushStrokes(strokes);
    std::string document = c->createXmlString();
    EXPECT_EQ(document, expectedDocument(""));
    expectWellFormed(document, "empty");
    c->setClipSignatureToBounds(true);
    c->setCopyOfTargetViewBounds(makeRect(0, 0, 10, 10));
    EXPECT_EQ(c->createXmlString(), expectedDocument(""));
    c->setClipSignatureToBounds(false);
  }
}

TEST_F(TimeSeriesExport, ElevationUsesTheAzimuthPrescaler) {
  // One point: a box of zero size at it, so X and Y are 0. Prescalers: location 1, time 1000,
  // velocity 1, acceleration 1, pressure 1, azimuth 2, elevation 5 (unused).
  QnXMLSerializer xml;
  QnScrivletController::
      writeSamplePointListStrokesLocationPrescalerTimePrescalerVelocityPrescalerAccelerationPrescalerPressurePrescalerAzimuthPrescalerElevationPrescaler(
          xml, list({{point(3, 4, 9, {1.5, -2.5}, {-0.5, 0.5}, 0.0f, 1.0f, 1.0f)}}), 1.0f,
          1000.0f, 1.0f, 1.0f, 1.0f, 2.0f, 5.0f);
  // Velocity 1.5 -> 2, -(-2.5) -> 3; acceleration -0.5 -> -1, -(0.5) -> -1. Azimuth 17.0488 * 2 =
  // 34.0975 -> 34; elevation 57.2958 * 2 = 114.59 -> 115. Force 19.6133 -> 20.
  EXPECT_EQ(xml.toString(), samplePoint({"0", "0", "2", "3", "-1", "-1", "34", "115", "0", "20"}));
}

TEST(XMLSerializer, WritesTagsAndTextsUnchanged) {
  QnXMLSerializer xml;
  xml.setString("left over");
  xml.startDocument("ISO-8859-1");
  EXPECT_EQ(xml.toString(), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
  xml.startTag("a x=\"1\" y='2'");
  xml.text("1 < 2 & \"3\"");
  xml.startTag("b");
  xml.endTag("b");
  xml.endTag("a");
  xml.endDocument();
  EXPECT_EQ(xml.toString(),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
            "<a x=\"1\" y='2'>1 < 2 & \"3\"<b></b></a>");
  EXPECT_EQ(xml.string(), xml.toString());
  xml.startDocument("UTF-8");
  EXPECT_EQ(xml.toString(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
}

TEST(TimeSeriesWriters, SixteenBitTextsClampAboveAndWrapBelow) {
  const std::pair<int, const char*> signedCases[] = {
      {0, "0"},           {-1, "-1"},         {32767, "32767"},   {32768, "32767"},
      {INT_MAX, "32767"}, {-32768, "-32768"}, {-32769, "32767"},  {-40000, "25536"},
      {-65536, "0"},      {INT_MIN, "0"},
  };
  for (const auto& [value, text] : signedCases) {
    SCOPED_TRACE("signed " + std::to_string(value));
    EXPECT_EQ(QnScrivletController::shortCappedStringOfInt(value), text);
  }
  const std::pair<int, const char*> unsignedCases[] = {
      {0, "0"},           {65535, "65535"}, {65536, "65535"}, {INT_MAX, "65535"},
      {-1, "65535"},      {-490, "65046"},  {-65536, "0"},    {-65537, "65535"},
  };
  for (const auto& [value, text] : unsignedCases) {
    SCOPED_TRACE("unsigned " + std::to_string(value));
    EXPECT_EQ(QnScrivletController::uShortCappedStringOfInt(value), text);
  }
}

}  // namespace
}  // namespace scrivlet
