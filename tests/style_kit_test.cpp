// The guideline artwork (x-mark and rule) and the guideline's place in the capture view.
#include "controller/style_kit.h"

#include <scrivlet/device.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "platform/image_view.h"
#include "platform/recording_context.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace scrivlet {
namespace {

// The pixel under a point given in points, in an image made at the given scale.
QnImage::Pixel at(const QnImage& image, double x, double y) {
  return image.pixelAt(static_cast<int>(std::floor(x * image.scale())),
                       static_cast<int>(std::floor(y * image.scale())));
}

void expectOpaqueBlack(const QnImage& image, double x, double y) {
  SCOPED_TRACE(testing::Message() << "at (" << x << ", " << y << ")");
  QnImage::Pixel p = at(image, x, y);
  EXPECT_EQ(p.a, 255);
  EXPECT_EQ(p.r + p.g + p.b, 0);
}

void expectClear(const QnImage& image, double x, double y) {
  SCOPED_TRACE(testing::Message() << "at (" << x << ", " << y << ")");
  EXPECT_EQ(at(image, x, y).a, 0);
}

// Inside each arm, in the centre, on the rule; between the arms, under and beyond the rule.
void expectMarkAndRule(const QnImage& image) {
  ASSERT_EQ(image.pixelWidth(), std::lround(472 * image.scale()));
  ASSERT_EQ(image.pixelHeight(), std::lround(38 * image.scale()));
  expectOpaqueBlack(image, 23.72, 17.95);  // centre
  expectOpaqueBlack(image, 27.76, 13.92);  // upper right arm
  expectOpaqueBlack(image, 19.69, 21.99);  // lower left arm
  expectOpaqueBlack(image, 27.76, 21.99);  // lower right arm
  expectOpaqueBlack(image, 19.69, 13.92);  // upper left arm
  expectClear(image, 23.72, 11);           // the notch between the upper arms
  expectClear(image, 15.2, 17.95);         // the notch between the left arms
  expectOpaqueBlack(image, 200, 26.5);     // the rule, about y 26.02
  double coverage = 0;                     // down one column: the rule's thickness in points
  for (int y = 0; y < image.pixelHeight(); ++y)
    coverage += image.pixelAt(static_cast<int>(200 * image.scale()), y).a / 255.0;
  EXPECT_NEAR(coverage / image.scale(), 2.0, 0.03);
  expectClear(image, 200, 29);
  expectClear(image, 200, 24.5);
  expectClear(image, 40, 26);              // left of the rule's start at x 44.38
  expectOpaqueBlack(image, 45, 26);
  expectOpaqueBlack(image, 449.5, 26);
  expectClear(image, 451.5, 26);           // right of its end at x 450.38
}

TEST(StyleKit, ArtworkRasterisesToTheMarkAndATwoPointRule) {
  for (double scale : {1.0, 2.0, 3.0}) {
    SCOPED_TRACE(testing::Message() << "scale " << scale);
    QnBitmapContext bitmap(QnScrivletStyleKit::kScrivletXSize, scale);
    QnScrivletStyleKit::drawScrivlet_x(bitmap.context());
    expectMarkAndRule(bitmap.makeImage());
  }
  SCOPED_TRACE("the kept image, made at the screen scale of its first use");
  QnDevice::setScreenScale(2);
  const QnImage& image = QnScrivletStyleKit::imageOfScrivlet_x();
  EXPECT_EQ(image.size(), (QnSize{472, 38}));
  expectMarkAndRule(image);
  EXPECT_EQ(&QnScrivletStyleKit::imageOfScrivlet_x(), &image);
  EXPECT_EQ(QnScrivletStyleKit::imageOfScrivlet_x().surface(), image.surface());
  QnDevice::resetToDefaults();

  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  std::vector<uint8_t> png = image.encodePNG();
  std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/guideline.png", std::ios::binary)
      .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
}

// One drawn path: its points, how it was drawn, and the state it was drawn with.
struct DrawnPath {
  std::vector<QnPoint> points;
  bool closed = false;
  int mode = -1;
  std::vector<double> fill, stroke;
  double lineWidth = 1, miterLimit = 10;
};

// Replays a call log: drawing a path consumes it, as it does on a real context.
std::vector<DrawnPath> drawnPaths(const RecordingContext& recording) {
  std::vector<DrawnPath> result;
  DrawnPath current;
  std::vector<double> fill, stroke;
  double lineWidth = 1, miterLimit = 10;
  for (const auto& c : recording.calls()) {
    if (c.name == "beginPath") current = {};
    if (c.name == "moveToPoint" || c.name == "addLineToPoint") current.points.push_back({c.args[0], c.args[1]});
    if (c.name == "closePath") current.closed = true;
    if (c.name == "setFillColor") fill = c.args;
    if (c.name == "setStrokeColor") stroke = c.args;
    if (c.name == "setLineWidth") lineWidth = c.args[0];
    if (c.name == "setMiterLimit") miterLimit = c.args[0];
    if (c.name == "drawPath") {
      current.mode = static_cast<int>(c.args[0]);
      current.fill = fill;
      current.stroke = stroke;
      current.lineWidth = lineWidth;
      current.miterLimit = miterLimit;
      result.push_back(current);
      current = {};
    }
  }
  return result;
}

// Grey-and-alpha or RGBA components as RGBA.
std::vector<double> rgba(const std::vector<double>& c) {
  return c.size() == 2 ? std::vector<double>{c[0], c[0], c[0], c[1]} : c;
}

TEST(StyleKit, ArtworkIsSixFilledQuadrilateralsAndAFilledThenStrokedRule) {
  RecordingContext recording;
  QnScrivletStyleKit::drawScrivlet_x(recording);
  std::vector<DrawnPath> paths = drawnPaths(recording);
  ASSERT_EQ(paths.size(), 8u);
  const std::vector<QnPoint> quads[6] = {
      {{23.72, 15.22}, {29.06, 9.89}, {31.79, 12.62}, {26.46, 17.95}},  // upper right
      {{18.39, 26.02}, {15.66, 23.28}, {20.99, 17.95}, {23.72, 20.69}},  // lower left
      {{31.79, 23.29}, {29.06, 26.02}, {23.72, 20.69}, {26.46, 17.95}},  // lower right
      {{15.66, 12.62}, {18.39, 9.89}, {23.72, 15.22}, {20.99, 17.95}},   // upper left
      {{23.72, 20.69}, {20.99, 17.95}, {23.72, 15.22}, {26.46, 17.95}},  // centre
      {{23.72, 20.69}, {20.99, 17.95}, {23.72, 15.22}, {26.46, 17.95}},  // centre again
  };
  const std::vector<double> black{0, 0, 0, 1};
  for (int i = 0; i < 6; ++i) {
    SCOPED_TRACE(testing::Message() << "quadrilateral " << i);
    EXPECT_EQ(paths[i].points, quads[i]);
    EXPECT_TRUE(paths[i].closed);
    EXPECT_EQ(paths[i].mode, kQnPathFill);
    EXPECT_EQ(rgba(paths[i].fill), black);
  }
  const std::vector<QnPoint> rule{{44.38, 26.02}, {450.38, 26.02}};
  {
    SCOPED_TRACE("the rule filled, painting nothing");
    EXPECT_EQ(paths[6].points, rule);
    EXPECT_FALSE(paths[6].closed);
    EXPECT_EQ(paths[6].mode, kQnPathFill);
  }
  SCOPED_TRACE("the rule stroked");
  EXPECT_EQ(paths[7].points, rule);
  EXPECT_FALSE(paths[7].closed);
  EXPECT_EQ(paths[7].mode, kQnPathStroke);
  EXPECT_EQ(rgba(paths[7].stroke), black);
  EXPECT_EQ(paths[7].lineWidth, 2);
  EXPECT_EQ(paths[7].miterLimit, 4);
}

TEST(StyleKit, TargetsAreKeptAndEachIsGivenTheImage) {
  QnScrivletStyleKit kit;
  auto a = std::make_shared<QnImageView>(QnImage());
  auto b = std::make_shared<QnImageView>(QnImage());
  kit.setScrivlet_xTargets({a, nullptr, b});  // a missing target is skipped
  ASSERT_EQ(kit.scrivlet_xTargets().size(), 3u);
  EXPECT_EQ(kit.scrivlet_xTargets()[0], a);
  EXPECT_EQ(kit.scrivlet_xTargets()[2], b);
  EXPECT_EQ(a->image().surface(), QnScrivletStyleKit::imageOfScrivlet_x().surface());
  EXPECT_EQ(b->image().surface(), QnScrivletStyleKit::imageOfScrivlet_x().surface());
  kit.setScrivlet_xTargets({});
  EXPECT_TRUE(kit.scrivlet_xTargets().empty());
}

// The guideline of a 540 x 527 capture view.
constexpr double kX540 = 13.500003218650818;  // 540 x (1 - 0.95f) / 2
constexpr double kY527 = 296.4375;            // 527 x 9 / 16
constexpr double kW540 = 512.9999935626984;   // 540 x 0.95f

QnSignaturePoint inkPoint(double x, double y, float pressure) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.pressure = pressure;
  p.timestamp = 4.5;
  return p;
}

