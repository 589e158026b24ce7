// The capture controller: construction and teardown, settings, geometry observation and touch routing.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/device.h>
#include <scrivlet/gesture_recognizer.h>

#include "capture/drawing_controller.h"
#include "controller/touches_observer_gesture_recognizer.h"
#include "platform/headless/headless_touch.h"
#include "platform/headless/headless_view.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace scrivlet {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::shared_ptr<HeadlessTouch> finger(double x, double y, double t) {
  return std::make_shared<HeadlessTouch>(QnPoint{x, y}, t);
}

struct Expected {
  double x, y;
  uint64_t id;
};

void expectStroke(const QnStrokeRef& stroke, const std::vector<Expected>& expected) {
  ASSERT_TRUE(stroke);
  ASSERT_EQ(stroke->size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE("point " + std::to_string(i));
    EXPECT_EQ((*stroke)[i].location, (QnPoint{expected[i].x, expected[i].y}));
    EXPECT_EQ((*stroke)[i].id, expected[i].id);
  }
}

class ScrivletController : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad6,11", 1);
    QnDevice::setNativeScale(2.0);
    view = HeadlessView::create(makeRect(0, 0, 540, 527));
    delegate = std::make_shared<QnScrivletControllerDelegate>();
    delegate->scrivletDidEndLineWithSignaturePointCount =
        [this](std::shared_ptr<QnScrivlet>, unsigned long count) { endLineCounts.push_back(count); };
    c = QnScrivletController::create(view, delegate, {});
  }
  void TearDown() override {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    QnDevice::resetToDefaults();
  }
  QnDemoDrawingController& model() { return *c->drawingController(); }
  const QnStrokeList& strokes() { return *model().drawingArray(); }
  uint64_t inkDisplayRequests() { return model().canvasView()->displayRequestCount(); }
  // Three fingers land together, travel sideways in two steps of dx / 2, and lift.
  void swipe(double dx, double t) {
    auto a = finger(200, 100, t), b = finger(220, 100, t), d = finger(240, 100, t);
    view->beginTouches({a, b, d});
    for (int step = 1; step <= 2; ++step) {
      for (const auto& f : {a, b, d})
        f->moveTo({f->locationInView(nullptr).x + dx / 2, 100}, t + 0.01 * step);
      view->moveTouches({a, b, d});
    }
    view->endTouches({a, b, d});
  }

  std::shared_ptr<HeadlessView> view;
  std::shared_ptr<QnScrivletControllerDelegate> delegate;
  std::vector<unsigned long> endLineCounts;
  std::shared_ptr<QnScrivletController> c;
};

