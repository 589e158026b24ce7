// Every output of the current strokes, and the signature record built from them.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/signature.h>

#include "platform/clock.h"

namespace scrivlet {

void QnScrivletController::prepareScrivletData() {
  createAndStoreHashString();
  lastLocation_ = QnRectZero;
  imageData_ = getImageData("PNG");
  // With the PDF skipped, whatever an earlier run left stays.
  if (!skipPDFData_) pdfData_ = getImageData("PDF");
  std::optional<std::vector<uint8_t>> svg = getImageData("SVG");
  svgString_ = svg ? std::optional<std::string>(std::string(svg->begin(), svg->end())) : std::nullopt;
  xmlString_ = createXmlString();
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
