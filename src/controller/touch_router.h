// Touch routing: which touches draw, the drawing touch followed by position, and what each phase does
// to the stroke model.
#pragma once

#include <scrivlet/engine/geometry.h>
#include <scrivlet/engine/signature_point.h>
#include <scrivlet/engine/touch.h>
#include <scrivlet/engine/view.h>

#include <functional>
#include <memory>

namespace scrivlet {

class QnDemoDrawingController;
class QnGestureRecognizer;
struct QnScrivletSettings;

class QnTouchRouter {
 public:
  // What a phase leads to beyond the stroke model.
  struct Outcomes {
    std::function<void()> strokeBegan, strokeEnded, strokeCancelled;
  };
  // The view, the settings and the model are the owner's, and outlive the router.
  QnTouchRouter(const QnView* view, const QnScrivletSettings& settings,
                const std::shared_ptr<QnDemoDrawingController>& model, Outcomes outcomes);

  // The phases; fingers are counted by the recognizer the touches come through.
  void began(const QnTouchSet& touches, const QnEvent& event, const QnGestureRecognizer* fingerCounter);
  void moved(const QnTouchSet& touches, const QnEvent& event, const QnGestureRecognizer* fingerCounter);
  void ended(const QnTouchSet& touches);
  void cancelled(const QnTouchSet& touches);

  bool shouldDrawWithTouches(const QnTouchSet& touches) const;
  static bool touchesIncludePen(const QnTouchSet& touches);
  static QnPoint locationOfTouchInView(const QnTouch& touch, const QnView* view);
  static QnPoint previousLocationOfTouchInView(const QnTouch& touch, const QnView* view);
  QnPoint initiateDrawingPointFromTouch(const QnTouch& touch);
  // Follows the drawing touch by position: true when a touch continues from or repeats the saved one.
  bool lastDrawingPointMatchedInTouchesAndSaved(const QnTouchSet& touches);

  float currentPressure = 0;
  QnPoint lastDrawPoint;
  QnPoint lastPreciseDrawPoint;

 private:
  // The point a touch of the set gives in the capture view.
  QnSignaturePoint pointFromTouches(const QnTouchSet& touches) const;

  const QnView* view_;
  const QnScrivletSettings& settings_;
  const std::shared_ptr<QnDemoDrawingController>& model_;
  Outcomes outcomes_;
};

}  // namespace scrivlet
