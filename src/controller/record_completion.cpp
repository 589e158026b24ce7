#include "controller/record_completion.h"

#include <scrivlet/engine/scheduler.h>
#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/engine/signature.h>

namespace scrivlet {

QnRecordCompletion::QnRecordCompletion(Answers answers) : answers_(std::move(answers)) {}

void QnRecordCompletion::prepareAfterDelay(std::shared_ptr<QnScrivletController> preparer,
                                           std::weak_ptr<QnScrivletController> owner, QnScheduler& scheduler,
                                           double delay) {
  cachedSignature = nullptr;
  invalidateTimer();
  // The owner holds this completion: while it lives, so does this.
  cacheTimerBlock = [this, owner, preparer, scheduler = &scheduler] {
    scheduler->runInBackground([this, owner, preparer, scheduler]() mutable {
      preparer->prepareScrivletData();
      // The preparer travels on to the main thread, so that its last reference is dropped there
      // and never with this closure on the background thread.
      scheduler->postToMainThread([this, owner, preparer = std::move(preparer)] {
        // The owner is kept while the host is answered, whatever the host does with it.
        std::shared_ptr<QnScrivletController> alive = owner.lock();
        if (!alive) return;
        // No generation check: the last preparation to finish wins.
        prepared(preparer->prepareSignature());
      });
    });
  };
  cacheTimer = scheduler.scheduleTimer(delay, [this, owner] {
    if (auto alive = owner.lock()) runTimerBlock();
  });
}

void QnRecordCompletion::prepared(std::shared_ptr<QnSignature> record) {
  cachedSignature = std::move(record);
  if (willBeDoneCallbackRequested) {
    willBeDoneCallbackRequested = 0;
    answers_.willComplete(cachedSignature);
  }
  if (doneCallbackRequested) {
    doneCallbackRequested = 0;
    answers_.didComplete(cachedSignature);
  }
}

void QnRecordCompletion::runTimerBlock() {
  if (cacheTimerBlock) cacheTimerBlock();
}

void QnRecordCompletion::invalidateTimer() {
  if (cacheTimer) cacheTimer->invalidate();
}

void QnRecordCompletion::willBeDone(bool canvasIsEmpty) {
  if (canvasIsEmpty) return;
  if (!cachedSignature) {
    willBeDoneCallbackRequested = 1;
    return;
  }
  answers_.willComplete(cachedSignature);
}

void QnRecordCompletion::done(bool canvasIsEmpty) {
  if (canvasIsEmpty) {
    answers_.didCompleteWithNothing();
    return;
  }
  if (!cachedSignature) {
    doneCallbackRequested = 1;
    return;
  }
  answers_.didComplete(cachedSignature);
}

}  // namespace scrivlet
