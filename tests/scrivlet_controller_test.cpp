// The capture controller: views and teardown, geometry observation and touch routing; and the view
// notifications it observes. (Display requests and the snapshot show in the ink view's and the
// guideline's pixels: drawing_view_test.cpp, style_kit_test.cpp.)
#include <scrivlet/device.h>
#include <scrivlet/headless_touch.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "controller/touches_observer_gesture_recognizer.h"
#include "platform/image.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace scrivlet {
namespace {

using Touch = std::shared_ptr<HeadlessTouch>;
Touch finger(double x, double y, double t, int type = kQnTouchTypeDirect) {
  return std::make_shared<HeadlessTouch>(QnPoint{x, y}, t, type);
}

using Points = std::vector<std::tuple<double, double, uint64_t>>;  // x, y, id
Points points(const QnStrokeRef& stroke) {
  Points result;
  for (const QnSignaturePoint& p : *stroke) result.emplace_back(p.location.x, p.location.y, p.id);
  return result;
}

using Keys = std::vector<std::string>;

TEST(View, FrameChangeNotifiesTheObserversOfEachChangedKeyUntilTheyAreRemoved) {
  using G = QnGeometryTarget;
  auto view = HeadlessView::create(makeRect(0, 0, 100, 50));
  Keys seen;
  auto record = [&](G target, const std::string& k) { seen.push_back((target == G::view ? "view." : "layer.") + k); };
  auto token = view->addGeometryObserver(G::view, "frame", record);
  for (const char* key : {"bounds", "position", "frame", "transform"}) view->addGeometryObserver(G::layer, key, record);

  view->setFrame(makeRect(0, 0, 200, 50));
  EXPECT_EQ(std::exchange(seen, {}), (Keys{"layer.position", "layer.bounds", "layer.frame", "view.frame"}));
  view->setFrame(makeRect(5, 0, 200, 50));  // a move keeps the bounds
  EXPECT_EQ(std::exchange(seen, {}), (Keys{"layer.position", "layer.frame", "view.frame"}));
  EXPECT_EQ(view->bounds(), makeRect(0, 0, 200, 50));
  view->removeGeometryObserver(token), view->setFrame(makeRect(0, 0, 30, 30));
  EXPECT_EQ(std::pair(seen, view->geometryObserverCount()),
            std::pair(Keys{"layer.position", "layer.bounds", "layer.frame"}, size_t{4}));
}

class ScrivletController : public ::testing::Test {
 protected:
  void SetUp() override {
    delegate->scrivletDidEndLineWithSignaturePointCount = [this](auto, unsigned long n) { endLines.push_back(n); };
  }
  QnDemoDrawingController& model() { return *c->drawingController(); }
  const QnStrokeList& strokes() { return *model().drawingArray(); }
  uint64_t inkDisplayRequests() { return model().canvasView()->displayRequestCount(); }
  void tap(const QnTouchSet& set) { view->beginTouches(set), view->endTouches(set); }
  void move(const Touch& touch, double x, double y, double t) { touch->moveTo({x, y}, t), view->moveTouches({touch}); }
  // The fingers down, or three landing together, travel sideways at y in two steps and lift.
  void swipe(double dx, double y, double t) {
    QnTouchSet down = view->touchesDown();
    if (down.empty()) down = {finger(200, y, t), finger(220, y, t), finger(240, y, t)}, view->beginTouches(down);
    for (double step : {1, 2}) {
      for (const auto& f : down)
        static_cast<HeadlessTouch&>(*f).moveTo({f->locationInView(nullptr).x + dx / 2, y}, t + 0.01 * step);
      view->moveTouches(down);
    }
    view->endTouches(down);
  }

  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 540, 527));
  std::shared_ptr<QnScrivletControllerDelegate> delegate = std::make_shared<QnScrivletControllerDelegate>();
  std::vector<unsigned long> endLines;  // the point counts told to the delegate
  std::shared_ptr<QnScrivletController> c = QnScrivletController::create(view, delegate, {});
};

