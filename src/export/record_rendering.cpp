// Every output of a record from the strokes and a settings value, in the order the record is prepared.
#include "export/record_rendering.h"

#include <scrivlet/engine/signature.h>

#include "export/export_renderer.h"
#include "export/export_settings.h"
#include "export/signature_hash.h"
#include "export/stroke_copies.h"
#include "export/time_series_export.h"
#include "platform/image.h"
#include "platform/log.h"
#include "platform/parallel.h"

namespace scrivlet {

RecordParts renderRecordParts(const QnStrokeListRef& strokes, const ExportSettings& settings) {
  RecordParts parts;
  parts.hash = newSignatureHash(settings.customHash);
  // The time series needs nothing but the strokes: it is written beside the drawing.
  Aside xml([&] { return timeSeriesXml(strokes, settings); });
  ExportCanvasFrame frame = exportCanvasFrame(strokes, settings);
  parts.frame.origin = settings.clipSignatureToBounds ? QnPoint{} : QnPoint{frame.x0, frame.y0};
  // The PNG's drawing is kept first; it is drawn and compressed in bands beside the other outputs. A
  // canvas that has no pixels is reported here and now, in its place among the outputs.
  PNGJob drawPNG;
  ExportCanvasOutcome outcome;
  exportOfStrokes(strokes, "PNG", settings, parts.hash, &outcome, &drawPNG);
  // The SVG and the PDF beside the PNG's bands, which this thread draws with the pool's workers as they
  // come free: the largest job is the one shared out. An SVG's refusal is said after the PDF's.
  ExportCanvasOutcome svgOutcome;
  Aside svg([&] { return exportOfStrokes(strokes, "SVG", settings, parts.hash, &svgOutcome); });
  Aside pdf(
      [&]() -> std::optional<std::vector<uint8_t>> {
        if (settings.skipPDFData) return std::nullopt;
        return exportOfStrokes(strokes, "PDF", settings, parts.hash, nullptr);
      },
      !settings.skipPDFData);
  std::vector<uint8_t> encoded = drawPNG ? drawPNG() : std::vector<uint8_t>{};
  parts.pdf = pdf.get();
  if (std::optional<std::vector<uint8_t>> bytes = svg.get())
    parts.svg = std::string(bytes->begin(), bytes->end());
  else if (!svgOutcome.refusal.empty())
    logLine(svgOutcome.refusal);
  parts.frame.size = outcome.size;
  parts.drawnStrokes = std::move(outcome.drawnStrokes);
  parts.xml = xml.get();
  if (!encoded.empty()) parts.png = std::move(encoded);
  return parts;
}

std::shared_ptr<QnSignature> signatureOfParts(RecordParts parts, const QnStrokeListRef& strokes,
                                              const ExportSettings& settings, double timestamp) {
  auto signature = std::make_shared<QnSignature>();
  signature->setFrame(parts.frame);
  signature->setRawPoints(settings.clipSignatureToBounds
                              ? clippedCopyOfStrokes(strokes, settings.copyOfTargetViewBounds)
                              : strokes);
  signature->setHashString(std::move(parts.hash));
  signature->setTimestamp(timestamp);
  signature->setImageData(std::move(parts.png), settings.screenScale);
  if (!settings.skipPDFData) signature->setPdfData(std::move(parts.pdf));
  signature->setSvgString(std::move(parts.svg));
  signature->setXmlString(std::move(parts.xml));
  return signature;
}

}  // namespace scrivlet
