// The guideline's place in the capture view, and the ink moving with it.
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "platform/image_view.h"
#include "platform/narrowing.h"

#include <cmath>

namespace scrivlet {

namespace {
// 0.95 and 1 - 0.95 as single-precision values, used in double arithmetic.
constexpr double kGuidelineWidthFactor = 0.949999988079071;
constexpr double kGuidelineMarginFactor = 0.050000011920928955;
constexpr double kNineSixteenths = 9 * 0.0625;
// Beyond this a view's side is taken for garbage rather than a screen.
constexpr double kLargestViewSide = 1e6;

// A view size that layout can use: finite, not empty, not absurdly large.
bool usableForLayout(QnSize size) {
  return std::isfinite(size.width) && std::isfinite(size.height) && size.width > 0 && size.height > 0 &&
         size.width <= kLargestViewSide && size.height <= kLargestViewSide;
}
}  // namespace

void QnScrivletController::layoutGuideline() {
  if (!guideline_) return;
  QnRect frame = guideline_->frame();
  float gw = narrowToFloat(frame.size.width);
  float gh = narrowToFloat(frame.size.height);
  // Once the width is 0 (a view of width 0 was laid out), the frame stays as it is. A controller
  // without a view lays out as on a view of zero size.
  if (frame.size.width > 0) {
    QnSize viewSize = scrivletView_ ? scrivletView_->frame().size : QnSize{};
    double w = viewSize.width;
    double h = viewSize.height;
    double width = w * kGuidelineWidthFactor;
    guideline_->setFrame(
        makeRect(w * kGuidelineMarginFactor * 0.5, h * kNineSixteenths, width, width / gw * gh));
  }
  guideline_->setContentMode(kQnContentModeScaleAspectFit);
}

void QnScrivletController::updateLayout() {
  // Until the view has a usable size again, nothing is laid out: the guideline and the ink keep
  // their places, so that a passing empty or garbage size cannot move the ink for good.
  if (scrivletView_ && !usableForLayout(scrivletView_->frame().size)) return;
  QnPoint before = guideline_ ? guideline_->frame().origin : QnPoint{};
  layoutGuideline();
  QnPoint after = guideline_ ? guideline_->frame().origin : QnPoint{};
  if (!drawingController_) return;
  QnPoint offset{after.x - before.x, after.y - before.y};
  // A guideline first placed on a garbage size has no place to carry the ink from.
  if (!std::isfinite(offset.x) || !std::isfinite(offset.y)) offset = {0, 0};
  drawingController_->setDrawingArray(drawingController_->drawingArrayWithOffset(offset));
  drawingController_->updateLayout();
}

void QnScrivletController::observeValueForKeyPath(const std::string&) { updateLayout(); }

}  // namespace scrivlet
