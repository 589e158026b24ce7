// The modal signing screen: a toolbar with "Cancel", "Clear" and "Done", an optional prompt fitted into
// the upper third, and the capture surface.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/controls.h>
#include <scrivlet/engine/view.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class QnNavigationController;
class QnScrivletController;

class SCRIVLET_EXPORT QnScrivletPopup : public std::enable_shared_from_this<QnScrivletPopup> {
 public:
  static std::shared_ptr<QnScrivletPopup> create() {
    return std::shared_ptr<QnScrivletPopup>(new QnScrivletPopup());
  }

  // The screen's view, loaded on first use: 350 x 200, or 540 x 527 on a pad.
  const std::shared_ptr<QnView>& view();
  bool isViewLoaded() const { return view_ != nullptr; }
  void loadView();

  std::shared_ptr<QnScrivletController> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<QnScrivletController> controller) { delegate_ = std::move(controller); }
  const std::optional<std::string>& modalDisplayString() const { return modalDisplayString_; }
  void setModalDisplayString(std::optional<std::string> prompt) { modalDisplayString_ = std::move(prompt); }
  std::shared_ptr<QnNavigationController> navigationController() const { return container_.lock(); }
  void setNavigationController(std::weak_ptr<QnNavigationController> c) { container_ = std::move(c); }

  const std::vector<QnBarButtonItem>& toolbarItems() const { return toolbarItems_; }
  void setToolbarItemsAnimated(std::vector<QnBarButtonItem> items, bool) { toolbarItems_ = std::move(items); }
  // The prompt, when there is one.
  const std::shared_ptr<QnLabel>& promptLabel() const { return promptLabel_; }

  // Closes the screen; once it has gone the controller reports the cancellation.
  void cancelButton(const void* sender);
  // Clears the canvas; the screen stays.
  void resetButton(const void* sender);
  // Tells the controller completion is coming, closes the screen, then completes.
  void doneButton(const void* sender);
  bool shouldAutorotateToInterfaceOrientation(int) const { return true; }
  void didReceiveMemoryWarning() {}
  void viewDidUnload() {}

 private:
  QnScrivletPopup() = default;
  void fitPrompt();

  std::shared_ptr<QnView> view_;
  std::weak_ptr<QnScrivletController> delegate_;
  std::optional<std::string> modalDisplayString_;
  std::weak_ptr<QnNavigationController> container_;
  std::vector<QnBarButtonItem> toolbarItems_;
  std::shared_ptr<QnLabel> promptLabel_;
};

}  // namespace scrivlet
