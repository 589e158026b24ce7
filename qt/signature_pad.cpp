// The signature pad: the capture widget, a signing session, and Qt's properties and signals over them.
#include <scrivlet/signature_pad.h>

#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"

#include <QKeyEvent>
#include <QRegularExpression>
#include <QVBoxLayout>

#include <cmath>

namespace scrivlet {

namespace {

constexpr double kThinnestPen = 0.5, kWidestPen = 50;
constexpr double kSmallestExportScale = 0.1, kLargestExportScale = 8;

QnColor colorOf(const QColor& c) { return QnColor(c.redF(), c.greenF(), c.blueF(), c.alphaF()); }

// A finite value within [low, high]: clamped with a warning, or refused (nothing) when not a number.
std::optional<double> bounded(const char* what, double value, double low, double high) {
  if (!std::isfinite(value)) {
    qWarning("SignaturePad: %s %g refused: not a finite number", what, value);
    return std::nullopt;
  }
  if (value < low || value > high) {
    double clamped = std::clamp(value, low, high);
    qWarning("SignaturePad: %s %g clamped to %g", what, value, clamped);
    return clamped;
  }
  return value;
}

// Sets the member and says so, when the value is new.
template <class T, class Signal>
bool assign(SignaturePad* pad, T& member, const T& value, Signal signal) {
  if (member == value) return false;
  member = value;
  emit(pad->*signal)(value);
  return true;
}

}  // namespace

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
  QPalette palette = capture_->palette();
  palette.setColor(QPalette::Window, backgroundColor_);  // a signing surface even in a dark theme
  capture_->setPalette(palette);
  session_ = std::make_unique<SignatureSession>(capture_->view());
  session_->strokeEnded = [this](unsigned long points) {
    noticeChanges();
    emit strokeEnded(int(std::min<unsigned long>(points, INT_MAX)));
  };
  session_->signatureReady = [this](std::shared_ptr<QnSignature> record) { emit signatureReady(SignatureRecord(record)); };
  session_->signedNothing = [this] { emit signedNothing(); };
}

SignaturePad::~SignaturePad() = default;

void SignaturePad::setPenColor(const QColor& color) {
  if (assign(this, penColor_, color, &SignaturePad::penColorChanged)) session_->scrivlet().setStrokeColor(colorOf(color));
}

void SignaturePad::setPenWidth(double width) {
  auto value = bounded("pen width", width, kThinnestPen, kWidestPen);
  if (value && assign(this, penWidth_, *value, &SignaturePad::penWidthChanged))
    session_->scrivlet().setStrokeWidth(float(*value));
}

void SignaturePad::setVelocityReduction(double reduction) {
  auto value = bounded("velocity reduction", reduction, 0, 1);
  if (value && assign(this, velocityReduction_, *value, &SignaturePad::velocityReductionChanged))
    session_->scrivlet().setVelocityReduction(float(*value));
}

void SignaturePad::setCalligraphic(bool on) {
  if (assign(this, calligraphic_, on, &SignaturePad::calligraphicChanged)) session_->scrivlet().setUseCalligraphicBrush(on);
}

void SignaturePad::setGuidelineVisible(bool on) {
  if (assign(this, guidelineVisible_, on, &SignaturePad::guidelineVisibleChanged)) session_->scrivlet().setShowGuideline(on);
}

void SignaturePad::setStylusOnly(bool on) {
  if (assign(this, stylusOnly_, on, &SignaturePad::stylusOnlyChanged)) session_->scrivlet().setDrawOnlyWithApplePencil(on);
}

void SignaturePad::setSwipeToUndo(bool on) {
  if (assign(this, swipeToUndo_, on, &SignaturePad::swipeToUndoChanged)) session_->scrivlet().setSwipeToUndoEnabled(on);
}

void SignaturePad::setExportScale(double scale) {
  auto value = bounded("export scale", scale, kSmallestExportScale, kLargestExportScale);
  if (value && assign(this, exportScale_, *value, &SignaturePad::exportScaleChanged))
    session_->scrivlet().setExportScale(float(*value));
}

void SignaturePad::setDateStamp(bool on) {
  if (assign(this, dateStamp_, on, &SignaturePad::dateStampChanged)) session_->scrivlet().setShowDate(on);
}

void SignaturePad::setTimeStamp(bool on) {
  if (assign(this, timeStamp_, on, &SignaturePad::timeStampChanged)) session_->scrivlet().setDateIncludesTime(on);
}

void SignaturePad::setHashStamp(bool on) {
  if (assign(this, hashStamp_, on, &SignaturePad::hashStampChanged)) session_->scrivlet().setShowHash(on);
}

void SignaturePad::setCustomHash(const QString& hash) {
  static const QRegularExpression kSafe("^[A-Za-z0-9._-]{0,64}$");
  if (!kSafe.match(hash).hasMatch()) {
    qWarning("SignaturePad: custom hash refused: only up to 64 letters, digits, '.', '_' and '-'");
    return;
  }
  if (assign(this, customHash_, hash, &SignaturePad::customHashChanged))
    session_->scrivlet().setCustomHash(hash.isEmpty() ? std::nullopt : std::optional(hash.toStdString()));
}

void SignaturePad::setClipToBounds(bool on) {
  if (assign(this, clipToBounds_, on, &SignaturePad::clipToBoundsChanged)) session_->scrivlet().setClipSignatureToBounds(on);
}

void SignaturePad::setSkipPdf(bool on) {
  if (assign(this, skipPdf_, on, &SignaturePad::skipPdfChanged)) session_->scrivlet().scrivletController()->setSkipPDFData(on);
}

void SignaturePad::setBackgroundColor(const QColor& color) {
  if (!color.isValid()) return qWarning("SignaturePad: background colour refused: not a valid colour");
  if (!assign(this, backgroundColor_, color, &SignaturePad::backgroundColorChanged)) return;
  QPalette palette = capture_->palette();
  palette.setColor(QPalette::Window, color);
  capture_->setPalette(palette);
}

bool SignaturePad::isEmpty() const { return session_->isEmpty(); }
bool SignaturePad::canUndo() const { return session_->canUndo(); }
bool SignaturePad::canRedo() const { return session_->canRedo(); }
QnStrokeListRef SignaturePad::strokes() const { return session_->strokes(); }

void SignaturePad::setStrokes(const QnStrokeListRef& strokes) {
  session_->setStrokes(strokes);
  noticeChanges();
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
  const QnDemoDrawingController& model = *session_->scrivlet().scrivletController()->drawingController();
  CanvasState now{model.drawingArray()->size(), 0, model.drawingArrayForRedo()->size(), model.drawing()};
  for (const QnStrokeRef& stroke : *model.drawingArray()) now.points += stroke ? stroke->size() : 0;
  if (now == seen_) return;
  bool wasEmpty = seen_.points == 0, began = now.drawing && (!seen_.drawing || now.strokes != seen_.strokes);
  seen_ = now;
  if (began) emit strokeBegan();
  emit changed();
  if (wasEmpty != (now.points == 0)) emit emptyChanged(now.points == 0);
}

}  // namespace scrivlet
