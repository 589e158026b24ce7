// A record file read from its JSON events: the members checked as they come, the strokes by a
// reader of their own.
#pragma once

#include <scrivlet/record_file.h>

#include "host/json_reading.h"
#include "host/strokes_reader.h"

#include <optional>
#include <string>

namespace scrivlet {

constexpr const char* kRecordFormat = "scrivlet-record";
constexpr int kRecordVersion = 1;
// Room for the largest strokes document and an image.
constexpr size_t kMostRecordBytes = size_t(128) << 20;

class RecordReader : public JsonEventHandler {
 public:
  bool take(const JsonEvent& event) override;
  // Once the document is read: why it is not a record, or nothing.
  std::optional<Error> finish();

  RecordFile file;

 private:
  enum class Place { start, document, frame, device, strokes, finished };
  bool member(const JsonEvent& event);
  bool deviceMember(const JsonEvent& event);
  // A member that does not read: the reading goes on, so that another format or version is named.
  void spoilt(std::string message) {
    if (!spoilt_) spoilt_ = std::move(message);
  }

  Place place_ = Place::start;
  std::string key_;
  bool format_ = false, version_ = false;
  std::optional<std::string> spoilt_;
  // Members seen, by their bit: hash, timestamp, frame, png, device, strokes; and the device's.
  unsigned seen_ = 0, deviceSeen_ = 0;
  CaptureDevice device_;
  int frameNumbers_ = 0;
  double frame_[4] = {};
  StrokesReader strokes_;
};

}  // namespace scrivlet
