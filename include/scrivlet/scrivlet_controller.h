// The capture controller: turns touches on a host's view into strokes, holds every capture and export
// setting, and prepares the signature record.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/color.h>
#include <scrivlet/delegate.h>
#include <scrivlet/geometry.h>
#include <scrivlet/signature_point.h>
#include <scrivlet/touch.h>
#include <scrivlet/view.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace scrivlet {

class QnComboContext;
class QnContext;
class QnDemoDrawingController;
class QnGestureRecognizer;
class QnImage;
class QnImageView;
class QnScrivlet;
class QnSignature;
class QnTimer;
class QnXMLSerializer;

class SCRIVLET_EXPORT QnScrivletController : public std::enable_shared_from_this<QnScrivletController> {
 public:
  // Attaches to the view, ready to capture: adds the guideline, the ink view and the recognizers to
  // it and observes its geometry.
  static std::shared_ptr<QnScrivletController> create(
      std::shared_ptr<QnView> view, std::weak_ptr<QnScrivletControllerDelegate> delegate,
      std::weak_ptr<QnScrivlet> manager);
  // Removes the observations and the recognizers from the view.
  ~QnScrivletController();
  QnScrivletController(const QnScrivletController&) = delete;
  QnScrivletController& operator=(const QnScrivletController&) = delete;

