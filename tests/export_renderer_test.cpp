// The export canvas and its PNG, PDF and SVG outputs. (The same PNG bytes on any number of threads: the
// bands' tests in drawing_log_test.cpp and cairo_context_test.cpp.)
#include "export/export_renderer.h"

#include <scrivlet/pdf_document.h>

#include "export_fixture.h"
#include "platform/fonts.h"
#include "platform/image.h"

namespace scrivlet::export_test {
namespace {

// Both images are the same size, and at most 2% of either one's solid ink (darker than a quarter
// grey) has not even light ink (darker than three quarters) at or next to the same pixel of the
// other: renderers differ in anti-aliasing and in snapping text and edges to pixels, by a pixel.
void expectSameInk(const QnImage& a, const QnImage& b) {
  ASSERT_EQ(a.pixelWidth(), b.pixelWidth());
  ASSERT_EQ(a.pixelHeight(), b.pixelHeight());
  auto grey = [](const QnImage& image, int x, int y) {  // 0 (black) to 255 (white) over white
    QnImage::Pixel p = image.pixelAt(x, y);  // premultiplied; nothing outside the image
    return (p.r + p.g + p.b) / 3 + 255 - p.a;
  };
  for (auto [one, other] : {std::pair{&a, &b}, std::pair{&b, &a}}) {
    int ink = 0, missing = 0;
    for (int y = 0; y < a.pixelHeight(); ++y)
      for (int x = 0; x < a.pixelWidth(); ++x) {
        if (grey(*one, x, y) >= 64) continue;
        ++ink;
        bool near = false;
        for (int d = 0; d < 9; ++d) near = near || grey(*other, x + d % 3 - 1, y + d / 3 - 1) < 192;
        missing += !near;
      }
    EXPECT_TRUE(ink > 500 && missing < 0.02 * ink) << missing << " of " << ink << " missing";
  }
}

class Export : public ControllerTest {
 protected:
  Bytes exportAs(const std::string& format) {
    std::optional<Bytes> bytes = c->getImageData(format);
    EXPECT_TRUE(bytes.has_value()) << format;
    return bytes.value_or(Bytes{});
  }
};

TEST_F(Export, CanvasIsTheBoxWithMarginsAndRoomForTextAndEveryFormatLeavesIt) {
  const std::string date = mediumDateString(kFixedUnixTime);
  const double dateW = measureBoldText(date, 20).width + 8;
  const auto timedW = measureBoldText(date + " " + mediumTimeString(kFixedUnixTime), 20).width + 8;
  const QnSize hash = measureBoldText("0000000000", 23);
  EXPECT_NEAR(hash.width, 10 * 0.556 * 23, 0.5);  // Helvetica Bold digits are 0.556 em wide
  const double hashW = std::ceil(hash.width) + 28, hashH = std::ceil(hash.height);
  // The texts sit either side of the canvas widths (112, 224 scaled, 212) and the badge row.
  ASSERT_TRUE(dateW > 112 && dateW < 224 && timedW > 224 && hashH > 8 &&
              measureBoldText(date, 30).width + 8 < 212);
  c->setLastHash("0000000000");
  // The strokes' box is w x h from (x, x).
  struct Case { std::string options; double x, w, h, scale, screen; std::array<double, 4> canvas; };
  // Pen width 4: the canvas is the box with 6 more on every side, times the export scale.
  const Case cases[] = {
      {"", 10, 100, 40, 1, 1, {4, 4, 112, 52}},
      {"", 10, 100, 40, 2, 1, {4, 4, 224, 104}},
      {"", 10, 100, 40, 2, 2, {4, 4, 224, 104}},
      // The whole-number cover of (8.5, 8.5, 224, 104) is 225 x 105.
      {"", 10.25, 100, 40, 2, 1, {4.25, 4.25, 225, 105}},
      // The view's 300 x 200, scaled, at its origin, with no room for the date.
      {"date clip", 10, 100, 40, 2, 1, {0, 0, 600, 400}},
      {"date 30", 10, 200, 40, 1, 1, {4, 4, 212, 52 + 30 + 3}},
      {"date", 10, 100, 40, 1, 1, {4, 4, std::ceil(dateW), 52 + 20 + 3}},
      // The scaled canvas width is compared with the unscaled text width.
      {"date", 10, 100, 40, 2, 1, {4, 4, 224, 150}},
      {"date time", 10, 100, 40, 2, 1, {4, 4, std::ceil(2 * timedW), 150}},
      {"hash", 10, 100, 40, 1, 1, {4, 4, hashW, 52}},
      // h = 16 less the 8 under the badge row is under hashH; so is 39 less 28 with the date.
      {"hash", 10, 100, 4, 1, 1, {4, 4, hashW, 8 + hashH}},
      {"hash date", 10, 100, 4, 1, 1, {4, 4, std::max(hashW, std::ceil(dateW)), 28 + hashH}},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(testing::Message() << "'" << k.options << "' " << k.w << "x" << k.h << " at "
                                    << k.x << ", scale " << k.scale << ", screen " << k.screen);
    auto has = [&k](const char* option) { return k.options.find(option) != std::string::npos; };
    c->setShowDate(has("date"));
    c->setExportDateSize(has("30") ? 30 : 20);
    c->setDateIncludesTime(has("time"));
    c->setShowHash(has("hash"));
    c->setClipSignatureToBounds(has("clip"));
    c->setExportScale(k.scale);
    QnDevice::setScreenScale(k.screen);
    c->setMyBrushStrokes(strokesSpanning(k.x, k.x, k.w, k.h));
    QnImage png = QnImage::decodePNG(exportAs("PNG"));
    EXPECT_EQ(edges(c->lastLocation()), k.canvas);
    EXPECT_EQ(png.pixelWidth(), k.canvas[2] * k.screen);
    EXPECT_EQ(png.pixelHeight(), k.canvas[3] * k.screen);
    for (const char* format : {"PDF", "SVG", "PNG"}) {
      c->setLastLocation(QnRectZero);
      exportAs(format);
      EXPECT_EQ(edges(c->lastLocation()), k.canvas) << format;
    }
  }
  for (const char* format : {"JPG", "png", "", "PDF "})
    EXPECT_FALSE(c->getImageData(format)) << format;
}

TEST_F(Export, PdfAndSvgPassTheirCheckersAndLookLikeThePng) {
  std::vector<QnPoint> loops;  // a looping run of varying width and a crossing bar
  for (double u = 0; u <= 1; u += 1.0 / 120)
    loops.push_back({40 + 200 * u + 18 * std::sin(u * 8 * M_PI),
                     110 - 35 * std::cos(u * 8 * M_PI) * (0.6 + 0.4 * std::sin(u * M_PI))});
  QnStrokeRef looping = strokeThrough(loops);
  int i = 0;
  for (QnSignaturePoint& p : *looping) p.diameter = float(2 + 3 * std::sin(i++ * M_PI / 120));
  c->setMyBrushStrokes(std::make_shared<QnStrokeList>(
      QnStrokeList{looping, strokeThrough({{70, 80}, {155, 83}, {240, 86}})}));
  c->setShowDate(true);
  c->setShowHash(true);
  c->setLastHash("3f9a0c71be");
  const std::string date = mediumDateString(kFixedUnixTime);
  for (float scale : {2.0f, 1.0f}) {  // ending at 1, where the SVG's size is the PNG's
    SCOPED_TRACE(testing::Message() << "scale " << scale);
    c->setExportScale(scale);
    const Bytes png = exportAs("PNG"), pdf = exportAs("PDF");
    const std::string path = expectPasses("qpdf --check", pdf, "signature.pdf");
    std::shared_ptr<QnPDFDocument> document = QnPDFDocument::createWithData(pdf);
    ASSERT_TRUE(document && document->numberOfPages() == 1);
    EXPECT_EQ(document->pageSize(0), c->lastLocation().size);
    const std::string text = test_support::outputOf("pdftotext '" + path + "' -");
    EXPECT_TRUE(text.find(date) != text.npos && text.find("3f9a0c71be") != text.npos) << text;
    expectSameInk(QnImage::decodePNG(png), test_support::pdfPageImage(path));
  }
  const Bytes svg = exportAs("SVG");
  const std::string text(svg.begin(), svg.end());
  EXPECT_TRUE(text.find(">" + date + "</text>") != text.npos &&
              text.find(">3f9a0c71be</text>") != text.npos) << text;
  std::string path = expectPasses("xmllint --noout", svg, "signature.svg");
  EXPECT_FALSE(test_support::svgImage(path).isNull());
  // Renderers place text differently, so the strokes alone are compared.
  c->setShowDate(false);
  c->setShowHash(false);
  path = expectPasses("xmllint --noout", exportAs("SVG"), "strokes.svg");
  expectSameInk(QnImage::decodePNG(exportAs("PNG")), test_support::svgImage(path));
}

// The largest export scale on a screen of scale 2 makes a PNG of some 72 megapixels, drawn and
// compressed band by band: the ink is where the strokes are, across band edges too.
TEST_F(Export, APNGAtTheLargestExportScaleOnADenseScreen) {
  using test_support::rgbaAt, test_support::Rgba;
  QnDevice::setScreenScale(2);
  c->setClipSignatureToBounds(true);
  c->setCopyOfTargetViewBounds(makeRect(0, 0, 700, 400));
  c->setMyBrushStrokes(strokesSpanning(10, 10, 680, 380));
  c->setExportScale(8);
  QnImage image = QnImage::decodePNG(exportAs("PNG"));
  ASSERT_EQ(std::pair(image.pixelWidth(), image.pixelHeight()), std::pair(11200, 6400));
  // The bar at y = 200 points, 3 points wide: 48 pixels about row 3200, the edge of bands 12 and 13.
  for (int x : {400, 3000, 5500})  // a two-point stroke inks from its first point to its middle
    for (int y : {3180, 3199, 3200, 3215}) EXPECT_EQ(rgbaAt(image, x, y), (Rgba{0, 0, 0, 255})) << x << "," << y;
  EXPECT_EQ(rgbaAt(image, 3000, 3260), (Rgba{0, 0, 0, 0}));
  EXPECT_EQ(rgbaAt(image, 16, 16), (Rgba{0, 0, 0, 0}));
}

}  // namespace
}  // namespace scrivlet::export_test
