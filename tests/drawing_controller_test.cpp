// The live stroke model: touch phases, ids, pen diameters, undo and redo, and what the ink view is given.
#include "capture/drawing_controller.h"

#include "capture/dpi_calculator.h"

#include <scrivlet/device.h>
#include <scrivlet/headless_view.h>

#include "platform/image.h"
#include "render/combo_context.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace scrivlet {
namespace {

QnSignaturePoint pt(double x, double y, double t, float pressure = 0) { return {{x, y}, {}, {}, t, 0, 0, pressure}; }

// Whether a stroke is open, the finished strokes and the redo list.
using State = std::tuple<bool, QnStrokeList, QnStrokeList>;
State state(const QnDemoDrawingController& c) { return {c.drawing(), *c.drawingArray(), *c.drawingArrayForRedo()}; }

// A whole stroke of three points ten points apart, starting at x.
void drawStroke(QnDemoDrawingController& c, double x, double t) {
  c.drawTouchBeganWithPoint(pt(x, 10, t)), c.drawTouchMovedWithPoint(pt(x + 10, 10, t + 0.1));
  c.drawTouchEndedWithPoint(pt(x + 20, 10, t + 0.2));
}

struct DrawingController : ::testing::Test {
  void TearDown() override { QnDevice::resetToDefaults(); }
};

TEST_F(DrawingController, DiameterIsARunningAverageTowardsATargetThatSpeedThins) {
  // Each point blends the target with twice the diameter before it; the first point starts from
  // two thirds of the maximum width, so at pressure 0 it is (4 + 2 x 8/3) / 3.
  const float full = 0.5999999f;  // 4 - 0.85 x 4
  struct Case { const char* what; float reduction; double dx, dy; bool calligraphic; float pressure, first, target; };
  const Case cases[] = {  // dx, dy: each quarter second
      {"no thinning: rises towards 4", 0, 40, 0, false, 0, 3.1111114f, 4},
      {"2000 points per second, on both axes", 0.85f, 300, 400, false, 0, 3.1111114f, full},
      {"half the full speed", 0.85f, 187.5, 0, false, 0, 3.1111114f, 4.0f - (0.85f * 0.5f) * 4.0f},
      {"calligraphic: a third", 0.85f, 750, 0, true, 0, 3.1111114f, 4.0f - (0.85f / 3.0f) * 4.0f},
      {"full pressure", 0.85f, 750, 0, false, 1, (7.0f + (2.6666667f + 2.6666667f)) / 3.0f, 7.0f - 0.85f * 5.5f},
      {"pressure 0.5, standing still", 0.85f, 0, 0, false, 0.5f, 3.6111114f, 5.5f},
      {"an unknown speed counts as full", 0.85f, NAN, 0, false, 0, 3.1111114f, full}};
  for (const Case& k : cases) {
    SCOPED_TRACE(k.what);
    QnDemoDrawingController c(nullptr);
    c.setVelocityReduction(k.reduction), c.setUseCalligraphicBrush(k.calligraphic);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0, k.pressure));
    float d = c.pointArray()->back().diameter;
    EXPECT_EQ(d, k.first);
    for (int step = 1; step <= 60; ++step) {
      c.drawTouchMovedWithPoint(pt(k.dx * step, k.dy * step, 1.0 + 0.25 * step, k.pressure));
      d = (k.target + (d + d)) / 3.0f;
      ASSERT_EQ(c.pointArray()->back().diameter, d) << "step " << step;
      ASSERT_LE(d, std::max(k.first, k.target));
    }
    EXPECT_NEAR(d, k.target, 1e-4);
  }
}

TEST_F(DrawingController, EndPointAndNextStrokeCarryOnFromThePointsBefore) {
  QnDemoDrawingController c(nullptr);
  c.drawTouchBeganWithPoint(pt(0, 0, 1.0)), c.drawTouchMovedWithPoint(pt(10, -20, 1.5));
  QnSignaturePoint end = pt(500, 500, 1.6);
  end.velocity = end.acceleration = {7, 7};  // whatever the end point brings is replaced
  c.drawTouchEndedWithPoint(end);
  const QnSignaturePoint last = c.drawingArray()->at(0)->back();
  const double m = QnDPICalculator::metersPerPoint();  // the velocity is that of the point before
  EXPECT_EQ(std::tuple(last.velocity, last.acceleration, last.id),
            std::tuple(QnPoint{10.0 * m / 0.5, -20.0 * m / 0.5}, QnPoint{0, 0}, 102u));

  // Far away and much later: no speed, and the width blends with the old last width.
  c.drawTouchBeganWithPoint(pt(300, 200, 9.0, 0.25f));
  const QnSignaturePoint& first = c.pointArray()->at(0);
  EXPECT_EQ(std::tuple(first.id, first.velocity, first.diameter),
            std::tuple(103u, QnPoint{0, 0}, (4.75f + (last.diameter + last.diameter)) / 3.0f));
  EXPECT_EQ(c.drawingArray()->at(0)->back().description(), last.description());
}

