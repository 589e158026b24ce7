// Completion: the record prepared in the background after each stroke, and the delegate calls.
#include <scrivlet/scrivlet_controller.h>

#include <scrivlet/context.h>
#include <scrivlet/scheduler.h>
#include <scrivlet/signature.h>

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
  preparer->setStrokeExportColor(strokeExportColor_);
  preparer->setVelocityReduction(velocityReduction_);
  preparer->setShowDate(showDate_);
  preparer->setDateIncludesTime(dateIncludesTime_);
  preparer->setShowHash(showHash_);
  preparer->setCustomHash(customHash_);
  preparer->setExportScale(exportScale_);
  preparer->setClipSignatureToBounds(clipSignatureToBounds_);
  cachedSignature_ = nullptr;
  invalidateCacheTimer();

  std::weak_ptr<QnScrivletController> weakSelf = weak_from_this();
  QnScheduler* scheduler = &context().scheduler();
  cacheTimerBlock_ = [weakSelf, preparer, scheduler] {
    scheduler->runInBackground([weakSelf, preparer, scheduler]() mutable {
      preparer->prepareScrivletData();
      // The preparer travels on to the main thread, so that its last reference is dropped there
      // and never with this closure on the background thread.
      scheduler->postToMainThread([weakSelf, preparer = std::move(preparer)] {
        std::shared_ptr<QnScrivletController> self = weakSelf.lock();
        if (!self) return;
        // No generation check: the last preparation to finish wins.
        self->cachedSignature_ = preparer->prepareSignature();
        if (self->willBeDoneCallbackRequested_) {
          self->willBeDoneCallbackRequested_ = 0;
          self->tellDelegate(&QnScrivletControllerDelegate::scrivletWillCompleteWithSignature,
                             self->cachedSignature_);
        }
        if (self->doneCallbackRequested_) {
          self->doneCallbackRequested_ = 0;
          self->tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithSignature,
                             self->cachedSignature_);
        }
      });
    });
  };
  cacheTimer_ = scheduler->scheduleTimer(delay, [weakSelf] {
    if (auto self = weakSelf.lock()) self->runTimerBlockWithTimer(self->cacheTimer_.get());
  });
}

void QnScrivletController::runTimerBlockWithTimer(QnTimer*) {
  if (cacheTimerBlock_) cacheTimerBlock_();
}

void QnScrivletController::invalidateCacheTimer() {
  if (cacheTimer_) cacheTimer_->invalidate();
}

void QnScrivletController::willBeDone(const void*) {
  if (!drawingController_ || drawingController_->drawingArray()->empty()) return;
  if (!cachedSignature_) {
    willBeDoneCallbackRequested_ = 1;
    return;
  }
  tellDelegate(&QnScrivletControllerDelegate::scrivletWillCompleteWithSignature, cachedSignature_);
}

void QnScrivletController::done(const void*) {
  if (!drawingController_ || drawingController_->drawingArray()->empty()) {
    tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithNoSignature);
    return;
  }
  if (!cachedSignature_) {
    doneCallbackRequested_ = 1;
    return;
  }
  tellDelegate(&QnScrivletControllerDelegate::scrivletDidCompleteWithSignature, cachedSignature_);
}

void QnScrivletController::reset(const void*) {
  if (drawingController_) drawingController_->resetCanvas();
}

void QnScrivletController::didDismissModalView() {
  tellDelegate(&QnScrivletControllerDelegate::scrivletDidCancelModalView);
}

}  // namespace scrivlet
