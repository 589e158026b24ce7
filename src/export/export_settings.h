// Everything a record's outputs depend on besides the strokes, as one value: the host's export options,
// the ink, the canvas, the time printed and the device facts the outputs carry.
#pragma once

#include <scrivlet/engine/export_options.h>
#include <scrivlet/engine/geometry.h>

#include "render/drawing_view.h"

#include <optional>

namespace scrivlet {

struct ExportSettings : ExportOptions {
  QnInk ink;                      // colour, corner threshold and debugging marks of the strokes
  QnRect copyOfTargetViewBounds;  // the canvas, when clipping
  double time = 0;                // seconds since the Unix epoch: the date line and the XML's capture time
  double screenScale = 1.0;       // pixels per point of the PNG
  float metersPerPoint = (1.0f / 401.0f) * 0.0254f;  // of a device of unknown density: the XML's pen-tip orientation scaling
  // A rectangle cleared on a canvas before the ink, as a live ink view drawing an export on the main
  // thread clears its bounds first; none clears nothing.
  std::optional<QnRect> clearedBeforeInk;

  bool operator==(const ExportSettings&) const = default;
};

}  // namespace scrivlet
