// The observer recognizer passes each phase on after the base recognizer has seen it.
#include "controller/touches_observer_gesture_recognizer.h"

#include <scrivlet/engine/scrivlet_controller.h>

namespace scrivlet {

QnTouchesObserverGestureRecognizer::QnTouchesObserverGestureRecognizer(Action action) {
  setAction(std::move(action));
  setCancelsTouchesInView(false);
  setDelaysTouchesBegan(false);
  setDelaysTouchesEnded(false);
}

void QnTouchesObserverGestureRecognizer::touchesBeganWithEvent(const QnTouchSet& touches,
                                                               const QnEvent& event) {
  QnGestureRecognizer::touchesBeganWithEvent(touches, event);
  if (auto controller = delegateController()) controller->touchesBeganWithEvent(touches, event);
}

void QnTouchesObserverGestureRecognizer::touchesMovedWithEvent(const QnTouchSet& touches,
                                                               const QnEvent& event) {
  QnGestureRecognizer::touchesMovedWithEvent(touches, event);
  if (auto controller = delegateController()) controller->touchesMovedWithEvent(touches, event);
}

void QnTouchesObserverGestureRecognizer::touchesEndedWithEvent(const QnTouchSet& touches,
                                                               const QnEvent& event) {
  QnGestureRecognizer::touchesEndedWithEvent(touches, event);
  if (auto controller = delegateController()) controller->touchesEndedWithEvent(touches, event);
}

void QnTouchesObserverGestureRecognizer::touchesCancelledWithEvent(const QnTouchSet& touches,
                                                                   const QnEvent& event) {
  QnGestureRecognizer::touchesCancelledWithEvent(touches, event);
  if (auto controller = delegateController()) controller->touchesCancelledWithEvent(touches, event);
}

}  // namespace scrivlet
