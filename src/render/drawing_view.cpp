// The ink view's cache, notifications and the stroke drawing operation.
#include "render/drawing_view.h"

#include <scrivlet/device.h>
#include <scrivlet/notification_center.h>

#include "platform/image.h"
#include "platform/main_thread.h"
#include "platform/narrowing.h"
#include "render/combo_context.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace scrivlet {

namespace {

constexpr int kDrawingViewTag = 99;
constexpr double kStrokeStartLineWidth = 2.0;
constexpr double kDirtyMargin = 10.0;

QnPoint midpoint(QnPoint a, QnPoint b) { return {(a.x + b.x) * 0.5, (a.y + b.y) * 0.5}; }

bool sameBits(double a, double b) { return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b); }

// Whether the first `count` points of `drawn` would ink exactly as the stroke does: the drawing reads a
// point's location, velocity and diameter alone. Strokes only ever grow, so the points drawn stay as
// they were.
bool inksAlike(const QnStroke& drawn, size_t count, const QnStroke& stroke) {
  if (stroke.size() != count || drawn.size() < count) return false;
  if (&drawn == &stroke) return true;
  for (size_t i = 0; i < count; ++i) {
    const QnSignaturePoint &a = drawn[i], &b = stroke[i];
    if (!sameBits(a.location.x, b.location.x) || !sameBits(a.location.y, b.location.y) ||
        !sameBits(a.velocity.x, b.velocity.x) || !sameBits(a.velocity.y, b.velocity.y) ||
        std::bit_cast<uint32_t>(a.diameter) != std::bit_cast<uint32_t>(b.diameter))
      return false;
  }
  return true;
}

}  // namespace

struct QnDrawingView::KeptInk {
  KeptInk(int pixelWidth, int pixelHeight, QnSize size, double scale, const QnColor& color, float corner, bool debug)
      : bitmap(size, scale), combo(&bitmap.context()), width(pixelWidth), height(pixelHeight), scale(scale),
        color(color), cornerThreshold(corner), showDebug(debug) {}
  QnBitmapContext bitmap;
  QnComboContext combo;
  // What the pixels depend on besides the strokes.
  int width, height;
  double scale;
  QnColor color;
  float cornerThreshold;
  bool showDebug;
  // The strokes drawn, each with its length then.
  std::vector<std::pair<QnStrokeRef, size_t>> strokes;
};

QnDrawingView::QnDrawingView(QnRect frame) : QnDrawingView(frame, QnInk{}) {
  observesNotifications_ = true;
  QnNotificationCenter::defaultCenter().addObserver(
      this, "colorChanged", [this](const QnNotification& n) { colorChanged(n); });
  initContext(frame.size);
}

QnDrawingView::QnDrawingView(QnRect frame, const QnInk& ink) : QnView(frame) {
  isCursor_ = false;
  alwaysDraw_ = false;
  strokeSmoothingAmount_ = 3.5f;
  constantDiameterMaximumDistance_ = 1.0f;
  smoothingAccelerationLimit_ = 100000000.0f;
  cornerThreshold_ = ink.cornerThreshold;
  showDebug_ = ink.showDebug;
  setTag(kDrawingViewTag);
  drawSmoothCurve_ = true;
  useAMSmoothing_ = true;
  useCalligraphicBrush_ = false;
  calligraphicBrushRatio_ = 5.0f;
  calligraphicBrushAngle_ = 0.0f;
  setMyStrokes(std::make_shared<QnStrokeList>());
  setStrokeColor(ink.color);
}

QnDrawingView::~QnDrawingView() {
  if (observesNotifications_) QnNotificationCenter::defaultCenter().removeObserver(this);
}

void QnDrawingView::drawStrokesWithInk(QnComboContext* context, const QnStrokeList& strokes, const QnInk& ink) {
  if (!context) return;
  QnDrawingView inkOnly(QnRectZero, ink);
  for (const QnStrokeRef& stroke : strokes)
    if (stroke && !stroke->empty()) inkOnly.drawStroke(context, *stroke, ink.color, true, true);
}

