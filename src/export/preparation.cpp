// Every output of the current strokes, and the signature record built from them.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/signature.h>

#include "platform/clock.h"
#include "platform/image.h"

#include <future>
#include <system_error>

namespace scrivlet {

void QnScrivletController::prepareScrivletData() {
  createAndStoreHashString();
  // The time series needs nothing but the strokes: it is written on a thread of its own meanwhile,
  // or here at the end when no thread can be had.
  std::future<std::string> xml;
  try {
    xml = std::async(std::launch::async, [this] { return createXmlString(); });
  } catch (const std::system_error&) {
  }
  lastLocation_ = QnRectZero;
  // The PNG's pixels are drawn first, as ever; they are compressed meanwhile too. A canvas that has
  // no pixels is reported here and now, in its place among the outputs.
  QnImage pixels;
  exportCanvas("PNG", &pixels);
  std::future<std::vector<uint8_t>> png;
  if (pixels.pixelWidth() > 0 && pixels.pixelHeight() > 0) {
    try {
      png = std::async(std::launch::async, [pixels] { return pixels.encodePNG(); });
    } catch (const std::system_error&) {
    }
  }
  std::vector<uint8_t> encoded = png.valid() ? std::vector<uint8_t>() : pixels.encodePNG();
  // With the PDF skipped, whatever an earlier run left stays.
  if (!skipPDFData_) pdfData_ = getImageData("PDF");
  std::optional<std::vector<uint8_t>> svg = getImageData("SVG");
  svgString_ = svg ? std::optional<std::string>(std::string(svg->begin(), svg->end())) : std::nullopt;
  xmlString_ = xml.valid() ? xml.get() : createXmlString();
  if (png.valid()) encoded = png.get();
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
