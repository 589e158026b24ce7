// The live stroke model: touch phases, ids, pen diameters, undo and redo, and what the ink view is given.
#include "capture/drawing_controller.h"

#include <scrivlet/device.h>

#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "render/combo_context.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace scrivlet {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

QnSignaturePoint pt(double x, double y, double t, float pressure = 0) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.timestamp = t;
  p.pressure = pressure;
  return p;
}

class DrawingController : public ::testing::Test {
 protected:
  // A 264 dpi tablet with two physical pixels per point.
  void SetUp() override {
    setenv("SIMULATOR_MODEL_IDENTIFIER", "iPad6,11", 1);
    QnDevice::setNativeScale(2.0);
  }
  void TearDown() override {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    QnDevice::resetToDefaults();
  }
  // Draws a whole stroke of three points ten points apart, starting at x.
  static void drawStroke(QnDemoDrawingController& c, double x, double t) {
    c.drawTouchBeganWithPoint(pt(x, 10, t));
    c.drawTouchMovedWithPoint(pt(x + 10, 10, t + 0.1));
    c.drawTouchEndedWithPoint(pt(x + 20, 10, t + 0.2));
  }
  const float kMetersPerPoint = (1.0f / 264.0f) * 0.0254f * 2.0f;
};

TEST_F(DrawingController, DefaultsAndTheInkViewInsideTheGivenView) {
  auto view = HeadlessView::create(makeRect(15, 25, 320, 180));
  QnDemoDrawingController c(view);
  EXPECT_EQ(c.strokeWidthMax(), 4.0f);
  EXPECT_EQ(c.velocityReduction(), 0.0f);
  EXPECT_EQ(c.signaturePointID(), 100u);
  EXPECT_EQ(c.metersPerPoint(), kMetersPerPoint);
  EXPECT_EQ(c.velocityMax(), kMetersPerPoint * 1500.0f);
  EXPECT_FALSE(c.drawing());
  EXPECT_FALSE(c.inkEnabled());
  EXPECT_FALSE(c.useCalligraphicBrush());
  EXPECT_FALSE(c.lastPoint().has_value());
  EXPECT_TRUE(c.drawingArray()->empty());
  EXPECT_TRUE(c.drawingArrayForRedo()->empty());
  EXPECT_TRUE(c.myController().expired());

  auto canvas = c.canvasView();
  ASSERT_TRUE(canvas);
  ASSERT_EQ(view->subviews().size(), 1u);
  EXPECT_EQ(view->subviews()[0], canvas);
  EXPECT_EQ(canvas->superview(), view);
  EXPECT_EQ(canvas->tag(), 90);
  EXPECT_EQ(canvas->frame(), makeRect(0, 0, 320, 180));
  EXPECT_FALSE(canvas->isUserInteractionEnabled());
  EXPECT_TRUE(canvas->drawSmoothCurve());

  c.setColor(QnColor(1, 0, 0, 1));
  EXPECT_EQ(canvas->strokeColor(), QnColor(1, 0, 0, 1));
  c.setUseCalligraphicBrush(true);
  EXPECT_TRUE(canvas->useCalligraphicBrush());

  // Without a view: a zero-sized ink view, and capture still works.
  QnDemoDrawingController bare(nullptr);
  EXPECT_EQ(bare.canvasView()->frame(), QnRectZero);
  EXPECT_NO_THROW({
    drawStroke(bare, 0, 1.0);
    bare.updateLayout();
    bare.undoDrawingStroke();
  });
  EXPECT_EQ(bare.canvasView()->frame(), QnRectZero);
  EXPECT_EQ(bare.drawingArrayForRedo()->size(), 1u);
}

