// Record files: the record's parts in one JSON document, with nlohmann-json.
#include <scrivlet/record_file.h>

#include <scrivlet/device.h>
#include <scrivlet/stroke_json.h>

#include "capture/dpi_calculator.h"
#include "host/json_field.h"
#include "platform/crypto.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace scrivlet {

namespace {

using nlohmann::json;

constexpr const char* kFormat = "scrivlet-record";
constexpr int kVersion = 1;

std::optional<RecordFile> refuse(std::string* error, const char* why) {
  if (error)
    *error = why;
  else
    std::fprintf(stderr, "Scrivlet: no record read from JSON: %s\n", why);
  return std::nullopt;
}

}  // namespace

CaptureDevice currentCaptureDevice() {
  return {QnDevice::modelIdentifier(), QnDevice::screenScale(), QnDPICalculator::deviceDpi()};
}

std::string recordToJson(const QnSignature& record) {
  RecordFile file;
  file.strokes = record.rawPoints();
  if (record.imageData()) file.png = *record.imageData();
  file.hash = record.hashString().value_or("");
  file.timestamp = record.timestamp();
  file.frame = record.frame();
  file.device = currentCaptureDevice();
  return recordFileToJson(file);
}

std::string recordFileToJson(const RecordFile& file) {
  auto finite = [](double v) { return std::isfinite(v) ? v : 0.0; };
  const QnRect& f = file.frame;
  json document{{"format", kFormat},
                {"version", kVersion},
                {"hash", file.hash},
                {"timestamp", finite(file.timestamp)},
                {"frame", {finite(f.origin.x), finite(f.origin.y), finite(f.size.width), finite(f.size.height)}},
                {"png", base64Encode({reinterpret_cast<const char*>(file.png.data()), file.png.size()})},
                {"device",
                 {{"model", file.device.model},
                  {"screenScale", finite(file.device.screenScale)},
                  {"pixelsPerInch", file.device.pixelsPerInch}}},
                {"strokes", json::parse(strokesToJson(file.strokes))}};
  return document.dump();
}

std::optional<RecordFile> recordFromJson(std::string_view text, std::string* error) {
  json document = json::parse(text, nullptr, false);
  if (document.is_discarded() || !document.is_object()) return refuse(error, "not a JSON object");
  if (document.value("format", "") != kFormat) return refuse(error, "not a record document");
  if (!jsonField(document, "version").is_number_integer() || jsonField(document, "version") != kVersion)
    return refuse(error, "a version this library does not read");
  const json &hash = jsonField(document, "hash"), &timestamp = jsonField(document, "timestamp"),
             &frame = jsonField(document, "frame"), &png = jsonField(document, "png"),
             &device = jsonField(document, "device"), &strokes = jsonField(document, "strokes");
  if (!hash.is_string() || !isFiniteNumber(timestamp) || !png.is_string() || !strokes.is_object())
    return refuse(error, "a hash, time, image or strokes missing or of the wrong type");
  if (!frame.is_array() || frame.size() != 4 || !std::all_of(frame.begin(), frame.end(), isFiniteNumber))
    return refuse(error, "a frame that is not four numbers");
  if (!device.is_object() || !jsonField(device, "model").is_string() ||
      !isFiniteNumber(jsonField(device, "screenScale")) || !jsonField(device, "pixelsPerInch").is_number_integer())
    return refuse(error, "a device without its model, scale or density");
  // A density is an int, 0 when unknown: one beyond is refused, never narrowed.
  if (const json& ppi = jsonField(device, "pixelsPerInch"); ppi < 0 || ppi > std::numeric_limits<int>::max())
    return refuse(error, "a density out of range");
  RecordFile file;
  file.hash = hash.get<std::string>();
  file.timestamp = timestamp.get<double>();
  file.frame = makeRect(frame[0].get<double>(), frame[1].get<double>(), frame[2].get<double>(), frame[3].get<double>());
  std::optional<std::string> pngBytes = base64Decode(png.get_ref<const std::string&>());
  if (!pngBytes) return refuse(error, "an image that is not Base64");
  file.png.assign(pngBytes->begin(), pngBytes->end());
  file.device = {jsonField(device, "model").get<std::string>(), jsonField(device, "screenScale").get<double>(),
                 jsonField(device, "pixelsPerInch").get<int>()};
  file.strokes = strokesFromJson(strokes.dump());
  if (!file.strokes) return refuse(error, "strokes that do not read");
  return file;
}

}  // namespace scrivlet
