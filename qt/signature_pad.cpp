// The signature pad: the capture widget, a signing session, and Qt's properties and signals over them.
#include <scrivlet/signature_pad.h>

#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>
#include <scrivlet/scrivlet_controller.h>

#include "signature_settings.h"

#include <QKeyEvent>
#include <QVBoxLayout>


namespace scrivlet {


// The capture widget, telling the pad once each input event has been handled.
class SignaturePad::Surface : public QnQtCaptureWidget {
 public:
  explicit Surface(SignaturePad* pad) : QnQtCaptureWidget(pad), pad_(pad) {}

 protected:
  bool event(QEvent* event) override {
    bool handled = QnQtCaptureWidget::event(event);
    if (event->isPointerEvent()) pad_->noticeChanges();
    return handled;
  }

 private:
  SignaturePad* pad_;
};

SignaturePad::SignaturePad(QWidget* parent) : QWidget(parent) {
  static const bool installed = (installQtPlatform(), true);
  (void)installed;
  qRegisterMetaType<SignatureRecord>();
  capture_ = new Surface(this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(capture_);
  capture_->setAutoFillBackground(true);
  setFocusProxy(capture_);
  session_ = std::make_unique<SignatureSession>(capture_->view());
  settings_ = std::make_unique<SignatureSettings>(*session_);
  applyBackground();
  session_->strokeEnded = [this](unsigned long points) {
    noticeChanges();
    emit strokeEnded(int(std::min<unsigned long>(points, INT_MAX)));
  };
  session_->signatureReady = [this](std::shared_ptr<QnSignature> record) { emit signatureReady(SignatureRecord(record)); };
  session_->signedNothing = [this] { emit signedNothing(); };
}

SignaturePad::~SignaturePad() = default;

void SignaturePad::applyBackground() {
  QPalette palette = capture_->palette();
  palette.setColor(QPalette::Window, settings_->backgroundColor);
  capture_->setPalette(palette);
}

QColor SignaturePad::penColor() const { return settings_->penColor; }
void SignaturePad::setPenColor(const QColor& value) {
  if (settings_->setPenColor(value)) {
    emit penColorChanged(settings_->penColor);
  }
}

double SignaturePad::penWidth() const { return settings_->penWidth; }
void SignaturePad::setPenWidth(double value) {
  if (settings_->setPenWidth(value)) {
    emit penWidthChanged(settings_->penWidth);
  }
}

double SignaturePad::velocityReduction() const { return settings_->velocityReduction; }
void SignaturePad::setVelocityReduction(double value) {
  if (settings_->setVelocityReduction(value)) {
    emit velocityReductionChanged(settings_->velocityReduction);
  }
}

bool SignaturePad::calligraphic() const { return settings_->calligraphic; }
void SignaturePad::setCalligraphic(bool value) {
  if (settings_->setCalligraphic(value)) {
    emit calligraphicChanged(settings_->calligraphic);
  }
}

bool SignaturePad::guidelineVisible() const { return settings_->guidelineVisible; }
void SignaturePad::setGuidelineVisible(bool value) {
  if (settings_->setGuidelineVisible(value)) {
    emit guidelineVisibleChanged(settings_->guidelineVisible);
  }
}

bool SignaturePad::stylusOnly() const { return settings_->stylusOnly; }
void SignaturePad::setStylusOnly(bool value) {
  if (settings_->setStylusOnly(value)) {
    emit stylusOnlyChanged(settings_->stylusOnly);
  }
}

bool SignaturePad::swipeToUndo() const { return settings_->swipeToUndo; }
void SignaturePad::setSwipeToUndo(bool value) {
  if (settings_->setSwipeToUndo(value)) {
    emit swipeToUndoChanged(settings_->swipeToUndo);
  }
}

double SignaturePad::exportScale() const { return settings_->exportScale; }
void SignaturePad::setExportScale(double value) {
  if (settings_->setExportScale(value)) {
    emit exportScaleChanged(settings_->exportScale);
  }
}

bool SignaturePad::dateStamp() const { return settings_->dateStamp; }
void SignaturePad::setDateStamp(bool value) {
  if (settings_->setDateStamp(value)) {
    emit dateStampChanged(settings_->dateStamp);
  }
}

bool SignaturePad::timeStamp() const { return settings_->timeStamp; }
void SignaturePad::setTimeStamp(bool value) {
  if (settings_->setTimeStamp(value)) {
    emit timeStampChanged(settings_->timeStamp);
  }
}

bool SignaturePad::hashStamp() const { return settings_->hashStamp; }
void SignaturePad::setHashStamp(bool value) {
  if (settings_->setHashStamp(value)) {
    emit hashStampChanged(settings_->hashStamp);
  }
}

QString SignaturePad::customHash() const { return settings_->customHash; }
void SignaturePad::setCustomHash(const QString& value) {
  if (settings_->setCustomHash(value)) {
    emit customHashChanged(settings_->customHash);
  }
}

bool SignaturePad::clipToBounds() const { return settings_->clipToBounds; }
void SignaturePad::setClipToBounds(bool value) {
  if (settings_->setClipToBounds(value)) {
    emit clipToBoundsChanged(settings_->clipToBounds);
  }
}

bool SignaturePad::skipPdf() const { return settings_->skipPdf; }
void SignaturePad::setSkipPdf(bool value) {
  if (settings_->setSkipPdf(value)) {
    emit skipPdfChanged(settings_->skipPdf);
  }
}

QColor SignaturePad::backgroundColor() const { return settings_->backgroundColor; }
void SignaturePad::setBackgroundColor(const QColor& value) {
  if (settings_->setBackgroundColor(value)) {
    applyBackground();
    emit backgroundColorChanged(settings_->backgroundColor);
  }
}

bool SignaturePad::backgroundInRecord() const { return settings_->backgroundInRecord; }
void SignaturePad::setBackgroundInRecord(bool value) {
  if (settings_->setBackgroundInRecord(value)) emit backgroundInRecordChanged(settings_->backgroundInRecord);
}

bool SignaturePad::isEmpty() const { return session_->isEmpty(); }
bool SignaturePad::canUndo() const { return session_->canUndo(); }
bool SignaturePad::canRedo() const { return session_->canRedo(); }
QnStrokeListRef SignaturePad::strokes() const { return session_->strokes(); }

void SignaturePad::setStrokes(const QnStrokeListRef& strokes) {
  session_->setStrokes(strokes);
  noticeChanges();
}

QString SignaturePad::loadStrokes(const QByteArray& json) {
  std::optional<LoadError> error = session_->loadStrokes(std::string_view(json.constData(), size_t(json.size())));
  noticeChanges();
  return error ? QString::fromStdString(error->message) : QString();
}

void SignaturePad::clear() { session_->clear(), noticeChanges(); }
void SignaturePad::undo() { session_->undo(), noticeChanges(); }
void SignaturePad::redo() { session_->redo(), noticeChanges(); }
void SignaturePad::done() { session_->done(); }

void SignaturePad::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Undo)) return undo();
  if (event->matches(QKeySequence::Redo)) return redo();
  QWidget::keyPressEvent(event);
}

void SignaturePad::noticeChanges() {
  if (!session_) return;  // input arriving while the pad is being torn down
  SignatureSession::CanvasChange change = session_->changeSince(seen_);
  if (change.strokeBegan) emit strokeBegan();
  if (change.changed) emit changed();
  if (change.emptinessChanged) emit emptyChanged(change.empty);
}

}  // namespace scrivlet
