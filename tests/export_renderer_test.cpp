// The export canvas and its PNG, PDF and SVG outputs, and the plain PDF routines.
#include "export/export_renderer.h"

#include <gtest/gtest.h>
#include <scrivlet/device.h>
#include <scrivlet/scrivlet_controller.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <regex>
#include <sstream>

#include "capture/drawing_controller.h"
#include "export/pdf_routines.h"
#include "platform/clock.h"
#include "platform/fonts.h"
#include "platform/headless/headless_touch.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "render/combo_context.h"

namespace scrivlet {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

constexpr double kFixedUnixTime = 1700000000;  // 2023-11-14 22:13:20 UTC

std::array<double, 4> edges(QnRect r) {
  return {r.origin.x, r.origin.y, r.size.width, r.size.height};
}

QnSignaturePoint point(double x, double y, float diameter = 3) {
  QnSignaturePoint p;
  p.location = {x, y};
  p.diameter = diameter;
  return p;
}

// A zigzag and a bar whose points span exactly width x height from (x, y).
QnStrokeListRef strokesSpanning(double x, double y, double width, double height) {
  auto zigzag = std::make_shared<QnStroke>();
  for (int i = 0; i <= 8; ++i) zigzag->push_back(point(x + width * i / 8, i % 2 ? y : y + height));
  auto bar = std::make_shared<QnStroke>(
      QnStroke{point(x + 10, y + height / 2), point(x + width - 10, y + height / 2)});
  return std::make_shared<QnStrokeList>(QnStrokeList{zigzag, bar});
}

void writeFile(const fs::path& path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Runs a command line with its output in a file; the exit status is the result.
int run(const std::string& command, const fs::path& output) {
  return std::system((command + " > '" + output.string() + "' 2>&1").c_str());
}

void requireTool(const std::string& tool) {
  ASSERT_EQ(std::system(("command -v " + tool + " > /dev/null").c_str()), 0)
      << tool << " is missing";
}

// 0 (black) to 255 (white): a premultiplied pixel laid over white.
int greyOverWhite(QnImage::Pixel p) { return (p.r + p.g + p.b) / 3 + 255 - p.a; }

struct Grey {
  int width = 0, height = 0;
  std::vector<uint8_t> levels;
};

Grey greyOf(const QnImage& image) {
  Grey g{image.pixelWidth(), image.pixelHeight(), {}};
  for (int y = 0; y < g.height; ++y)
    for (int x = 0; x < g.width; ++x) g.levels.push_back(greyOverWhite(image.pixelAt(x, y)));
  return g;
}

// A binary PGM ("P5", maximum 255) as pdftoppm -gray writes it.
Grey readPGM(const fs::path& path) {
  std::istringstream in(readFile(path));
  std::string magic;
  int maxval = 0;
  Grey g;
  in >> magic >> g.width >> g.height >> maxval;
  in.get();
  if (magic != "P5" || maxval != 255) return {};
  g.levels.resize(size_t(g.width) * g.height);
  in.read(reinterpret_cast<char*>(g.levels.data()), g.levels.size());
  return g;
}

// The share of a's solid ink (darker than a quarter grey) with not even light ink (darker than
// three quarters) at or next to the same pixel of b: renderers differ in anti-aliasing and in
// snapping text and edges to pixels, by a pixel at most.
double inkMissingFrom(const Grey& a, const Grey& b, int* inkCount = nullptr) {
  auto light = [&b](int x, int y) {
    return x >= 0 && y >= 0 && x < b.width && y < b.height &&
           b.levels[size_t(y) * b.width + x] < 192;
  };
  int ink = 0, missing = 0;
  for (int y = 0; y < a.height; ++y)
    for (int x = 0; x < a.width; ++x) {
      if (a.levels[size_t(y) * a.width + x] >= 64) continue;
      ++ink;
      bool near = false;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) near = near || light(x + dx, y + dy);
      missing += !near;
    }
  if (inkCount) *inkCount = ink;
  return ink ? double(missing) / ink : 1.0;
}

class Export : public ::testing::Test {
 protected:
  void SetUp() override {
    QnClock::setFixedTime(kFixedUnixTime);
    view = HeadlessView::create(makeRect(0, 0, 300, 200));
    c = QnScrivletController::create(view, {}, {});
    c->setCopyOfTargetViewBounds(view->bounds());
    dir = fs::temp_directory_path() /
          ("scrivlet-export-" + std::to_string(getpid()) + "-" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir);
    fs::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  }
  void TearDown() override {
    QnClock::setFixedTime(std::nullopt);
    QnDevice::resetToDefaults();
    fs::remove_all(dir);
  }
  // Two strokes signed with a finger: a looping run and a crossing bar.
  void sign() {
    double t = 0;
    auto stroke = [&](auto at, int samples) {
      auto touch = std::make_shared<HeadlessTouch>(at(0.0), t);
      view->beginTouches({touch});
      for (int i = 1; i <= samples; ++i) {
        touch->moveTo(at(double(i) / samples), t += 1 / 120.0);
        i < samples ? view->moveTouches({touch}) : view->endTouches({touch});
      }
      t += 0.3;
    };
    stroke(
        [](double u) {
          return QnPoint{40 + 200 * u + 18 * std::sin(u * 8 * M_PI),
                         110 - 35 * std::cos(u * 8 * M_PI) * (0.6 + 0.4 * std::sin(u * M_PI))};
        },
        120);
    stroke([](double u) { return QnPoint{70 + 170 * u, 80 + 6 * u}; }, 25);
    c->setMyBrushStrokes(QnScrivletController::copyOfStrokesWithOffset(
        c->drawingController()->drawingArray(), {0, 0}));
  }
  Bytes exportAs(const std::string& format) {
    std::optional<Bytes> bytes = c->getImageData(format);
    EXPECT_TRUE(bytes.has_value()) << format;
    return bytes.value_or(Bytes{});
  }

