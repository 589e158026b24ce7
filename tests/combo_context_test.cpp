// QnComboContext: SVG recording worked out by hand, raster forwarding, and real pixels.
#include "render/combo_context.h"

#include "platform/cg_context.h"
#include "platform/image.h"
#include "platform/recording_context.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <string>
#include <utility>

namespace scrivlet {
namespace {

constexpr double kPi = std::numbers::pi;

QnComboContext svgContext(float sx, float sy) {
  QnComboContext ctx(nullptr);
  ctx.setIsSVG(true);
  ctx.setScaleCTMXY(sx, sy);
  return ctx;
}

std::string openingTag(const std::string& w, const std::string& h, const std::string& vw,
                       const std::string& vh) {
  return "<svg style=\"border: 1px solid black\" width=\"" + w + "\" height=\"" + h +
         "\" viewBox=\"0 0 " + vw + " " + vh + "\" xmlns=\"http://www.w3.org/2000/svg\">";
}

TEST(ComboContextSVG, PathCommandsApplyTranslationThenScale) {
  {
    SCOPED_TRACE("a fresh context has scale (0, 0) and records zeros");
    QnComboContext ctx(nullptr);
    ctx.setIsSVG(true);
    ctx.beginPath();
    ctx.moveToPoint({3, 4});
    ctx.addLineToPoint({5, 6});
    ctx.addArcRadiusStartAngleEndAngleClockwise({7, 8}, 9, 0, kPi, 0);
    EXPECT_EQ(*ctx.pathString(), "M 0.000000 0.000000 L 0.000000 0.000000 "
                                 "A 0.000000 0.000000 0 0 1 0.000000 0.000000");
  }
  SCOPED_TRACE("scale (2, 3) replaces an earlier scale; translation (1, -2) comes first");
  QnComboContext ctx = svgContext(5, 5);
  ctx.setScaleCTMXY(2, 3);
  ctx.setTranslateCTMXY(1, -2);
  EXPECT_EQ(ctx.st({4, 5}), (QnPoint{10, 9}));
  ctx.moveToPoint({1, 1});  // before any beginPath: lost
  EXPECT_FALSE(ctx.pathString().has_value());
  ctx.beginPath();
  EXPECT_EQ(*ctx.pathString(), "");
  ctx.moveToPoint({4, 5});
  ctx.addLineToPoint({0.5, 2.25});
  ctx.addCurveToPointCp1Cp2Point({0, 2}, {-1, 3}, {2.5, 2});
  ctx.closePath();
  EXPECT_EQ(*ctx.pathString(),
            "M 10.000000 9.000000 L 3.000000 0.750000 "
            "C 2.000000 0.000000 0.000000 3.000000 7.000000 0.000000 Z");
  ctx.beginPath();
  EXPECT_EQ(*ctx.pathString(), "");
  ctx.clearRect(makeRect(0, 0, 100, 100));  // nothing in SVG mode
  EXPECT_TRUE(ctx.pathArray().empty());
}

TEST(ComboContextSVG, ArcEndsAtTheOppositeOrStartPoint) {
  struct Case {
    const char* name;
    float sx, sy;
    double a0, a1;
    int cw;
    const char* expected;
  } cases[] = {
      // The span pi narrowed to float exceeds the double pi: with clockwise 0 it is not large.
      {"half circle", 1, 1, 0, kPi, 0, "A 5.000000 5.000000 0 0 1 5.000000 10.000000"},
      {"clockwise: the start point", 1, 1, kPi / 2, 0, 1,
       "A 5.000000 5.000000 0 0 0 10.000000 15.000000"},
      {"clockwise, over pi", 1, 1, 0, 4, 1, "A 5.000000 5.000000 0 1 0 15.000000 10.000000"},
      {"counter-clockwise, under pi", 1, 1, 0, 1, 0,
       "A 5.000000 5.000000 0 1 1 5.000000 10.000000"},
      {"radius by the x scale only", 2, 3, kPi / 2, kPi / 2 + kPi, 0,
       "A 10.000000 10.000000 0 0 1 20.000000 20.000000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    QnComboContext ctx = svgContext(c.sx, c.sy);
    ctx.beginPath();
    ctx.addArcRadiusStartAngleEndAngleClockwise({10, 10}, 5, c.a0, c.a1, c.cw);
    ctx.closePath();  // follows with no blank
    EXPECT_EQ(*ctx.pathString(), std::string(c.expected) + "Z");
  }
}

TEST(ComboContextSVG, DrawPathModesWriteTheirAttributes) {
  QnComboContext ctx = svgContext(2, 1);
  EXPECT_EQ(ctx.fillColorString(), "000000");
  EXPECT_EQ(ctx.strokeColorString(), "000000");
  ctx.beginPath();
  ctx.moveToPoint({1, 2});
  ctx.fillPath();
  ctx.strokePath();
  const std::string d0 = "<path d=\"M 2.000000 2.000000 \" ";
  EXPECT_EQ(ctx.pathArray().at(0), d0 + "fill=\"000000\"  opacity=\"1.000000\" />");
  EXPECT_EQ(ctx.pathArray().at(1),
            d0 + "stroke=\"000000\" stroke-width=\"2.000000\" stroke-linecap=\"butt\" "
                 "fill = \"none\"  opacity=\"1.000000\" />");

  ctx.setFillColorWithColor(QnColor(1, 0, 0, 1));
  ctx.setStrokeColorWithColor(QnColor(0.5, 1));
  ctx.setLineWidth(1.25);
  ctx.setLineCap(kQnLineCapRound);
  ctx.setLineJoin(kQnLineJoinRound);  // kept, never written
  ctx.setAlpha(0.5);
  ctx.beginPath();
  ctx.moveToPoint({1, 2});
  ctx.addLineToPoint({3, 4});
  ctx.closePath();
  for (int mode = 0; mode <= 4; ++mode) ctx.drawPath(mode);  // the path data stays
  const std::string d = "<path d=\"M 2.000000 2.000000 L 6.000000 4.000000 Z\" ";
  const std::string stroke =
      "stroke=\"#808080\" stroke-width=\"2.500000\" stroke-linecap=\"round\" ";
  const std::string opacity = "opacity=\"0.500000\" />";
  const std::string expected[] = {
      d + "fill=\"#FF0000\"  " + opacity,
      d + " " + opacity,
      d + stroke + "fill = \"none\"  " + opacity,
      d + "fill=\"#FF0000\" " + stroke + "  " + opacity,
      d + " " + opacity,
  };
  ASSERT_EQ(ctx.pathArray().size(), 7u);
  for (int mode = 0; mode <= 4; ++mode) {
    SCOPED_TRACE("mode " + std::to_string(mode));
    EXPECT_EQ(ctx.pathArray()[2 + mode], expected[mode]);
  }
  ctx.setLineCap(kQnLineCapSquare);
  ctx.strokePath();
  EXPECT_NE(ctx.pathArray().back().find("stroke-linecap=\"square\" fill"), std::string::npos);
  ctx.setLineCap(7);  // unknown: butt
  ctx.strokePath();
  EXPECT_NE(ctx.pathArray().back().find("stroke-linecap=\"butt\" fill"), std::string::npos);
}

TEST(ComboContextSVG, ColourTextsAndComponents) {
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor(0.5, 1)), "#808080");  // 127.5 rounds up
  // 127.4999999 becomes 127.5 once narrowed to float, and then rounds up as well.
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor(127.4999999 / 255.0, 1)), "#808080");
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor(171 / 255.0, 205 / 255.0, 239 / 255.0, 1)),
            "#ABCDEF");
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor(1, 1, 1, 0)), "#FFFFFF");  // alpha dropped
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor::withComponents({1, 1, 1})), "#000000");
  EXPECT_EQ(QnComboContext::hexStringFromColor(QnColor::withComponents({1, 1, 1, 1, 1})),
            "#000000");

  QnColor::RGBA grey = QnComboContext::rgbaFromColor(QnColor(0.25, 0.75));
  EXPECT_EQ((std::array{grey.r, grey.g, grey.b, grey.a}), (std::array{0.25, 0.25, 0.25, 0.75}));
  QnColor::RGBA three = QnComboContext::rgbaFromColor(QnColor::withComponents({1, 1, 1}));
  EXPECT_EQ((std::array{three.r, three.g, three.b, three.a}), (std::array{0.0, 0.0, 0.0, 0.0}));
}

