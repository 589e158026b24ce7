// The ink view: the exact drawing calls for short strokes, the geometry predicates, the dirty area,
// and the ink it leaves in real pixels.
#include "render/drawing_view.h"

#include <scrivlet/notification_center.h>

#include "capture/drawing_controller.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "platform/recording_context.h"
#include "render/combo_context.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace scrivlet {
namespace {

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

// The calls after the clearing and the stroke set-up, as readable lines.
std::vector<std::string> drawingCalls(QnDrawingView& view, QnStrokeListRef strokes, bool final,
                                      bool full) {
  RecordingContext recording;
  QnComboContext combo(&recording);
  view.setMyStrokes(strokes);
  view.drawToContextWithFinalSegmentFullRedraw(&combo, final, full);
  std::vector<std::string> lines;
  for (const auto& call : recording.calls()) lines.push_back(call.str());
  return lines;
}

const std::vector<std::string> kClear = {"setBlendMode 16", "setFillColor 0 0 0 0",
                                         "fillRect 0 0 200 100", "setBlendMode 0"};

std::vector<std::string> strokeSetUp(double x, double y) {
  return {"setStrokeColor 0 1", "setFillColor 0 1", "setLineWidth 2", "setLineJoin 1",
          "setLineCap 1", "moveToPoint " + std::to_string(int(x)) + " " + std::to_string(int(y))};
}

std::vector<std::string> concat(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

TEST(DrawingView, OnePointStrokeIsARoundDot) {
  QnDrawingView view(makeRect(0, 0, 200, 100));
  auto calls = drawingCalls(view, strokesOf({{inkPoint(10, 20, 3)}}), true, true);
  EXPECT_EQ(calls, concat({kClear, strokeSetUp(10, 20),
                           {"beginPath", "moveToPoint 10 20", "setLineWidth 3",
                            "addLineToPoint 10 20", "drawPath 2"}}));
  // Incremental: no clearing, the same dot.
  calls = drawingCalls(view, strokesOf({{inkPoint(10, 20, 3)}}), false, false);
  EXPECT_EQ(calls, concat({strokeSetUp(10, 20), {"beginPath", "moveToPoint 10 20",
                                                 "setLineWidth 3", "addLineToPoint 10 20",
                                                 "drawPath 2"}}));
}

TEST(DrawingView, TwoPointStrokeIsALineWhenFinalAndAnOutlineOtherwise) {
  QnDrawingView view(makeRect(0, 0, 200, 100));
  QnStroke stroke{inkPoint(0, 0, 4), inkPoint(10, 0, 2)};
  std::vector<std::string> dot = {"beginPath", "moveToPoint 0 0", "setLineWidth 4",
                                  "addLineToPoint 0 0", "drawPath 2"};
  // Final: a plain round-capped line of the mean diameter to the midpoint.
  auto calls = drawingCalls(view, strokesOf({stroke}), true, false);
  EXPECT_EQ(calls, concat({strokeSetUp(0, 0), dot,
                           {"beginPath", "moveToPoint 0 0", "addLineToPoint 5 0",
                            "setLineWidth 3", "drawPath 2"}}));

  // Not final: a filled outline from diameter 4 at (0, 0) to diameter 3 at the midpoint (5, 0),
  // with both control points at (2.5, 0). Its sides run at y = -2 .. -1.5 and y = 2 .. 1.5.
  RecordingContext recording;
  QnComboContext combo(&recording);
  view.setMyStrokes(strokesOf({stroke}));
  view.drawToContextWithFinalSegmentFullRedraw(&combo, false, false);
  const auto& c = recording.calls();
  ASSERT_EQ(c.size(), 6u + 5u + 8u);
  std::vector<std::string> names;
  for (size_t i = 11; i < c.size(); ++i) names.push_back(c[i].name);
  EXPECT_EQ(names, (std::vector<std::string>{"beginPath", "moveToPoint", "addCurveToPoint", "addArc",
                                             "addCurveToPoint", "addArc", "closePath", "drawPath"}));
  EXPECT_EQ(c.back().str(), "drawPath 0");
  auto near = [](const std::vector<double>& got, const std::vector<double>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-5) << "argument " << i;
  };
  near(c[12].args, {0, -2});                               // S1, the start on one side
  near(c[13].args, {2.5, -2, 2.5, -1.5, 5, -1.5});         // arms of length 2.5 along the curve
  near(c[14].args, {5, 0, 1.5, 1.5 * M_PI, 2.5 * M_PI, 0});  // end cap around the destination
  near(c[15].args, {2.5, 1.5, 2.5, 2, 0, 2});              // back along the other side
  near(c[16].args, {0, 0, 2, 0.5 * M_PI, -0.5 * M_PI, 0}); // start cap around the origin
}

TEST(DrawingView, ThreePointStrokeDrawsSegmentsAndTheClosingPiece) {
  QnDrawingView view(makeRect(0, 0, 200, 100));
  // A right-angle turn at (10, 0): velocities (1, 0) then (0, 1) make a corner, drawn at constant
  // width with the smaller of the two mean diameters.
  QnStroke stroke{inkPoint(0, 0, 4, {1, 0}), inkPoint(10, 0, 4, {1, 0}),
                  inkPoint(10, 10, 2, {0, 1})};
  auto full = drawingCalls(view, strokesOf({stroke}), true, true);
  std::vector<std::string> corner = {"beginPath", "moveToPoint 5 0",
                                     "addCurveToPoint 7.5 0 10 2.5 10 5", "setLineWidth 3",
                                     "drawPath 2"};
  std::vector<std::string> closing = {"beginPath", "moveToPoint 10 5",
                                      "addCurveToPoint 10 5 10 10 10 10", "setLineWidth 3",
                                      "drawPath 2"};
  ASSERT_EQ(full.size(), kClear.size() + 6 + 5 + 8 + corner.size() + closing.size());
  EXPECT_EQ(std::vector<std::string>(full.end() - 10, full.end()), concat({corner, closing}));

  // Incremental, not final: only indices 1 and 2, and no closing piece.
  auto incremental = drawingCalls(view, strokesOf({stroke}), false, false);
  ASSERT_EQ(incremental.size(), 6u + 8u + corner.size());
  EXPECT_EQ(incremental[6], "beginPath");
  EXPECT_EQ(std::vector<std::string>(incremental.end() - 5, incremental.end()), corner);

  // Incremental and final: the closing piece as well.
  auto ending = drawingCalls(view, strokesOf({stroke}), true, false);
  EXPECT_EQ(std::vector<std::string>(ending.end() - 10, ending.end()), concat({corner, closing}));
}

TEST(DrawingView, IncrementalDrawingSkipsEveryStrokeButTheLast) {
  QnDrawingView view(makeRect(0, 0, 200, 100));
  auto strokes = strokesOf({{inkPoint(1, 1, 2)}, {inkPoint(50, 60, 5)}});
  auto calls = drawingCalls(view, strokes, false, false);
  EXPECT_EQ(calls, concat({strokeSetUp(50, 60), {"beginPath", "moveToPoint 50 60",
                                                 "setLineWidth 5", "addLineToPoint 50 60",
                                                 "drawPath 2"}}));
  // An empty stroke or an empty list draws nothing and does not fail.
  auto withEmpty = std::make_shared<QnStrokeList>(*strokes);
  withEmpty->push_back(std::make_shared<QnStroke>());
  EXPECT_TRUE(drawingCalls(view, withEmpty, false, false).empty());
  EXPECT_EQ(drawingCalls(view, std::make_shared<QnStrokeList>(), true, true), kClear);
  EXPECT_EQ(drawingCalls(view, nullptr, true, true), kClear);
}

TEST(DrawingView, CornerTestAndVectorPredicates) {
  // The default threshold is pi/4 in single precision, and the test is strictly greater.
  EXPECT_FALSE(QnDrawingView::angleBetweenVector1Vector2IsGreaterThan({1, 0}, {1, 1}, 0.7853981852531433f));
  EXPECT_TRUE(QnDrawingView::angleBetweenVector1Vector2IsGreaterThan({1, 0}, {0, 1}, 0.7853981852531433f));
  // The wrap-around gives the unsigned angle between the vectors.
  EXPECT_NEAR(QnDrawingView::angleBetweenVector1Vector2({-1, -0.01}, {-1, 0.01}), 0.02, 1e-4);
  EXPECT_NEAR(QnDrawingView::angleBetweenVector1Vector2({0, 1}, {0, -1}), M_PI, 1e-6);
  EXPECT_TRUE(QnDrawingView::vectorIsOppositeVector({1, 0}, {-1, 0.1}));
  EXPECT_FALSE(QnDrawingView::vectorIsOppositeVector({1, 0}, {1, 0.1}));
  // Collinearity sees the swapped angles without wrapping: just either side of straight down,
  // atan2(x, y) jumps from near pi to near -pi.
  EXPECT_FALSE(QnDrawingView::vectorIsCollinearToVector({-0.01, -1}, {0.01, -1}));
  EXPECT_TRUE(QnDrawingView::vectorIsCollinearToVector({1, 0}, {1, 1}));
  EXPECT_TRUE(QnDrawingView::vectorIsCollinearToVectorWithinRange({1, 0}, {1, 0.5}, 0.5f));
  EXPECT_FALSE(QnDrawingView::vectorIsCollinearToVectorWithinRange({1, 0}, {1, 1}, 0.5f));

  EXPECT_EQ(QnDrawingView::pointIsAboveThreshold({3, 4}, 4.99f), 1.0);
  EXPECT_EQ(QnDrawingView::pointIsAboveThreshold({3, 4}, 5.0f), 0.0);
  EXPECT_EQ(QnDrawingView::squaredDistanceBetweenAnd({1, 1}, {4, 5}), 25.0);
  EXPECT_EQ(QnDrawingView::distanceBetweenAnd({1, 1}, {4, 5}), 5.0);
  EXPECT_EQ(QnDrawingView::squaredDistanceBetweenAnd({2, 2}, {2, 2}), 0.0001);
  EXPECT_EQ(QnDrawingView::distanceBetweenAnd({2, 2}, {2, 2}), 0.0001);
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
}

TEST(DrawingView, ColourNotificationChangesTheInk) {
  QnDrawingView view(makeRect(0, 0, 10, 10));
  EXPECT_EQ(view.strokeColor(), QnColor::black());
  QnNotificationCenter::defaultCenter().postNotificationName(
      "colorChanged", nullptr, {{"color", QnColor(1, 0, 0, 1)}});
  EXPECT_EQ(view.strokeColor(), QnColor(1, 0, 0, 1));
  EXPECT_TRUE(view.needsDisplay());
  view.strokeWidthChanged({"strokeWidthChanged", nullptr, {{"strokeWidth", 7.5f}}});
  EXPECT_EQ(view.strokeWidth(), 7.5f);
}

// --- Pixels -----------------------------------------------------------------------------------

std::string outputPath(const std::string& name) {
  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  return std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/" + name;
}

void save(const QnImage& image, const std::string& name) {
  std::vector<uint8_t> png = image.encodePNG();
  FILE* f = std::fopen(outputPath(name).c_str(), "wb");
  ASSERT_NE(f, nullptr);
  std::fwrite(png.data(), 1, png.size(), f);
  std::fclose(f);
}

// A controller on a 300 x 120 view, fed a wavy stroke whose points are dt seconds apart.
struct Canvas {
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 300, 120));
  QnDemoDrawingController controller{view};

  void drawWave(double dt, float pressure, double amplitude = 25) {
    for (int i = 0; i <= 60; ++i) {
      QnSignaturePoint p;
      p.location = {20 + i * 4.3, 60 + amplitude * std::sin(i * 0.2)};
      p.timestamp = 1 + i * dt;
      p.pressure = pressure;
      if (i == 0)
        controller.drawTouchBeganWithPoint(p);
      else if (i == 60)
        controller.drawTouchEndedWithPoint(p);
      else
        controller.drawTouchMovedWithPoint(p);
    }
  }
  QnImage ink() const { return controller.canvasView()->cacheContext()->makeImage(); }
};

