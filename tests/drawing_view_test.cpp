// The ink view: the exact drawing calls for short strokes, the geometry predicates, the dirty area,
// the pixels it shows as strokes come and go, and a stroke's SVG.
#include "render/drawing_view.h"

#include <scrivlet/device.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/notification_center.h>

#include "capture/drawing_controller.h"
#include "output_support.h"
#include "platform/image.h"
#include "platform/recording_context.h"
#include "render/combo_context.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace scrivlet {
namespace {

using test_support::savePNG;
using test_support::strokeList;

struct Call { std::string name; std::vector<double> args; double tolerance = 0; };
using Calls = std::vector<Call>;

Calls operator+(Calls a, const Calls& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

QnSignaturePoint inkPoint(double x, double y, float diameter, QnPoint velocity = {1, 0}) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.diameter = diameter;
  p.velocity = velocity;
  return p;
}

const Calls kClear = {{"setBlendMode", {16}}, {"setFillColor", {0, 0, 0, 0}},
                      {"fillRect", {0, 0, 200, 100}}, {"setBlendMode", {0}}};

Calls setUp(double x, double y) {
  return {{"setStrokeColor", {0, 1}}, {"setFillColor", {0, 1}}, {"setLineWidth", {2}},
          {"setLineJoin", {1}}, {"setLineCap", {1}}, {"moveToPoint", {x, y}}};
}

Calls dot(double x, double y, double diameter) {
  return {{"beginPath", {}}, {"moveToPoint", {x, y}}, {"setLineWidth", {diameter}},
          {"addLineToPoint", {x, y}}, {"drawPath", {2}}};
}

// A round-capped curve of constant width.
Calls curve(QnPoint from, std::vector<double> controlsAndEnd, double width) {
  return {{"beginPath", {}}, {"moveToPoint", {from.x, from.y}}, {"addCurveToPoint", controlsAndEnd},
          {"setLineWidth", {width}}, {"drawPath", {2}}};
}

// The filled outline from (0, 0), radius r0, to the midpoint (5, 0), radius r1: the sides joined
// by curves whose arms are 2.5 long, the ends by half circles; worked out in single precision.
Calls outline(double r0, double r1) {
  return {{"beginPath", {}}, {"moveToPoint", {0, -r0}, 1e-5},
          {"addCurveToPoint", {2.5, -r0, 2.5, -r1, 5, -r1}, 1e-5},
          {"addArc", {5, 0, r1, 1.5 * M_PI, 2.5 * M_PI, 0}, 1e-5},
          {"addCurveToPoint", {2.5, r1, 2.5, r0, 0, r0}, 1e-5},
          {"addArc", {0, 0, r0, 0.5 * M_PI, -0.5 * M_PI, 0}, 1e-5},
          {"closePath", {}}, {"drawPath", {0}}};
}

TEST(DrawingView, ExactCallsForStrokesOfOneTwoAndThreePointsAndTheCornerTest) {
  const QnStroke one{inkPoint(10, 20, 3)}, two{inkPoint(0, 0, 4), inkPoint(10, 0, 2)};
  // A right-angle turn at (10, 0) makes a corner, drawn at constant width with the smaller of the
  // two mean diameters.
  const QnStroke three{inkPoint(0, 0, 4), inkPoint(10, 0, 4), inkPoint(10, 10, 2, {0, 1})};
  const Calls dotAt10 = setUp(10, 20) + dot(10, 20, 3), dotAt0 = setUp(0, 0) + dot(0, 0, 4);
  const Calls corner = outline(2, 2) + curve({5, 0}, {7.5, 0, 10, 2.5, 10, 5}, 3);
  const Calls closing = curve({10, 5}, {10, 5, 10, 10, 10, 10}, 3);
  const Calls line = {{"beginPath", {}}, {"moveToPoint", {0, 0}}, {"addLineToPoint", {5, 0}},
                      {"setLineWidth", {3}}, {"drawPath", {2}}};  // the mean width, to the midpoint
  struct { const char* name; QnStrokeListRef ink; bool final, full; Calls expected; } cases[] = {
      {"one point, full", strokeList({one}), true, true, kClear + dotAt10},
      {"one point, incremental", strokeList({one}), false, false, dotAt10},
      {"two points, final", strokeList({two}), true, false, dotAt0 + line},
      {"two points, not final", strokeList({two}), false, false, dotAt0 + outline(2, 1.5)},
      {"three points, full", strokeList({three}), true, true, kClear + dotAt0 + corner + closing},
      {"three points, the newest segments", strokeList({three}), false, false, setUp(0, 0) + corner},
      {"three points, final", strokeList({three}), true, false, setUp(0, 0) + corner + closing},
      {"the last stroke only", strokeList({{inkPoint(1, 1, 2)}, one}), false, false, dotAt10},
      {"an empty last stroke", strokeList({one, {}}), false, false, {}},
      {"no list", nullptr, true, true, kClear},
  };
  for (const auto& c : cases) {  // drawn on a 200 x 100 view
    QnDrawingView view(makeRect(0, 0, 200, 100));
    RecordingContext recording;
    QnComboContext combo(&recording);
    view.setMyStrokes(c.ink);
    view.drawToContextWithFinalSegmentFullRedraw(&combo, c.final, c.full);
    ASSERT_EQ(recording.calls().size(), c.expected.size()) << c.name << "\n" << recording.log();
    for (size_t i = 0; i < c.expected.size(); ++i) {
      const auto& [got, want] = std::tie(recording.calls()[i], c.expected[i]);
      ASSERT_TRUE(got.name == want.name && got.args.size() == want.args.size())
          << c.name << ", call " << i << ": " << got.str();
      for (size_t j = 0; j < got.args.size(); ++j)
        EXPECT_NEAR(got.args[j], want.args[j], want.tolerance) << c.name << ": " << got.str();
    }
  }

  using V = QnDrawingView;
  // The default threshold is pi/4 in single precision, and the test is strictly greater.
  EXPECT_FALSE(V::angleBetweenVector1Vector2IsGreaterThan({1, 0}, {1, 1}, 0.7853981852531433f));
  EXPECT_TRUE(V::angleBetweenVector1Vector2IsGreaterThan({1, 0}, {0, 1}, 0.7853981852531433f));
  // The wrap-around gives the unsigned angle between the vectors.
  EXPECT_NEAR(V::angleBetweenVector1Vector2({-1, -0.01}, {-1, 0.01}), 0.02, 1e-4);
  EXPECT_TRUE(V::vectorIsOppositeVector({1, 0}, {-1, 0.1}));
  EXPECT_FALSE(V::vectorIsOppositeVector({1, 0}, {1, 0.1}));
  // Collinearity compares atan2(x, y) without wrapping: it jumps from near pi to near -pi.
  EXPECT_FALSE(V::vectorIsCollinearToVector({-0.01, -1}, {0.01, -1}));
  EXPECT_TRUE(V::vectorIsCollinearToVectorWithinRange({1, 0}, {1, 0.5}, 0.5f));
  EXPECT_FALSE(V::vectorIsCollinearToVectorWithinRange({1, 0}, {1, 1}, 0.5f));
  EXPECT_EQ(V::pointIsAboveThreshold({3, 4}, 4.99f), 1.0);
  EXPECT_EQ(V::pointIsAboveThreshold({3, 4}, 5.0f), 0.0);
  EXPECT_EQ(V::squaredDistanceBetweenAnd({2, 2}, {2, 2}), 0.0001);  // never zero
  EXPECT_EQ(V::distanceBetweenAnd({2, 2}, {2, 2}), 0.0001);
}

TEST(DrawingView, DirtyAreaCoversTheNewestSegmentsWithAMargin) {
  QnDrawingView view(makeRect(0, 0, 200, 100));
  RecordingContext recording;
  QnComboContext combo(&recording);
  // One point: a square of side diameter + 20 around it.
  view.setMyStrokes(strokeList({{inkPoint(50, 40, 4)}}));
  view.drawToContextWithFinalSegmentFullRedraw(&combo, false, false);
  EXPECT_EQ(view.dirtyRect(), makeRect(38, 28, 24, 24));
  view.displayInContext(recording);
  // Four points: from the point at n-3 to the last, grown by half the larger diameter + 10.
  view.setMyStrokes(strokeList({{inkPoint(0, 0, 9), inkPoint(10, 30, 2), inkPoint(20, 5, 3),
                                inkPoint(40, 25, 5)}}));
  view.drawToContextWithFinalSegmentFullRedraw(&combo, false, false);
  EXPECT_EQ(view.dirtyRect(), makeRect(10 - 12.5, 25 - 12.5, 30 + 25, 5 + 25));
  view.displayInContext(recording);
  view.drawToContextWithFinalSegmentFullRedraw(&combo, true, true);
  EXPECT_EQ(view.dirtyRect(), view.bounds());
}

// A signer at work on a 300 x 120 view at screen scale 2, through the stroke model, each stroke's end
// followed by the layout the record's preparation runs: after every step the view shows exactly the
// pixels of drawing every stroke again, and of an open stroke's newest segments drawn point by point.
class InkShown : public ::testing::Test {
 protected:
  void SetUp() override { QnDevice::setScreenScale(2); }
  void TearDown() override { QnDevice::setScreenScale(1); }