TEST(ComboContextSVG, TextIsRecordedUnescapedInBothModes) {
  QnComboContext ctx = svgContext(2, 2);
  ctx.setTranslateCTMXY(1, 1);
  ctx.setFillColorWithColor(QnColor(0, 0, 1, 1));
  ctx.setAlpha(0.25);
  ctx.showTextAtPointTextSize({4, 5}, "a<b & c", 7);
  EXPECT_EQ(ctx.pathArray().at(0),
            "<text x=\"10.000000\" y=\"12.000000\" font-family=\"Helvetica,sans-serif\" "
            "font-weight=\"bold\" dominant-baseline=\"hanging\" font-size=\"14.000000\"  "
            "fill=\"#0000FF\" opacity=\"0.250000\">a<b & c</text>");

  SCOPED_TRACE("raster mode records the element too but draws nothing");
  RecordingContext rec;
  QnComboContext raster(&rec);
  raster.setScaleCTMXY(3, 3);  // goes to the context, not to the recorded scale
  raster.setFillColorWithColor(QnColor(1, 1));  // likewise
  rec.clear();
  raster.showTextAtPointTextSize({4, 5}, "", 7);
  EXPECT_TRUE(rec.calls().empty());
  EXPECT_EQ(raster.pathArray().at(0),
            "<text x=\"0.000000\" y=\"0.000000\" font-family=\"Helvetica,sans-serif\" "
            "font-weight=\"bold\" dominant-baseline=\"hanging\" font-size=\"0.000000\"  "
            "fill=\"000000\" opacity=\"1.000000\"></text>");
}