TEST_F(ScrivletController, ConstructionSetsEveryDefaultAndAttachesToTheView) {
  EXPECT_TRUE(c->showGuideline());
  EXPECT_FALSE(c->showDate());
  EXPECT_FALSE(c->dateIncludesTime());
  EXPECT_FALSE(c->showHash());
  EXPECT_FALSE(c->clipSignatureToBounds());
  EXPECT_TRUE(c->swipeToUndoEnabled());
  EXPECT_FALSE(c->drawOnlyWithApplePencil());
  EXPECT_FALSE(c->useCalligraphicBrush());
  EXPECT_FALSE(c->skipPDFData());
  EXPECT_EQ(c->willBeDoneCallbackRequested(), 0);
  EXPECT_EQ(c->doneCallbackRequested(), 0);
  EXPECT_EQ(c->strokeWidthMax(), 4.0f);
  EXPECT_EQ(c->velocityReduction(), 0.85f);
  EXPECT_EQ(c->exportScale(), 1.0f);
  EXPECT_EQ(c->exportDateSize(), 20.0f);
  EXPECT_EQ(c->exportHashSizeWidth(), 200.0f);
  EXPECT_EQ(c->exportHashSizeHeight(), 22.0f);
  EXPECT_EQ(c->exportFontRatio(), 0.55f);
  EXPECT_EQ(c->exportHashFontSize(), 23.0f);
  EXPECT_EQ(c->exportHashOpacity(), 0.9f);
  EXPECT_EQ(c->smoothingAmount(), 3.5f);
  EXPECT_EQ(c->currentPressure(), 0.0f);
  EXPECT_FALSE(c->customHash());
  EXPECT_FALSE(c->lastHash());
  EXPECT_EQ(c->strokeExportColor(), QnColor::black());
  EXPECT_FALSE(c->myBrushStrokes());
  EXPECT_EQ(c->delegate(), delegate);
  EXPECT_FALSE(c->manager());
  EXPECT_EQ(c->scrivletView(), view);
  EXPECT_FALSE(c->preparedSignature());
  EXPECT_FALSE(c->cachedSignature());
  EXPECT_FALSE(c->imageData() || c->pdfData() || c->xmlString() || c->svgString());
  EXPECT_EQ(c->delayBeforeCaching(), 0.2);
  EXPECT_EQ(c->lastDrawPoint(), (QnPoint{0, 0}));
  EXPECT_EQ(c->lastPreciseDrawPoint(), (QnPoint{0, 0}));
  EXPECT_EQ(c->lastLocation(), QnRectZero);
  EXPECT_EQ(c->copyOfTargetViewBounds(), QnRectZero);
  EXPECT_EQ(c->numberOfPointsInCurrentSignature(), 0u);

  // The stroke model gets the controller's reduction, width and ink colour.
  ASSERT_TRUE(c->drawingController());
  EXPECT_EQ(model().drawingView(), view);
  EXPECT_EQ(model().velocityReduction(), 0.85f);
  EXPECT_EQ(model().strokeWidthMax(), 4.0f);
  EXPECT_FALSE(model().useCalligraphicBrush());
  EXPECT_EQ(model().canvasView()->strokeColor(), QnColor::black());

  // The guideline first, then the ink view; the guideline placed on the 540 x 527 view.
  ASSERT_EQ(view->subviews().size(), 2u);
  EXPECT_EQ(view->subviews()[0], c->guideline());
  EXPECT_EQ(view->subviews()[1], model().canvasView());
  EXPECT_FALSE(c->guideline()->isHidden());
  double width = 540 * 0.949999988079071;
  EXPECT_EQ(c->guideline()->frame(),
            makeRect(540 * 0.050000011920928955 * 0.5, 527 * 9 * 0.0625, width, width / 472 * 38));
  EXPECT_EQ(c->guideline()->contentMode(), kQnContentModeScaleAspectFit);

  // Observer first, then the left (undo) and right (redo) three-finger swipes: the view's recognizers.
  const auto& recognizers = c->gestureRecognizers();
  ASSERT_EQ(recognizers.size(), 3u);
  EXPECT_EQ(view->gestureRecognizers(), recognizers);
  auto* observer = dynamic_cast<QnTouchesObserverGestureRecognizer*>(recognizers[0].get());
  ASSERT_NE(observer, nullptr);
  EXPECT_EQ(observer->delegateController(), c);
  EXPECT_FALSE(observer->cancelsTouchesInView());
  EXPECT_FALSE(observer->delaysTouchesBegan());
  EXPECT_FALSE(observer->delaysTouchesEnded());
  auto* left = dynamic_cast<QnSwipeGestureRecognizer*>(recognizers[1].get());
  auto* right = dynamic_cast<QnSwipeGestureRecognizer*>(recognizers[2].get());
  ASSERT_TRUE(left && right);
  EXPECT_EQ(left->direction(), kQnSwipeDirectionLeft);
  EXPECT_EQ(left->numberOfTouchesRequired(), 3);
  EXPECT_EQ(right->direction(), kQnSwipeDirectionRight);
  EXPECT_EQ(right->numberOfTouchesRequired(), 3);
  EXPECT_TRUE(c->gestureRecognizerShouldRecognizeSimultaneouslyWithGestureRecognizer(observer, left));
}

