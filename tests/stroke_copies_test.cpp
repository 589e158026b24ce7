// Copies of the strokes for export: clipped to a rectangle (whose left and top edges it holds, and
// whose right and bottom ones it does not), and their bounding box. (Shifted copies:
// drawing_controller_test.cpp; whole-number covers of fractional rectangles: the export canvas cases in
// export_renderer_test.cpp; unions and insets: the ink view's dirty area in drawing_view_test.cpp.)
#include <scrivlet/scrivlet_controller.h>

#include <gtest/gtest.h>

#include "output_support.h"

#include <cmath>

namespace scrivlet {
namespace {

using Ctl = QnScrivletController;

// A point whose every field is set, so that a copy can be told from a default.
QnSignaturePoint pt(double x, double y) { return {{x, y}, {1, 2}, {3, 4}, 5, .5f, 1, .75f, 3, 7}; }

using test_support::strokeList;

TEST(StrokeCopies, ClippingKeepsLeftAndTopEdgesAndEveryStroke) {
  auto strokes = strokeList({{pt(10, 20), pt(110, 30), pt(50, 70), pt(109.5, 69.5), pt(9.999, 30),
                        pt(50, 19.999), pt(10, 69.999), pt(NAN, 30), pt(110.001, 20)},
                       {pt(0, 0), pt(200, 200)}, {}, {pt(60, 40)}});
  // x in [10, 110), y in [20, 70).
  auto clipped = Ctl::copyOfStrokesClippedToBounds(strokes, makeRect(10, 20, 100, 50));
  ASSERT_EQ(clipped->size(), 4u);
  EXPECT_EQ(test_support::traceOf(clipped)[0], (test_support::Path{{10, 20}, {109.5, 69.5}, {10, 69.999}}));
  EXPECT_EQ((*clipped)[0]->at(1).description(), pt(109.5, 69.5).description());
  EXPECT_TRUE((*clipped)[1]->empty() && (*clipped)[2]->empty());
  for (auto none : {Ctl::copyOfStrokesClippedToBounds(nullptr, QnRectZero),
                    Ctl::copyOfStrokesWithOffset(nullptr, {1, 1})})
    EXPECT_TRUE(!none || none->empty());
}

TEST(StrokeCopies, BoundingRectHoldsEveryPointWithoutMargin) {
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(strokeList({{pt(3.5, -2)}})), makeRect(3.5, -2, 0, 0));
  auto strokes = strokeList({{pt(1000, -1000)}, {pt(10, 20), pt(5, 40.5), pt(30.25, 15)}, {pt(-2, 25)}});
  strokes->at(0)->clear();  // an emptied first stroke: its stale point must not be read
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(strokes), makeRect(-2, 15, 32.25, 25.5));
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(strokeList({{}, {}})), QnRectZero);
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(nullptr), QnRectZero);
}

}  // namespace
}  // namespace scrivlet
