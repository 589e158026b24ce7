// The ink view: the exact drawing calls for short strokes, the geometry predicates, the dirty area,
// and the ink it leaves in real pixels.
#include "render/drawing_view.h"

#include <scrivlet/headless_view.h>
#include <scrivlet/notification_center.h>

#include "capture/drawing_controller.h"
#include "output_support.h"
#include "platform/image.h"
#include "platform/recording_context.h"
#include "render/combo_context.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <tuple>

namespace scrivlet {
namespace {

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

QnStrokeListRef strokesOf(std::initializer_list<QnStroke> strokes) {
  auto list = std::make_shared<QnStrokeList>();
  for (const QnStroke& s : strokes) list->push_back(std::make_shared<QnStroke>(s));
  return list;
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
      {"one point, full", strokesOf({one}), true, true, kClear + dotAt10},
      {"one point, incremental", strokesOf({one}), false, false, dotAt10},
      {"two points, final", strokesOf({two}), true, false, dotAt0 + line},
      {"two points, not final", strokesOf({two}), false, false, dotAt0 + outline(2, 1.5)},
      {"three points, full", strokesOf({three}), true, true, kClear + dotAt0 + corner + closing},
      {"three points, the newest segments", strokesOf({three}), false, false, setUp(0, 0) + corner},
      {"three points, final", strokesOf({three}), true, false, setUp(0, 0) + corner + closing},
      {"the last stroke only", strokesOf({{inkPoint(1, 1, 2)}, one}), false, false, dotAt10},
      {"an empty last stroke", strokesOf({one, {}}), false, false, {}},
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
  view.setMyStrokes(strokesOf({{inkPoint(50, 40, 4)}}));
  view.drawToContextWithFinalSegmentFullRedraw(&combo, false, false);
  EXPECT_EQ(view.dirtyRect(), makeRect(38, 28, 24, 24));
  view.displayInContext(recording);
  // Four points: from the point at n-3 to the last, grown by half the larger diameter + 10.
  view.setMyStrokes(strokesOf({{inkPoint(0, 0, 9), inkPoint(10, 30, 2), inkPoint(20, 5, 3),
                                inkPoint(40, 25, 5)}}));
  view.drawToContextWithFinalSegmentFullRedraw(&combo, false, false);
  EXPECT_EQ(view.dirtyRect(), makeRect(10 - 12.5, 25 - 12.5, 30 + 25, 5 + 25));
  view.displayInContext(recording);
  view.drawToContextWithFinalSegmentFullRedraw(&combo, true, true);
  EXPECT_EQ(view.dirtyRect(), view.bounds());
  view.strokeWidthChanged({"strokeWidthChanged", nullptr, {{"strokeWidth", 7.5f}}});
  EXPECT_EQ(view.strokeWidth(), 7.5f);
}

// The ink a controller on a 300 x 120 view leaves for a wavy stroke whose points are dt seconds
// apart: as drawn live, and redrawn in full.
auto drawWave(double dt, float pressure, double amplitude, const char* name) {
  auto view = HeadlessView::create(makeRect(0, 0, 300, 120));
  QnDemoDrawingController controller(view);
  controller.setVelocityReduction(0.85f);
  for (int i = 0; i <= 60; ++i) {
    QnSignaturePoint p;
    p.location = {20 + i * 4.3, 60 + amplitude * std::sin(i * 0.2)};
    p.timestamp = 1 + i * dt;
    p.pressure = pressure;
    if (i == 0) controller.drawTouchBeganWithPoint(p);
    else if (i == 60) controller.drawTouchEndedWithPoint(p);
    else controller.drawTouchMovedWithPoint(p);
  }
  QnImage live = controller.canvasView()->cacheContext()->makeImage();
  controller.redraw();
  QnImage redrawn = controller.canvasView()->cacheContext()->makeImage();
  test_support::savePNG(live, std::string(name) + "-live.png");
  test_support::savePNG(redrawn, std::string(name) + "-redrawn.png");
  return std::pair{live, redrawn};
}

// Pixels more than half inked in the columns from `from` up to `to`.
int inked(const QnImage& image, int from, int to) {
  int count = 0;
  for (int y = 0; y < image.pixelHeight(); ++y)
    for (int x = from; x < to; ++x) count += image.pixelAt(x, y).a > 128;
  return count;
}

TEST(DrawingViewPixels, LiveInkMatchesARedrawFollowsTheStrokeThinsWithSpeedAndWidensWithPressure) {
  auto [live, redrawn] = drawWave(0.01, 0.3f, 25, "wave-ink");
  // Live drawing blends each antialiased edge more than once, so edges may be darker; but no pixel
  // is solid ink in one and nearly empty in the other.
  int contradicting = 0;
  double liveCoverage = 0, redrawnCoverage = 0;
  for (int y = 0; y < live.pixelHeight(); ++y)
    for (int x = 0; x < live.pixelWidth(); ++x) {
      int a = live.pixelAt(x, y).a, b = redrawn.pixelAt(x, y).a;
      contradicting += (a > 192 && b < 64) || (b > 192 && a < 64);
      liveCoverage += a, redrawnCoverage += b;
    }
  EXPECT_EQ(contradicting, 0);
  EXPECT_NEAR(liveCoverage / redrawnCoverage, 1.0, 0.2);
  for (int i = 0; i <= 60; i += 5) {  // ink on the curve, none below it
    double x = 20 + i * 4.3, y = 60 + 25 * std::sin(i * 0.2);
    EXPECT_GT(redrawn.pixelAt(int(x), int(y)).a, 128) << "on the stroke at " << x << "," << y;
    EXPECT_EQ(redrawn.pixelAt(int(x), int(y) + 12).a, 0) << "below the stroke";
  }
  EXPECT_EQ(redrawn.pixelAt(150, 60).r, 0) << "black ink";

  // 43 points a second; 8600, past full speed; slow at full pressure.
  int slowWidth = inked(drawWave(0.1, 0, 0, "slow-ink").first, 150, 151);
  int fastWidth = inked(drawWave(0.0005, 0, 0, "fast-ink").first, 150, 151);
  EXPECT_NEAR(slowWidth, 4, 1);
  EXPECT_TRUE(fastWidth >= 1 && fastWidth <= 2) << fastWidth << ": thinner, but still showing";
  EXPECT_NEAR(inked(drawWave(0.1, 1, 0, "pressed-ink").first, 150, 151), 7, 1);  // 4 + 3
}

// The cache after a full redraw holds exactly the pixels of clearing and drawing every stroke again,
// however the redraws before it went: strokes added one by one, copies of the same ink, an undo, a
// redo, a colour change, a move, a one-point and a two-point stroke.
TEST(DrawingViewPixels, AFullRedrawGivesThePixelsOfDrawingEveryStrokeAgain) {
  auto view = HeadlessView::create(makeRect(0, 0, 300, 120));
  QnDemoDrawingController controller(view);
  QnDrawingView& ink = *controller.canvasView();
  auto expectEverythingDrawnAgain = [&](const char* when) {
    QnBitmapContext fresh({300, 120}, ink.cacheContext()->scale());
    QnComboContext context(&fresh.context());
    ink.drawStrokesToContextWithFinalSegmentFullRedraw(controller.drawingArray(), &context, true, true);
    QnImage expected = fresh.makeImage(), cache = ink.cacheContext()->makeImage();
    int differing = 0, inkedPixels = 0;
    for (int y = 0; y < expected.pixelHeight(); ++y)
      for (int x = 0; x < expected.pixelWidth(); ++x) {
        auto a = expected.pixelAt(x, y), b = cache.pixelAt(x, y);
        differing += a.r != b.r || a.g != b.g || a.b != b.b || a.a != b.a;
        inkedPixels += a.a != 0;
      }
    EXPECT_EQ(differing, 0) << when;
    return inkedPixels;
  };
  double t = 1;
  auto stroke = [&](double y, int points) {
    for (int i = 0; i < points; ++i) {
      QnSignaturePoint p;
      p.location = {20 + i * 9.7, y + 12 * std::sin(i * 0.7)};
      p.timestamp = t += 0.012;
      p.pressure = 0.4f;
      if (i == 0) controller.drawTouchBeganWithPoint(p);
      if (i > 0 && i + 1 < points) controller.drawTouchMovedWithPoint(p);
      if (i + 1 == points) controller.drawTouchEndedWithPoint(p);
    }
    controller.redraw();  // as every stroke's end does, through the layout of the record's preparation
  };
  stroke(30, 25);
  expectEverythingDrawnAgain("the first stroke");
  stroke(60, 30);
  stroke(90, 2);
  expectEverythingDrawnAgain("three strokes, drawn one by one");
  controller.setDrawingArray(controller.drawingArrayWithOffset({0, 0}));  // copies of the same ink
  controller.redraw();
  expectEverythingDrawnAgain("copies of the same strokes");
  stroke(100, 1);
  controller.undoDrawingStroke();
  int beforeRedo = expectEverythingDrawnAgain("after an undo");
  controller.redoDrawingStroke();
  EXPECT_GT(expectEverythingDrawnAgain("after a redo"), beforeRedo);
  controller.setColor(QnColor(0.8, 0.1, 0.1, 1));
  controller.redraw();
  expectEverythingDrawnAgain("in another colour");
  controller.setDrawingArray(controller.drawingArrayWithOffset({3.25, -2.5}));
  controller.redraw();
  stroke(45, 12);
  EXPECT_GT(expectEverythingDrawnAgain("moved, and one more stroke"), 500);
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
  view.setMyStrokes(strokesOf({loop}));
  QnComboContext svg(nullptr);
  svg.setIsSVG(true), svg.setScaleCTMXY(1, 1);
  view.drawToContextWithFinalSegmentFullRedraw(&svg, true, true);
  std::ifstream expected(SCRIVLET_TEST_DATA_DIR "/looping_stroke.svg");
  EXPECT_EQ(svg.serializeSVG({120, 100}), std::string(std::istreambuf_iterator<char>(expected), {}));
}

}  // namespace
}  // namespace scrivlet
