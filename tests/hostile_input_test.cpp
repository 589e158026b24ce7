// Hostile input: what a finger, a pen or a host may do that no screen would, and what must survive it:
// a second controller released on the main thread only, samples that are not finite, garbage view
// sizes, bitmaps beyond the memory budget, and lost touches.
#include <scrivlet/headless_run_loop.h>
#include <scrivlet/headless_touch.h>
#include <scrivlet/facade.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/notification_center.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>

#include "capture/drawing_controller.h"
#include "delegate_log.h"
#include "export_fixture.h"
#include "platform/image_view.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace test_support;
using Touch = std::shared_ptr<HeadlessTouch>;

// Background work runs at once on the calling thread, and its closure is kept afterwards, as a pool
// thread may keep it until after the main thread has moved on.
struct RetainingScheduler : QnScheduler {
  std::shared_ptr<QnTimer> scheduleTimer(double interval, std::function<void()> action) override {
    return loop->scheduleTimer(interval, std::move(action));
  }
  void runInBackground(std::function<void()> work) override { work(), retained.push_back(std::move(work)); }
  void postToMainThread(std::function<void()> task) override { loop->postToMainThread(std::move(task)); }

  std::shared_ptr<HeadlessRunLoop> loop = std::make_shared<HeadlessRunLoop>();
  std::vector<std::function<void()>> retained;
};

class HostileInput : public ::testing::Test {
 protected:
  void TearDown() override {
    QnScheduler::setCurrent(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime));
  }
  const QnStrokeList& strokes() { return *c->drawingController()->drawingArray(); }

  ManualLoop manual;
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 400, 300));
  DelegateLog log;
  std::shared_ptr<QnScrivlet> facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
  std::shared_ptr<QnScrivletController> c = (log.facade = facade, facade->scrivletController());
};

TEST_F(HostileInput, TheSecondControllerOfAPreparationIsReleasedOnTheMainThread) {
  auto scheduler = std::make_shared<RetainingScheduler>();
  QnScheduler::setCurrent(scheduler);
  auto& centre = QnNotificationCenter::defaultCenter();
  touchPaths(*view, {{{10, 10}, {50, 20}}}, 1);
  size_t withFirstPreparer = centre.observerCount();  // its invisible ink view is registered
  scheduler->loop->advance(0.25);                   // prepared in the "background", stored on the main thread
  ASSERT_TRUE(c->cachedSignature());
  touchPaths(*view, {{{60, 10}, {90, 20}}}, 2);      // a new preparer replaces the first
  // The first preparer went with the main-thread step: the closure the background kept holds nothing.
  EXPECT_EQ(centre.observerCount(), withFirstPreparer);
  scheduler->retained.clear();
  EXPECT_EQ(centre.observerCount(), withFirstPreparer);
}

TEST_F(HostileInput, SamplesThatAreNotFiniteAreDroppedAtTheTouchAndCostTheStrokeNothing) {
  const double kNaN = std::nan(""), kInf = INFINITY;
  // A touch that lands where no position is known begins with its first finite sample.
  Touch a = std::make_shared<HeadlessTouch>(QnPoint{kNaN, 5}, 1);
  view->beginTouches({a});
  a->moveTo({10, 10}, 1.01), view->moveTouches({a});
  a->moveTo({kInf, 10}, 1.02), view->moveTouches({a});  // dropped: the stroke goes on from (10, 10)
  a->moveTo({20, 10}, 1.03), view->moveTouches({a});
  a->moveTo({30, 12}, 1.04, QnPoint{kNaN, 0}), view->moveTouches({a});  // a precise position too
  a->moveTo({-0.0, 12}, 1.05), view->moveTouches({a});
  a->moveTo({kNaN, kNaN}, 1.06), view->endTouches({a});  // ends where it last was
  ASSERT_EQ(strokes().size(), 1u);
  EXPECT_EQ(traceOf(c->drawingController()->drawingArray()), (Trace{{{10, 10}, {20, 10}, {0, 12}, {0, 12}}}));
  EXPECT_EQ(log.calls, Calls{"didEndLine 4"});
  // A touch that never had a position ends unseen, and leaves no finger down.
  Touch ghost = std::make_shared<HeadlessTouch>(QnPoint{kInf, kInf}, 2);
  view->beginTouches({ghost}), ghost->moveTo({kNaN, 1}, 2.1), view->moveTouches({ghost}), view->endTouches({ghost});
  EXPECT_TRUE(view->touchesDown().empty());
  // One whose first finite sample comes with its end is a tap there.
  Touch tap = std::make_shared<HeadlessTouch>(QnPoint{kNaN, kNaN}, 3);
  view->beginTouches({tap}), tap->moveTo({200, 50}, 3.1), view->endTouches({tap});
  EXPECT_EQ(traceOf(c->drawingController()->drawingArray()).back(), (Path{{200, 50}, {200, 50}}));
  touchPaths(*view, {{{100, 100}, {120, 110}}}, 4);
  EXPECT_EQ(strokes().size(), 3u);
  for (const QnStrokeRef& stroke : strokes())
    for (const QnSignaturePoint& p : *stroke) EXPECT_TRUE(std::isfinite(p.location.x) && std::isfinite(p.location.y));
}

