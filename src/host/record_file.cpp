// Record files: the record's parts in one JSON document, written piece by piece and read event by event.
#include <scrivlet/record_file.h>

#include <scrivlet/engine/device.h>
#include <scrivlet/stroke_json.h>

#include "capture/dpi_calculator.h"
#include "host/json_writing.h"
#include "host/record_reader.h"
#include "host/shared_value.h"
#include "platform/crypto.h"
#include "platform/log.h"

#include <cmath>

namespace scrivlet {

struct CaptureDevice::Data {
  std::string model;
  double screenScale = 1;
  int pixelsPerInch = 0;
};

CaptureDevice::CaptureDevice() = default;
CaptureDevice::CaptureDevice(std::string model, double screenScale, int pixelsPerInch) {
  setModel(std::move(model));
  setScreenScale(screenScale);
  setPixelsPerInch(pixelsPerInch);
}
SCRIVLET_SHARED_FIELD(CaptureDevice, std::string, model, setModel)
SCRIVLET_SHARED_SCALAR(CaptureDevice, double, screenScale, setScreenScale)
SCRIVLET_SHARED_SCALAR(CaptureDevice, int, pixelsPerInch, setPixelsPerInch)

struct RecordFile::Data {
  QnStrokeListRef strokes;
  std::vector<uint8_t> png;
  std::string hash;
  double timestamp = 0;
  QnRect frame;
  CaptureDevice device;
};

SCRIVLET_SHARED_FIELD(RecordFile, QnStrokeListRef, strokes, setStrokes)
SCRIVLET_SHARED_FIELD(RecordFile, std::vector<uint8_t>, png, setPng)
SCRIVLET_SHARED_FIELD(RecordFile, std::string, hash, setHash)
SCRIVLET_SHARED_SCALAR(RecordFile, double, timestamp, setTimestamp)
SCRIVLET_SHARED_FIELD(RecordFile, QnRect, frame, setFrame)
SCRIVLET_SHARED_FIELD(RecordFile, CaptureDevice, device, setDevice)

CaptureDevice currentCaptureDevice() {
  return {QnDevice::modelIdentifier(), QnDevice::screenScale(), QnDPICalculator::deviceDpi()};
}

RecordFile recordFileOf(const QnSignature& record) {
  RecordFile file;
  file.setStrokes(record.rawPoints());
  if (record.imageData()) file.setPng(*record.imageData());
  file.setHash(record.hashString().value_or(""));
  file.setTimestamp(record.timestamp());
  file.setFrame(record.frame());
  file.setDevice(currentCaptureDevice());
  return file;
}

std::string recordToJson(const QnSignature& record) { return recordFileToJson(recordFileOf(record)); }

std::string recordFileToJson(const RecordFile& file) {
  // Members in the order of their names, as a JSON object of nlohmann-json writes them; a number that
  // is not finite is written as 0.
  auto number = [](std::string& out, double v) { appendJsonNumber(out, std::isfinite(v) ? v : 0.0); };
  const QnRect& f = file.frame();
  std::string out = "{\"device\":{\"model\":";
  appendJsonString(out, file.device().model());
  out += ",\"pixelsPerInch\":" + std::to_string(file.device().pixelsPerInch()) + ",\"screenScale\":";
  number(out, file.device().screenScale());
  out += std::string("},\"format\":\"") + kRecordFormat + "\",\"frame\":[";
  for (double v : {f.origin.x, f.origin.y, f.size.width, f.size.height})
    number(out, v), out += ',';
  out.back() = ']';
  out += ",\"hash\":";
  appendJsonString(out, file.hash());
  out += ",\"png\":\"" + base64Encode({reinterpret_cast<const char*>(file.png().data()), file.png().size()});
  out += "\",\"strokes\":" + strokesToJson(file.strokes()) + ",\"timestamp\":";
  number(out, file.timestamp());
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
  if (!file && !error) logLine("Scrivlet: no record read from JSON: " + file.error().message());
  return optionalOf(std::move(file), error);
}

std::optional<RecordFile> recordFromJson(std::string_view text, std::string* error) {
  Error why;
  std::optional<RecordFile> file = optionalOf(recordFromJson(text), &why);
  if (!file) {
    if (error) *error = why.message();
    else logLine("Scrivlet: no record read from JSON: " + why.message());
  }
  return file;
}

}  // namespace scrivlet