TEST_F(ScrivletController, TeardownRemovesObservationsAndRecognizersButKeepsTheViews) {
  EXPECT_EQ(view->geometryObserverCount(), 9u);
  auto guideline = c->guideline();
  auto ink = model().canvasView();
  c.reset();
  EXPECT_EQ(view->geometryObserverCount(), 0u);
  EXPECT_TRUE(view->gestureRecognizers().empty());
  ASSERT_EQ(view->subviews().size(), 2u);
  EXPECT_EQ(view->subviews()[0], guideline);
  EXPECT_EQ(view->subviews()[1], ink);
  // Touches and geometry changes after teardown reach nobody.
  auto f = finger(10, 10, 1);
  view->beginTouches({f});
  view->endTouches({f});
  view->notifyGeometryChange(QnGeometryTarget::layer, "transform");
  EXPECT_TRUE(endLineCounts.empty());
}

TEST_F(ScrivletController, EveryObservedGeometryKeyRelaysOutAndTheLayerTransformTwice) {
  // Each layout makes a new ink cache and redraws it in full: two display requests of the ink view.
  struct Case {
    QnGeometryTarget target;
    const char* key;
    uint64_t layouts;
  };
  const Case cases[] = {
      {QnGeometryTarget::view, "frame", 1},        {QnGeometryTarget::layer, "bounds", 1},
      {QnGeometryTarget::layer, "transform", 2},   {QnGeometryTarget::layer, "position", 1},
      {QnGeometryTarget::layer, "zPosition", 1},   {QnGeometryTarget::layer, "anchorPoint", 1},
      {QnGeometryTarget::layer, "anchorPointZ", 1}, {QnGeometryTarget::layer, "frame", 1},
      {QnGeometryTarget::view, "bounds", 0},       {QnGeometryTarget::layer, "opacity", 0},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(std::string(k.target == QnGeometryTarget::view ? "view " : "layer ") + k.key);
    uint64_t before = inkDisplayRequests();
    view->notifyGeometryChange(k.target, k.key);
    EXPECT_EQ(inkDisplayRequests() - before, 2 * k.layouts);
  }

  // A layer transform moves the ink by the guideline's displacement once: the second layout finds
  // the guideline already in place.
  auto f = finger(100, 200, 1);
  view->beginTouches({f});
  f->moveTo({110, 210}, 1.1);
  view->endTouches({f});
  QnRect placed = c->guideline()->frame();
  c->guideline()->setFrame({{placed.origin.x - 10, placed.origin.y + 5}, placed.size});
  double dx = placed.origin.x - (placed.origin.x - 10), dy = placed.origin.y - (placed.origin.y + 5);
  uint64_t before = inkDisplayRequests();
  view->notifyGeometryChange(QnGeometryTarget::layer, "transform");
  EXPECT_EQ(inkDisplayRequests() - before, 4u);
  EXPECT_EQ(c->guideline()->frame().origin, placed.origin);
  ASSERT_EQ(strokes().size(), 1u);
  expectStroke(strokes()[0], {{100 + dx, 200 + dy, 100}, {110 + dx, 210 + dy, 101}});

  // A wider view: the layer's position, bounds and frame and the view's frame change, four layouts;
  // the guideline moves right and the ink with it, once.
  before = inkDisplayRequests();
  view->setFrame(makeRect(0, 0, 600, 527));
  EXPECT_EQ(inkDisplayRequests() - before, 8u);
  double x = 600 * 0.050000011920928955 * 0.5;
  EXPECT_EQ(c->guideline()->frame().origin, (QnPoint{x, 527 * 9 * 0.0625}));
  EXPECT_EQ(c->guideline()->frame().size.width, 600 * 0.949999988079071);
  double shift = x - placed.origin.x;
  expectStroke(strokes()[0], {{100 + dx + shift, 200 + dy, 100}, {110 + dx + shift, 210 + dy, 101}});
}

