// The finished signature record: PNG, PDF, SVG, ISO/IEC 19794-7 XML, hash, frame, time and strokes.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class QnImageView;
class QnPDFDocument;

class SCRIVLET_EXPORT QnSignature {
 public:
  using Bytes = std::vector<uint8_t>;

  // The PNG image, and an image view showing it at the screen scale of the moment it was set (the
  // device's, or the one given: the scale of the screen the record was made for). The PNG is decoded
  // when the view is first asked for, so that handing over a record costs no decoding.
  const std::optional<Bytes>& imageData() const { return imageData_; }
  void setImageData(std::optional<Bytes> data);
  void setImageData(std::optional<Bytes> data, double decodeScale);
  const std::shared_ptr<QnImageView>& imageView() const;
  void setImageView(std::shared_ptr<QnImageView> view) { imageView_ = std::move(view), imageDecodeScale_.reset(); }

  // The one-page PDF; absent when PDF output was skipped. Setting it gives pdf the parsed document,
  // parsed when first asked for; setting nothing leaves pdf as it was.
  const std::optional<Bytes>& pdfData() const { return pdfData_; }
  void setPdfData(std::optional<Bytes> data);
  const std::shared_ptr<QnPDFDocument>& pdf() const;

  const std::optional<std::string>& svgString() const { return svgString_; }
  void setSvgString(std::optional<std::string> svg) { svgString_ = std::move(svg); }
  const std::optional<std::string>& xmlString() const { return xmlString_; }
  void setXmlString(std::optional<std::string> xml) { xmlString_ = std::move(xml); }
  const std::optional<std::string>& hashString() const { return hashString_; }
  void setHashString(std::optional<std::string> hash) { hashString_ = std::move(hash); }

  // Origin: the exported area's top-left corner in view coordinates ((0, 0) when clipped to the
  // view); size: the export canvas in output units.
  QnRect frame() const { return frame_; }
  void setFrame(QnRect frame) { frame_ = frame; }
  // Seconds since 1 January 2001 00:00:00 UTC when the record was made.
  double timestamp() const { return timestamp_; }
  void setTimestamp(double timestamp) { timestamp_ = timestamp; }
  // The strokes the record was made from.
  const QnStrokeListRef& rawPoints() const { return rawPoints_; }
  void setRawPoints(QnStrokeListRef strokes) { rawPoints_ = std::move(strokes); }

 private:
  // A record is read on one thread at a time, like every other object a host is handed: the decoding
  // getters fill these in place.
  std::optional<Bytes> imageData_;
  mutable std::shared_ptr<QnImageView> imageView_;
  mutable std::optional<double> imageDecodeScale_;  // a decoding owed, at this scale
  std::optional<Bytes> pdfData_;
  mutable std::shared_ptr<QnPDFDocument> pdf_;
  mutable bool pdfParseOwed_ = false;
  std::optional<std::string> svgString_;
  std::optional<std::string> xmlString_;
  std::optional<std::string> hashString_;
  QnRect frame_;
  double timestamp_ = 0;
  QnStrokeListRef rawPoints_;
};

}  // namespace scrivlet
