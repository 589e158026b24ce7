// Records of a canvas made by a capture controller of their own, on an invisible view.
#include "host/record_preparation.h"

#include <scrivlet/device.h>
#include <scrivlet/scheduler.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "platform/clock.h"
#include "platform/image.h"
#include "platform/image_background.h"
#include "platform/parallel.h"

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

std::shared_ptr<QnScrivletController> preparerOf(const RecordRequest& request) {
  // The exports frame the strokes (or the clipping bounds) themselves: the view only has to exist.
  auto view = std::make_shared<QnView>(makeRect(0, 0, 1, 1));
  std::shared_ptr<QnScrivletController> preparer = QnScrivletController::create(view, {}, {});
  const RecordSettings& s = request.settings;
  preparer->setStrokeWidthMax(s.strokeWidthMax);
  preparer->setUseCalligraphicBrush(s.calligraphic);
  preparer->setStrokeExportColor(s.strokeColor);
  preparer->setShowDate(s.showDate);
  preparer->setDateIncludesTime(s.dateIncludesTime);
  preparer->setShowHash(s.showHash);
  preparer->setCustomHash(s.customHash);
  preparer->setExportScale(s.exportScale);
  preparer->setExportDateSize(s.exportDateSize);
  preparer->setExportHashSizeWidth(s.exportHashSizeWidth);
  preparer->setExportHashSizeHeight(s.exportHashSizeHeight);
  preparer->setExportFontRatio(s.exportFontRatio);
  preparer->setExportHashFontSize(s.exportHashFontSize);
  preparer->setExportHashOpacity(s.exportHashOpacity);
  preparer->setClipSignatureToBounds(s.clipSignatureToBounds);
  preparer->setCopyOfTargetViewBounds(s.clipBounds);
  preparer->setSkipPDFData(s.skipPDF);
  preparer->setMyBrushStrokes(request.strokes);
  return preparer;
}

// The outputs, and the PNG on its background when it has one.
void prepareData(QnScrivletController& preparer, const std::optional<QnColor>& background) {
  preparer.prepareScrivletData();
  if (!background || !preparer.imageData()) return;
  QnImage image = QnImage::decodePNG(*preparer.imageData());
  paintBehindImage(image, *background);
  std::vector<uint8_t> png = image.encodePNG();
  preparer.setImageData(png.empty() ? std::nullopt : std::optional(std::move(png)));
}

}  // namespace

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
  s.strokeColor = live.strokeExportColor();
  s.strokeWidthMax = live.strokeWidthMax();
  s.calligraphic = live.useCalligraphicBrush();
  s.showDate = live.showDate();
  s.dateIncludesTime = live.dateIncludesTime();
  s.showHash = live.showHash();
  // A record made a day (or, with the time, a second) before prints another date than one made now.
  if (s.showDate) {
    double now = QnClock::now();
    s.dateText = mediumDateString(now) + (s.dateIncludesTime ? " " + mediumTimeString(now) : "");
  }
  s.customHash = live.customHash();
  s.exportScale = live.exportScale();
  s.exportDateSize = live.exportDateSize();
  s.exportHashSizeWidth = live.exportHashSizeWidth();
  s.exportHashSizeHeight = live.exportHashSizeHeight();
  s.exportFontRatio = live.exportFontRatio();
  s.exportHashFontSize = live.exportHashFontSize();
  s.exportHashOpacity = live.exportHashOpacity();
  s.clipSignatureToBounds = live.clipSignatureToBounds();
  if (s.clipSignatureToBounds && live.scrivletView()) s.clipBounds = live.scrivletView()->bounds();
  s.skipPDF = live.skipPDFData();
  s.screenScale = QnDevice::screenScale();
  s.background = std::move(background);
  return request;
}

std::shared_ptr<QnSignature> prepareRecordNow(const RecordRequest& request) {
  std::shared_ptr<QnScrivletController> preparer = preparerOf(request);
  // Drawn on a thread of its own, as the advance preparation draws: on the main thread the ink view
  // would treat the export as its own screen, clearing its bounds first.
  Aside([&] { return prepareData(*preparer, request.settings.background), true; }).get();
  return preparer->prepareSignature();
}

void prepareRecordInBackground(RecordRequest request, std::function<void(std::shared_ptr<QnSignature>)> ready) {
  // Made here, on the main thread, like every controller; only its exports run in the background.
  std::shared_ptr<QnScrivletController> preparer = preparerOf(request);
  QnScheduler::current().runInBackground(
      [preparer, background = request.settings.background, ready = std::move(ready)]() mutable {
        prepareData(*preparer, background);
        // The preparer goes back to the main thread, to be let go of there.
        QnScheduler::current().postToMainThread(
            [preparer = std::move(preparer), ready = std::move(ready)] { ready(preparer->prepareSignature()); });
      });
}

std::shared_ptr<QnSignature> copyOfRecord(const QnSignature& record) {
  auto copy = std::make_shared<QnSignature>(record);
  copy->setRawPoints(exactCopyOfStrokes(record.rawPoints()));
  return copy;
}

}  // namespace scrivlet
