// The cairo drawing context, bitmaps, PNG coding and the bold text face, checked on real pixels.
#include "platform/cairo_context.h"

#include "platform/fonts.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

namespace scrivlet {
namespace {

using Rgba = std::array<int, 4>;  // premultiplied, as stored

Rgba pixel(const QnImage& image, int x, int y) {
  QnImage::Pixel p = image.pixelAt(x, y);
  return {p.r, p.g, p.b, p.a};
}

void expectNear(const Rgba& actual, const Rgba& expected) {
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(actual[i], expected[i], 1) << "component " << i;
}

const Rgba kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kGreen{0, 255, 0, 255}, kClear{0, 0, 0, 0};

void addSquare(CGContext& c, double x0, double y0, double x1, double y1) {
  c.moveToPoint(x0, y0);
  c.addLineToPoint(x1, y0);
  c.addLineToPoint(x1, y1);
  c.addLineToPoint(x0, y1);
  c.closePath();
}

TEST(CairoContext, AlphaBlendModeAndSeparateColours) {
  QnBitmapContext bitmap({30, 20}, 1);
  CGContext& c = bitmap.context();
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.setAlpha(0.5);
  c.fillRect(makeRect(0, 0, 5, 10));  // 50% red: 127.5 premultiplied
  c.setFillColor(QnColor(1, 0, 0, 0.5));
  c.fillRect(makeRect(5, 0, 5, 10));  // 25% red: 63.75
  c.setAlpha(1);
  c.setFillColor(QnColor(0, 0, 1, 1));
  c.fillRect(makeRect(10, 0, 10, 10));
  c.setBlendMode(kQnBlendModeClear);  // clears whatever the colour
  c.fillRect(makeRect(12, 2, 4, 4));
  c.setBlendMode(kQnBlendModeNormal);
  c.setFillColor(QnColor(1, 0, 0, 1));  // red inside a 2-wide blue outline
  c.setStrokeColor(QnColor(0, 0, 1, 1));
  c.setLineWidth(2);
  c.beginPath();
  addSquare(c, 23, 3, 28, 8);
  c.drawPath(kQnPathFillStroke);

  QnImage image = bitmap.makeImage();
  {
    SCOPED_TRACE("alpha multiplies the source alpha");
    expectNear(pixel(image, 2, 2), {128, 0, 0, 128});
    expectNear(pixel(image, 7, 2), {64, 0, 0, 64});
  }
  EXPECT_EQ(pixel(image, 13, 3), kClear);
  EXPECT_EQ(pixel(image, 11, 3), kBlue);
  EXPECT_EQ(pixel(image, 25, 5), kRed);
  EXPECT_EQ(pixel(image, 22, 5), kBlue);  // the stroke, outside the fill
  EXPECT_EQ(pixel(image, 23, 5), kBlue);  // the stroke, over the fill
  EXPECT_EQ(pixel(image, 20, 5), kClear);
}

TEST(CairoContext, EvenOddAndWindingFills) {
  for (auto [mode, centre] : {std::pair{kQnPathFill, kGreen}, {kQnPathEOFill, kClear}}) {
    SCOPED_TRACE(mode == kQnPathFill ? "winding" : "even-odd");
    QnBitmapContext bitmap({20, 20}, 1);
    CGContext& c = bitmap.context();
    c.setFillColor(QnColor(0, 1, 0, 1));
    c.beginPath();
    addSquare(c, 2, 2, 18, 18);
    addSquare(c, 6, 6, 14, 14);  // same direction
    c.drawPath(mode);
    QnImage image = bitmap.makeImage();
    EXPECT_EQ(pixel(image, 10, 10), centre);
    EXPECT_EQ(pixel(image, 4, 10), kGreen);
    EXPECT_EQ(pixel(image, 1, 10), kClear);
  }
}

TEST(CairoContext, ZeroBlurShadowIsAnOffsetCopyBeneath) {
  QnBitmapContext bitmap({40, 20}, 1);
  CGContext& c = bitmap.context();
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.setShadow({2, 2}, 0, QnColor(0, 0, 1, 1));
  c.fillRect(makeRect(4, 4, 6, 6));  // shape 4..10, shadow 6..12
  c.scaleCTM(2, 2);                  // the offset stays 2 pixels
  c.fillRect(makeRect(10, 2, 3, 3));  // shape 20..26, shadow 22..28
  QnImage image = bitmap.makeImage();
  EXPECT_EQ(pixel(image, 5, 5), kRed);
  EXPECT_EQ(pixel(image, 8, 8), kRed);  // the shape lies over its shadow
  EXPECT_EQ(pixel(image, 11, 11), kBlue);
  EXPECT_EQ(pixel(image, 11, 5), kClear);
  EXPECT_EQ(pixel(image, 12, 12), kClear);
  EXPECT_EQ(pixel(image, 27, 7), kBlue);
  EXPECT_EQ(pixel(image, 29, 9), kClear);
}

TEST(CairoContext, RestoreGStateBringsBackColoursAlphaAndTransform) {
  QnBitmapContext bitmap({20, 20}, 1);
  CGContext& c = bitmap.context();
  c.restoreGState();  // unbalanced: ignored
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.setStrokeColor(QnColor(0, 1, 0, 1));
  c.saveGState();
  c.setFillColor(QnColor(0, 0, 1, 1));
  c.setStrokeColor(QnColor(0, 0, 1, 1));
  c.setAlpha(0.5);
  c.scaleCTM(3, 3);
  c.translateCTM(1, 1);
  c.restoreGState();
  c.fillRect(makeRect(0, 0, 4, 4));
  c.setLineWidth(2);
  c.beginPath();
  c.moveToPoint(0, 10);
  c.addLineToPoint(10, 10);
  c.drawPath(kQnPathStroke);
  QnImage image = bitmap.makeImage();
  EXPECT_EQ(pixel(image, 3, 3), kRed);
  EXPECT_EQ(pixel(image, 5, 5), kClear);
  EXPECT_EQ(pixel(image, 5, 9), kGreen);
  EXPECT_EQ(pixel(image, 5, 12), kClear);
}

TEST(CairoContext, BadInputLeavesTheContextDrawing) {
  QnBitmapContext other({4, 4}, 1);
  QnImage small = other.makeImage();
  auto line = [](CGContext& c, double x, double y) {
    c.moveToPoint(0, 0);
    c.addLineToPoint(x, y);
    c.drawPath(kQnPathStroke);
  };
  std::pair<const char*, std::function<void(CGContext&)>> cases[] = {
      {"move to NaN", [](CGContext& c) { c.moveToPoint(NAN, 1); }},
      {"line to infinity", [&](CGContext& c) { line(c, INFINITY, 1); }},
      {"line to NaN", [&](CGContext& c) { line(c, 1, NAN); }},
      {"curve through NaN",
       [](CGContext& c) {
         c.moveToPoint(0, 0);
         c.addCurveToPoint(1, NAN, 2, 2, 3, 3);
         c.drawPath(kQnPathFill);
       }},
      {"arc with NaN radius", [](CGContext& c) { c.addArc(5, 5, NAN, 0, 1, 0); }},
      {"arc with infinite angle", [](CGContext& c) { c.addArc(5, 5, 2, 0, INFINITY, 1); }},
      {"NaN rectangle", [](CGContext& c) { c.fillRect(makeRect(NAN, 0, 5, 5)); }},
      {"zero scale", [](CGContext& c) { c.scaleCTM(0, 1); }},
      {"NaN scale", [](CGContext& c) { c.scaleCTM(NAN, 1); }},
      {"a scale too small to invert", [](CGContext& c) { c.scaleCTM(1e-300, 1e-300); }},
      {"infinite translation", [](CGContext& c) { c.translateCTM(INFINITY, 0); }},
      {"NaN line width", [](CGContext& c) { c.setLineWidth(NAN); }},
      {"text at NaN", [](CGContext& c) { c.showText("x", {NAN, 0}, 10, QnColor::black()); }},
      {"text of size zero", [](CGContext& c) { c.showText("x", {0, 0}, 0, QnColor::black()); }},
      {"image into an infinite rectangle",
       [&](CGContext& c) { c.drawImage(small, makeRect(0, 0, INFINITY, 4)); }},
      {"image into a NaN rectangle",
       [&](CGContext& c) { c.drawImage(small, makeRect(0, 0, NAN, 4)); }},
  };
  for (auto& [name, bad] : cases) {
    SCOPED_TRACE(name);
    QnBitmapContext bitmap({10, 10}, 2);
    CGContext& c = bitmap.context();
    c.saveGState();
    EXPECT_NO_THROW(bad(c));
    c.restoreGState();
    c.setFillColor(QnColor(1, 0, 0, 1));
    c.beginPath();
    addSquare(c, 1, 1, 4, 4);
    c.drawPath(kQnPathFill);
    EXPECT_EQ(pixel(bitmap.makeImage(), 5, 5), kRed);
  }
}

TEST(CairoContext, PNGRoundTripKeepsPixels) {
  QnBitmapContext bitmap({12, 8}, 2);
  CGContext& c = bitmap.context();
  c.setFillColor(QnColor(0.2, 0.4, 0.6, 1));
  c.fillRect(makeRect(1, 1, 5, 5));
  c.setFillColor(QnColor(1, 0.5, 0, 0.5));
  c.fillRect(makeRect(4, 2, 6, 5));
  QnImage image = bitmap.makeImage();
  std::vector<uint8_t> png = image.encodePNG();
  ASSERT_GT(png.size(), 8u);
  EXPECT_EQ(std::string(png.begin() + 1, png.begin() + 4), "PNG");
  QnImage decoded = QnImage::decodePNG(png, 2);
  ASSERT_FALSE(decoded.isNull());
  EXPECT_EQ(decoded.pixelWidth(), 24);
  EXPECT_EQ(decoded.pixelHeight(), 16);
  EXPECT_EQ(decoded.size(), (QnSize{12, 8}));
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 24; ++x) {
      SCOPED_TRACE(testing::Message() << "pixel " << x << "," << y);
      expectNear(pixel(decoded, x, y), pixel(image, x, y));  // premultiplying may round
    }
  EXPECT_EQ(pixel(decoded, 4, 4), (Rgba{51, 102, 153, 255}));

