// The capture controller: its parts put together, the settings the stroke model and the guideline
// follow, and what the parts keep, read and written through the controller.
#include <scrivlet/engine/scrivlet_controller.h>

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/gesture_recognizer.h>

#include "capture/drawing_controller.h"
#include "controller/guideline_layout.h"
#include "controller/record_completion.h"
#include "controller/touch_router.h"
#include "controller/touches_observer_gesture_recognizer.h"
#include "controller/undo_history.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

namespace scrivlet {

std::shared_ptr<QnScrivletController> QnScrivletController::create(
    std::shared_ptr<QnView> view, std::weak_ptr<QnScrivletControllerDelegate> delegate,
    std::weak_ptr<QnScrivlet> manager) {
  std::shared_ptr<QnScrivletController> controller(
      new QnScrivletController(std::move(view), std::move(delegate), std::move(manager)));
  // Observations and recognizers hold the controller weakly, so they are made once it is shared.
  std::weak_ptr<QnScrivletController> weakController = controller;
  controller->layout_->observeGeometry([weakController] {
    if (auto self = weakController.lock()) self->observeValueForKeyPath("");
  });
  controller->setVelocityReduction(0.85f);
  controller->layout_->placeGuideline();
  controller->drawingController_ = std::make_shared<QnDemoDrawingController>(controller->scrivletView_);
  controller->drawingController_->setVelocityReduction(controller->settings_.velocityReduction);
  controller->drawingController_->setStrokeWidthMax(controller->settings_.exports.strokeWidthMax);
  controller->drawingController_->setColor(controller->settings_.strokeExportColor);
  controller->attachRecognizers();
  return controller;
}

QnScrivletController::QnScrivletController(std::shared_ptr<QnView> view,
                                           std::weak_ptr<QnScrivletControllerDelegate> delegate,
                                           std::weak_ptr<QnScrivlet> manager)
    : delegate_(std::move(delegate)),
      manager_(std::move(manager)),
      scrivletView_(std::move(view)),
      layout_(std::make_unique<QnGuidelineLayout>(scrivletView_)),
      router_(std::make_unique<QnTouchRouter>(
          scrivletView_.get(), settings_, drawingController_,
          QnTouchRouter::Outcomes{
              .strokeBegan = [this] { completion_->invalidateTimer(); },
              .strokeEnded =
                  [this] {
                    tellDelegate(&QnScrivletControllerDelegate::scrivletDidEndLineWithSignaturePointCount,
                                 numberOfPointsInCurrentSignature());
                    cacheSignatureAfterDelay(settings_.delayBeforeCaching);
                  },
              .strokeCancelled = [this] { cacheSignatureAfterDelay(settings_.delayBeforeCaching); }})),
      history_(std::make_unique<QnUndoHistory>(settings_, drawingController_)),
      completion_(std::make_unique<QnRecordCompletion>(QnRecordCompletion::Answers{
          .willComplete =
              [this](std::shared_ptr<QnSignature> record) {
                tellDelegate(&QnScrivletControllerDelegate::scrivletWillCompleteWithSignature, std::move(record));
              },
          .didComplete =
              [this](std::shared_ptr<QnSignature> record) {
                tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithSignature, std::move(record));
              },
          .didCompleteWithNothing = [this] { tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithNoSignature); }})) {}

QnScrivletController::~QnScrivletController() {
  if (!scrivletView_) return;
  for (const auto& recognizer : gestureRecognizers_) scrivletView_->removeGestureRecognizer(recognizer.get());
}

void QnScrivletController::attachRecognizers() {
  std::weak_ptr<QnScrivletController> weakSelf = weak_from_this();
  auto observer = std::make_shared<QnTouchesObserverGestureRecognizer>([weakSelf](QnGestureRecognizer&) {
    if (auto self = weakSelf.lock()) self->updateLayout();
  });
  observer->setDelegateController(weakSelf);
  // The touch handlers count fingers through the first entry: the observer recognizer.
  gestureRecognizers_ = {observer};
  for (auto& swipe : QnUndoHistory::swipeRecognizers(
           [weakSelf](QnGestureRecognizer& sender) {
             if (auto self = weakSelf.lock()) self->undo(&sender);
           },
           [weakSelf](QnGestureRecognizer& sender) {
             if (auto self = weakSelf.lock()) self->redo(&sender);
           }))
    gestureRecognizers_.push_back(std::move(swipe));
  if (scrivletView_)
    for (const auto& recognizer : gestureRecognizers_) scrivletView_->addGestureRecognizer(recognizer);
}

