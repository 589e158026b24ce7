// The Qt Quick signature area: a plain view signed on through the pad's core, painted through cairo.
// Touches and pens are taken from the window: Qt Quick merges touch moves that arrive between two
// frames into one and delivers pens to pointer handlers alone.
#include <scrivlet/signature_area.h>

#include <scrivlet/qt_platform.h>

#include "qt_view_painter.h"
#include "signature_property_definitions.h"

#include <QAccessible>
#include <QPainter>
#include <QQuickWindow>
#include <QTabletEvent>
#include <QtQml>

#include <algorithm>

void qml_register_types_Scrivlet();  // made by qt_add_qml_module

namespace scrivlet {

namespace {

// The object behind QML's Accessible attached properties, made for the item when missing; nothing
// before QtQuick's types are registered.
QObject* accessibleOf(QObject* item) {
  const QMetaObject* type = QMetaType::fromName("QQuickAccessibleAttached*").metaObject();
  return type ? qmlAttachedPropertiesObject(item, qmlAttachedPropertiesFunction(item, type), true) : nullptr;
}

// The topmost visible item under a scene position that takes input, or is `self`, among `item`
// and its descendants, in the order they are drawn.
QQuickItem* topmostAt(QQuickItem* item, QPointF scenePosition, const QQuickItem* self) {
  QList<QQuickItem*> children = item->childItems();
  std::stable_sort(children.begin(), children.end(), [](QQuickItem* a, QQuickItem* b) { return a->z() < b->z(); });
  for (auto child = children.crbegin(); child != children.crend(); ++child)
    if ((*child)->isVisible())
      if (QQuickItem* hit = topmostAt(*child, scenePosition, self)) return hit;
  bool takes = item == self || item->acceptedMouseButtons() != Qt::NoButton || item->acceptTouchEvents();
  return takes && item->contains(item->mapFromScene(scenePosition)) ? item : nullptr;
}

}  // namespace

void registerScrivletQuickTypes() {
  // Referring to the module's registration links it into a static host; importing registers.
  static void (*const linked)() = &qml_register_types_Scrivlet;
  (void)linked;
  qRegisterMetaType<SignatureRecord>();
}

SignatureArea::SignatureArea(QQuickItem* parent) : QQuickPaintedItem(parent) {
  static const bool installed = (installQtPlatform(), true);
  (void)installed;
  qRegisterMetaType<SignatureRecord>();
  // Not empty, so that the guideline is placed before the item gets its size (a guideline first
  // placed on an empty view stays empty).
  core_ = std::make_unique<SignaturePadCore>(std::make_shared<QnView>(makeRect(0, 0, 1, 1)));
  core_->view()->setDisplayRequestHandler([this](const QnRect&) { update(); });
  connectCoreEvents(*core_, this, [this] { describe(); });
  setAcceptedMouseButtons(Qt::LeftButton);
  setActiveFocusOnTab(true);
}

SignatureArea::~SignatureArea() {
  watchWindow(nullptr);
  core_->view()->setDisplayRequestHandler(nullptr);
}

SCRIVLET_DEFINE_SIGNATURE_PROPERTIES(SignatureArea)

void SignatureArea::settingChanged() { update(); }

void SignatureArea::componentComplete() {
  QQuickPaintedItem::componentComplete();
  if (QObject* accessible = accessibleOf(this)) {
    accessible->setProperty("role", QVariant::fromValue(QAccessible::Canvas));
    if (accessible->property("name").toString().isEmpty()) accessible->setProperty("name", "Signature");
  }
  describe();
}

void SignatureArea::describe() {
  if (!isComponentComplete()) return;
  if (QObject* accessible = accessibleOf(this)) accessible->setProperty("description", core_->description());
  // Assistive technology hears of the change (Qt 6.4 does not announce a new description itself).
  QAccessibleEvent event(this, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

bool SignatureArea::takesInput() const { return core_->takesInput(isEnabled() && isVisible()); }

void SignatureArea::paint(QPainter* painter) {
  qreal ratio = window() ? window()->devicePixelRatio() : 1.0;
  painter->fillRect(boundingRect(), core_->settings().backgroundColor);
  painter->drawImage(QPointF(0, 0), renderViewTree(*core_->view(), QRect(QPoint(0, 0), size().toSize()), ratio));
  core_->setPainted();
}

bool SignatureArea::isTopmostAt(QPointF scenePosition) const {
  QQuickItem* hit = window() ? topmostAt(window()->contentItem(), scenePosition, this) : nullptr;
  return hit && (hit == this || isAncestorOf(hit));
}

// Events filtered from the window have their positions in the window, which is the scene.
bool SignatureArea::takeTouch(QTouchEvent* event) {
  if (!takesInput()) return touches_.clear(), false;
  if (event->type() == QEvent::TouchCancel) {  // it may name no points: it cancels them all
    if (!touches_.empty()) core_->input().touch(event), core_->noticeChanges();
    touches_.clear();
    return false;
  }
  for (const QEventPoint& point : event->points())
    if (point.state() == QEventPoint::State::Pressed && isTopmostAt(point.position())) touches_.insert(point.id());
  bool any = false, all = true;
  for (const QEventPoint& point : event->points()) {
    bool mine = touches_.count(point.id()) > 0;
    any |= mine, all &= mine;
  }
  if (!any) return false;
  core_->input().touch(event, [this](const QEventPoint& point) -> std::optional<QPointF> {
    if (!touches_.count(point.id())) return std::nullopt;
    return mapFromScene(point.position());
  });
  for (const QEventPoint& point : event->points())
    if (point.state() == QEventPoint::State::Released) touches_.erase(point.id());
  core_->noticeChanges();
  // Points of other items go on to them.
  return all;
}

bool SignatureArea::takeTablet(QTabletEvent* event) {
  bool mine = core_->input().penDown(event) ||
              (event->type() == QEvent::TabletPress && takesInput() && isTopmostAt(event->position()));
  if (!mine) return false;
  core_->input().tablet(event, mapFromScene(event->position()));
  core_->noticeChanges();
  return true;
}

bool SignatureArea::eventFilter(QObject* watched, QEvent* event) {
  if (watched == watched_) switch (event->type()) {
      case QEvent::TouchBegin:
      case QEvent::TouchUpdate:
      case QEvent::TouchEnd:
      case QEvent::TouchCancel:
        return takeTouch(static_cast<QTouchEvent*>(event));
      case QEvent::TabletPress:
      case QEvent::TabletMove:
      case QEvent::TabletRelease:
        return takeTablet(static_cast<QTabletEvent*>(event));
      default:
        break;
    }
  return QQuickPaintedItem::eventFilter(watched, event);
}

void SignatureArea::watchWindow(QQuickWindow* window) {
  if (watched_) watched_->removeEventFilter(this);
  watched_ = window;
  if (watched_) watched_->installEventFilter(this);
}

bool SignatureArea::event(QEvent* event) {
  if (event->type() == QEvent::FocusOut) core_->endInput();
  return QQuickPaintedItem::event(event);
}

void SignatureArea::mousePressEvent(QMouseEvent* event) {
  if (!takesInput()) return event->ignore();
  forceActiveFocus(Qt::MouseFocusReason);
  core_->input().mousePress(event), event->accept(), core_->noticeChanges();
}
void SignatureArea::mouseMoveEvent(QMouseEvent* event) { core_->input().mouseMove(event), core_->noticeChanges(); }
void SignatureArea::mouseReleaseEvent(QMouseEvent* event) { core_->input().mouseRelease(event), core_->noticeChanges(); }

void SignatureArea::keyPressEvent(QKeyEvent* event) {
  if (!core_->handleKey(event)) QQuickPaintedItem::keyPressEvent(event);
}

void SignatureArea::itemChange(ItemChange change, const ItemChangeData& value) {
  QQuickPaintedItem::itemChange(change, value);
  switch (change) {
    case ItemSceneChange:
      core_->endInput(), touches_.clear();
      watchWindow(value.window);
      break;
    case ItemEnabledHasChanged:
    case ItemVisibleHasChanged:
      if (!takesInput()) core_->endInput(), touches_.clear();
      break;
    default:
      break;
  }
}

void SignatureArea::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
  if (newGeometry.size() == oldGeometry.size()) return;
  // An empty size is not passed on: it would take the signing line away for good and move the ink
  // with it. The view keeps its last size until the item has one again.
  if (newGeometry.isEmpty()) return;
  // The view has the item's size at the origin: a move alone changes nothing in it.
  core_->beforeResize();
  core_->view()->setFrame(makeRect(0, 0, newGeometry.width(), newGeometry.height()));
  core_->afterResize();
}

}  // namespace scrivlet