  EXPECT_TRUE(QnImage::decodePNG({1, 2, 3}).isNull());
  EXPECT_TRUE(QnImage::decodePNG({}).isNull());
  EXPECT_TRUE(QnImage().encodePNG().empty());
}

TEST(CairoContext, BoldFontIsNimbusSansWithHelveticaWidths) {
  EXPECT_EQ(boldFontFamilyName(), "Nimbus Sans");
  // Helvetica Bold advances: W 944, i 278 thousandths of an em.
  EXPECT_NEAR(measureBoldText("WWW", 10).width, 28.32, 0.01);
  EXPECT_NEAR(measureBoldText("iii", 10).width, 8.34, 0.01);
  EXPECT_GT(measureBoldText("WWWW", 10).width, measureBoldText("WWW", 10).width);
  QnSize small = measureBoldText("Signed", 12), large = measureBoldText("Signed", 24);
  EXPECT_NEAR(large.width / small.width, 2.0, 0.02);
  EXPECT_NEAR(large.height / small.height, 2.0, 0.02);
  EXPECT_GT(small.height, 0);
  EXPECT_EQ(measureBoldText("", 12).width, 0);
  EXPECT_EQ(measureBoldText("abc", 0), (QnSize{0, 0}));
  EXPECT_EQ(measureBoldText("abc", NAN), (QnSize{0, 0}));
}

TEST(CairoContext, ShowTextInksInsideItsMeasuredBox) {
  const QnPoint topLeft{10, 8};
  const double size = 20;
  QnSize box = measureBoldText("Hg", size);
  QnBitmapContext bitmap({60, 40}, 1);
  CGContext& c = bitmap.context();
  c.setFillColor(QnColor(1, 0, 0, 1));
  c.setLineWidth(2);
  c.beginPath();
  c.moveToPoint(50, 2);  // a path that the text must leave in place
  c.addLineToPoint(50, 38);
  c.showText("Hg", topLeft, size, QnColor::black());
  c.drawPath(kQnPathStroke);  // black stroke: the default stroke colour
  c.fillRect(makeRect(56, 0, 4, 4));  // still red

  QnImage image = bitmap.makeImage();
  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  std::vector<uint8_t> png = image.encodePNG();
  std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/cairo_context_text.png", std::ios::binary)
      .write(reinterpret_cast<const char*>(png.data()), png.size());

  int dark = 0, outside = 0;
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 46; ++x) {
      Rgba p = pixel(image, x, y);
      bool inBox = x >= topLeft.x - 1 && x < topLeft.x + box.width + 1 && y >= topLeft.y - 1 &&
                   y < topLeft.y + box.height + 1;
      if (p[3] == 255 && p[0] == 0 && p[1] == 0 && p[2] == 0 && inBox) ++dark;
      if (p[3] != 0 && (!inBox || x < topLeft.x || y < topLeft.y)) ++outside;
    }
  EXPECT_GT(dark, 50);
  EXPECT_EQ(outside, 0);
  EXPECT_EQ(pixel(image, 50, 20), (Rgba{0, 0, 0, 255}));
  EXPECT_EQ(pixel(image, 57, 1), kRed);
}

}  // namespace
}  // namespace scrivlet