TEST_F(DrawingController, TouchPhasesUndoAndRedoFollowTheStateTable) {
  QnDemoDrawingController c(nullptr);
  c.undoDrawingStroke(), c.redoDrawingStroke();  // on empty lists
  EXPECT_EQ(state(c), State(false, {}, {}));
  c.drawTouchMovedWithPoint(pt(0, 10, 1.0)), c.drawTouchEndedWithTimestamp(1.1);  // moved while idle opens a stroke
  QnStrokeRef a = c.pointArray();
  EXPECT_EQ(state(c), State(true, {a}, {}));
  EXPECT_EQ(a->size(), 1u);
  c.drawTouchEndedWithPoint(pt(10, 10, 1.2)), drawStroke(c, 100, 2.0);
  QnStrokeRef b = c.drawingArray()->back();
  c.undoDrawingStroke(), c.drawTouchEndedWithPoint(pt(5, 5, 3.0)), c.cancelDrawingStroke();  // idle: no change
  EXPECT_EQ(state(c), State(false, {a}, {b}));
  c.drawTouchBeganWithPoint(pt(0, 50, 4.0)), c.drawTouchMovedWithPoint(pt(5, 50, 4.1)), c.cancelDrawingStroke();
  EXPECT_EQ(state(c), State(false, {a}, {b}));  // a cancelled stroke keeps the redo list
  EXPECT_EQ(c.signaturePointID(), 107u);  // ids are never given back
  for (int round = 0; round < 2; ++round) {  // redo drops an open stroke; the second time there is nothing to redo
    c.drawTouchBeganWithPoint(pt(0, 70, 5.0)), c.redoDrawingStroke();
    EXPECT_EQ(state(c), State(false, {a, b}, {}));
  }
  c.drawTouchBeganWithPoint(pt(0, 90, 7.0)), c.undoDrawingStroke();  // undo while drawing: the open and the newest
  EXPECT_EQ(state(c), State(false, {a}, {b}));
  c.drawTouchBeganWithPoint(pt(0, 100, 8.0));  // beginning over an open stroke finalizes it
  QnStrokeRef d = c.pointArray();
  c.drawTouchBeganWithPoint(pt(0, 110, 8.2));
  EXPECT_EQ(state(c), State(true, {a, d, c.pointArray()}, {}));
  c.drawTouchEndedWithPoint(pt(5, 110, 8.3)), c.undoDrawingStroke(), drawStroke(c, 0, 9.0);
  EXPECT_TRUE(c.drawingArrayForRedo()->empty());  // a finished stroke empties the redo list

  const uint64_t next = c.signaturePointID();  // reset keeps the ids and the last point
  const float lastDiameter = c.lastPoint()->diameter;
  c.resetCanvas();
  EXPECT_EQ(state(c), State(false, {}, {}));
  c.drawTouchBeganWithPoint(pt(0, 0, 10.0));
  EXPECT_EQ(std::pair(c.pointArray()->at(0).id, c.pointArray()->at(0).diameter),
            std::pair(next, (4.0f + (lastDiameter + lastDiameter)) / 3.0f));
  c.setDrawingArray(nullptr);  // a missing list counts as empty
  EXPECT_NO_THROW(c.undoDrawingStroke());
  EXPECT_EQ(state(c), State(false, {}, {}));
}

