// The hash badge printed on exports: a padlock and the hash text in the bottom-left corner.
#pragma once

namespace scrivlet {

class QnComboContext;
class QnScrivletController;

// Draws the badge for a canvas of height canvasHeight, above the date line when one is shown. Raster
// and PDF targets get a light badge with a shadow at the controller's hash opacity; SVG gets grey text
// and padlock.
void renderHashWithContext(QnComboContext* context, bool showDate,
                           const QnScrivletController* controller, double canvasHeight,
                           double dateSize);

}  // namespace scrivlet
