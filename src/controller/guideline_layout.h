// Layout: the guideline's place in the capture view, the view's geometry observed, and the ink moving
// with the guideline.
#pragma once

#include <scrivlet/engine/view.h>

#include <functional>
#include <memory>
#include <vector>

namespace scrivlet {

class QnDemoDrawingController;
class QnImageView;

class QnGuidelineLayout {
 public:
  // The view may be none: the layout is then that of a view of zero size.
  explicit QnGuidelineLayout(std::shared_ptr<QnView> view);
  // Removes the observations from the view.
  ~QnGuidelineLayout();
  QnGuidelineLayout(const QnGuidelineLayout&) = delete;
  QnGuidelineLayout& operator=(const QnGuidelineLayout&) = delete;

  // Calls `changed` on every change of an observed geometry key of the view or its layer.
  void observeGeometry(std::function<void()> changed);
  // Makes the guideline, places it and adds it to the view.
  void placeGuideline();
  void layoutGuideline();
  // Places the guideline again and moves the model's ink by the guideline's displacement.
  void updateLayout(QnDemoDrawingController* model);
  const std::shared_ptr<QnImageView>& guideline() const { return guideline_; }

 private:
  std::shared_ptr<QnView> view_;
  std::shared_ptr<QnImageView> guideline_;
  std::vector<QnView::ObserverToken> observations_;
};

}  // namespace scrivlet
