// Gesture recognizers: objects a view hands every touch phase to.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/touch.h>

#include <functional>
#include <memory>

namespace scrivlet {

class SCRIVLET_EXPORT QnGestureRecognizer {
 public:
  using Action = std::function<void(QnGestureRecognizer& sender)>;

  virtual ~QnGestureRecognizer() = default;

  virtual void touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event);
  virtual void touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event);
  virtual void touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent& event);
  virtual void touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent& event);
  virtual void reset() {}

  void setAction(Action action) { action_ = std::move(action); }
  // Whether the recognizer withholds touches from the view, or delays their delivery.
  bool cancelsTouchesInView() const { return cancelsTouchesInView_; }
  void setCancelsTouchesInView(bool cancels) { cancelsTouchesInView_ = cancels; }
  bool delaysTouchesBegan() const { return delaysTouchesBegan_; }
  void setDelaysTouchesBegan(bool delays) { delaysTouchesBegan_ = delays; }
  bool delaysTouchesEnded() const { return delaysTouchesEnded_; }
  void setDelaysTouchesEnded(bool delays) { delaysTouchesEnded_ = delays; }

 protected:
  // Runs the action, as a recognized gesture does.
  void fireAction();

 private:
  Action action_;
  bool cancelsTouchesInView_ = true;
  bool delaysTouchesBegan_ = false;
  bool delaysTouchesEnded_ = true;
};

enum QnSwipeDirection { kQnSwipeDirectionRight = 1, kQnSwipeDirectionLeft = 2 };

// A horizontal swipe of a given number of fingers; the action runs once per swipe.
class SCRIVLET_EXPORT QnSwipeGestureRecognizer : public QnGestureRecognizer {
 public:
  QnSwipeGestureRecognizer(int direction, int numberOfTouchesRequired);

  int direction() const { return direction_; }
  int numberOfTouchesRequired() const { return numberOfTouchesRequired_; }

  // How far, in points, the fingers must travel sideways.
  static constexpr double kMinimumTravel = 50;

  void touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesMovedWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent& event) override;
  void reset() override;

 private:
  enum class State { possible, tracking, done };
  void finishIfLifted(const QnTouchSet& touches, const QnEvent& event);

  int direction_;
  int numberOfTouchesRequired_;
  State state_ = State::possible;
  QnPoint start_;
};

}  // namespace scrivlet