TEST(ComboContextSVG, SerializedDocument) {
  {
    SCOPED_TRACE("an empty context");
    QnComboContext ctx(nullptr);
    EXPECT_EQ(ctx.serializeSVG({100, 50}),
              openingTag("0.000000", "0.000000", "0.000000", "0.000000") + "</svg>");
  }
  {
    SCOPED_TRACE("width and height narrowed to float, the view box not");
    QnComboContext ctx = svgContext(3, 2);
    // 333.7 * 3 = 1001.1; the nearest float is 1001 + 1638/16384 = 1001.0999755859375.
    EXPECT_EQ(ctx.serializeSVG({333.7, 20.25}),
              openingTag("1001.099976", "40.500000", "1001.100000", "40.500000") + "</svg>");
  }
  SCOPED_TRACE("a whole document is well-formed XML and serializes the same twice");
  QnComboContext ctx = svgContext(1, 1);
  ctx.setFillColorWithColor(QnColor(0.2, 0.4, 0.6, 1));
  ctx.beginPath();
  ctx.moveToPoint({15, 10});
  ctx.addArcRadiusStartAngleEndAngleClockwise({10, 10}, 5, 0, kPi, 0);
  ctx.addLineToPoint({5, 30});
  ctx.addCurveToPointCp1Cp2Point({10, 40}, {20, 40}, {25, 30});
  ctx.closePath();
  ctx.fillPath();
  ctx.strokePath();
  ctx.drawPath(kQnPathEOFillStroke);
  ctx.showTextAtPointTextSize({2, 45}, "2024-01-01 12:00", 9);
  std::string svg = ctx.serializeSVG({40, 60});
  EXPECT_EQ(svg, ctx.serializeSVG({40, 60}));
  EXPECT_EQ(svg.rfind(openingTag("40.000000", "60.000000", "40.000000", "60.000000") +
                          "<path d=\"M 15.000000 10.000000 A 5.000000",
                      0),
            0u);
  const std::string ending = "2024-01-01 12:00</text></svg>";
  EXPECT_EQ(svg.substr(svg.size() - ending.size()), ending);
  EXPECT_EQ(svg.find('\n'), std::string::npos);

  std::filesystem::path dir = std::filesystem::temp_directory_path() / "scrivlet-combo-svg";
  std::filesystem::create_directories(dir);
  std::filesystem::path file = dir / "document.svg";
  std::ofstream(file) << svg;
  ASSERT_TRUE(std::filesystem::exists("/usr/bin/xmllint")) << "xmllint is required";
  EXPECT_EQ(std::system(("/usr/bin/xmllint --noout " + file.string()).c_str()), 0) << svg;

  SCOPED_TRACE("non-finite coordinates are written as printf writes them");
  ctx.beginPath();
  EXPECT_NO_THROW(ctx.moveToPoint({INFINITY, NAN}));
  EXPECT_EQ(*ctx.pathString(), "M inf nan ");
}

