// What a host hears from Scrivlet: each method is optional, and an empty one is simply not called.
#pragma once

#include <scrivlet/export.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace scrivlet {

class QnNavigationController;
class QnScrivlet;
class QnSignature;

// Every call comes on the main thread, with the facade (the controller's manager) first; the facade is
// empty for a controller used on its own.
struct SCRIVLET_EXPORT QnScrivletControllerDelegate {
  // A stroke ended; the count is of the points of every stroke on the canvas, this one included.
  std::function<void(std::shared_ptr<QnScrivlet> scrivlet, unsigned long pointCount)>
      scrivletDidEndLineWithSignaturePointCount;
  // Completion with strokes, as soon as a prepared record is there; always before the did-complete call.
  std::function<void(std::shared_ptr<QnScrivlet> scrivlet, std::shared_ptr<QnSignature> signature)>
      scrivletWillCompleteWithSignature;
  std::function<void(std::shared_ptr<QnScrivlet> scrivlet, std::shared_ptr<QnSignature> signature)>
      scrivletDidCompleteWithSignature;
  // Completion with no stroke on the canvas.
  std::function<void(std::shared_ptr<QnScrivlet> scrivlet)> scrivletDidCompleteWithNoSignature;
  // The modal screen closed through "Cancel".
  std::function<void(std::shared_ptr<QnScrivlet> scrivlet)> scrivletDidCancelModalView;
  // In modal use the delegate presents the signing screen's container, as a view controller presents
  // another; it tells the container how it is dismissed (QnNavigationController::setPresented).
  std::function<void(std::shared_ptr<QnNavigationController> container, bool animated,
                     std::function<void()> completion)>
      presentViewControllerAnimatedCompletion;
};

}  // namespace scrivlet