TEST_F(ScrivletController, ForwardingSettersReachTheStrokeModelAndTheInkView) {
  c->setStrokeWidthMax(6.5f);
  EXPECT_EQ(model().strokeWidthMax(), 6.5f);
  c->setVelocityReduction(0.25f);
  EXPECT_EQ(model().velocityReduction(), 0.25f);
  c->setUseCalligraphicBrush(true);
  EXPECT_TRUE(model().useCalligraphicBrush());
  EXPECT_TRUE(model().canvasView()->useCalligraphicBrush());

  // A new ink colour lays out once: the ink view gets two display requests, the guideline its place.
  QnRect placed = c->guideline()->frame();
  c->guideline()->setFrame(makeRect(1, 2, placed.size.width, placed.size.height));
  uint64_t before = inkDisplayRequests();
  const QnColor red(1, 0, 0, 1);
  c->setStrokeExportColor(red);
  EXPECT_EQ(c->strokeExportColor(), red);
  EXPECT_EQ(model().canvasView()->strokeColor(), red);
  EXPECT_EQ(inkDisplayRequests() - before, 2u);
  EXPECT_EQ(c->guideline()->frame().origin, placed.origin);

  c->setShowGuideline(false);
  EXPECT_TRUE(c->guideline()->isHidden());
  c->setShowGuideline(true);
  EXPECT_FALSE(c->guideline()->isHidden());
}

TEST_F(ScrivletController, SigningSessionWithExtraFingersAndSwipes) {
  // A fast sweep, then a slower finish that ends on a new position.
  auto a = finger(100, 200, 1.00);
  view->beginTouches({a});
  a->moveTo({200, 200}, 1.01);  // 10000 points per second: full thinning
  view->moveTouches({a});
  a->moveTo({210, 205}, 1.02);
  view->moveTouches({a});
  a->moveTo({220, 210}, 1.03);
  view->endTouches({a});
  ASSERT_EQ(strokes().size(), 1u);
  expectStroke(strokes()[0], {{100, 200, 100}, {200, 200, 101}, {210, 205, 102}, {220, 210, 103}});
  // The first diameter blends 4 with twice two thirds of 4; the second blends the fully thinned
  // 4 - 0.85 * 4 with it, which shows the controller's reduction reached the stroke model.
  const float first = (4.0f + (2.6666667f + 2.6666667f)) / 3.0f;
  const float thinned = 4.0f - (0.85f * 1.0f) * (4.0f + 0.0f * -0.5f);
  EXPECT_EQ((*strokes()[0])[0].diameter, first);
  EXPECT_EQ((*strokes()[0])[1].diameter, (thinned + (first + first)) / 3.0f);
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{4}));

  // A tap: two points at the same place.
  auto b = finger(300, 100, 2);
  view->beginTouches({b});
  view->endTouches({b});
  ASSERT_EQ(strokes().size(), 2u);
  expectStroke(strokes()[1], {{300, 100, 104}, {300, 100, 105}});
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{4, 6}));

  // Two fingers landing together begin nothing.
  auto d = finger(400, 50, 3), e = finger(420, 50, 3);
  view->beginTouches({d, e});
  EXPECT_FALSE(model().drawing());
  view->endTouches({d, e});
  EXPECT_EQ(strokes().size(), 2u);

  // A second finger landing during a stroke changes nothing; its moves and lift are ignored.
  auto f = finger(60, 60, 4), g = finger(300, 300, 4);
  view->beginTouches({f});
  view->beginTouches({g});
  ASSERT_EQ(strokes().size(), 3u);
  EXPECT_TRUE(model().drawing());
  EXPECT_EQ(strokes()[2]->size(), 1u);
  EXPECT_EQ(c->lastDrawPoint(), (QnPoint{60, 60}));
  f->moveTo({70, 60}, 4.1);
  view->moveTouches({f});
  g->moveTo({310, 300}, 4.1);
  view->moveTouches({g});
  view->endTouches({g});
  view->endTouches({f});
  expectStroke(strokes()[2], {{60, 60, 106}, {70, 60, 107}, {70, 60, 108}});
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{4, 6, 9}));

  // A third finger landing drops the stroke in progress, silently; the swipe left undoes the newest.
  auto h = finger(80, 450, 5), i = finger(200, 450, 5), j = finger(220, 450, 5);
  view->beginTouches({h});
  h->moveTo({90, 450}, 5.1);
  view->moveTouches({h});
  view->beginTouches({i});
  EXPECT_EQ(strokes().size(), 4u);
  view->beginTouches({j});
  EXPECT_EQ(strokes().size(), 3u);
  EXPECT_FALSE(model().drawing());
  for (int step = 1; step <= 2; ++step) {
    for (const auto& t : {h, i, j})
      t->moveTo({t->locationInView(nullptr).x - 30, 450}, 5.1 + 0.01 * step);
    view->moveTouches({h, i, j});
  }
  view->endTouches({h, i, j});
  ASSERT_EQ(strokes().size(), 2u);
  ASSERT_EQ(model().drawingArrayForRedo()->size(), 1u);
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{4, 6, 9}));

  // The swipe right brings the stroke back.
  swipe(+60, 6);
  ASSERT_EQ(strokes().size(), 3u);
  expectStroke(strokes()[2], {{60, 60, 106}, {70, 60, 107}, {70, 60, 108}});
  EXPECT_EQ(c->numberOfPointsInCurrentSignature(), 9u);

  // Without swipe-to-undo neither the swipes nor the operations change anything.
  c->setSwipeToUndoEnabled(false);
  swipe(-60, 7);
  c->undo();
  EXPECT_EQ(strokes().size(), 3u);
  c->setSwipeToUndoEnabled(true);
  swipe(-60, 8);
  EXPECT_EQ(strokes().size(), 2u);
  c->setSwipeToUndoEnabled(false);
  swipe(+60, 9);
  c->redo();
  EXPECT_EQ(strokes().size(), 2u);
  c->setSwipeToUndoEnabled(true);
  c->redo();
  EXPECT_EQ(strokes().size(), 3u);
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{4, 6, 9}));
}

