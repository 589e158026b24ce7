// What the host chooses about a record's outputs: their scale, the canvas, the date and hash lines and
// whether a PDF is made. The signing controller keeps them as one value, and the record renderer takes
// them whole.
#pragma once

#include <optional>
#include <string>

namespace scrivlet {

struct ExportOptions {
  float strokeWidthMax = 4.0f;  // the margin round the strokes is one and a half of it
  float exportScale = 1.0f;     // output units per point
  bool clipSignatureToBounds = false;
  bool showDate = false, dateIncludesTime = false;
  float exportDateSize = 20.0f;
  bool showHash = false;
  float exportHashFontSize = 23.0f;
  float exportHashOpacity = 0.9f;
  std::optional<std::string> customHash;  // replaces the generated hash, even when empty
  bool skipPDFData = false;

  bool operator==(const ExportOptions&) const = default;
};

}  // namespace scrivlet
