// The 19794-7 time series back into strokes, with pugixml, drawn again by the live stroke model.
#include <scrivlet/time_series_import.h>

#include "capture/drawing_controller.h"
#include "host/shared_value.h"
#include "platform/narrowing.h"

#include <pugixml.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace scrivlet {

struct TimeSeriesPen::Data {
  float strokeWidthMax = 4;
  float velocityReduction = 0.85f;
  bool calligraphic = false;
};

SCRIVLET_SHARED_SCALAR(TimeSeriesPen, float, strokeWidthMax, setStrokeWidthMax)
SCRIVLET_SHARED_SCALAR(TimeSeriesPen, float, velocityReduction, setVelocityReduction)
SCRIVLET_SHARED_SCALAR(TimeSeriesPen, bool, calligraphic, setCalligraphic)

namespace {

constexpr size_t kMostSamples = 1'000'000;
constexpr double kLocationScale = 10.0;          // tenths of a point
constexpr double kTimeScale = 1000.0;            // milliseconds
constexpr double kForceScale = 19.6133 * 100.0;  // hundredths of a newton per unit of pressure
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kHalfPi = 1.5707963267948966;
constexpr int kPauseMilliseconds = 30;
constexpr float kFullSpeedPointsPerSecond = 1500;

using Code = ErrorCode;

bool isLocalName(const pugi::xml_node& node, const char* name) {
  const char* full = node.name();
  const char* colon = std::strchr(full, ':');
  return std::strcmp(colon ? colon + 1 : full, name) == 0;
}

pugi::xml_node childNamed(const pugi::xml_node& parent, const char* name) {
  for (pugi::xml_node child : parent.children())
    if (isLocalName(child, name)) return child;
  return {};
}

// The element's text (kept in the element itself) as a whole number in [low, high], or nothing: an
// element holding anything but its number is refused, not read in part.
std::optional<long> integerOf(const pugi::xml_node& node, long low, long high) {
  if (node.first_child()) return std::nullopt;
  const char* digits = node.value();
  long value = 0;
  auto [end, error] = std::from_chars(digits, digits + std::strlen(digits), value);
  if (error != std::errc() || *end != '\0' || value < low || value > high) return std::nullopt;
  return value;
}

// The channels of a sample point, each in its group (none for the time step and the force); 16-bit
// signed unless said. The pen's height (Z) must be 0: a pen above the surface draws nothing.
enum Channel { kX, kY, kZ, kVelocityX, kVelocityY, kAccelerationX, kAccelerationY, kAzimuth, kElevation, kDT, kForce, kChannels };
struct ChannelName {
  const char* group;
  const char* name;
  long low = -32768, high = 32767;
};
const ChannelName kChannelNames[kChannels] = {
    {"PenTipCoord", "X"}, {"PenTipCoord", "Y"}, {"PenTipCoord", "Z", 0, 0},
    {"PenTipVelocity", "VelocityX"}, {"PenTipVelocity", "VelocityY"},
    {"PenTipAcceleration", "AccelerationX"}, {"PenTipAcceleration", "AccelerationY"},
    {"PenOrient", "PenAzimuth"}, {"PenOrient", "PenElevation"},
    {"", "DTChannel", 0, 65535}, {"", "FChannel", 0, 65535},
};
using Sample = std::array<int32_t, kChannels>;

// Reads one channel element into the sample; false for an element that is not a channel of the group,
// a channel given twice, or a value out of its range.
bool readChannel(const pugi::xml_node& element, const char* group, Sample& sample, std::array<bool, kChannels>& seen) {
  for (int c = 0; c < kChannels; ++c) {
    const ChannelName& channel = kChannelNames[c];
    if (std::strcmp(channel.group, group) != 0 || !isLocalName(element, channel.name)) continue;
    std::optional<long> value = integerOf(element, channel.low, channel.high);
    if (seen[c] || !value) return false;
    seen[c] = true, sample[c] = int32_t(*value);
    return true;
  }
  return false;
}

// Every channel of the sample point, each once, and nothing else.
std::optional<Sample> sampleOf(const pugi::xml_node& point) {
  Sample sample{};
  std::array<bool, kChannels> seen{};
  if (*point.value()) return std::nullopt;  // text among the channels
  for (pugi::xml_node child : point.children()) {
    bool grouped = false;
    for (const char* group : {"PenTipCoord", "PenTipVelocity", "PenTipAcceleration", "PenOrient"})
      if (isLocalName(child, group)) {
        if (*child.value()) return std::nullopt;
        grouped = true;
        for (pugi::xml_node element : child.children())
          if (!readChannel(element, group, sample, seen)) return std::nullopt;
      }
    if (!grouped && !readChannel(child, "", sample, seen)) return std::nullopt;
  }
  for (bool found : seen)
    if (!found) return std::nullopt;
  return sample;
}

// The signing device's metres per point, which its velocities were measured in: the orientation
// channel's scaling value is its points per metre, times ten.
std::optional<float> metersPerPointOf(const pugi::xml_node& representation) {
  pugi::xml_node value = childNamed(
      childNamed(childNamed(representation, "ChannelDescriptionList"), "PenTipOrientationChannelDescription"),
      "ScalingValue");
  std::optional<long> pointsPerTenMeters = value ? integerOf(value, 1, 1'000'000'000) : std::nullopt;
  if (!pointsPerTenMeters) return std::nullopt;
  return narrowToFloat(kLocationScale / *pointsPerTenMeters);
}

}  // namespace

Result<QnStrokeListRef> strokesFromTimeSeriesXml(std::string_view xml, const TimeSeriesPen& pen) {
  pugi::xml_document document;
  // Each element's text kept in the element itself, not in a node of its own: half the nodes.
  if (!document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_embed_pcdata, pugi::encoding_utf8))
    return Error{Code::NotXml, "not well-formed XML"};
  pugi::xml_node root = document.document_element();
  if (!isLocalName(root, "SignatureSignTimeSeries")) return Error{Code::NotThisFormat, "not a signature time series"};
  pugi::xml_node representation;
  for (pugi::xml_node child : childNamed(root, "RepresentationList").children()) {
    if (!isLocalName(child, "Representation")) continue;
    if (representation) return Error{Code::Malformed, "more than one representation, where one signature is read"};
    representation = child;
  }
  pugi::xml_node list = childNamed(representation, "SamplePointList");
  if (!list) return Error{Code::Malformed, "no sample point list"};

