// Rectangle rules as CoreGraphics has them, and copies of the strokes for export: clipped to a
// rectangle, and their bounding box. (Shifted copies: drawing_controller_test.cpp.)
#include <scrivlet/geometry.h>
#include <scrivlet/scrivlet_controller.h>

#include <gtest/gtest.h>

#include "output_support.h"

#include <cmath>

namespace scrivlet {
namespace {

using Ctl = QnScrivletController;

// A point whose every field is set, so that a copy can be told from a default.
QnSignaturePoint pt(double x, double y) { return {{x, y}, {1, 2}, {3, 4}, 5, .5f, 1, .75f, 3, 7}; }

std::vector<QnPoint> locs(const QnStrokeRef& stroke) {
  std::vector<QnPoint> result;
  for (const QnSignaturePoint& p : *stroke) result.push_back(p.location);
  return result;
}

using test_support::strokeList;

// (Which edges a rectangle holds: the clipping cases below.)
TEST(Geometry, AnEmptyRectangleHoldsNothingAndANegativeSizeCoversItsStandardizedArea) {
  EXPECT_FALSE(rectContainsPoint(makeRect(0, 0, 0, 0), {0, 0}));
  EXPECT_TRUE(rectContainsPoint(makeRect(110, 70, -100, -50), {10, 20}));
}

TEST(Geometry, IntegralRectangleEnclosesTheFractionalOne) {
  EXPECT_EQ(rectIntegral(makeRect(0.5, 1.2, 2, 2)), makeRect(0, 1, 3, 3));
  // The same size lands on one more unit when the origin is fractional.
  EXPECT_EQ(rectIntegral(makeRect(-1.5, -2.5, 224, 104)), makeRect(-2, -3, 225, 105));
  EXPECT_EQ(rectIntegral(makeRect(3, 4, -2.5, -1.5)), makeRect(0, 2, 3, 2));
}

TEST(Geometry, UnionAndInset) {
  EXPECT_EQ(rectUnion(makeRect(0, 0, 10, 10), makeRect(20, -5, 5, 5)), makeRect(0, -5, 25, 15));
  EXPECT_EQ(rectInset(makeRect(0, 0, 10, 10), -2, 3), makeRect(-2, 3, 14, 4));
  EXPECT_TRUE(rectIsEmpty(makeRect(1, 1, 0, 5)));
  EXPECT_FALSE(rectIsEmpty(makeRect(1, 1, 1, 5)));
}

TEST(StrokeCopies, ClippingKeepsLeftAndTopEdgesAndEveryStroke) {
  auto strokes = strokeList({{pt(10, 20), pt(110, 30), pt(50, 70), pt(109.5, 69.5), pt(9.999, 30),
                        pt(50, 19.999), pt(10, 69.999), pt(NAN, 30), pt(110.001, 20)},
                       {pt(0, 0), pt(200, 200)}, {}, {pt(60, 40)}});
  // x in [10, 110), y in [20, 70).
  auto clipped = Ctl::copyOfStrokesClippedToBounds(strokes, makeRect(10, 20, 100, 50));
  ASSERT_EQ(clipped->size(), 4u);
  EXPECT_EQ(locs(clipped->at(0)), std::vector<QnPoint>({{10, 20}, {109.5, 69.5}, {10, 69.999}}));
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
