// The 19794-7 time series back into strokes, with pugixml.
#include <scrivlet/time_series_import.h>

#include "platform/log.h"

#include <pugixml.hpp>

#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>

namespace scrivlet {

namespace {

constexpr size_t kMostSamples = 1'000'000;
constexpr double kLocationScale = 10.0;       // tenths of a point
constexpr double kTimeScale = 1000.0;         // milliseconds
constexpr double kKinematicsScale = 100.0;    // hundredths of m/s and m/s^2
constexpr double kForceScale = 19.6133 * 100.0;  // hundredths of a newton per unit of pressure
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kHalfPi = 1.5707963267948966;
constexpr int kPauseMilliseconds = 30;
constexpr uint64_t kFirstId = 100;

QnStrokeListRef refuse(const char* why) {
  logLine(std::string("Scrivlet: no strokes read from the time series: ") + why);
  return nullptr;
}

// The element's text as a whole number in [low, high], or nothing.
std::optional<long> integerOf(const pugi::xml_node& node, long low, long high) {
  const char* text = node.child_value();
  long value = 0;
  auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
  if (error != std::errc() || *end != '\0' || value < low || value > high) return std::nullopt;
  return value;
}

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

struct Sample {
  long x, y, vx, vy, ax, ay, azimuth, elevation, dt, force;
};

}  // namespace

QnStrokeListRef strokesFromTimeSeriesXml(std::string_view xml) {
  pugi::xml_document document;
  // Each element's text kept in the element itself, not in a node of its own: half the nodes.
  if (!document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_embed_pcdata, pugi::encoding_utf8))
    return refuse("not well-formed XML");
  pugi::xml_node root = document.document_element();
  if (!isLocalName(root, "SignatureSignTimeSeries")) return refuse("not a signature time series");
  pugi::xml_node list = childNamed(childNamed(childNamed(root, "RepresentationList"), "Representation"),
                                   "SamplePointList");
  if (!list) return refuse("no sample point list");

  std::vector<Sample> samples;
  long highestY = 0;
  for (pugi::xml_node node : list.children()) {
    if (!isLocalName(node, "SamplePoint")) continue;
    if (samples.size() == kMostSamples) return refuse("more than a million samples");
    // A channel's value, in its group or directly in the sample; 16-bit signed unless said.
    auto get = [&node](const char* group, const char* name, long low = -32768, long high = 32767) {
      pugi::xml_node leaf = group[0] ? childNamed(childNamed(node, group), name) : childNamed(node, name);
      return leaf ? integerOf(leaf, low, high) : std::nullopt;
    };
    auto x = get("PenTipCoord", "X"), y = get("PenTipCoord", "Y");
    auto vx = get("PenTipVelocity", "VelocityX"), vy = get("PenTipVelocity", "VelocityY");
    auto ax = get("PenTipAcceleration", "AccelerationX"), ay = get("PenTipAcceleration", "AccelerationY");
    auto azimuth = get("PenOrient", "PenAzimuth"), elevation = get("PenOrient", "PenElevation");
    auto dt = get("", "DTChannel", 0, 65535), force = get("", "FChannel", 0, 65535);
    if (!x || !y || !vx || !vy || !ax || !ay || !azimuth || !elevation || !dt || !force)
      return refuse("a sample without its channels, or a number out of its range");
    samples.push_back({*x, *y, *vx, *vy, *ax, *ay, *azimuth, *elevation, *dt, *force});
    highestY = std::max(highestY, *y);
  }

  auto strokes = std::make_shared<QnStrokeList>();
  double time = 0;
  uint64_t id = kFirstId;
  for (const Sample& s : samples) {
    bool atRest = s.vx == 0 && s.vy == 0 && s.ax == 0 && s.ay == 0;
    if (strokes->empty() || (atRest && s.dt >= kPauseMilliseconds && strokes->back()->size() >= 2))
      strokes->push_back(std::make_shared<QnStroke>());
    time += s.dt / kTimeScale;
    QnSignaturePoint p;
    // Y runs up from the signature's bottom edge, which the highest sample marks.
    p.location = {s.x / kLocationScale, (highestY - s.y) / kLocationScale};
    p.velocity = {s.vx / kKinematicsScale, -s.vy / kKinematicsScale};
    p.acceleration = {s.ax / kKinematicsScale, -s.ay / kKinematicsScale};
    p.timestamp = time;
    p.azimuthAngle = static_cast<float>(s.azimuth * kRadiansPerDegree - kHalfPi);
    p.altitudeAngle = static_cast<float>(s.elevation * kRadiansPerDegree);
    p.pressure = static_cast<float>(s.force / kForceScale);
    p.id = id++;
    strokes->back()->push_back(p);
  }
  return strokes;
}

}  // namespace scrivlet
