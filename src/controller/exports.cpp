// The controller's exports: its settings taken as one value and drawn by the pure renderer, with the
// results kept on the controller and its ink view as the preparation leaves them.
#include <scrivlet/engine/context.h>
#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/engine/signature.h>

#include "capture/dpi_calculator.h"
#include "capture/drawing_controller.h"
#include "controller/controller_exports.h"
#include "export/export_renderer.h"
#include "export/record_rendering.h"
#include "export/signature_hash.h"
#include "export/stroke_copies.h"
#include "export/time_series_export.h"
#include "platform/clock.h"
#include "platform/log.h"
#include "platform/main_thread.h"
#include "render/drawing_view.h"

namespace scrivlet {

namespace {

QnDrawingView* inkViewOf(const QnScrivletController* controller) {
  if (!controller || !controller->drawingController()) return nullptr;
  return controller->drawingController()->canvasView().get();
}

// The ink view keeps the strokes last drawn as its list until the live model sets its own again; on
// the main thread it is shown again.
void leaveInkViewWith(QnDrawingView* inkView, QnStrokeListRef drawn) {
  if (!inkView) return;
  inkView->setMyStrokes(std::move(drawn));
  if (isMainThread()) inkView->setNeedsDisplay();
}

}  // namespace

ExportSettings exportSettingsOf(const QnScrivletController& c) {
  ExportSettings s;
  static_cast<ExportOptions&>(s) = c.settings().exports;
  if (QnDrawingView* inkView = inkViewOf(&c)) {
    s.ink = inkView->ink();
    if (isMainThread()) s.clearedBeforeInk = inkView->bounds();
  }
  s.copyOfTargetViewBounds = c.copyOfTargetViewBounds();
  QnContext& context = c.context();
  s.time = context.now();
  s.screenScale = context.screenScale();
  s.metersPerPoint = QnDPICalculator::metersPerPointAt(QnDPICalculator::deviceDpi(), context.nativeScale());
  return s;
}

void QnScrivletController::prepareScrivletData() {
  RecordParts parts = renderRecordParts(outputs_.myBrushStrokes, exportSettingsOf(*this));
  outputs_.lastHash = std::move(parts.hash);
  outputs_.lastLocation = parts.frame;
  outputs_.imageData = std::move(parts.png);
  // With the PDF skipped, whatever an earlier run left stays.
  if (!skipPDFData()) outputs_.pdfData = std::move(parts.pdf);
  outputs_.svgString = std::move(parts.svg);
  outputs_.xmlString = std::move(parts.xml);
  leaveInkViewWith(inkViewOf(this), std::move(parts.drawnStrokes));
}

std::shared_ptr<QnSignature> QnScrivletController::prepareSignature() const {
  auto signature = std::make_shared<QnSignature>();
  signature->setFrame(outputs_.lastLocation);
  signature->setRawPoints(clipSignatureToBounds()
                              ? copyOfStrokesClippedToBounds(outputs_.myBrushStrokes, outputs_.copyOfTargetViewBounds)
                              : outputs_.myBrushStrokes);
  signature->setHashString(outputs_.lastHash);
  signature->setTimestamp(context().now() - kReferenceDateOffset);
  signature->setImageData(outputs_.imageData, context().screenScale());
  if (!skipPDFData()) signature->setPdfData(outputs_.pdfData);
  signature->setSvgString(outputs_.svgString);
  signature->setXmlString(outputs_.xmlString);
  return signature;
}

std::optional<std::vector<uint8_t>> QnScrivletController::getImageData(const std::string& format) {
  return exportCanvas(format, nullptr);
}

std::optional<std::vector<uint8_t>> QnScrivletController::exportCanvas(const std::string& format,
                                                                       PNGJob* pngLater) {
  ExportCanvasFrame frame = exportCanvasFrame(outputs_.myBrushStrokes, exportSettingsOf(*this));
  outputs_.lastLocation = clipSignatureToBounds() ? QnRectZero : makeRect(frame.x0, frame.y0, 0, 0);
  return cfDataCreatePDFDocumentFromDrawing(outputs_.myBrushStrokes, format, false, this, frame.w, frame.h, frame.x0,
                                            frame.y0, exportScale(), pngLater);
}

std::optional<std::vector<uint8_t>> cfDataCreatePDFDocumentFromDrawing(
    const QnStrokeListRef& strokes, const std::string& format, bool unscaledPNG,
    QnScrivletController* controller, double w, double h, double x0, double y0, float scale,
    PNGJob* pngLater) {
  ExportSettings settings;
  settings.screenScale = QnContext::defaultContext().screenScale();
  settings.time = QnContext::defaultContext().now();
  std::string hash;
  if (controller) settings = exportSettingsOf(*controller), hash = controller->lastHash().value_or("");
  // Without an ink view nothing inks the strokes.
  QnDrawingView* inkView = inkViewOf(controller);
  ExportCanvasOutcome outcome;
  std::optional<std::vector<uint8_t>> bytes =
      drawExportCanvas(inkView ? strokes : std::make_shared<QnStrokeList>(), format, unscaledPNG, settings, hash,
                       w, h, x0, y0, scale, &outcome, pngLater);
  if (!outcome.refusal.empty()) logLine(outcome.refusal);
  if (controller) controller->setLastLocation({controller->lastLocation().origin, outcome.size});
  if (inkView) leaveInkViewWith(inkView, std::move(outcome.drawnStrokes));
  return bytes;
}

void renderSignature(QnComboContext* context, const QnStrokeListRef& strokes, int originX, int originY,
                     QnScrivletController* controller) {
  QnDrawingView* inkView = inkViewOf(controller);
  if (!inkView) return;
  leaveInkViewWith(inkView, renderSignatureWithInk(context, strokes, originX, originY, exportSettingsOf(*controller)));
}

void renderHashWithContext(QnComboContext* context, bool showDate, const QnScrivletController* controller,
                           double canvasHeight, double dateSize) {
  if (!controller) return;
  renderHashBadge(context, showDate, controller->lastHash().value_or(""), controller->exportHashFontSize(),
                  controller->exportHashOpacity(), canvasHeight, dateSize);
}

void QnScrivletController::createAndStoreHashString() { outputs_.lastHash = newSignatureHash(customHash()); }

std::string QnScrivletController::createXmlString() const {
  return timeSeriesXml(outputs_.myBrushStrokes, exportSettingsOf(*this));
}

std::string QnScrivletController::xmlDateString() const { return xmlDateText(context().now()); }

QnStrokeListRef QnScrivletController::copyOfStrokesClippedToBounds(const QnStrokeListRef& strokes, QnRect bounds) {
  return clippedCopyOfStrokes(strokes, bounds);
}

QnStrokeListRef QnScrivletController::copyOfStrokesWithOffset(const QnStrokeListRef& strokes, QnPoint offset) {
  return copyOfStrokesMovedBy(strokes, offset);
}

QnRect QnScrivletController::boundingRectOfStrokesF(const QnStrokeListRef& strokes) {
  return boundingRectOfStrokes(strokes);
}

void QnScrivletController::
    writeSamplePointListStrokesLocationPrescalerTimePrescalerVelocityPrescalerAccelerationPrescalerPressurePrescalerAzimuthPrescalerElevationPrescaler(
        QnXMLSerializer& writer, const QnStrokeListRef& strokes, float locationPrescaler, float timePrescaler,
        float velocityPrescaler, float accelerationPrescaler, float pressurePrescaler, float azimuthPrescaler,
        float elevationPrescaler) {
  writeSamplePoints(writer, strokes, locationPrescaler, timePrescaler, velocityPrescaler, accelerationPrescaler,
                    pressurePrescaler, azimuthPrescaler, elevationPrescaler);
}

std::string QnScrivletController::shortCappedStringOfInt(int value) { return shortCappedText(value); }
std::string QnScrivletController::uShortCappedStringOfInt(int value) { return uShortCappedText(value); }

}  // namespace scrivlet