  std::shared_ptr<HeadlessView> view;
  std::shared_ptr<QnScrivletController> c;
  fs::path dir;
};

TEST_F(Export, CanvasHasAPenAndAHalfOfMarginAndEveryFormatLeavesTheSameLocation) {
  struct Case {
    double boxX;
    float scale, screenScale;
    std::array<double, 4> location;
  };
  // Box 100 x 40, strokeWidthMax 4: w = 112, h = 52, origin 6 points up and left of the box.
  const Case cases[] = {
      {10, 1, 1, {4, 4, 112, 52}},
      {10, 2, 1, {4, 4, 224, 104}},
      {10, 2, 2, {4, 4, 224, 104}},
      // x0 * 2 = 8.5: the whole-number rectangle round (8.5, 8.5, 224, 104) is 225 x 105.
      {10.25, 2, 1, {4.25, 4.25, 225, 105}},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE("box at " + std::to_string(k.boxX) + ", scale " + std::to_string(k.scale) +
                 ", screen " + std::to_string(k.screenScale));
    QnDevice::setScreenScale(k.screenScale);
    c->setExportScale(k.scale);
    c->setMyBrushStrokes(strokesSpanning(k.boxX, k.boxX, 100, 40));
    QnImage png = QnImage::decodePNG(exportAs("PNG"));
    EXPECT_EQ(edges(c->lastLocation()), k.location);
    EXPECT_EQ(png.pixelWidth(), k.location[2] * k.screenScale);
    EXPECT_EQ(png.pixelHeight(), k.location[3] * k.screenScale);
    for (const char* format : {"PDF", "SVG", "PNG"}) {
      c->setLastLocation(QnRectZero);
      exportAs(format);
      EXPECT_EQ(edges(c->lastLocation()), k.location) << format;
    }
  }
  // The formats are compared exactly; anything else gives nothing.
  for (const char* format : {"JPG", "png", "", "PDF "})
    EXPECT_FALSE(c->getImageData(format)) << format;
}

TEST_F(Export, DateLineAndClippingToTheView) {
  c->setShowDate(true);
  c->setMyBrushStrokes(strokesSpanning(10, 10, 200, 40));
  ASSERT_LT(measureBoldText(mediumDateString(kFixedUnixTime), 30).width + 8, 212);
  for (float size : {20.0f, 30.0f}) {
    SCOPED_TRACE(size);
    c->setExportDateSize(size);
    exportAs("PNG");
    EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, 212, 52 + size + 3}));
  }
  // Clipped: the view's 300 x 200 times the scale, at the view's origin, with no room for the date.
  c->setClipSignatureToBounds(true);
  c->setExportScale(2);
  QnImage png = QnImage::decodePNG(exportAs("PNG"));
  EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{0, 0, 600, 400}));
  EXPECT_EQ(png.pixelWidth(), 600);
  EXPECT_EQ(png.pixelHeight(), 400);
}

