// The capture controller's advance preparation of the record, its cache, and the completion calls.
#include <scrivlet/device.h>
#include <scrivlet/facade.h>
#include <scrivlet/pdf_document.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "delegate_log.h"
#include "platform/clock.h"
#include "platform/headless/headless_touch.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <cctype>

namespace scrivlet {
namespace {

using test_support::BackgroundGate;
using test_support::DelegateLog;
using test_support::Trace;
using test_support::traceOf;
using Calls = std::vector<std::string>;

constexpr double kFixedUnixTime = 1700000000.0;  // 721692800 s after 1 January 2001

class Completion : public ::testing::Test {
 protected:
  void SetUp() override {
    QnDevice::resetToDefaults();
    QnClock::setFixedTime(kFixedUnixTime);
    // One background thread, so that a gate can hold the preparations back.
    loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
    QnScheduler::setCurrent(loop);
    view = HeadlessView::create(makeRect(0, 0, 540, 527));
    facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
    log.facade = facade;
    c = facade->scrivletController();
  }
  void TearDown() override {
    gate.open();
    c.reset();
    facade.reset();
    QnScheduler::setCurrent(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime));
    QnClock::setFixedTime(std::nullopt);
    QnDevice::resetToDefaults();
  }
  // One finger down at the first point, moved through the others, lifted at the last: the stroke
  // holds the points and the last one again.
  void draw(const std::vector<QnPoint>& points, double t) {
    auto f = std::make_shared<HeadlessTouch>(points.front(), t);
    view->beginTouches({f});
    for (size_t i = 1; i < points.size(); ++i) {
      f->moveTo(points[i], t + 0.01 * static_cast<double>(i));
      view->moveTouches({f});
    }
    view->endTouches({f});
  }
  size_t strokesOnCanvas() { return c->drawingController()->drawingArray()->size(); }

  std::shared_ptr<HeadlessRunLoop> loop;
  BackgroundGate gate;
  DelegateLog log;
  std::shared_ptr<HeadlessView> view;
  std::shared_ptr<QnScrivlet> facade;
  std::shared_ptr<QnScrivletController> c;
};

const Trace kTraceA = {{{100, 200}, {150, 230}, {200, 210}, {200, 210}}};
const Trace kTraceB = {{{300, 100}, {320, 120}, {320, 120}}};

TEST_F(Completion, DoneSoonAfterAStrokeWaitsForThePreparationAndGetsItsRecord) {
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  EXPECT_EQ(loop->pendingTimerCount(), 1u);
  loop->advance(0.1);
  // Repeated requests while the record is pending set the flags once and yield one call each.
  for (int i = 0; i < 3; ++i) EXPECT_NO_THROW(facade->done());
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4"}));
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 1);
  EXPECT_EQ(c->doneCallbackRequested(), 1);
  loop->advance(0.09);  // 0.19 s after the stroke: not yet
  loop->runUntilIdle();
  EXPECT_EQ(loop->pendingTimerCount(), 1u);
  EXPECT_FALSE(c->cachedSignature());
  EXPECT_EQ(log.calls.size(), 1u);

