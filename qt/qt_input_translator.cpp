// Translating Qt's input events into touch phases.
#include "qt_input_translator.h"

#include "qt_touch.h"

#include <QMouseEvent>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QTouchEvent>

namespace scrivlet {

namespace {

constexpr qint64 kMouseKey = qint64(1) << 48;
constexpr qint64 kPenKeyBase = qint64(1) << 40;

double seconds(quint64 milliseconds) { return static_cast<double>(milliseconds) / 1000.0; }

QnPoint pointOf(const QPointF& p) { return {p.x(), p.y()}; }

// Mouse events that Qt makes up from touches or a pen: those arrive through their own events.
bool fromRealMouse(const QMouseEvent* event) {
  const QPointingDevice* device = event->pointingDevice();
  return !device || device->type() == QInputDevice::DeviceType::Mouse ||
         device->type() == QInputDevice::DeviceType::TouchPad;
}

qint64 penKey(const QTabletEvent* event) {
  // Each pen is its own touch: told apart by its device, since a pen need not report a serial.
  const QPointingDevice* device = event->pointingDevice();
  return kPenKeyBase + (device ? (device->systemId() & 0xffffff) : 0);
}

}  // namespace

std::shared_ptr<QtTouch> QtInputTranslator::touchFor(qint64 key, int type) {
  auto& touch = down_[key];
  if (!touch) touch = std::make_shared<QtTouch>(type);
  return touch;
}

void QtInputTranslator::deliver(QnTouchPhase phase, const QnTouchSet& touches) {
  if (touches.empty()) return;
  QnTouchSet all;
  for (const auto& [key, touch] : down_) all.push_back(touch);
  // Keep the view alive while a recognizer runs, whatever the host does meanwhile.
  std::shared_ptr<QnView> view = view_;
  view->deliverTouches(phase, touches, QnEvent(all));
}

bool QtInputTranslator::penDown(const QTabletEvent* event) const { return down_.count(penKey(event)) > 0; }

void QtInputTranslator::touch(QTouchEvent* event, const Placement& place) {
  double time = seconds(event->timestamp());
  if (event->type() == QEvent::TouchCancel) {
    QnTouchSet cancelled;
    for (auto it = down_.begin(); it != down_.end();) {
      if (it->first < kPenKeyBase) {
        cancelled.push_back(it->second);
        it = down_.erase(it);
      } else {
        ++it;
      }
    }
    if (!cancelled.empty()) view_->deliverTouches(QnTouchPhase::cancelled, cancelled, QnEvent(cancelled));
    return;
  }
  bool pressure = event->pointingDevice() &&
                  event->pointingDevice()->capabilities().testFlag(QInputDevice::Capability::Pressure);
  // The points whose state changed form each phase's set; two fingers landing together are one.
  QnTouchSet began, moved, ended;
  for (const QEventPoint& point : event->points()) {
    std::optional<QPointF> at = place ? place(point) : std::optional(point.position());
    if (!at) continue;
    std::shared_ptr<QtTouch> touch = touchFor(point.id(), kQnTouchTypeDirect);
    touch->moveTo(pointOf(*at), time);
    touch->setPressure(pressure ? std::optional<double>(point.pressure()) : std::nullopt);
    switch (point.state()) {
      case QEventPoint::State::Pressed: began.push_back(touch); break;
      case QEventPoint::State::Updated: moved.push_back(touch); break;
      case QEventPoint::State::Released: ended.push_back(touch); break;
      default: break;
    }
  }
  deliver(QnTouchPhase::began, began);
  deliver(QnTouchPhase::moved, moved);
  deliver(QnTouchPhase::ended, ended);
  for (const QEventPoint& point : event->points())
    if (point.state() == QEventPoint::State::Released) down_.erase(point.id());
}

void QtInputTranslator::tablet(QTabletEvent* event, std::optional<QPointF> at) {
  event->accept();
  qint64 key = penKey(event);
  bool down = down_.count(key) > 0;
  QnTouchPhase phase;
  switch (event->type()) {
    case QEvent::TabletPress: phase = QnTouchPhase::began; break;
    case QEvent::TabletMove:
      if (!down) return;  // a pen hovering draws nothing
      phase = QnTouchPhase::moved;
      break;
    case QEvent::TabletRelease:
      if (!down) return;
      phase = QnTouchPhase::ended;
      break;
    default: return;
  }
  std::shared_ptr<QtTouch> touch = touchFor(key, kQnTouchTypeStylus);
  touch->setOffersPreciseLocation(true);
  touch->moveTo(pointOf(at.value_or(event->position())), seconds(event->timestamp()));
  touch->setPressure(event->pressure());
  touch->setTilt(event->xTilt(), event->yTilt());
  deliver(phase, {touch});
  if (phase == QnTouchPhase::ended) down_.erase(key);
}

void QtInputTranslator::mousePress(QMouseEvent* event) {
  if (!fromRealMouse(event) || event->button() != Qt::LeftButton || down_.count(kMouseKey)) return;
  std::shared_ptr<QtTouch> touch = touchFor(kMouseKey, kQnTouchTypeDirect);
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::began, {touch});
}

void QtInputTranslator::mouseMove(QMouseEvent* event) {
  auto found = down_.find(kMouseKey);
  if (!fromRealMouse(event) || found == down_.end()) return;
  std::shared_ptr<QtTouch> touch = found->second;
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::moved, {touch});
}

void QtInputTranslator::mouseRelease(QMouseEvent* event) {
  auto found = down_.find(kMouseKey);
  if (!fromRealMouse(event) || event->button() != Qt::LeftButton || found == down_.end()) return;
  std::shared_ptr<QtTouch> touch = found->second;
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::ended, {touch});
  down_.erase(kMouseKey);
}

void QtInputTranslator::endAll() {
  // Each touch still down ends where it last was, so its stroke is kept.
  while (!down_.empty()) {
    auto [key, touch] = *down_.begin();
    touch->moveTo(touch->locationInView(nullptr), touch->timestamp());
    deliver(QnTouchPhase::ended, {touch});
    down_.erase(key);
  }
}

}  // namespace scrivlet
