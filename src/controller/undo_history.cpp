#include "controller/undo_history.h"

#include <scrivlet/engine/gesture_recognizer.h>
#include <scrivlet/engine/scrivlet_settings.h>

#include "capture/drawing_controller.h"

namespace scrivlet {

namespace {
constexpr int kSwipeFingers = 3;
}  // namespace

QnUndoHistory::QnUndoHistory(const QnScrivletSettings& settings, const std::shared_ptr<QnDemoDrawingController>& model)
    : settings_(settings), model_(model) {}

void QnUndoHistory::undo() {
  if (settings_.swipeToUndoEnabled && model_) model_->undoDrawingStroke();
}

void QnUndoHistory::redo() {
  if (settings_.swipeToUndoEnabled && model_) model_->redoDrawingStroke();
}

std::vector<std::shared_ptr<QnGestureRecognizer>> QnUndoHistory::swipeRecognizers(
    std::function<void(QnGestureRecognizer&)> undo, std::function<void(QnGestureRecognizer&)> redo) {
  auto undoSwipe = std::make_shared<QnSwipeGestureRecognizer>(kQnSwipeDirectionLeft, kSwipeFingers);
  undoSwipe->setAction(std::move(undo));
  auto redoSwipe = std::make_shared<QnSwipeGestureRecognizer>(kQnSwipeDirectionRight, kSwipeFingers);
  redoSwipe->setAction(std::move(redo));
  return {undoSwipe, redoSwipe};
}

}  // namespace scrivlet
