// The pure record renderer: strokes and an ExportSettings value in, every output of the record out.
#pragma once

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class QnSignature;
struct ExportSettings;

// The outputs of one preparation, in the record's terms.
struct RecordParts {
  std::string hash;
  QnRect frame;  // the exported area's origin in view coordinates and the canvas size in output units
  std::optional<std::vector<uint8_t>> png, pdf;  // no PDF when the settings skip it
  std::optional<std::string> svg, xml;
  QnStrokeListRef drawnStrokes;  // the strokes as the ink drew them, moved to the canvas's origin
};

// A fresh hash, the PNG, the PDF (unless skipped), the SVG and the XML of the strokes, which need at
// least one point. Reads nothing but its arguments, changes nothing else and may run on any number of
// threads at once.
RecordParts renderRecordParts(const QnStrokeListRef& strokes, const ExportSettings& settings);

// The record of the parts: the strokes (clipped to the view when the settings clip), the outputs and
// the time (seconds since 1 January 2001 UTC).
std::shared_ptr<QnSignature> signatureOfParts(RecordParts parts, const QnStrokeListRef& strokes,
                                              const ExportSettings& settings, double timestamp);

}  // namespace scrivlet
