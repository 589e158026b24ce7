// The modal signing screen as a Qt dialog: its toolbar ("Cancel", "Clear", a flexible space, "Done")
// over the capture surface with the fitted prompt.
#pragma once

#include <scrivlet/qt_export.h>

#include <scrivlet/engine/navigation_controller.h>

#include <QDialog>

#include <memory>

class QToolBar;

namespace scrivlet {

class QnQtCaptureWidget;

class SCRIVLET_QT_EXPORT QnQtModalDialog : public QDialog {
 public:
  QnQtModalDialog(std::shared_ptr<QnNavigationController> container, QWidget* parent = nullptr);

  QnQtCaptureWidget* captureWidget() const { return capture_; }
  QToolBar* toolbar() const { return toolbar_; }

  // Shows the container in a new window-modal dialog and tells the container how it closes: the
  // dialog hides, and the completion runs once it has gone. The dialog deletes itself then.
  static QnQtModalDialog* present(std::shared_ptr<QnNavigationController> container,
                                  QWidget* parent = nullptr);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  std::shared_ptr<QnNavigationController> container_;
  QnNavigationController::Hold ownerHold_;
  QToolBar* toolbar_;
  QnQtCaptureWidget* capture_;
};

}  // namespace scrivlet
