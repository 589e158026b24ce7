// Reads a strokes document from its JSON events, keeping nothing but the strokes and counting them as
// they come; shared by the strokes and record files.
#pragma once

#include <scrivlet/engine/signature_point.h>

#include "host/json_reading.h"

#include <cstdint>
#include <optional>
#include <string>

namespace scrivlet {

constexpr const char* kStrokesFormat = "scrivlet-strokes";
constexpr int kStrokesVersion = 1;
// The most a strokes document may hold.
constexpr size_t kMostStrokeJsonBytes = size_t(64) << 20;
constexpr size_t kMostStrokes = 10'000;
constexpr size_t kMostPoints = 1'000'000;

class StrokesReader : public JsonEventHandler {
 public:
  // Takes the events of one document, from its opening brace to its closing one.
  bool take(const JsonEvent& event) override;
  // The last event taken closed the document.
  bool finished() const { return place_ == Place::finished; }
  // Once finished: the strokes, or why there are none (then also in `error`).
  QnStrokeListRef result();

 private:
  enum class Place { start, document, strokes, stroke, point, finished };
  bool member(const JsonEvent& event);
  bool field(const JsonEvent& event);
  bool endPoint();
  // A stroke or point that does not read: nothing more is kept, but the reading goes on, so that a
  // document of another format or version is named as such.
  void spoilt(std::string message);

  Place place_ = Place::start;
  std::string key_;
  std::optional<std::string> format_;
  std::optional<int64_t> version_;
  bool strokesSeen_ = false;
  std::optional<std::string> spoilt_;
  QnStrokeListRef strokes_ = std::make_shared<QnStrokeList>();
  size_t points_ = 0;
  // The point being read: its fields, and which of them have come.
  int field_ = -1;
  double values_[11] = {};
  uint64_t id_ = 0;
  unsigned seen_ = 0;
};

}  // namespace scrivlet