TEST_F(DrawingController, TapGivesTwoPointsWithConsecutiveIdsAndNoSpeed) {
  QnDemoDrawingController c(nullptr);
  c.drawTouchBeganWithPoint(pt(50, 60, 2.0));
  // The end point is elsewhere, but takes the start point's velocity.
  c.drawTouchEndedWithPoint(pt(53, 64, 2.05));
  ASSERT_EQ(c.drawingArray()->size(), 1u);
  const QnStroke& s = *c.drawingArray()->at(0);
  ASSERT_EQ(s.size(), 2u);
  EXPECT_EQ(s[0].id, 100u);
  EXPECT_EQ(s[1].id, 101u);
  EXPECT_EQ(s[0].location, (QnPoint{50, 60}));
  EXPECT_EQ(s[0].timestamp, 2.0);
  EXPECT_EQ(s[0].velocity, (QnPoint{0, 0}));
  EXPECT_EQ(s[1].velocity, (QnPoint{0, 0}));
  EXPECT_EQ(s[1].acceleration, (QnPoint{0, 0}));
  EXPECT_EQ(s[0].diameter, 3.1111114f);
  EXPECT_EQ(s[1].diameter, (4.0f + (3.1111114f + 3.1111114f)) / 3.0f);
  EXPECT_FALSE(c.drawing());
  EXPECT_EQ(c.signaturePointID(), 102u);
}

TEST_F(DrawingController, DiametersWithoutSpeedThinningRiseTowardsTheMaximum) {
  {
    SCOPED_TRACE("pressure 0.5 on the first point");
    QnDemoDrawingController c(nullptr);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0, 0.5f));
    // Target 4 + 1.5, blended with two thirds of the maximum twice.
    EXPECT_EQ(c.drawingArray()->at(0)->at(0).diameter, 3.6111114f);
  }
  SCOPED_TRACE("pressure 0, a fast pen");
  QnDemoDrawingController c(nullptr);
  c.drawTouchBeganWithPoint(pt(0, 0, 1.0));
  float previous = c.pointArray()->back().diameter;
  EXPECT_EQ(previous, 3.1111114f);
  for (int i = 1; i <= 80; ++i) c.drawTouchMovedWithPoint(pt(40.0 * i, 0, 1.0 + 0.01 * i));
  const QnStroke& s = *c.pointArray();
  ASSERT_EQ(s.size(), 81u);
  for (size_t i = 1; i < s.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(s[i].diameter, (4.0f + (previous + previous)) / 3.0f);
    EXPECT_GE(s[i].diameter, previous);
    EXPECT_LE(s[i].diameter, 4.0f);
    previous = s[i].diameter;
  }
  EXPECT_GT(previous, 3.9999f);
}

TEST_F(DrawingController, SpeedThinsThePenByTheReduction) {
  const float fullSpeedTarget = 0.5999999f;  // 4 - 0.85 x 4
  {
    SCOPED_TRACE("1500 points per second, then faster on both axes");
    QnDemoDrawingController c(nullptr);
    c.setVelocityReduction(0.85f);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0));
    float d = c.pointArray()->back().diameter;
    EXPECT_EQ(d, 3.1111114f);  // no speed yet: the full target 4
    c.drawTouchMovedWithPoint(pt(375, 0, 1.25));  // exactly 1500 points per second
    float d1 = (fullSpeedTarget + (d + d)) / 3.0f;
    EXPECT_EQ(c.pointArray()->back().diameter, d1);
    c.drawTouchMovedWithPoint(pt(975, 800, 1.5));  // 4000 points per second
    float d2 = (fullSpeedTarget + (d1 + d1)) / 3.0f;
    EXPECT_EQ(c.pointArray()->back().diameter, d2);
    EXPECT_LT(d2, d1);
    // Half the full speed loses half the reduction.
    c.drawTouchMovedWithPoint(pt(975 + 187.5, 800, 1.75));
    float half = 4.0f - (0.85f * 0.5f) * 4.0f;
    EXPECT_EQ(c.pointArray()->back().diameter, (half + (d2 + d2)) / 3.0f);
  }
  {
    SCOPED_TRACE("the calligraphic pen thins by a third of the reduction");
    QnDemoDrawingController c(nullptr);
    c.setVelocityReduction(0.85f);
    c.setUseCalligraphicBrush(true);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0));
    c.drawTouchMovedWithPoint(pt(750, 0, 1.25));
    float target = 4.0f - (0.85f / 3.0f) * 4.0f;
    EXPECT_EQ(c.pointArray()->back().diameter, (target + (3.1111114f + 3.1111114f)) / 3.0f);
  }
  {
    SCOPED_TRACE("pressure raises the target and the thinning alike");
    QnDemoDrawingController c(nullptr);
    c.setVelocityReduction(0.85f);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0, 1.0f));
    float d = c.pointArray()->back().diameter;
    EXPECT_EQ(d, (7.0f + (2.6666667f + 2.6666667f)) / 3.0f);
    c.drawTouchMovedWithPoint(pt(750, 0, 1.25, 1.0f));
    float target = 7.0f - 0.85f * (7.0f - 1.5f);
    EXPECT_EQ(c.pointArray()->back().diameter, (target + (d + d)) / 3.0f);
  }
  {
    SCOPED_TRACE("an unknown speed counts as full speed");
    QnDemoDrawingController c(nullptr);
    c.setVelocityReduction(0.85f);
    c.drawTouchBeganWithPoint(pt(0, 0, 1.0));
    c.drawTouchMovedWithPoint(pt(kNaN, 0, 1.1));
    EXPECT_TRUE(std::isnan(c.pointArray()->back().velocity.x));
    EXPECT_EQ(c.pointArray()->back().diameter, (fullSpeedTarget + (3.1111114f + 3.1111114f)) / 3.0f);
    EXPECT_EQ(c.calculateDiameterWithVelocityAndPressure({kNaN, kNaN}, 0),
              (fullSpeedTarget + (c.lastPoint()->diameter + c.lastPoint()->diameter)) / 3.0f);
  }
}