  // --- Touch routing (called by the observer recognizer) ---
  void touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event);
  void touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event);
  void touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent& event);
  void touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent& event);

  bool shouldDrawWithTouches(const QnTouchSet& touches) const;
  static bool touchesIncludePen(const QnTouchSet& touches);
  static QnPoint locationOfTouchInView(const QnTouch& touch, const QnView* view);
  static QnPoint previousLocationOfTouchInView(const QnTouch& touch, const QnView* view);
  QnPoint initiateDrawingPointFromTouch(const QnTouch& touch);
  // Follows the drawing touch by position: true when a touch continues from or repeats the saved one.
  bool lastDrawingPointMatchedInTouchesAndSaved(const QnTouchSet& touches);
  // The points of every stroke on the canvas.
  unsigned long numberOfPointsInCurrentSignature() const;
  void undo(void* sender = nullptr);
  void redo(void* sender = nullptr);
  bool gestureRecognizerShouldRecognizeSimultaneouslyWithGestureRecognizer(
      const QnGestureRecognizer* recognizer, const QnGestureRecognizer* other) const;
  void viewDidLoad() {}

  // --- Guideline and layout ---
  void layoutGuideline();
  // Places the guideline again and moves the ink by the guideline's displacement.
  void updateLayout();
  // Any observed geometry key of the view or its layer changed.
  void observeValueForKeyPath(const std::string& keyPath);

  // --- Advance preparation and completion ---
  // After the delay, unless a touch comes first, prepares the record of a deep copy of the strokes in
  // the background and keeps it as the cached signature.
  void cacheSignatureAfterDelay(double delay);
  void runTimerBlockWithTimer(QnTimer* timer);
  // The delegate will be told of completion at once from the cache, or when the pending preparation
  // finishes.
  void willBeDone(const void* sender = nullptr);
  void done(const void* sender = nullptr);
  // Empties the canvas; the cache, the timer and the requests stay.
  void reset(const void* sender = nullptr);
  void didDismissModalView();

  // --- Stroke copies and bounding box ---
  // Copies of the points inside the rectangle (left and top edges in, right and bottom out); a
  // stroke with none becomes an empty stroke in its place.
  static QnStrokeListRef copyOfStrokesClippedToBounds(const QnStrokeListRef& strokes, QnRect bounds);
  // A deep copy with every point moved by the offset.
  static QnStrokeListRef copyOfStrokesWithOffset(const QnStrokeListRef& strokes, QnPoint offset);
  // The smallest rectangle holding every point, from the first point of the first stroke that has
  // one; the zero rectangle when no stroke has a point.
  static QnRect boundingRectOfStrokesF(const QnStrokeListRef& strokes);

  // --- Signature hash ---
  // A fresh hash: the first 10 hexadecimal digits of the SHA-1 of a new random UUID's text, or the
  // custom hash when one is set (even an empty one).
  void createAndStoreHashString();

  // --- Exports ---
  // Every output of myBrushStrokes: a fresh hash, then the PNG, the PDF (unless skipped), the SVG and
  // the XML, kept on the controller.
  void prepareScrivletData();
  // A new record of the outputs prepareScrivletData left.
  std::shared_ptr<QnSignature> prepareSignature() const;
  // The bytes of "PNG", "PDF" or "SVG" on a canvas around the strokes (or the view when clipping);
  // nothing for another format.
  std::optional<std::vector<uint8_t>> getImageData(const std::string& format);
  // The ISO/IEC 19794-7 time-series document of myBrushStrokes.
  std::string createXmlString() const;
  // The current time in UTC as yyyy-MM-ddTHH:mm:ssZ.
  std::string xmlDateString() const;
  static void
  writeSamplePointListStrokesLocationPrescalerTimePrescalerVelocityPrescalerAccelerationPrescalerPressurePrescalerAzimuthPrescalerElevationPrescaler(
      QnXMLSerializer& writer, const QnStrokeListRef& strokes, float locationPrescaler,
      float timePrescaler, float velocityPrescaler, float accelerationPrescaler,
      float pressurePrescaler, float azimuthPrescaler, float elevationPrescaler);
  // Signed and unsigned 16-bit texts: values above the range are clamped, values below it wrap.
  static std::string shortCappedStringOfInt(int value);
  static std::string uShortCappedStringOfInt(int value);

  // --- Settings ---
  bool showGuideline() const { return showGuideline_; }
  void setShowGuideline(bool show);
  bool showDate() const { return showDate_; }
  void setShowDate(bool show) { showDate_ = show; }
  bool dateIncludesTime() const { return dateIncludesTime_; }
  void setDateIncludesTime(bool includes) { dateIncludesTime_ = includes; }
  bool showHash() const { return showHash_; }
  void setShowHash(bool show) { showHash_ = show; }
  bool clipSignatureToBounds() const { return clipSignatureToBounds_; }
  void setClipSignatureToBounds(bool clip) { clipSignatureToBounds_ = clip; }
  bool swipeToUndoEnabled() const { return swipeToUndoEnabled_; }
  void setSwipeToUndoEnabled(bool enabled) { swipeToUndoEnabled_ = enabled; }
  bool drawOnlyWithApplePencil() const { return drawOnlyWithApplePencil_; }
  void setDrawOnlyWithApplePencil(bool stylusOnly) { drawOnlyWithApplePencil_ = stylusOnly; }
  bool useCalligraphicBrush() const { return useCalligraphicBrush_; }
  void setUseCalligraphicBrush(bool calligraphic);
  bool skipPDFData() const { return skipPDFData_; }
  void setSkipPDFData(bool skip) { skipPDFData_ = skip; }
  uint8_t willBeDoneCallbackRequested() const { return willBeDoneCallbackRequested_; }
  void setWillBeDoneCallbackRequested(uint8_t requested) { willBeDoneCallbackRequested_ = requested; }
  uint8_t doneCallbackRequested() const { return doneCallbackRequested_; }
  void setDoneCallbackRequested(uint8_t requested) { doneCallbackRequested_ = requested; }
  float strokeWidthMax() const { return strokeWidthMax_; }
  void setStrokeWidthMax(float width);
  float velocityReduction() const { return velocityReduction_; }
  void setVelocityReduction(float reduction);
  float exportScale() const { return exportScale_; }
  void setExportScale(float scale) { exportScale_ = scale; }
  float exportDateSize() const { return exportDateSize_; }
  void setExportDateSize(float size) { exportDateSize_ = size; }
  float exportHashSizeWidth() const { return exportHashSizeWidth_; }
  void setExportHashSizeWidth(float width) { exportHashSizeWidth_ = width; }
  float exportHashSizeHeight() const { return exportHashSizeHeight_; }
  void setExportHashSizeHeight(float height) { exportHashSizeHeight_ = height; }
  float exportFontRatio() const { return exportFontRatio_; }
  void setExportFontRatio(float ratio) { exportFontRatio_ = ratio; }
  float exportHashFontSize() const { return exportHashFontSize_; }
  void setExportHashFontSize(float size) { exportHashFontSize_ = size; }
  float exportHashOpacity() const { return exportHashOpacity_; }
  void setExportHashOpacity(float opacity) { exportHashOpacity_ = opacity; }
  float smoothingAmount() const { return smoothingAmount_; }
  void setSmoothingAmount(float amount) { smoothingAmount_ = amount; }
  float currentPressure() const { return currentPressure_; }
  void setCurrentPressure(float pressure) { currentPressure_ = pressure; }
  const std::optional<std::string>& customHash() const { return customHash_; }
  void setCustomHash(std::optional<std::string> hash) { customHash_ = std::move(hash); }
  const QnColor& strokeExportColor() const { return strokeExportColor_; }
  void setStrokeExportColor(const QnColor& color);
  double delayBeforeCaching() const { return delayBeforeCaching_; }
  void setDelayBeforeCaching(double delay) { delayBeforeCaching_ = delay; }

  // --- Context ---
  // Where the controller schedules its preparations and reads the time and the device: the default
  // context unless another was given.
  QnContext& context() const;
  void setContext(std::shared_ptr<QnContext> context) { context_ = std::move(context); }

  // --- State and outputs ---
  const std::optional<std::string>& lastHash() const { return lastHash_; }
  void setLastHash(std::optional<std::string> hash) { lastHash_ = std::move(hash); }
  const QnStrokeListRef& myBrushStrokes() const { return myBrushStrokes_; }
  void setMyBrushStrokes(QnStrokeListRef strokes) { myBrushStrokes_ = std::move(strokes); }
  std::shared_ptr<QnScrivletControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<QnScrivletControllerDelegate> d) { delegate_ = std::move(d); }
  std::shared_ptr<QnScrivlet> manager() const { return manager_.lock(); }
  void setManager(std::weak_ptr<QnScrivlet> manager) { manager_ = std::move(manager); }
  const std::shared_ptr<QnDemoDrawingController>& drawingController() const {
    return drawingController_;
  }
  void setDrawingController(std::shared_ptr<QnDemoDrawingController> controller) {
    drawingController_ = std::move(controller);
  }
  const std::shared_ptr<QnView>& scrivletView() const { return scrivletView_; }
  const std::shared_ptr<QnSignature>& preparedSignature() const { return preparedSignature_; }
  void setPreparedSignature(std::shared_ptr<QnSignature> s) { preparedSignature_ = std::move(s); }
  const std::optional<std::vector<uint8_t>>& imageData() const { return imageData_; }
  void setImageData(std::optional<std::vector<uint8_t>> data) { imageData_ = std::move(data); }
  const std::optional<std::vector<uint8_t>>& pdfData() const { return pdfData_; }
  void setPdfData(std::optional<std::vector<uint8_t>> data) { pdfData_ = std::move(data); }
  const std::optional<std::string>& xmlString() const { return xmlString_; }
  void setXmlString(std::optional<std::string> xml) { xmlString_ = std::move(xml); }
  const std::optional<std::string>& svgString() const { return svgString_; }
  void setSvgString(std::optional<std::string> svg) { svgString_ = std::move(svg); }
  const std::shared_ptr<QnImageView>& guideline() const { return guideline_; }
  const std::vector<std::shared_ptr<QnGestureRecognizer>>& gestureRecognizers() const {
    return gestureRecognizers_;
  }
  const std::shared_ptr<QnSignature>& cachedSignature() const { return cachedSignature_; }
  const std::shared_ptr<QnTimer>& cacheTimer() const { return cacheTimer_; }
  const std::function<void()>& cacheTimerBlock() const { return cacheTimerBlock_; }
  void setCachedSignature(std::shared_ptr<QnSignature> s) { cachedSignature_ = std::move(s); }
  QnPoint lastDrawPoint() const { return lastDrawPoint_; }
  void setLastDrawPoint(QnPoint point) { lastDrawPoint_ = point; }
  QnPoint lastPreciseDrawPoint() const { return lastPreciseDrawPoint_; }
  QnRect lastLocation() const { return lastLocation_; }
  void setLastLocation(QnRect location) { lastLocation_ = location; }
  QnRect copyOfTargetViewBounds() const { return copyOfTargetViewBounds_; }
  void setCopyOfTargetViewBounds(QnRect bounds) { copyOfTargetViewBounds_ = bounds; }

 private:
  QnScrivletController(std::shared_ptr<QnView> view,
                       std::weak_ptr<QnScrivletControllerDelegate> delegate,
                       std::weak_ptr<QnScrivlet> manager);
  void observeGeometry();
  void attachRecognizers();
  // The point a touch of the set gives in the capture view.
  QnSignaturePoint pointFromTouches(const QnTouchSet& touches) const;
  void invalidateCacheTimer();
  // getImageData; with pixels, a PNG's canvas is handed back there unencoded instead.
  std::optional<std::vector<uint8_t>> exportCanvas(const std::string& format, QnImage* pixels);
  // Calls the delegate's method with the manager first, when the delegate implements it.
  template <class Method, class... Args>
  void tellDelegate(Method method, Args&&... args) const {
    if (auto d = delegate(); d && (*d).*method) ((*d).*method)(manager(), std::forward<Args>(args)...);
  }

  bool showGuideline_ = true;
  bool showDate_ = false;
  bool dateIncludesTime_ = false;
  bool showHash_ = false;
  bool clipSignatureToBounds_ = false;
  bool swipeToUndoEnabled_ = true;
  bool drawOnlyWithApplePencil_ = false;
  bool useCalligraphicBrush_ = false;
  bool skipPDFData_ = false;
  uint8_t willBeDoneCallbackRequested_ = 0;
  uint8_t doneCallbackRequested_ = 0;
  float strokeWidthMax_ = 4.0f;
  float velocityReduction_ = 0.85f;
  float exportScale_ = 1.0f;
  float exportDateSize_ = 20.0f;
  float exportHashSizeWidth_ = 200.0f;
  float exportHashSizeHeight_ = 22.0f;
  float exportFontRatio_ = 0.55f;
  float exportHashFontSize_ = 23.0f;
  float exportHashOpacity_ = 0.9f;
  float smoothingAmount_ = 3.5f;
  float currentPressure_ = 0;
  std::optional<std::string> customHash_;
  QnColor strokeExportColor_ = QnColor::black();
  std::optional<std::string> lastHash_;
  QnStrokeListRef myBrushStrokes_;
  std::weak_ptr<QnScrivletControllerDelegate> delegate_;
  std::weak_ptr<QnScrivlet> manager_;
  std::shared_ptr<QnDemoDrawingController> drawingController_;
  std::shared_ptr<QnView> scrivletView_;
  std::shared_ptr<QnSignature> preparedSignature_;
  std::optional<std::vector<uint8_t>> imageData_;
  std::optional<std::vector<uint8_t>> pdfData_;
  std::optional<std::string> xmlString_;
  std::optional<std::string> svgString_;
  std::shared_ptr<QnImageView> guideline_;
  std::vector<std::shared_ptr<QnGestureRecognizer>> gestureRecognizers_;
  std::shared_ptr<QnSignature> cachedSignature_;
  std::shared_ptr<QnTimer> cacheTimer_;
  std::function<void()> cacheTimerBlock_;
  double delayBeforeCaching_ = 0.2;
  QnPoint lastDrawPoint_;
  QnPoint lastPreciseDrawPoint_;
  QnRect lastLocation_;
  QnRect copyOfTargetViewBounds_;
  std::vector<QnView::ObserverToken> observations_;
  std::shared_ptr<QnContext> context_;
};

}  // namespace scrivlet