QnStrokeListRef someInk() {
  auto strokes = std::make_shared<QnStrokeList>();
  strokes->push_back(std::make_shared<QnStroke>(
      QnStroke{inkPoint(100, 300, 0.25f), inkPoint(150.25, 310.5, 0.5f)}));
  strokes->push_back(std::make_shared<QnStroke>());
  strokes->push_back(std::make_shared<QnStroke>(QnStroke{inkPoint(400, 320.75, 1)}));
  return strokes;
}

// The ink's locations, stroke by stroke.
std::vector<std::vector<QnPoint>> locations(const QnScrivletController& c) {
  std::vector<std::vector<QnPoint>> result;
  for (const QnStrokeRef& stroke : *c.drawingController()->drawingArray()) {
    result.emplace_back();
    for (const QnSignaturePoint& p : *stroke) result.back().push_back(p.location);
  }
  return result;
}

std::vector<std::vector<QnPoint>> moved(std::vector<std::vector<QnPoint>> ink, double dx, double dy) {
  for (auto& stroke : ink)
    for (QnPoint& p : stroke) p = {p.x + dx, p.y + dy};
  return ink;
}

class Guideline : public ::testing::Test {
 protected:
  void TearDown() override { QnDevice::resetToDefaults(); }
};

TEST_F(Guideline, SitsNineSixteenthsDownAcrossNinetyFivePercentOfTheView) {
  auto view = HeadlessView::create(makeRect(0, 0, 540, 527));
  auto controller = QnScrivletController::create(view, {}, {});
  const auto& guideline = controller->guideline();
  ASSERT_TRUE(guideline);
  EXPECT_EQ(guideline->frame(), makeRect(kX540, kY527, kW540, kW540 / 472.0f * 38.0f));
  EXPECT_EQ(guideline->contentMode(), kQnContentModeScaleAspectFit);
  EXPECT_FALSE(guideline->isHidden());
  EXPECT_EQ(guideline->superview(), view);
  EXPECT_EQ(guideline->image().surface(), QnScrivletStyleKit::imageOfScrivlet_x().surface());

  SCOPED_TRACE("a rotation notice or a call without a size change keeps the place");
  view->notifyGeometryChange(QnGeometryTarget::layer, "transform");
  controller->observeValueForKeyPath("anchorPoint");
  EXPECT_EQ(guideline->frame().origin, (QnPoint{kX540, kY527}));
  EXPECT_EQ(guideline->frame().size.width, kW540);
  EXPECT_NEAR(guideline->frame().size.height, kW540 * 38 / 472, 1e-5);  // sides kept as floats
}

