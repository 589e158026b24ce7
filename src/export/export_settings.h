// Everything a record's outputs depend on besides the strokes, as one value: the exports' settings,
// the ink, the time printed and the device facts the outputs carry.
#pragma once

#include <scrivlet/engine/geometry.h>

#include "render/drawing_view.h"

#include <optional>
#include <string>

namespace scrivlet {

struct ExportSettings {
  QnInk ink;                    // colour, corner threshold and debugging marks of the strokes
  float strokeWidthMax = 4.0f;  // the margin round the strokes is one and a half of it
  float exportScale = 1.0f;     // output units per point
  bool clipSignatureToBounds = false;
  QnRect copyOfTargetViewBounds;  // the canvas, when clipping
  bool showDate = false, dateIncludesTime = false;
  float exportDateSize = 20.0f;
  bool showHash = false;
  float exportHashFontSize = 23.0f;
  float exportHashOpacity = 0.9f;
  std::optional<std::string> customHash;  // replaces the generated hash, even when empty
  bool skipPDFData = false;
  double time = 0;                // seconds since the Unix epoch: the date line and the XML's capture time
  double screenScale = 1.0;       // pixels per point of the PNG
  float metersPerPoint = (1.0f / 401.0f) * 0.0254f;  // of a device of unknown density: the XML's pen-tip orientation scaling
  // A rectangle cleared on a canvas before the ink, as a live ink view drawing an export on the main
  // thread clears its bounds first; none clears nothing.
  std::optional<QnRect> clearedBeforeInk;

  bool operator==(const ExportSettings&) const = default;
};

}  // namespace scrivlet
