// A container that a host presents modally and that dismisses itself, with its toolbar.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/controls.h>

#include <functional>
#include <memory>
#include <vector>

namespace scrivlet {

class QnScheduler;
class QnScrivletPopup;

enum QnModalPresentationStyle { kQnModalPresentationFullScreen = 0, kQnModalPresentationFormSheet = 2 };

class SCRIVLET_EXPORT QnNavigationController {
 public:
  explicit QnNavigationController(std::shared_ptr<QnScrivletPopup> rootViewController)
      : root_(std::move(rootViewController)) {}

  const std::shared_ptr<QnScrivletPopup>& rootViewController() const { return root_; }
  bool isNavigationBarHidden() const { return navigationBarHidden_; }
  void setNavigationBarHiddenAnimated(bool hidden, bool) { navigationBarHidden_ = hidden; }
  bool isToolbarHidden() const { return toolbarHidden_; }
  void setToolbarHiddenAnimated(bool hidden, bool) { toolbarHidden_ = hidden; }
  const QnColor& backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const QnColor& color) { backgroundColor_ = color; }
  bool supportsModalPresentationStyle() const { return true; }
  int modalPresentationStyle() const { return modalPresentationStyle_; }
  void setModalPresentationStyle(int style) { modalPresentationStyle_ = style; }

  // Whoever presents the container says how it closes: the handler gets the completion to run once
  // the container has gone. Without one, the container closes as the next main-thread task of the
  // scheduler its owner names (the default context's when none is named).
  using DismissHandler = std::function<void(bool animated, std::function<void()> completion)>;
  void setPresented(bool presented, DismissHandler dismissHandler = {});
  bool isPresented() const { return presented_; }
  void dismissViewControllerAnimatedCompletion(bool animated, std::function<void()> completion);

  void setSchedulerProvider(std::function<QnScheduler&()> provider) { schedulerProvider_ = std::move(provider); }

  // A presenter keeps a hold on the container's owner (the facade) while the container is shown and
  // until its dismissal's completion has run, so that a host need not keep the owner itself.
  using Hold = std::shared_ptr<void>;
  void setOwnerHoldProvider(std::function<Hold()> provider) { ownerHoldProvider_ = std::move(provider); }
  // Empty when the container has no owner, or the owner is gone.
  Hold holdOwner() const { return ownerHoldProvider_ ? ownerHoldProvider_() : nullptr; }

 private:
  std::shared_ptr<QnScrivletPopup> root_;
  bool navigationBarHidden_ = false;
  bool toolbarHidden_ = true;
  QnColor backgroundColor_ = QnColor::white();
  int modalPresentationStyle_ = kQnModalPresentationFullScreen;
  bool presented_ = false;
  DismissHandler dismissHandler_;
  std::function<Hold()> ownerHoldProvider_;
  std::function<QnScheduler&()> schedulerProvider_;
};

}  // namespace scrivlet
