// Undo and redo of whole strokes, by the host or by a three-finger swipe, while the settings allow it.
// The strokes undone are kept by the stroke model; this decides when it is asked.
#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace scrivlet {

class QnDemoDrawingController;
class QnGestureRecognizer;
struct QnScrivletSettings;

class QnUndoHistory {
 public:
  // The settings and the model are the owner's, and outlive the history.
  QnUndoHistory(const QnScrivletSettings& settings, const std::shared_ptr<QnDemoDrawingController>& model);

  void undo();
  void redo();
  // The swipes: three fingers to the left call `undo`, to the right `redo`.
  static std::vector<std::shared_ptr<QnGestureRecognizer>> swipeRecognizers(
      std::function<void(QnGestureRecognizer&)> undo, std::function<void(QnGestureRecognizer&)> redo);

 private:
  const QnScrivletSettings& settings_;
  const std::shared_ptr<QnDemoDrawingController>& model_;
};

}  // namespace scrivlet
