// The view model shared by every backend.
#include <scrivlet/engine/view.h>

#include <scrivlet/engine/gesture_recognizer.h>

#include "platform/cg_context.h"

#include <algorithm>

namespace scrivlet {

QnView::QnView(QnRect frame) : frame_(frame) {}

QnView::~QnView() {
  for (auto& child : subviews_) child->superview_.reset();
}

namespace {

// Shares a change of size among the flexible parts of one axis, in proportion to their sizes (or
// equally when they are all zero), as autoresizing does.
void shareChange(double change, bool flexibleLead, bool flexibleSize, bool flexibleTrail, double lead,
                 double size, double trail, double& newLead, double& newSize) {
  newLead = lead;
  newSize = size;
  double parts = (flexibleLead ? lead : 0) + (flexibleSize ? size : 0) + (flexibleTrail ? trail : 0);
  int count = flexibleLead + flexibleSize + flexibleTrail;
  if (count == 0 || change == 0) return;
  auto share = [&](bool flexible, double part) {
    if (!flexible) return 0.0;
    return parts > 0 ? change * part / parts : change / count;
  };
  newLead = lead + share(flexibleLead, lead);
  newSize = size + share(flexibleSize, size);
}

}  // namespace

void QnView::setFrame(const QnRect& frame) {
  QnRect old = frame_;
  frame_ = frame;
  if (old.size != frame.size) {
    for (const auto& child : subviews_) {
      int mask = child->autoresizingMask_;
      if (mask == 0) continue;
      QnRect c = child->frame_;
      QnRect resized = c;
      shareChange(frame.size.width - old.size.width, mask & 1, mask & 2, mask & 4, c.origin.x,
                  c.size.width, old.size.width - c.origin.x - c.size.width, resized.origin.x,
                  resized.size.width);
      shareChange(frame.size.height - old.size.height, mask & 8, mask & 16, mask & 32, c.origin.y,
                  c.size.height, old.size.height - c.origin.y - c.size.height, resized.origin.y,
                  resized.size.height);
      child->setFrame(resized);
    }
  }
  // A frame change is seen on the layer as a move of its position and a change of its bounds.
  if (old.origin != frame.origin || old.size != frame.size)
    notifyGeometryChange(QnGeometryTarget::layer, "position");
  if (old.size != frame.size) notifyGeometryChange(QnGeometryTarget::layer, "bounds");
  notifyGeometryChange(QnGeometryTarget::layer, "frame");
  notifyGeometryChange(QnGeometryTarget::view, "frame");
}

void QnView::addSubview(const std::shared_ptr<QnView>& view) {
  if (!view || view.get() == this) return;
  view->removeFromSuperview();
  subviews_.push_back(view);
  view->superview_ = weak_from_this();
}

void QnView::removeFromSuperview() {
  std::shared_ptr<QnView> parent = superview_.lock();
  superview_.reset();
  if (!parent) return;
  auto& siblings = parent->subviews_;
  siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                                [this](const std::shared_ptr<QnView>& v) { return v.get() == this; }),
                 siblings.end());
}

void QnView::setNeedsDisplay() { setNeedsDisplayInRect(bounds()); }

void QnView::setNeedsDisplayInRect(const QnRect& rect) {
  dirtyRect_ = needsDisplay_ ? rectUnion(dirtyRect_, rect) : rect;
  needsDisplay_ = true;
  ++displayRequests_;
  displayRequested(rect);
  // Whatever shows this view on a screen may sit further up: tell every ancestor, in its coordinates.
  QnRect area = rect;
  const QnView* child = this;
  for (std::shared_ptr<QnView> view = superview(); view; child = view.get(), view = view->superview()) {
    area.origin = {area.origin.x + child->frame().origin.x, area.origin.y + child->frame().origin.y};
    view->displayRequested(area);
  }
}

void QnView::displayInContext(CGContext& context) {
  drawRect(context, bounds());
  needsDisplay_ = false;
  dirtyRect_ = QnRectZero;
  for (const auto& child : subviews_) {
    if (child->isHidden()) continue;
    context.saveGState();
    context.translateCTM(child->frame().origin.x, child->frame().origin.y);
    child->displayInContext(context);
    context.restoreGState();
  }
}

void QnView::drawRect(CGContext&, const QnRect&) {}

void QnView::addGestureRecognizer(const std::shared_ptr<QnGestureRecognizer>& recognizer) {
  if (recognizer && std::find(recognizers_.begin(), recognizers_.end(), recognizer) == recognizers_.end())
    recognizers_.push_back(recognizer);
}

void QnView::removeGestureRecognizer(const QnGestureRecognizer* recognizer) {
  recognizers_.erase(std::remove_if(recognizers_.begin(), recognizers_.end(),
                                    [recognizer](const auto& r) { return r.get() == recognizer; }),
                     recognizers_.end());
}

void QnView::deliverTouches(QnTouchPhase phase, const QnTouchSet& touches, const QnEvent& event) {
  // A recognizer's action may add or remove recognizers; deliver to those present now.
  std::vector<std::shared_ptr<QnGestureRecognizer>> current = recognizers_;
  for (const auto& recognizer : current) {
    switch (phase) {
      case QnTouchPhase::began: recognizer->touchesBeganWithEvent(touches, event); break;
      case QnTouchPhase::moved: recognizer->touchesMovedWithEvent(touches, event); break;
      case QnTouchPhase::ended: recognizer->touchesEndedWithEvent(touches, event); break;
      case QnTouchPhase::cancelled: recognizer->touchesCancelledWithEvent(touches, event); break;
    }
  }
}

QnView::ObserverToken QnView::addGeometryObserver(QnGeometryTarget target, const std::string& key,
                                                  GeometryObserver observer) {
  ObserverToken token = nextToken_++;
  observers_.push_back({token, target, key, std::move(observer)});
  return token;
}

void QnView::removeGeometryObserver(ObserverToken token) {
  auto it = std::find_if(observers_.begin(), observers_.end(),
                         [token](const Observation& o) { return o.token == token; });
  if (it != observers_.end()) observers_.erase(it);
}

void QnView::notifyGeometryChange(QnGeometryTarget target, const std::string& key) {
  // Observers may add or remove observations while being told; work on a copy.
  std::vector<Observation> current = observers_;
  for (const Observation& o : current)
    if (o.target == target && o.key == key && o.observer) o.observer(target, key);
}

}  // namespace scrivlet
