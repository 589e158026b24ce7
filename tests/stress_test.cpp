// Strokes drawn while preparations run on real background threads, hundreds of times over, with the
// facade sometimes destroyed mid-preparation: run under ThreadSanitizer in CI
// (SCRIVLET_STRESS_ROUNDS sets the number of rounds).
#include <scrivlet/facade.h>
#include <scrivlet/headless_run_loop.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>

#include "delegate_log.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace scrivlet {
namespace {

using namespace test_support;

TEST(Stress, StrokesDrawnWhilePreparationsRunKeepEveryRecordWhole) {
  const char* env = std::getenv("SCRIVLET_STRESS_ROUNDS");
  const int rounds = env ? std::atoi(env) : 200;
  auto loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime, 2);
  QnScheduler::setCurrent(loop);
  auto view = HeadlessView::create(makeRect(0, 0, 300, 200));
  DelegateLog log;
  std::shared_ptr<QnScrivlet> facade;
  int records = 0;
  log.delegate->scrivletDidCompleteWithSignature = [&records](auto, auto record) {
    ASSERT_TRUE(record && record->imageData() && record->xmlString() && record->rawPoints());
    ++records;
  };
  for (int round = 0; round < rounds; ++round) {
    if (round % 25 == 0) {  // a new facade, the old one dropped while its preparation may still run
      facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
      facade->scrivletController()->setDelayBeforeCaching(0);
    }
    double x = 20 + round % 200, t = round;
    Trace path = {{{x, 40}, {x + 30, 60}, {x + 10, 90}, {x + 40, 120}}};
    // Every fifth stroke is long enough that its pieces reach the kept ink while it is drawn.
    for (int i = 0; round % 5 == 0 && i < 30; ++i) path[0].push_back({x + 40 + i % 7 * 5, 120 - i * 2.5});
    touchPaths(*view, path, t);
    if (round % 7 == 3) facade->scrivletController()->undo();
    if (round % 11 == 5) facade->done();
    if (round % 13 == 6) facade->reset();
    loop->advance(0.001);  // timers fire, preparations start and overlap the next strokes
  }
  facade->done();
  loop->waitForBackgroundWork();
  loop->advance(0.05);
  EXPECT_GT(records, 0);
  QnScheduler::setCurrent(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime));
}

}  // namespace
}  // namespace scrivlet
