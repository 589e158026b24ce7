// A drawing kept and drawn again into a PNG gives every pixel of drawing it at once.
#include "platform/drawing_log.h"

#include "output_support.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace test_support;

// Shapes across band edges, curves, arcs, strokes, a clearing shape, a shadow, an image and text.
void drawScene(CGContext& c, const QnImage& badge) {
  c.scaleCTM(0.95, 0.95);
  c.setFillColor(QnColor(0.9, 0.2, 0.1, 0.8));
  c.fillRect(makeRect(3.3, 10.7, 90.2, 51.9));
  c.saveGState();
  c.setShadow({2, 3}, 0, QnColor(0, 0, 0, 0.5));
  c.setStrokeColor(QnColor(0.1, 0.3, 0.9, 0.7));
  c.setLineWidth(4.5);
  c.setLineCap(kQnLineCapRound);
  c.setLineJoin(kQnLineJoinRound);
  c.beginPath();
  c.moveToPoint(5.25, 5.5);
  for (int i = 1; i < 40; ++i) c.addCurveToPoint(5 + i * 2.1, 10 + 30 * std::sin(i * 0.7), 7 + i * 2.3, 20 + 25 * std::cos(i), 6 + i * 2.2, 8 + i * 1.9);
  c.drawPath(kQnPathStroke);
  c.restoreGState();
  c.setAlpha(0.6);
  c.setFillColor(QnColor(0.2, 0.8, 0.3, 1));
  c.beginPath();
  c.addArc(60.4, 45.6, 21.3, 0.3, 5.1, 0);
  c.closePath();
  c.drawPath(kQnPathEOFill);
  c.setAlpha(1);
  c.setBlendMode(kQnBlendModeClear);
  c.fillRect(makeRect(20.5, 30.5, 12.25, 40.75));
  c.setBlendMode(kQnBlendModeNormal);
  c.drawImage(badge, makeRect(70.3, 5.6, 20.1, 70.4));
  c.showText("Tuesday 24 November 2026", {2.5, 44.3}, 11, QnColor::black());
  c.translateCTM(0.5, 0.25);
  c.showText("9f86d081884c7d65", {30, 75}, 8, QnColor(0.5, 0, 0.5, 1));
}

TEST(DrawingLog, DrawnAgainIntoAPNGItGivesEveryPixelOfDrawingAtOnce) {
  QnBitmapContext badgeBitmap({7, 9}, 1);
  badgeBitmap.context().setFillColor(QnColor(1, 0.5, 0, 0.75));
  badgeBitmap.context().fillRect(makeRect(1, 1, 5, 6));
  QnImage badge = badgeBitmap.makeImage();

  QnBitmapContext direct({100, 90}, 2);
  drawScene(direct.context(), badge);
  QnImage expected = direct.makeImage();
  savePNG(expected, "drawing_log_direct.png");

  DrawingLog log;
  drawScene(log, badge);
  EXPECT_FALSE(log.empty());
  for (int threads : {1, 3}) {
    QnImage image = QnImage::decodePNG(drawAsPNG(log, {100, 90}, 2, threads));
    ASSERT_EQ(std::pair(image.pixelWidth(), image.pixelHeight()), std::pair(200, 180));
    EXPECT_EQ(differingPixels(image, expected), 0) << threads << " threads";
  }
  testing::internal::CaptureStderr();
  EXPECT_TRUE(drawAsPNG(log, {0, 0}, 2).empty());  // no pixels: no PNG, said in one line
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Scrivlet: no PNG: the image has no pixels\n");
}

// A band of rows drawn from only the paths that reach it has every pixel of drawing everything: wide
// strokes, arcs, curves whose control points stray beyond them, scaled and moved, with a miter join.
TEST(DrawingLog, ABandDrawnFromThePathsThatReachItHasEveryPixel) {
  DrawingLog log;
  log.scaleCTM(1.5, 0.75);
  log.translateCTM(2, 10);
  log.setFillColor(QnColor(0.1, 0.2, 0.7, 0.55));
  log.setStrokeColor(QnColor(0.7, 0.2, 0.1, 0.6));
  for (int i = 0; i < 60; ++i) {
    double x = 5 + i * 2.1, y = 20 + 70 * std::sin(i * 0.37);
    log.setLineWidth(1 + i % 7);
    log.setLineJoin(i % 3 ? kQnLineJoinRound : kQnLineJoinMiter);
    log.moveToPoint(x, y);  // a move that the next path's beginning discards
    log.beginPath();
    log.moveToPoint(x, y);
    log.addCurveToPoint(x + 9, y - 30, x + 14, y + 25, x + 6, y + 4);
    log.addLineToPoint(x + 1, y + 9);
    log.drawPath(i % 2 ? kQnPathStroke : kQnPathFill);
    log.beginPath();
    log.addArc(x, y + 30, 2 + i % 5, 0, 6.2832, 0);
    log.drawPath(kQnPathFillStroke);
  }
  for (double top : {-5.0, 13.5, 40.0, 71.25, 120.0}) {
    QnBitmapContext all({200, 20}, 2), reaching({200, 20}, 2);
    all.context().translateCTM(0, -top);
    reaching.context().translateCTM(0, -top);
    log.replay(all.context());
    log.replay(reaching.context(), top - 0.5, top + 20.5);
    QnImage expected = all.makeImage(), image = reaching.makeImage();
    EXPECT_EQ(differingPixels(image, expected), 0) << "rows from " << top;
    EXPECT_TRUE(countPixels(expected, [](QnImage::Pixel p, int) { return p.a > 0; }) || top < 0 || top > 100) << top;
  }
}

}  // namespace
}  // namespace scrivlet
