// The guideline artwork (x-mark and rule) and the guideline's place in the capture view.
#include "render/style_kit.h"

#include <scrivlet/device.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "output_support.h"
#include "platform/image_view.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

// Inside each arm, in the centre, on the rule; between the arms, under and beyond the rule.
void expectMarkAndRule(const QnImage& image) {
  ASSERT_EQ(image.pixelWidth(), std::lround(472 * image.scale()));
  ASSERT_EQ(image.pixelHeight(), std::lround(38 * image.scale()));
  struct { double x, y; bool ink; } probes[] = {
      {23.72, 17.95, true}, {27.76, 13.92, true}, {19.69, 21.99, true}, {27.76, 21.99, true},
      {19.69, 13.92, true}, {23.72, 11, false},   {15.2, 17.95, false}, {200, 26.5, true},
      {200, 29, false},     {200, 24.5, false},   {40, 26, false},      {45, 26, true},
      {449.5, 26, true},    {451.5, 26, false},  // the rule runs from x 44.38 to 450.38
  };
  for (const auto& p : probes) {
    int x = std::floor(p.x * image.scale()), y = std::floor(p.y * image.scale());
    EXPECT_EQ(test_support::rgbaAt(image, x, y), (test_support::Rgba{0, 0, 0, p.ink ? 255 : 0}))
        << "at (" << p.x << ", " << p.y << ")";
  }
  double coverage = 0;  // down one column: the rule's thickness in points
  for (int y = 0; y < image.pixelHeight(); ++y)
    coverage += image.pixelAt(static_cast<int>(200 * image.scale()), y).a / 255.0;
  EXPECT_NEAR(coverage / image.scale(), 2.0, 0.03);
}

TEST(StyleKit, ArtworkRasterisesToTheMarkAndATwoPointRuleMadeOnce) {
  for (double scale : {1.0, 2.0, 3.0}) {
    SCOPED_TRACE(testing::Message() << "scale " << scale);
    QnBitmapContext bitmap(QnScrivletStyleKit::kScrivletXSize, scale);
    QnScrivletStyleKit::drawScrivlet_x(bitmap.context());
    expectMarkAndRule(bitmap.makeImage());
  }
  QnDevice::setScreenScale(2);  // the kept image is made at the screen scale of its first use
  const QnImage& image = QnScrivletStyleKit::imageOfScrivlet_x();
  EXPECT_EQ(image.size(), (QnSize{472, 38}));
  expectMarkAndRule(image);
  EXPECT_EQ(QnScrivletStyleKit::imageOfScrivlet_x().surface(), image.surface());
  QnDevice::resetToDefaults();
  test_support::savePNG(image, "guideline.png");
}

// The guideline of a 540 x 527 capture view.
constexpr double kX540 = 13.500003218650818;  // 540 x (1 - 0.95f) / 2
constexpr double kY527 = 296.4375;            // 527 x 9 / 16
constexpr double kW540 = 512.9999935626984;   // 540 x 0.95f

// Two strokes of ink and an empty one between them.
QnStrokeListRef someInk() {
  auto at = [](double x, double y, float pressure) {
    QnSignaturePoint p;
    p.location = {x, y};
    p.timestamp = 4.5;
    p.pressure = pressure;
    return p;
  };
  return std::make_shared<QnStrokeList>(QnStrokeList{
      std::make_shared<QnStroke>(QnStroke{at(100, 300, 0.25f), at(150.25, 310.5, 0.5f)}),
      std::make_shared<QnStroke>(), std::make_shared<QnStroke>(QnStroke{at(400, 320.75, 1)})});
}

// The ink's locations, stroke by stroke, moved by (dx, dy).
test_support::Trace locations(const QnScrivletController& c, double dx = 0, double dy = 0) {
  test_support::Trace trace = test_support::traceOf(c.drawingController()->drawingArray());
  for (test_support::Path& path : trace)
    for (auto& [x, y] : path) x += dx, y += dy;
  return trace;
}

