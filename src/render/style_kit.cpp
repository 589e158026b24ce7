// The artwork's exact coordinates, drawn with filled polygons, a stroked rule and cubic curves.
#include "render/style_kit.h"

#include <scrivlet/engine/device.h>

#include "platform/cg_context.h"
#include "platform/image_view.h"
#include "render/combo_context.h"

#include <array>

namespace scrivlet {

namespace {

using Quad = std::array<QnPoint, 4>;

// The four arms of the x, then the centre diamond.
constexpr std::array<Quad, 4> kArms = {{
    {{{23.72, 15.22}, {29.06, 9.89}, {31.79, 12.62}, {26.46, 17.95}}},  // upper right
    {{{18.39, 26.02}, {15.66, 23.28}, {20.99, 17.95}, {23.72, 20.69}}},  // lower left
    {{{31.79, 23.29}, {29.06, 26.02}, {23.72, 20.69}, {26.46, 17.95}}},  // lower right
    {{{15.66, 12.62}, {18.39, 9.89}, {23.72, 15.22}, {20.99, 17.95}}},   // upper left
}};
constexpr Quad kCentre = {{{23.72, 20.69}, {20.99, 17.95}, {23.72, 15.22}, {26.46, 17.95}}};
constexpr QnPoint kRuleStart{44.38, 26.02};
constexpr QnPoint kRuleEnd{450.38, 26.02};

void fillQuad(CGContext& context, const Quad& quad) {
  context.beginPath();
  context.moveToPoint(quad[0].x, quad[0].y);
  for (size_t i = 1; i < quad.size(); ++i) context.addLineToPoint(quad[i].x, quad[i].y);
  context.closePath();
  context.drawPath(kQnPathFill);
}

// The padlock: body and shackle, keyhole, shackle opening; filled together, non-zero.
struct LockCommand {
  enum Kind { move, line, curve, close } kind;
  QnPoint a{}, b{}, c{};  // a line's or move's point is a; a curve's controls a, b and end c
};
constexpr LockCommand kLock[] = {
    {LockCommand::move, {13.49, 8.33}},
    {LockCommand::line, {12.75, 8.33}},
    {LockCommand::line, {12.75, 5.39}},
    {LockCommand::curve, {12.75, 2.42}, {10.32, 0.0}, {7.34, 0.0}},
    {LockCommand::curve, {4.35, 0.0}, {1.93, 2.42}, {1.93, 5.39}},
    {LockCommand::line, {1.93, 8.33}},
    {LockCommand::line, {1.51, 8.33}},
    {LockCommand::curve, {0.68, 8.33}, {0.0, 9.01}, {0.0, 9.84}},
    {LockCommand::line, {0.0, 18.5}},
    {LockCommand::curve, {0.0, 19.33}, {0.68, 20.0}, {1.51, 20.0}},
    {LockCommand::line, {13.49, 20.0}},
    {LockCommand::curve, {14.32, 20.0}, {15.0, 19.33}, {15.0, 18.5}},
    {LockCommand::line, {15.0, 9.84}},
    {LockCommand::curve, {15.0, 9.01}, {14.32, 8.33}, {13.49, 8.33}},
    {LockCommand::close},
    {LockCommand::move, {8.12, 14.13}},
    {LockCommand::line, {8.55, 16.57}},
    {LockCommand::line, {7.5, 16.57}},
    {LockCommand::line, {6.45, 16.57}},
    {LockCommand::line, {6.88, 14.13}},
    {LockCommand::curve, {6.57, 13.93}, {6.37, 13.58}, {6.37, 13.19}},
    {LockCommand::curve, {6.37, 12.57}, {6.87, 12.06}, {7.5, 12.06}},
    {LockCommand::curve, {8.12, 12.06}, {8.63, 12.57}, {8.63, 13.19}},
    {LockCommand::curve, {8.63, 13.58}, {8.41, 13.91}, {8.11, 14.11}},
    {LockCommand::line, {8.12, 14.13}},
    {LockCommand::close},
    {LockCommand::move, {10.46, 8.33}},
    {LockCommand::line, {4.22, 8.33}},
    {LockCommand::line, {4.22, 5.39}},
    {LockCommand::curve, {4.22, 3.67}, {5.62, 2.28}, {7.34, 2.28}},
    {LockCommand::curve, {9.06, 2.28}, {10.46, 3.67}, {10.46, 5.39}},
    {LockCommand::line, {10.46, 8.33}},
    {LockCommand::close},
};

}  // namespace

void QnScrivletStyleKit::drawScrivlet_x(CGContext& context) {
  context.setFillColor(QnColor::black());
  for (const Quad& arm : kArms) fillQuad(context, arm);
  // The centre diamond is filled twice, as two identical paths.
  fillQuad(context, kCentre);
  fillQuad(context, kCentre);
  // The rule is filled (which paints nothing, having no area), then stroked.
  context.beginPath();
  context.moveToPoint(kRuleStart.x, kRuleStart.y);
  context.addLineToPoint(kRuleEnd.x, kRuleEnd.y);
  context.drawPath(kQnPathFill);
  context.beginPath();
  context.moveToPoint(kRuleStart.x, kRuleStart.y);
  context.addLineToPoint(kRuleEnd.x, kRuleEnd.y);
  context.setStrokeColor(QnColor(0, 0, 0, 1));
  context.setLineWidth(2);
  context.setMiterLimit(4);
  context.drawPath(kQnPathStroke);
}

const QnImage& QnScrivletStyleKit::imageOfScrivlet_x() {
  static const QnImage image = [] {
    QnBitmapContext bitmap(kScrivletXSize, QnDevice::screenScale());
    drawScrivlet_x(bitmap.context());
    return bitmap.makeImage();
  }();
  return image;
}

void QnScrivletStyleKit::addQn_lockPath(QnComboContext& context) {
  for (const LockCommand& c : kLock) {
    switch (c.kind) {
      case LockCommand::move: context.moveToPoint(c.a); break;
      case LockCommand::line: context.addLineToPoint(c.a); break;
      case LockCommand::curve: context.addCurveToPointCp1Cp2Point(c.a, c.b, c.c); break;
      case LockCommand::close: context.closePath(); break;
    }
  }
}

void QnScrivletStyleKit::drawQn_lockWithFillColorStartPoint(CGContext& context,
                                                            const QnColor& fillColor,
                                                            QnPoint startPoint) {
  context.saveGState();
  context.translateCTM(startPoint.x, startPoint.y);
  context.beginPath();
  QnComboContext glyph(&context);
  addQn_lockPath(glyph);
  context.setFillColor(fillColor);
  context.drawPath(kQnPathFill);
  context.restoreGState();
}

void QnScrivletStyleKit::setScrivlet_xTargets(std::vector<std::shared_ptr<QnImageView>> targets) {
  targets_ = std::move(targets);
  for (const auto& target : targets_)
    if (target) target->setImage(imageOfScrivlet_x());
}

}  // namespace scrivlet
