// Strokes to JSON and back, with nlohmann-json.
#include <scrivlet/stroke_json.h>

#include "host/strokes_reader.h"
#include "platform/log.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace scrivlet {

namespace {

using nlohmann::json;

json number(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return value;
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
  return json{{"format", kStrokesFormat}, {"version", kStrokesVersion}, {"strokes", std::move(list)}}.dump();
}

QnStrokeListRef strokesFromJson(std::string_view text, LoadError* error) {
  StrokesReader reader;
  std::optional<LoadError> refused = readJsonEvents(text, kMostStrokeJsonBytes, "a strokes document", reader);
  QnStrokeListRef strokes = refused ? nullptr : reader.result();
  if (!strokes) {
    const LoadError& why = refused ? *refused : *reader.error;
    if (error)
      *error = why;
    else
      logLine("Scrivlet: no strokes loaded from JSON: " + why.message);
  }
  return strokes;
}

}  // namespace scrivlet
