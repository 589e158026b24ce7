// The object a host creates: signing in a view of its own, or on a modal screen the library presents.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/delegate.h>
#include <scrivlet/engine/view.h>

#include <memory>
#include <optional>
#include <string>

namespace scrivlet {

class QnNavigationController;
class QnScrivletController;
class QnScrivletPopup;

// The settings it reports are only what the host set (false, 0 and nothing until then); the
// controller works with its own defaults meanwhile.
class SCRIVLET_EXPORT QnScrivlet : public std::enable_shared_from_this<QnScrivlet> {
 public:
  // Modal use: builds the signing screen and asks the delegate to present it. The host keeps the
  // delegate alive.
  static std::shared_ptr<QnScrivlet> scrivletWithDelegateModalDisplayString(
      std::shared_ptr<QnScrivletControllerDelegate> delegate, std::optional<std::string> prompt);
  // In-view use: captures on the host's view.
  static std::shared_ptr<QnScrivlet> scrivletWithViewDelegate(
      std::shared_ptr<QnView> view, std::shared_ptr<QnScrivletControllerDelegate> delegate);
  static std::shared_ptr<QnScrivlet> initWithViewDelegateModalModalDisplayString(
      std::shared_ptr<QnView> view, std::shared_ptr<QnScrivletControllerDelegate> delegate,
      bool modal, std::optional<std::string> prompt);

  // Clears the canvas.
  void reset(const void* sender = nullptr);
  // Completes: the delegate gets the record (at once, or when it is ready), or hears there is none.
  void done(const void* sender = nullptr);

  bool showGuideline() const { return showGuideline_; }
  void setShowGuideline(bool show);
  bool showDate() const { return showDate_; }
  void setShowDate(bool show);
  bool dateIncludesTime() const { return dateIncludesTime_; }
  void setDateIncludesTime(bool includes);
  bool showHash() const { return showHash_; }
  void setShowHash(bool show);
  bool swipeToUndoEnabled() const { return swipeToUndoEnabled_; }
  void setSwipeToUndoEnabled(bool enabled);
  bool clipSignatureToBounds() const { return clipSignatureToBounds_; }
  void setClipSignatureToBounds(bool clip);
  bool drawOnlyWithApplePencil() const { return drawOnlyWithApplePencil_; }
  void setDrawOnlyWithApplePencil(bool stylusOnly);
  bool useCalligraphicBrush() const { return useCalligraphicBrush_; }
  void setUseCalligraphicBrush(bool calligraphic);
  float strokeWidth() const { return strokeWidth_; }
  void setStrokeWidth(float width);
  float velocityReduction() const { return velocityReduction_; }
  void setVelocityReduction(float reduction);
  float exportScale() const { return exportScale_; }
  void setExportScale(float scale);
  const std::optional<QnColor>& strokeColor() const { return strokeColor_; }
  void setStrokeColor(const QnColor& color);
  const std::optional<std::string>& customHash() const { return customHash_; }
  void setCustomHash(std::optional<std::string> hash);

  const std::shared_ptr<QnScrivletPopup>& modalController() const { return modalController_; }
  const std::shared_ptr<QnScrivletController>& scrivletController() const { return scrivletController_; }
  // The presented container of the modal screen.
  const std::shared_ptr<QnNavigationController>& modalContainer() const { return modalContainer_; }

 private:
  QnScrivlet() = default;

  bool showGuideline_ = false;
  bool showDate_ = false;
  bool dateIncludesTime_ = false;
  bool showHash_ = false;
  bool swipeToUndoEnabled_ = false;
  bool clipSignatureToBounds_ = false;
  bool drawOnlyWithApplePencil_ = false;
  bool useCalligraphicBrush_ = false;
  float strokeWidth_ = 0;
  float velocityReduction_ = 0;
  float exportScale_ = 0;
  std::optional<QnColor> strokeColor_;
  std::optional<std::string> customHash_;
  std::shared_ptr<QnScrivletPopup> modalController_;
  std::shared_ptr<QnScrivletController> scrivletController_;
  std::shared_ptr<QnNavigationController> modalContainer_;
};

}  // namespace scrivlet
