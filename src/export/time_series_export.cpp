// The signature's time series as an ISO/IEC 19794-7 XML document: every sample as integers.
#include "export/time_series_export.h"

#include "export/export_settings.h"
#include "export/stroke_copies.h"
#include "export/xml_serializer.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/narrowing.h"

#include <cmath>

namespace scrivlet {

namespace {

const char* const kSignatureNamespace = "http://standards.iso.org/iso-iec/19794/-7/ed-1/amd/1";
const char* const kCommonNamespace = "http://standards.iso.org/iso-iec/19794/-1/ed-2/amd/2";
const char* const kSchemaInstanceNamespace = "http://www.w3.org/2001/XMLSchema-instance";
const char* const kSchemaFile = "19794-7_ed2_amd1.xsd";

constexpr double kHalfPi = 1.5707963267948966;
constexpr float kAzimuthModulus = 0.63661975f;  // 2/pi in single precision
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr float kNewtonsPerUnitForce = 19.6133f;

// Halves away from zero, in single precision; the result is taken as a 32-bit integer.
int roundSingle(double value) { return static_cast<int>(std::lround(narrowToFloat(value))); }

}  // namespace

std::string shortCappedText(int value) {
  // Only the upper bound is clamped; below -32768 the 16-bit value wraps.
  return formatHd(value >= 32768 ? 32767 : value);
}

std::string uShortCappedText(int value) {
  // Only the upper bound is clamped; a negative value wraps.
  return formatHu(value >= 65536 ? 65535 : value);
}

std::string xmlDateText(double unixSeconds) {
  return utcDateString(unixSeconds, "yyyy-MM-dd'T'HH:mm:ss'Z'");
}

std::string timeSeriesXml(const QnStrokeListRef& myBrushStrokes, const ExportSettings& settings) {
  QnStrokeListRef strokes = settings.clipSignatureToBounds
                                ? clippedCopyOfStrokes(myBrushStrokes, settings.copyOfTargetViewBounds)
                                : myBrushStrokes;
  std::string captureTime = xmlDateText(settings.time);
  std::string orientation =
      formatD(static_cast<int>(std::lround(1.0f / settings.metersPerPoint * 10.0f)));

  QnXMLSerializer xml;
  xml.startDocument("UTF-8");
  xml.startTag(cformat(
      "sig:SignatureSignTimeSeries xmlns:sig=\"%s\" xmlns:cmn=\"%s\" xmlns:xsi=\"%s\" "
      "cmn:SchemaVersion=\"1.0\" xsi:schemaLocation=\"%s %s\"",
      kSignatureNamespace, kCommonNamespace, kSchemaInstanceNamespace, kSignatureNamespace,
      kSchemaFile));
  xml.startTag("sig:Version");
  xml.element("cmn:Major", "1");
  xml.element("cmn:Minor", "0");
  xml.endTag("sig:Version");
  xml.startTag("sig:RepresentationList");
  xml.startTag("sig:Representation");
  xml.element("sig:CaptureDateAndTime", captureTime);
  xml.startTag("sig:CaptureDevice");
  xml.startTag("sig:DeviceID");
  xml.element("cmn:Organization", "259");
  xml.element("cmn:Identifier", "1");
  xml.endTag("sig:DeviceID");
  xml.element("sig:DeviceTechnology", "Unknown");
  xml.endTag("sig:CaptureDevice");
  xml.element("sig:InclusionField", "DDC6");
  xml.startTag("sig:ChannelDescriptionList");
  const std::pair<const char*, std::string> channels[] = {
      {"sig:PenTipOrientationChannelDescription", orientation},
      {"sig:PenTipAccelerationChannelDescription", "100"},
      {"sig:PenTipVelocityChannelDescription", "100"},
      {"sig:DTChannelDescription", "1000"},
      {"sig:FChannelDescription", "100"},
  };
  for (const auto& [description, scaling] : channels) {
    xml.startTag(description);
    xml.element("sig:ScalingValue", scaling);
    xml.endTag(description);
  }
  xml.endTag("sig:ChannelDescriptionList");
  xml.startTag("sig:SamplePointList");
  writeSamplePoints(xml, strokes, 10.0f, 1000.0f, 100.0f, 100.0f, 100.0f, 1.0f, 1.0f);
  xml.endTag("sig:SamplePointList");
  xml.endTag("sig:Representation");
  xml.endTag("sig:RepresentationList");
  xml.startTag("sig:VendorSpecificData");
  xml.element("cmn:TypeCode", "0");
  xml.startTag("cmn:Data");
  xml.endTag("cmn:Data");
  xml.endTag("sig:VendorSpecificData");
  xml.endTag("sig:SignatureSignTimeSeries");
  xml.endDocument();
  return xml.toString();
}

void writeSamplePoints(QnXMLSerializer& xml, const QnStrokeListRef& strokes, float locationPrescaler,
                       float timePrescaler, float velocityPrescaler, float accelerationPrescaler,
                       float pressurePrescaler, float azimuthPrescaler, float) {
  if (!strokes) return;
  // The first point there is sets the clock; without one there is nothing to write.
  const QnSignaturePoint* first = nullptr;
  for (const QnStrokeRef& stroke : *strokes)
    if (stroke && !stroke->empty()) {
      first = &stroke->front();
      break;
    }
  if (!first) return;
  double previousTime = first->timestamp;
  QnRect box = boundingRectOfStrokes(strokes);
  QnStrokeListRef shifted = copyOfStrokesMovedBy(strokes, {-box.origin.x, -box.origin.y});
  double p = locationPrescaler, v = velocityPrescaler, a = accelerationPrescaler;
  double angle = azimuthPrescaler;

  // Strokes are not marked: the points of all strokes form one sequence, and the first point of a
  // stroke carries the pause since the stroke before.
  for (const QnStrokeRef& stroke : *shifted) {
    for (const QnSignaturePoint& point : *stroke) {
      int x = roundSingle(point.location.x * p);
      // Y runs up from the box's bottom edge.
      int y = roundSingle((box.size.height - point.location.y) * p);
      int vx = roundSingle(point.velocity.x * v);
      int vy = roundSingle(-(point.velocity.y * v));
      int ax = roundSingle(point.acceleration.x * a);
      int ay = roundSingle(-(point.acceleration.y * a));
      // A quarter turn on, then reduced modulo 2/pi radians, not a full turn.
      int azimuth = roundSingle(std::fmod(point.azimuthAngle + kHalfPi, double(kAzimuthModulus)) *
                                kDegreesPerRadian * angle);
      // The elevation uses the azimuth's prescaler.
      int elevation = roundSingle(point.altitudeAngle * kDegreesPerRadian * angle);
      int dt = static_cast<int>(std::lround((point.timestamp - previousTime) * timePrescaler));
      int force = static_cast<int>(
          std::lround(point.pressure * kNewtonsPerUnitForce * pressurePrescaler));
      previousTime = point.timestamp;

      xml.startTag("sig:SamplePoint");
      xml.startTag("sig:PenTipCoord");
      xml.element("cmn:X", shortCappedText(x));
      xml.element("cmn:Y", shortCappedText(y));
      xml.element("cmn:Z", "0");
      xml.endTag("sig:PenTipCoord");
      xml.startTag("sig:PenTipVelocity");
      xml.element("sig:VelocityX", shortCappedText(vx));
      xml.element("sig:VelocityY", shortCappedText(vy));
      xml.endTag("sig:PenTipVelocity");
      xml.startTag("sig:PenTipAcceleration");
      xml.element("sig:AccelerationX", shortCappedText(ax));
      xml.element("sig:AccelerationY", shortCappedText(ay));
      xml.endTag("sig:PenTipAcceleration");
      xml.startTag("sig:PenOrient");
      xml.element("sig:PenAzimuth", shortCappedText(azimuth));
      xml.element("sig:PenElevation", shortCappedText(elevation));
      xml.endTag("sig:PenOrient");
      xml.element("sig:DTChannel", uShortCappedText(dt));
      xml.element("sig:FChannel", uShortCappedText(force));
      xml.endTag("sig:SamplePoint");
    }
  }
}

}  // namespace scrivlet
