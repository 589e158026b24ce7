// The signature record's Qt accessors.
#include <scrivlet/signature_record.h>

#include "qt_log.h"

#include <scrivlet/record_file.h>
#include <scrivlet/stroke_json.h>

#include <QFileInfo>
#include <QSaveFile>

namespace scrivlet {

SignatureRecord::SignatureRecord(std::shared_ptr<QnSignature> signature) : signature_(std::move(signature)) {}

bool SignatureRecord::isNull() const { return !signature_; }
const std::shared_ptr<QnSignature>& SignatureRecord::signature() const { return signature_; }

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

QString SignatureRecord::strokesJson() const {
  return signature_ ? QString::fromStdString(strokesToJson(signature_->rawPoints())) : QString();
}

bool SignatureRecord::save(const QUrl& file, const QString& format) const {
  QString path = file.isLocalFile() ? file.toLocalFile() : file.scheme().isEmpty() ? file.path() : QString();
  if (!signature_ || path.isEmpty())
    return logWarning("Scrivlet: record not saved: no record or not a local file"), false;
  QString kind = format.isEmpty() ? QFileInfo(path).suffix().toLower() : format.toLower();
  QByteArray bytes = kind == "png"     ? png()
                     : kind == "pdf"   ? pdf()
                     : kind == "svg"   ? svg().toUtf8()
                     : kind == "xml"   ? xml().toUtf8()
                     : kind == "strokes" ? strokesJson().toUtf8()
                     : kind == "record" || kind == "json" ? QByteArray::fromStdString(recordToJson(*signature_))
                                                           : QByteArray();
  if (bytes.isEmpty())
    return logWarning(QString::asprintf("Scrivlet: record not saved: no %s part", qPrintable(kind))), false;
  QSaveFile out(path);
  if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit())
    return logWarning(QString::asprintf("Scrivlet: record not saved to %s: %s", qPrintable(path),
                                        qPrintable(out.errorString()))),
           false;
  return true;
}

}  // namespace scrivlet
