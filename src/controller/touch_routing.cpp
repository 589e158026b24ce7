// Touch routing: which touches draw, following the drawing touch by position, and the phases.
#include <scrivlet/engine/scrivlet_controller.h>

#include "capture/drawing_controller.h"

#include <cmath>

namespace scrivlet {

namespace {

constexpr size_t kCancellingFingers = 3;

bool isFinite(QnPoint p) { return std::isfinite(p.x) && std::isfinite(p.y); }

}  // namespace

bool QnScrivletController::shouldDrawWithTouches(const QnTouchSet& touches) const {
  return settings_.drawOnlyWithApplePencil ? touchesIncludePen(touches) : true;
}

bool QnScrivletController::touchesIncludePen(const QnTouchSet& touches) {
  for (const auto& touch : touches)
    if (touch && touch->type() == kQnTouchTypeStylus) return true;
  return false;
}

QnPoint QnScrivletController::locationOfTouchInView(const QnTouch& touch, const QnView* view) {
  return QnSignaturePoint::locationOfTouchInView(&touch, view);
}

QnPoint QnScrivletController::previousLocationOfTouchInView(const QnTouch& touch,
                                                            const QnView* view) {
  return touch.precisePreviousLocationInView(view).value_or(touch.previousLocationInView(view));
}

QnPoint QnScrivletController::initiateDrawingPointFromTouch(const QnTouch& touch) {
  touch_.lastDrawPoint = locationOfTouchInView(touch, scrivletView_.get());
  return touch_.lastDrawPoint;
}

bool QnScrivletController::lastDrawingPointMatchedInTouchesAndSaved(const QnTouchSet& touches) {
  // Exact equality, no tolerance: the touch is followed by where it was, not by its identity.
  for (const auto& touch : touches) {
    if (!touch) continue;
    QnPoint previous = previousLocationOfTouchInView(*touch, scrivletView_.get());
    QnPoint current = locationOfTouchInView(*touch, scrivletView_.get());
    if (previous == touch_.lastDrawPoint || current == touch_.lastDrawPoint) {
      touch_.lastDrawPoint = current;
      return true;
    }
  }
  return false;
}

QnSignaturePoint QnScrivletController::pointFromTouches(const QnTouchSet& touches) const {
  // Any one touch of the set: the first it yields.
  return QnSignaturePoint::pointWithTouchInView(touches.front().get(), scrivletView_.get());
}

void QnScrivletController::touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event) {
  if (touches.empty() || !touches.front() || !drawingController_) return;
  size_t fingers = event.touchesForGestureRecognizer(gestureRecognizers_.front().get()).size();
  if (fingers >= kCancellingFingers) {
    // A third finger is the start of a swipe: the stroke in progress goes.
    drawingController_->cancelDrawingStroke();
    return;
  }
  if (!shouldDrawWithTouches(touches) || fingers != 1) return;
  QnSignaturePoint point = pointFromTouches(touches);
  // A touch without a usable position cannot start a stroke.
  if (!isFinite(point.location)) return;
  initiateDrawingPointFromTouch(*touches.front());
  drawingController_->drawTouchBeganWithPoint(point);
  invalidateCacheTimer();
}

void QnScrivletController::touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event) {
  if (touches.empty() || !touches.front() || !drawingController_) return;
  size_t fingers = event.touchesForGestureRecognizer(gestureRecognizers_.front().get()).size();
  if (fingers >= kCancellingFingers || !shouldDrawWithTouches(touches) ||
      !lastDrawingPointMatchedInTouchesAndSaved(touches))
    return;
  QnSignaturePoint point = pointFromTouches(touches);
  if (isFinite(point.location)) drawingController_->drawTouchMovedWithPoint(point);
}

void QnScrivletController::touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent&) {
  if (touches.empty() || !touches.front() || !drawingController_) return;
  if (!shouldDrawWithTouches(touches) || !lastDrawingPointMatchedInTouchesAndSaved(touches)) return;
  QnSignaturePoint point = pointFromTouches(touches);
  // An end without a usable position still closes the stroke, where the pen last was.
  if (!isFinite(point.location) && drawingController_->lastPoint())
    point.location = drawingController_->lastPoint()->location;
  drawingController_->drawTouchEndedWithPoint(point);
  tellDelegate(&QnScrivletControllerDelegate::scrivletDidEndLineWithSignaturePointCount,
               numberOfPointsInCurrentSignature());
  cacheSignatureAfterDelay(settings_.delayBeforeCaching);
}

void QnScrivletController::touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent&) {
  if (!drawingController_ || !shouldDrawWithTouches(touches)) return;
  for (const auto& touch : touches) {
    if (touch && locationOfTouchInView(*touch, scrivletView_.get()) == touch_.lastDrawPoint) {
      drawingController_->cancelDrawingStroke();
      cacheSignatureAfterDelay(settings_.delayBeforeCaching);
    }
  }
}

}  // namespace scrivlet