  std::vector<Sample> samples;
  int32_t highestY = 0;
  // Text before the first sample is kept in the list itself.
  if (*list.value()) return Error{Code::Malformed, "something other than sample points in the sample list"};
  for (pugi::xml_node node : list.children()) {
    if (!isLocalName(node, "SamplePoint"))
      return Error{Code::Malformed, "something other than sample points in the sample list"};
    if (samples.size() == kMostSamples) return Error{Code::TooLarge, "more than a million samples"};
    std::optional<Sample> sample = sampleOf(node);
    if (!sample)
      return Error{Code::Malformed, "a sample without its channels, with others, or with a number out of its range"};
    samples.push_back(*sample);
    highestY = std::max(highestY, (*sample)[kY]);
  }

  // The samples go through the stroke model as the touches did while signing, so that the same pen
  // and velocity rules give each point its velocity, acceleration and diameter again.
  QnDemoDrawingController model(nullptr);
  model.setStrokeWidthMax(pen.strokeWidthMax());
  model.setVelocityReduction(pen.velocityReduction());
  model.setUseCalligraphicBrush(pen.calligraphic());
  // Without the signing device's scale, this device's (the model's own) stands in.
  if (std::optional<float> metersPerPoint = metersPerPointOf(representation)) {
    model.setMetersPerPoint(*metersPerPoint);
    model.setVelocityMax(*metersPerPoint * kFullSpeedPointsPerSecond);
  }
  // A stroke begins at rest (no velocity, no acceleration, as every stroke's first point is) after a
  // pause, once the stroke before has its two points; it ends at the sample before the next begins.
  std::vector<bool> begins(samples.size());
  for (size_t i = 0, inStroke = 0; i < samples.size(); ++i) {
    const Sample& s = samples[i];
    bool atRest = s[kVelocityX] == 0 && s[kVelocityY] == 0 && s[kAccelerationX] == 0 && s[kAccelerationY] == 0;
    begins[i] = i == 0 || (atRest && s[kDT] >= kPauseMilliseconds && inStroke >= 2);
    inStroke = begins[i] ? 1 : inStroke + 1;
  }
  double time = 0;
  for (size_t i = 0; i < samples.size(); ++i) {
    const Sample& s = samples[i];
    time += s[kDT] / kTimeScale;
    QnSignaturePoint p;
    // Y runs up from the signature's bottom edge, which the highest sample marks.
    p.location = {s[kX] / kLocationScale, (highestY - s[kY]) / kLocationScale};
    p.timestamp = time;
    p.azimuthAngle = narrowToFloat(s[kAzimuth] * kRadiansPerDegree - kHalfPi);
    p.altitudeAngle = narrowToFloat(s[kElevation] * kRadiansPerDegree);
    p.pressure = narrowToFloat(s[kForce] / kForceScale);
    if (begins[i])
      model.drawTouchBeganWithPoint(p);
    else if (i + 1 == samples.size() || begins[i + 1])
      model.drawTouchEndedWithPoint(p);
    else
      model.drawTouchMovedWithPoint(p);
  }
  return model.drawingArray();
}

}  // namespace scrivlet
