// A transparent recognizer that hands every touch phase on the capture view to the controller.
#pragma once

#include <scrivlet/engine/gesture_recognizer.h>

#include <memory>

namespace scrivlet {

class QnScrivletController;

// It never steals or delays touches and never recognizes anything, so its action never runs.
class QnTouchesObserverGestureRecognizer : public QnGestureRecognizer {
 public:
  explicit QnTouchesObserverGestureRecognizer(Action action);

  std::shared_ptr<QnScrivletController> delegateController() const {
    return delegateController_.lock();
  }
  void setDelegateController(std::weak_ptr<QnScrivletController> controller) {
    delegateController_ = std::move(controller);
  }

  void touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent& event) override;

 private:
  std::weak_ptr<QnScrivletController> delegateController_;
};

}  // namespace scrivlet
