// A strokes document read event by event.
#include "host/strokes_reader.h"

#include <cmath>
#include <cstring>

namespace scrivlet {

namespace {

// The fields of a point in the order they are kept; the id comes last.
constexpr const char* kFields[] = {"x", "y", "vx", "vy", "ax", "ay", "t", "azimuth", "altitude", "pressure",
                                   "diameter", "id"};
constexpr int kIdField = 11;
constexpr unsigned kAllFields = (1u << 12) - 1;

int fieldNamed(const std::string& name) {
  for (int i = 0; i < 12; ++i)
    if (name == kFields[i]) return i;
  return -1;
}

// A number, or one of the texts a number that is not finite is written as.
std::optional<double> numberOf(const JsonEvent& event) {
  if (event.isNumber()) return event.number;
  if (event.kind != JsonEvent::Kind::string) return std::nullopt;
  if (*event.text == "NaN") return std::nan("");
  if (*event.text == "Infinity") return INFINITY;
  if (*event.text == "-Infinity") return -INFINITY;
  return std::nullopt;
}

}  // namespace

bool StrokesReader::take(const JsonEvent& event) {
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
    case Place::strokes:
      if (event.kind == JsonEvent::Kind::endArray) return place_ = Place::document, true;
      if (event.kind != JsonEvent::Kind::beginArray) {
        spoilt("a stroke that is not a list of points");
        return skip(event), true;
      }
      if (strokes_->size() >= kMostStrokes)
        return stop(ErrorCode::TooLarge, "more than " + std::to_string(kMostStrokes) + " strokes");
      if (!spoilt_) strokes_->push_back(std::make_shared<QnStroke>());
      place_ = Place::stroke;
      return true;
    case Place::stroke:
      if (event.kind == JsonEvent::Kind::endArray) {
        if (!spoilt_) strokes_->back()->shrink_to_fit();
        return place_ = Place::strokes, true;
      }
      if (event.kind != JsonEvent::Kind::beginObject) {
        spoilt("a point that is not an object");
        return skip(event), true;
      }
      place_ = Place::point, field_ = -1, seen_ = 0;
      return true;
    case Place::point:
      if (event.kind == JsonEvent::Kind::key) return field_ = fieldNamed(*event.text), true;
      if (event.kind == JsonEvent::Kind::endObject) return endPoint();
      return field(event);
    case Place::finished: break;
  }
  return stop(ErrorCode::Malformed, "more after the end of the document");
}

bool StrokesReader::member(const JsonEvent& event) {
  if (key_ == "format") {
    if (event.kind != JsonEvent::Kind::string || *event.text != kStrokesFormat)
      return stop(ErrorCode::NotThisFormat, "not a strokes document");
    format_ = *event.text;
  } else if (key_ == "version") {
    bool integer = event.kind == JsonEvent::Kind::integer || event.kind == JsonEvent::Kind::unsignedInteger;
    if (!integer || event.number != kStrokesVersion)
      return stop(ErrorCode::UnsupportedVersion, "a version this library does not read");
    version_ = kStrokesVersion;
  } else if (key_ == "strokes" && event.kind == JsonEvent::Kind::beginArray && !strokesSeen_) {
    strokesSeen_ = true;
    place_ = Place::strokes;
  } else {
    if (key_ == "strokes") spoilt(strokesSeen_ ? "two lists of strokes" : "no list of strokes");
    skip(event);
  }
  return true;
}

bool StrokesReader::field(const JsonEvent& event) {
  if (field_ == kIdField && event.kind == JsonEvent::Kind::unsignedInteger) {
    id_ = event.unsignedInteger;
  } else if (std::optional<double> value = field_ >= 0 && field_ < kIdField ? numberOf(event) : std::nullopt) {
    values_[field_] = *value;
  } else {
    if (field_ == kIdField) spoilt("a point whose id is not a whole number from 0 to 2^64 - 1");
    if (field_ >= 0 && field_ < kIdField) spoilt("a point with a field that is not a number");
    skip(event);
    return true;
  }
  seen_ |= 1u << field_;
  return true;
}

bool StrokesReader::endPoint() {
  place_ = Place::stroke;
  if (seen_ != kAllFields) return spoilt("a point with a field missing"), true;
  if (!std::isfinite(values_[0]) || !std::isfinite(values_[1])) return spoilt("a position that is not finite"), true;
  if (++points_ > kMostPoints)
    return stop(ErrorCode::TooLarge, "more than " + std::to_string(kMostPoints) + " points");
  if (spoilt_) return true;
  QnSignaturePoint p;
  p.location = {values_[0], values_[1]};
  p.velocity = {values_[2], values_[3]};
  p.acceleration = {values_[4], values_[5]};
  p.timestamp = values_[6];
  p.azimuthAngle = static_cast<float>(values_[7]);
  p.altitudeAngle = static_cast<float>(values_[8]);
  p.pressure = static_cast<float>(values_[9]);
  p.diameter = static_cast<float>(values_[10]);
  p.id = id_;
  strokes_->back()->push_back(p);
  return true;
}

void StrokesReader::spoilt(std::string message) {
  if (!spoilt_) spoilt_ = std::move(message);
  strokes_->clear();
  strokes_->shrink_to_fit();
}

QnStrokeListRef StrokesReader::result() {
  if (error) return nullptr;
  if (!format_) error = Error{ErrorCode::NotThisFormat, "not a strokes document"};
  else if (!version_) error = Error{ErrorCode::UnsupportedVersion, "a version this library does not read"};
  else if (spoilt_) error = Error{ErrorCode::Malformed, *spoilt_};
  else if (!strokesSeen_) error = Error{ErrorCode::Malformed, "no list of strokes"};
  if (error) strokes_.reset();
  return error ? nullptr : std::move(strokes_);
}

}  // namespace scrivlet