TEST_F(DrawingController, InkViewDrawsTheListsItIsGivenAndOffsetCopiesAreDeep) {
  QnDevice::setScreenScale(2.0);
  auto view = HeadlessView::create(makeRect(5, 5, 100, 50));
  QnDemoDrawingController c(view);
  const auto& ink = c.canvasView();
  EXPECT_EQ(std::pair(ink->tag(), ink->isUserInteractionEnabled()), std::pair(90, false));
  drawStroke(c, 20, 1.0);
  c.drawTouchBeganWithPoint(pt(20, 30, 2.0)), c.drawTouchMovedWithPoint(pt(30, 30, 2.1));
  const QnStrokeListRef original = c.drawingArray();
  EXPECT_EQ(ink->myStrokes(), original);  // the very list being filled
  QnStrokeListRef moved = c.drawingArrayWithOffset({10, -5});
  ASSERT_EQ(moved->size(), 2u);
  QnSignaturePoint m = moved->at(0)->back();
  EXPECT_EQ(std::pair(m.location, moved->at(1)->back().location), std::pair(QnPoint{50, 5}, QnPoint{40, 25}));
  m.location = {40, 10};  // every other field as it was
  EXPECT_EQ(m.description(), original->at(0)->back().description());
  moved->at(0)->back().pressure = 0.5f;  // a deep copy: the original keeps its pressure
  EXPECT_EQ(original->at(0)->back().pressure, 0.0f);

  QnBitmapContext bitmap({100, 50}, 1.0);  // drawn with an offset: the shifted copy, shifted ink
  QnComboContext combo(&bitmap.context());
  c.drawCanvasToContextWithOffset(&combo, {10, -5});
  EXPECT_EQ(ink->myStrokes()->at(0)->at(0).location, (QnPoint{30, 5}));
  EXPECT_GT(bitmap.makeImage().pixelAt(40, 5).a, 0);
  EXPECT_EQ(bitmap.makeImage().pixelAt(30, 10).a, 0);

  c.setDrawingArray(moved);  // replaced with a stroke open: later points go to the detached stroke
  c.drawTouchEndedWithPoint(pt(40, 30, 2.2));
  EXPECT_EQ(std::tuple(original->at(1)->size(), moved->at(1)->size(), ink->myStrokes()), std::tuple(3u, 2u, moved));

  view->setFrame(makeRect(5, 5, 240, 120));  // a new ink cache, two pixels a point, redrawn
  c.updateLayout();
  EXPECT_EQ(ink->frame(), makeRect(0, 0, 240, 120));
  ASSERT_NE(ink->cacheContext(), nullptr);
  EXPECT_EQ(std::pair(ink->cacheContext()->pixelWidth(), ink->cacheContext()->pixelHeight()), std::pair(480, 240));
  // (What the cache shows through undos, redos and resizes: InkShown in drawing_view_test.cpp.)
}

TEST_F(DrawingController, BadInputThrowsNothingAndKeepsEarlierStrokes) {
  QnDemoDrawingController c(nullptr);  // no view: a zero-sized ink view
  drawStroke(c, 0, 1.0);
  const QnSignaturePoint kept = c.drawingArray()->at(0)->back();
  EXPECT_NO_THROW({
    c.drawTouchEndedWithPoint(pt(1, 1, 1.5));  // no stroke open
    c.drawTouchBeganWithPoint(pt(NAN, NAN, 2.0)); c.drawTouchMovedWithPoint(pt(INFINITY, -INFINITY, 2.1));
    c.drawTouchMovedWithPoint(pt(5, 5, 1.5));  // time goes backwards
    c.drawTouchMovedWithPoint(pt(6, 6, 2.2, NAN)); c.drawTouchEndedWithPoint(pt(7, 7, NAN));
    c.redraw(); c.orientationChange(); c.updateLayout();
  });
  EXPECT_EQ(c.canvasView()->frame(), QnRectZero);
  ASSERT_EQ(c.drawingArray()->size(), 2u);
  EXPECT_EQ(c.drawingArray()->at(0)->size(), 3u);
  EXPECT_EQ(c.drawingArray()->at(0)->back().description(), kept.description());
  const QnStroke& s = *c.drawingArray()->at(1);
  ASSERT_EQ(s.size(), 5u);
  EXPECT_EQ(std::pair(s[2].velocity, s[2].acceleration), std::pair(QnPoint{0, 0}, QnPoint{0, 0}));  // time ran back
  EXPECT_EQ(std::pair(s[3].diameter, s[4].diameter), std::pair(0.0f, 4.0f / 3.0f));  // no width for unknown pressure
  for (const QnSignaturePoint& p : s) EXPECT_FALSE(std::isnan(p.diameter));
  EXPECT_EQ(c.signaturePointID(), 108u);
}

}  // namespace
}  // namespace scrivlet
