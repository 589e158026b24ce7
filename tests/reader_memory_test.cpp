// The readers of outside data never hold more than four times their input at once (plus a constant):
// each reads a 50 MB document in a process of its own, whose peak resident memory is measured from
// just before the reading.
#include <scrivlet/headless_view.h>
#include <scrivlet/record_file.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/stroke_json.h>
#include <scrivlet/time_series_import.h>

#include "platform/crypto.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <random>
#include <sstream>

namespace scrivlet {
namespace {

constexpr size_t kInputSize = 50'000'000;
constexpr long kConstant = 16 << 20;  // the program's own growth: libraries, first allocations

// A field of /proc/self/status, in bytes.
long statusBytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(field + ":")) return std::stol(line.substr(field.size() + 1)) * 1024;
  return -1;
}

// How far the peak resident memory rose above what it was just before `reader` ran, in a child
// process (the input was made before); -2 when the reader did not give what was expected.
long peakGrowthOf(const std::function<bool()>& reader) {
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) return -1;
  pid_t child = fork();
  if (child == 0) {
    // Blocks of 128 KB and more are mapped and given back as soon as they are freed, so that the
    // peak counts what the reader holds, not what the allocator keeps of what it let go; and what
    // the parent freed goes back to the system, not to be counted as reused.
    mallopt(M_MMAP_THRESHOLD, 128 << 10);
    malloc_trim(0);
    long before = statusBytes("VmRSS");
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts again from here
    bool expected = reader();
    long growth = expected ? statusBytes("VmHWM") - before : -2;
    (void)!write(pipeEnds[1], &growth, sizeof growth);
    _exit(0);
  }
  close(pipeEnds[1]);
  long growth = -1;
  if (::read(pipeEnds[0], &growth, sizeof growth) != sizeof growth) growth = -1;
  close(pipeEnds[0]);
  waitpid(child, nullptr, 0);
  return growth;
}

// Strokes of 100 points each, at positions written with every digit, until the document has the size.
QnStrokeListRef strokesOfSize(size_t bytes, std::string& json) {
  auto strokes = std::make_shared<QnStrokeList>();
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> position(0, 1000);
  size_t perStroke = 0;
  uint64_t id = 100;
  for (size_t written = 0; written < bytes; written += perStroke) {
    auto stroke = std::make_shared<QnStroke>();
    for (int i = 0; i < 100; ++i) {
      QnSignaturePoint p;
      p.location = {position(random), position(random)};
      p.velocity = {position(random) / 7, -position(random) / 3};
      p.timestamp = 1 + id / 240.0, p.diameter = 3.1111114f, p.altitudeAngle = 1.5707964f, p.id = id++;
      stroke->push_back(p);
    }
    strokes->push_back(stroke);
    if (!perStroke) perStroke = strokesToJson(strokes).size();
  }
  json = strokesToJson(strokes);
  return strokes;
}

class ReaderMemory : public ::testing::Test {
 protected:
  void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's own memory would be counted";
#endif
  }
  void expectWithinFourTimes(const char* what, size_t inputSize, const std::function<bool()>& reader) {
    long growth = peakGrowthOf(reader);
    std::printf("%s: %zu bytes read with a peak of %ld bytes more (%.2f times)\n", what, inputSize, growth,
                double(growth) / double(inputSize));
    EXPECT_GE(growth, 0) << what;
    EXPECT_LE(growth, 4 * long(inputSize) + kConstant) << what;
  }
};

TEST_F(ReaderMemory, StrokesDocumentsOfFiftyMegabytes) {
  std::string json;
  strokesOfSize(kInputSize, json);
  ASSERT_GE(json.size(), kInputSize);
  expectWithinFourTimes("strokes", json.size(), [&] { return strokesFromJson(json).has_value(); });
  // Refused at the ten-thousand-and-first stroke.
  std::string empty = R"({"format":"scrivlet-strokes","version":1,"strokes":[[])";
  while (empty.size() < kInputSize) empty += ",[]";
  empty += "]}";
  expectWithinFourTimes("empty strokes", empty.size(), [&] { return !strokesFromJson(empty); });
}

TEST_F(ReaderMemory, RecordFilesOfFiftyMegabytes) {
  RecordFile file;
  file.setDevice({"iPad13,4", 2, 264});
  std::string json;
  file.setStrokes(strokesOfSize(kInputSize, json));
  std::string withStrokes = recordFileToJson(file);
  expectWithinFourTimes("record of strokes", withStrokes.size(), [&] { return recordFromJson(withStrokes).has_value(); });
  // An image of 37.5 MB: 50 MB of Base64.
  file.setStrokes(strokesOfSize(1000, json));
  std::vector<uint8_t> png(kInputSize / 4 * 3);
  std::mt19937 random(3);
  for (uint8_t& byte : png) byte = uint8_t(random());
  file.setPng(std::move(png));
  std::string withImage = recordFileToJson(file);
  expectWithinFourTimes("record of an image", withImage.size(), [&] { return recordFromJson(withImage).has_value(); });
}

TEST_F(ReaderMemory, TimeSeriesOfFiftyMegabytes) {
  auto controller = QnScrivletController::create(HeadlessView::create(makeRect(0, 0, 400, 300)), {}, {});
  std::string json;
  controller->setMyBrushStrokes(strokesOfSize(1 << 20, json));
  const size_t perMegabyte = controller->createXmlString().size();  // of time series, for a megabyte of JSON
  controller->setMyBrushStrokes(strokesOfSize((kInputSize / 20 * 21 << 20) / perMegabyte, json));
  const std::string xml = controller->createXmlString();
  ASSERT_GE(xml.size(), kInputSize);
  expectWithinFourTimes("time series", xml.size(), [&] { return strokesFromTimeSeriesXml(xml).has_value(); });
}

}  // namespace
}  // namespace scrivlet
