// The modal signing screen: its view, toolbar, fitted prompt and buttons.
#include <scrivlet/engine/popup.h>

#include <scrivlet/engine/device.h>
#include <scrivlet/engine/navigation_controller.h>
#include <scrivlet/engine/scrivlet_controller.h>

namespace scrivlet {

namespace {
constexpr QnSize kPhoneSize{350, 200};
constexpr QnSize kPadSize{540, 527};
constexpr int kLargestPromptSize = 20;
constexpr int kSmallestPromptSize = 6;
// 1 - 0.9 as double arithmetic gives it.
constexpr double kPromptMarginFactor = 0.09999999999999998;
constexpr double kPromptWidthFactor = 0.9;
}  // namespace

const std::shared_ptr<QnView>& QnScrivletPopup::view() {
  if (!view_) loadView();
  return view_;
}

void QnScrivletPopup::loadView() {
  view_ = std::make_shared<QnView>(makeRect(0, 0, kPhoneSize.width, kPhoneSize.height));
  if (QnDevice::reportsUserInterfaceIdiom() && QnDevice::userInterfaceIdiom() == kQnUserInterfaceIdiomPad)
    view_->setFrame({view_->frame().origin, kPadSize});
  view_->setAutoresizingMask(kQnAutoresizingFlexibleWidth | kQnAutoresizingFlexibleHeight);

  // The screen is the target of its buttons, and each button (the item as the screen keeps it, by its
  // place in the toolbar) is the sender of its action.
  std::weak_ptr<QnScrivletPopup> weakSelf = weak_from_this();
  auto act = [weakSelf](void (QnScrivletPopup::*button)(const void*), size_t place) {
    return [weakSelf, button, place] {
      auto self = weakSelf.lock();
      if (!self) return;
      const auto& items = self->toolbarItems();
      ((*self).*button)(place < items.size() ? &items[place] : nullptr);
    };
  };
  setToolbarItemsAnimated(
      {QnBarButtonItem::button("Cancel", kQnBarButtonItemStylePlain, act(&QnScrivletPopup::cancelButton, 0)),
       QnBarButtonItem::button("Clear", kQnBarButtonItemStylePlain, act(&QnScrivletPopup::resetButton, 1)),
       QnBarButtonItem::flexibleSpaceItem(),
       QnBarButtonItem::button("Done", kQnBarButtonItemStyleDone, act(&QnScrivletPopup::doneButton, 3))},
      false);
  if (modalDisplayString_) fitPrompt();
}

void QnScrivletPopup::fitPrompt() {
  double w = view_->frame().size.width, h = view_->frame().size.height;
  promptLabel_ = std::make_shared<QnLabel>(
      makeRect(w * kPromptMarginFactor * 0.5, h / 15, w * kPromptWidthFactor, h / 3));
  promptLabel_->setLineBreakMode(kQnLineBreakByWordWrapping);
  promptLabel_->setNumberOfLines(0);
  promptLabel_->setText(*modalDisplayString_);
  promptLabel_->setTextColor(QnColor(1.0 / 3.0, 1.0));
  promptLabel_->setTextAlignment(kQnTextAlignmentCenter);
  promptLabel_->setAutoresizingMask(kQnAutoresizingFlexibleWidth | kQnAutoresizingFlexibleHeight |
                                    kQnAutoresizingFlexibleBottomMargin);
  // The largest whole size from 20 down whose wrapped text is lower than a third of the view; 6 at
  // the least.
  for (int size = kLargestPromptSize; size >= kSmallestPromptSize; --size) {
    promptLabel_->setFontSize(size);
    promptLabel_->sizeToFit();
    promptLabel_->setFrame(
        {promptLabel_->frame().origin, {w * kPromptWidthFactor, promptLabel_->frame().size.height}});
    if (promptLabel_->frame().size.height < h / 3) break;
  }
  view_->addSubview(promptLabel_);
}

void QnScrivletPopup::cancelButton(const void*) {
  std::weak_ptr<QnScrivletController> controller = delegate_;
  auto finish = [controller] {
    if (auto c = controller.lock()) c->didDismissModalView();
  };
  if (auto container = navigationController())
    container->dismissViewControllerAnimatedCompletion(true, finish);
  else
    finish();
}

void QnScrivletPopup::resetButton(const void* sender) {
  if (auto controller = delegate()) controller->reset(sender);
}

void QnScrivletPopup::doneButton(const void*) {
  if (auto controller = delegate()) controller->willBeDone(this);
  std::weak_ptr<QnScrivletController> controller = delegate_;
  const void* screen = this;
  auto finish = [controller, screen] {
    if (auto c = controller.lock()) c->done(screen);
  };
  if (auto container = navigationController())
    container->dismissViewControllerAnimatedCompletion(true, finish);
  else
    finish();
}

}  // namespace scrivlet