TEST_F(Export, LongDateWidensTheCanvasComparedWithItsScaledWidth) {
  const std::string date = mediumDateString(kFixedUnixTime);
  const std::string dateTime = date + " " + mediumTimeString(kFixedUnixTime);
  const double dateWidth = measureBoldText(date, 20).width;
  const double dateTimeWidth = measureBoldText(dateTime, 20).width;
  // The chosen texts sit either side of the canvas widths: 112 unscaled, 224 scaled.
  ASSERT_GT(dateWidth + 8, 112) << date;
  ASSERT_LT(dateWidth + 8, 224) << date;
  ASSERT_GT(dateTimeWidth + 8, 224) << dateTime;
  c->setShowDate(true);
  c->setMyBrushStrokes(strokesSpanning(10, 10, 100, 40));
  struct Case {
    bool withTime;
    float scale;
    double width, height;
  };
  const Case cases[] = {
      {false, 1, std::ceil(dateWidth + 8), 75},
      {false, 2, 224, 150},  // the date is narrower than the scaled canvas
      {true, 2, std::ceil(2 * (dateTimeWidth + 8)), 150},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(std::string(k.withTime ? "date and time" : "date") + " at scale " +
                 std::to_string(k.scale));
    c->setDateIncludesTime(k.withTime);
    c->setExportScale(k.scale);
    QnImage png = QnImage::decodePNG(exportAs("PNG"));
    EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, k.width, k.height}));
    EXPECT_EQ(png.pixelWidth(), k.width);
  }
}

TEST_F(Export, HashBadgeWidensANarrowCanvasAndHeightensALowOne) {
  c->setShowHash(true);
  c->setLastHash("0000000000");
  QnSize hash = measureBoldText("0000000000", 23);
  // Helvetica Bold digits are 0.556 em wide.
  EXPECT_NEAR(hash.width, 10 * 0.556 * 23, 0.5);
  const double hashW = std::ceil(hash.width), hashH = std::ceil(hash.height);
  ASSERT_GT(hashH, 8);
  {
    SCOPED_TRACE("100 x 40 box: 112 wide, 44 above the badge row");
    c->setMyBrushStrokes(strokesSpanning(10, 10, 100, 40));
    exportAs("PNG");
    EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, hashW + 28, 52}));
  }
  {
    SCOPED_TRACE("100 x 4 box: h = 16, 8 above the badge row");
    c->setMyBrushStrokes(strokesSpanning(10, 10, 100, 4));
    exportAs("PNG");
    EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, hashW + 28, 8 + hashH}));
  }
  {
    SCOPED_TRACE("100 x 4 box with the date: h = 39, the badge row 28 up");
    c->setShowDate(true);
    const double dateW = measureBoldText(mediumDateString(kFixedUnixTime), 20).width + 8;
    exportAs("PNG");
    EXPECT_EQ(edges(c->lastLocation()),
              (std::array<double, 4>{4, 4, std::max(hashW + 28, std::ceil(dateW)), 28 + hashH}));
  }
}

