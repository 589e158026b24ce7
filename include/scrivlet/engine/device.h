// What the library knows of the device: its model identifier, screen scales and interface idiom.
#pragma once

#include <scrivlet/export.h>

#include <string>

namespace scrivlet {

enum QnUserInterfaceIdiom { kQnUserInterfaceIdiomPhone = 0, kQnUserInterfaceIdiomPad = 1 };

// Process-wide device facts. A backend (or a test) configures them; without one the device is a phone
// with scale 1. Safe to read from any thread.
class SCRIVLET_EXPORT QnDevice {
 public:
  // The environment variable SIMULATOR_MODEL_IDENTIFIER when set, else the machine name from uname.
  static std::string modelIdentifier();

  // Layout points to logical pixels: the scale bitmaps are made at.
  static double screenScale();
  static void setScreenScale(double scale);
  // Layout points to physical pixels.
  static double nativeScale();
  static void setNativeScale(double scale);

  static int userInterfaceIdiom();
  static void setUserInterfaceIdiom(int idiom);
  // Whether the device can tell its idiom at all.
  static bool reportsUserInterfaceIdiom();
  static void setReportsUserInterfaceIdiom(bool reports);

  // Back to the headless defaults.
  static void resetToDefaults();
};

}  // namespace scrivlet
