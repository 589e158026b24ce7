// The device resolution table and the metres-per-point factor.
#include "capture/dpi_calculator.h"

#include <scrivlet/device.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <tuple>

namespace scrivlet {
namespace {

class DPICalculator : public ::testing::Test {
 protected:
  void TearDown() override { unsetenv("SIMULATOR_MODEL_IDENTIFIER"), QnDevice::resetToDefaults(); }
  static void setModel(const char* model) { setenv("SIMULATOR_MODEL_IDENTIFIER", model, 1); }
};

TEST_F(DPICalculator, ModelFromTheEnvironmentGetsItsDensityAndEveryOtherModel401) {
  // The prefix fallback never matches and keys match exactly: unknown tablets and phones are not 264 or 458.
  const std::pair<const char*, int> cases[] = {
      {"iPad6,11", 264}, {"iPad4,4", 326},   {"iPad2,5", 163}, {"iPhone10,3", 458}, {"iPhone10,2", 401},
      {"iPad2,4", 132},  {"iPod7,1", 326},
      {"iPad99,1", 401}, {"iPhone99,1", 401}, {"x86_64", 401}, {"ipad6,11", 401},   {"iPad", 401}, {"", 401}};
  for (const auto& [model, dpi] : cases) {
    setModel(model);
    if (*model) { EXPECT_EQ(QnDPICalculator::deviceModel(), model); }  // the environment comes first
    EXPECT_EQ(QnDPICalculator::deviceDpi(), dpi) << model;
  }
  unsetenv("SIMULATOR_MODEL_IDENTIFIER");
  EXPECT_FALSE(QnDPICalculator::deviceModel().empty()) << "the machine name from uname";
}

TEST_F(DPICalculator, MetersPerPointFollowsDensityAndNativeScale) {
  setModel("iPad6,11");
  QnDevice::setNativeScale(2.0);
  EXPECT_EQ(QnDPICalculator::pixelsPerPoint(), 2.0f);
  // Single precision throughout: the reciprocal first, then the inch in metres.
  const float expected = (1.0f / 264.0f) * 0.0254f;
  EXPECT_EQ(std::pair(QnDPICalculator::metersPerPixel(), QnDPICalculator::metersPerPoint()),
            std::pair(expected, expected * 2.0f));
  setModel("Unknown1,1");
  QnDevice::setNativeScale(3.0);
  EXPECT_NEAR(QnDPICalculator::metersPerPoint(), 1.90025e-04, 1e-9);
}

}  // namespace
}  // namespace scrivlet
