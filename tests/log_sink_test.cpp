// The log: every line reaches the sink a host installs, from any thread, and standard error otherwise.
#include <scrivlet/scrivlet.h>

#include "export_fixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace scrivlet {
namespace {

using Lines = std::vector<std::pair<LogLevel, std::string>>;

TEST(LogSink, AHostsSinkReceivesTheLibrarysLinesAndStandardErrorNone) {
  std::mutex mutex;
  Lines lines;
  setLogSink([&](LogLevel level, std::string_view line) {
    std::lock_guard lock(mutex);  // the record's parts are drawn on a thread of their own
    lines.emplace_back(level, std::string(line));
  });
  testing::internal::CaptureStderr();
  auto facade = QnScrivlet::scrivletWithViewDelegate(HeadlessView::create(makeRect(0, 0, 300, 200)), nullptr);
  facade->setExportScale(NAN);
  RecordRenderSettings nothingToSee;
  nothingToSee.setExportScale(0);
  auto strokes = std::make_shared<QnStrokeList>(QnStrokeList{export_test::strokeThrough({{10, 10}, {40, 20}})});
  auto record = renderRecordOfStrokes(strokes, nothingToSee);
  EXPECT_FALSE(renderRecordOfStrokes(std::make_shared<QnStrokeList>(), {}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_TRUE(record);
  EXPECT_TRUE(!record->imageData() && !record->pdfData());
  EXPECT_EQ(lines, (Lines{{LogLevel::warning, "Scrivlet: export scale nan refused: not a finite number"},
                          {LogLevel::error, "Scrivlet: no PNG: the image has no pixels"},
                          {LogLevel::error, "Scrivlet: no PDF: a page of 0 x 0 points cannot be made"},
                          {LogLevel::error, "Scrivlet: no record drawn: there are no points to draw"}}));

  // An empty sink gives the lines back to standard error, one line each.
  setLogSink({});
  testing::internal::CaptureStderr();
  facade->setExportScale(INFINITY);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Scrivlet: export scale inf refused: not a finite number\n");
}

TEST(LogSink, ASinkReplacedWhileThreadsLogLosesNoLine) {
  std::atomic<int> first = 0, second = 0;
  setLogSink([&](LogLevel, std::string_view) { ++first; });
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < 2000; ++i) logLine(LogLevel::warning, "a line");
    });
  setLogSink([&](LogLevel, std::string_view) { ++second; });
  threads.clear();
  setLogSink({});
  EXPECT_EQ(first + second, 8000);
}

}  // namespace
}  // namespace scrivlet
