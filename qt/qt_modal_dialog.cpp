// The modal dialog.
#include <scrivlet/qt_modal_dialog.h>

#include <scrivlet/engine/navigation_controller.h>
#include <scrivlet/engine/popup.h>

#include <scrivlet/qt_capture_widget.h>

#include <QAction>
#include <QCloseEvent>
#include <QPointer>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace scrivlet {

QnQtModalDialog::QnQtModalDialog(std::shared_ptr<QnNavigationController> container, QWidget* parent)
    : QDialog(parent), container_(std::move(container)) {
  const auto& screen = container_->rootViewController();
  setWindowTitle("Sign");
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  capture_ = new QnQtCaptureWidget(this, screen->view());
  capture_->setAutoFillBackground(true);
  QPalette palette = capture_->palette();
  palette.setColor(QPalette::Window, Qt::white);
  capture_->setPalette(palette);
  toolbar_ = new QToolBar(this);
  for (const QnBarButtonItem& item : screen->toolbarItems()) {
    if (item.flexibleSpace) {
      auto* spacer = new QWidget(toolbar_);
      spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
      toolbar_->addWidget(spacer);
      continue;
    }
    QAction* action = toolbar_->addAction(QString::fromStdString(item.title));
    if (item.style == kQnBarButtonItemStyleDone) {
      QFont bold = action->font();
      bold.setBold(true);
      action->setFont(bold);
    }
    auto run = item.action;
    connect(action, &QAction::triggered, this, [run] {
      if (run) run();
    });
  }
  // The navigation bar is hidden and the toolbar shown, at the bottom as on a phone.
  layout->addWidget(capture_, 1);
  if (!container_->isToolbarHidden()) layout->addWidget(toolbar_);
  QnSize size = screen->view()->frame().size;
  resize(static_cast<int>(size.width), static_cast<int>(size.height) + toolbar_->sizeHint().height());
}

QnQtModalDialog* QnQtModalDialog::present(std::shared_ptr<QnNavigationController> container,
                                          QWidget* parent) {
  auto* dialog = new QnQtModalDialog(container, parent);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  QPointer<QnQtModalDialog> guard(dialog);
  // The facade lives while its screen is shown and until the dismissal has completed.
  dialog->ownerHold_ = container->holdOwner();
  container->setPresented(true, [guard](bool, std::function<void()> completion) {
    QnNavigationController::Hold hold = guard ? guard->ownerHold_ : nullptr;
    if (guard) guard->close();
    // The completion comes once the dialog has gone, after the current event.
    QTimer::singleShot(0, [completion = std::move(completion), hold] {
      if (completion) completion();
    });
  });
  dialog->open();
  return dialog;
}

void QnQtModalDialog::closeEvent(QCloseEvent* event) {
  // Closing the window is the screen's "Cancel": the container's dismissal (which asks this close
  // again, in vain while it is under way) reports once the window has gone.
  if (container_->isPresented()) container_->rootViewController()->cancelButton(this);
  QDialog::closeEvent(event);
}

}  // namespace scrivlet
