// QnComboContext: SVG recording worked out by hand. (Its raster drawing, which hands each call to the
// bitmap's context, shows in the exports' PNGs matching their SVGs: export_renderer_test.cpp.)
#include "render/combo_context.h"

#include "output_support.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

QnComboContext svgContext(float sx, float sy) {
  QnComboContext ctx(nullptr);
  ctx.setIsSVG(true);
  ctx.setScaleCTMXY(sx, sy);
  return ctx;
}

// Begins a path: a move to the first point and lines to the others.
void polyline(QnComboContext& ctx, std::initializer_list<QnPoint> points) {
  ctx.beginPath();
  for (auto p = points.begin(); p != points.end(); ++p)
    p == points.begin() ? ctx.moveToPoint(*p) : ctx.addLineToPoint(*p);
}

// Sets every piece of state, draws one path with each kind of segment in every mode, and clears.
void drawInEveryMode(QnComboContext& ctx) {
  ctx.setScaleCTMXY(2, 1);
  ctx.setFillColorWithColor(QnColor(1, 0, 0, 1));
  ctx.setStrokeColorWithColor(QnColor(0.5, 1));
  ctx.setLineWidth(1.25);
  ctx.setLineCap(kQnLineCapRound);
  ctx.setLineJoin(kQnLineJoinRound);  // never written in SVG
  ctx.setAlpha(0.5);
  polyline(ctx, {{1, 2}, {3, 4}});
  ctx.addCurveToPointCp1Cp2Point({1, 2}, {3, 4}, {5, 6});
  ctx.addArcRadiusStartAngleEndAngleClockwise({10, 10}, 5, 0, M_PI, 0);
  ctx.closePath();  // follows an arc with no blank
  for (int mode = 0; mode <= 4; ++mode) ctx.drawPath(mode);  // the path data stays
  ctx.clearRect(makeRect(1, 2, 3, 4));  // nothing in SVG mode
}

TEST(ComboContextSVG, PathDataAppliesTranslationThenScale) {
  QnComboContext fresh(nullptr);  // scale (0, 0): every length records as zero
  fresh.setIsSVG(true);
  polyline(fresh, {{3, 4}});
  fresh.strokePath();  // the default colour is written without '#'
  EXPECT_EQ(fresh.pathArray().at(0),
            "<path d=\"M 0.000000 0.000000 \" stroke=\"000000\" stroke-width=\"0.000000\" "
            "stroke-linecap=\"butt\" fill = \"none\"  opacity=\"1.000000\" />");

  QnComboContext ctx = svgContext(5, 5);
  ctx.setScaleCTMXY(2, 3);  // replaces the earlier scale
  ctx.setTranslateCTMXY(1, -2);
  ctx.moveToPoint({1, 1});  // before any beginPath: lost
  EXPECT_FALSE(ctx.pathString().has_value());
  polyline(ctx, {{4, 5}, {0.5, 2.25}});
  ctx.addCurveToPointCp1Cp2Point({0, 2}, {-1, 3}, {2.5, 2});
  ctx.closePath();
  EXPECT_EQ(*ctx.pathString(), "M 10.000000 9.000000 L 3.000000 0.750000 "
                               "C 2.000000 0.000000 0.000000 3.000000 7.000000 0.000000 Z");
  EXPECT_NO_THROW(ctx.moveToPoint({INFINITY, NAN}));

  // An arc ends opposite its start point, or clockwise at the start point itself.
  struct { float sx, sy; double a0, a1; int cw; const char* expected; } arcs[] = {
      // pi narrowed to float exceeds the double pi: with clockwise 0 the arc is not large.
      {1, 1, 0, M_PI, 0, "A 5.000000 5.000000 0 0 1 5.000000 10.000000"},
      {1, 1, M_PI / 2, 0, 1, "A 5.000000 5.000000 0 0 0 10.000000 15.000000"},
      {1, 1, 0, 4, 1, "A 5.000000 5.000000 0 1 0 15.000000 10.000000"},
      {1, 1, 0, 1, 0, "A 5.000000 5.000000 0 1 1 5.000000 10.000000"},
  };
  for (const auto& c : arcs) {
    QnComboContext arc = svgContext(c.sx, c.sy);
    arc.beginPath();
    arc.addArcRadiusStartAngleEndAngleClockwise({10, 10}, 5, c.a0, c.a1, c.cw);
    EXPECT_EQ(*arc.pathString(), c.expected);
  }
}

