// The signature pad as a Qt Quick item, SignatureArea in the QML module Scrivlet (`import Scrivlet`,
// no registration call): the widget's properties, signals and slots, drawn from the same ink cache,
// with touch (every sample, none merged), pen and mouse input.
#pragma once

#include <scrivlet/signature_properties.h>

#include <QQuickPaintedItem>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>
#include <set>

namespace scrivlet {

class SignaturePadCore;

// Registers Scrivlet.SignatureArea with QML. Importing the module does this already; kept for hosts
// that called it before.
void registerScrivletQuickTypes();

// The properties, signals and slots are those of scrivlet/signature_properties.h. Accessible as a
// canvas named "Signature" (unless the QML sets Accessible.name), described "empty", "1 stroke",
// "3 strokes". Disabled or read-only, it takes no input of any kind; Undo and Redo keys work when it
// has active focus, which a click or Tab gives it.
class SignatureArea : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  SCRIVLET_SIGNATURE_PROPERTIES

 public:
  // Installs the Qt platform on first use; the QGuiApplication must exist.
  explicit SignatureArea(QQuickItem* parent = nullptr);
  ~SignatureArea() override;

  void paint(QPainter* painter) override;

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  void componentComplete() override;

 private:
  bool takesInput() const;
  // Whether this item is drawn topmost, among those taking input, at a point of the scene.
  bool isTopmostAt(QPointF scenePosition) const;
  // Touches and pens are taken from the window before Qt Quick merges touch moves.
  bool takeTouch(QTouchEvent* event);
  bool takeTablet(QTabletEvent* event);
  void watchWindow(QQuickWindow* window);
  void settingChanged();
  void describe();

  std::unique_ptr<SignaturePadCore> core_;
  QQuickWindow* watched_ = nullptr;
  std::set<int> touches_;  // the ids of the touch points pressed on this item and still down
};

}  // namespace scrivlet
