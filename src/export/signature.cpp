// The signature record's decoding, done when first asked for.
#include <scrivlet/engine/signature.h>

#include <scrivlet/engine/device.h>
#include <scrivlet/engine/pdf_document.h>

#include "platform/image_view.h"

namespace scrivlet {

void QnSignature::setImageData(std::optional<Bytes> data) { setImageData(std::move(data), QnDevice::screenScale()); }

void QnSignature::setImageData(std::optional<Bytes> data, double decodeScale) {
  imageData_ = std::move(data);
  imageView_.reset();
  imageDecodeScale_.reset();
  if (imageData_) imageDecodeScale_ = decodeScale;
}

const std::shared_ptr<QnImageView>& QnSignature::imageView() const {
  if (imageDecodeScale_) {
    QnImage image = QnImage::decodePNG(*imageData_, *imageDecodeScale_);
    if (!image.isNull()) imageView_ = std::make_shared<QnImageView>(image);
    imageDecodeScale_.reset();
  }
  return imageView_;
}

void QnSignature::setPdfData(std::optional<Bytes> data) {
  // Nothing set keeps the document of the data set before, which must be parsed before it goes.
  if (!data) pdf();
  pdfData_ = std::move(data);
  pdfParseOwed_ = pdfData_.has_value();
}

const std::shared_ptr<QnPDFDocument>& QnSignature::pdf() const {
  if (pdfParseOwed_) pdf_ = QnPDFDocument::createWithData(*pdfData_), pdfParseOwed_ = false;
  return pdf_;
}

}  // namespace scrivlet
