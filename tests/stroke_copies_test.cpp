// Copies of the strokes for export: clipped to a rectangle, shifted, and their bounding box.
#include <scrivlet/scrivlet_controller.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace scrivlet {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A point whose every field is set, so that a copy can be told from a default.
QnSignaturePoint pt(double x, double y, uint64_t id = 7) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.velocity = {0.5, -0.25};
  p.acceleration = {3, 4};
  p.timestamp = 12.75;
  p.azimuthAngle = 0.5f;
  p.altitudeAngle = 1.25f;
  p.pressure = 0.75f;
  p.diameter = 3.5f;
  p.id = id;
  return p;
}

QnStrokeListRef list(std::vector<QnStroke> strokes) {
  auto result = std::make_shared<QnStrokeList>();
  for (QnStroke& s : strokes) result->push_back(std::make_shared<QnStroke>(std::move(s)));
  return result;
}

std::vector<QnPoint> locations(const QnStrokeRef& stroke) {
  std::vector<QnPoint> result;
  for (const QnSignaturePoint& p : *stroke) result.push_back(p.location);
  return result;
}

void expectSameExceptLocation(const QnSignaturePoint& a, const QnSignaturePoint& b) {
  EXPECT_EQ(a.velocity, b.velocity);
  EXPECT_EQ(a.acceleration, b.acceleration);
  EXPECT_EQ(a.timestamp, b.timestamp);
  EXPECT_EQ(a.azimuthAngle, b.azimuthAngle);
  EXPECT_EQ(a.altitudeAngle, b.altitudeAngle);
  EXPECT_EQ(a.pressure, b.pressure);
  EXPECT_EQ(a.diameter, b.diameter);
  EXPECT_EQ(a.id, b.id);
}

TEST(StrokeCopies, ClippingKeepsLeftAndTopEdgesAndEveryStroke) {
  // x in [10, 110), y in [20, 70).
  const QnRect bounds = makeRect(10, 20, 100, 50);
  auto strokes = list({
      {pt(10, 20, 1), pt(110, 30, 2), pt(50, 70, 3), pt(109.5, 69.5, 4), pt(9.999, 30, 5),
       pt(50, 19.999, 6), pt(10, 69.999, 7), pt(kNaN, 30, 8), pt(110.001, 20, 9)},
      {pt(0, 0), pt(200, 200), pt(60, 90)},  // wholly outside
      {},
      {pt(60, 40, 10)},
  });
  auto clipped = QnScrivletController::copyOfStrokesClippedToBounds(strokes, bounds);
  ASSERT_TRUE(clipped);
  ASSERT_EQ(clipped->size(), 4u);
  EXPECT_EQ(locations((*clipped)[0]), (std::vector<QnPoint>{{10, 20}, {109.5, 69.5}, {10, 69.999}}));
  EXPECT_EQ((*clipped)[0]->at(1).id, 4u);
  expectSameExceptLocation((*clipped)[0]->at(1), (*strokes)[0]->at(3));
  EXPECT_TRUE((*clipped)[1]->empty());
  EXPECT_TRUE((*clipped)[2]->empty());
  EXPECT_EQ(locations((*clipped)[3]), (std::vector<QnPoint>{{60, 40}}));

  SCOPED_TRACE("the copy is new; the input is as it was");
  EXPECT_NE(clipped, strokes);
  for (size_t i = 0; i < 4; ++i) EXPECT_NE((*clipped)[i], (*strokes)[i]);
  (*clipped)[0]->at(0).location = {-1, -1};
  EXPECT_EQ((*strokes)[0]->size(), 9u);
  EXPECT_EQ((*strokes)[0]->at(0).location, (QnPoint{10, 20}));

  SCOPED_TRACE("empty and missing input");
  auto none = QnScrivletController::copyOfStrokesClippedToBounds(nullptr, bounds);
  EXPECT_TRUE(!none || none->empty());
  auto zero = QnScrivletController::copyOfStrokesClippedToBounds(strokes, QnRectZero);
  ASSERT_EQ(zero->size(), 4u);
  for (const auto& s : *zero) EXPECT_TRUE(s->empty());
}

