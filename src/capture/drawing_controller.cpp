// The stroke model's touch phases, pen diameter, undo and redo.
#include "capture/drawing_controller.h"

#include <scrivlet/engine/device.h>
#include <scrivlet/engine/view.h>

#include "capture/dpi_calculator.h"
#include "platform/narrowing.h"
#include "render/drawing_view.h"

#include <cmath>

namespace scrivlet {

namespace {
// 320 KB of points: moved in some 30 us.
constexpr size_t kLongestStrokeShrunk = 4096;
constexpr uint64_t kFirstPointID = 100;
constexpr int kCanvasViewTag = 90;
// Points per second at which the thinning by speed is full.
constexpr float kFullSpeedPointsPerSecond = 1500;
}  // namespace

QnDemoDrawingController::QnDemoDrawingController(std::shared_ptr<QnView> view) {
  inkEnabled_ = false;
  drawingView_ = std::move(view);
  signaturePointID_ = kFirstPointID;
  strokeWidthMax_ = 4.0f;
  setNativeScale(QnDevice::nativeScale());
  drawingArray_ = std::make_shared<QnStrokeList>();
  drawingArrayForRedo_ = std::make_shared<QnStrokeList>();
  pointArray_ = std::make_shared<QnStroke>();
  canvasView_ = std::make_shared<QnDrawingView>(drawingView_ ? drawingView_->bounds() : QnRectZero);
  canvasView_->setTag(kCanvasViewTag);
  canvasView_->setDrawSmoothCurve(true);
  canvasView_->setUserInteractionEnabled(false);
  if (drawingView_) drawingView_->addSubview(canvasView_);
}

QnDemoDrawingController::~QnDemoDrawingController() = default;

void QnDemoDrawingController::setNativeScale(double nativeScale) {
  metersPerPoint_ = QnDPICalculator::metersPerPointAt(QnDPICalculator::deviceDpi(), nativeScale);
  velocityMax_ = metersPerPoint_ * kFullSpeedPointsPerSecond;
}

void QnDemoDrawingController::drawTouchBeganWithPoint(QnSignaturePoint point) {
  // The end of the last touch sequence never came: keep its stroke as it stands.
  if (drawing_) finalizeAndDrawCurrentStroke();
  drawing_ = true;
  pointArray_ = std::make_shared<QnStroke>();
  drawingArray_->push_back(pointArray_);
  if (!lastPoint_) {
    QnSignaturePoint blank;
    blank.diameter = (strokeWidthMax_ + strokeWidthMax_) / 3.0f;
    lastPoint_ = blank;
  }
  // The first point gets zero speed, and its diameter blends with the last one of the previous
  // stroke. lastPoint is a copy, so the previous stroke's last point keeps its own time.
  lastPoint_->timestamp = point.timestamp;
  drawTouchMovedWithPoint(point);
}

void QnDemoDrawingController::drawTouchMovedWithPoint(QnSignaturePoint point) {
  if (!drawing_) {
    drawTouchBeganWithPoint(point);
    return;
  }
  point.updateVelocityAndAccelerationWithPreviousPointMetersPerPoint(*lastPoint_, metersPerPoint_);
  drawNextPoint(point);
  lastPoint_ = pointArray_->back();
}

void QnDemoDrawingController::drawTouchEndedWithPoint(QnSignaturePoint point) {
  if (!drawing_) return;
  point.velocity = lastPoint_->velocity;
  point.acceleration = {0, 0};
  drawNextPoint(point);
  lastPoint_ = pointArray_->back();
  finalizeAndDrawCurrentStroke();
  drawing_ = false;
  // A finished stroke never grows again: the room kept for its growth goes, unless moving the stroke
  // would itself stall the end of a very long one (its spare room is then at most its own size).
  if (pointArray_->size() <= kLongestStrokeShrunk) pointArray_->shrink_to_fit();
}

void QnDemoDrawingController::drawTouchEndedWithTimestamp(double) {}

void QnDemoDrawingController::drawNextPoint(QnSignaturePoint point) {
  point.id = signaturePointID_++;
  point.diameter =
      narrowToFloat(calculateDiameterWithVelocityAndPressure(point.velocity, point.pressure));
  if (diameterLimit_) point.diameter = diameterLimit_(point.diameter);
  pointArray_->push_back(point);
  updateCanvasWithDrawingArrayFinalizeStrokeFullRedraw(drawingArray_, false, false);
}

double QnDemoDrawingController::calculateDiameterWithVelocityAndPressure(QnPoint velocity,
                                                                         float pressure) const {
  float width = strokeWidthMax_;
  float reduction = useCalligraphicBrush_ ? velocityReduction_ / 3.0f : velocityReduction_;
  float previous = lastPoint_ ? lastPoint_->diameter : 0.0f;
  float speed = narrowToFloat(std::sqrt(velocity.x * velocity.x + velocity.y * velocity.y));
  float s = speed / velocityMax_;
  s = s < 1.0f ? s : 1.0f;  // an unknown speed counts as full speed
  float p3 = pressure * 3.0f;
  float target = p3 + width;
  float thinned = target - (reduction * s) * (target + p3 * -0.5f);
  float d = (thinned + (previous + previous)) / 3.0f;
  return d > 0 ? d : 0.0f;
}

void QnDemoDrawingController::finalizeAndDrawCurrentStroke() {
  drawingArrayForRedo_->clear();
  updateCanvasWithDrawingArrayFinalizeStrokeFullRedraw(drawingArray_, true, false);
}

void QnDemoDrawingController::updateCanvasWithDrawingArrayFinalizeStrokeFullRedraw(
    const QnStrokeListRef& strokes, bool finalizeStroke, bool fullRedraw) {
  canvasView_->setMyStrokes(strokes);
  canvasView_->drawStrokesToCacheWithFinalSegmentFullRedraw(strokes, finalizeStroke, fullRedraw);
}

void QnDemoDrawingController::cancelDrawingStroke() {
  if (!drawing_) return;
  if (!drawingArray_->empty()) drawingArray_->pop_back();
  drawing_ = false;
  redraw();
}

void QnDemoDrawingController::undoDrawingStroke() {
  cancelDrawingStroke();
  if (!drawingArray_->empty()) {
    drawingArrayForRedo_->push_back(drawingArray_->back());
    drawingArray_->pop_back();
    redraw();
  }
  drawing_ = false;
}

void QnDemoDrawingController::redoDrawingStroke() {
  cancelDrawingStroke();
  if (!drawingArrayForRedo_->empty()) {
    drawingArray_->push_back(drawingArrayForRedo_->back());
    drawingArrayForRedo_->pop_back();
    redraw();
  }
}

void QnDemoDrawingController::redraw() {
  updateCanvasWithDrawingArrayFinalizeStrokeFullRedraw(drawingArray_, true, true);
}

void QnDemoDrawingController::orientationChange() { redraw(); }

void QnDemoDrawingController::resetCanvas() {
  cancelDrawingStroke();
  drawingArray_->clear();
  drawingArrayForRedo_->clear();
  redraw();
}

void QnDemoDrawingController::setColor(const QnColor& color) { canvasView_->setStrokeColor(color); }

void QnDemoDrawingController::setUseCalligraphicBrush(bool calligraphic) {
  useCalligraphicBrush_ = calligraphic;
  canvasView_->setUseCalligraphicBrush(calligraphic);
}

void QnDemoDrawingController::setDrawingArray(QnStrokeListRef strokes) {
  drawingArray_ = strokes ? std::move(strokes) : std::make_shared<QnStrokeList>();
}

QnStrokeListRef QnDemoDrawingController::drawingArrayWithOffset(QnPoint offset) const {
  // Moving by nothing leaves every bit as it is: the finished strokes are shared (a stroke being drawn
  // is still copied, and so left behind by the list, as a copy would leave it).
  if (offset.x == 0 && offset.y == 0) return snapshotOfDrawingArray();
  return copyOfStrokesMovedBy(drawingArray_, offset);
}

QnStrokeListRef QnDemoDrawingController::snapshotOfDrawingArray() const {
  auto snapshot = std::make_shared<QnStrokeList>(*drawingArray_);
  for (QnStrokeRef& stroke : *snapshot) {
    if (!stroke)
      stroke = std::make_shared<QnStroke>();
    else if (drawing_ && stroke == pointArray_)
      stroke = std::make_shared<QnStroke>(*stroke);
  }
  return snapshot;
}

void QnDemoDrawingController::drawCanvasToContextWithOffset(QnComboContext* context,
                                                            QnPoint offset) {
  QnStrokeListRef moved = drawingArrayWithOffset(offset);
  canvasView_->setMyStrokes(moved);
  canvasView_->drawStrokesToContextWithFinalSegmentFullRedraw(moved, context, true, true);
}

void QnDemoDrawingController::updateLayout() {
  canvasView_->setFrame(drawingView_ ? drawingView_->bounds() : QnRectZero);
  canvasView_->updateLayout();
  redraw();
}

}  // namespace scrivlet
