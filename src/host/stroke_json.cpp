// Strokes to JSON and back, with nlohmann-json.
#include <scrivlet/stroke_json.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <optional>

namespace scrivlet {

namespace {

using nlohmann::json;

constexpr const char* kFormat = "scrivlet-strokes";
constexpr int kVersion = 1;
constexpr size_t kMostPoints = 1'000'000;

json number(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return value;
}

std::optional<double> numberIn(const json& point, const char* key) {
  auto found = point.find(key);
  if (found == point.end()) return std::nullopt;
  if (found->is_number()) return found->get<double>();
  if (!found->is_string()) return std::nullopt;
  const std::string& text = found->get_ref<const std::string&>();
  if (text == "NaN") return std::nan("");
  if (text == "Infinity") return INFINITY;
  if (text == "-Infinity") return -INFINITY;
  return std::nullopt;
}

QnStrokeListRef refuse(const char* why) {
  std::fprintf(stderr, "Scrivlet: no strokes loaded from JSON: %s\n", why);
  return nullptr;
}

}  // namespace

std::string strokesToJson(const QnStrokeListRef& strokes) {
  json list = json::array();
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{}) {
    json points = json::array();
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      points.push_back({{"x", number(p.location.x)},        {"y", number(p.location.y)},
                        {"vx", number(p.velocity.x)},       {"vy", number(p.velocity.y)},
                        {"ax", number(p.acceleration.x)},   {"ay", number(p.acceleration.y)},
                        {"t", number(p.timestamp)},         {"azimuth", number(p.azimuthAngle)},
                        {"altitude", number(p.altitudeAngle)}, {"pressure", number(p.pressure)},
                        {"diameter", number(p.diameter)},   {"id", p.id}});
    list.push_back(std::move(points));
  }
  return json{{"format", kFormat}, {"version", kVersion}, {"strokes", std::move(list)}}.dump();
}

QnStrokeListRef strokesFromJson(std::string_view text) {
  json document = json::parse(text, nullptr, false);
  if (document.is_discarded() || !document.is_object()) return refuse("not a JSON object");
  if (document.value("format", "") != kFormat) return refuse("not a strokes document");
  if (!document["version"].is_number_integer() || document["version"] != kVersion)
    return refuse("a version this library does not read");
  const json& list = document["strokes"];
  if (!list.is_array()) return refuse("no list of strokes");
  auto strokes = std::make_shared<QnStrokeList>();
  size_t total = 0;
  for (const json& points : list) {
    if (!points.is_array()) return refuse("a stroke that is not a list of points");
    if ((total += points.size()) > kMostPoints) return refuse("more than a million points");
    auto stroke = std::make_shared<QnStroke>();
    for (const json& point : points) {
      if (!point.is_object()) return refuse("a point that is not an object");
      double value[11];
      const char* keys[] = {"x", "y", "vx", "vy", "ax", "ay", "t", "azimuth", "altitude", "pressure", "diameter"};
      for (int k = 0; k < 11; ++k) {
        std::optional<double> read = numberIn(point, keys[k]);
        if (!read) return refuse("a point with a field missing or not a number");
        value[k] = *read;
      }
      auto id = point.find("id");
      if (id == point.end() || !id->is_number_unsigned()) return refuse("a point without an id");
      if (!std::isfinite(value[0]) || !std::isfinite(value[1])) return refuse("a position that is not finite");
      QnSignaturePoint p;
      p.location = {value[0], value[1]};
      p.velocity = {value[2], value[3]};
      p.acceleration = {value[4], value[5]};
      p.timestamp = value[6];
      p.azimuthAngle = static_cast<float>(value[7]);
      p.altitudeAngle = static_cast<float>(value[8]);
      p.pressure = static_cast<float>(value[9]);
      p.diameter = static_cast<float>(value[10]);
      p.id = id->get<uint64_t>();
      stroke->push_back(p);
    }
    strokes->push_back(std::move(stroke));
  }
  return strokes;
}

}  // namespace scrivlet