// (The defaults show in the exact widths, margins, text sizes and delays the other tests work out.)
TEST_F(ScrivletController, ViewsRecognizersAndTeardown) {
  // The guideline, then the ink view; the touch observer, then the three-finger swipes.
  EXPECT_EQ(view->subviews(), (std::vector<std::shared_ptr<QnView>>{c->guideline(), model().canvasView()}));
  ASSERT_EQ(view->gestureRecognizers(), c->gestureRecognizers());
  ASSERT_EQ(c->gestureRecognizers().size(), 3u);
  auto* observer = dynamic_cast<QnTouchesObserverGestureRecognizer*>(c->gestureRecognizers()[0].get());
  ASSERT_NE(observer, nullptr);
  EXPECT_FALSE(observer->cancelsTouchesInView() || observer->delaysTouchesBegan() || observer->delaysTouchesEnded());

  const auto& ink = model().canvasView();
  const uint64_t before = inkDisplayRequests();
  c->setStrokeExportColor(QnColor(1, 0, 0, 1));  // a new ink colour lays out once
  EXPECT_EQ(std::pair(ink->strokeColor(), inkDisplayRequests() - before), std::pair(QnColor(1, 0, 0, 1), uint64_t{2}));

  EXPECT_EQ(view->geometryObserverCount(), 9u);
  const auto subviews = view->subviews();
  c.reset();  // teardown: no observations, no recognizers, the views stay
  EXPECT_EQ(std::tuple(view->geometryObserverCount(), view->gestureRecognizers().size(), view->subviews()),
            std::tuple(0u, 0u, subviews));
  tap({finger(10, 10, 1)});
  EXPECT_TRUE(endLines.empty());
}

TEST_F(ScrivletController, ObservedGeometryChangesLayOutAgainAndTheInkFollowsTheGuideline) {
  // Each layout makes a new ink cache and redraws it in full: two display requests of the ink view.
  using G = QnGeometryTarget;
  const std::tuple<G, const char*, uint64_t> cases[] = {
      {G::view, "frame", 1}, {G::layer, "bounds", 1}, {G::layer, "transform", 2}, {G::layer, "position", 1},
      {G::layer, "zPosition", 1}, {G::layer, "anchorPoint", 1}, {G::layer, "anchorPointZ", 1}, {G::layer, "frame", 1},
      {G::view, "bounds", 0}, {G::layer, "opacity", 0}};
  for (const auto& [target, key, layouts] : cases) {
    SCOPED_TRACE(std::string(target == G::view ? "view " : "layer ") + key);
    const uint64_t before = inkDisplayRequests();
    view->notifyGeometryChange(target, key);
    EXPECT_EQ(inkDisplayRequests() - before, 2 * layouts);
  }
  // The ink moves by the guideline's displacement once, though the transform lays out twice.
  tap({finger(100, 200, 1)});
  const QnRect placed = c->guideline()->frame();
  c->guideline()->setFrame({{placed.origin.x - 10, placed.origin.y + 5}, placed.size});
  view->notifyGeometryChange(G::layer, "transform");
  EXPECT_EQ(c->guideline()->frame(), placed);
  EXPECT_EQ(points(strokes()[0]), (Points{{110, 195, 100}, {110, 195, 101}}));
}

