// The cairo drawing context, bitmaps, PNG coding and the bold text face, checked on real pixels.
#include "platform/cairo_context.h"
#include "platform/coverage_mask.h"
#include "platform/image.h"

#include "output_support.h"
#include "platform/fonts.h"
#include "platform/png_encoder.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <tuple>
#include <utility>

namespace scrivlet {
namespace {

using test_support::Rgba;
using test_support::rgbaAt;

const Rgba kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kGreen{0, 255, 0, 255}, kClear{0, 0, 0, 0};

void expectPixels(const QnImage& image, std::initializer_list<std::tuple<int, int, Rgba>> probes) {
  for (auto [x, y, rgba] : probes) EXPECT_EQ(rgbaAt(image, x, y), rgba) << x << "," << y;
}

void addSquare(CGContext& c, double x0, double y0, double x1, double y1) {
  c.moveToPoint(x0, y0);
  for (auto [x, y] : {std::pair{x1, y0}, {x1, y1}, {x0, y1}}) c.addLineToPoint(x, y);
  c.closePath();
}

TEST(CairoContext, AlphaClearFillRulesSavedStateAndShadowShowInThePixelsAndThePNG) {
  QnBitmapContext bitmap({70, 40}, 1);
  CGContext& c = bitmap.context();
  c.restoreGState();  // unbalanced: ignored
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.setAlpha(0.5);
  c.fillRect(makeRect(0, 0, 5, 10));  // 50% red: 127.5 premultiplied
  c.setFillColor(QnColor(1, 0, 0, 0.5));
  c.fillRect(makeRect(5, 0, 5, 10));  // alpha multiplies: 25% red, 63.75
  c.setAlpha(1);
  c.setFillColor(QnColor(0, 0, 1, 1));
  c.fillRect(makeRect(10, 0, 10, 10));
  c.setBlendMode(kQnBlendModeClear);  // clears whatever the colour
  c.fillRect(makeRect(12, 2, 4, 4));
  c.setBlendMode(kQnBlendModeNormal);
  c.setFillColor(QnColor(1, 0, 0, 1));  // red inside a 2-wide blue outline
  c.setStrokeColor(QnColor(0, 0, 1, 1));
  c.saveGState();  // everything set in here is undone
  c.setFillColor(QnColor(0, 1, 0, 1));
  c.scaleCTM(3, 3);
  c.restoreGState();
  c.setLineWidth(2);
  c.beginPath();
  addSquare(c, 23, 3, 28, 8);
  c.drawPath(kQnPathFillStroke);
  c.setFillColor(QnColor(0, 1, 0, 1));  // nested squares drawn the same way round
  for (auto [mode, x] : {std::pair{kQnPathEOFill, 32}, {kQnPathFill, 52}}) {
    c.beginPath();
    addSquare(c, x, 2, x + 16, 18);
    addSquare(c, x + 4, 6, x + 12, 14);
    c.drawPath(mode);
  }
  c.setFillColor(QnColor(1, 0, 0, 1));  // a zero-blur shadow is an offset copy beneath
  c.setShadow({2, 2}, 0, QnColor(0, 0, 1, 1));
  c.fillRect(makeRect(4, 24, 6, 6));  // shape 4..10, shadow 6..12
  c.scaleCTM(2, 2);                   // the offset stays 2 pixels
  c.fillRect(makeRect(10, 12, 3, 3));  // shape 20..26, shadow 22..28

  QnImage image = bitmap.makeImage();
  for (auto [x, expected] : {std::pair{2, Rgba{128, 0, 0, 128}}, {7, Rgba{64, 0, 0, 64}}})
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(rgbaAt(image, x, 2)[i], expected[i], 1) << x;
  expectPixels(image, {{13, 3, kClear},  {11, 3, kBlue},   {25, 5, kRed},    {22, 5, kBlue},
                       {23, 5, kBlue},   {20, 5, kClear},  {29, 5, kClear},  {40, 10, kClear},
                       {34, 10, kGreen}, {60, 10, kGreen}, {5, 25, kRed},    {11, 31, kBlue},
                       {11, 25, kClear}, {12, 32, kClear}, {27, 27, kBlue},  {29, 29, kClear}});

  // Read back as 2 pixels a point. (Every pixel of every alpha read back: the bands' test below.)
  QnImage decoded = QnImage::decodePNG(image.encodePNG(), 2);
  EXPECT_EQ(std::tuple(decoded.pixelWidth(), decoded.pixelHeight(), decoded.size()), std::tuple(70, 40, QnSize{35, 20}));
  EXPECT_EQ(rgbaAt(decoded, 25, 5), kRed);
  EXPECT_TRUE(QnImage::decodePNG({1, 2, 3}).isNull() && QnImage::decodePNG({}).isNull());
  EXPECT_TRUE(QnImage().encodePNG().empty());
}

// Every alpha and a spread of colours over rows compressed in bands (of 256 rows, the last one
// shorter): one stream that decodes to the pixels as cairo's own PNG writer writes them (whose rounding
// of premultiplied colour it follows), in the same bytes whatever the number of threads.
TEST(CairoContext, PNGsInBandsReadBackAsCairosOwnWriterWritesThemOnAnyThreads) {
  QnBitmapContext bitmap({97, 600}, 1);
  CGContext& c = bitmap.context();
  for (int y = 0; y < 600; ++y)
    for (int x = 0; x < 97; x += 3) {
      c.setFillColor(QnColor((x * 7 % 256) / 255.0, (y * 19 % 256) / 255.0, ((x + y) % 5) / 4.0, ((x * y) % 256) / 255.0));
      c.fillRect(makeRect(x, y, 2, 1));
    }
  QnImage image = bitmap.makeImage();
  std::vector<uint8_t> cairos;
  cairo_surface_write_to_png_stream(
      image.surface(),
      [](void* out, const unsigned char* data, unsigned length) {
        auto* bytes = static_cast<std::vector<uint8_t>*>(out);
        bytes->insert(bytes->end(), data, data + length);
        return CAIRO_STATUS_SUCCESS;
      },
      &cairos);
  cairo_surface_flush(image.surface());
  const unsigned char* pixels = cairo_image_surface_get_data(image.surface());
  int stride = cairo_image_surface_get_stride(image.surface());
  std::vector<uint8_t> png = encodeARGBAsPNG(pixels, 97, 600, stride, 1);
  QnImage decoded = QnImage::decodePNG(png);
  ASSERT_TRUE(decoded.pixelWidth() == 97 && decoded.pixelHeight() == 600);
  EXPECT_EQ(test_support::differingPixels(decoded, image), 0);
  EXPECT_EQ(test_support::differingPixels(decoded, QnImage::decodePNG(cairos)), 0);
  for (int threads : {2, 3, 8}) EXPECT_EQ(encodeARGBAsPNG(pixels, 97, 600, stride, threads), png) << threads << " threads";
  EXPECT_TRUE(encodeARGBAsPNG(nullptr, 97, 13, stride).empty() && encodeARGBAsPNG(pixels, 0, 13, stride).empty());

  SCOPED_TRACE("noise nothing compresses, in rows wider than deflate's window");
  QnBitmapContext noise({9000, 40}, 1);
  std::mt19937 random(7);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 9000; ++x) {
      uint32_t a = random() % 256, r = random() % (a + 1), g = random() % (a + 1), b = random() % (a + 1);
      uint32_t pixel = a << 24 | r << 16 | g << 8 | b;
      std::memcpy(noise.pixels() + size_t(y) * size_t(noise.stride()) + size_t(x) * 4, &pixel, 4);
    }
  noise.pixelsChanged();
  QnImage decodedNoise = QnImage::decodePNG(encodeARGBAsPNG(noise.pixels(), 9000, 40, noise.stride(), 1));
  ASSERT_EQ(decodedNoise.pixelWidth(), 9000);
  EXPECT_EQ(test_support::differingPixels(decodedNoise, noise.makeImage()), 0);
}

// Each bad call is ignored or drawn as far as it can be; an error would stick and stop the square.
TEST(CairoContext, BadInputLeavesTheContextDrawing) {
  QnBitmapContext other({4, 4}, 1), bitmap({10, 10}, 2);
  CGContext& c = bitmap.context();
  c.saveGState();
  EXPECT_NO_THROW({
    // Singular scales, the last too small to invert.
    for (auto [sx, sy] : {std::pair{0.0, 1.0}, {NAN, 1}, {1e-300, 1e-300}}) c.scaleCTM(sx, sy);
    c.translateCTM(INFINITY, 0);
    c.setLineWidth(NAN);
    c.moveToPoint(NAN, 1);
    c.addLineToPoint(INFINITY, 1);
    c.addCurveToPoint(1, NAN, 2, 2, 3, 3);
    c.addArc(5, 5, NAN, 0, 1, 0);
    c.addArc(5, 5, 2, 0, INFINITY, 1);
    c.drawPath(kQnPathFillStroke);
    c.fillRect(makeRect(NAN, 0, 5, 5));
    c.showText("x", {NAN, 0}, 10, QnColor::black());
    c.showText("x", {0, 0}, 0, QnColor::black());
    for (double w : {INFINITY, NAN}) c.drawImage(other.makeImage(), makeRect(0, 0, w, 4));
  });
  // Letters a million times too tall for any page (a date at an export scale of a million) draw nothing.
  c.saveGState();
  c.scaleCTM(1e6, 1e6);
  c.showText("Nov 25, 2026", {0, 0}, 12, QnColor::black());
  c.restoreGState();
  EXPECT_EQ(rgbaAt(bitmap.makeImage(), 10, 10), (Rgba{0, 0, 0, 0}));
  c.restoreGState();
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.fillRect(makeRect(1, 1, 3, 3));
  EXPECT_EQ(rgbaAt(bitmap.makeImage(), 5, 5), kRed);
}

// The pieces of the current path: its move, line, curve and close elements.
int pathElements(cairo_t* cr) {
  cairo_path_t* path = cairo_copy_path(cr);
  int elements = 0;
  for (int i = 0; i < path->num_data; i += path->data[i].header.length) ++elements;
  cairo_path_destroy(path);
  return elements;
}

TEST(CairoContext, ArcsOfAnySizeAreAFewPiecesAndCoverWhatTheyReach) {
  // A pen 1e30 points wide (a stylus reporting an absurd force): a handful of curves, the view covered.
  QnBitmapContext huge({40, 20}, 2);
  huge.context().setFillColor(QnColor(1, 0, 0, 1));
  huge.context().addArc(10, 10, 1e30, 0, 2 * M_PI, 0);
  EXPECT_LT(pathElements(dynamic_cast<CairoContext&>(huge.context()).cairo()), 100);
  huge.context().drawPath(kQnPathFill);
  expectPixels(huge.makeImage(), {{0, 0, kRed}, {79, 0, kRed}, {0, 39, kRed}, {79, 39, kRed}});
  // A pen dot of ordinary size keeps its size: 5 points is 10 pixels at this scale.
  QnBitmapContext dot({40, 20}, 2);
  dot.context().setFillColor(QnColor(1, 0, 0, 1));
  dot.context().addArc(20, 10, 5, 0, 2 * M_PI, 0);
  dot.context().drawPath(kQnPathFill);
  expectPixels(dot.makeImage(), {{40, 20, kRed}, {48, 20, kRed}, {40, 28, kRed}, {51, 20, kClear}, {40, 31, kClear}});
  // A tap of a pen a million million points wide: a round dot that covers the view.
  QnBitmapContext tap({40, 20}, 2);
  tap.context().setStrokeColor(QnColor(1, 0, 0, 1));
  tap.context().setLineCap(kQnLineCapRound);
  tap.context().setLineWidth(1e12);
  tap.context().moveToPoint(10, 10), tap.context().addLineToPoint(10, 10);
  tap.context().drawPath(kQnPathStroke);
  expectPixels(tap.makeImage(), {{0, 0, kRed}, {79, 0, kRed}, {0, 39, kRed}, {79, 39, kRed}});
}

TEST(CairoContext, BoldTextIsNimbusSansWithHelveticaWidthsInkedInsideItsBox) {
  EXPECT_EQ(boldFontFamilyName(), "Nimbus Sans");
  // Helvetica Bold advances: W 944, i 278 thousandths of an em.
  EXPECT_NEAR(measureBoldText("WWW", 10).width, 28.32, 0.01);
  EXPECT_NEAR(measureBoldText("iii", 10).width, 8.34, 0.01);
  EXPECT_EQ(measureBoldText("abc", NAN), (QnSize{0, 0}));

  const QnSize box = measureBoldText("Hg", 20);
  QnBitmapContext bitmap({60, 40}, 1);
  CGContext& c = bitmap.context();
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.beginPath();
  c.moveToPoint(50.5, 2);  // a path that the text must leave in place
  c.addLineToPoint(50.5, 38);
  c.showText("Hg", {10, 8}, 20, QnColor::black());
  c.drawPath(kQnPathStroke);          // black stroke: the default stroke colour
  c.fillRect(makeRect(56, 0, 4, 4));  // still red
  QnImage image = bitmap.makeImage();
  test_support::savePNG(image, "cairo_context_text.png");
  int dark = 0, outside = 0;
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 46; ++x) {
      bool inBox = x >= 10 && y >= 8 && x < 11 + box.width && y < 9 + box.height;
      dark += inBox && rgbaAt(image, x, y) == Rgba{0, 0, 0, 255};
      outside += !inBox && rgbaAt(image, x, y)[3] != 0;
    }
  EXPECT_GT(dark, 50);
  EXPECT_EQ(outside, 0);
  expectPixels(image, {{50, 20, {0, 0, 0, 255}}, {57, 1, kRed}});
}

}  // namespace
}  // namespace scrivlet