TEST_F(ScrivletController, CancelledTouchDropsTheStrokeOnlyAtTheLastDrawPoint) {
  auto q = finger(250, 250, 1), r = finger(500, 500, 1);
  view->beginTouches({q});
  q->moveTo({260, 250}, 1.1);
  view->moveTouches({q});
  view->beginTouches({r});
  view->cancelTouches({r});
  ASSERT_EQ(strokes().size(), 1u);
  EXPECT_TRUE(model().drawing());
  expectStroke(strokes()[0], {{250, 250, 100}, {260, 250, 101}});
  view->cancelTouches({q});
  EXPECT_TRUE(strokes().empty());
  EXPECT_FALSE(model().drawing());
  EXPECT_TRUE(endLineCounts.empty());
  EXPECT_EQ(c->numberOfPointsInCurrentSignature(), 0u);
}

TEST_F(ScrivletController, StylusOnlyModeIgnoresFingerOnlyPhases) {
  c->setDrawOnlyWithApplePencil(true);
  auto s = finger(30, 30, 1);
  view->beginTouches({s});
  s->moveTo({40, 30}, 1.1);
  view->moveTouches({s});
  view->endTouches({s});
  EXPECT_TRUE(strokes().empty());

  auto pen = std::make_shared<HeadlessTouch>(QnPoint{40, 40}, 2, kQnTouchTypeStylus);
  view->beginTouches({pen});
  // Fingers at the pen's position would cancel, move and end the stroke; finger-only sets are ignored.
  auto u = finger(40, 40, 2.1);
  view->beginTouches({u});
  view->cancelTouches({u});
  auto w = finger(40, 40, 2.2);
  view->beginTouches({w});
  w->moveTo({45, 40}, 2.3);
  view->moveTouches({w});
  view->endTouches({w});
  ASSERT_EQ(strokes().size(), 1u);
  EXPECT_TRUE(model().drawing());
  EXPECT_EQ(c->lastDrawPoint(), (QnPoint{40, 40}));

  pen->moveTo({50, 50}, 2.4);
  view->moveTouches({pen});
  // A set holding the pen and a finger is taken as a whole.
  auto y = finger(200, 200, 2.5);
  view->beginTouches({y});
  view->endTouches({pen, y});
  expectStroke(strokes()[0], {{40, 40, 100}, {50, 50, 101}, {50, 50, 102}});
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{3}));
}

