// Drawing saved strokes again into a whole record (PNG, PDF, SVG, 19794-7 XML) through the same
// renderer that draws them while signing, away from any screen: for servers, tools and examiners.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/export.h>
#include <scrivlet/engine/signature.h>
#include <scrivlet/record_file.h>

#include <memory>
#include <optional>
#include <string>

namespace scrivlet {

// How a record is drawn. Every setting has the library's default until set.
class SCRIVLET_EXPORT RecordRenderSettings {
 public:
  float exportScale() const;                    // output units per point; 1
  const std::optional<QnColor>& strokeColor() const;  // the ink; the library's default when not given
  bool showDate() const;                        // the date line, of `timestamp`
  bool dateIncludesTime() const;
  bool showHash() const;                        // the hash badge, with `hash`
  const std::optional<std::string>& hash() const;  // the record's hash text; a new one when not given
  const std::optional<double>& timestamp() const;  // seconds since 1 January 2001 UTC; now when not given
  const std::optional<QnColor>& background() const;  // painted under the PNG's ink; transparent when not given
  // The device the strokes were signed on: its screen scale is the scale the record's image is shown
  // at, and its density (or, when 0, its model's) sets the time series' resolution. This machine's when
  // not given, or when its scale is not a positive number.
  const std::optional<CaptureDevice>& device() const;
  void setExportScale(float exportScale);
  void setStrokeColor(std::optional<QnColor> strokeColor);
  void setShowDate(bool showDate);
  void setDateIncludesTime(bool dateIncludesTime);
  void setShowHash(bool showHash);
  void setHash(std::optional<std::string> hash);
  void setTimestamp(std::optional<double> timestamp);
  void setBackground(std::optional<QnColor> background);
  void setDevice(std::optional<CaptureDevice> device);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// The record of the strokes, drawn as a signing session draws its records. Re-entrant: it touches no
// scheduler, clock or other shared state, so many records may be drawn at once on threads of one
// process. Nothing, with one line on standard error, when there are no points.
SCRIVLET_EXPORT std::shared_ptr<QnSignature> renderRecordOfStrokes(const QnStrokeListRef& strokes,
                                                                    const RecordRenderSettings& settings);

}  // namespace scrivlet