namespace scrivlet {
namespace {

// Varying-width outlines and round-capped curves in random places, sizes and colours, over ink
// already there: each laid from its coverage (once, or twice as live ink draws it) leaves the very
// bytes a fill of it leaves.
TEST(CoverageMask, LaysTheBytesAFillLeavesOverInkBeneath) {
  QnBitmapContext filled({200, 120}, 2), laid({200, 120}, 2);
  QnCoverageMask mask;
  std::mt19937 random(7);
  auto uniform = [&](double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); };
  auto shape = [](CGContext& c, double x, double y, double r, double dx, double dy, bool stroked) {
    c.beginPath();
    if (stroked) {
      c.setLineWidth(r);
      c.moveToPoint(x, y);
      c.addCurveToPoint(x + dx * 0.3, y - r, x + dx * 0.7, y + dy + r, x + dx, y + dy);
      c.drawPath(kQnPathStroke);
      return;
    }
    c.moveToPoint(x, y - r);
    c.addCurveToPoint(x + dx * 0.3, y - r - 0.4, x + dx * 0.6, y - r + dy * 0.6, x + dx, y - r + dy);
    c.addArc(x + dx, y + dy, r * 0.8, -M_PI / 2, M_PI / 2, 0);
    c.addCurveToPoint(x + dx * 0.6, y + r + dy * 0.6, x + dx * 0.3, y + r + 0.3, x, y + r);
    c.addArc(x, y, r, M_PI / 2, 3 * M_PI / 2, 0);
    c.closePath();
    c.drawPath(kQnPathFill);
  };
  for (int i = 0; i < 600; ++i) {
    double x = uniform(10, 180), y = uniform(10, 100), r = uniform(0.3, 5), dx = uniform(-4, 4), dy = uniform(-4, 4);
    bool stroked = i % 3 == 0;
    QnColor color = i < 10 ? QnColor::black() : QnColor(uniform(0, 1), uniform(0, 1), uniform(0, 1), 1);
    int times = 1 + i % 2;
    for (int k = 0; k < times; ++k) {
      filled.context().setFillColor(color), filled.context().setStrokeColor(color);
      filled.context().setLineCap(kQnLineCapRound);
      shape(filled.context(), x, y, r, dx, dy, stroked);
    }
    double reach = r + 5;
    QnRect pixels = makeRect(std::floor((x - reach) * 2), std::floor((y - reach) * 2), std::ceil(reach * 4) + 2, std::ceil(reach * 4) + 2);
    CGContext* c = mask.begin(laid, pixels, color);
    ASSERT_NE(c, nullptr) << i;
    c->setFillColor(color), c->setStrokeColor(color), c->setLineCap(kQnLineCapRound);
    shape(*c, x, y, r, dx, dy, stroked);
    std::shared_ptr<const QnCoverage> coverage = mask.take();
    for (int k = 0; k < times; ++k) EXPECT_TRUE(coverage->layOn(laid));
  }
  EXPECT_EQ(test_support::differingPixels(filled.makeImage(), laid.makeImage()), 0);
  QnBitmapContext smaller({100, 120}, 2);
  EXPECT_FALSE(mask.take()->layOn(smaller));

  // What a mask cannot stand for: a colour the ink beneath shows through, a shape past the bitmap or
  // larger than the mask, a bitmap drawn with a transform or an alpha of its own.
  EXPECT_EQ(mask.begin(laid, makeRect(0, 0, 10, 10), QnColor(0, 0, 0, 0.5)), nullptr);
  EXPECT_EQ(mask.begin(laid, makeRect(395, 0, 10, 10), QnColor::black()), nullptr);
  EXPECT_EQ(mask.begin(laid, makeRect(0, 0, 300, 10), QnColor::black()), nullptr);
  laid.context().setAlpha(0.5);
  EXPECT_EQ(mask.begin(laid, makeRect(0, 0, 10, 10), QnColor::black()), nullptr);
  laid.context().setAlpha(1);
  laid.context().translateCTM(1, 0);
  EXPECT_EQ(mask.begin(laid, makeRect(0, 0, 10, 10), QnColor::black()), nullptr);
}

}  // namespace
}  // namespace scrivlet
