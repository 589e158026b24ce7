// Completion: the record prepared in the background after each stroke, and the delegate calls.
#include <scrivlet/engine/scrivlet_controller.h>

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/scheduler.h>
#include <scrivlet/engine/signature.h>

#include "capture/drawing_controller.h"

namespace scrivlet {

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
  preparer->setShowDate(settings_.showDate);
  preparer->setDateIncludesTime(settings_.dateIncludesTime);
  preparer->setShowHash(settings_.showHash);
  preparer->setCustomHash(settings_.customHash);
  preparer->setExportScale(settings_.exportScale);
  preparer->setClipSignatureToBounds(settings_.clipSignatureToBounds);
  completion_.cachedSignature = nullptr;
  invalidateCacheTimer();

  std::weak_ptr<QnScrivletController> weakSelf = weak_from_this();
  QnScheduler* scheduler = &context().scheduler();
  completion_.cacheTimerBlock = [weakSelf, preparer, scheduler] {
    scheduler->runInBackground([weakSelf, preparer, scheduler]() mutable {
      preparer->prepareScrivletData();
      // The preparer travels on to the main thread, so that its last reference is dropped there
      // and never with this closure on the background thread.
      scheduler->postToMainThread([weakSelf, preparer = std::move(preparer)] {
        std::shared_ptr<QnScrivletController> self = weakSelf.lock();
        if (!self) return;
        // No generation check: the last preparation to finish wins.
        self->completion_.cachedSignature = preparer->prepareSignature();
        if (self->completion_.willBeDoneCallbackRequested) {
          self->completion_.willBeDoneCallbackRequested = 0;
          self->tellDelegate(&QnScrivletControllerDelegate::scrivletWillCompleteWithSignature,
                             self->completion_.cachedSignature);
        }
        if (self->completion_.doneCallbackRequested) {
          self->completion_.doneCallbackRequested = 0;
          self->tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithSignature,
                             self->completion_.cachedSignature);
        }
      });
    });
  };
  completion_.cacheTimer = scheduler->scheduleTimer(delay, [weakSelf] {
    if (auto self = weakSelf.lock()) self->runTimerBlockWithTimer(self->completion_.cacheTimer.get());
  });
}

void QnScrivletController::runTimerBlockWithTimer(QnTimer*) {
  if (completion_.cacheTimerBlock) completion_.cacheTimerBlock();
}

void QnScrivletController::invalidateCacheTimer() {
  if (completion_.cacheTimer) completion_.cacheTimer->invalidate();
}

void QnScrivletController::willBeDone(const void*) {
  if (!drawingController_ || drawingController_->drawingArray()->empty()) return;
  if (!completion_.cachedSignature) {
    completion_.willBeDoneCallbackRequested = 1;
    return;
  }
  tellDelegate(&QnScrivletControllerDelegate::scrivletWillCompleteWithSignature, completion_.cachedSignature);
}

void QnScrivletController::done(const void*) {
  if (!drawingController_ || drawingController_->drawingArray()->empty()) {
    tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithNoSignature);
    return;
  }
  if (!completion_.cachedSignature) {
    completion_.doneCallbackRequested = 1;
    return;
  }
  tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithSignature, completion_.cachedSignature);
}

void QnScrivletController::reset(const void*) {
  if (drawingController_) drawingController_->resetCanvas();
}

void QnScrivletController::didDismissModalView() {
  tellDelegate(&QnScrivletControllerDelegate::scrivletDidCancelModalView);
}

}  // namespace scrivlet