  // The view as a screen of scale 2 would show it.
  QnImage shown() { return snapshotOfView(*view, 2); }
  // Every stroke drawn again into a clear bitmap, then the last stroke's first `live` points as live
  // ink draws them, one point at a time, and its end when `ended`.
  QnImage expected(size_t live = 0, bool ended = false) {
    QnBitmapContext fresh(view->bounds().size, 2);
    QnComboContext context(&fresh.context());
    auto finished = std::make_shared<QnStrokeList>(*controller.drawingArray());
    QnStrokeRef open = live ? finished->back() : nullptr;
    if (open) finished->pop_back();
    ink().drawStrokesToContextWithFinalSegmentFullRedraw(finished, &context, true, true);
    for (size_t n = 1; n <= live; ++n) {
      auto growing = std::make_shared<QnStrokeList>(*finished);
      growing->push_back(std::make_shared<QnStroke>(open->begin(), open->begin() + n));
      ink().drawStrokesToContextWithFinalSegmentFullRedraw(growing, &context, false, false);
      if (n == live && ended) ink().drawStrokesToContextWithFinalSegmentFullRedraw(growing, &context, true, false);
    }
    QnBitmapContext frame(view->bounds().size, 2);
    frame.context().drawImage(fresh.makeImage(), view->bounds());
    return frame.makeImage();
  }
  void expectShownAsDrawnAgain(const std::string& when, size_t live = 0, bool ended = false) {
    QnImage a = shown(), b = expected(live, ended);
    ASSERT_EQ(std::pair(a.pixelWidth(), a.pixelHeight()), std::pair(b.pixelWidth(), b.pixelHeight())) << when;
    const int differing = test_support::differingPixels(a, b);
    EXPECT_EQ(differing, 0) << when;
    const int inked = test_support::countPixels(b, [](QnImage::Pixel p, int) { return p.a > 0; });
    EXPECT_TRUE(controller.drawingArray()->empty() || inked > 0) << when;
    if (differing) savePNG(a, "ink-shown-" + std::to_string(++failures) + ".png");
  }
  QnDrawingView& ink() { return *controller.canvasView(); }