TEST_F(Guideline, InkMovesExactlyByTheGuidelinesDisplacement) {
  auto view = HeadlessView::create(makeRect(0, 0, 540, 527));
  auto controller = QnScrivletController::create(view, {}, {});
  controller->drawingController()->setDrawingArray(someInk());
  auto before = locations(*controller);

  view->setFrame(makeRect(0, 0, 320, 480));
  const double x320 = 8.000001907348633;  // 320 x (1 - 0.95f) / 2
  QnRect frame = controller->guideline()->frame();
  EXPECT_EQ(frame.origin, (QnPoint{x320, 270}));
  EXPECT_EQ(frame.size.width, 303.99999618530273);
  EXPECT_NEAR(frame.size.height, 303.99999618530273 * 38 / 472, 1e-5);
  auto after = moved(before, x320 - kX540, 270 - kY527);
  EXPECT_EQ(locations(*controller), after);
  const auto& first = *controller->drawingController()->drawingArray()->front();
  EXPECT_EQ(first[1].pressure, 0.5f);
  EXPECT_EQ(first[1].timestamp, 4.5);

  SCOPED_TRACE("re-layout without a change, or a move of the view, leaves the ink in place");
  controller->updateLayout();
  controller->updateLayout();
  EXPECT_EQ(locations(*controller), after);
  view->setFrame(makeRect(35, 60, 320, 480));
  EXPECT_EQ(locations(*controller), after);
  EXPECT_EQ(controller->guideline()->frame().origin, (QnPoint{x320, 270}));
}

