// The device resolution table and the metres-per-point factor.
#include "capture/dpi_calculator.h"

#include <scrivlet/device.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

namespace scrivlet {
namespace {

class DPICalculator : public ::testing::Test {
 protected:
  void TearDown() override {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    QnDevice::resetToDefaults();
  }
  static int dpiOf(const char* model) {
    setenv("SIMULATOR_MODEL_IDENTIFIER", model, 1);
    return QnDPICalculator::deviceDpi();
  }
};

TEST_F(DPICalculator, TableHoldsSixtyOneModelsWithTheirDensities) {
  auto table = QnDPICalculator::ppiDictionary();
  EXPECT_EQ(table.size(), 61u);
  std::multiset<int> values;
  for (auto& [model, ppi] : table) values.insert(ppi);
  EXPECT_EQ(values.count(132), 4u);
  EXPECT_EQ(values.count(163), 3u);
  EXPECT_EQ(values.count(264), 23u);
  EXPECT_EQ(values.count(326), 23u);
  EXPECT_EQ(values.count(401), 6u);
  EXPECT_EQ(values.count(458), 2u);
  EXPECT_EQ(table.at("iPad2,4"), 132);
  EXPECT_EQ(table.at("iPad6,12"), 264);
  EXPECT_EQ(table.at("iPod7,1"), 326);
  EXPECT_EQ(table.at("iPhone10,6"), 458);
}

TEST_F(DPICalculator, KnownModelsGetTheirDensityAndEveryOtherModel401) {
  EXPECT_EQ(dpiOf("iPad6,11"), 264);
  EXPECT_EQ(dpiOf("iPad4,4"), 326);  // a small tablet
  EXPECT_EQ(dpiOf("iPad2,5"), 163);
  EXPECT_EQ(dpiOf("iPhone10,3"), 458);
  EXPECT_EQ(dpiOf("iPhone10,2"), 401);
  // The prefix fallback never matches: unknown tablets and phones are not 264 or 458.
  EXPECT_EQ(dpiOf("iPad99,1"), 401);
  EXPECT_EQ(dpiOf("iPhone99,1"), 401);
  EXPECT_EQ(dpiOf("x86_64"), 401);
  EXPECT_EQ(dpiOf("ipad6,11"), 401);  // keys match exactly
  EXPECT_EQ(dpiOf("iPad"), 401);
  EXPECT_EQ(dpiOf(""), 401);
}

TEST_F(DPICalculator, ModelComesFromTheEnvironmentBeforeTheMachineName) {
  setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad2,5", 1);
  EXPECT_EQ(QnDPICalculator::deviceModel(), "iPad2,5");
  unsetenv("SIMULATOR_MODEL_IDENTIFIER");
  EXPECT_FALSE(QnDPICalculator::deviceModel().empty()) << "the machine name from uname";
}

TEST_F(DPICalculator, MetersPerPointFollowsDensityAndNativeScale) {
  setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad6,11", 1);
  QnDevice::setNativeScale(2.0);
  EXPECT_NEAR(QnDPICalculator::metersPerPixel(), 9.6212e-05, 1e-9);
  EXPECT_EQ(QnDPICalculator::pixelsPerPoint(), 2.0f);
  EXPECT_NEAR(QnDPICalculator::metersPerPoint(), 1.92424e-04, 1e-9);
  // Single precision throughout: the reciprocal first, then the inch in metres.
  float expected = (1.0f / 264.0f) * 0.0254f;
  EXPECT_EQ(QnDPICalculator::metersPerPixel(), expected);
  EXPECT_EQ(QnDPICalculator::metersPerPoint(), expected * 2.0f);

  setenv("SIMULATOR_MODEL_IDENTIFIER", "Unknown1,1", 1);
  QnDevice::setNativeScale(3.0);
  EXPECT_NEAR(QnDPICalculator::metersPerPoint(), 1.90025e-04, 1e-9);
}

}  // namespace
}  // namespace scrivlet
