// The live stroke model: numbers the points of each touch sequence, gives them their kinematics and
// pen diameter, keeps them as strokes with undo and redo, and has the ink view draw them.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/signature_point.h>

#include <functional>
#include <memory>
#include <optional>

namespace scrivlet {

class QnComboContext;
class QnDrawingView;
class QnView;

class QnDemoDrawingController {
 public:
  // Puts a new ink view of the view's size into the view (a zero-sized one without a view).
  explicit QnDemoDrawingController(std::shared_ptr<QnView> view);
  ~QnDemoDrawingController();
  QnDemoDrawingController(const QnDemoDrawingController&) = delete;
  QnDemoDrawingController& operator=(const QnDemoDrawingController&) = delete;

  // The three touch phases.
  void drawTouchBeganWithPoint(QnSignaturePoint point);
  void drawTouchMovedWithPoint(QnSignaturePoint point);
  void drawTouchEndedWithPoint(QnSignaturePoint point);
  // Kept for callers of the old interface: the end of a stroke comes through the point version.
  void drawTouchEndedWithTimestamp(double timestamp);
  // Numbers, sizes, appends and draws one point.
  void drawNextPoint(QnSignaturePoint point);
  // The pen diameter for a velocity (m/s) and pressure, blended with the previous point's.
  double calculateDiameterWithVelocityAndPressure(QnPoint velocity, float pressure) const;

  void finalizeAndDrawCurrentStroke();
  void updateCanvasWithDrawingArrayFinalizeStrokeFullRedraw(const QnStrokeListRef& strokes,
                                                            bool finalizeStroke, bool fullRedraw);
  void cancelDrawingStroke();
  void undoDrawingStroke();
  void redoDrawingStroke();
  void redraw();
  void orientationChange();
  void resetCanvas();

  void setColor(const QnColor& color);
  // A copy of the strokes with every point moved by the offset.
  QnStrokeListRef drawingArrayWithOffset(QnPoint offset) const;
  // The strokes as they are now, for another thread: a finished stroke never changes again (every
  // touch starts a stroke of its own), so it is shared; only a stroke still being drawn is copied.
  QnStrokeListRef snapshotOfDrawingArray() const;
  // Draws every stroke, moved by the offset, into the context.
  void drawCanvasToContextWithOffset(QnComboContext* context, QnPoint offset);
  // Resizes the ink view to the view's bounds, makes its cache again and redraws.
  void updateLayout();

  const std::shared_ptr<QnView>& drawingView() const { return drawingView_; }
  const std::shared_ptr<QnDrawingView>& canvasView() const { return canvasView_; }
  const QnStrokeListRef& drawingArray() const { return drawingArray_; }
  // Replaces the list of strokes (a missing list counts as an empty one).
  void setDrawingArray(QnStrokeListRef strokes);
  const QnStrokeListRef& drawingArrayForRedo() const { return drawingArrayForRedo_; }
  const QnStrokeRef& pointArray() const { return pointArray_; }
  const std::optional<QnSignaturePoint>& lastPoint() const { return lastPoint_; }
  bool drawing() const { return drawing_; }
  uint64_t signaturePointID() const { return signaturePointID_; }

  float strokeWidthMax() const { return strokeWidthMax_; }
  void setStrokeWidthMax(float width) { strokeWidthMax_ = width; }
  float velocityReduction() const { return velocityReduction_; }
  void setVelocityReduction(float reduction) { velocityReduction_ = reduction; }
  bool useCalligraphicBrush() const { return useCalligraphicBrush_; }
  void setUseCalligraphicBrush(bool calligraphic);
  float metersPerPoint() const { return metersPerPoint_; }
  // The metres per point, and the speed of full thinning, of a screen of this native scale.
  void setNativeScale(double nativeScale);
  void setMetersPerPoint(float metersPerPoint) { metersPerPoint_ = metersPerPoint; }
  float velocityMax() const { return velocityMax_; }
  void setVelocityMax(float velocityMax) { velocityMax_ = velocityMax; }
  // A flag kept for the owner; nothing reads it.
  bool inkEnabled() const { return inkEnabled_; }
  void setInkEnabled(bool enabled) { inkEnabled_ = enabled; }
  // A limit a host layer puts on each new point's diameter after the pen's rule (a minimum or maximum
  // width); none by default, which keeps the rule's diameter.
  void setDiameterLimit(std::function<float(float)> limit) { diameterLimit_ = std::move(limit); }
  // A back reference for an owner; nothing sets or reads it.
  const std::weak_ptr<void>& myController() const { return myController_; }
  void setMyController(std::weak_ptr<void> controller) { myController_ = std::move(controller); }

 private:
  bool inkEnabled_;
  std::shared_ptr<QnView> drawingView_;
  uint64_t signaturePointID_;
  float strokeWidthMax_;
  float velocityReduction_ = 0;
  bool useCalligraphicBrush_ = false;
  float metersPerPoint_;
  float velocityMax_;
  QnStrokeListRef drawingArray_;
  QnStrokeListRef drawingArrayForRedo_;
  QnStrokeRef pointArray_;
  bool drawing_ = false;
  std::shared_ptr<QnDrawingView> canvasView_;
  std::optional<QnSignaturePoint> lastPoint_;
  std::weak_ptr<void> myController_;
  std::function<float(float)> diameterLimit_;
};

}  // namespace scrivlet
