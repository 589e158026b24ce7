// The capture view of a program without a screen: the plain view model, with a snapshot of what it shows.
#pragma once

#include <scrivlet/export.h>
#include <scrivlet/engine/view.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace scrivlet {

class SCRIVLET_EXPORT HeadlessView : public QnView {
 public:
  static std::shared_ptr<HeadlessView> create(QnRect frame);
  explicit HeadlessView(QnRect frame);
  ~HeadlessView() override;

  // What the view and its subviews would show on a screen of the given scale, as PNG bytes.
  std::vector<uint8_t> snapshotPNG(double scale = 1.0);

  // Touch phases as a screen would report them. The view keeps the touches that are down: an event
  // holds those and the phase's own, and ended or cancelled touches leave after their phase. A
  // touch that the host no longer holds can never end: it no longer counts as down. A headless
  // touch's dropped samples are not delivered: one that has no location yet begins with its first
  // finite sample, and one that never had any ends unseen.
  void beginTouches(const QnTouchSet& touches);
  void moveTouches(const QnTouchSet& touches);
  void endTouches(const QnTouchSet& touches);
  void cancelTouches(const QnTouchSet& touches);
  QnTouchSet touchesDown() const;

 private:
  void deliver(QnTouchPhase phase, const QnTouchSet& touches);
  void deliverPhase(QnTouchPhase phase, const QnTouchSet& touches);
  struct Touches;
  std::unique_ptr<Touches> d_;
};

}  // namespace scrivlet