void QnDrawingView::redrawCacheThroughKeptInk(const QnStrokeList& strokes) {
  QnColor color = strokeColor();
  double scale = cacheContext_->scale();
  int width = cacheContext_->pixelWidth(), height = cacheContext_->pixelHeight();
  bool usable = keptInk_ && keptInk_->width == width && keptInk_->height == height && keptInk_->scale == scale &&
                keptInk_->color == color && keptInk_->cornerThreshold == cornerThreshold_ &&
                keptInk_->showDebug == showDebug_;
  size_t alike = 0;
  if (usable) {
    auto& kept = keptInk_->strokes;
    for (; alike < kept.size() && alike < strokes.size(); ++alike) {
      const QnStrokeRef& stroke = strokes[alike];
      if (!kept[alike].first || !stroke || !inksAlike(*kept[alike].first, kept[alike].second, *stroke)) break;
      kept[alike].first = stroke;  // the same ink: next time the object itself answers
    }
    usable = alike == kept.size();
  }
  if (!usable) {
    keptInk_ = std::make_unique<KeptInk>(width, height, cacheSize_, scale, color, cornerThreshold_, showDebug_);
    alike = 0;
  }
  for (size_t s = alike; s < strokes.size(); ++s) {
    const QnStrokeRef& stroke = strokes[s];
    if (stroke && !stroke->empty()) drawStroke(&keptInk_->combo, *stroke, color, true, true);
    keptInk_->strokes.emplace_back(stroke, stroke ? stroke->size() : 0);
  }
  cacheContext_->copyPixelsFrom(keptInk_->bitmap);
}

void QnDrawingView::initContext(QnSize size) {
  cacheSize_ = size;
  cacheComboContext_.reset();
  cacheContext_ = std::make_unique<QnBitmapContext>(size, QnDevice::screenScale());
  cacheComboContext_ = std::make_unique<QnComboContext>(&cacheContext_->context());
}

void QnDrawingView::updateLayout() {
  QnSize size = bounds().size;
  if (size.width == 0 && size.height == 0) return;
  initContext(size);
  setNeedsDisplay();
}

void QnDrawingView::drawRect(CGContext& context, const QnRect&) {
  if (cacheContext_) context.drawImage(cacheContext_->sharedImage(), bounds());
}

void QnDrawingView::colorChanged(const QnNotification& notification) {
  auto found = notification.userInfo.find("color");
  if (found != notification.userInfo.end())
    if (const QnColor* color = std::any_cast<QnColor>(&found->second)) setStrokeColor(*color);
  setNeedsDisplay();
}

void QnDrawingView::strokeWidthChanged(const QnNotification& notification) {
  auto found = notification.userInfo.find("strokeWidth");
  if (found != notification.userInfo.end()) {
    if (const float* width = std::any_cast<float>(&found->second))
      strokeWidth_ = *width;
    else if (const double* wide = std::any_cast<double>(&found->second))
      strokeWidth_ = narrowToFloat(*wide);
  }
  setNeedsDisplay();
}

void QnDrawingView::drawToCacheWithFinalSegmentFullRedraw(bool finalSegment, bool fullRedraw) {
  drawToContextWithFinalSegmentFullRedraw(cacheComboContext_.get(), finalSegment, fullRedraw);
}

void QnDrawingView::drawToContextWithFinalSegmentFullRedraw(QnComboContext* context,
                                                            bool finalSegment, bool fullRedraw) {
  drawStrokesToContextWithFinalSegmentFullRedraw(myStrokes(), context, finalSegment, fullRedraw);
}

void QnDrawingView::drawStrokesToContextWithFinalSegmentFullRedraw(const QnStrokeListRef& strokes,
                                                                   QnComboContext* context,
                                                                   bool finalSegment,
                                                                   bool fullRedraw) {
  if (!context) return;
  bool onMainThread = isMainThread();
  // The cache's own full redraw, when the cache covers the bounds as a clear of the bounds would.
  if (fullRedraw && finalSegment && onMainThread && context == cacheComboContext_.get() && strokes &&
      bounds().origin == QnPoint{} && bounds().size == cacheSize_) {
    redrawCacheThroughKeptInk(*strokes);
    requestRedisplay(strokes.get(), true);
    return;
  }
  if (fullRedraw && onMainThread) context->clearRect(bounds());
  QnColor color = strokeColor();
  if (strokes && !strokes->empty()) {
    size_t first = fullRedraw ? 0 : strokes->size() - 1;
    for (size_t s = first; s < strokes->size(); ++s)
      if (const QnStrokeRef& stroke = (*strokes)[s]; stroke && !stroke->empty())
        drawStroke(context, *stroke, color, finalSegment, fullRedraw);
  }
  if (onMainThread) requestRedisplay(strokes.get(), fullRedraw);
}

