// The signature record's Qt accessors.
#include <scrivlet/signature_record.h>

namespace scrivlet {

namespace {

// Seconds from 1970 to 2001-01-01 00:00:00 UTC, the record's epoch.
constexpr qint64 kEpoch2001 = 978307200;

QByteArray bytesOf(const std::optional<QnSignature::Bytes>& bytes) {
  return bytes ? QByteArray(reinterpret_cast<const char*>(bytes->data()), qsizetype(bytes->size())) : QByteArray();
}

QString textOf(const std::optional<std::string>& text) {
  return text ? QString::fromStdString(*text) : QString();
}

}  // namespace

QImage SignatureRecord::image() const {
  QByteArray bytes = png();
  return bytes.isEmpty() ? QImage() : QImage::fromData(bytes, "PNG");
}

QByteArray SignatureRecord::png() const { return signature_ ? bytesOf(signature_->imageData()) : QByteArray(); }
QByteArray SignatureRecord::pdf() const { return signature_ ? bytesOf(signature_->pdfData()) : QByteArray(); }
QString SignatureRecord::svg() const { return signature_ ? textOf(signature_->svgString()) : QString(); }
QString SignatureRecord::xml() const { return signature_ ? textOf(signature_->xmlString()) : QString(); }
QString SignatureRecord::hash() const { return signature_ ? textOf(signature_->hashString()) : QString(); }
QnStrokeListRef SignatureRecord::strokes() const {
  // A copy: the record is a value, and what a host does with the strokes changes neither it nor the pad.
  if (!signature_ || !signature_->rawPoints()) return nullptr;
  auto copy = std::make_shared<QnStrokeList>();
  for (const QnStrokeRef& stroke : *signature_->rawPoints())
    copy->push_back(std::make_shared<QnStroke>(stroke ? *stroke : QnStroke{}));
  return copy;
}

QRectF SignatureRecord::frame() const {
  if (!signature_) return {};
  QnRect f = signature_->frame();
  return {f.origin.x, f.origin.y, f.size.width, f.size.height};
}

QDateTime SignatureRecord::timestamp() const {
  if (!signature_) return {};
  return QDateTime::fromMSecsSinceEpoch(qint64((kEpoch2001 + signature_->timestamp()) * 1000), Qt::UTC);
}

}  // namespace scrivlet
