// The capture widget: Qt input to touch phases, geometry to the view's frame, and painting.
#include <scrivlet/qt_capture_widget.h>

#include "platform/cairo_context.h"
#include "qt_touch.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPointingDevice>
#include <QTabletEvent>
#include <QTouchEvent>

#include <cairo.h>

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

}  // namespace

QnQtCaptureWidget::QnQtCaptureWidget(QWidget* parent, std::shared_ptr<QnView> view)
    : QWidget(parent), view_(view ? view : std::make_shared<QnView>()) {
  setAttribute(Qt::WA_AcceptTouchEvents);
  setAttribute(Qt::WA_OpaquePaintEvent, false);
  setFocusPolicy(Qt::StrongFocus);
  view_->setDisplayRequestHandler([this](const QnRect& rect) {
    update(QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).toAlignedRect());
  });
  // A view that already has a size gives the widget its size; a new one takes the widget's.
  QnSize size = view_->frame().size;
  if (view && size.width > 0 && size.height > 0)
    resize(static_cast<int>(size.width), static_cast<int>(size.height));
  updateFrame();
}

QnQtCaptureWidget::~QnQtCaptureWidget() { view_->setDisplayRequestHandler(nullptr); }

void QnQtCaptureWidget::updateFrame() {
  QRect g = geometry();
  view_->setFrame(makeRect(g.x(), g.y(), g.width(), g.height()));
}

void QnQtCaptureWidget::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  updateFrame();
}

void QnQtCaptureWidget::moveEvent(QMoveEvent* event) {
  QWidget::moveEvent(event);
  updateFrame();
}

std::shared_ptr<QtTouch> QnQtCaptureWidget::touchFor(qint64 key, int type) {
  auto& touch = down_[key];
  if (!touch) touch = std::make_shared<QtTouch>(type);
  return touch;
}

void QnQtCaptureWidget::forget(qint64 key) { down_.erase(key); }

void QnQtCaptureWidget::deliver(QnTouchPhase phase, const QnTouchSet& touches) {
  if (touches.empty()) return;
  QnTouchSet all;
  for (const auto& [key, touch] : down_) all.push_back(touch);
  // Keep the view alive while a recognizer runs, whatever the host does meanwhile.
  std::shared_ptr<QnView> view = view_;
  view->deliverTouches(phase, touches, QnEvent(all));
}

bool QnQtCaptureWidget::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      handleTouchEvent(static_cast<QTouchEvent*>(event));
      event->accept();
      return true;
    case QEvent::WindowDeactivate:
      endAllTouches();
      break;
    default:
      break;
  }
  return QWidget::event(event);
}

void QnQtCaptureWidget::handleTouchEvent(QTouchEvent* event) {
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
    std::shared_ptr<QtTouch> touch = touchFor(point.id(), kQnTouchTypeDirect);
    touch->moveTo(pointOf(point.position()), time);
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
    if (point.state() == QEventPoint::State::Released) forget(point.id());
}

void QnQtCaptureWidget::tabletEvent(QTabletEvent* event) {
  event->accept();
  // Each pen is its own touch: told apart by its device, since a pen need not report a serial.
  const QPointingDevice* device = event->pointingDevice();
  qint64 key = kPenKeyBase + (device ? (device->systemId() & 0xffffff) : 0);
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
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  touch->setPressure(event->pressure());
  touch->setTilt(event->xTilt(), event->yTilt());
  deliver(phase, {touch});
  if (phase == QnTouchPhase::ended) forget(key);
}

void QnQtCaptureWidget::mousePressEvent(QMouseEvent* event) {
  if (!fromRealMouse(event) || event->button() != Qt::LeftButton || down_.count(kMouseKey)) return;
  std::shared_ptr<QtTouch> touch = touchFor(kMouseKey, kQnTouchTypeDirect);
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::began, {touch});
}

void QnQtCaptureWidget::mouseMoveEvent(QMouseEvent* event) {
  auto found = down_.find(kMouseKey);
  if (!fromRealMouse(event) || found == down_.end()) return;
  std::shared_ptr<QtTouch> touch = found->second;
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::moved, {touch});
}

void QnQtCaptureWidget::mouseReleaseEvent(QMouseEvent* event) {
  auto found = down_.find(kMouseKey);
  if (!fromRealMouse(event) || event->button() != Qt::LeftButton || found == down_.end()) return;
  std::shared_ptr<QtTouch> touch = found->second;
  touch->moveTo(pointOf(event->position()), seconds(event->timestamp()));
  deliver(QnTouchPhase::ended, {touch});
  forget(kMouseKey);
}

void QnQtCaptureWidget::endAllTouches() {
  // Each touch still down ends where it last was, so its stroke is kept.
  while (!down_.empty()) {
    auto [key, touch] = *down_.begin();
    touch->moveTo(touch->locationInView(nullptr), touch->timestamp());
    deliver(QnTouchPhase::ended, {touch});
    forget(key);
  }
}

void QnQtCaptureWidget::focusOutEvent(QFocusEvent* event) {
  QWidget::focusOutEvent(event);
  endAllTouches();
}

void QnQtCaptureWidget::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  endAllTouches();
}

void QnQtCaptureWidget::paintEvent(QPaintEvent* event) {
  qreal ratio = devicePixelRatioF();
  QImage canvas((QSizeF(size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  // The view tree draws through cairo straight into the image's pixels, at the screen's ratio.
  cairo_surface_t* surface = cairo_image_surface_create_for_data(
      canvas.bits(), CAIRO_FORMAT_ARGB32, canvas.width(), canvas.height(), canvas.bytesPerLine());
  cairo_t* cr = cairo_create(surface);
  cairo_scale(cr, ratio, ratio);
  {
    CairoContext context(cr);
    view_->displayInContext(context);
  }
  cairo_destroy(cr);
  cairo_surface_finish(surface);
  cairo_surface_destroy(surface);
  canvas.setDevicePixelRatio(ratio);
  QPainter painter(this);
  painter.setClipRegion(event->region());
  painter.drawImage(QPointF(0, 0), canvas);
}

}  // namespace scrivlet
