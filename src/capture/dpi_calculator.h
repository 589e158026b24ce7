// The physical size of screen units: the device's pixel density from a fixed table of models.
#pragma once

#include <string>
#include <unordered_map>

namespace scrivlet {

// Every answer is computed afresh on each call.
class QnDPICalculator {
 public:
  static std::string deviceModel();
  static std::unordered_map<std::string, int> ppiDictionary();
  // Pixels per inch: the table's value, else 401; of this device, or of the model named.
  static int deviceDpi();
  static int deviceDpiOf(const std::string& model);
  static float metersPerPixel();
  static float pixelsPerPoint();
  static float metersPerPoint();
  // The same for a screen of this density and native scale.
  static float metersPerPointAt(int dpi, double nativeScale);
};

}  // namespace scrivlet
