// Copies of the strokes for export: clipped to a rectangle, shifted, and their bounding box.
#include <scrivlet/scrivlet_controller.h>

#include <gtest/gtest.h>

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

QnStrokeListRef list(std::vector<QnStroke> strokes) {
  auto result = std::make_shared<QnStrokeList>();
  for (QnStroke& s : strokes) result->push_back(std::make_shared<QnStroke>(std::move(s)));
  return result;
}

TEST(StrokeCopies, ClippingKeepsLeftAndTopEdgesAndEveryStroke) {
  auto strokes = list({{pt(10, 20), pt(110, 30), pt(50, 70), pt(109.5, 69.5), pt(9.999, 30),
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

TEST(StrokeCopies, OffsetCopyMovesOnlyLocationsAndIsDeep) {
  auto strokes = list({{pt(1.5, 2.25), pt(-4, 8)}});
  auto shifted = Ctl::copyOfStrokesWithOffset(strokes, {2.5, -1.25});
  ASSERT_EQ(shifted->size(), 1u);
  EXPECT_EQ(locs((*shifted)[0]), (std::vector<QnPoint>{{4, 1}, {-1.5, 6.75}}));
  (*shifted)[0]->at(1).location = {-4, 8};
  EXPECT_EQ((*shifted)[0]->at(1).description(), pt(-4, 8).description());
  (*shifted)[0]->at(0).pressure = 0;
  EXPECT_EQ((*strokes)[0]->at(0).pressure, 0.75f);
}

TEST(StrokeCopies, BoundingRectHoldsEveryPointWithoutMargin) {
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(list({{pt(3.5, -2)}})), makeRect(3.5, -2, 0, 0));
  auto strokes = list({{pt(1000, -1000)}, {pt(10, 20), pt(5, 40.5), pt(30.25, 15)}, {pt(-2, 25)}});
  strokes->at(0)->clear();  // an emptied first stroke: its stale point must not be read
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(strokes), makeRect(-2, 15, 32.25, 25.5));
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(list({{}, {}})), QnRectZero);
  EXPECT_EQ(Ctl::boundingRectOfStrokesF(nullptr), QnRectZero);
}

}  // namespace
}  // namespace scrivlet
