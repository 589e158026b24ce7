// Rectangle rules as CoreGraphics has them.
#include <scrivlet/geometry.h>

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

TEST(Geometry, ContainmentTakesLeftAndTopEdgesButNotRightAndBottom) {
  QnRect r = makeRect(10, 20, 100, 50);
  EXPECT_TRUE(rectContainsPoint(r, {10, 20}));
  EXPECT_TRUE(rectContainsPoint(r, {109.999, 69.999}));
  EXPECT_FALSE(rectContainsPoint(r, {110, 30}));
  EXPECT_FALSE(rectContainsPoint(r, {50, 70}));
  EXPECT_FALSE(rectContainsPoint(r, {9.999, 30}));
  EXPECT_FALSE(rectContainsPoint(r, {NAN, 30}));
  EXPECT_FALSE(rectContainsPoint(makeRect(0, 0, 0, 0), {0, 0}));
  // A negative size covers the same area as its standardized rectangle.
  EXPECT_TRUE(rectContainsPoint(makeRect(110, 70, -100, -50), {10, 20}));
}

TEST(Geometry, IntegralRectangleEnclosesTheFractionalOne) {
  EXPECT_EQ(rectIntegral(makeRect(0.5, 1.2, 2, 2)), makeRect(0, 1, 3, 3));
  EXPECT_EQ(rectIntegral(makeRect(0, 0, 224, 104)), makeRect(0, 0, 224, 104));
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

}  // namespace
}  // namespace scrivlet
