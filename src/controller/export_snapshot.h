// The controller's export settings, taken as one value for the pure renderer.
#pragma once

#include "export/export_settings.h"

namespace scrivlet {

class QnScrivletController;

// The settings, the ink of the controller's ink view as it is now, the current time and the device's
// facts. On the main thread the ink view clears its bounds on an export before drawing, as it does
// on its own screen.
ExportSettings exportSettingsOf(const QnScrivletController& controller);

}  // namespace scrivlet
