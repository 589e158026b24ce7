// The facade: creating the controller in a view or on the modal screen, and forwarding settings.
#include <scrivlet/engine/facade.h>

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/navigation_controller.h>
#include <scrivlet/engine/popup.h>
#include <scrivlet/engine/scheduler.h>
#include <scrivlet/engine/scrivlet_controller.h>

#include "platform/format.h"
#include "platform/log.h"

#include <cmath>

namespace scrivlet {

namespace {

// How often a facade that only a finished screen holds looks whether it still owes an answer.
constexpr double kOwedAnswerCheckInterval = 0.1;

// Once the screen has closed, a facade that "Done" left awaiting its record lives on until the
// delegate has had it.
void releaseWhenAnswered(std::shared_ptr<QnScrivlet> scrivlet) {
  const QnScrivletController& controller = *scrivlet->scrivletController();
  if (!controller.willBeDoneCallbackRequested() && !controller.doneCallbackRequested()) return;
  // A timer is invalidated when its handle goes, so the handle rides in its own action until it fires.
  auto timer = std::make_shared<std::shared_ptr<QnTimer>>();
  *timer = controller.context().scheduler().scheduleTimer(kOwedAnswerCheckInterval,
                                                          [scrivlet, timer] { releaseWhenAnswered(scrivlet); });
}

// A hold on the facade for the presenter of its screen: the host may keep the facade in a local
// variable.
QnNavigationController::Hold holdUntilAnswered(const std::weak_ptr<QnScrivlet>& weak) {
  std::shared_ptr<QnScrivlet> scrivlet = weak.lock();
  if (!scrivlet) return nullptr;
  return QnNavigationController::Hold(nullptr, [scrivlet](void*) { releaseWhenAnswered(scrivlet); });
}

}  // namespace

std::shared_ptr<QnScrivlet> QnScrivlet::scrivletWithDelegateModalDisplayString(
    std::shared_ptr<QnScrivletControllerDelegate> delegate, std::optional<std::string> prompt) {
  return initWithViewDelegateModalModalDisplayString(nullptr, std::move(delegate), true,
                                                     std::move(prompt));
}

std::shared_ptr<QnScrivlet> QnScrivlet::scrivletWithViewDelegate(
    std::shared_ptr<QnView> view, std::shared_ptr<QnScrivletControllerDelegate> delegate) {
  return initWithViewDelegateModalModalDisplayString(std::move(view), std::move(delegate), false,
                                                     std::nullopt);
}

std::shared_ptr<QnScrivlet> QnScrivlet::initWithViewDelegateModalModalDisplayString(
    std::shared_ptr<QnView> view, std::shared_ptr<QnScrivletControllerDelegate> delegate,
    bool modal, std::optional<std::string> prompt) {
  std::shared_ptr<QnScrivlet> scrivlet(new QnScrivlet());
  if (!modal) {
    scrivlet->scrivletController_ = QnScrivletController::create(std::move(view), delegate, scrivlet);
    return scrivlet;
  }
  // The view is ignored: the screen brings its own.
  auto screen = QnScrivletPopup::create();
  scrivlet->modalController_ = screen;
  // Before the screen loads its view, which lays out the prompt.
  screen->setModalDisplayString(std::move(prompt));
  auto container = std::make_shared<QnNavigationController>(screen);
  container->setNavigationBarHiddenAnimated(true, false);
  container->setToolbarHiddenAnimated(false, false);
  container->setBackgroundColor(QnColor::white());
  if (container->supportsModalPresentationStyle())
    container->setModalPresentationStyle(kQnModalPresentationFormSheet);
  scrivlet->modalContainer_ = container;
  screen->setNavigationController(container);
  scrivlet->scrivletController_ = QnScrivletController::create(screen->view(), delegate, scrivlet);
  screen->setDelegate(scrivlet->scrivletController_);
  std::weak_ptr<QnScrivlet> weakScrivlet = scrivlet;
  container->setOwnerHoldProvider([weakScrivlet] { return holdUntilAnswered(weakScrivlet); });
  // The container closes on the scheduler of the controller's context, as it is when it closes.
  container->setSchedulerProvider([weakScrivlet]() -> QnScheduler& {
    auto owner = weakScrivlet.lock();
    return owner && owner->scrivletController() ? owner->scrivletController()->context().scheduler()
                                                : QnScheduler::current();
  });
  if (delegate && delegate->presentViewControllerAnimatedCompletion)
    delegate->presentViewControllerAnimatedCompletion(container, true, [] {});
  return scrivlet;
}

void QnScrivlet::reset(const void* sender) { scrivletController_->reset(sender); }

void QnScrivlet::done(const void* sender) {
  scrivletController_->willBeDone(sender);
  scrivletController_->done(sender);
}

void QnScrivlet::setShowGuideline(bool show) {
  showGuideline_ = show;
  scrivletController_->setShowGuideline(show);
}

void QnScrivlet::setShowDate(bool show) {
  showDate_ = show;
  scrivletController_->setShowDate(show);
}

void QnScrivlet::setDateIncludesTime(bool includes) {
  dateIncludesTime_ = includes;
  scrivletController_->setDateIncludesTime(includes);
}

void QnScrivlet::setShowHash(bool show) {
  showHash_ = show;
  scrivletController_->setShowHash(show);
}

void QnScrivlet::setSwipeToUndoEnabled(bool enabled) {
  swipeToUndoEnabled_ = enabled;
  scrivletController_->setSwipeToUndoEnabled(enabled);
}

void QnScrivlet::setClipSignatureToBounds(bool clip) {
  clipSignatureToBounds_ = clip;
  scrivletController_->setClipSignatureToBounds(clip);
}

void QnScrivlet::setDrawOnlyWithApplePencil(bool stylusOnly) {
  drawOnlyWithApplePencil_ = stylusOnly;
  scrivletController_->setDrawOnlyWithApplePencil(stylusOnly);
}

void QnScrivlet::setUseCalligraphicBrush(bool calligraphic) {
  useCalligraphicBrush_ = calligraphic;
  scrivletController_->setUseCalligraphicBrush(calligraphic);
}

void QnScrivlet::setStrokeWidth(float width) {
  strokeWidth_ = width;
  scrivletController_->setStrokeWidthMax(width);
}

void QnScrivlet::setVelocityReduction(float reduction) {
  velocityReduction_ = reduction;
  scrivletController_->setVelocityReduction(reduction);
}

void QnScrivlet::setExportScale(float scale) {
  // Every output would be made of infinite numbers: refused, the scale stays as it was.
  if (!std::isfinite(scale))
    return logLine(LogLevel::warning, cformat("Scrivlet: export scale %g refused: not a finite number", scale));
  exportScale_ = scale;
  scrivletController_->setExportScale(scale);
}

void QnScrivlet::setStrokeColor(const QnColor& color) {
  strokeColor_ = color;
  scrivletController_->setStrokeExportColor(color);
}

void QnScrivlet::setCustomHash(std::optional<std::string> hash) {
  customHash_ = hash;
  scrivletController_->setCustomHash(std::move(hash));
}

}  // namespace scrivlet
