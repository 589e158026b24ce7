// Presenting and dismissing the modal container.
#include <scrivlet/engine/navigation_controller.h>

#include <scrivlet/engine/scheduler.h>

namespace scrivlet {

void QnNavigationController::setPresented(bool presented, DismissHandler dismissHandler) {
  presented_ = presented;
  dismissHandler_ = std::move(dismissHandler);
}

void QnNavigationController::dismissViewControllerAnimatedCompletion(bool animated,
                                                                     std::function<void()> completion) {
  presented_ = false;
  DismissHandler handler = std::move(dismissHandler_);
  dismissHandler_ = nullptr;
  if (handler) {
    handler(animated, std::move(completion));
  } else if (completion) {
    // As an animation would, the completion comes after the current event.
    (schedulerProvider_ ? schedulerProvider_() : QnScheduler::current()).postToMainThread(std::move(completion));
  }
}

}  // namespace scrivlet