TEST_F(DrawingController, NextStrokeCarriesOnFromThePreviousOne) {
  QnDemoDrawingController c(nullptr);
  c.setVelocityReduction(0.85f);
  drawStroke(c, 0, 1.0);
  const QnSignaturePoint last = c.drawingArray()->at(0)->back();
  EXPECT_EQ(last.timestamp, 1.0 + 0.2);
  EXPECT_EQ(last.id, 102u);

  // Far away and much later: still no speed, and the width blends with the old last width.
  c.drawTouchBeganWithPoint(pt(300, 200, 9.0, 0.25f));
  const QnSignaturePoint& first = c.pointArray()->at(0);
  EXPECT_EQ(first.id, 103u);
  EXPECT_EQ(first.velocity, (QnPoint{0, 0}));
  EXPECT_EQ(first.acceleration, (QnPoint{0, 0}));
  EXPECT_EQ(first.diameter, (4.75f + (last.diameter + last.diameter)) / 3.0f);
  // The stored last point of the finished stroke keeps its own time.
  EXPECT_EQ(c.drawingArray()->at(0)->back().timestamp, 1.0 + 0.2);
  EXPECT_EQ(c.drawingArray()->at(0)->back().location, (QnPoint{20, 10}));
}

TEST_F(DrawingController, EndPointTakesTheVelocityOfThePointBeforeIt) {
  QnDemoDrawingController c(nullptr);
  c.drawTouchBeganWithPoint(pt(0, 0, 1.0));
  c.drawTouchMovedWithPoint(pt(10, -20, 1.5));
  const double vx = 10.0 * static_cast<double>(kMetersPerPoint) / 0.5;
  const double vy = -20.0 * static_cast<double>(kMetersPerPoint) / 0.5;
  QnSignaturePoint moved = c.pointArray()->back();
  EXPECT_EQ(moved.velocity, (QnPoint{vx, vy}));
  EXPECT_EQ(moved.acceleration, (QnPoint{vx / 0.5, vy / 0.5}));
  QnSignaturePoint end0 = pt(500, 500, 1.6);
  end0.velocity = {3, 3};  // whatever the point brings is replaced
  end0.acceleration = {7, 7};
  c.drawTouchEndedWithPoint(end0);
  const QnSignaturePoint& end = c.drawingArray()->at(0)->back();
  EXPECT_EQ(end.location, (QnPoint{500, 500}));
  EXPECT_EQ(end.velocity, (QnPoint{vx, vy}));
  EXPECT_EQ(end.acceleration, (QnPoint{0, 0}));
}

