// Gesture recognizers, and the sideways swipe of several fingers.
#include <scrivlet/engine/gesture_recognizer.h>

#include <cmath>

namespace scrivlet {

void QnGestureRecognizer::touchesBeganWithEvent(const QnTouchSet&, const QnEvent&) {}
void QnGestureRecognizer::touchesMovedWithEvent(const QnTouchSet&, const QnEvent&) {}
void QnGestureRecognizer::touchesEndedWithEvent(const QnTouchSet&, const QnEvent&) {}
void QnGestureRecognizer::touchesCancelledWithEvent(const QnTouchSet&, const QnEvent&) {}

void QnGestureRecognizer::fireAction() {
  if (action_) action_(*this);
}

namespace {

// The centre of all touches on the view, or nothing while any position is unknown.
bool centroid(const QnTouchSet& touches, QnPoint& centre) {
  if (touches.empty()) return false;
  double x = 0, y = 0;
  for (const auto& touch : touches) {
    QnPoint p = touch->locationInView(nullptr);
    x += p.x;
    y += p.y;
  }
  centre = {x / touches.size(), y / touches.size()};
  return std::isfinite(centre.x) && std::isfinite(centre.y);
}

}  // namespace

QnSwipeGestureRecognizer::QnSwipeGestureRecognizer(int direction, int numberOfTouchesRequired)
    : direction_(direction), numberOfTouchesRequired_(numberOfTouchesRequired) {}

void QnSwipeGestureRecognizer::touchesBeganWithEvent(const QnTouchSet&, const QnEvent& event) {
  int count = static_cast<int>(event.touchesForGestureRecognizer(this).size());
  if (state_ == State::done) return;
  // The swipe starts once all its fingers are down; one more finger spoils it.
  if (count == numberOfTouchesRequired_ && centroid(event.allTouches(), start_))
    state_ = State::tracking;
  else if (count > numberOfTouchesRequired_)
    state_ = State::done;
}

void QnSwipeGestureRecognizer::touchesMovedWithEvent(const QnTouchSet&, const QnEvent& event) {
  if (state_ != State::tracking) return;
  QnPoint now;
  if (static_cast<int>(event.allTouches().size()) != numberOfTouchesRequired_ ||
      !centroid(event.allTouches(), now))
    return;
  double dx = now.x - start_.x, dy = now.y - start_.y;
  bool sideways = std::fabs(dx) >= kMinimumTravel && std::fabs(dy) <= std::fabs(dx) * 0.5;
  bool rightWay = direction_ == kQnSwipeDirectionRight ? dx > 0 : dx < 0;
  if (sideways) {
    state_ = State::done;
    if (rightWay) fireAction();
  }
}

void QnSwipeGestureRecognizer::touchesEndedWithEvent(const QnTouchSet& touches,
                                                     const QnEvent& event) {
  finishIfLifted(touches, event);
}

void QnSwipeGestureRecognizer::touchesCancelledWithEvent(const QnTouchSet& touches,
                                                         const QnEvent& event) {
  finishIfLifted(touches, event);
}

void QnSwipeGestureRecognizer::finishIfLifted(const QnTouchSet& touches, const QnEvent& event) {
  // A lifted finger ends the attempt; the next starts when every finger has been lifted.
  if (state_ == State::tracking) state_ = State::done;
  if (event.allTouches().size() <= touches.size()) reset();
}

void QnSwipeGestureRecognizer::reset() { state_ = State::possible; }

}  // namespace scrivlet