bool QnScrivletController::gestureRecognizerShouldRecognizeSimultaneouslyWithGestureRecognizer(
    const QnGestureRecognizer*, const QnGestureRecognizer*) const {
  return true;
}

// --- Touch routing ---

void QnScrivletController::touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event) {
  router_->began(touches, event, gestureRecognizers_.front().get());
}

void QnScrivletController::touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event) {
  router_->moved(touches, event, gestureRecognizers_.front().get());
}

void QnScrivletController::touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent&) { router_->ended(touches); }

void QnScrivletController::touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent&) {
  router_->cancelled(touches);
}

bool QnScrivletController::shouldDrawWithTouches(const QnTouchSet& touches) const {
  return router_->shouldDrawWithTouches(touches);
}

bool QnScrivletController::touchesIncludePen(const QnTouchSet& touches) {
  return QnTouchRouter::touchesIncludePen(touches);
}

QnPoint QnScrivletController::locationOfTouchInView(const QnTouch& touch, const QnView* view) {
  return QnTouchRouter::locationOfTouchInView(touch, view);
}

QnPoint QnScrivletController::previousLocationOfTouchInView(const QnTouch& touch, const QnView* view) {
  return QnTouchRouter::previousLocationOfTouchInView(touch, view);
}

QnPoint QnScrivletController::initiateDrawingPointFromTouch(const QnTouch& touch) {
  return router_->initiateDrawingPointFromTouch(touch);
}

bool QnScrivletController::lastDrawingPointMatchedInTouchesAndSaved(const QnTouchSet& touches) {
  return router_->lastDrawingPointMatchedInTouchesAndSaved(touches);
}

float QnScrivletController::currentPressure() const { return router_->currentPressure; }
void QnScrivletController::setCurrentPressure(float pressure) { router_->currentPressure = pressure; }
QnPoint QnScrivletController::lastDrawPoint() const { return router_->lastDrawPoint; }
void QnScrivletController::setLastDrawPoint(QnPoint point) { router_->lastDrawPoint = point; }
QnPoint QnScrivletController::lastPreciseDrawPoint() const { return router_->lastPreciseDrawPoint; }

unsigned long QnScrivletController::numberOfPointsInCurrentSignature() const {
  unsigned long count = 0;
  if (drawingController_)
    for (const QnStrokeRef& stroke : *drawingController_->drawingArray())
      if (stroke) count += stroke->size();
  return count;
}

// --- Undo history ---

void QnScrivletController::undo(void*) { history_->undo(); }
void QnScrivletController::redo(void*) { history_->redo(); }

// --- Layout ---

void QnScrivletController::layoutGuideline() { layout_->layoutGuideline(); }
void QnScrivletController::updateLayout() { layout_->updateLayout(drawingController_.get()); }
void QnScrivletController::observeValueForKeyPath(const std::string&) { updateLayout(); }
const std::shared_ptr<QnImageView>& QnScrivletController::guideline() const { return layout_->guideline(); }

// --- Completion ---

