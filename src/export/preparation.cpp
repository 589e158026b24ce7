// Every output of the current strokes, and the signature record built from them.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/signature.h>

#include "export/export_renderer.h"
#include "platform/clock.h"
#include "platform/parallel.h"

namespace scrivlet {

void QnScrivletController::prepareScrivletData() {
  createAndStoreHashString();
  // The time series needs nothing but the strokes: it is written on a thread of its own meanwhile.
  Aside xml([this] { return createXmlString(); });
  lastLocation_ = QnRectZero;
  // The PNG's drawing is kept first, as ever; it is drawn and compressed meanwhile too. A canvas that
  // has no pixels is reported here and now, in its place among the outputs.
  PNGJob drawPNG;
  exportCanvas("PNG", &drawPNG);
  Aside png([&drawPNG] { return drawPNG ? drawPNG() : std::vector<uint8_t>{}; }, bool(drawPNG));
  // With the PDF skipped, whatever an earlier run left stays.
  if (!skipPDFData_) pdfData_ = getImageData("PDF");
  std::optional<std::vector<uint8_t>> svg = getImageData("SVG");
  svgString_ = svg ? std::optional<std::string>(std::string(svg->begin(), svg->end())) : std::nullopt;
  xmlString_ = xml.get();
  std::vector<uint8_t> encoded = png.get();
  imageData_ = encoded.empty() ? std::nullopt : std::optional(std::move(encoded));
}

std::shared_ptr<QnSignature> QnScrivletController::prepareSignature() const {
  auto signature = std::make_shared<QnSignature>();
  signature->setFrame(lastLocation_);
  signature->setRawPoints(clipSignatureToBounds_
                              ? copyOfStrokesClippedToBounds(myBrushStrokes_, copyOfTargetViewBounds_)
                              : myBrushStrokes_);
  signature->setHashString(lastHash_);
  signature->setTimestamp(QnClock::timeIntervalSinceReferenceDate());
  signature->setImageData(imageData_);
  if (!skipPDFData_) signature->setPdfData(pdfData_);
  signature->setSvgString(svgString_);
  signature->setXmlString(xmlString_);
  return signature;
}

}  // namespace scrivlet