TEST_F(Export, PdfIsOnePageOfTheCanvasThatLooksLikeThePng) {
  for (const char* tool : {"qpdf", "pdfinfo", "pdftotext", "pdftoppm"}) requireTool(tool);
  sign();
  c->setShowDate(true);
  c->setShowHash(true);
  c->createAndStoreHashString();
  const std::string hash = c->lastHash().value_or("?");
  for (float scale : {1.0f, 2.0f}) {
    SCOPED_TRACE("scale " + std::to_string(scale));
    c->setExportScale(scale);
    Bytes pngBytes = exportAs("PNG");
    Bytes pdf = exportAs("PDF");
    QnSize canvas = c->lastLocation().size;
    fs::path pdfPath = dir / "signature.pdf", out = dir / "out.txt";
    writeFile(pdfPath, pdf);
    EXPECT_EQ(run("qpdf --check '" + pdfPath.string() + "'", out), 0) << readFile(out);
    ASSERT_EQ(run("pdfinfo -box '" + pdfPath.string() + "'", out), 0) << readFile(out);
    std::string info = readFile(out);
    EXPECT_TRUE(std::regex_search(info, std::regex("Pages: +1\n"))) << info;
    std::smatch box;
    ASSERT_TRUE(std::regex_search(
        info, box, std::regex("MediaBox: +([-0-9.]+) +([-0-9.]+) +([-0-9.]+) +([-0-9.]+)")));
    EXPECT_EQ((std::array<double, 4>{std::stod(box[1]), std::stod(box[2]), std::stod(box[3]),
                                     std::stod(box[4])}),
              (std::array<double, 4>{0, 0, canvas.width, canvas.height}));
    ASSERT_EQ(run("pdftotext '" + pdfPath.string() + "' -", out), 0);
    std::string text = readFile(out);
    EXPECT_NE(text.find(mediumDateString(kFixedUnixTime)), std::string::npos) << text;
    EXPECT_NE(text.find(hash), std::string::npos) << text;
    ASSERT_EQ(run("pdftoppm -gray -r 72 -singlefile '" + pdfPath.string() + "' '" +
                      (dir / "page").string() + "'",
                  out),
              0);
    Grey page = readPGM(dir / "page.pgm");
    Grey png = greyOf(QnImage::decodePNG(pngBytes));
    ASSERT_EQ(page.width, png.width);
    ASSERT_EQ(page.height, png.height);
    int ink = 0;
    EXPECT_LT(inkMissingFrom(png, page, &ink), 0.02);
    EXPECT_LT(inkMissingFrom(page, png), 0.02);
    EXPECT_GT(ink, 500);
    if (scale == 1) {
      fs::path keep = SCRIVLET_TEST_OUTPUT_DIR;
      writeFile(keep / "export_signature.png", pngBytes);
      writeFile(keep / "export_signature.pdf", pdf);
      run("pdftoppm -r 72 -png -singlefile '" + pdfPath.string() + "' '" +
              (keep / "export_signature_pdf").string() + "'",
          out);
    }
  }
}

TEST_F(Export, SvgIsWellFormedAndRendersWhereThePngHasInk) {
  for (const char* tool : {"xmllint", "rsvg-convert"}) requireTool(tool);
  sign();
  c->setShowDate(true);
  c->setShowHash(true);
  c->setLastHash("3f9a0c71be");
  fs::path svgPath = dir / "signature.svg", rendered = dir / "svg.png", out = dir / "out.txt";
  auto render = [&](const Bytes& svg) {
    writeFile(svgPath, svg);
    EXPECT_EQ(run("xmllint --noout '" + svgPath.string() + "'", out), 0) << readFile(out);
    EXPECT_EQ(run("rsvg-convert -o '" + rendered.string() + "' '" + svgPath.string() + "'", out), 0)
        << readFile(out);
    std::string png = readFile(rendered);
    return QnImage::decodePNG(Bytes(png.begin(), png.end()));
  };
  {
    SCOPED_TRACE("with the date and the hash");
    Bytes svg = exportAs("SVG");
    std::string text(svg.begin(), svg.end());
    EXPECT_NE(text.find(">" + mediumDateString(kFixedUnixTime) + "</text>"), std::string::npos)
        << text;
    EXPECT_NE(text.find(">3f9a0c71be</text>"), std::string::npos) << text;
    EXPECT_FALSE(render(svg).isNull());
    fs::copy_file(rendered, fs::path(SCRIVLET_TEST_OUTPUT_DIR) / "export_signature_svg.png",
                  fs::copy_options::overwrite_existing);
  }
  // Renderers place text differently, so the strokes alone are compared.
  c->setShowDate(false);
  c->setShowHash(false);
  Grey png = greyOf(QnImage::decodePNG(exportAs("PNG")));
  Grey drawn = greyOf(render(exportAs("SVG")));
  ASSERT_EQ(drawn.width, png.width);
  ASSERT_EQ(drawn.height, png.height);
  int ink = 0;
  EXPECT_LT(inkMissingFrom(png, drawn, &ink), 0.02);
  EXPECT_LT(inkMissingFrom(drawn, png), 0.02);
  EXPECT_GT(ink, 500);
}

