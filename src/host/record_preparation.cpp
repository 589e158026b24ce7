// Records of a canvas, drawn by the pure record renderer from a copy of its strokes and settings.
#include "host/record_preparation.h"

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/scheduler.h>
#include <scrivlet/engine/scrivlet_controller.h>

#include "controller/controller_exports.h"
#include "capture/drawing_controller.h"
#include "export/record_rendering.h"
#include "platform/clock.h"
#include "platform/image.h"
#include "platform/image_background.h"

#include <cstring>

namespace scrivlet {

namespace {

// Points are compared as their bytes: every field, and no padding between them.
static_assert(sizeof(QnSignaturePoint) == 7 * sizeof(double) + 4 * sizeof(float) + sizeof(uint64_t));

bool sameStroke(const QnStrokeRef& a, const QnStrokeRef& b) {
  size_t n = a ? a->size() : 0;
  if (n != (b ? b->size() : 0)) return false;
  return n == 0 || std::memcmp(a->data(), b->data(), n * sizeof(QnSignaturePoint)) == 0;
}

ExportSettings exportSettingsOf(const RecordSettings& s, double unixTime) {
  ExportSettings e = s.exports;
  e.time = unixTime;
  return e;
}

// The outputs, with the PNG on its background when it has one.
RecordParts partsOf(const RecordRequest& request, const ExportSettings& settings) {
  RecordParts parts = renderRecordParts(request.strokes, settings);
  const std::optional<QnColor>& background = request.settings.background;
  if (!background || !parts.png) return parts;
  QnImage image = QnImage::decodePNG(*parts.png);
  paintBehindImage(image, *background);
  std::vector<uint8_t> png = image.encodePNG();
  parts.png = png.empty() ? std::nullopt : std::optional(std::move(png));
  return parts;
}

}  // namespace

bool RecordSettings::operator==(const RecordSettings& other) const {
  ExportSettings mine = exports, theirs = other.exports;
  mine.time = theirs.time = 0;
  return mine == theirs && dateText == other.dateText && background == other.background;
}

bool RecordRequest::sameRecordAs(const RecordRequest& other) const {
  if (!(settings == other.settings)) return false;
  size_t n = strokes ? strokes->size() : 0;
  if (n != (other.strokes ? other.strokes->size() : 0)) return false;
  for (size_t i = 0; i < n; ++i)
    if (!sameStroke((*strokes)[i], (*other.strokes)[i])) return false;
  return true;
}

QnStrokeListRef exactCopyOfStrokes(const QnStrokeListRef& strokes) {
  auto copy = std::make_shared<QnStrokeList>();
  if (!strokes) return copy;
  copy->reserve(strokes->size());
  for (const QnStrokeRef& stroke : *strokes)
    copy->push_back(stroke ? std::make_shared<QnStroke>(*stroke) : std::make_shared<QnStroke>());
  return copy;
}

RecordRequest requestOfCanvas(const QnScrivletController& live, std::optional<QnColor> background) {
  RecordRequest request;
  request.strokes = exactCopyOfStrokes(live.drawingController()->drawingArray());
  RecordSettings& s = request.settings;
  // The controller's snapshot, made for a record drawn away from the screen: its ink clears nothing,
  // and a clipped record is clipped to the view's bounds as they are now.
  s.exports = exportSettingsOf(live);
  s.exports.clearedBeforeInk.reset();
  if (s.exports.clipSignatureToBounds && live.scrivletView()) s.exports.copyOfTargetViewBounds = live.scrivletView()->bounds();
  // A record made a day (or, with the time, a second) before prints another date than one made now.
  if (s.exports.showDate) {
    double now = s.exports.time;
    s.dateText = mediumDateString(now) + (s.exports.dateIncludesTime ? " " + mediumTimeString(now) : "");
  }
  s.background = std::move(background);
  return request;
}

std::shared_ptr<QnSignature> prepareRecordNow(const RecordRequest& request, std::optional<double> unixTime) {
  double time = unixTime.value_or(QnClock::now());
  ExportSettings settings = exportSettingsOf(request.settings, time);
  return signatureOfParts(partsOf(request, settings), request.strokes, settings, time - kReferenceDateOffset);
}

void prepareRecordInBackground(QnContext& context, RecordRequest request,
                               std::function<void(std::shared_ptr<QnSignature>)> ready) {
  auto shared = std::make_shared<RecordRequest>(std::move(request));
  ExportSettings settings = exportSettingsOf(shared->settings, context.now());
  QnScheduler* scheduler = &context.scheduler();
  scheduler->runInBackground([shared, settings, scheduler, &context, ready = std::move(ready)]() mutable {
    auto parts = std::make_shared<RecordParts>(partsOf(*shared, settings));
    // The record is made and handed over on the main thread, at the time it is done.
    scheduler->postToMainThread([shared, settings, parts, &context, ready = std::move(ready)] {
      ready(signatureOfParts(std::move(*parts), shared->strokes, settings, context.now() - kReferenceDateOffset));
    });
  });
}

std::shared_ptr<QnSignature> copyOfRecord(const QnSignature& record) {
  auto copy = std::make_shared<QnSignature>(record);
  copy->setRawPoints(exactCopyOfStrokes(record.rawPoints()));
  return copy;
}

}  // namespace scrivlet