TEST_F(HostileInput, ViewSizesThatAreNotNumbersOrWouldCarryInkBeyondTheNumbersNeverMoveIt) {
  touchPaths(*view, {{{10, 10}, {50, 20}, {90, 15}}}, 1);
  touchPaths(*view, {{{20, 1.5e308}}}, 2);  // the guideline's move to 0.56e308 would carry it past 1.8e308
  const Trace before = traceOf(c->drawingController()->drawingArray());
  const QnPoint guideline = c->guideline()->frame().origin;
  for (QnSize size : {QnSize{NAN, 300}, QnSize{400, INFINITY}, QnSize{-INFINITY, NAN}, QnSize{400, 1e308},
                      QnSize{400, 300}}) {
    view->setFrame({{0, 0}, size});
    EXPECT_EQ(traceOf(c->drawingController()->drawingArray()), before) << size.width << " x " << size.height;
    EXPECT_EQ(c->guideline()->frame().origin, guideline);
  }
  view->setFrame(makeRect(0, 0, 800, 300));  // a real resize still carries the ink with the guideline
  const double dx = c->guideline()->frame().origin.x - guideline.x;
  EXPECT_GT(dx, 0);
  EXPECT_EQ(traceOf(c->drawingController()->drawingArray()).front().front(), (std::pair(10 + dx, 10.0)));
}

TEST_F(HostileInput, ALostEndDoesNotCountAsAFingerAndTheOpenStrokeIsKept) {
  Touch a = std::make_shared<HeadlessTouch>(QnPoint{10, 10}, 1);
  view->beginTouches({a}), a->moveTo({40, 10}, 1.01), view->moveTouches({a});
  a.reset();  // the host lets go of a touch that never ended: it can never end now
  touchPaths(*view, {{{100, 100}, {140, 110}}}, 2);
  EXPECT_EQ(traceOf(c->drawingController()->drawingArray()),
            (Trace{{{10, 10}, {40, 10}}, {{100, 100}, {140, 110}, {140, 110}}}));
  EXPECT_EQ(log.calls, Calls{"didEndLine 5"});
}

// Records made straight from the strokes, the way a preparation makes them.
class HostileExport : public export_test::ControllerTest {
 protected:
  std::shared_ptr<QnSignature> prepare() {
    testing::internal::CaptureStderr();
    c->prepareScrivletData();
    stderrText = testing::internal::GetCapturedStderr();
    return c->prepareSignature();
  }
  std::string stderrText;
};

TEST_F(HostileExport, BitmapsBeyondTheBudgetAreRefusedAndTheRestOfTheRecordIsDelivered) {
  for (float scale : {1e6f, 1e5f}) {
    c->setExportScale(scale);
    auto record = prepare();
    EXPECT_FALSE(record->imageData()) << scale;
    EXPECT_TRUE(record->svgString() && record->xmlString() && record->hashString() && record->rawPoints());
    EXPECT_NE(stderrText.find("over the budget of 64 megapixels"), std::string::npos) << stderrText;
  }
  // The live ink cache of a huge view is refused too; strokes are still captured.
  testing::internal::CaptureStderr();
  auto huge = HeadlessView::create(makeRect(0, 0, 100000, 100000));
  auto controller = QnScrivletController::create(huge, {}, {});
  touchPaths(*huge, {{{10, 10}, {50, 20}}}, 1);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("over the budget"), std::string::npos);
  EXPECT_EQ(controller->drawingController()->drawingArray()->size(), 1u);
}

// (Scales that are not finite are refused before they reach the controller: log_sink_test.cpp.)
TEST_F(HostileExport, NumbersThatAreNotFiniteNeverReachTheSVG) {
  // A stroke ending far away, and ink as wide as 1e300: the SVG is refused with one line, the rest delivered.
  for (QnStrokeListRef far : {std::make_shared<QnStrokeList>(QnStrokeList{export_test::strokeThrough({{10, 10}, {3.9e174, 20}})}),
                              std::make_shared<QnStrokeList>(QnStrokeList{export_test::strokeThrough({{10, 10}, {1e300, 10}})})}) {
    c->setMyBrushStrokes(far);
    auto record = prepare();
    EXPECT_FALSE(record->svgString());
    EXPECT_TRUE(record->xmlString() && record->hashString());
    size_t svgLine = stderrText.find("Scrivlet: no SVG: a number of the drawing is not finite\n");
    EXPECT_NE(svgLine, std::string::npos) << stderrText;
    // Said in the outputs' order, though the SVG is written beside the PDF.
    size_t pdfLine = stderrText.find("Scrivlet: no PDF");
    EXPECT_TRUE(pdfLine != std::string::npos && pdfLine < svgLine) << stderrText;
    // Asked for alone, the SVG is refused with the same line, said once.
    testing::internal::CaptureStderr();
    EXPECT_FALSE(c->getImageData("SVG"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Scrivlet: no SVG: a number of the drawing is not finite\n");
  }
  c->setMyBrushStrokes(strokes);  // the same controller with ordinary strokes writes its SVG again
  EXPECT_TRUE(prepare()->svgString());
}

}  // namespace
}  // namespace scrivlet