TEST_F(Guideline, ZeroWidthViewLeavesAZeroWidthGuidelineFromThenOn) {
  auto view = HeadlessView::create(makeRect(0, 0, 0, 300));
  auto controller = QnScrivletController::create(view, {}, {});
  const auto& guideline = controller->guideline();
  EXPECT_EQ(guideline->frame(), makeRect(0, 168.75, 0, 0));
  controller->drawingController()->setDrawingArray(someInk());
  auto before = locations(*controller);

  view->setFrame(makeRect(0, 0, 540, 527));
  EXPECT_EQ(guideline->frame(), makeRect(0, 168.75, 0, 0));
  EXPECT_EQ(locations(*controller), before);
  guideline->setContentMode(kQnContentModeScaleToFill);
  controller->layoutGuideline();
  EXPECT_EQ(guideline->frame(), makeRect(0, 168.75, 0, 0));
  EXPECT_EQ(guideline->contentMode(), kQnContentModeScaleAspectFit);

  SCOPED_TRACE("an empty view");
  auto empty = HeadlessView::create(QnRectZero);
  auto c2 = QnScrivletController::create(empty, {}, {});
  EXPECT_EQ(c2->guideline()->frame(), QnRectZero);
  c2->updateLayout();
  EXPECT_TRUE(c2->drawingController()->drawingArray()->empty());
}

TEST_F(Guideline, HiddenGuidelineIsStillLaidOutAndTheInkFollows) {
  auto view = HeadlessView::create(makeRect(0, 0, 540, 527));
  auto controller = QnScrivletController::create(view, {}, {});
  {
    SCOPED_TRACE("shown: the rule crosses the view at y 296.4375 + 26.02 x 513 / 472");
    QnImage shot = view->snapshot(1);
    std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
    std::vector<uint8_t> png = shot.encodePNG();
    std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/guideline_in_view.png", std::ios::binary)
        .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    EXPECT_GT(shot.pixelAt(200, 324).a, 200);
    EXPECT_LT(shot.pixelAt(200, 324).r, 40);
    EXPECT_EQ(shot.pixelAt(200, 330).a, 0);
    EXPECT_EQ(shot.pixelAt(55, 324).a, 0);  // between the mark and the rule
  }
  controller->setShowGuideline(false);
  EXPECT_FALSE(controller->showGuideline());
  EXPECT_TRUE(controller->guideline()->isHidden());
  EXPECT_EQ(view->snapshot(1).pixelAt(200, 324).a, 0);

  controller->drawingController()->setDrawingArray(someInk());
  auto before = locations(*controller);
  view->setFrame(makeRect(0, 0, 540, 1054));
  EXPECT_EQ(controller->guideline()->frame().origin, (QnPoint{kX540, 592.875}));
  EXPECT_EQ(locations(*controller), moved(before, 0, 592.875 - kY527));

  controller->setShowGuideline(true);
  EXPECT_FALSE(controller->guideline()->isHidden());
}

}  // namespace
}  // namespace scrivlet
