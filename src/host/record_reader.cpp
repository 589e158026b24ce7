// A record file read event by event.
#include "host/record_reader.h"

#include "platform/crypto.h"

#include <cmath>
#include <limits>

namespace scrivlet {

namespace {

enum Member : unsigned { kHash = 1, kTimestamp = 2, kFrame = 4, kPng = 8, kDevice = 16, kStrokes = 32, kAll = 63 };
enum DeviceMember : unsigned { kModel = 1, kScale = 2, kDensity = 4, kWholeDevice = 7 };

bool isFiniteNumber(const JsonEvent& event) { return event.isNumber() && std::isfinite(event.number); }

}  // namespace

bool RecordReader::take(const JsonEvent& event) {
  if (skipping(event)) return true;
  switch (place_) {
    case Place::start:
      if (event.kind != JsonEvent::Kind::beginObject) return stop(ErrorCode::NotThisFormat, "not a JSON object");
      place_ = Place::document;
      return true;
    case Place::document:
      if (event.kind == JsonEvent::Kind::key) return key_ = std::move(*event.text), true;
      if (event.kind == JsonEvent::Kind::endObject) return place_ = Place::finished, true;
      return member(event);
    case Place::frame:
      if (event.kind == JsonEvent::Kind::endArray) {
        if (frameNumbers_ != 4) spoilt("a frame that is not four numbers");
        return place_ = Place::document, true;
      }
      if (!isFiniteNumber(event) || frameNumbers_ == 4) spoilt("a frame that is not four numbers");
      else frame_[frameNumbers_++] = event.number;
      return skip(event), true;
    case Place::device:
      if (event.kind == JsonEvent::Kind::key) return key_ = std::move(*event.text), true;
      if (event.kind == JsonEvent::Kind::endObject) {
        if (deviceSeen_ != kWholeDevice) spoilt("a device without its model, scale or density");
        return place_ = Place::document, true;
      }
      return deviceMember(event);
    case Place::strokes:
      if (!strokes_.take(event)) {
        Error why = *strokes_.error;
        return stop(why.code() == ErrorCode::TooLarge ? why.code() : ErrorCode::Malformed,
                    "strokes that do not read: " + why.message());
      }
      if (strokes_.finished()) {
        QnStrokeListRef strokes = strokes_.result();
        if (!strokes) spoilt("strokes that do not read: " + strokes_.error->message());
        file.setStrokes(std::move(strokes));
        place_ = Place::document;
      }
      return true;
    case Place::finished: break;
  }
  return stop(ErrorCode::Malformed, "more after the end of the document");
}

bool RecordReader::member(const JsonEvent& event) {
  using Kind = JsonEvent::Kind;
  if (key_ == "format") {
    if (event.kind != Kind::string || *event.text != kRecordFormat)
      return stop(ErrorCode::NotThisFormat, "not a record document");
    return format_ = true;
  }
  if (key_ == "version") {
    if ((event.kind != Kind::integer && event.kind != Kind::unsignedInteger) || event.number != kRecordVersion)
      return stop(ErrorCode::UnsupportedVersion, "a version this library does not read");
    return version_ = true;
  }
  static const std::pair<const char*, unsigned> kMembers[] = {{"hash", kHash},   {"timestamp", kTimestamp},
                                                              {"frame", kFrame}, {"png", kPng},
                                                              {"device", kDevice}, {"strokes", kStrokes}};
  unsigned bit = 0;
  for (auto [name, memberBit] : kMembers)
    if (key_ == name) bit = memberBit;
  bool read = false;
  if (bit & seen_) {
    spoilt("a " + key_ + " member twice");
  } else if (bit == kHash && event.kind == Kind::string) {
    file.setHash(std::move(*event.text)), read = true;
  } else if (bit == kTimestamp && isFiniteNumber(event)) {
    file.setTimestamp(event.number), read = true;
  } else if (bit == kPng && event.kind == Kind::string) {
    // The text is taken from the parser and let go of before the bytes are copied out: never more
    // than two of the three (text, decoded, copied) are held at once.
    std::optional<std::string> bytes = base64Decode(std::string(std::move(*event.text)));
    if (!bytes) spoilt("an image that is not Base64");
    else file.setPng({bytes->begin(), bytes->end()});
    read = true;
  } else if (bit == kFrame && event.kind == Kind::beginArray) {
    place_ = Place::frame, read = true;
  } else if (bit == kDevice && event.kind == Kind::beginObject) {
    place_ = Place::device, read = true;
  } else if (bit == kStrokes && event.kind == Kind::beginObject) {
    place_ = Place::strokes, read = true;
    strokes_.take(event);
  } else if (bit) {
    spoilt("a " + key_ + " member of the wrong type");
  }
  if (read) seen_ |= bit;
  else skip(event);
  return true;
}

bool RecordReader::deviceMember(const JsonEvent& event) {
  using Kind = JsonEvent::Kind;
  if (key_ == "model" && event.kind == Kind::string) {
    device_.setModel(std::move(*event.text)), deviceSeen_ |= kModel;
  } else if (key_ == "screenScale" && isFiniteNumber(event)) {
    device_.setScreenScale(event.number), deviceSeen_ |= kScale;
  } else if (key_ == "pixelsPerInch" && (event.kind == Kind::integer || event.kind == Kind::unsignedInteger) &&
             event.number >= 0 && event.number <= std::numeric_limits<int>::max()) {  // 0: unknown
    device_.setPixelsPerInch(static_cast<int>(event.number)), deviceSeen_ |= kDensity;
  } else {
    if (key_ == "model" || key_ == "screenScale" || key_ == "pixelsPerInch")
      spoilt("a device's " + key_ + " of the wrong type or out of range");
    skip(event);
  }
  return true;
}

std::optional<Error> RecordReader::finish() {
  if (!format_) return Error{ErrorCode::NotThisFormat, "not a record document"};
  if (!version_) return Error{ErrorCode::UnsupportedVersion, "a version this library does not read"};
  if (spoilt_) return Error{ErrorCode::Malformed, *spoilt_};
  if (seen_ != kAll) return Error{ErrorCode::Malformed, "a hash, time, frame, image, device or strokes missing"};
  file.setFrame(makeRect(frame_[0], frame_[1], frame_[2], frame_[3]));
  file.setDevice(device_);
  return std::nullopt;
}

}  // namespace scrivlet