TEST(PDFRoutines, SetupGivesABufferThatStaysEmptyWhileThePageIsOpen) {
  QnMutableDataRef buffer = setupPDFRenderState(makeRect(0, 0, 200, 100));
  ASSERT_TRUE(buffer);
  EXPECT_TRUE(buffer->empty()) << buffer->size() << " bytes before the context ended";

  const double nan = std::numeric_limits<double>::quiet_NaN();
  testing::internal::CaptureStderr();
  QnMutableDataRef none = setupPDFRenderState(makeRect(0, 0, nan, nan));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Couldn't create PDF context!\n");
  EXPECT_FALSE(none);
}

TEST(PDFRoutines, ConsumerAppendsToItsBufferAndReleasesIt) {
  EXPECT_EQ(myCGDataConsumerCreateWithCFData(nullptr), nullptr);
  auto buffer = std::make_shared<QnMutableData>(QnMutableData{'%'});
  {
    std::unique_ptr<QnDataConsumer> consumer = myCGDataConsumerCreateWithCFData(buffer);
    ASSERT_TRUE(consumer);
    ASSERT_TRUE(consumer->putBytes);
    EXPECT_EQ(consumer->putBytes(consumer->info, "PDF", 3), 3u);
    EXPECT_EQ(myCFDataConsumerPutBytes(consumer->info, "-1.4", 4), 4u);
    EXPECT_EQ(std::string(buffer->begin(), buffer->end()), "%PDF-1.4");
    EXPECT_EQ(buffer.use_count(), 2);
  }
  EXPECT_EQ(buffer.use_count(), 1);
}

TEST(PDFRoutines, OutlineIsARedRectangleOnRasterAndNothingInSVG) {
  QnBitmapContext bitmap({20, 10}, 1);
  QnComboContext raster(&bitmap.context());
  renderOutline(&raster, 20, 10);
  QnImage image = bitmap.makeImage();
  // A 1-point line centred on the edges covers half of each edge pixel, three quarters of a corner.
  for (auto [x, y, coverage] :
       {std::array<int, 3>{10, 0, 128}, {10, 9, 128}, {0, 5, 128}, {19, 5, 128}, {0, 0, 191}}) {
    SCOPED_TRACE(std::to_string(x) + "," + std::to_string(y));
    QnImage::Pixel p = image.pixelAt(x, y);
    EXPECT_NEAR(p.a, coverage, 2);
    EXPECT_EQ(p.r, p.a);
    EXPECT_EQ(p.g + p.b, 0);
  }
  for (int y = 1; y < 9; ++y)
    for (int x = 1; x < 19; ++x) ASSERT_EQ(image.pixelAt(x, y).a, 0) << x << "," << y;

  QnComboContext svg(nullptr);
  svg.setIsSVG(true);
  renderOutline(&svg, 20, 10);
  EXPECT_TRUE(svg.pathArray().empty());
  EXPECT_FALSE(svg.pathString().has_value());
}

}  // namespace
}  // namespace scrivlet
