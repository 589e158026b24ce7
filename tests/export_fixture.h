// Set-up shared by the export, record, hash and time-series tests.
#pragma once

#include <gtest/gtest.h>
#include <scrivlet/device.h>
#include <scrivlet/scrivlet_controller.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <scrivlet/headless_view.h>

#include "platform/clock.h"

namespace scrivlet::export_test {

namespace fs = std::filesystem;
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

template <typename Text>
void writeFile(const fs::path& path, const Text& bytes) {
  std::ofstream(path, std::ios::binary) << std::string(bytes.begin(), bytes.end());
}

inline std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A controller on a 300 x 200 view with the clock fixed, strokes spanning a 100 x 40 box from
// (10, 10), and a scratch directory.
class ControllerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    QnClock::setFixedTime(kFixedUnixTime);
    c = QnScrivletController::create(HeadlessView::create(makeRect(0, 0, 300, 200)), {}, {});
    c->setCopyOfTargetViewBounds(makeRect(0, 0, 300, 200));
    c->setMyBrushStrokes(strokes);
    fs::create_directories(dir), fs::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  }
  void TearDown() override { QnClock::setFixedTime(std::nullopt), QnDevice::resetToDefaults(), fs::remove_all(dir); }
  // Runs a command line; its output goes to out.txt in the scratch directory.
  int run(const std::string& command) {
    return std::system((command + " > '" + (dir / "out.txt").string() + "' 2>&1").c_str());
  }
  std::string output() { return readFile(dir / "out.txt"); }
  // Writes the bytes to a scratch file and expects the checker to pass it; the file is returned.
  template <typename Text>
  fs::path expectPasses(const std::string& checker, const Text& bytes, const std::string& name) {
    writeFile(dir / name, bytes);
    EXPECT_EQ(run(checker + " '" + (dir / name).string() + "'"), 0) << checker << ": " << output();
    return dir / name;
  }

  std::shared_ptr<QnScrivletController> c;
  QnStrokeListRef strokes = strokesSpanning(10, 10, 100, 40);
  fs::path dir = fs::temp_directory_path() / ("scrivlet-" + std::to_string(getpid()) + "-" +
                                              ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

}  // namespace scrivlet::export_test