TEST_F(ScrivletController, MatchingFollowsTheDrawingTouchByPosition) {
  // An end is handled with three fingers down when a touch matches.
  auto z = finger(333, 111, 1);
  auto x1 = finger(10, 400, 1), x2 = finger(30, 400, 1);
  c->touchesBeganWithEvent({z}, QnEvent({z}));
  c->touchesEndedWithEvent({z}, QnEvent({z, x1, x2}));
  ASSERT_EQ(strokes().size(), 1u);
  expectStroke(strokes()[0], {{333, 111, 100}, {333, 111, 101}});
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{2}));

  // A move whose touch neither continues from nor repeats the last draw point is dropped; one that
  // repeats it is taken.
  auto a = finger(10, 10, 2);
  view->beginTouches({a});
  a->moveTo({15, 15}, 2.1);  // never delivered
  a->moveTo({20, 20}, 2.2);
  view->moveTouches({a});
  EXPECT_EQ(strokes()[1]->size(), 1u);
  EXPECT_EQ(c->lastDrawPoint(), (QnPoint{10, 10}));
  a->moveTo({10, 10}, 2.3);
  view->moveTouches({a});
  a->moveTo({12, 10}, 2.4);
  view->moveTouches({a});
  view->endTouches({a});
  expectStroke(strokes()[1], {{10, 10, 102}, {10, 10, 103}, {12, 10, 104}, {12, 10, 105}});

  // Precise locations are saved and compared where the touch offers them.
  auto p = finger(100, 100, 3);
  p->setPreciseLocation(QnPoint{100.25, 100.75});
  view->beginTouches({p});
  EXPECT_EQ(c->lastDrawPoint(), (QnPoint{100.25, 100.75}));
  p->moveTo({110, 100}, 3.1, QnPoint{110.5, 100.25});
  view->moveTouches({p});
  p->moveTo({120, 100}, 3.2);
  view->moveTouches({p});
  view->endTouches({p});
  expectStroke(strokes()[2],
               {{100.25, 100.75, 106}, {110.5, 100.25, 107}, {120, 100, 108}, {120, 100, 109}});
  EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{2, 6, 10}));
}

bool allPointsFinite(const QnStrokeList& list) {
  for (const auto& stroke : list)
    for (const QnSignaturePoint& point : *stroke)
      if (!std::isfinite(point.location.x) || !std::isfinite(point.location.y)) return false;
  return true;
}

