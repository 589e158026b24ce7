// The Qt Quick signature area: a plain view signed on through the shared input translation, painted
// through cairo, with the pad's settings, session and signals.
#include <scrivlet/signature_area.h>

#include <scrivlet/qt_platform.h>

#include "qt_input_translator.h"
#include "qt_view_painter.h"
#include "signature_settings.h"

#include <QPainter>
#include <QQuickWindow>
#include <QTabletEvent>
#include <QtQml>

namespace scrivlet {

void registerScrivletQuickTypes() {
  qRegisterMetaType<SignatureRecord>();
  qmlRegisterType<SignatureArea>("Scrivlet", 1, 0, "SignatureArea");
}

SignatureArea::SignatureArea(QQuickItem* parent)
    : QQuickPaintedItem(parent),
      // Not empty, so that the guideline is placed before the item gets its size (a guideline first
      // placed on an empty view stays empty).
      view_(std::make_shared<QnView>(makeRect(0, 0, 1, 1))) {
  static const bool installed = (installQtPlatform(), true);
  (void)installed;
  setAcceptedMouseButtons(Qt::LeftButton);
  setAcceptTouchEvents(true);
  setFlag(ItemAcceptsInputMethod, false);
  view_->setDisplayRequestHandler([this](const QnRect&) { update(); });
  input_ = std::make_unique<QtInputTranslator>(view_);
  session_ = std::make_unique<SignatureSession>(view_);
  settings_ = std::make_unique<SignatureSettings>(*session_);
  session_->strokeEnded = [this](unsigned long points) {
    noticeChanges();
    emit strokeEnded(int(std::min<unsigned long>(points, INT_MAX)));
  };
  session_->signatureReady = [this](std::shared_ptr<QnSignature> record) { emit signatureReady(SignatureRecord(record)); };
  session_->signedNothing = [this] { emit signedNothing(); };
}

SignatureArea::~SignatureArea() { view_->setDisplayRequestHandler(nullptr); }

QColor SignatureArea::penColor() const { return settings_->penColor; }
void SignatureArea::setPenColor(const QColor& value) {
  if (settings_->setPenColor(value)) {
    emit penColorChanged(settings_->penColor);
  }
}

double SignatureArea::penWidth() const { return settings_->penWidth; }
void SignatureArea::setPenWidth(double value) {
  if (settings_->setPenWidth(value)) {
    emit penWidthChanged(settings_->penWidth);
  }
}

double SignatureArea::velocityReduction() const { return settings_->velocityReduction; }
void SignatureArea::setVelocityReduction(double value) {
  if (settings_->setVelocityReduction(value)) {
    emit velocityReductionChanged(settings_->velocityReduction);
  }
}

bool SignatureArea::calligraphic() const { return settings_->calligraphic; }
void SignatureArea::setCalligraphic(bool value) {
  if (settings_->setCalligraphic(value)) {
    emit calligraphicChanged(settings_->calligraphic);
  }
}

bool SignatureArea::guidelineVisible() const { return settings_->guidelineVisible; }
void SignatureArea::setGuidelineVisible(bool value) {
  if (settings_->setGuidelineVisible(value)) {
    emit guidelineVisibleChanged(settings_->guidelineVisible);
  }
}

bool SignatureArea::stylusOnly() const { return settings_->stylusOnly; }
void SignatureArea::setStylusOnly(bool value) {
  if (settings_->setStylusOnly(value)) {
    emit stylusOnlyChanged(settings_->stylusOnly);
  }
}

bool SignatureArea::swipeToUndo() const { return settings_->swipeToUndo; }
void SignatureArea::setSwipeToUndo(bool value) {
  if (settings_->setSwipeToUndo(value)) {
    emit swipeToUndoChanged(settings_->swipeToUndo);
  }
}

double SignatureArea::exportScale() const { return settings_->exportScale; }
void SignatureArea::setExportScale(double value) {
  if (settings_->setExportScale(value)) {
    emit exportScaleChanged(settings_->exportScale);
  }
}

bool SignatureArea::dateStamp() const { return settings_->dateStamp; }
void SignatureArea::setDateStamp(bool value) {
  if (settings_->setDateStamp(value)) {
    emit dateStampChanged(settings_->dateStamp);
  }
}

bool SignatureArea::timeStamp() const { return settings_->timeStamp; }
void SignatureArea::setTimeStamp(bool value) {
  if (settings_->setTimeStamp(value)) {
    emit timeStampChanged(settings_->timeStamp);
  }
}

bool SignatureArea::hashStamp() const { return settings_->hashStamp; }
void SignatureArea::setHashStamp(bool value) {
  if (settings_->setHashStamp(value)) {
    emit hashStampChanged(settings_->hashStamp);
  }
}

QString SignatureArea::customHash() const { return settings_->customHash; }
void SignatureArea::setCustomHash(const QString& value) {
  if (settings_->setCustomHash(value)) {
    emit customHashChanged(settings_->customHash);
  }
}

bool SignatureArea::clipToBounds() const { return settings_->clipToBounds; }
void SignatureArea::setClipToBounds(bool value) {
  if (settings_->setClipToBounds(value)) {
    emit clipToBoundsChanged(settings_->clipToBounds);
  }
}

bool SignatureArea::skipPdf() const { return settings_->skipPdf; }
void SignatureArea::setSkipPdf(bool value) {
  if (settings_->setSkipPdf(value)) {
    emit skipPdfChanged(settings_->skipPdf);
  }
}

QColor SignatureArea::backgroundColor() const { return settings_->backgroundColor; }
void SignatureArea::setBackgroundColor(const QColor& value) {
  if (settings_->setBackgroundColor(value)) {
    update();
    emit backgroundColorChanged(settings_->backgroundColor);
  }
}

void SignatureArea::setStrokes(const QnStrokeListRef& strokes) { session_->setStrokes(strokes), noticeChanges(); }

QString SignatureArea::loadStrokes(const QString& json) {
  std::optional<LoadError> error = session_->loadStrokes(json.toStdString());
  noticeChanges();
  return error ? QString::fromStdString(error->message) : QString();
}

bool SignatureArea::backgroundInRecord() const { return settings_->backgroundInRecord; }
void SignatureArea::setBackgroundInRecord(bool value) {
  if (settings_->setBackgroundInRecord(value)) emit backgroundInRecordChanged(settings_->backgroundInRecord);
}
void SignatureArea::clear() { session_->clear(), noticeChanges(); }
void SignatureArea::undo() { session_->undo(), noticeChanges(); }
void SignatureArea::redo() { session_->redo(), noticeChanges(); }
void SignatureArea::done() { session_->done(); }

void SignatureArea::paint(QPainter* painter) {
  qreal ratio = window() ? window()->devicePixelRatio() : 1.0;
  painter->fillRect(boundingRect(), settings_->backgroundColor);
  painter->drawImage(QPointF(0, 0), renderViewTree(*view_, QRect(QPoint(0, 0), size().toSize()), ratio));
}

bool SignatureArea::event(QEvent* event) {
  switch (event->type()) {
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
      input_->tablet(static_cast<QTabletEvent*>(event)), noticeChanges();
      return true;
    case QEvent::FocusOut:
    case QEvent::Hide:
      input_->endAll(), noticeChanges();
      break;
    default:
      break;
  }
  return QQuickPaintedItem::event(event);
}

void SignatureArea::mousePressEvent(QMouseEvent* event) { input_->mousePress(event), event->accept(), noticeChanges(); }
void SignatureArea::mouseMoveEvent(QMouseEvent* event) { input_->mouseMove(event), noticeChanges(); }
void SignatureArea::mouseReleaseEvent(QMouseEvent* event) { input_->mouseRelease(event), noticeChanges(); }
void SignatureArea::touchEvent(QTouchEvent* event) { input_->touch(event), event->accept(), noticeChanges(); }

void SignatureArea::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
  view_->setFrame(makeRect(newGeometry.x(), newGeometry.y(), newGeometry.width(), newGeometry.height()));
}

void SignatureArea::noticeChanges() {
  if (!session_) return;  // input arriving while the pad is being torn down
  SignatureSession::CanvasChange change = session_->changeSince(seen_);
  if (change.strokeBegan) emit strokeBegan();
  if (change.changed) emit changed();
  if (change.emptinessChanged) emit emptyChanged(change.empty);
}

}  // namespace scrivlet
