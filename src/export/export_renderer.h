// The one routine that renders the strokes, the date line and the hash badge onto a fitted canvas as
// PNG, PDF or SVG bytes.
#pragma once

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class QnComboContext;
// Work that makes a PNG when run: its bytes, or none.
using PNGJob = std::function<std::vector<uint8_t>()>;
struct ExportSettings;

// The canvas round the strokes in view coordinates: w x h points with the top-left corner (x0, y0).
struct ExportCanvasFrame {
  double w = 0, h = 0, x0 = 0, y0 = 0;
};

// What drawing a canvas leaves besides its bytes.
struct ExportCanvasOutcome {
  QnSize size;                  // the canvas in output units
  QnStrokeListRef drawnStrokes;  // the strokes as drawn: moved to the canvas's whole-number origin
  std::string refusal;  // the line saying why no SVG came, for the caller to say in its own order
};

// The canvas of the strokes: one and a half pen widths round them and the date's room, or the view's
// bounds at (0, 0) when clipping.
ExportCanvasFrame exportCanvasFrame(const QnStrokeListRef& strokes, const ExportSettings& settings);

// The bytes of "PNG", "PDF" or "SVG" of the strokes on their canvas (nothing for another format), with
// the hash on the badge when the settings show one.
std::optional<std::vector<uint8_t>> exportOfStrokes(const QnStrokeListRef& strokes, const std::string& format,
                                                    const ExportSettings& settings, const std::string& hash,
                                                    ExportCanvasOutcome* outcome = nullptr,
                                                    PNGJob* pngLater = nullptr);

// Renders onto a canvas of w x h points whose top-left corner is (x0, y0) in view coordinates, scaled
// by scale, and returns the bytes of the format "PNG", "PDF" or "SVG" (nothing for any other). With
// unscaledPNG a PNG is drawn at scale 1. With pngLater, a PNG's drawing is kept and the work that
// draws and encodes it is put there, and nothing is returned: the caller runs it when it suits. Reads nothing but its arguments.
std::optional<std::vector<uint8_t>> drawExportCanvas(
    const QnStrokeListRef& strokes, const std::string& format, bool unscaledPNG, const ExportSettings& settings,
    const std::string& hash, double w, double h, double x0, double y0, float scale,
    ExportCanvasOutcome* outcome = nullptr, PNGJob* pngLater = nullptr);

// Draws the strokes shifted by (-originX, -originY) with the settings' ink, and answers the shifted copy.
QnStrokeListRef renderSignatureWithInk(QnComboContext* context, const QnStrokeListRef& strokes, int originX,
                                       int originY, const ExportSettings& settings);
// Draws the date line in black at the bottom left of a canvas of the given height.
void renderDate(QnComboContext* context, const std::string& date, double height, double fontSize);

}  // namespace scrivlet
