// A signature record as one JSON file, to send from the device it was signed on to where it is kept.
#pragma once

#include <scrivlet/export.h>
#include <scrivlet/engine/geometry.h>
#include <scrivlet/error.h>
#include <scrivlet/engine/signature.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet {

// The device a signature was captured on.
class SCRIVLET_EXPORT CaptureDevice {
 public:
  CaptureDevice();  // no model, scale 1, density unknown
  CaptureDevice(std::string model, double screenScale, int pixelsPerInch);

  const std::string& model() const;  // the model identifier
  double screenScale() const;        // pixels per point
  int pixelsPerInch() const;  // the screen's density, as the capture's kinematics used it; 0 when unknown
  void setModel(std::string model);
  void setScreenScale(double screenScale);
  void setPixelsPerInch(int pixelsPerInch);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// What a record file holds: the strokes, the PNG, the hash, the time and the device.
class SCRIVLET_EXPORT RecordFile {
 public:
  const QnStrokeListRef& strokes() const;
  const std::vector<uint8_t>& png() const;
  const std::string& hash() const;
  double timestamp() const;  // seconds since 1 January 2001 00:00:00 UTC
  const QnRect& frame() const;
  const CaptureDevice& device() const;
  void setStrokes(QnStrokeListRef strokes);
  void setPng(std::vector<uint8_t> png);
  void setHash(std::string hash);
  void setTimestamp(double timestamp);
  void setFrame(QnRect frame);
  void setDevice(CaptureDevice device);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// The document (version 1):
//   {"format": "scrivlet-record", "version": 1, "hash": "...", "timestamp": 786000000.5,
//    "frame": [x, y, width, height], "png": "<Base64>",
//    "device": {"model": "...", "screenScale": 2, "pixelsPerInch": 264},
//    "strokes": <the strokes document of strokesToJson>}
// The record's strokes, PNG, hash, time and frame, and this machine's device.
SCRIVLET_EXPORT RecordFile recordFileOf(const QnSignature& record);
// That as a document.
SCRIVLET_EXPORT std::string recordToJson(const QnSignature& record);
SCRIVLET_EXPORT std::string recordFileToJson(const RecordFile& file);
// Such a document read back, or why not: TooLarge (over 128 MiB, refused before it is read), NotJson,
// NotThisFormat, UnsupportedVersion, Malformed (nested deeper than 32 levels; a member missing, twice,
// of the wrong type or out of range: pixelsPerInch from 1 to 2^31 - 1; strokes that do not read as a
// strokes document, within strokesFromJson's limits). The reading never costs more than a few times
// the document's size.
SCRIVLET_EXPORT Result<RecordFile> recordFromJson(std::string_view json);

// The earlier forms: nothing, with the reason in *error, or in one line of the log when error is
// null. Kept for source compatibility.
[[deprecated("recordFromJson returns a Result")]] SCRIVLET_EXPORT std::optional<RecordFile> recordFromJson(
    std::string_view json, Error* error);
[[deprecated("recordFromJson returns a Result")]] SCRIVLET_EXPORT std::optional<RecordFile> recordFromJson(
    std::string_view json, std::string* error);

// This machine's device.
SCRIVLET_EXPORT CaptureDevice currentCaptureDevice();

}  // namespace scrivlet
