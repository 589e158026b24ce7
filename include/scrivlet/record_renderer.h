// Drawing saved strokes again into a whole record (PNG, PDF, SVG, 19794-7 XML) through the same
// renderer that draws them while signing, away from any screen: for servers, tools and examiners.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/export.h>
#include <scrivlet/engine/signature.h>

#include <memory>
#include <optional>
#include <string>

namespace scrivlet {

struct RecordRenderSettings {
  float exportScale = 1;                  // output units per point
  std::optional<QnColor> strokeColor;     // the ink; the library's default when not given
  bool showDate = false;                  // the date line, of `timestamp`
  bool dateIncludesTime = false;
  bool showHash = false;                  // the hash badge, with `hash`
  std::optional<std::string> hash;        // the record's hash text; a new one when not given
  std::optional<double> timestamp;        // seconds since 1 January 2001 UTC; now when not given
  std::optional<QnColor> background;      // painted under the PNG's ink; transparent when not given
};

// The record of the strokes, drawn as a signing session draws its records. Re-entrant: it touches no
// scheduler, clock or other shared state, so many records may be drawn at once on threads of one
// process. Nothing, with one line on standard error, when there are no points.
SCRIVLET_EXPORT std::shared_ptr<QnSignature> renderRecordOfStrokes(const QnStrokeListRef& strokes,
                                                                    const RecordRenderSettings& settings);

}  // namespace scrivlet