TEST(ComboContextRaster, ForwardsEveryOperation) {
  RecordingContext rec;
  QnComboContext ctx(&rec);
  EXPECT_FALSE(ctx.isSVG());
  ctx.setScaleCTMXY(2, 0.5);
  ctx.setTranslateCTMXY(1.5, -3);
  ctx.setStrokeColorWithColor(QnColor(0.5, 1));
  ctx.setFillColorWithColor(QnColor(1, 0, 0, 1));
  ctx.setAlpha(0.25);
  ctx.setLineWidth(3);
  ctx.setLineJoin(kQnLineJoinRound);
  ctx.setLineCap(kQnLineCapSquare);
  ctx.beginPath();
  ctx.moveToPoint({1, 2});
  ctx.addLineToPoint({3, 4});
  ctx.addCurveToPointCp1Cp2Point({1, 2}, {3, 4}, {5, 6});
  ctx.addArcRadiusStartAngleEndAngleClockwise({10, 10}, 5, 0, 1.5, 1);
  ctx.closePath();
  ctx.fillPath();
  ctx.strokePath();
  ctx.drawPath(kQnPathEOFillStroke);
  ctx.clearRect(makeRect(1, 2, 3, 4));
  ctx.showTextAtPointTextSize({1, 1}, "x", 10);
  EXPECT_EQ(rec.log(),
            "scaleCTM 2 0.5\ntranslateCTM 1.5 -3\nsetStrokeColor 0.5 1\nsetFillColor 1 0 0 1\n"
            "setAlpha 0.25\nsetLineWidth 3\nsetLineJoin 1\nsetLineCap 2\nbeginPath\n"
            "moveToPoint 1 2\naddLineToPoint 3 4\naddCurveToPoint 1 2 3 4 5 6\n"
            "addArc 10 10 5 0 1.5 1\nclosePath\ndrawPath 0\ndrawPath 2\ndrawPath 4\n"
            "setBlendMode 16\nsetFillColor 0 0 0 0\nfillRect 1 2 3 4\nsetBlendMode 0\n");
  // Nothing of it went into the recorded SVG state.
  EXPECT_EQ(ctx.scale(), (QnPoint{0, 0}));
  EXPECT_EQ(ctx.fillColorString(), "000000");
  EXPECT_FALSE(ctx.pathString().has_value());
  EXPECT_EQ(ctx.pathArray().size(), 1u);

  SCOPED_TRACE("without a context nothing happens");
  QnComboContext none(nullptr);
  EXPECT_NO_THROW({
    none.setScaleCTMXY(2, 2);
    none.clearRect(makeRect(0, 0, 5, 5));
    none.beginPath();
    none.moveToPoint({NAN, 1});
    none.addArcRadiusStartAngleEndAngleClockwise({1, 1}, 1, 0, kPi, 0);
    none.fillPath();
    none.strokePath();
  });
  EXPECT_FALSE(none.pathString().has_value());
}

