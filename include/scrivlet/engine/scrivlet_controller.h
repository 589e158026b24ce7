// The capture controller: turns touches on a host's view into strokes, holds every capture and export
// setting, and prepares the signature record.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/delegate.h>
#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>
#include <scrivlet/engine/touch.h>
#include <scrivlet/engine/view.h>

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
  bool showGuideline() const { return settings_.showGuideline; }
  void setShowGuideline(bool show);
  bool showDate() const { return settings_.showDate; }
  void setShowDate(bool show) { settings_.showDate = show; }
  bool dateIncludesTime() const { return settings_.dateIncludesTime; }
  void setDateIncludesTime(bool includes) { settings_.dateIncludesTime = includes; }
  bool showHash() const { return settings_.showHash; }
  void setShowHash(bool show) { settings_.showHash = show; }
  bool clipSignatureToBounds() const { return settings_.clipSignatureToBounds; }
  void setClipSignatureToBounds(bool clip) { settings_.clipSignatureToBounds = clip; }
  bool swipeToUndoEnabled() const { return settings_.swipeToUndoEnabled; }
  void setSwipeToUndoEnabled(bool enabled) { settings_.swipeToUndoEnabled = enabled; }
  bool drawOnlyWithApplePencil() const { return settings_.drawOnlyWithApplePencil; }
  void setDrawOnlyWithApplePencil(bool stylusOnly) { settings_.drawOnlyWithApplePencil = stylusOnly; }
  bool useCalligraphicBrush() const { return settings_.useCalligraphicBrush; }
  void setUseCalligraphicBrush(bool calligraphic);
  bool skipPDFData() const { return settings_.skipPDFData; }
  void setSkipPDFData(bool skip) { settings_.skipPDFData = skip; }
  uint8_t willBeDoneCallbackRequested() const { return completion_.willBeDoneCallbackRequested; }
  void setWillBeDoneCallbackRequested(uint8_t requested) { completion_.willBeDoneCallbackRequested = requested; }
  uint8_t doneCallbackRequested() const { return completion_.doneCallbackRequested; }
  void setDoneCallbackRequested(uint8_t requested) { completion_.doneCallbackRequested = requested; }
  float strokeWidthMax() const { return settings_.strokeWidthMax; }
  void setStrokeWidthMax(float width);
  float velocityReduction() const { return settings_.velocityReduction; }
  void setVelocityReduction(float reduction);
  float exportScale() const { return settings_.exportScale; }
  void setExportScale(float scale) { settings_.exportScale = scale; }
  float exportDateSize() const { return settings_.exportDateSize; }
  void setExportDateSize(float size) { settings_.exportDateSize = size; }
  float exportHashSizeWidth() const { return settings_.exportHashSizeWidth; }
  void setExportHashSizeWidth(float width) { settings_.exportHashSizeWidth = width; }
  float exportHashSizeHeight() const { return settings_.exportHashSizeHeight; }
  void setExportHashSizeHeight(float height) { settings_.exportHashSizeHeight = height; }
  float exportFontRatio() const { return settings_.exportFontRatio; }
  void setExportFontRatio(float ratio) { settings_.exportFontRatio = ratio; }
  float exportHashFontSize() const { return settings_.exportHashFontSize; }
  void setExportHashFontSize(float size) { settings_.exportHashFontSize = size; }
  float exportHashOpacity() const { return settings_.exportHashOpacity; }
  void setExportHashOpacity(float opacity) { settings_.exportHashOpacity = opacity; }
  float smoothingAmount() const { return settings_.smoothingAmount; }
  void setSmoothingAmount(float amount) { settings_.smoothingAmount = amount; }
  float currentPressure() const { return touch_.currentPressure; }
  void setCurrentPressure(float pressure) { touch_.currentPressure = pressure; }
  const std::optional<std::string>& customHash() const { return settings_.customHash; }
  void setCustomHash(std::optional<std::string> hash) { settings_.customHash = std::move(hash); }
  const QnColor& strokeExportColor() const { return settings_.strokeExportColor; }
  void setStrokeExportColor(const QnColor& color);
  double delayBeforeCaching() const { return settings_.delayBeforeCaching; }
  void setDelayBeforeCaching(double delay) { settings_.delayBeforeCaching = delay; }

  // --- Context ---
  // Where the controller schedules its preparations and reads the time and the device: the default
  // context unless another was given.
  QnContext& context() const;
  // The ink view follows it: its notifications and its screen scale.
  void setContext(std::shared_ptr<QnContext> context);

  // --- State and outputs ---
  const std::optional<std::string>& lastHash() const { return outputs_.lastHash; }
  void setLastHash(std::optional<std::string> hash) { outputs_.lastHash = std::move(hash); }
  const QnStrokeListRef& myBrushStrokes() const { return outputs_.myBrushStrokes; }
  void setMyBrushStrokes(QnStrokeListRef strokes) { outputs_.myBrushStrokes = std::move(strokes); }
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
  const std::shared_ptr<QnSignature>& preparedSignature() const { return outputs_.preparedSignature; }
  void setPreparedSignature(std::shared_ptr<QnSignature> s) { outputs_.preparedSignature = std::move(s); }
  const std::optional<std::vector<uint8_t>>& imageData() const { return outputs_.imageData; }
  void setImageData(std::optional<std::vector<uint8_t>> data) { outputs_.imageData = std::move(data); }
  const std::optional<std::vector<uint8_t>>& pdfData() const { return outputs_.pdfData; }
  void setPdfData(std::optional<std::vector<uint8_t>> data) { outputs_.pdfData = std::move(data); }
  const std::optional<std::string>& xmlString() const { return outputs_.xmlString; }
  void setXmlString(std::optional<std::string> xml) { outputs_.xmlString = std::move(xml); }
  const std::optional<std::string>& svgString() const { return outputs_.svgString; }
  void setSvgString(std::optional<std::string> svg) { outputs_.svgString = std::move(svg); }
  const std::shared_ptr<QnImageView>& guideline() const { return guideline_; }
  const std::vector<std::shared_ptr<QnGestureRecognizer>>& gestureRecognizers() const {
    return gestureRecognizers_;
  }
  const std::shared_ptr<QnSignature>& cachedSignature() const { return completion_.cachedSignature; }
  const std::shared_ptr<QnTimer>& cacheTimer() const { return completion_.cacheTimer; }
  const std::function<void()>& cacheTimerBlock() const { return completion_.cacheTimerBlock; }
  void setCachedSignature(std::shared_ptr<QnSignature> s) { completion_.cachedSignature = std::move(s); }
  QnPoint lastDrawPoint() const { return touch_.lastDrawPoint; }
  void setLastDrawPoint(QnPoint point) { touch_.lastDrawPoint = point; }
  QnPoint lastPreciseDrawPoint() const { return touch_.lastPreciseDrawPoint; }
  QnRect lastLocation() const { return outputs_.lastLocation; }
  void setLastLocation(QnRect location) { outputs_.lastLocation = location; }
  QnRect copyOfTargetViewBounds() const { return outputs_.copyOfTargetViewBounds; }
  void setCopyOfTargetViewBounds(QnRect bounds) { outputs_.copyOfTargetViewBounds = bounds; }

 private:
  QnScrivletController(std::shared_ptr<QnView> view,
                       std::weak_ptr<QnScrivletControllerDelegate> delegate,
                       std::weak_ptr<QnScrivlet> manager);
  void observeGeometry();
  void attachRecognizers();
  // The point a touch of the set gives in the capture view.
  QnSignaturePoint pointFromTouches(const QnTouchSet& touches) const;
  void invalidateCacheTimer();
  // getImageData; with pngLater, a PNG is not made but the work that makes it is handed back there.
  std::optional<std::vector<uint8_t>> exportCanvas(const std::string& format,
                                                   std::function<std::vector<uint8_t>()>* pngLater);
  // Calls the delegate's method with the manager first, when the delegate implements it.
  template <class Method, class... Args>
  void tellDelegate(Method method, Args&&... args) const {
    if (auto d = delegate(); d && (*d).*method) ((*d).*method)(manager(), std::forward<Args>(args)...);
  }

  // What the host sets: capture, the guideline, the exports and the preparation's delay.
  struct Settings {
    bool showGuideline = true;
    bool showDate = false;
    bool dateIncludesTime = false;
    bool showHash = false;
    bool clipSignatureToBounds = false;
    bool swipeToUndoEnabled = true;
    bool drawOnlyWithApplePencil = false;
    bool useCalligraphicBrush = false;
    bool skipPDFData = false;
    float strokeWidthMax = 4.0f;
    float velocityReduction = 0.85f;
    float exportScale = 1.0f;
    float exportDateSize = 20.0f;
    float exportHashSizeWidth = 200.0f;
    float exportHashSizeHeight = 22.0f;
    float exportFontRatio = 0.55f;
    float exportHashFontSize = 23.0f;
    float exportHashOpacity = 0.9f;
    float smoothingAmount = 3.5f;
    std::optional<std::string> customHash;
    QnColor strokeExportColor = QnColor::black();
    double delayBeforeCaching = 0.2;
  };
  // Completion: the record prepared in advance, its timer and work item, and the requests waiting.
  struct Completion {
    uint8_t willBeDoneCallbackRequested = 0;
    uint8_t doneCallbackRequested = 0;
    std::shared_ptr<QnSignature> cachedSignature;
    std::shared_ptr<QnTimer> cacheTimer;
    std::function<void()> cacheTimerBlock;
  };
  // The exports: the strokes they draw, the view's bounds, and what the last preparation left.
  struct Outputs {
    QnStrokeListRef myBrushStrokes;
    QnRect copyOfTargetViewBounds;
    std::optional<std::string> lastHash;
    QnRect lastLocation;
    std::shared_ptr<QnSignature> preparedSignature;
    std::optional<std::vector<uint8_t>> imageData;
    std::optional<std::vector<uint8_t>> pdfData;
    std::optional<std::string> xmlString;
    std::optional<std::string> svgString;
  };
  // Touch routing: the drawing touch followed by position, and the pressure of the moment.
  struct TouchState {
    float currentPressure = 0;
    QnPoint lastDrawPoint;
    QnPoint lastPreciseDrawPoint;
  };

  Settings settings_;
  Completion completion_;
  Outputs outputs_;
  TouchState touch_;
  std::weak_ptr<QnScrivletControllerDelegate> delegate_;
  std::weak_ptr<QnScrivlet> manager_;
  // The stroke model, the view captured on, and the layout's guideline and recognizers.
  std::shared_ptr<QnDemoDrawingController> drawingController_;
  std::shared_ptr<QnView> scrivletView_;
  std::shared_ptr<QnImageView> guideline_;
  std::vector<std::shared_ptr<QnGestureRecognizer>> gestureRecognizers_;
  std::vector<QnView::ObserverToken> observations_;
  std::shared_ptr<QnContext> context_;
};

}  // namespace scrivlet
