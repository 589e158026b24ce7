// The exports as the controller makes them: its settings taken as one value for the pure renderer,
// and the export routines that read a controller's hash and ink view.
#pragma once

#include "export/export_renderer.h"
#include "export/export_settings.h"

namespace scrivlet {

class QnScrivletController;

// The settings, the ink of the controller's ink view as it is now, the current time and the device's
// facts. On the main thread the ink view clears its bounds on an export before drawing, as it does
// on its own screen.
ExportSettings exportSettingsOf(const QnScrivletController& controller);

// drawExportCanvas with the controller's settings, hash and ink view: sets the controller's
// lastLocation to the origin it has and the canvas size in output units, and leaves the ink view with
// the strokes as drawn.
std::optional<std::vector<uint8_t>> cfDataCreatePDFDocumentFromDrawing(
    const QnStrokeListRef& strokes, const std::string& format, bool unscaledPNG,
    QnScrivletController* controller, double w, double h, double x0, double y0, float scale,
    PNGJob* pngLater = nullptr);

// Draws the strokes shifted by (-originX, -originY) through the controller's ink view.
void renderSignature(QnComboContext* context, const QnStrokeListRef& strokes, int originX,
                     int originY, QnScrivletController* controller);

// The badge with the controller's hash, font size and opacity.
void renderHashWithContext(QnComboContext* context, bool showDate,
                           const QnScrivletController* controller, double canvasHeight,
                           double dateSize);

}  // namespace scrivlet