TEST_F(ScrivletController, SigningSessionYieldsExactlyTheStrokesIdsAndDelegateCalls) {
  auto a = finger(100, 200, 1.00);  // a fast sweep, then a slower finish that ends elsewhere
  view->beginTouches({a}), move(a, 200, 200, 1.01);  // 10000 points per second: thinned by the controller's 0.85
  move(a, 210, 205, 1.02);
  a->moveTo({220, 210}, 1.03), view->endTouches({a});
  ASSERT_EQ(strokes().size(), 1u);
  EXPECT_EQ(points(strokes()[0]), (Points{{100, 200, 100}, {200, 200, 101}, {210, 205, 102}, {220, 210, 103}}));
  EXPECT_EQ(strokes()[0]->at(1).diameter, (0.5999999f + (3.1111114f + 3.1111114f)) / 3.0f);
  EXPECT_EQ(endLines, (std::vector<unsigned long>{4}));

  tap({finger(400, 50, 3), finger(420, 50, 3)});  // two fingers landing together: nothing
  auto f = finger(60, 60, 4), g = finger(300, 300, 4);  // a second finger mid-stroke is ignored
  view->beginTouches({f}), view->beginTouches({g}), move(f, 70, 60, 4.1), move(g, 310, 300, 4.1);
  view->endTouches({g}), view->endTouches({f});
  ASSERT_EQ(strokes().size(), 2u);
  const Points second = {{60, 60, 104}, {70, 60, 105}, {70, 60, 106}};
  EXPECT_EQ(points(strokes()[1]), second);
  EXPECT_EQ(endLines, (std::vector<unsigned long>{4, 7}));

  // A third finger landing drops the stroke in progress, silently; a swipe left undoes the newest.
  auto h = finger(80, 450, 5), i = finger(200, 450, 5), j = finger(220, 450, 5);
  view->beginTouches({h}), move(h, 90, 450, 5.1);
  view->beginTouches({i}), view->beginTouches({j});
  EXPECT_EQ(strokes().size(), 2u);
  swipe(-60, 450, 5.1);
  ASSERT_EQ(strokes().size(), 1u);
  swipe(+60, 100, 6);  // the swipe right brings it back
  EXPECT_EQ(points(strokes().back()), second);
  c->setSwipeToUndoEnabled(false);  // then neither swipes nor undo change anything
  swipe(-60, 100, 7), c->undo();
  EXPECT_EQ(strokes().size(), 2u);

  auto q = finger(250, 250, 8), r = finger(500, 500, 8);  // cancelled touches
  view->beginTouches({q}), move(q, 260, 250, 8.1);
  view->beginTouches({r}), view->cancelTouches({r});  // not the drawing touch: the stroke goes on
  EXPECT_EQ(points(strokes()[2]), (Points{{250, 250, 109}, {260, 250, 110}}));
  view->cancelTouches({q});
  EXPECT_EQ(std::pair(strokes().size(), model().drawing()), std::pair(size_t{2}, false));

  c->setDrawOnlyWithApplePencil(true);  // stylus only: finger-only sets are ignored
  auto pen = finger(40, 40, 11, kQnTouchTypeStylus), u = finger(40, 40, 11.1), w = finger(40, 40, 11.2);
  view->beginTouches({pen}), view->beginTouches({u}), view->cancelTouches({u});  // even at the pen's position
  view->beginTouches({w}), move(w, 45, 40, 11.3), view->endTouches({w});
  move(pen, 50, 50, 11.4);
  auto y = finger(200, 200, 11.5);
  view->beginTouches({y}), view->endTouches({pen, y});  // a set holding the pen and a finger is taken as a whole
  ASSERT_EQ(strokes().size(), 3u);
  EXPECT_EQ(points(strokes()[2]), (Points{{40, 40, 111}, {50, 50, 112}, {50, 50, 113}}));
  EXPECT_EQ(endLines, (std::vector<unsigned long>{4, 7, 10}));
  EXPECT_EQ(c->numberOfPointsInCurrentSignature(), 10u);
}

// The share of pixel (px, py) covered by a disc, on 16 x 16 samples.
double discCoverage(int px, int py, QnPoint center, double radius) {
  int inside = 0;
  for (int i = 0; i < 16; ++i)
    for (int j = 0; j < 16; ++j)
      inside += std::hypot(px + (i + 0.5) / 16 - center.x, py + (j + 0.5) / 16 - center.y) <= radius;
  return inside / 256.0;
}

