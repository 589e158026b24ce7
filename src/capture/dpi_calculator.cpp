// Pixel densities of known devices and the metres-per-point factor derived from them.
#include "capture/dpi_calculator.h"

#include <scrivlet/engine/device.h>

#include "platform/narrowing.h"

namespace scrivlet {

std::string QnDPICalculator::deviceModel() { return QnDevice::modelIdentifier(); }

std::unordered_map<std::string, int> QnDPICalculator::ppiDictionary() {
  return {
      {"iPad2,1", 132},    {"iPad2,2", 132},    {"iPad2,3", 132},    {"iPad2,4", 132},
      {"iPad2,5", 163},    {"iPad2,6", 163},    {"iPad2,7", 163},
      {"iPad3,1", 264},    {"iPad3,2", 264},    {"iPad3,3", 264},    {"iPad3,4", 264},
      {"iPad3,5", 264},    {"iPad3,6", 264},    {"iPad4,1", 264},    {"iPad4,2", 264},
      {"iPad4,3", 264},    {"iPad5,3", 264},    {"iPad5,4", 264},    {"iPad6,7", 264},
      {"iPad6,8", 264},    {"iPad6,3", 264},    {"iPad6,4", 264},    {"iPad6,11", 264},
      {"iPad6,12", 264},   {"iPad7,1", 264},    {"iPad7,2", 264},    {"iPad7,3", 264},
      {"iPad7,4", 264},    {"iPad7,5", 264},    {"iPad7,6", 264},
      {"iPhone5,1", 326},  {"iPhone5,2", 326},  {"iPhone5,3", 326},  {"iPhone5,4", 326},
      {"iPhone6,1", 326},  {"iPhone6,2", 326},  {"iPhone8,4", 326},  {"iPhone7,2", 326},
      {"iPhone8,1", 326},  {"iPhone9,1", 326},  {"iPhone9,3", 326},  {"iPhone10,1", 326},
      {"iPhone10,4", 326}, {"iPod5,1", 326},    {"iPod7,1", 326},    {"iPad4,4", 326},
      {"iPad4,5", 326},    {"iPad4,6", 326},    {"iPad4,7", 326},    {"iPad4,8", 326},
      {"iPad4,9", 326},    {"iPad5,1", 326},    {"iPad5,2", 326},
      {"iPhone7,1", 401},  {"iPhone8,2", 401},  {"iPhone9,2", 401},  {"iPhone9,4", 401},
      {"iPhone10,2", 401}, {"iPhone10,5", 401},
      {"iPhone10,3", 458}, {"iPhone10,6", 458},
  };
}

int QnDPICalculator::deviceDpi() { return deviceDpiOf(deviceModel()); }

int QnDPICalculator::deviceDpiOf(const std::string& model) {
  auto table = ppiDictionary();
  if (auto found = table.find(model); found != table.end()) return found->second;
  if (model.size() >= 6) {
    // The prefixes are one character shorter than the words they are compared with, so neither
    // comparison can match: every model missing from the table gets 401. Kept as it is.
    if (model.substr(0, 3) == "iPad") return 264;
    if (model.substr(0, 5) == "iPhone") return 458;
    return 401;
  }
  return 401;
}

float QnDPICalculator::metersPerPixel() {
  float reciprocal = 1.0f / static_cast<float>(deviceDpi());
  return reciprocal * 0.0254f;
}

float QnDPICalculator::metersPerPointAt(int dpi, double nativeScale) {
  float reciprocal = 1.0f / static_cast<float>(dpi);
  return reciprocal * 0.0254f * narrowToFloat(nativeScale);
}

float QnDPICalculator::pixelsPerPoint() { return narrowToFloat(QnDevice::nativeScale()); }

float QnDPICalculator::metersPerPoint() { return metersPerPixel() * pixelsPerPoint(); }

}  // namespace scrivlet
