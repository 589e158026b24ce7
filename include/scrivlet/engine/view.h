// A view: a rectangle in its superview with subviews, display requests and geometry observers.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/touch.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace scrivlet {

class CGContext;
class QnGestureRecognizer;

enum class QnTouchPhase { began, moved, ended, cancelled };

// Observed geometry lives on the view itself or on its backing layer, as on a touch platform.
enum class QnGeometryTarget { view, layer };

class SCRIVLET_EXPORT QnView : public std::enable_shared_from_this<QnView> {
 public:
  explicit QnView(QnRect frame = {});
  virtual ~QnView();
  QnView(const QnView&) = delete;
  QnView& operator=(const QnView&) = delete;

  QnRect frame() const { return frame_; }
  // Stores the frame, resizes the subviews that follow it (autoresizingMask), and notifies the
  // observers of every geometry key it changes.
  void setFrame(const QnRect& frame);
  // The view's own coordinate space: origin (0, 0), the frame's size.
  QnRect bounds() const { return {{0, 0}, frame_.size}; }

  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden) { hidden_ = hidden; }
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }
  // Which margins and sizes take up a change of the superview's size: flexible left margin 1, width
  // 2, right margin 4, top margin 8, height 16, bottom margin 32.
  int autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(int mask) { autoresizingMask_ = mask; }
  bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
  void setUserInteractionEnabled(bool enabled) { userInteractionEnabled_ = enabled; }

  void addSubview(const std::shared_ptr<QnView>& view);
  void removeFromSuperview();
  const std::vector<std::shared_ptr<QnView>>& subviews() const { return subviews_; }
  std::shared_ptr<QnView> superview() const { return superview_.lock(); }

  // Asks for the whole view, or a part of it, to be drawn again.
  void setNeedsDisplay();
  void setNeedsDisplayInRect(const QnRect& rect);
  bool needsDisplay() const { return needsDisplay_; }
  // The union of the areas asked for since the last display.
  QnRect dirtyRect() const { return dirtyRect_; }
  // How many display requests the view has had in its life.
  uint64_t displayRequestCount() const { return displayRequests_; }
  // Draws the view and then its visible subviews, each in its own frame, and clears the request.
  void displayInContext(CGContext& context);

  // Draws the view's own content in its bounds; a plain view draws nothing.
  virtual void drawRect(CGContext& context, const QnRect& rect);

  // Gesture recognizers see every touch phase on the view, in the order they were added.
  void addGestureRecognizer(const std::shared_ptr<QnGestureRecognizer>& recognizer);
  void removeGestureRecognizer(const QnGestureRecognizer* recognizer);
  const std::vector<std::shared_ptr<QnGestureRecognizer>>& gestureRecognizers() const {
    return recognizers_;
  }
  // A backend hands each touch phase on the view to the view's recognizers through this.
  void deliverTouches(QnTouchPhase phase, const QnTouchSet& touches, const QnEvent& event);

  using ObserverToken = uint64_t;
  using GeometryObserver = std::function<void(QnGeometryTarget target, const std::string& key)>;
  ObserverToken addGeometryObserver(QnGeometryTarget target, const std::string& key,
                                    GeometryObserver observer);
  void removeGeometryObserver(ObserverToken token);
  size_t geometryObserverCount() const { return observers_.size(); }
  // A backend that shows the view schedules its repaint here.
  void setDisplayRequestHandler(std::function<void(const QnRect&)> handler) {
    displayRequestHandler_ = std::move(handler);
  }

  // Tells the observers of one key that it changed, as a rotation or a layer change would.
  void notifyGeometryChange(QnGeometryTarget target, const std::string& key);

 protected:
  // Called on every display request of the view or of a view inside it (in this view's coordinates).
  virtual void displayRequested(const QnRect& rect) {
    if (displayRequestHandler_) displayRequestHandler_(rect);
  }

 private:
  struct Observation {
    ObserverToken token;
    QnGeometryTarget target;
    std::string key;
    GeometryObserver observer;
  };

  QnRect frame_;
  bool hidden_ = false;
  int tag_ = 0;
  int autoresizingMask_ = 0;
  bool userInteractionEnabled_ = true;
  std::vector<std::shared_ptr<QnView>> subviews_;
  std::weak_ptr<QnView> superview_;
  bool needsDisplay_ = false;
  QnRect dirtyRect_;
  uint64_t displayRequests_ = 0;
  std::vector<std::shared_ptr<QnGestureRecognizer>> recognizers_;
  std::vector<Observation> observers_;
  ObserverToken nextToken_ = 1;
  std::function<void(const QnRect&)> displayRequestHandler_;
};

}  // namespace scrivlet