TEST_F(ScrivletController, MalformedInputNeverThrowsAndKeepsCapturedStrokes) {
  auto a = finger(100, 100, 1);
  view->beginTouches({a});
  a->moveTo({110, 100}, 1.1);
  view->moveTouches({a});
  view->endTouches({a});
  const std::vector<Expected> first = {{100, 100, 100}, {110, 100, 101}, {110, 100, 102}};

  {
    SCOPED_TRACE("moved without began, ended and cancelled for unknown touches, empty sets");
    auto stray = finger(300, 300, 2);
    stray->moveTo({305, 300}, 2.1);
    EXPECT_NO_THROW(view->moveTouches({stray}));
    EXPECT_NO_THROW(view->endTouches({finger(400, 10, 2.2)}));
    EXPECT_NO_THROW(view->cancelTouches({finger(410, 10, 2.3)}));
    EXPECT_NO_THROW(view->endTouches({stray}));
    EXPECT_NO_THROW(view->beginTouches({}));
    EXPECT_NO_THROW(view->moveTouches({}));
    EXPECT_NO_THROW(view->endTouches({}));
    EXPECT_NO_THROW(view->cancelTouches({}));
    EXPECT_NO_THROW(c->touchesBeganWithEvent({}, QnEvent()));
    EXPECT_NO_THROW(c->touchesMovedWithEvent({nullptr}, QnEvent({nullptr})));
    EXPECT_NO_THROW(c->touchesEndedWithEvent({nullptr}, QnEvent()));
    EXPECT_NO_THROW(c->touchesCancelledWithEvent({nullptr}, QnEvent()));
    ASSERT_EQ(strokes().size(), 1u);
    expectStroke(strokes()[0], first);
    EXPECT_EQ(endLineCounts, (std::vector<unsigned long>{3}));
  }
  {
    SCOPED_TRACE("positions that are not numbers");
    auto n = finger(kNaN, kNaN, 3);
    EXPECT_NO_THROW(view->beginTouches({n}));
    EXPECT_NO_THROW(view->endTouches({n}));
    auto b = finger(200, 200, 4);
    view->beginTouches({b});
    b->moveTo({210, 200}, 4.1);
    view->moveTouches({b});
    b->moveTo({kNaN, kNaN}, 4.2);
    EXPECT_NO_THROW(view->moveTouches({b}));
    b->moveTo({220, 200}, 4.3);
    EXPECT_NO_THROW(view->endTouches({b}));
    // A later stroke closes whatever the damaged one left open; both earlier strokes stay.
    auto d = finger(50, 50, 5);
    view->beginTouches({d});
    view->endTouches({d});
    ASSERT_GE(strokes().size(), 3u);
    expectStroke(strokes()[0], first);
    ASSERT_GE(strokes()[1]->size(), 2u);
    EXPECT_EQ((*strokes()[1])[0].location, (QnPoint{200, 200}));
    EXPECT_EQ((*strokes()[1])[1].location, (QnPoint{210, 200}));
    EXPECT_EQ(strokes().back()->back().location, (QnPoint{50, 50}));
    EXPECT_TRUE(allPointsFinite(strokes()));
    EXPECT_FALSE(model().drawing());
  }
  {
    SCOPED_TRACE("a view of zero size");
    auto empty = HeadlessView::create(QnRectZero);
    std::shared_ptr<QnScrivletController> z;
    ASSERT_NO_THROW(z = QnScrivletController::create(empty, {}, {}));
    auto t = finger(0, 0, 6);
    EXPECT_NO_THROW(empty->beginTouches({t}));
    t->moveTo({1, 1}, 6.1);
    EXPECT_NO_THROW(empty->moveTouches({t}));
    EXPECT_NO_THROW(empty->endTouches({t}));
    EXPECT_NO_THROW(empty->notifyGeometryChange(QnGeometryTarget::layer, "transform"));
    EXPECT_NO_THROW(z->setStrokeExportColor(QnColor::white()));
    EXPECT_EQ(z->numberOfPointsInCurrentSignature(), 3u);
  }
  {
    SCOPED_TRACE("no view at all");
    std::shared_ptr<QnScrivletController> z;
    ASSERT_NO_THROW(z = QnScrivletController::create(nullptr, {}, {}));
    ASSERT_TRUE(z->drawingController());
    EXPECT_EQ(z->gestureRecognizers().size(), 3u);
    auto t = finger(5, 5, 7);
    EXPECT_NO_THROW(z->touchesBeganWithEvent({t}, QnEvent({t})));
    t->moveTo({6, 5}, 7.1);
    EXPECT_NO_THROW(z->touchesMovedWithEvent({t}, QnEvent({t})));
    EXPECT_NO_THROW(z->touchesEndedWithEvent({t}, QnEvent({t})));
    EXPECT_NO_THROW(z->updateLayout());
    EXPECT_NO_THROW(z->setStrokeExportColor(QnColor::white()));
    EXPECT_EQ(z->numberOfPointsInCurrentSignature(), 3u);
    EXPECT_NO_THROW(z.reset());
  }
}

}  // namespace
}  // namespace scrivlet
