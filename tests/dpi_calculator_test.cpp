// The device resolution table. (The metres-per-point factor, in single precision, is in the time
// series' orientation scaling: time_series_export_test.cpp.)
#include "capture/dpi_calculator.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace scrivlet {
namespace {

TEST(DPICalculator, ModelFromTheEnvironmentGetsItsDensityAndEveryOtherModel401) {
  // The prefix fallback never matches and keys match exactly: unknown tablets and phones are not 264 or 458.
  const std::pair<const char*, int> cases[] = {{"iPad6,11", 264}, {"iPhone10,3", 458}, {"iPad99,1", 401},
                                               {"iPhone99,1", 401}, {"ipad6,11", 401}, {"iPad", 401}, {"", 401}};
  for (const auto& [model, dpi] : cases) {
    setenv("SIMULATOR_MODEL_IDENTIFIER", model, 1);
    if (*model) { EXPECT_EQ(QnDPICalculator::deviceModel(), model); }  // the environment comes first
    EXPECT_EQ(QnDPICalculator::deviceDpi(), dpi) << model;
  }
  unsetenv("SIMULATOR_MODEL_IDENTIFIER");
  EXPECT_FALSE(QnDPICalculator::deviceModel().empty()) << "the machine name from uname";
}

}  // namespace
}  // namespace scrivlet
