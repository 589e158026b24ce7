// The Qt backend: installs Qt's event loop and thread pool as the scheduler and the screen's scale as
// the device's.
#pragma once

#include <scrivlet/qt_export.h>

class QScreen;

namespace scrivlet {

// Call once the QApplication exists, before any capture view is made. A screen wider than 700
// logical points on its short side counts as a pad unless the idiom is given.
SCRIVLET_QT_EXPORT void installQtPlatform(int userInterfaceIdiom = -1);

}  // namespace scrivlet
