// Strokes to JSON and back: written piece by piece, read event by event.
#include <scrivlet/stroke_json.h>

#include "host/json_writing.h"
#include "host/strokes_reader.h"
#include "platform/log.h"

namespace scrivlet {

std::string strokesToJson(const QnStrokeListRef& strokes) {
  // Members in the order of their names, as a JSON object of nlohmann-json writes them.
  std::string out = "{\"format\":\"scrivlet-strokes\",\"strokes\":[";
  for (size_t s = 0; strokes && s < strokes->size(); ++s) {
    out += s ? ",[" : "[";
    const QnStrokeRef& stroke = (*strokes)[s];
    for (size_t i = 0; stroke && i < stroke->size(); ++i) {
      const QnSignaturePoint& p = (*stroke)[i];
      const std::pair<const char*, double> fields[] = {
          {"{\"altitude\":", p.altitudeAngle}, {",\"ax\":", p.acceleration.x},  {",\"ay\":", p.acceleration.y},
          {",\"azimuth\":", p.azimuthAngle},   {",\"diameter\":", p.diameter}};
      const std::pair<const char*, double> after[] = {
          {",\"pressure\":", p.pressure}, {",\"t\":", p.timestamp}, {",\"vx\":", p.velocity.x},
          {",\"vy\":", p.velocity.y},     {",\"x\":", p.location.x}, {",\"y\":", p.location.y}};
      if (i) out += ',';
      for (auto [name, value] : fields) out += name, appendJsonNumber(out, value);
      out += ",\"id\":", appendJsonUnsigned(out, p.id);
      for (auto [name, value] : after) out += name, appendJsonNumber(out, value);
      out += '}';
    }
    out += ']';
  }
  return out + "],\"version\":" + std::to_string(kStrokesVersion) + "}";
}

Result<QnStrokeListRef> strokesFromJson(std::string_view text) {
  StrokesReader reader;
  std::optional<Error> refused = readJsonEvents(text, kMostStrokeJsonBytes, "a strokes document", reader);
  QnStrokeListRef strokes = refused ? nullptr : reader.result();
  if (!strokes) return refused ? *refused : *reader.error;
  return strokes;
}

QnStrokeListRef strokesFromJson(std::string_view text, Error* error) {
  Result<QnStrokeListRef> strokes = strokesFromJson(text);
  if (!strokes && !error) logLine("Scrivlet: no strokes loaded from JSON: " + strokes.error().message());
  return optionalOf(std::move(strokes), error).value_or(nullptr);
}

}  // namespace scrivlet