TEST(Guideline, SitsNineSixteenthsDownAcrossNinetyFivePercentAndTheInkMovesWithIt) {
  auto view = HeadlessView::create(makeRect(0, 0, 540, 527));
  auto controller = QnScrivletController::create(view, {}, {});
  const auto& guideline = controller->guideline();
  ASSERT_TRUE(guideline);
  EXPECT_EQ(guideline->frame(), makeRect(kX540, kY527, kW540, kW540 / 472.0f * 38.0f));
  EXPECT_EQ(guideline->contentMode(), kQnContentModeScaleAspectFit);
  EXPECT_EQ(guideline->superview(), view);
  EXPECT_EQ(guideline->image().surface(), QnScrivletStyleKit::imageOfScrivlet_x().surface());
  QnImage shot = snapshotOfView(*view, 1);  // the rule crosses at y 296.4375 + 26.02 x 513 / 472
  test_support::savePNG(shot, "guideline_in_view.png");
  EXPECT_GT(shot.pixelAt(200, 324).a, 200);
  EXPECT_LT(shot.pixelAt(200, 324).r, 40);
  EXPECT_EQ(shot.pixelAt(200, 330).a, 0);
  EXPECT_EQ(shot.pixelAt(55, 324).a, 0);  // between the mark and the rule
  view->notifyGeometryChange(QnGeometryTarget::layer, "transform");  // no size change: no move
  controller->observeValueForKeyPath("anchorPoint");
  EXPECT_EQ(guideline->frame().origin, (QnPoint{kX540, kY527}));
  EXPECT_EQ(guideline->frame().size.width, kW540);
  EXPECT_NEAR(guideline->frame().size.height, kW540 * 38 / 472, 1e-5);  // sides kept as floats

  controller->setShowGuideline(false);  // hidden, it is still laid out and the ink follows it
  EXPECT_TRUE(!controller->showGuideline() && guideline->isHidden());
  EXPECT_EQ(snapshotOfView(*view, 1).pixelAt(200, 324).a, 0);
  controller->drawingController()->setDrawingArray(someInk());
  const double x320 = 8.000001907348633;  // 320 x (1 - 0.95f) / 2
  auto moved = locations(*controller, x320 - kX540, 270 - kY527);
  view->setFrame(makeRect(0, 0, 320, 480));
  EXPECT_EQ(guideline->frame().origin, (QnPoint{x320, 270}));
  EXPECT_EQ(guideline->frame().size.width, 303.99999618530273);
  EXPECT_EQ(locations(*controller), moved);
  const auto& first = *controller->drawingController()->drawingArray()->front();
  EXPECT_TRUE(first[1].pressure == 0.5f && first[1].timestamp == 4.5);
  controller->updateLayout();  // without a change, or for a move of the view, the ink stays
  controller->updateLayout();
  view->setFrame(makeRect(35, 60, 320, 480));
  EXPECT_EQ(locations(*controller), moved);
  EXPECT_EQ(guideline->frame().origin, (QnPoint{x320, 270}));
  controller->setShowGuideline(true);
  EXPECT_FALSE(guideline->isHidden());
}

// A view of no width, from the start or resized to nothing, leaves the guideline empty at its corner
// for good: a later size never places it again, and the ink stays where the last layout took it.
TEST(Guideline, AViewOfNoWidthLeavesAnEmptyGuidelineFromThenOnAndTheInkWhereItWas) {
  for (QnSize nothing : {QnSize{0, 0}, QnSize{0, 300}}) {
    for (bool fromTheStart : {true, false}) {
      SCOPED_TRACE(testing::Message() << nothing.height << (fromTheStart ? " from the start" : " resized"));
      auto view = HeadlessView::create(fromTheStart ? QnRect{{0, 0}, nothing} : makeRect(0, 0, 540, 527));
      auto controller = QnScrivletController::create(view, {}, {});
      const auto& guideline = controller->guideline();
      controller->drawingController()->setDrawingArray(someInk());
      const double y = nothing.height * 9 / 16;
      auto moved = locations(*controller, fromTheStart ? 0 : -kX540, fromTheStart ? 0 : y - kY527);
      view->setFrame({{0, 0}, nothing});
      EXPECT_EQ(guideline->frame(), makeRect(0, y, 0, 0));
      EXPECT_EQ(locations(*controller), moved);
      view->setFrame(makeRect(0, 0, 540, 527));
      guideline->setContentMode(kQnContentModeScaleToFill);
      controller->layoutGuideline();
      EXPECT_EQ(guideline->frame(), makeRect(0, y, 0, 0));
      EXPECT_EQ(guideline->contentMode(), kQnContentModeScaleAspectFit);
      EXPECT_EQ(locations(*controller), moved);
      EXPECT_NO_THROW(controller->updateLayout());
    }
  }
  // Without a view the guideline is laid out as on a view of zero size.
  EXPECT_EQ(QnScrivletController::create(nullptr, {}, {})->guideline()->frame(), QnRectZero);
}

}  // namespace
}  // namespace scrivlet
