// Raster drawing passed on to the wrapped context, or SVG path data and elements recorded as text.
#include "render/combo_context.h"

#include "platform/cg_context.h"
#include "platform/format.h"
#include "platform/narrowing.h"

#include <cmath>

namespace scrivlet {

namespace {
constexpr double kPi = 3.141592653589793;
const char* const kSVGNamespace = "http://www.w3.org/2000/svg";
}  // namespace

QnComboContext::QnComboContext(CGContext* context) : context_(context) {}

void QnComboContext::setScaleCTMXY(float x, float y) {
  if (isSVG_)
    scale_ = {x, y};
  else if (context_)
    context_->scaleCTM(x, y);
}

void QnComboContext::setTranslateCTMXY(float x, float y) {
  if (isSVG_)
    translate_ = {x, y};
  else if (context_)
    context_->translateCTM(x, y);
}

void QnComboContext::clearRect(const QnRect& rect) {
  if (!drawsRaster()) return;
  context_->setBlendMode(kQnBlendModeClear);
  context_->setFillColor(QnColor(0, 0, 0, 0));
  context_->fillRect(rect);
  context_->setBlendMode(kQnBlendModeNormal);
}

void QnComboContext::setStrokeColorWithColor(const QnColor& color) {
  if (isSVG_)
    strokeColorString_ = hexStringFromColor(color);
  else if (context_)
    context_->setStrokeColor(color);
}

void QnComboContext::setFillColorWithColor(const QnColor& color) {
  if (isSVG_)
    fillColorString_ = hexStringFromColor(color);
  else if (context_)
    context_->setFillColor(color);
}

void QnComboContext::setAlpha(double alpha) {
  if (isSVG_)
    opacity_ = alpha;
  else if (context_)
    context_->setAlpha(alpha);
}

void QnComboContext::setLineWidth(double width) {
  if (isSVG_)
    strokeLineWidth_ = narrowToFloat(width);
  else if (context_)
    context_->setLineWidth(width);
}

void QnComboContext::setLineJoin(int join) {
  if (isSVG_)
    strokeLineJoin_ = join;
  else if (context_)
    context_->setLineJoin(join);
}

void QnComboContext::setLineCap(int cap) {
  if (isSVG_)
    strokeLineCap_ = cap;
  else if (context_)
    context_->setLineCap(cap);
}

void QnComboContext::beginPath() {
  if (isSVG_)
    pathString_.emplace();
  else if (context_)
    context_->beginPath();
}

void QnComboContext::moveToPoint(QnPoint point) {
  if (isSVG_) {
    QnPoint p = st(point);
    appendCommand('M', {p.x, p.y});
  } else if (context_) {
    context_->moveToPoint(point.x, point.y);
  }
}

void QnComboContext::addLineToPoint(QnPoint point) {
  if (isSVG_) {
    QnPoint p = st(point);
    appendCommand('L', {p.x, p.y});
  } else if (context_) {
    context_->addLineToPoint(point.x, point.y);
  }
}

void QnComboContext::addCurveToPointCp1Cp2Point(QnPoint cp1, QnPoint cp2, QnPoint point) {
  if (isSVG_) {
    QnPoint a = st(cp1), b = st(cp2), p = st(point);
    appendCommand('C', {a.x, a.y, b.x, b.y, p.x, p.y});
  } else if (context_) {
    context_->addCurveToPoint(cp1.x, cp1.y, cp2.x, cp2.y, point.x, point.y);
  }
}

void QnComboContext::addArcRadiusStartAngleEndAngleClockwise(QnPoint center, double radius,
                                                             double startAngle, double endAngle,
                                                             int clockwise) {
  if (!isSVG_) {
    if (context_) context_->addArc(center.x, center.y, radius, startAngle, endAngle, clockwise);
    return;
  }
  QnPoint c = st(center);
  double r = scale_.x * radius;  // the x factor serves both radii
  float span = narrowToFloat(endAngle - startAngle);
  int large = ((std::fabs(span) > kPi) != (clockwise == 0)) ? 1 : 0;
  int sweep = clockwise == 0 ? 1 : 0;
  // The end is taken from the start angle: the opposite point for the half circles the renderer
  // draws counter-clockwise, the start point itself otherwise.
  float dx = narrowToFloat(r * std::cos(startAngle));
  float dy = narrowToFloat(r * std::sin(startAngle));
  QnPoint end = clockwise == 0 ? QnPoint{c.x - dx, c.y - dy} : QnPoint{c.x + dx, c.y + dy};
  // "A %f %f 0 %d %d %f %f", without printf's cost.
  noteNumbers({r, end.x, end.y});
  if (!pathString_) return;
  std::string& path = *pathString_;
  path += "A ";
  appendF(path, r);
  path += ' ';
  appendF(path, r);
  path += large ? " 0 1 " : " 0 0 ";
  path += sweep ? "1 " : "0 ";
  appendF(path, end.x);
  path += ' ';
  appendF(path, end.y);
}

void QnComboContext::closePath() {
  if (isSVG_) {
    if (pathString_) *pathString_ += 'Z';  // a command before any beginPath has no path to go to and is lost
  } else if (context_) {
    context_->closePath();
  }
}

void QnComboContext::fillPath() { drawPath(kQnPathFill); }

void QnComboContext::strokePath() { drawPath(kQnPathStroke); }

void QnComboContext::drawPath(int mode) {
  if (!isSVG_) {
    if (context_) context_->drawPath(mode);
    return;
  }
  std::string attributes;
  if (mode == kQnPathFill || mode == kQnPathFillStroke)
    attributes += "fill=\"" + fillColorString_ + "\" ";
  if (mode == kQnPathStroke || mode == kQnPathFillStroke) {
    const char* cap = strokeLineCap_ == kQnLineCapSquare  ? "square"
                      : strokeLineCap_ == kQnLineCapRound ? "round"
                                                          : "butt";
    const char* fillSuffix = mode == kQnPathStroke ? "fill = \"none\"" : "";
    noteNumbers({scale_.x * strokeLineWidth_});
    attributes += cformat("stroke=\"%s\" stroke-width=\"%f\" stroke-linecap=\"%s\" %s ",
                          strokeColorString_.c_str(), scale_.x * strokeLineWidth_, cap, fillSuffix);
  }
  // A path never begun is written as its missing value, "(null)".
  const std::string& data = pathString_ ? *pathString_ : std::string("(null)");
  noteNumbers({opacity_});
  std::string element;
  element.reserve(data.size() + attributes.size() + 40);
  element += "<path d=\"";
  element += data;
  element += "\" ";
  element += attributes;
  element += " opacity=\"";
  appendF(element, opacity_);
  element += "\" />";
  pathArray_.push_back(std::move(element));
}

void QnComboContext::showTextAtPointTextSize(QnPoint point, const std::string& text, double size) {
  QnPoint p = st(point);
  noteNumbers({p.x, p.y, scale_.x * size, opacity_});
  // The text goes in as it is, markup characters included.
  pathArray_.push_back(
      cformat("<text x=\"%f\" y=\"%f\" font-family=\"Helvetica,sans-serif\" font-weight=\"bold\" "
              "dominant-baseline=\"hanging\" font-size=\"%f\"  fill=\"%s\" opacity=\"%f\">",
              p.x, p.y, scale_.x * size, fillColorString_.c_str(), opacity_) +
      text + "</text>");
}

QnPoint QnComboContext::st(QnPoint point) const {
  return {(point.x + translate_.x) * scale_.x, (point.y + translate_.y) * scale_.y};
}

std::string QnComboContext::hexStringFromColor(const QnColor& color) {
  QnColor::RGBA c = rgbaFromColor(color);
  auto channel = [](double v) { return std::lround(narrowToFloat(v * 255.0)); };
  return cformat("#%02lX%02lX%02lX", static_cast<unsigned long>(channel(c.r)),
                 static_cast<unsigned long>(channel(c.g)), static_cast<unsigned long>(channel(c.b)));
}

std::string QnComboContext::serializeSVG(QnSize size) const {
  double width = size.width * scale_.x;
  double height = size.height * scale_.y;
  std::string svg = cformat(
      "<svg style=\"border: 1px solid black\" width=\"%f\" height=\"%f\" viewBox=\"0 0 %f %f\" "
      "xmlns=\"%s\">",
      static_cast<double>(narrowToFloat(width)), static_cast<double>(narrowToFloat(height)),
      width, height, kSVGNamespace);
  for (const std::string& element : pathArray_) svg += element;
  svg += "</svg>";
  return svg;
}

bool QnComboContext::writesOnlyFiniteNumbers(QnSize size) const {
  // The document's size is written narrowed to single precision too.
  return !wroteNonFiniteNumber_ && std::isfinite(static_cast<float>(size.width * scale_.x)) &&
         std::isfinite(static_cast<float>(size.height * scale_.y));
}

void QnComboContext::noteNumbers(std::initializer_list<double> values) {
  for (double v : values) wroteNonFiniteNumber_ = wroteNonFiniteNumber_ || !std::isfinite(v);
}

void QnComboContext::appendCommand(char command, std::initializer_list<double> values) {
  noteNumbers(values);
  // A command before any beginPath has no path to go to and is lost.
  if (!pathString_) return;
  // "M %f %f ", "C %f %f %f %f %f %f " and so on, without printf's cost.
  std::string& path = *pathString_;
  path += command;
  for (double v : values) {
    path += ' ';
    appendF(path, v);
  }
  path += ' ';
}

}  // namespace scrivlet