TEST_F(DrawingController, TouchPhasesUndoAndRedoFollowTheStateTable) {
  {
    SCOPED_TRACE("moved while idle opens a stroke; the timestamp-only end is a no-op");
    QnDemoDrawingController c(nullptr);
    c.drawTouchMovedWithPoint(pt(1, 2, 1.0));
    EXPECT_TRUE(c.drawing());
    ASSERT_EQ(c.drawingArray()->size(), 1u);
    EXPECT_EQ(c.drawingArray()->back(), c.pointArray());
    EXPECT_EQ(c.pointArray()->size(), 1u);
    c.drawTouchEndedWithTimestamp(1.1);
    EXPECT_TRUE(c.drawing());
    EXPECT_EQ(c.pointArray()->size(), 1u);
  }
  QnDemoDrawingController c(nullptr);
  drawStroke(c, 0, 1.0);
  QnStrokeRef a = c.drawingArray()->at(0);
  drawStroke(c, 100, 2.0);
  QnStrokeRef b = c.drawingArray()->at(1);
  c.undoDrawingStroke();
  ASSERT_EQ(c.drawingArrayForRedo()->size(), 1u);
  EXPECT_EQ(c.drawingArrayForRedo()->back(), b);
  {
    SCOPED_TRACE("ended while idle changes nothing and keeps the redo list");
    c.drawTouchEndedWithPoint(pt(5, 5, 3.0));
    EXPECT_EQ(c.drawingArray()->size(), 1u);
    EXPECT_EQ(c.drawingArrayForRedo()->size(), 1u);
    EXPECT_EQ(c.signaturePointID(), 106u);
    EXPECT_EQ(c.lastPoint()->id, 105u);
    c.cancelDrawingStroke();  // idle: nothing
    EXPECT_EQ(c.drawingArray()->size(), 1u);
  }
  {
    SCOPED_TRACE("undo, then a cancelled stroke, keeps the redo list");
    c.drawTouchBeganWithPoint(pt(0, 50, 4.0));
    c.drawTouchMovedWithPoint(pt(5, 50, 4.1));
    EXPECT_EQ(c.drawingArrayForRedo()->size(), 1u);
    c.cancelDrawingStroke();
    EXPECT_FALSE(c.drawing());
    ASSERT_EQ(c.drawingArray()->size(), 1u);
    EXPECT_EQ(c.drawingArray()->at(0), a);
    EXPECT_EQ(c.drawingArrayForRedo()->size(), 1u);
    EXPECT_EQ(c.signaturePointID(), 108u);  // ids are not given back
  }
  {
    SCOPED_TRACE("redo with an open stroke drops it and brings the undone stroke back");
    c.drawTouchBeganWithPoint(pt(0, 70, 5.0));
    c.redoDrawingStroke();
    EXPECT_FALSE(c.drawing());
    ASSERT_EQ(c.drawingArray()->size(), 2u);
    EXPECT_EQ(c.drawingArray()->at(1), b);
    EXPECT_TRUE(c.drawingArrayForRedo()->empty());
  }
  {
    SCOPED_TRACE("redo on an empty redo list only cancels the open stroke");
    c.drawTouchBeganWithPoint(pt(0, 80, 6.0));
    c.redoDrawingStroke();
    EXPECT_FALSE(c.drawing());
    EXPECT_EQ(c.drawingArray()->size(), 2u);
  }
  {
    SCOPED_TRACE("undo while drawing removes the open stroke and the newest finished one");
    c.drawTouchBeganWithPoint(pt(0, 90, 7.0));
    c.undoDrawingStroke();
    EXPECT_FALSE(c.drawing());
    ASSERT_EQ(c.drawingArray()->size(), 1u);
    EXPECT_EQ(c.drawingArray()->at(0), a);
    ASSERT_EQ(c.drawingArrayForRedo()->size(), 1u);
    EXPECT_EQ(c.drawingArrayForRedo()->at(0), b);
  }
  {
    SCOPED_TRACE("beginning over an open stroke finalizes it and clears the redo list");
    c.drawTouchBeganWithPoint(pt(0, 100, 8.0));
    c.drawTouchMovedWithPoint(pt(5, 100, 8.1));
    EXPECT_EQ(c.drawingArrayForRedo()->size(), 1u);
    c.drawTouchBeganWithPoint(pt(0, 110, 8.2));
    EXPECT_TRUE(c.drawing());
    EXPECT_TRUE(c.drawingArrayForRedo()->empty());
    ASSERT_EQ(c.drawingArray()->size(), 3u);
    EXPECT_EQ(c.drawingArray()->at(1)->size(), 2u);
    EXPECT_EQ(c.drawingArray()->at(2), c.pointArray());
  }
  {
    SCOPED_TRACE("undo, then a stroke drawn to its end, empties the redo list");
    c.drawTouchEndedWithPoint(pt(5, 110, 8.3));
    c.undoDrawingStroke();
    EXPECT_EQ(c.drawingArrayForRedo()->size(), 1u);
    drawStroke(c, 0, 9.0);
    EXPECT_TRUE(c.drawingArrayForRedo()->empty());
    EXPECT_EQ(c.drawingArray()->size(), 3u);
  }
  {
    SCOPED_TRACE("reset empties both lists but keeps the ids and the last point");
    c.undoDrawingStroke();
    const uint64_t next = c.signaturePointID();
    const float lastDiameter = c.lastPoint()->diameter;
    c.resetCanvas();
    EXPECT_TRUE(c.drawingArray()->empty());
    EXPECT_TRUE(c.drawingArrayForRedo()->empty());
    EXPECT_EQ(c.signaturePointID(), next);
    c.drawTouchBeganWithPoint(pt(0, 0, 10.0));
    EXPECT_EQ(c.pointArray()->at(0).id, next);
    EXPECT_EQ(c.pointArray()->at(0).diameter, (4.0f + (lastDiameter + lastDiameter)) / 3.0f);
  }
  {
    SCOPED_TRACE("undo on an empty list only clears drawing");
    QnDemoDrawingController e(nullptr);
    e.undoDrawingStroke();
    EXPECT_FALSE(e.drawing());
    EXPECT_TRUE(e.drawingArray()->empty());
    EXPECT_TRUE(e.drawingArrayForRedo()->empty());
    e.drawTouchBeganWithPoint(pt(0, 0, 1.0));
    e.setDrawingArray(nullptr);  // a missing list counts as empty
    EXPECT_NO_THROW(e.undoDrawingStroke());
    EXPECT_FALSE(e.drawing());
    EXPECT_TRUE(e.drawingArray()->empty());
    EXPECT_TRUE(e.drawingArrayForRedo()->empty());
  }
}

