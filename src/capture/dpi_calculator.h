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
  // Pixels per inch: the table's value, else 401.
  static int deviceDpi();
  static float metersPerPixel();
  static float pixelsPerPoint();
  static float metersPerPoint();
};

}  // namespace scrivlet
