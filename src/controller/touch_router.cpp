#include "controller/touch_router.h"

#include <scrivlet/engine/scrivlet_settings.h>

#include "capture/drawing_controller.h"

#include <cmath>

namespace scrivlet {

namespace {

constexpr size_t kCancellingFingers = 3;

bool isFinite(QnPoint p) { return std::isfinite(p.x) && std::isfinite(p.y); }

}  // namespace

QnTouchRouter::QnTouchRouter(const QnView* view, const QnScrivletSettings& settings,
                             const std::shared_ptr<QnDemoDrawingController>& model, Outcomes outcomes)
    : view_(view), settings_(settings), model_(model), outcomes_(std::move(outcomes)) {}

bool QnTouchRouter::shouldDrawWithTouches(const QnTouchSet& touches) const {
  return settings_.drawOnlyWithApplePencil ? touchesIncludePen(touches) : true;
}

QnPoint QnTouchRouter::locationOfTouchInView(const QnTouch& touch, const QnView* view) {
  return QnSignaturePoint::locationOfTouchInView(&touch, view);
}

QnPoint QnTouchRouter::previousLocationOfTouchInView(const QnTouch& touch, const QnView* view) {
  return touch.precisePreviousLocationInView(view).value_or(touch.previousLocationInView(view));
}

bool QnTouchRouter::touchesIncludePen(const QnTouchSet& touches) {
  for (const auto& touch : touches)
    if (touch && touch->type() == kQnTouchTypeStylus) return true;
  return false;
}

QnPoint QnTouchRouter::initiateDrawingPointFromTouch(const QnTouch& touch) {
  lastDrawPoint = locationOfTouchInView(touch, view_);
  return lastDrawPoint;
}

bool QnTouchRouter::lastDrawingPointMatchedInTouchesAndSaved(const QnTouchSet& touches) {
  // Exact equality, no tolerance: the touch is followed by where it was, not by its identity.
  for (const auto& touch : touches) {
    if (!touch) continue;
    QnPoint previous = previousLocationOfTouchInView(*touch, view_);
    QnPoint current = locationOfTouchInView(*touch, view_);
    if (previous == lastDrawPoint || current == lastDrawPoint) {
      lastDrawPoint = current;
      return true;
    }
  }
  return false;
}

QnSignaturePoint QnTouchRouter::pointFromTouches(const QnTouchSet& touches) const {
  // Any one touch of the set: the first it yields.
  return QnSignaturePoint::pointWithTouchInView(touches.front().get(), view_);
}

void QnTouchRouter::began(const QnTouchSet& touches, const QnEvent& event, const QnGestureRecognizer* fingerCounter) {
  if (touches.empty() || !touches.front() || !model_) return;
  size_t fingers = event.touchesForGestureRecognizer(fingerCounter).size();
  if (fingers >= kCancellingFingers) {
    // A third finger is the start of a swipe: the stroke in progress goes.
    model_->cancelDrawingStroke();
    return;
  }
  if (!shouldDrawWithTouches(touches) || fingers != 1) return;
  QnSignaturePoint point = pointFromTouches(touches);
  // A touch without a usable position cannot start a stroke.
  if (!isFinite(point.location)) return;
  initiateDrawingPointFromTouch(*touches.front());
  model_->drawTouchBeganWithPoint(point);
  outcomes_.strokeBegan();
}

void QnTouchRouter::moved(const QnTouchSet& touches, const QnEvent& event, const QnGestureRecognizer* fingerCounter) {
  if (touches.empty() || !touches.front() || !model_) return;
  size_t fingers = event.touchesForGestureRecognizer(fingerCounter).size();
  if (fingers >= kCancellingFingers || !shouldDrawWithTouches(touches) || !lastDrawingPointMatchedInTouchesAndSaved(touches))
    return;
  QnSignaturePoint point = pointFromTouches(touches);
  if (isFinite(point.location)) model_->drawTouchMovedWithPoint(point);
}

void QnTouchRouter::ended(const QnTouchSet& touches) {
  if (touches.empty() || !touches.front() || !model_) return;
  if (!shouldDrawWithTouches(touches) || !lastDrawingPointMatchedInTouchesAndSaved(touches)) return;
  QnSignaturePoint point = pointFromTouches(touches);
  // An end without a usable position still closes the stroke, where the pen last was.
  if (!isFinite(point.location) && model_->lastPoint()) point.location = model_->lastPoint()->location;
  model_->drawTouchEndedWithPoint(point);
  outcomes_.strokeEnded();
}

void QnTouchRouter::cancelled(const QnTouchSet& touches) {
  if (!model_ || !shouldDrawWithTouches(touches)) return;
  for (const auto& touch : touches) {
    if (touch && locationOfTouchInView(*touch, view_) == lastDrawPoint) {
      model_->cancelDrawingStroke();
      outcomes_.strokeCancelled();
    }
  }
}

}  // namespace scrivlet
