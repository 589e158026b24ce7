// The capture controller's construction, teardown, settings and undo and redo.
#include <scrivlet/engine/scrivlet_controller.h>

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/gesture_recognizer.h>

#include "capture/drawing_controller.h"
#include "render/style_kit.h"
#include "controller/touches_observer_gesture_recognizer.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

namespace scrivlet {

namespace {

constexpr int kSwipeFingers = 3;

struct Observed {
  QnGeometryTarget target;
  const char* key;
};
// "frame" is observed on the view and on its layer, and the layer's "transform" twice: a change of
// either re-lays out twice.
constexpr Observed kObservedGeometry[] = {
    {QnGeometryTarget::view, "frame"},        {QnGeometryTarget::layer, "bounds"},
    {QnGeometryTarget::layer, "transform"},   {QnGeometryTarget::layer, "position"},
    {QnGeometryTarget::layer, "zPosition"},   {QnGeometryTarget::layer, "anchorPoint"},
    {QnGeometryTarget::layer, "anchorPointZ"}, {QnGeometryTarget::layer, "frame"},
    {QnGeometryTarget::layer, "transform"},
};

}  // namespace

std::shared_ptr<QnScrivletController> QnScrivletController::create(
    std::shared_ptr<QnView> view, std::weak_ptr<QnScrivletControllerDelegate> delegate,
    std::weak_ptr<QnScrivlet> manager) {
  std::shared_ptr<QnScrivletController> controller(
      new QnScrivletController(std::move(view), std::move(delegate), std::move(manager)));
  // Observations and recognizers hold the controller weakly, so they are made once it is shared.
  controller->observeGeometry();
  controller->setVelocityReduction(0.85f);
  controller->guideline_ = std::make_shared<QnImageView>(QnScrivletStyleKit::imageOfScrivlet_x());
  controller->layoutGuideline();
  if (controller->scrivletView_) controller->scrivletView_->addSubview(controller->guideline_);
  controller->drawingController_ =
      std::make_shared<QnDemoDrawingController>(controller->scrivletView_);
  controller->drawingController_->setVelocityReduction(controller->settings_.velocityReduction);
  controller->drawingController_->setStrokeWidthMax(controller->settings_.strokeWidthMax);
  controller->drawingController_->setColor(controller->settings_.strokeExportColor);
  controller->attachRecognizers();
  return controller;
}

QnScrivletController::QnScrivletController(std::shared_ptr<QnView> view,
                                           std::weak_ptr<QnScrivletControllerDelegate> delegate,
                                           std::weak_ptr<QnScrivlet> manager)
    : delegate_(std::move(delegate)), manager_(std::move(manager)), scrivletView_(std::move(view)) {}

QnScrivletController::~QnScrivletController() {
  if (!scrivletView_) return;
  for (QnView::ObserverToken token : observations_) scrivletView_->removeGeometryObserver(token);
  for (const auto& recognizer : gestureRecognizers_)
    scrivletView_->removeGestureRecognizer(recognizer.get());
}

void QnScrivletController::observeGeometry() {
  if (!scrivletView_) return;
  std::weak_ptr<QnScrivletController> weakSelf = weak_from_this();
  for (const Observed& observed : kObservedGeometry) {
    observations_.push_back(scrivletView_->addGeometryObserver(
        observed.target, observed.key, [weakSelf](QnGeometryTarget, const std::string& key) {
          if (auto self = weakSelf.lock()) self->observeValueForKeyPath(key);
        }));
  }
}

void QnScrivletController::attachRecognizers() {
  std::weak_ptr<QnScrivletController> weakSelf = weak_from_this();
  auto observer = std::make_shared<QnTouchesObserverGestureRecognizer>([weakSelf](QnGestureRecognizer&) {
    if (auto self = weakSelf.lock()) self->updateLayout();
  });
  observer->setDelegateController(weakSelf);
  auto undoSwipe = std::make_shared<QnSwipeGestureRecognizer>(kQnSwipeDirectionLeft, kSwipeFingers);
  undoSwipe->setAction([weakSelf](QnGestureRecognizer& sender) {
    if (auto self = weakSelf.lock()) self->undo(&sender);
  });
  auto redoSwipe = std::make_shared<QnSwipeGestureRecognizer>(kQnSwipeDirectionRight, kSwipeFingers);
  redoSwipe->setAction([weakSelf](QnGestureRecognizer& sender) {
    if (auto self = weakSelf.lock()) self->redo(&sender);
  });
  // The touch handlers count fingers through the first entry: the observer recognizer.
  gestureRecognizers_ = {observer, undoSwipe, redoSwipe};
  if (scrivletView_)
    for (const auto& recognizer : gestureRecognizers_) scrivletView_->addGestureRecognizer(recognizer);
}

bool QnScrivletController::gestureRecognizerShouldRecognizeSimultaneouslyWithGestureRecognizer(
    const QnGestureRecognizer*, const QnGestureRecognizer*) const {
  return true;
}

void QnScrivletController::setShowGuideline(bool show) {
  settings_.showGuideline = show;
  if (guideline_) guideline_->setHidden(!show);
}

void QnScrivletController::setStrokeWidthMax(float width) {
  settings_.strokeWidthMax = width;
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

QnContext& QnScrivletController::context() const {
  return context_ ? *context_ : QnContext::defaultContext();
}

void QnScrivletController::setContext(std::shared_ptr<QnContext> context) {
  context_ = context;
  if (drawingController_ && drawingController_->canvasView()) drawingController_->canvasView()->setContext(std::move(context));
}

unsigned long QnScrivletController::numberOfPointsInCurrentSignature() const {
  unsigned long count = 0;
  if (drawingController_)
    for (const QnStrokeRef& stroke : *drawingController_->drawingArray())
      if (stroke) count += stroke->size();
  return count;
}

void QnScrivletController::undo(void*) {
  if (settings_.swipeToUndoEnabled && drawingController_) drawingController_->undoDrawingStroke();
}

void QnScrivletController::redo(void*) {
  if (settings_.swipeToUndoEnabled && drawingController_) drawingController_->redoDrawingStroke();
}

}  // namespace scrivlet