int inkedPixels(const QnImage& image) {
  int count = 0;
  for (int y = 0; y < image.pixelHeight(); ++y)
    for (int x = 0; x < image.pixelWidth(); ++x) count += image.pixelAt(x, y).a > 128;
  return count;
}

// The ink's thickness down one column.
int thicknessAt(const QnImage& image, int x) {
  int count = 0;
  for (int y = 0; y < image.pixelHeight(); ++y) count += image.pixelAt(x, y).a > 128;
  return count;
}

TEST(DrawingViewPixels, LiveInkMatchesAFullRedrawAndLiesAlongTheStroke) {
  Canvas canvas;
  canvas.controller.setVelocityReduction(0.85f);
  canvas.drawWave(0.01, 0.3f);
  QnImage live = canvas.ink();
  canvas.controller.redraw();
  QnImage redrawn = canvas.ink();
  save(live, "live-ink.png");
  save(redrawn, "redrawn-ink.png");

  // Live drawing blends each antialiased edge more than once, so edges may be darker; but no pixel
  // is solid ink in one and nearly empty in the other.
  int inked = inkedPixels(redrawn), contradicting = 0;
  double liveCoverage = 0, redrawnCoverage = 0;
  for (int y = 0; y < live.pixelHeight(); ++y)
    for (int x = 0; x < live.pixelWidth(); ++x) {
      int a = live.pixelAt(x, y).a, b = redrawn.pixelAt(x, y).a;
      contradicting += (a > 192 && b < 64) || (b > 192 && a < 64);
      liveCoverage += a;
      redrawnCoverage += b;
    }
  EXPECT_GT(inked, 500);
  EXPECT_EQ(contradicting, 0);
  EXPECT_NEAR(liveCoverage / redrawnCoverage, 1.0, 0.2);

  // Ink on the curve, none away from it.
  for (int i = 0; i <= 60; i += 5) {
    double x = 20 + i * 4.3, y = 60 + 25 * std::sin(i * 0.2);
    EXPECT_GT(redrawn.pixelAt(int(x), int(y)).a, 128) << "on the stroke at " << x << "," << y;
    EXPECT_EQ(redrawn.pixelAt(int(x), int(y) + 12).a, 0) << "below the stroke";
  }
  EXPECT_EQ(redrawn.pixelAt(5, 5).a, 0);
  EXPECT_EQ(redrawn.pixelAt(295, 115).a, 0);
  EXPECT_EQ(redrawn.pixelAt(150, 60).r, 0) << "black ink";
}

TEST(DrawingViewPixels, FastStrokesAreThinnerAndPressureWidens) {
  Canvas slow, fast, pressed;
  for (Canvas* c : {&slow, &fast, &pressed}) c->controller.setVelocityReduction(0.85f);
  slow.drawWave(0.1, 0, 0);      // about 43 points a second
  fast.drawWave(0.0005, 0, 0);   // about 8600 points a second, past full speed
  pressed.drawWave(0.1, 1, 0);   // slow, full pressure: target width 4 + 3
  save(slow.ink(), "slow-ink.png");
  save(fast.ink(), "fast-ink.png");
  save(pressed.ink(), "pressed-ink.png");
  int slowWidth = thicknessAt(slow.ink(), 150);
  int fastWidth = thicknessAt(fast.ink(), 150);
  int pressedWidth = thicknessAt(pressed.ink(), 150);
  EXPECT_NEAR(slowWidth, 4, 1);
  EXPECT_LE(fastWidth, 2);
  EXPECT_GE(fastWidth, 1) << "a fast line still shows";
  EXPECT_NEAR(pressedWidth, 7, 1);
}

}  // namespace
}  // namespace scrivlet
