// The signature record's decoding setters.
#include <scrivlet/signature.h>

#include <scrivlet/device.h>
#include <scrivlet/pdf_document.h>

#include "platform/image_view.h"

namespace scrivlet {

void QnSignature::setImageData(std::optional<Bytes> data) {
  imageData_ = std::move(data);
  imageView_.reset();
  if (!imageData_) return;
  QnImage image = QnImage::decodePNG(*imageData_, QnDevice::screenScale());
  if (!image.isNull()) imageView_ = std::make_shared<QnImageView>(image);
}

void QnSignature::setPdfData(std::optional<Bytes> data) {
  pdfData_ = std::move(data);
  if (pdfData_) pdf_ = QnPDFDocument::createWithData(*pdfData_);
}

}  // namespace scrivlet
