// The ink view's cache, notifications and the stroke drawing operation.
#include "render/drawing_view.h"

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/notification_center.h>

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

}  // namespace

QnDrawingView::QnDrawingView(QnRect frame) : QnDrawingView(frame, QnInk{}) {
  observesNotifications_ = true;
  observeColorChanges();
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
  if (observesNotifications_) context().notificationCenter().removeObserver(this);
}

QnContext& QnDrawingView::context() const { return context_ ? *context_ : QnContext::defaultContext(); }

void QnDrawingView::observeColorChanges() {
  context().notificationCenter().addObserver(this, "colorChanged", [this](const QnNotification& n) { colorChanged(n); });
}

void QnDrawingView::setContext(std::shared_ptr<QnContext> context) {
  // The kept ink's work runs on the pool of the context it was begun in.
  settleKeptInk();
  keptInkWork_.reset();
  if (observesNotifications_) this->context().notificationCenter().removeObserver(this);
  context_ = std::move(context);
  if (observesNotifications_) observeColorChanges();
  setNeedsDisplay();  // the cache follows the context's screen scale at the next drawing
}

void QnDrawingView::drawStrokesWithInk(QnComboContext* context, const QnStrokeList& strokes, const QnInk& ink) {
  if (!context) return;
  QnDrawingView inkOnly(QnRectZero, ink);
  for (const QnStrokeRef& stroke : strokes)
    if (stroke && !stroke->empty()) inkOnly.drawStroke(context, *stroke, ink.color, true, true);
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
  drawStrokesToCacheWithFinalSegmentFullRedraw(myStrokes(), finalSegment, fullRedraw);
}

void QnDrawingView::drawStrokesToCacheWithFinalSegmentFullRedraw(const QnStrokeListRef& strokes,
                                                                 bool finalSegment, bool fullRedraw) {
  cache();
  drawStrokesToContextWithFinalSegmentFullRedraw(strokes, cacheComboContext_.get(), finalSegment, fullRedraw);
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
  bool toCache = context == cacheComboContext_.get();
  // The cache's own full redraw, when the cache covers the bounds as a clear of the bounds would.
  if (toCache && fullRedraw && finalSegment && onMainThread && strokes && bounds().origin == QnPoint{} &&
      bounds().size == cacheSize_) {
    redrawCacheThroughKeptInk(*strokes);
    requestRedisplay(strokes.get(), true);
    return;
  }
  if (toCache) settleCache(fullRedraw || !onMainThread);
  if (fullRedraw && onMainThread) context->clearRect(bounds());
  QnColor color = strokeColor();
  if (strokes && !strokes->empty()) {
    size_t first = fullRedraw ? 0 : strokes->size() - 1;
    bool live = toCache && !fullRedraw && onMainThread;
    for (size_t s = first; s < strokes->size(); ++s)
      if (const QnStrokeRef& stroke = (*strokes)[s]; stroke && !stroke->empty())
        drawStroke(context, *stroke, color, finalSegment, fullRedraw, live);
    if (toCache && !fullRedraw && onMainThread) noteLiveInk(*strokes);
  }
  if (onMainThread) requestRedisplay(strokes.get(), fullRedraw);
}

void QnDrawingView::drawStroke(QnComboContext* context, const QnStroke& stroke,
                               const QnColor& color, bool finalSegment, bool fullRedraw, bool live) {
  beginStroke(context, stroke, color);
  size_t n = stroke.size();
  // An incremental call draws only the segments that end at the two newest points.
  size_t from = (!fullRedraw && n > 2) ? n - 2 : 0;
  if (live)
    drawPieces(context, stroke, color, from, n, finalSegment, fullRedraw, nullptr,
               [&](size_t i) { return layLiveSegment(stroke, i, color); });
  else
    drawPieces(context, stroke, color, from, n, finalSegment, fullRedraw);
}

void QnDrawingView::beginStroke(QnComboContext* context, const QnStroke& stroke, const QnColor& color) {
  context->setStrokeColorWithColor(color);
  context->setFillColorWithColor(color);
  context->setLineWidth(kStrokeStartLineWidth);
  context->setLineJoin(kQnLineJoinRound);
  context->setLineCap(kQnLineCapRound);
  context->moveToPoint(stroke[0].location);
}

void QnDrawingView::drawPieces(QnComboContext* context, const QnStroke& stroke, const QnColor& color,
                               size_t from, size_t to, bool finalSegment, bool fullRedraw, KeptInk* into,
                               const std::function<bool(size_t)>& laySegment) {
  size_t n = stroke.size();
  for (size_t i = from; i < to; ++i) {
    if (into) into->willDraw(stroke, i < 2 ? 0 : i - 2, i);
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
      if (!laySegment || !laySegment(i)) drawSegment(context, stroke, i);
      const QnSignaturePoint& b = stroke[i - 1];
      const QnSignaturePoint& c = stroke[i];
      QnPoint destination = midpoint(b.location, c.location);
      if (i == n - 1 && (finalSegment || fullRedraw)) {
        // The closing piece carries the ink on to the last point.
        drawSegmentInContextWithOriginDestinationDiameterStartingControlPointEndingControlPoint(
            context, destination, c.location, (b.diameter + c.diameter) * 0.5f, destination, c.location);
      }
      if (showDebug_) drawDebugMarks(context, midpoint(stroke[i - 2].location, b.location), destination, c.location, color);
    }
  }
}

void QnDrawingView::drawSegment(QnComboContext* context, const QnStroke& stroke, size_t i) {
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
        context, origin, destination, std::min(startDiameter, endDiameter), startControl, endControl);
  } else {
    drawSegmentInContextWithOriginDestinationStartingDiameterEndingDiameterStartingControlPointEndingControlPoint(
        context, origin, destination, startDiameter, endDiameter, startControl, endControl);
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
