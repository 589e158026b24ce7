// The capture controller: turns touches on a host's view into strokes, holds every capture and export
// setting, and prepares the signature record. It puts together the parts that do each job: touch
// routing, layout, the undo history, completion, and the exports it keeps the outputs of.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/delegate.h>
#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/scrivlet_settings.h>
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
class QnGuidelineLayout;
class QnImage;
class QnImageView;
class QnRecordCompletion;
class QnScrivlet;
class QnSignature;
class QnTimer;
class QnTouchRouter;
class QnUndoHistory;
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
  bool showDate() const { return settings_.exports.showDate; }
  void setShowDate(bool show) { settings_.exports.showDate = show; }
  bool dateIncludesTime() const { return settings_.exports.dateIncludesTime; }
  void setDateIncludesTime(bool includes) { settings_.exports.dateIncludesTime = includes; }
  bool showHash() const { return settings_.exports.showHash; }
  void setShowHash(bool show) { settings_.exports.showHash = show; }
  bool clipSignatureToBounds() const { return settings_.exports.clipSignatureToBounds; }
  void setClipSignatureToBounds(bool clip) { settings_.exports.clipSignatureToBounds = clip; }
  bool swipeToUndoEnabled() const { return settings_.swipeToUndoEnabled; }
  void setSwipeToUndoEnabled(bool enabled) { settings_.swipeToUndoEnabled = enabled; }
  bool drawOnlyWithApplePencil() const { return settings_.drawOnlyWithApplePencil; }
  void setDrawOnlyWithApplePencil(bool stylusOnly) { settings_.drawOnlyWithApplePencil = stylusOnly; }
  bool useCalligraphicBrush() const { return settings_.useCalligraphicBrush; }
  void setUseCalligraphicBrush(bool calligraphic);
  bool skipPDFData() const { return settings_.exports.skipPDFData; }
  void setSkipPDFData(bool skip) { settings_.exports.skipPDFData = skip; }
  uint8_t willBeDoneCallbackRequested() const;
  void setWillBeDoneCallbackRequested(uint8_t requested);
  uint8_t doneCallbackRequested() const;
  void setDoneCallbackRequested(uint8_t requested);
  float strokeWidthMax() const { return settings_.exports.strokeWidthMax; }
  void setStrokeWidthMax(float width);
  float velocityReduction() const { return settings_.velocityReduction; }
  void setVelocityReduction(float reduction);
  float exportScale() const { return settings_.exports.exportScale; }
  void setExportScale(float scale) { settings_.exports.exportScale = scale; }
  float exportDateSize() const { return settings_.exports.exportDateSize; }
  void setExportDateSize(float size) { settings_.exports.exportDateSize = size; }
  float exportHashSizeWidth() const { return settings_.exportHashSizeWidth; }
  void setExportHashSizeWidth(float width) { settings_.exportHashSizeWidth = width; }
  float exportHashSizeHeight() const { return settings_.exportHashSizeHeight; }
  void setExportHashSizeHeight(float height) { settings_.exportHashSizeHeight = height; }
  float exportFontRatio() const { return settings_.exportFontRatio; }
  void setExportFontRatio(float ratio) { settings_.exportFontRatio = ratio; }
  float exportHashFontSize() const { return settings_.exports.exportHashFontSize; }
  void setExportHashFontSize(float size) { settings_.exports.exportHashFontSize = size; }
  float exportHashOpacity() const { return settings_.exports.exportHashOpacity; }
  void setExportHashOpacity(float opacity) { settings_.exports.exportHashOpacity = opacity; }
  float smoothingAmount() const { return settings_.smoothingAmount; }
  void setSmoothingAmount(float amount) { settings_.smoothingAmount = amount; }
  float currentPressure() const;
  void setCurrentPressure(float pressure);
  const std::optional<std::string>& customHash() const { return settings_.exports.customHash; }
  void setCustomHash(std::optional<std::string> hash) { settings_.exports.customHash = std::move(hash); }
  const QnColor& strokeExportColor() const { return settings_.strokeExportColor; }
  void setStrokeExportColor(const QnColor& color);
  double delayBeforeCaching() const { return settings_.delayBeforeCaching; }
  void setDelayBeforeCaching(double delay) { settings_.delayBeforeCaching = delay; }
  // Every setting as one value.
  const QnScrivletSettings& settings() const { return settings_; }

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
  const std::shared_ptr<QnImageView>& guideline() const;
  const std::vector<std::shared_ptr<QnGestureRecognizer>>& gestureRecognizers() const {
    return gestureRecognizers_;
  }
  const std::shared_ptr<QnSignature>& cachedSignature() const;
  const std::shared_ptr<QnTimer>& cacheTimer() const;
  const std::function<void()>& cacheTimerBlock() const;
  void setCachedSignature(std::shared_ptr<QnSignature> s);
  QnPoint lastDrawPoint() const;
  void setLastDrawPoint(QnPoint point);
  QnPoint lastPreciseDrawPoint() const;
  QnRect lastLocation() const { return outputs_.lastLocation; }
  void setLastLocation(QnRect location) { outputs_.lastLocation = location; }
  QnRect copyOfTargetViewBounds() const { return outputs_.copyOfTargetViewBounds; }
  void setCopyOfTargetViewBounds(QnRect bounds) { outputs_.copyOfTargetViewBounds = bounds; }

 private:
  QnScrivletController(std::shared_ptr<QnView> view,
                       std::weak_ptr<QnScrivletControllerDelegate> delegate,
                       std::weak_ptr<QnScrivlet> manager);
  void attachRecognizers();
  // getImageData; with pngLater, a PNG is not made but the work that makes it is handed back there.
  std::optional<std::vector<uint8_t>> exportCanvas(const std::string& format,
                                                   std::function<std::vector<uint8_t>()>* pngLater);
  // Calls the delegate's method with the manager first, when the delegate implements it.
  template <class Method, class... Args>
  void tellDelegate(Method method, Args&&... args) const {
    if (auto d = delegate(); d && (*d).*method) ((*d).*method)(manager(), std::forward<Args>(args)...);
  }

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
  QnScrivletSettings settings_;
  Outputs outputs_;
  std::weak_ptr<QnScrivletControllerDelegate> delegate_;
  std::weak_ptr<QnScrivlet> manager_;
  // The stroke model, the view captured on, and the recognizers: the touch observer, then the swipes.
  std::shared_ptr<QnDemoDrawingController> drawingController_;
  std::shared_ptr<QnView> scrivletView_;
  std::vector<std::shared_ptr<QnGestureRecognizer>> gestureRecognizers_;
  std::shared_ptr<QnContext> context_;
  // The parts, each with one job.
  std::unique_ptr<QnGuidelineLayout> layout_;
  std::unique_ptr<QnTouchRouter> router_;
  std::unique_ptr<QnUndoHistory> history_;
  std::unique_ptr<QnRecordCompletion> completion_;
};

}  // namespace scrivlet