TEST(ComboContextSVG, DrawPathModesWriteTheirAttributesIntoAValidDocument) {
  QnComboContext ctx = svgContext(1, 1);
  drawInEveryMode(ctx);
  const std::string d = "<path d=\"M 2.000000 2.000000 L 6.000000 4.000000 C 2.000000 2.000000 "
                        "6.000000 4.000000 10.000000 6.000000 A 10.000000 10.000000 0 0 1 "
                        "10.000000 10.000000Z\" ";
  auto stroke = [](const std::string& cap) {  // grey 0.5 is 127.5 and rounds up
    return "stroke=\"#808080\" stroke-width=\"2.500000\" stroke-linecap=\"" + cap + "\" ";
  };
  const std::string opacity = "opacity=\"0.500000\" />", unfilled = "fill = \"none\"  " + opacity;
  ctx.setLineCap(kQnLineCapSquare);
  ctx.strokePath();
  ctx.setLineCap(7);  // not a cap: butt
  ctx.strokePath();
  EXPECT_EQ(ctx.pathArray(), (std::vector<std::string>{
      d + "fill=\"#FF0000\"  " + opacity, d + " " + opacity, d + stroke("round") + unfilled,
      d + "fill=\"#FF0000\" " + stroke("round") + "  " + opacity, d + " " + opacity,
      d + stroke("square") + unfilled, d + stroke("butt") + unfilled}));

  ctx.showTextAtPointTextSize({2, 45}, "2024-01-01 12:00", 9);
  std::string svg = ctx.serializeSVG({40, 60});  // the width doubled by the scale (2, 1)
  EXPECT_EQ(svg.rfind("<svg style=\"border: 1px solid black\" width=\"80.000000\" "
                      "height=\"60.000000\" viewBox=\"0 0 80.000000 60.000000\" "
                      "xmlns=\"http://www.w3.org/2000/svg\">" + d, 0), 0u);
  EXPECT_TRUE(svg.ends_with("2024-01-01 12:00</text></svg>"));
  std::string file = test_support::writeOutput("combo_context_paths.svg", svg);
  EXPECT_EQ(test_support::failureOf("xmllint --noout '" + file + "'"), "");
}

TEST(ComboContextSVG, ColourTextsAndUnescapedText) {
  auto hex = [](const QnColor& c) { return QnComboContext::hexStringFromColor(c); };
  EXPECT_EQ(hex(QnColor(127.4999999 / 255.0, 1)), "#808080");  // 127.5 once narrowed to float
  EXPECT_EQ(hex(QnColor(171 / 255.0, 205 / 255.0, 239 / 255.0, 0)), "#ABCDEF");  // alpha dropped
  EXPECT_EQ(hex(QnColor::withComponents({1, 1, 1})), "#000000");  // neither grey nor RGBA

  QnComboContext ctx = svgContext(2, 2);
  ctx.setTranslateCTMXY(1, 1);
  ctx.setFillColorWithColor(QnColor(0, 0, 1, 1));
  ctx.setAlpha(0.25);
  ctx.showTextAtPointTextSize({4, 5}, "a<b & c", 7);
  EXPECT_EQ(ctx.pathArray().at(0),
            "<text x=\"10.000000\" y=\"12.000000\" font-family=\"Helvetica,sans-serif\" "
            "font-weight=\"bold\" dominant-baseline=\"hanging\" font-size=\"14.000000\"  "
            "fill=\"#0000FF\" opacity=\"0.250000\">a<b & c</text>");
}

}  // namespace
}  // namespace scrivlet
