#include "controller/guideline_layout.h"

#include "capture/drawing_controller.h"
#include "platform/image_view.h"
#include "platform/narrowing.h"
#include "render/style_kit.h"

#include <cmath>

namespace scrivlet {

namespace {
// 0.95 and 1 - 0.95 as single-precision values, used in double arithmetic.
constexpr double kGuidelineWidthFactor = 0.949999988079071;
constexpr double kGuidelineMarginFactor = 0.050000011920928955;
constexpr double kNineSixteenths = 9 * 0.0625;

struct Observed {
  QnGeometryTarget target;
  const char* key;
};
// "frame" is observed on the view and on its layer, and the layer's "transform" twice: a change of
// either re-lays out twice.
constexpr Observed kObservedGeometry[] = {
    {QnGeometryTarget::view, "frame"},        {QnGeometryTarget::layer, "bounds"},
    {QnGeometryTarget::layer, "transform"},   {QnGeometryTarget::layer, "position"},
    {QnGeometryTarget::layer, "zPosition"},   {QnGeometryTarget::layer, "anchorPoint"},
    {QnGeometryTarget::layer, "anchorPointZ"}, {QnGeometryTarget::layer, "frame"},
    {QnGeometryTarget::layer, "transform"},
};

}  // namespace

QnGuidelineLayout::QnGuidelineLayout(std::shared_ptr<QnView> view) : view_(std::move(view)) {}

QnGuidelineLayout::~QnGuidelineLayout() {
  if (view_)
    for (QnView::ObserverToken token : observations_) view_->removeGeometryObserver(token);
}

void QnGuidelineLayout::observeGeometry(std::function<void()> changed) {
  if (!view_) return;
  for (const Observed& observed : kObservedGeometry)
    observations_.push_back(
        view_->addGeometryObserver(observed.target, observed.key, [changed](QnGeometryTarget, const std::string&) { changed(); }));
}

void QnGuidelineLayout::placeGuideline() {
  guideline_ = std::make_shared<QnImageView>(QnScrivletStyleKit::imageOfScrivlet_x());
  layoutGuideline();
  if (view_) view_->addSubview(guideline_);
}

void QnGuidelineLayout::layoutGuideline() {
  if (!guideline_) return;
  QnRect frame = guideline_->frame();
  float gw = narrowToFloat(frame.size.width);
  float gh = narrowToFloat(frame.size.height);
  // Once the width is 0 (a view of width 0 was laid out), the frame stays as it is. A controller
  // without a view lays out as on a view of zero size.
  if (frame.size.width > 0) {
    QnSize viewSize = view_ ? view_->frame().size : QnSize{};
    double w = viewSize.width;
    double h = viewSize.height;
    double width = w * kGuidelineWidthFactor;
    guideline_->setFrame(
        makeRect(w * kGuidelineMarginFactor * 0.5, h * kNineSixteenths, width, width / gw * gh));
  }
  guideline_->setContentMode(kQnContentModeScaleAspectFit);
}

void QnGuidelineLayout::updateLayout(QnDemoDrawingController* model) {
  // A size that is not a number has no place to lay anything out at: the guideline and the ink keep
  // theirs until the view has one again. Every other size is laid out, an empty one included (which
  // leaves the guideline empty for good, and moves the ink with it).
  QnSize size = view_ ? view_->frame().size : QnSize{};
  if (!std::isfinite(size.width) || !std::isfinite(size.height)) return;
  QnRect before = guideline_ ? guideline_->frame() : QnRect{};
  layoutGuideline();
  QnPoint after = guideline_ ? guideline_->frame().origin : QnPoint{};
  if (!model) return;
  QnPoint offset{after.x - before.origin.x, after.y - before.origin.y};
  // A guideline first placed on a garbage size has no place to carry the ink from.
  if (!std::isfinite(offset.x) || !std::isfinite(offset.y)) offset = {0, 0};
  // Nor is ink carried where it would be lost: the guideline goes back to the ink.
  if (movingStrokesLosesPoints(model->drawingArray(), offset)) {
    guideline_->setFrame(before);
    return;
  }
  model->setDrawingArray(model->drawingArrayWithOffset(offset));
  model->updateLayout();
}

}  // namespace scrivlet