// A tap (down and up in one place) leaves the dot of the first point and, over it, the round-capped
// zero-length line of the mean diameter: two concentric discs, at any screen scale and position.
TEST(Tap, LeavesConcentricDiscsOfThePenDiameterInTheInkCacheAtScalesOneAndTwo) {
  for (double scale : {1.0, 2.0}) {
    for (QnPoint at : {QnPoint{100, 80}, QnPoint{100.3, 80.6}}) {
      SCOPED_TRACE(testing::Message() << "scale " << scale << " at " << at.x << ", " << at.y);
      QnDevice::setScreenScale(scale);
      auto view = HeadlessView::create(makeRect(0, 0, 200, 160));
      auto controller = QnScrivletController::create(view, {}, {});
      auto touch = std::make_shared<HeadlessTouch>(at, 1.0);
      view->beginTouches({touch}), touch->setTimestamp(1.08), view->endTouches({touch});
      const QnStroke& stroke = *controller->drawingController()->drawingArray()->at(0);
      ASSERT_EQ(stroke.size(), 2u);
      EXPECT_EQ(stroke[0].diameter, 3.1111114f);  // the default pen at rest
      float mean = (stroke[0].diameter + stroke[1].diameter) * 0.5f;
      QnImage ink = controller->drawingController()->canvasView()->cacheContext()->makeImage();
      ASSERT_EQ(ink.pixelWidth(), 200 * scale);
      QnPoint center{at.x * scale, at.y * scale};
      double worst = 0, area = 0, expectedArea = 0;
      for (int y = int(center.y) - 6 * scale; y <= center.y + 6 * scale; ++y)
        for (int x = int(center.x) - 6 * scale; x <= center.x + 6 * scale; ++x) {
          double expected = 1 - (1 - discCoverage(x, y, center, stroke[0].diameter * 0.5 * scale)) *
                                    (1 - discCoverage(x, y, center, mean * 0.5 * scale));
          double alpha = ink.pixelAt(x, y).a / 255.0;
          worst = std::max(worst, std::fabs(alpha - expected)), area += alpha, expectedArea += expected;
        }
      EXPECT_LT(worst, 0.06);  // antialiasing differs from exact coverage by a few levels
      EXPECT_NEAR(area, expectedArea, 0.03 * expectedArea);
    }
  }
  QnDevice::resetToDefaults();
}

TEST_F(ScrivletController, MalformedInputNeverThrowsAndKeepsCapturedStrokes) {
  auto a = finger(100, 100, 1), stray = finger(300, 300, 2), n = finger(NAN, NAN, 3), b = finger(200, 200, 4);
  view->beginTouches({a}), move(a, 110, 100, 1.1), view->endTouches({a});
  EXPECT_NO_THROW({
    move(stray, 305, 300, 2.1);  // moved without began, ended and cancelled for unknown touches
    view->endTouches({finger(400, 10, 2.2)}); view->cancelTouches({finger(410, 10, 2.3)}); view->endTouches({stray});
    view->beginTouches({});
    c->touchesMovedWithEvent({nullptr}, QnEvent({nullptr}));
    c->touchesEndedWithEvent({nullptr}, QnEvent());
    tap({n});  // positions that are not numbers
    view->beginTouches({b}); move(b, 210, 200, 4.1); move(b, NAN, NAN, 4.2);
    b->moveTo({220, 200}, 4.3); view->endTouches({b});
    tap({finger(50, 50, 5)});  // a later stroke closes whatever the damaged one left open
  });
  ASSERT_GE(strokes().size(), 3u);
  EXPECT_EQ(points(strokes()[0]), (Points{{100, 100, 100}, {110, 100, 101}, {110, 100, 102}}));
  EXPECT_EQ(std::pair(strokes()[1]->at(0).location, strokes()[1]->at(1).location),
            std::pair(QnPoint{200, 200}, QnPoint{210, 200}));
  EXPECT_EQ(strokes().back()->back().location, (QnPoint{50, 50}));
  EXPECT_EQ(std::pair(endLines.front(), model().drawing()), std::pair(3ul, false));
  for (const auto& stroke : strokes())
    for (const QnSignaturePoint& p : *stroke) EXPECT_TRUE(std::isfinite(p.location.x) && std::isfinite(p.location.y));

  for (auto other : {HeadlessView::create(QnRectZero), std::shared_ptr<HeadlessView>()}) {
    SCOPED_TRACE(other ? "a view of zero size" : "no view");
    std::shared_ptr<QnScrivletController> z;
    ASSERT_NO_THROW(z = QnScrivletController::create(other, {}, {}));
    auto t = finger(0, 0, 6);
    EXPECT_NO_THROW({
      z->touchesBeganWithEvent({t}, QnEvent({t}));
      t->moveTo({1, 1}, 6.1); z->touchesMovedWithEvent({t}, QnEvent({t}));
      z->touchesEndedWithEvent({t}, QnEvent({t}));
      z->updateLayout(); z->setStrokeExportColor(QnColor::white());
    });
    EXPECT_EQ(z->numberOfPointsInCurrentSignature(), 3u);
    EXPECT_NO_THROW(z.reset());
  }
}

}  // namespace
}  // namespace scrivlet
