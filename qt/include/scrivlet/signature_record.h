// A finished signature as a Qt value: the image, the documents, the hash, the strokes and the time.
#pragma once

#include <scrivlet/qt_export.h>
#include <scrivlet/engine/signature.h>

#include <QByteArray>
#include <QDateTime>
#include <QImage>
#include <QMetaType>
#include <QObject>
#include <QRectF>
#include <QString>
#include <QUrl>

#include <memory>

namespace scrivlet {

class SCRIVLET_QT_EXPORT SignatureRecord {
  Q_GADGET
  Q_PROPERTY(QImage image READ image)
  Q_PROPERTY(QByteArray png READ png)
  Q_PROPERTY(QByteArray pdf READ pdf)
  Q_PROPERTY(QString svg READ svg)
  Q_PROPERTY(QString xml READ xml)
  Q_PROPERTY(QString hash READ hash)
  Q_PROPERTY(QRectF frame READ frame)
  Q_PROPERTY(QDateTime timestamp READ timestamp)
  Q_PROPERTY(QString strokesJson READ strokesJson)

 public:
  SignatureRecord() = default;
  explicit SignatureRecord(std::shared_ptr<QnSignature> signature);

  bool isNull() const;
  // The PNG decoded, at the screen's pixel density; null without a PNG.
  QImage image() const;
  QByteArray png() const;
  // The one-page PDF; empty when PDF output was skipped.
  QByteArray pdf() const;
  QString svg() const;
  // The ISO/IEC 19794-7 time series.
  QString xml() const;
  QString hash() const;
  // A copy of the strokes, the record's own.
  QnStrokeListRef strokes() const;
  // Where the exported area lies in the view, and the canvas's size.
  QRectF frame() const;
  // When the record was made, in UTC.
  QDateTime timestamp() const;
  // The strokes as the document of strokesToJson.
  QString strokesJson() const;
  const std::shared_ptr<QnSignature>& signature() const;

  // Writes a part of the record to a local file (a file: URL or a path): format "png", "pdf", "svg",
  // "xml", "record" (the record file of recordToJson) or "strokes" (the strokes document); without a
  // format, the file's suffix names it (".json" for the record file). Whether the file was written;
  // a part the record lacks (a skipped PDF) writes nothing.
  Q_INVOKABLE bool save(const QUrl& file, const QString& format = QString()) const;

 private:
  std::shared_ptr<QnSignature> signature_;  // shared by copies: the record's parts never change
};

}  // namespace scrivlet

Q_DECLARE_METATYPE(scrivlet::SignatureRecord)