  loop->advance(0.02);
  EXPECT_EQ(loop->pendingTimerCount(), 0u);
  loop->runUntilIdle();
  ASSERT_EQ(log.calls, (Calls{"didEndLine 4", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 0);
  EXPECT_EQ(c->doneCallbackRequested(), 0);
  const auto& record = log.record(1);
  EXPECT_EQ(c->cachedSignature(), record);
  EXPECT_EQ(traceOf(record->rawPoints()), kTraceA);
  // The points' box (100, 200)-(200, 230) with 1.5 default pen widths (6) around it.
  EXPECT_EQ(record->frame(), makeRect(94, 194, 112, 42));
  ASSERT_TRUE(record->imageData());
  QnImage png = QnImage::decodePNG(*record->imageData());
  ASSERT_FALSE(png.isNull());
  EXPECT_EQ(png.pixelWidth(), 112);
  EXPECT_EQ(png.pixelHeight(), 42);
  EXPECT_TRUE(record->imageView());
  ASSERT_TRUE(record->pdfData());
  ASSERT_TRUE(record->pdf());
  EXPECT_EQ(record->pdf()->numberOfPages(), 1);
  EXPECT_EQ(record->pdf()->pageSize(0), (QnSize{112, 42}));
  ASSERT_TRUE(record->svgString() && record->xmlString() && record->hashString());
  EXPECT_NE(record->svgString()->find("<svg"), std::string::npos);
  EXPECT_NE(record->xmlString()->find("<?xml"), std::string::npos);
  ASSERT_EQ(record->hashString()->size(), 10u);
  for (char digit : *record->hashString()) EXPECT_TRUE(std::isxdigit(static_cast<unsigned char>(digit)));
  EXPECT_EQ(record->timestamp(), 721692800.0);
}

TEST_F(Completion, AStrokeBegunWithinTheDelayCancelsTheEarlierPreparation) {
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  loop->advance(0.15);
  auto f = std::make_shared<HeadlessTouch>(QnPoint{300, 100}, 2);
  view->beginTouches({f});
  EXPECT_EQ(loop->pendingTimerCount(), 0u);
  f->moveTo({320, 120}, 2.01);
  view->moveTouches({f});
  view->endTouches({f});
  EXPECT_EQ(loop->pendingTimerCount(), 1u);
  facade->done();
  // Past the first stroke's moment (0.2 s) but not the second's (0.35 s): nothing was prepared.
  loop->advance(0.15);
  loop->runUntilIdle();
  EXPECT_FALSE(c->cachedSignature());
  loop->advance(0.1);
  loop->runUntilIdle();
  ASSERT_EQ(log.calls, (Calls{"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(traceOf(log.record(1)->rawPoints()), (Trace{kTraceA[0], kTraceB[0]}));
}

TEST_F(Completion, APreparationFinishingAfterANewerStrokeEndedStoresItsOlderRecord) {
  gate.close(*loop);
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  loop->advance(0.25);  // the first preparation is queued, held back by the gate
  EXPECT_EQ(loop->pendingTimerCount(), 0u);
  // It runs while the second stroke is drawn; its result waits in the main queue.
  gate.open();
  draw({{300, 100}, {320, 120}}, 2);
  EXPECT_FALSE(c->cachedSignature());
  EXPECT_EQ(loop->pendingTimerCount(), 1u);
  loop->runUntilIdle();
  ASSERT_TRUE(c->cachedSignature());
  EXPECT_EQ(traceOf(c->cachedSignature()->rawPoints()), kTraceA);
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4", "didEndLine 7"}));
  facade->done();
  EXPECT_EQ(log.calls,
            (Calls{"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(traceOf(log.record(1)->rawPoints()), kTraceA);

  loop->advance(0.25);
  loop->runUntilIdle();
  ASSERT_TRUE(c->cachedSignature());
  EXPECT_NE(c->cachedSignature(), log.record(1));
  EXPECT_EQ(log.calls.size(), 4u);
  facade->done();
  ASSERT_EQ(log.calls.size(), 6u);
  EXPECT_EQ(log.calls[4], "willComplete #2");
  EXPECT_EQ(log.calls[5], "didComplete #2");
  EXPECT_EQ(traceOf(log.record(2)->rawPoints()), (Trace{kTraceA[0], kTraceB[0]}));
}

TEST_F(Completion, PreparationCopiesOnlyItsListOfSettings) {
  c->setSkipPDFData(true);     // not copied: the record still has a PDF
  c->setStrokeWidthMax(10);    // not copied: the margin is 1.5 default widths
  c->setExportScale(2);        // copied
  c->setCustomHash("F00D");    // copied
  draw({{100, 200}, {150, 230}}, 1);
  loop->advance(0.25);
  loop->runUntilIdle();
  const auto& record = c->cachedSignature();
  ASSERT_TRUE(record);
  // Box (100, 200, 50, 30); margin 6 on each side: (94, 194, 62, 42); twice that as the canvas.
  EXPECT_EQ(record->frame(), makeRect(94, 194, 124, 84));
  EXPECT_EQ(record->hashString(), "F00D");
  ASSERT_TRUE(record->pdfData());
  ASSERT_TRUE(record->pdf());
  EXPECT_EQ(record->pdf()->pageSize(0), (QnSize{124, 84}));
  ASSERT_TRUE(record->imageData());
  QnImage png = QnImage::decodePNG(*record->imageData());
  EXPECT_EQ(png.pixelWidth(), 124);
  EXPECT_EQ(png.pixelHeight(), 84);
  // The live controller keeps its own settings.
  EXPECT_TRUE(c->skipPDFData());
  EXPECT_EQ(c->strokeWidthMax(), 10.0f);
}

TEST_F(Completion, AControllerDestroyedDuringAPreparationFinishesSilently) {
  gate.close(*loop);
  draw({{100, 200}, {150, 230}}, 1);
  facade->done();
  loop->advance(0.25);
  std::weak_ptr<QnScrivletController> weak = c;
  gate.open();
  c.reset();
  facade.reset();
  EXPECT_TRUE(weak.expired());
  EXPECT_NO_THROW(loop->runUntilIdle());
  EXPECT_EQ(log.calls, (Calls{"didEndLine 3"}));
}

TEST_F(Completion, CompletionFromTheCacheRepeatsTheSameRecord) {
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  loop->advance(0.25);
  loop->runUntilIdle();
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4"}));
  facade->done();
  facade->done();
  c->willBeDone();
  c->done();
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4", "willComplete #1", "didComplete #1", "willComplete #1",
                              "didComplete #1", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(log.records.size(), 1u);
  EXPECT_EQ(strokesOnCanvas(), 1u);
  // Methods the delegate lacks are skipped.
  log.delegate->scrivletWillCompleteWithSignature = nullptr;
  log.calls.clear();
  facade->done();
  EXPECT_EQ(log.calls, (Calls{"didComplete #1"}));
}

TEST_F(Completion, EmptyCanvasResetAndDismissalCallOnlyWhatTheyShould) {
  {
    SCOPED_TRACE("nothing drawn");
    c->willBeDone();
    EXPECT_TRUE(log.calls.empty());
    c->done();
    facade->done();
    EXPECT_EQ(log.calls, (Calls{"noSignature", "noSignature"}));
    EXPECT_EQ(c->willBeDoneCallbackRequested(), 0);
    EXPECT_EQ(c->doneCallbackRequested(), 0);
  }
  {
    SCOPED_TRACE("reset while armed keeps the timer; the record is prepared but not delivered");
    log.calls.clear();
    draw({{100, 200}, {150, 230}}, 1);
    facade->reset();
    EXPECT_EQ(strokesOnCanvas(), 0u);
    EXPECT_EQ(loop->pendingTimerCount(), 1u);
    facade->done();
    loop->advance(0.25);
    loop->runUntilIdle();
    ASSERT_TRUE(c->cachedSignature());
    EXPECT_EQ(traceOf(c->cachedSignature()->rawPoints()), (Trace{{{100, 200}, {150, 230}, {150, 230}}}));
    EXPECT_EQ(log.calls, (Calls{"didEndLine 3", "noSignature"}));
  }
  {
    SCOPED_TRACE("the modal screen was dismissed");
    log.calls.clear();
    c->didDismissModalView();
    EXPECT_EQ(log.calls, (Calls{"cancel"}));
  }
}

TEST_F(Completion, ResetDuringAPreparationLeavesTheCacheAndTheRequests) {
  gate.close(*loop);
  draw({{100, 200}, {150, 230}}, 1);
  facade->done();
  loop->advance(0.25);
  facade->reset();
  EXPECT_EQ(strokesOnCanvas(), 0u);
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 1);
  EXPECT_EQ(c->doneCallbackRequested(), 1);
  gate.open();
  loop->runUntilIdle();
  ASSERT_EQ(log.calls, (Calls{"didEndLine 3", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(traceOf(log.record(1)->rawPoints()), (Trace{{{100, 200}, {150, 230}, {150, 230}}}));
  EXPECT_EQ(c->cachedSignature(), log.record(1));
  // The canvas is empty now, whatever the cache holds.
  facade->done();
  EXPECT_EQ(log.calls.back(), "noSignature");
}

TEST_F(Completion, AfterUndoingOneOfTwoStrokesCompletionDeliversBoth) {
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  draw({{300, 100}, {320, 120}}, 2);
  loop->advance(0.25);
  loop->runUntilIdle();
  c->undo();
  EXPECT_EQ(strokesOnCanvas(), 1u);
  facade->done();
  ASSERT_EQ(log.calls, (Calls{"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(traceOf(log.record(1)->rawPoints()), (Trace{kTraceA[0], kTraceB[0]}));
  c->undo();
  facade->done();
  EXPECT_EQ(log.calls.back(), "noSignature");
  EXPECT_EQ(log.calls.size(), 5u);
}

TEST_F(Completion, ARequestMadeWhileNothingIsArmedWaitsForALaterPreparation) {
  draw({{100, 200}, {150, 230}, {200, 210}}, 1);
  // A touch-down disarms the timer; its cancellation away from the last draw point arms nothing.
  auto f = std::make_shared<HeadlessTouch>(QnPoint{300, 100}, 2);
  view->beginTouches({f});
  f->moveTo({320, 120}, 2.01);
  view->moveTouches({f});
  f->moveTo({330, 130}, 2.02);
  view->cancelTouches({f});
  EXPECT_EQ(loop->pendingTimerCount(), 0u);
  facade->done();
  loop->advance(1);
  loop->runUntilIdle();
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4"}));
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 1);
  EXPECT_EQ(c->doneCallbackRequested(), 1);

  // The next stroke keeps the unfinished one and, once prepared, answers the waiting request.
  draw({{50, 50}, {60, 60}}, 3);
  loop->advance(0.25);
  loop->runUntilIdle();
  ASSERT_EQ(log.calls, (Calls{"didEndLine 4", "didEndLine 9", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(traceOf(log.record(1)->rawPoints()),
            (Trace{kTraceA[0], {{300, 100}, {320, 120}}, {{50, 50}, {60, 60}, {60, 60}}}));
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 0);
  EXPECT_EQ(c->doneCallbackRequested(), 0);
}

}  // namespace
}  // namespace scrivlet
