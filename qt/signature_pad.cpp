// The signature pad: the capture widget over the pad's core, and Qt's properties and signals.
#include <scrivlet/signature_pad.h>

#include <scrivlet/qt_capture_widget.h>
#include <scrivlet/qt_platform.h>

#include "signature_property_definitions.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace scrivlet {

namespace {

constexpr const char* kAccessibleName = "Signature";

// The pad as an accessible canvas; its name and description are the widget's.
QAccessibleInterface* accessiblePad(const QString& key, QObject* object) {
  if (key != QLatin1String(SignaturePad::staticMetaObject.className()) || !object->isWidgetType()) return nullptr;
  return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Canvas);
}

}  // namespace

// The capture widget, fed through the pad's core: input only while the pad takes it, the core told
// after each input event and around each resize.
class SignaturePad::Surface : public QnQtCaptureWidget {
 public:
  Surface(SignaturePad* pad, SignaturePadCore* core)
      : QnQtCaptureWidget(pad, core->view(), &core->input()), pad_(pad), core_(core) {}

 protected:
  bool takesInput() const override { return core_->takesInput(pad_->isEnabled()); }
  bool event(QEvent* event) override {
    bool handled = QnQtCaptureWidget::event(event);
    if (event->isPointerEvent()) core_->noticeChanges();
    return handled;
  }
  // Qt moves a widget before resizing it, and either gives the view the widget's whole geometry. A
  // layout that leaves the pad no room (a collapsed splitter, a zero-height row) is not passed on: an
  // empty capture view takes the signing line away for good and moves the ink with it. The view keeps
  // its last size until the pad has one again.
  void resizeEvent(QResizeEvent* event) override {
    if (event->size().isEmpty()) return QWidget::resizeEvent(event);
    core_->beforeResize();
    QnQtCaptureWidget::resizeEvent(event);
    core_->afterResize();
  }
  void moveEvent(QMoveEvent* event) override {
    if (size().isEmpty()) return QWidget::moveEvent(event);
    core_->beforeResize();
    QnQtCaptureWidget::moveEvent(event);
    core_->afterResize();
  }
  void paintEvent(QPaintEvent* event) override {
    QnQtCaptureWidget::paintEvent(event);
    core_->setPainted();
  }

 private:
  SignaturePad* pad_;
  SignaturePadCore* core_;
};

SignaturePad::SignaturePad(QWidget* parent) : QWidget(parent) {
  static const bool installed = (installQtPlatform(), QAccessible::installFactory(accessiblePad), true);
  (void)installed;
  qRegisterMetaType<SignatureRecord>();
  // Not empty, so that the guideline is placed before the widget gets its size (a guideline first
  // placed on an empty view stays empty).
  core_ = std::make_unique<SignaturePadCore>(std::make_shared<QnView>(makeRect(0, 0, 1, 1)));
  surface_ = new Surface(this, core_.get());
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(surface_);
  surface_->setAutoFillBackground(true);
  setFocusProxy(surface_);
  connectCoreEvents(*core_, this, [this] { describe(); });
  setAccessibleName(kAccessibleName);
  surface_->setAccessibleName(kAccessibleName);
  describe();
  settingChanged();
}

// The surface goes first: being destroyed with the focus, it would be told of the focus going, and end
// its touches through a core that is already gone.
SignaturePad::~SignaturePad() { delete surface_; }

SCRIVLET_DEFINE_SIGNATURE_PROPERTIES(SignaturePad)

void SignaturePad::settingChanged() {
  QPalette palette = surface_->palette();
  palette.setColor(QPalette::Window, core_->settings().backgroundColor);
  surface_->setPalette(palette);
}

void SignaturePad::describe() {
  setAccessibleDescription(core_->description());
  surface_->setAccessibleDescription(core_->description());
  // Assistive technology hears of the change (Qt 6.4 does not announce a new description itself).
  QAccessibleEvent event(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

void SignaturePad::keyPressEvent(QKeyEvent* event) {
  if (!core_->handleKey(event)) QWidget::keyPressEvent(event);
}

void SignaturePad::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::EnabledChange && !isEnabled()) core_->endInput();
}

}  // namespace scrivlet
