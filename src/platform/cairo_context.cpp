// CoreGraphics drawing on cairo: separate fill and stroke colours, a global alpha, the clear blend
// mode, and a zero-blur shadow drawn as an offset copy beneath each shape.
#include "platform/cairo_context.h"

#include "platform/fonts.h"
#include "platform/image.h"
#include "platform/pdf_content_stream.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>

namespace scrivlet {

namespace {
// The tallest letters drawn, in device units (pixels, or PDF points): far past any page or bitmap.
constexpr double kLargestTextSize = 1e5;
// A shape covering less than this, in square device units, covers nothing at any zoom a reader offers.
constexpr double kLeastArea = 1e-6;

// Whether the current path, in device space, encloses any area, each subpath counted by the area of
// its polygon of points and control points: a path that runs out and back along the same curve (the
// outline of a pen of width 0) has none, and no other shape is that thin.
bool enclosesArea(cairo_t* cr) {
  cairo_matrix_t user;
  cairo_get_matrix(cr, &user);
  cairo_identity_matrix(cr);
  cairo_path_t* path = cairo_copy_path(cr);
  cairo_set_matrix(cr, &user);
  double total = 0, twiceArea = 0;
  cairo_path_data_t start{}, last{};
  auto lineTo = [&](const cairo_path_data_t& to) {
    twiceArea += last.point.x * to.point.y - to.point.x * last.point.y;
    last = to;
  };
  auto closeSubpath = [&] {
    lineTo(start);
    total += std::fabs(twiceArea) / 2, twiceArea = 0;
  };
  for (int i = 0; path->status == CAIRO_STATUS_SUCCESS && i < path->num_data; i += path->data[i].header.length) {
    const cairo_path_data_t* data = &path->data[i];
    switch (data->header.type) {
      case CAIRO_PATH_MOVE_TO: closeSubpath(), start = last = data[1]; break;
      case CAIRO_PATH_LINE_TO: lineTo(data[1]); break;
      case CAIRO_PATH_CURVE_TO: lineTo(data[1]), lineTo(data[2]), lineTo(data[3]); break;
      case CAIRO_PATH_CLOSE_PATH: break;
    }
  }
  closeSubpath();
  cairo_path_destroy(path);
  return total >= kLeastArea;
}
}  // namespace

CairoContext::CairoContext(cairo_t* cr) : cr_(cairo_reference(cr)) {
  cairo_matrix_t m;
  cairo_get_matrix(cr_, &m);
  baseMatrix_[0] = m.xx, baseMatrix_[1] = m.yx, baseMatrix_[2] = m.xy;
  baseMatrix_[3] = m.yy, baseMatrix_[4] = m.x0, baseMatrix_[5] = m.y0;
}

CairoContext::~CairoContext() { cairo_destroy(cr_); }

void CairoContext::scaleCTM(double sx, double sy) {
  // cairo would stop drawing for good on a transform it cannot invert; such a scale is ignored.
  cairo_matrix_t scaled;
  cairo_get_matrix(cr_, &scaled);
  cairo_matrix_scale(&scaled, sx, sy);
  double determinant = scaled.xx * scaled.yy - scaled.yx * scaled.xy;
  if (!std::isfinite(sx) || !std::isfinite(sy) || !std::isfinite(determinant) || determinant == 0)
    return;
  cairo_set_matrix(cr_, &scaled);
}

void CairoContext::translateCTM(double tx, double ty) {
  if (!std::isfinite(tx) || !std::isfinite(ty)) return;
  cairo_translate(cr_, tx, ty);
}

void CairoContext::saveGState() {
  cairo_save(cr_);
  saved_.push_back(state_);
}

void CairoContext::restoreGState() {
  if (saved_.empty()) return;
  cairo_restore(cr_);
  state_ = saved_.back();
  saved_.pop_back();
}

void CairoContext::setBlendMode(int mode) { state_.blendMode = mode; }
void CairoContext::setFillColor(const QnColor& color) { state_.fill = color; }
void CairoContext::setStrokeColor(const QnColor& color) { state_.stroke = color; }
void CairoContext::setAlpha(double alpha) { state_.alpha = alpha; }

void CairoContext::setLineWidth(double width) {
  if (std::isfinite(width) && width >= 0) cairo_set_line_width(cr_, width);
}

void CairoContext::setLineJoin(int join) {
  cairo_set_line_join(cr_, join == kQnLineJoinRound   ? CAIRO_LINE_JOIN_ROUND
                           : join == kQnLineJoinBevel ? CAIRO_LINE_JOIN_BEVEL
                                                      : CAIRO_LINE_JOIN_MITER);
}

void CairoContext::setLineCap(int cap) {
  cairo_set_line_cap(cr_, cap == kQnLineCapRound    ? CAIRO_LINE_CAP_ROUND
                          : cap == kQnLineCapSquare ? CAIRO_LINE_CAP_SQUARE
                                                    : CAIRO_LINE_CAP_BUTT);
}

void CairoContext::setMiterLimit(double limit) {
  if (std::isfinite(limit)) cairo_set_miter_limit(cr_, limit);
}

void CairoContext::setShadow(QnSize offset, double, const QnColor& color) {
  state_.shadowOffset = offset;
  state_.shadowColor = color;
}

void CairoContext::setTextDrawingMode(int mode) { state_.textMode = mode; }

void CairoContext::beginPath() { cairo_new_path(cr_); }

// cairo puts itself in a permanent error state on non-finite coordinates; such a point is dropped.
static bool finite(double a, double b) { return std::isfinite(a) && std::isfinite(b); }

void CairoContext::moveToPoint(double x, double y) {
  if (finite(x, y)) cairo_move_to(cr_, x, y);
}

void CairoContext::addLineToPoint(double x, double y) {
  if (finite(x, y)) cairo_line_to(cr_, x, y);
}

void CairoContext::addCurveToPoint(double cp1x, double cp1y, double cp2x, double cp2y, double x,
                                   double y) {
  if (finite(cp1x, cp1y) && finite(cp2x, cp2y) && finite(x, y))
    cairo_curve_to(cr_, cp1x, cp1y, cp2x, cp2y, x, y);
}

void CairoContext::addArc(double x, double y, double radius, double startAngle, double endAngle,
                          int clockwise) {
  if (!finite(x, y) || !finite(startAngle, endAngle) || !std::isfinite(radius) || radius < 0)
    return;
  radius = withinPixelLimit(radius);
  // In top-left, y-down space cairo_arc runs the way CoreGraphics draws with clockwise 0.
  if (clockwise)
    cairo_arc_negative(cr_, x, y, radius, startAngle, endAngle);
  else
    cairo_arc(cr_, x, y, radius, startAngle, endAngle);
}

void CairoContext::closePath() { cairo_close_path(cr_); }

void CairoContext::drawPath(int mode) {
  switch (mode) {
    case kQnPathFill: paint(true, false, false); break;
    case kQnPathEOFill: paint(true, true, false); break;
    case kQnPathStroke: paint(false, false, true); break;
    case kQnPathFillStroke: paint(true, false, true); break;
    case kQnPathEOFillStroke: paint(true, true, true); break;
    default: break;
  }
  cairo_new_path(cr_);
}

void CairoContext::fillRect(const QnRect& rect) {
  cairo_path_t* kept = cairo_copy_path(cr_);
  cairo_new_path(cr_);
  cairo_rectangle(cr_, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  paint(true, false, false);
  cairo_new_path(cr_);
  cairo_append_path(cr_, kept);
  cairo_path_destroy(kept);
}

void CairoContext::drawImage(const QnImage& image, const QnRect& rect) {
  QnSize size = image.size();
  if (image.isNull() || size.width <= 0 || size.height <= 0 || !(rect.size.width > 0) ||
      !(rect.size.height > 0) || !finite(rect.origin.x, rect.origin.y) ||
      !finite(rect.size.width, rect.size.height))
    return;
  shapes_ = nullptr;
  cairo_save(cr_);
  cairo_translate(cr_, rect.origin.x, rect.origin.y);
  cairo_scale(cr_, rect.size.width / image.pixelWidth(), rect.size.height / image.pixelHeight());
  cairo_set_source_surface(cr_, image.surface(), 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cr_), CAIRO_FILTER_GOOD);
  cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
  cairo_paint_with_alpha(cr_, state_.alpha);
  cairo_restore(cr_);
}

void CairoContext::showText(const std::string& text, QnPoint topLeft, double fontSize,
                            const QnColor& color) {
  if (state_.textMode == kQnTextInvisible || text.empty() || !finite(topLeft.x, topLeft.y) ||
      !std::isfinite(fontSize) || fontSize <= 0)
    return;
  // Letters taller than any bitmap or page could hold are not drawn: cairo cannot make a font that
  // size, and loses the memory it allocated trying.
  double dx = fontSize, dy = 0, ex = 0, ey = fontSize;
  cairo_user_to_device_distance(cr_, &dx, &dy);
  cairo_user_to_device_distance(cr_, &ex, &ey);
  if (!(std::hypot(dx, dy) <= kLargestTextSize && std::hypot(ex, ey) <= kLargestTextSize)) return;
  shapes_ = nullptr;
  cairo_path_t* kept = cairo_copy_path(cr_);
  cairo_new_path(cr_);
  cairo_set_font_face(cr_, boldFontFace());
  cairo_set_font_size(cr_, fontSize);
  cairo_font_extents_t extents;
  cairo_font_extents(cr_, &extents);
  QnPoint baseline{topLeft.x, topLeft.y + extents.ascent};
  if (state_.textMode == kQnTextFill) {
    // Shown as text, so that a PDF keeps it as text.
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
    if (hasShadow()) {
      QnSize offset = shadowOffsetInUserSpace();
      setSource(state_.shadowColor);
      cairo_move_to(cr_, baseline.x + offset.width, baseline.y + offset.height);
      cairo_show_text(cr_, text.c_str());
    }
    setSource(color);
    cairo_move_to(cr_, baseline.x, baseline.y);
    cairo_show_text(cr_, text.c_str());
  } else {
    cairo_move_to(cr_, baseline.x, baseline.y);
    cairo_text_path(cr_, text.c_str());
    QnColor savedFill = state_.fill, savedStroke = state_.stroke;
    state_.fill = state_.stroke = color;
    paint(state_.textMode == kQnTextFillStroke, false, true);
    state_.fill = savedFill;
    state_.stroke = savedStroke;
  }
  cairo_new_path(cr_);
  cairo_append_path(cr_, kept);
  cairo_path_destroy(kept);
}

QnColor::RGBA CairoContext::withAlpha(const QnColor& color) const {
  QnColor::RGBA c = color.rgba();
  c.a *= state_.alpha;
  return c;
}

void CairoContext::setSource(const QnColor& color) {
  QnColor::RGBA c = withAlpha(color);
  cairo_set_source_rgba(cr_, c.r, c.g, c.b, c.a);
}

bool CairoContext::hasShadow() const {
  return state_.shadowColor.rgba().a != 0 &&
         (state_.shadowOffset.width != 0 || state_.shadowOffset.height != 0);
}

bool CairoContext::fillsOpaqueColorsAsIs() const {
  return state_.alpha == 1 && state_.blendMode == kQnBlendModeNormal && !hasShadow() && !shapes_;
}

void CairoContext::paint(bool fill, bool evenOdd, bool stroke) {
  bool clearing = state_.blendMode == kQnBlendModeClear;
  // A document page has nothing beneath its drawing to clear, and cairo would turn a clearing
  // operation into a raster fallback of the whole area.
  if (clearing && cairo_surface_get_type(cairo_get_target(cr_)) != CAIRO_SURFACE_TYPE_IMAGE) return;
  // A pen of width 0 inks no pixel, and neither does the outline it leaves (out along the stroke and
  // back); a document, which paints every pixel a shape touches, would draw either as a hairline.
  double width = cairo_get_line_width(cr_);
  stroke = stroke && width > 0;
  fill = fill && (cairo_surface_get_type(cairo_get_target(cr_)) == CAIRO_SURFACE_TYPE_IMAGE || enclosesArea(cr_));
  if (!fill && !stroke) return;
  if (stroke) cairo_set_line_width(cr_, withinPixelLimit(width));
  if (shapes_ && hasShadow()) shapes_ = nullptr;
  if (shapes_) {
    writeShapes(fill, evenOdd, stroke);
    cairo_set_line_width(cr_, width);
    return;
  }
  cairo_set_operator(cr_, clearing ? CAIRO_OPERATOR_CLEAR : CAIRO_OPERATOR_OVER);
  if (hasShadow() && !clearing) paintShadow(fill, evenOdd, stroke);
  if (fill) {
    setSource(state_.fill);
    cairo_set_fill_rule(cr_, evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    cairo_fill_preserve(cr_);
  }
  if (stroke) {
    setSource(state_.stroke);
    cairo_stroke_preserve(cr_);
  }
  cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
  cairo_set_line_width(cr_, width);
}

double CairoContext::withinPixelLimit(double length) const {
  // Cairo cuts arcs and round pens into more pieces the more pixels they span: a pen a million
  // million points wide (a stylus reporting an absurd force) takes seconds to minutes a dot. Beyond
  // cairo's coordinate range (2^23 pixels) nothing is placed faithfully anyway.
  constexpr double kLargestInPixels = 1 << 22;
  double ux = length, uy = 0, vx = 0, vy = length;
  cairo_user_to_device_distance(cr_, &ux, &uy);
  cairo_user_to_device_distance(cr_, &vx, &vy);
  double pixels = std::max(std::hypot(ux, uy), std::hypot(vx, vy));
  return pixels > kLargestInPixels ? length * (kLargestInPixels / pixels) : length;
}

void CairoContext::writeShapes(bool fill, bool evenOdd, bool stroke) {
  cairo_matrix_t user;
  cairo_get_matrix(cr_, &user);
  if (fill) {
    // The path as cairo keeps it, in device space, which is how cairo writes a fill.
    cairo_identity_matrix(cr_);
    cairo_path_t* path = cairo_copy_path(cr_);
    cairo_set_matrix(cr_, &user);
    if (path->status == CAIRO_STATUS_SUCCESS) shapes_->fill(*path, withAlpha(state_.fill), evenOdd);
    cairo_path_destroy(path);
  }
  if (stroke) {
    cairo_path_t* path = cairo_copy_path(cr_);
    // cairo numbers caps and joins as PDF does.
    PdfContentStream::LineStyle style{cairo_get_line_width(cr_), cairo_get_miter_limit(cr_),
                                      int(cairo_get_line_cap(cr_)), int(cairo_get_line_join(cr_))};
    if (path->status == CAIRO_STATUS_SUCCESS) shapes_->stroke(*path, user, style, withAlpha(state_.stroke));
    cairo_path_destroy(path);
  }
}

QnSize CairoContext::shadowOffsetInDeviceSpace() const {
  // The offset is given in the context's base space, so it does not grow with a later scale.
  cairo_matrix_t base;
  cairo_matrix_init(&base, baseMatrix_[0], baseMatrix_[1], baseMatrix_[2], baseMatrix_[3],
                    baseMatrix_[4], baseMatrix_[5]);
  double dx = state_.shadowOffset.width, dy = state_.shadowOffset.height;
  cairo_matrix_transform_distance(&base, &dx, &dy);
  return {dx, dy};
}

QnSize CairoContext::shadowOffsetInUserSpace() const {
  QnSize offset = shadowOffsetInDeviceSpace();
  cairo_device_to_user_distance(cr_, &offset.width, &offset.height);
  return offset;
}

void CairoContext::paintShadow(bool fill, bool evenOdd, bool stroke) {
  QnSize offset = shadowOffsetInDeviceSpace();
  double dx = offset.width, dy = offset.height;
  cairo_path_t* path = cairo_copy_path(cr_);
  cairo_matrix_t user, shifted, translation;
  cairo_get_matrix(cr_, &user);
  cairo_matrix_init_translate(&translation, dx, dy);
  cairo_matrix_multiply(&shifted, &user, &translation);
  cairo_save(cr_);
  cairo_set_matrix(cr_, &shifted);
  cairo_new_path(cr_);
  cairo_append_path(cr_, path);
  setSource(state_.shadowColor);
  if (fill) {
    cairo_set_fill_rule(cr_, evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    cairo_fill_preserve(cr_);
  }
  if (stroke) cairo_stroke_preserve(cr_);
  cairo_restore(cr_);
  cairo_new_path(cr_);
  cairo_append_path(cr_, path);
  cairo_path_destroy(path);
}

}  // namespace scrivlet