  // Points along a wave across the view, back and forth (or `step` points apart, as a hand's samples
  // come); `pressure` scales the pen.
  void begin(int points, double y, float pressure = 0.4f, double step = 0) {
    for (int i = 0; i < points; ++i) {
      QnSignaturePoint p;
      p.location = {12 + (step ? step * i : (i * 37 % 270) + 0.25 * i / (points + 1)), y + 14 * std::sin(i * (step ? 0.2 : 0.7))};
      p.timestamp = t += 0.012;
      p.pressure = pressure;
      if (i == 0) controller.drawTouchBeganWithPoint(p);
      else controller.drawTouchMovedWithPoint(p);
    }
  }
  void end(bool laidOut = true) {
    QnSignaturePoint p = *controller.drawingArray()->back()->rbegin();
    p.location.x += 3, p.timestamp = t += 0.012;
    controller.drawTouchEndedWithPoint(p);
    // as the record's preparation lays the canvas out at every stroke's end
    if (laidOut) controller.updateLayout();
  }
  void stroke(int points, double y, float pressure = 0.4f) {
    begin(points - 1, y, pressure);
    end();
  }

  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 300, 120));
  QnDemoDrawingController controller{view};
  double t = 1;
  int failures = 0;
};

TEST_F(InkShown, IsAlwaysThatOfDrawingEveryStrokeAgainAndLiveInkAsItAlwaysWas) {
  controller.setVelocityReduction(0.85f);
  ink().setStrokeColor(QnColor(0.1, 0.2, 0.7, 1));
  controller.updateLayout();  // the cache at the screen's scale, set after the controller was made
  begin(80, 30, 0.4f, 3.3);
  end(false);
  expectShownAsDrawnAgain("the first stroke, before its layout", 81, true);
  controller.updateLayout();
  expectShownAsDrawnAgain("the first stroke");
  stroke(3, 60), stroke(1, 90), stroke(2, 100);
  expectShownAsDrawnAgain("strokes of three, one and two points");
  begin(25, 70, 0.6f, 2.1);
  expectShownAsDrawnAgain("in the middle of a stroke", 25);
  end();
  for (int i = 0; i < 40; ++i) {  // every bend a corner
    QnSignaturePoint p;
    p.location = {20 + 3.0 * i, 20 + 4.0 * (i % 2)}, p.timestamp = t += 0.012, p.pressure = 0.5f;
    if (i == 0) controller.drawTouchBeganWithPoint(p);
    else controller.drawTouchMovedWithPoint(p);
  }
  expectShownAsDrawnAgain("a zigzag", 40);
  end();
  controller.setDiameterLimit([](float) { return -6.0f; });  // a limit that turns the pen inside out
  begin(30, 50, 0.5f, 2.5);
  expectShownAsDrawnAgain("a pen of negative width", 30);
  controller.setDiameterLimit(nullptr);
  end();
  expectShownAsDrawnAgain("that stroke ended");
  ink().setStrokeColor(QnColor(0.1, 0.2, 0.7, 0.55));
  controller.redraw();
  begin(30, 60, 0.4f, 2);
  expectShownAsDrawnAgain("live ink of a colour that lets the ink beneath show", 30);
  end();
  controller.undoDrawingStroke();
  expectShownAsDrawnAgain("an undo");
  controller.undoDrawingStroke(), controller.undoDrawingStroke();
  expectShownAsDrawnAgain("two more");
  controller.redoDrawingStroke();
  expectShownAsDrawnAgain("a redo");
  begin(20, 50);
  controller.undoDrawingStroke();  // takes the open stroke away, and the stroke before it
  expectShownAsDrawnAgain("an undo while drawing");
  begin(15, 80);
  controller.cancelDrawingStroke();
  expectShownAsDrawnAgain("a cancelled stroke");
  controller.redoDrawingStroke(), controller.redoDrawingStroke();
  expectShownAsDrawnAgain("redone after the cancel");
  controller.updateLayout(), controller.updateLayout();
  expectShownAsDrawnAgain("laid out again twice");
  controller.setColor(QnColor(0.8, 0.1, 0.1, 0.8));
  controller.redraw();
  expectShownAsDrawnAgain("in another colour");
  stroke(200, 60);
  controller.undoDrawingStroke();
  stroke(12, 40);
  expectShownAsDrawnAgain("a long stroke undone, then another drawn");
  controller.setDrawingArray(controller.drawingArrayWithOffset({3.25, -2.5}));
  controller.redraw();
  expectShownAsDrawnAgain("moved");
  view->setFrame(makeRect(0, 0, 280, 140));
  controller.updateLayout();
  stroke(30, 100);
  expectShownAsDrawnAgain("resized, and one more stroke");
  // Strokes wide enough to reach every tile: the history keeps the last one's tiles only.
  controller.setColor(QnColor(0.1, 0.5, 0.2, 1));
  for (int i = 0; i < 3; ++i) stroke(60, 40 + 20 * i, 12);
  begin(90, 100, 12, 3);
  expectShownAsDrawnAgain("live ink as wide as a tile, out to the edges", 90);
  end();
  controller.undoDrawingStroke(), controller.undoDrawingStroke(), controller.undoDrawingStroke();
  expectShownAsDrawnAgain("three wide strokes undone");
  controller.redoDrawingStroke();
  expectShownAsDrawnAgain("and one redone");
}