void QnScrivletController::cacheSignatureAfterDelay(double delay) {
  // A second controller on an invisible view of the same frame, sharing the live stroke model.
  auto invisibleView = std::make_shared<QnView>(scrivletView_ ? scrivletView_->frame() : QnRectZero);
  std::shared_ptr<QnScrivletController> preparer = create(invisibleView, {}, manager_);
  preparer->setContext(context_);
  preparer->setDrawingController(drawingController_);
  // The strokes are taken now, on the main thread; the live model may change meanwhile, though never
  // a finished stroke, which is shared rather than copied.
  preparer->setMyBrushStrokes(drawingController_ ? drawingController_->snapshotOfDrawingArray()
                                                 : std::make_shared<QnStrokeList>());
  preparer->setCopyOfTargetViewBounds(scrivletView_ ? scrivletView_->bounds() : QnRectZero);
  // Only these settings are copied; every other one keeps its default there (so records made
  // this way always carry the PDF).
  preparer->setStrokeExportColor(settings_.strokeExportColor);
  preparer->setVelocityReduction(settings_.velocityReduction);
  preparer->setShowDate(showDate());
  preparer->setDateIncludesTime(dateIncludesTime());
  preparer->setShowHash(showHash());
  preparer->setCustomHash(customHash());
  preparer->setExportScale(exportScale());
  preparer->setClipSignatureToBounds(clipSignatureToBounds());
  completion_->prepareAfterDelay(std::move(preparer), weak_from_this(), context().scheduler(), delay);
}

void QnScrivletController::runTimerBlockWithTimer(QnTimer*) { completion_->runTimerBlock(); }

static bool canvasIsEmpty(const std::shared_ptr<QnDemoDrawingController>& model) {
  return !model || model->drawingArray()->empty();
}

void QnScrivletController::willBeDone(const void*) { completion_->willBeDone(canvasIsEmpty(drawingController_)); }
void QnScrivletController::done(const void*) { completion_->done(canvasIsEmpty(drawingController_)); }

void QnScrivletController::reset(const void*) {
  if (drawingController_) drawingController_->resetCanvas();
}

void QnScrivletController::didDismissModalView() { tellDelegate(&QnScrivletControllerDelegate::scrivletDidCancelModalView); }

uint8_t QnScrivletController::willBeDoneCallbackRequested() const { return completion_->willBeDoneCallbackRequested; }
void QnScrivletController::setWillBeDoneCallbackRequested(uint8_t requested) {
  completion_->willBeDoneCallbackRequested = requested;
}
uint8_t QnScrivletController::doneCallbackRequested() const { return completion_->doneCallbackRequested; }
void QnScrivletController::setDoneCallbackRequested(uint8_t requested) { completion_->doneCallbackRequested = requested; }
const std::shared_ptr<QnSignature>& QnScrivletController::cachedSignature() const { return completion_->cachedSignature; }
void QnScrivletController::setCachedSignature(std::shared_ptr<QnSignature> s) { completion_->cachedSignature = std::move(s); }
const std::shared_ptr<QnTimer>& QnScrivletController::cacheTimer() const { return completion_->cacheTimer; }
const std::function<void()>& QnScrivletController::cacheTimerBlock() const { return completion_->cacheTimerBlock; }

// --- Settings the stroke model and the guideline follow ---

void QnScrivletController::setShowGuideline(bool show) {
  settings_.showGuideline = show;
  if (guideline()) guideline()->setHidden(!show);
}

void QnScrivletController::setStrokeWidthMax(float width) {
  settings_.exports.strokeWidthMax = width;
  if (drawingController_) drawingController_->setStrokeWidthMax(width);
}

void QnScrivletController::setVelocityReduction(float reduction) {
  settings_.velocityReduction = reduction;
  if (drawingController_) drawingController_->setVelocityReduction(reduction);
}

void QnScrivletController::setUseCalligraphicBrush(bool calligraphic) {
  settings_.useCalligraphicBrush = calligraphic;
  if (drawingController_) drawingController_->setUseCalligraphicBrush(calligraphic);
}

void QnScrivletController::setStrokeExportColor(const QnColor& color) {
  settings_.strokeExportColor = color;
  if (drawingController_) drawingController_->setColor(color);
  updateLayout();
}

QnContext& QnScrivletController::context() const { return context_ ? *context_ : QnContext::defaultContext(); }

void QnScrivletController::setContext(std::shared_ptr<QnContext> context) {
  context_ = context;
  if (drawingController_) drawingController_->setNativeScale(this->context().nativeScale());
  if (drawingController_ && drawingController_->canvasView()) drawingController_->canvasView()->setContext(std::move(context));
}

}  // namespace scrivlet
