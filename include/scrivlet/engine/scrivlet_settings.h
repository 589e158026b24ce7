// Every setting of a signing controller as one value: capture, the guideline, undo, the export
// options the record takes whole, and the preparation's delay.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/export_options.h>

namespace scrivlet {

struct QnScrivletSettings {
  ExportOptions exports;
  bool showGuideline = true;
  bool swipeToUndoEnabled = true;
  bool drawOnlyWithApplePencil = false;
  bool useCalligraphicBrush = false;
  float velocityReduction = 0.85f;
  float exportHashSizeWidth = 200.0f;
  float exportHashSizeHeight = 22.0f;
  float exportFontRatio = 0.55f;
  float smoothingAmount = 3.5f;
  QnColor strokeExportColor = QnColor::black();
  double delayBeforeCaching = 0.2;
};

}  // namespace scrivlet
