// The capture widget: Qt input to touch phases, geometry to the view's frame, and painting.
#include <scrivlet/qt_capture_widget.h>

#include "qt_input_translator.h"
#include "qt_view_painter.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTabletEvent>
#include <QTouchEvent>

#include <cmath>

namespace scrivlet {

QnQtCaptureWidget::QnQtCaptureWidget(QWidget* parent, std::shared_ptr<QnView> view)
    : QnQtCaptureWidget(parent, view ? view : std::make_shared<QnView>(), nullptr) {}

QnQtCaptureWidget::QnQtCaptureWidget(QWidget* parent, std::shared_ptr<QnView> view, QtInputTranslator* input)
    : QWidget(parent),
      view_(std::move(view)),
      ownInput_(input ? nullptr : std::make_unique<QtInputTranslator>(view_)),
      input_(input ? input : ownInput_.get()) {
  setAttribute(Qt::WA_AcceptTouchEvents);
  setAttribute(Qt::WA_OpaquePaintEvent, false);
  setFocusPolicy(Qt::StrongFocus);
  view_->setDisplayRequestHandler([this](const QnRect& rect) {
    update(QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).toAlignedRect());
  });
  // A view that already has a size gives the widget its size; a new one takes the widget's.
  QnSize size = view_->frame().size;
  if (size.width > 0 && size.height > 0)
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

bool QnQtCaptureWidget::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
      // Refused touches go on to QWidget, which leaves them unaccepted.
      if (!takesInput() && event->type() != QEvent::TouchCancel) break;
      input_->touch(static_cast<QTouchEvent*>(event));
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

// Moves and releases are still followed when input stops being taken mid-stroke: the stroke has been
// ended then, and they draw nothing.
void QnQtCaptureWidget::tabletEvent(QTabletEvent* event) {
  if (takesInput() || event->type() != QEvent::TabletPress) input_->tablet(event);
}
void QnQtCaptureWidget::mousePressEvent(QMouseEvent* event) {
  if (takesInput()) input_->mousePress(event);
}
void QnQtCaptureWidget::mouseMoveEvent(QMouseEvent* event) { input_->mouseMove(event); }
void QnQtCaptureWidget::mouseReleaseEvent(QMouseEvent* event) { input_->mouseRelease(event); }
void QnQtCaptureWidget::endAllTouches() { input_->endAll(); }

void QnQtCaptureWidget::focusOutEvent(QFocusEvent* event) {
  QWidget::focusOutEvent(event);
  endAllTouches();
}

void QnQtCaptureWidget::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::EnabledChange && !isEnabled()) endAllTouches();
}

void QnQtCaptureWidget::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  endAllTouches();
}

void QnQtCaptureWidget::paintEvent(QPaintEvent* event) {
  // Only the dirty region is drawn: live ink asks for a small rectangle around its newest segment.
  QRect area = event->region().boundingRect() & rect();
  if (area.isEmpty()) return;
  qreal ratio = devicePixelRatioF();
  QImage canvas = renderViewTree(*view_, area, ratio);
  QPainter painter(this);
  painter.setClipRegion(event->region());
  // The image starts on the device pixel at or before the area's corner.
  painter.drawImage(QPointF(std::floor(area.x() * ratio), std::floor(area.y() * ratio)) / ratio, canvas);
}

}  // namespace scrivlet