TEST_F(DrawingController, OffsetCopiesAndReplacedLists) {
  auto view = HeadlessView::create(makeRect(0, 0, 100, 100));
  QnDemoDrawingController c(view);
  drawStroke(c, 20, 1.0);
  c.drawTouchBeganWithPoint(pt(20, 50, 2.0));
  c.drawTouchMovedWithPoint(pt(30, 50, 2.1));
  // During capture the ink view draws the very list being filled.
  EXPECT_EQ(c.canvasView()->myStrokes(), c.drawingArray());

  const QnStrokeListRef original = c.drawingArray();
  QnStrokeListRef moved = c.drawingArrayWithOffset({10, -5});
  ASSERT_EQ(moved->size(), 2u);
  EXPECT_NE(moved, original);
  for (size_t s = 0; s < 2; ++s) {
    ASSERT_EQ(moved->at(s)->size(), original->at(s)->size());
    EXPECT_NE(moved->at(s), original->at(s));
    for (size_t i = 0; i < moved->at(s)->size(); ++i) {
      SCOPED_TRACE(testing::Message() << "stroke " << s << " point " << i);
      const QnSignaturePoint& m = moved->at(s)->at(i);
      const QnSignaturePoint& o = original->at(s)->at(i);
      EXPECT_EQ(m.location, (QnPoint{o.location.x + 10, o.location.y - 5}));
      EXPECT_EQ(m.id, o.id);
      EXPECT_EQ(m.diameter, o.diameter);
      EXPECT_EQ(m.timestamp, o.timestamp);
    }
  }
  EXPECT_EQ(original->at(0)->at(0).location, (QnPoint{20, 10}));
  EXPECT_EQ(original->at(1)->at(1).location, (QnPoint{30, 50}));

  // Drawing with an offset hands the ink view the shifted copy, and draws it there.
  QnBitmapContext bitmap({100, 100}, 1.0);
  QnComboContext combo(&bitmap.context());
  c.drawCanvasToContextWithOffset(&combo, {10, -5});
  QnStrokeListRef shown = c.canvasView()->myStrokes();
  EXPECT_NE(shown, c.drawingArray());
  EXPECT_EQ(shown->at(0)->at(0).location, (QnPoint{30, 5}));
  QnImage image = bitmap.makeImage();
  EXPECT_GT(image.pixelAt(40, 5).a, 0);
  EXPECT_EQ(image.pixelAt(30, 10).a, 0);

  // The list is replaced while a stroke is open: later points go to the detached old stroke.
  QnStrokeRef open = c.pointArray();
  c.setDrawingArray(c.drawingArrayWithOffset({10, -5}));
  c.drawTouchMovedWithPoint(pt(40, 50, 2.2));
  c.drawTouchEndedWithPoint(pt(50, 50, 2.3));
  EXPECT_EQ(c.pointArray(), open);
  EXPECT_EQ(open->size(), 4u);
  ASSERT_EQ(c.drawingArray()->size(), 2u);
  EXPECT_NE(c.drawingArray()->back(), open);
  EXPECT_EQ(c.drawingArray()->back()->size(), 2u);
  EXPECT_EQ(c.drawingArray()->back()->at(1).location, (QnPoint{40, 45}));
  EXPECT_EQ(c.canvasView()->myStrokes(), c.drawingArray());
}

