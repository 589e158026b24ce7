// The capture widget: shows a view (the ink sharply at the screen's pixel ratio, the guideline
// fitted) and turns the widget's touch, tablet and mouse events into touch phases on it.
#pragma once

#include <scrivlet/qt_export.h>

#include <scrivlet/engine/touch.h>
#include <scrivlet/engine/view.h>

#include <QWidget>

#include <memory>

namespace scrivlet {

class QtInputTranslator;

class SCRIVLET_QT_EXPORT QnQtCaptureWidget : public QWidget {
 public:
  // Shows the given view, or a new one; the view's frame follows the widget's geometry.
  explicit QnQtCaptureWidget(QWidget* parent = nullptr, std::shared_ptr<QnView> view = nullptr);
  ~QnQtCaptureWidget() override;

  const std::shared_ptr<QnView>& view() const { return view_; }
  // Ends every touch still down, keeping what it drew (as when the window loses focus).
  void endAllTouches();

 protected:
  // Feeds the given translator of the view's input (owned by the caller) instead of one of its own.
  QnQtCaptureWidget(QWidget* parent, std::shared_ptr<QnView> view, QtInputTranslator* input);
  // Whether input draws; a disabled widget takes none of any kind.
  virtual bool takesInput() const { return isEnabled(); }
  bool event(QEvent* event) override;
  void tabletEvent(QTabletEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void updateFrame();

  std::shared_ptr<QnView> view_;
  std::unique_ptr<QtInputTranslator> ownInput_;
  QtInputTranslator* input_;
};

}  // namespace scrivlet