void QnDrawingView::drawStroke(QnComboContext* context, const QnStroke& stroke,
                               const QnColor& color, bool finalSegment, bool fullRedraw) {
  context->setStrokeColorWithColor(color);
  context->setFillColorWithColor(color);
  context->setLineWidth(kStrokeStartLineWidth);
  context->setLineJoin(kQnLineJoinRound);
  context->setLineCap(kQnLineCapRound);
  context->moveToPoint(stroke[0].location);

  size_t n = stroke.size();
  // An incremental call draws only the segments that end at the two newest points.
  size_t start = (!fullRedraw && n > 2) ? n - 2 : 0;
  for (size_t i = start; i < n; ++i) {
    if (i == 0) {
      // A round dot of the first point's diameter.
      context->beginPath();
      context->moveToPoint(stroke[0].location);
      context->setLineWidth(stroke[0].diameter);
      context->addLineToPoint(stroke[0].location);
      context->strokePath();
    } else if (i == 1) {
      const QnSignaturePoint& p0 = stroke[0];
      const QnSignaturePoint& p1 = stroke[1];
      QnPoint m = midpoint(p0.location, p1.location);
      float dm = (p0.diameter + p1.diameter) * 0.5f;
      if (n == 2 && finalSegment) {
        context->beginPath();
        context->moveToPoint(p0.location);
        context->addLineToPoint(m);
        context->setLineWidth(dm);
        context->strokePath();
      } else {
        QnPoint control = midpoint(p0.location, m);
        drawSegmentInContextWithOriginDestinationStartingDiameterEndingDiameterStartingControlPointEndingControlPoint(
            context, p0.location, m, p0.diameter, dm, control, control);
      }
    } else {
      const QnSignaturePoint& a = stroke[i - 2];
      const QnSignaturePoint& b = stroke[i - 1];
      const QnSignaturePoint& c = stroke[i];
      // b guides the curve, which runs between the midpoints on either side of it.
      QnPoint origin = midpoint(a.location, b.location);
      QnPoint destination = midpoint(b.location, c.location);
      float startDiameter = (a.diameter + b.diameter) * 0.5f;
      float endDiameter = (b.diameter + c.diameter) * 0.5f;
      QnPoint startControl = midpoint(b.location, origin);
      QnPoint endControl = midpoint(b.location, destination);
      if (angleBetweenVector1Vector2IsGreaterThan(b.velocity, c.velocity, cornerThreshold_)) {
        drawSegmentInContextWithOriginDestinationDiameterStartingControlPointEndingControlPoint(
            context, origin, destination, std::min(startDiameter, endDiameter), startControl,
            endControl);
      } else {
        drawSegmentInContextWithOriginDestinationStartingDiameterEndingDiameterStartingControlPointEndingControlPoint(
            context, origin, destination, startDiameter, endDiameter, startControl, endControl);
      }
      if (i == n - 1 && (finalSegment || fullRedraw)) {
        // The closing piece carries the ink on to the last point.
        drawSegmentInContextWithOriginDestinationDiameterStartingControlPointEndingControlPoint(
            context, destination, c.location, endDiameter, destination, c.location);
      }
      if (showDebug_) drawDebugMarks(context, origin, destination, c.location, color);
    }
  }
}

void QnDrawingView::drawDebugMarks(QnComboContext* context, QnPoint origin, QnPoint destination,
                                   QnPoint point, const QnColor& color) {
  // Drawn on the raster target directly, so they never reach an SVG document.
  CGContext* cg = context->context();
  if (!cg) return;
  auto disc = [cg](QnPoint centre, double radius, const QnColor& fill) {
    cg->setFillColor(fill);
    cg->beginPath();
    cg->addArc(centre.x, centre.y, radius, 0, 6.2832, 0);
    cg->drawPath(kQnPathFill);
  };
  disc(origin, 4.0, QnColor(0.3, 0.6, 1.0, 0.4));
  disc(destination, 4.0, QnColor(0.4, 0.1, 1.0, 0.4));
  disc(point, 2.0, QnColor(0.2, 0.2, 0.2, 0.8));
  cg->setFillColor(color);
}

void QnDrawingView::requestRedisplay(const QnStrokeList* strokes, bool fullRedraw) {
  if (fullRedraw) {
    setNeedsDisplay();
    return;
  }
  if (!strokes || strokes->empty() || !strokes->back() || strokes->back()->empty()) return;
  const QnStroke& last = *strokes->back();
  size_t n = last.size();
  const QnSignaturePoint& l = last[n - 1];
  const QnSignaturePoint& k = last[n < 3 ? 0 : n - 3];
  QnRect dirty = makeRect(narrowToFloat(std::min(l.location.x, k.location.x)),
                          narrowToFloat(std::min(l.location.y, k.location.y)),
                          narrowToFloat(std::fabs(l.location.x - k.location.x)),
                          narrowToFloat(std::fabs(l.location.y - k.location.y)));
  double grow = std::max(l.diameter, k.diameter) * 0.5 + kDirtyMargin;
  setNeedsDisplayInRect(rectInset(dirty, -grow, -grow));
}

}  // namespace scrivlet