// A stroke that goes once and a bit around a circle, drawn in full into SVG. The expected document
// was worked out from the drawing rules alone by data/looping_stroke_svg.py, which also gives these
// points: every inner segment is a varying-width outline, so each narrowing to single precision (and
// each value kept in double) shows in its printed coordinates.
TEST(DrawingView, ALoopingStrokeDrawnInFullIntoSVGGivesTheDocumentTheRulesWorkOut) {
  QnStroke loop;
  for (auto [location, diameter, velocity] : std::initializer_list<std::tuple<QnPoint, float, QnPoint>>{
       {{60.0, 25.0}, 2.20f, {1, 6.123233995736766e-17}},
       {{74.34, 29.52}, 2.57f, {0.8191520442889918, 0.57357643635104616}},
       {{83.49, 41.45}, 2.94f, {0.34202014332566871, 0.93969262078590843}},
       {{84.15, 56.47}, 3.31f, {-0.25881904510252074, 0.96592582628906831}},
       {{76.07, 69.15}, 3.68f, {-0.76604444311897801, 0.64278760968653936}},
       {{62.18, 74.9}, 4.05f, {-0.99619469809174555, 0.087155742747658138}},
       {{47.5, 71.65}, 4.42f, {-0.86602540378443871, -0.49999999999999978}},
       {{37.34, 60.57}, 4.79f, {-0.4226182617406995, -0.90630778703664994}},
       {{35.38, 45.66}, 5.16f, {0.17364817766693047, -0.98480775301220802}},
       {{42.32, 32.32}, 5.53f, {0.70710678118654746, -0.70710678118654768}},
       {{55.66, 25.38}, 5.90f, {0.98480775301220802, -0.17364817766693033}},
       {{70.57, 27.34}, 6.27f, {0.90630778703664994, 0.42261826174069961}},
       })
    loop.push_back(inkPoint(location.x, location.y, diameter, velocity));
  QnDrawingView view(makeRect(0, 0, 120, 100));
  view.setMyStrokes(strokeList({loop}));
  QnComboContext svg(nullptr);
  svg.setIsSVG(true), svg.setScaleCTMXY(1, 1);
  view.drawToContextWithFinalSegmentFullRedraw(&svg, true, true);
  EXPECT_EQ(svg.serializeSVG({120, 100}), test_support::readText(SCRIVLET_TEST_DATA_DIR "/looping_stroke.svg"));
}

}  // namespace
}  // namespace scrivlet
