// Set-up shared by the export, record, hash and time-series tests.
#pragma once

#include <gtest/gtest.h>
#include <scrivlet/device.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/scrivlet_controller.h>

#include "output_support.h"
#include "platform/clock.h"

#include <array>
#include <cmath>

namespace scrivlet::export_test {

using Bytes = std::vector<uint8_t>;

constexpr double kFixedUnixTime = 1700000000;  // 2023-11-14 22:13:20 UTC

inline std::array<double, 4> edges(QnRect r) { return {r.origin.x, r.origin.y, r.size.width, r.size.height}; }

// A stroke of 3-point-wide ink through the locations.
inline QnStrokeRef strokeThrough(const std::vector<QnPoint>& locations) {
  auto stroke = std::make_shared<QnStroke>();
  for (QnPoint at : locations) stroke->push_back({at, {}, {}, 0, 0, 0, 0, 3, 0});
  return stroke;
}

// A zigzag and a bar whose points span exactly width x height from (x, y).
inline QnStrokeListRef strokesSpanning(double x, double y, double width, double height) {
  std::vector<QnPoint> zigzag;
  for (int i = 0; i <= 8; ++i) zigzag.push_back({x + width * i / 8, i % 2 ? y : y + height});
  QnStrokeRef bar = strokeThrough({{x + 10, y + height / 2}, {x + width - 10, y + height / 2}});
  return std::make_shared<QnStrokeList>(QnStrokeList{strokeThrough(zigzag), bar});
}

// A controller on a 300 x 200 view with the clock fixed, and strokes spanning a 100 x 40 box from
// (10, 10).
class ControllerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    QnClock::setFixedTime(kFixedUnixTime);
    c = QnScrivletController::create(HeadlessView::create(makeRect(0, 0, 300, 200)), {}, {});
    c->setCopyOfTargetViewBounds(makeRect(0, 0, 300, 200));
    c->setMyBrushStrokes(strokes);
  }
  void TearDown() override { QnClock::setFixedTime(std::nullopt), QnDevice::resetToDefaults(); }
  // Keeps the bytes as `name` in the test output folder and expects the checker to pass them; the
  // file's path is returned.
  template <typename Text>
  std::string expectPasses(const std::string& checker, const Text& bytes, const std::string& name) {
    std::string path = test_support::writeOutput(
        std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "/" + name, bytes);
    EXPECT_EQ(test_support::failureOf(checker + " '" + path + "'"), "");
    return path;
  }

  std::shared_ptr<QnScrivletController> c;
  QnStrokeListRef strokes = strokesSpanning(10, 10, 100, 40);
};

}  // namespace scrivlet::export_test