TEST(ComboContextRaster, DrawsShapesIntoABitmap) {
  QnBitmapContext bitmap({60, 40}, 2);
  QnComboContext ctx(&bitmap.context());
  ctx.setFillColorWithColor(QnColor(1, 0, 0, 1));  // red square 5..15
  ctx.beginPath();
  ctx.moveToPoint({5, 5});
  ctx.addLineToPoint({15, 5});
  ctx.addLineToPoint({15, 15});
  ctx.addLineToPoint({5, 15});
  ctx.closePath();
  ctx.fillPath();
  ctx.setStrokeColorWithColor(QnColor(0, 0, 1, 1));  // blue lines 25..35, 4 wide
  ctx.setLineWidth(4);
  for (auto [cap, y] : {std::pair{kQnLineCapRound, 10.0}, {kQnLineCapButt, 20.0}}) {
    ctx.setLineCap(cap);
    ctx.beginPath();
    ctx.moveToPoint({25, y});
    ctx.addLineToPoint({35, y});
    ctx.strokePath();
  }
  ctx.setFillColorWithColor(QnColor(0, 1, 0, 1));  // green lower half disc around (50, 20)
  ctx.beginPath();
  ctx.addArcRadiusStartAngleEndAngleClockwise({50, 20}, 8, 0, kPi, 0);
  ctx.fillPath();
  ctx.setFillColorWithColor(QnColor(1, 0, 0, 1));  // a red bar 5..25, half of it cleared
  ctx.beginPath();
  ctx.moveToPoint({5, 30});
  ctx.addLineToPoint({25, 30});
  ctx.addLineToPoint({25, 36});
  ctx.addLineToPoint({5, 36});
  ctx.fillPath();
  ctx.clearRect(makeRect(15, 28, 20, 10));

  QnImage image = bitmap.makeImage();
  ASSERT_EQ(image.pixelWidth(), 120);
  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  auto png = image.encodePNG();
  std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/combo_context_shapes.png",
                std::ios::binary)
      .write(reinterpret_cast<const char*>(png.data()), png.size());

  auto at = [&](double x, double y) {  // the pixel under a point
    QnImage::Pixel p = image.pixelAt(int(x * 2), int(y * 2));
    return std::array<int, 4>{p.r, p.g, p.b, p.a};
  };
  const std::array<int, 4> red{255, 0, 0, 255}, blue{0, 0, 255, 255}, green{0, 255, 0, 255},
      clear{0, 0, 0, 0};
  struct Probe {
    const char* what;
    double x, y;
    std::array<int, 4> expected;
  } probes[] = {
      {"in the square", 10, 10, red},           {"right of the square", 16.5, 10, clear},
      {"round line middle", 30, 10, blue},      {"round cap past the end", 36, 10, blue},
      {"round cap before the start", 23.5, 10, blue}, {"beyond the cap", 37.5, 10, clear},
      {"above the line", 30, 7.5, clear},       {"butt line near its end", 34.5, 20, blue},
      {"no butt cap past the end", 35.5, 20, clear}, {"lower half disc", 50, 25, green},
      {"upper half empty", 50, 15, clear},      {"disc edge", 43.5, 21, green},
      {"bar left of the clear", 10, 33, red},   {"cleared part of the bar", 20, 33, clear},
  };
  for (const Probe& p : probes) {
    SCOPED_TRACE(p.what);
    EXPECT_EQ(at(p.x, p.y), p.expected);
  }
}

}  // namespace
}  // namespace scrivlet
