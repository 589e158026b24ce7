// The one routine that renders the strokes, the date line and the hash badge onto a fitted canvas as
// PNG, PDF or SVG bytes.
#pragma once

#include <scrivlet/signature_point.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class QnComboContext;
// Work that makes a PNG when run: its bytes, or none.
using PNGJob = std::function<std::vector<uint8_t>()>;
class QnScrivletController;

// Renders onto a canvas of w x h points whose top-left corner is (x0, y0) in view coordinates, scaled
// by scale, and returns the bytes of the format "PNG", "PDF" or "SVG" (nothing for any other). With
// unscaledPNG a PNG is drawn at scale 1. Sets the controller's lastLocation to the origin it has and
// the canvas size in output units. With pngLater, a PNG's drawing is kept and the work that draws and
// encodes it is put there, and nothing is returned: the caller runs it when it suits.
std::optional<std::vector<uint8_t>> cfDataCreatePDFDocumentFromDrawing(
    const QnStrokeListRef& strokes, const std::string& format, bool unscaledPNG,
    QnScrivletController* controller, double w, double h, double x0, double y0, float scale,
    PNGJob* pngLater = nullptr);

// Draws the strokes shifted by (-originX, -originY) through the controller's ink view.
void renderSignature(QnComboContext* context, const QnStrokeListRef& strokes, int originX,
                     int originY, QnScrivletController* controller);

// Draws the date line in black at the bottom left of a canvas of the given height.
void renderDate(QnComboContext* context, const std::string& date, double height, double fontSize);

}  // namespace scrivlet
