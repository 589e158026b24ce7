// Record files: the record's parts in one JSON document, written piece by piece and read event by event.
#include <scrivlet/record_file.h>

#include <scrivlet/engine/device.h>
#include <scrivlet/stroke_json.h>

#include "capture/dpi_calculator.h"
#include "host/json_writing.h"
#include "host/record_reader.h"
#include "platform/crypto.h"
#include "platform/log.h"

#include <cmath>

namespace scrivlet {

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
  // Members in the order of their names, as a JSON object of nlohmann-json writes them; a number that
  // is not finite is written as 0.
  auto number = [](std::string& out, double v) { appendJsonNumber(out, std::isfinite(v) ? v : 0.0); };
  const QnRect& f = file.frame;
  std::string out = "{\"device\":{\"model\":";
  appendJsonString(out, file.device.model);
  out += ",\"pixelsPerInch\":" + std::to_string(file.device.pixelsPerInch) + ",\"screenScale\":";
  number(out, file.device.screenScale);
  out += std::string("},\"format\":\"") + kRecordFormat + "\",\"frame\":[";
  for (double v : {f.origin.x, f.origin.y, f.size.width, f.size.height})
    number(out, v), out += ',';
  out.back() = ']';
  out += ",\"hash\":";
  appendJsonString(out, file.hash);
  out += ",\"png\":\"" + base64Encode({reinterpret_cast<const char*>(file.png.data()), file.png.size()});
  out += "\",\"strokes\":" + strokesToJson(file.strokes) + ",\"timestamp\":";
  number(out, file.timestamp);
  return out + ",\"version\":" + std::to_string(kRecordVersion) + "}";
}

Result<RecordFile> recordFromJson(std::string_view text) {
  RecordReader reader;
  std::optional<Error> refused = readJsonEvents(text, kMostRecordBytes, "a record file", reader);
  if (!refused) refused = reader.finish();
  if (refused) return *refused;
  return std::move(reader.file);
}

std::optional<RecordFile> recordFromJson(std::string_view text, Error* error) {
  Result<RecordFile> file = recordFromJson(text);
  if (!file && !error) logLine("Scrivlet: no record read from JSON: " + file.error().message);
  return optionalOf(std::move(file), error);
}

std::optional<RecordFile> recordFromJson(std::string_view text, std::string* error) {
  Error why;
  std::optional<RecordFile> file = optionalOf(recordFromJson(text), &why);
  if (!file) {
    if (error) *error = why.message;
    else logLine("Scrivlet: no record read from JSON: " + why.message);
  }
  return file;
}

}  // namespace scrivlet
