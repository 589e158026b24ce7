// Headless views.
#include <scrivlet/headless_view.h>

#include <scrivlet/headless_touch.h>

#include "platform/image.h"

#include <algorithm>

namespace scrivlet {

struct HeadlessView::Touches {
  std::vector<std::weak_ptr<QnTouch>> down;
  std::vector<std::weak_ptr<QnTouch>> waiting;  // begun without a location
};

std::shared_ptr<HeadlessView> HeadlessView::create(QnRect frame) { return std::make_shared<HeadlessView>(frame); }
HeadlessView::HeadlessView(QnRect frame) : QnView(frame), d_(std::make_unique<Touches>()) {}
HeadlessView::~HeadlessView() = default;

std::vector<uint8_t> HeadlessView::snapshotPNG(double scale) {
  return snapshotOfView(*this, scale).encodePNG();
}

void HeadlessView::beginTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::began, touches); }
void HeadlessView::moveTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::moved, touches); }
void HeadlessView::endTouches(const QnTouchSet& touches) { deliver(QnTouchPhase::ended, touches); }
void HeadlessView::cancelTouches(const QnTouchSet& touches) {
  deliver(QnTouchPhase::cancelled, touches);
}

namespace {

bool holds(const std::vector<std::weak_ptr<QnTouch>>& list, const std::shared_ptr<QnTouch>& touch) {
  return std::any_of(list.begin(), list.end(), [&](const auto& held) { return held.lock() == touch; });
}

void drop(std::vector<std::weak_ptr<QnTouch>>& list, const std::shared_ptr<QnTouch>& touch) {
  std::erase_if(list, [&](const auto& held) { return held.expired() || held.lock() == touch; });
}

}  // namespace

QnTouchSet HeadlessView::touchesDown() const {
  QnTouchSet down;
  for (const auto& held : d_->down)
    if (auto touch = held.lock()) down.push_back(touch);
  return down;
}

void HeadlessView::deliver(QnTouchPhase phase, const QnTouchSet& touches) {
  QnTouchSet ofPhase, landing;
  for (const auto& touch : touches) {
    if (!touch) continue;
    auto* headless = dynamic_cast<HeadlessTouch*>(touch.get());
    bool located = !headless || headless->hasLocation();
    if (holds(d_->waiting, touch)) {
      // Begun without a location: it begins with its first finite sample (and ends at once when
      // that comes with its end), or ends unseen.
      bool ending = phase == QnTouchPhase::ended || phase == QnTouchPhase::cancelled;
      if (located) landing.push_back(touch);
      if (located && ending) ofPhase.push_back(touch);
      if (located || ending) drop(d_->waiting, touch);
    } else if (phase == QnTouchPhase::began && !located) {
      d_->waiting.push_back(touch);
    } else if (phase != QnTouchPhase::moved || !headless || headless->keptLastSample()) {
      ofPhase.push_back(touch);
    }
  }
  if (!landing.empty()) deliverPhase(QnTouchPhase::began, landing);
  if (!ofPhase.empty()) deliverPhase(phase, ofPhase);
}

void HeadlessView::deliverPhase(QnTouchPhase phase, const QnTouchSet& touches) {
  std::erase_if(d_->down, [](const auto& held) { return held.expired(); });
  for (const auto& touch : touches)
    if (!holds(d_->down, touch)) d_->down.push_back(touch);
  QnEvent event(touchesDown());
  // Keep this view alive while a recognizer's action runs.
  auto self = shared_from_this();
  deliverTouches(phase, touches, event);
  if (phase == QnTouchPhase::ended || phase == QnTouchPhase::cancelled)
    for (const auto& touch : touches) drop(d_->down, touch);
}

}  // namespace scrivlet
