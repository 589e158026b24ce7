// Headless views.
#include <scrivlet/headless_view.h>

#include "platform/image.h"

#include <algorithm>

namespace scrivlet {

std::vector<uint8_t> HeadlessView::snapshotPNG(double scale) {
  return snapshotOfView(*this, scale).encodePNG();
}

void HeadlessView::beginTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::began, touches); }
void HeadlessView::moveTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::moved, touches); }
void HeadlessView::endTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::ended, touches); }
void HeadlessView::cancelTouches(const QnTouchSet& touches) {
  deliver(QnTouchPhase::cancelled, touches);
}

void HeadlessView::deliver(QnTouchPhase phase, const QnTouchSet& touches) {
  for (const auto& touch : touches)
    if (touch && std::find(down_.begin(), down_.end(), touch) == down_.end()) down_.push_back(touch);
  QnEvent event(down_);
  // Keep this view alive while a recognizer's action runs.
  auto self = shared_from_this();
  deliverTouches(phase, touches, event);
  if (phase == QnTouchPhase::ended || phase == QnTouchPhase::cancelled)
    for (const auto& touch : touches) down_.erase(std::remove(down_.begin(), down_.end(), touch), down_.end());
}

}  // namespace scrivlet