TEST(StrokeCopies, OffsetCopyMovesOnlyLocationsAndIsDeep) {
  auto strokes = list({{pt(1.5, 2.25, 1), pt(-4, 8, 2)}, {}, {pt(100, 0.125, 3)}});
  auto shifted = QnScrivletController::copyOfStrokesWithOffset(strokes, {2.5, -1.25});
  ASSERT_EQ(shifted->size(), 3u);
  EXPECT_EQ(locations((*shifted)[0]), (std::vector<QnPoint>{{4, 1}, {-1.5, 6.75}}));
  EXPECT_TRUE((*shifted)[1]->empty());
  EXPECT_EQ(locations((*shifted)[2]), (std::vector<QnPoint>{{102.5, -1.125}}));
  for (size_t i = 0; i < 2; ++i) {
    SCOPED_TRACE(testing::Message() << "point " << i);
    expectSameExceptLocation((*shifted)[0]->at(i), (*strokes)[0]->at(i));
  }

  SCOPED_TRACE("a zero offset copies deeply: changing the copy leaves the input");
  auto copy = QnScrivletController::copyOfStrokesWithOffset(strokes, {0, 0});
  ASSERT_EQ(copy->size(), 3u);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_NE((*copy)[i], (*strokes)[i]);
    EXPECT_EQ(locations((*copy)[i]), locations((*strokes)[i]));
  }
  (*copy)[0]->at(0).location = {99, 99};
  (*copy)[0]->at(1).pressure = 0;
  (*copy)[1]->push_back(pt(5, 5));
  copy->pop_back();
  EXPECT_EQ(strokes->size(), 3u);
  EXPECT_EQ((*strokes)[0]->at(0).location, (QnPoint{1.5, 2.25}));
  EXPECT_EQ((*strokes)[0]->at(1).pressure, 0.75f);
  EXPECT_TRUE((*strokes)[1]->empty());

  SCOPED_TRACE("missing input");
  auto none = QnScrivletController::copyOfStrokesWithOffset(nullptr, {1, 1});
  EXPECT_TRUE(!none || none->empty());
}

TEST(StrokeCopies, BoundingRectHoldsEveryPointWithoutMargin) {
  {
    SCOPED_TRACE("one point: a rectangle of no size at that point");
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(list({{pt(3.5, -2)}})),
              makeRect(3.5, -2, 0, 0));
  }
  {
    SCOPED_TRACE("several strokes; the first point is neither minimum nor maximum");
    auto strokes = list({{pt(10, 20), pt(5, 40.5), pt(30.25, 15)}, {pt(-2, 25)}, {pt(12, 18)}});
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(strokes), makeRect(-2, 15, 32.25, 25.5));
  }
  {
    SCOPED_TRACE("an empty first stroke, as clipping leaves it, is passed over");
    // The stale point kept in the emptied stroke's storage must not be read.
    QnStroke emptied{pt(1000, -1000)};
    emptied.clear();
    auto strokes = std::make_shared<QnStrokeList>();
    strokes->push_back(std::make_shared<QnStroke>(std::move(emptied)));
    strokes->push_back(std::make_shared<QnStroke>(QnStroke{pt(7, 8), pt(9, 4)}));
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(strokes), makeRect(7, 4, 2, 4));
  }
  {
    SCOPED_TRACE("no point at all");
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(list({{}, {}})), QnRectZero);
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(list({})), QnRectZero);
    EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(nullptr), QnRectZero);
  }
  SCOPED_TRACE("the box of a clipped copy");
  auto strokes = list({{pt(500, 500)}, {pt(20, 30), pt(50.5, 25)}});
  auto clipped = QnScrivletController::copyOfStrokesClippedToBounds(strokes, makeRect(0, 0, 100, 100));
  EXPECT_EQ(QnScrivletController::boundingRectOfStrokesF(clipped), makeRect(20, 25, 30.5, 5));
}

}  // namespace
}  // namespace scrivlet