TEST_F(DrawingController, InkCacheFollowsTheResizedViewAndUndo) {
  QnDevice::setScreenScale(2.0);
  auto view = HeadlessView::create(makeRect(5, 5, 100, 50));
  QnDemoDrawingController c(view);
  drawStroke(c, 10, 1.0);
  view->setFrame(makeRect(5, 5, 240, 120));
  c.updateLayout();
  EXPECT_EQ(c.canvasView()->frame(), makeRect(0, 0, 240, 120));
  ASSERT_NE(c.canvasView()->cacheContext(), nullptr);
  EXPECT_EQ(c.canvasView()->cacheContext()->pixelWidth(), 480);
  EXPECT_EQ(c.canvasView()->cacheContext()->pixelHeight(), 240);
  // The strokes are drawn again into the new cache.
  QnImage cache = c.canvasView()->cacheContext()->makeImage();
  EXPECT_GT(cache.pixelAt(40, 20).a, 0);
  EXPECT_EQ(c.canvasView()->myStrokes(), c.drawingArray());
  // Undo wipes the stroke from the cache; redo draws it again.
  c.undoDrawingStroke();
  EXPECT_EQ(c.canvasView()->cacheContext()->makeImage().pixelAt(40, 20).a, 0);
  c.redoDrawingStroke();
  EXPECT_GT(c.canvasView()->cacheContext()->makeImage().pixelAt(40, 20).a, 0);
}

TEST_F(DrawingController, BadInputThrowsNothingAndKeepsEarlierStrokes) {
  QnDemoDrawingController c(nullptr);
  drawStroke(c, 0, 1.0);
  const QnStroke kept = *c.drawingArray()->at(0);
  EXPECT_NO_THROW({
    c.drawTouchBeganWithPoint(pt(kNaN, kNaN, 2.0));
    c.drawTouchMovedWithPoint(pt(kInf, -kInf, 2.1));
    c.drawTouchMovedWithPoint(pt(5, 5, 1.5));  // time goes backwards
    c.drawTouchMovedWithPoint(pt(6, 6, 2.2, std::numeric_limits<float>::quiet_NaN()));
    c.drawTouchEndedWithPoint(pt(7, 7, kNaN));
  });
  ASSERT_EQ(c.drawingArray()->size(), 2u);
  const QnStroke& s = *c.drawingArray()->at(1);
  ASSERT_EQ(s.size(), 5u);
  EXPECT_EQ(s[2].velocity, (QnPoint{0, 0}));  // no speed when time runs backwards
  EXPECT_EQ(s[2].acceleration, (QnPoint{0, 0}));
  EXPECT_EQ(s[3].diameter, 0.0f);  // an unknown pressure gives no width
  EXPECT_EQ(s[4].diameter, 4.0f / 3.0f);
  for (const QnSignaturePoint& p : s) EXPECT_FALSE(std::isnan(p.diameter));
  const QnStroke& first = *c.drawingArray()->at(0);
  ASSERT_EQ(first.size(), kept.size());
  for (size_t i = 0; i < kept.size(); ++i) {
    EXPECT_EQ(first[i].location, kept[i].location);
    EXPECT_EQ(first[i].diameter, kept[i].diameter);
    EXPECT_EQ(first[i].id, kept[i].id);
  }
  EXPECT_EQ(c.signaturePointID(), 108u);
  EXPECT_NO_THROW({
    c.redraw();
    c.orientationChange();
    c.updateLayout();
  });
}

}  // namespace
}  // namespace scrivlet
