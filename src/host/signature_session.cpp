// The signing session over the facade and its capture controller.
#include <scrivlet/signature_session.h>

#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"

#include <algorithm>
#include <cmath>

namespace scrivlet {

namespace {

// The ids of every point, stroke by stroke.
std::vector<std::vector<uint64_t>> idsOf(const QnStrokeListRef& strokes) {
  std::vector<std::vector<uint64_t>> ids;
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{}) {
    ids.emplace_back();
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{}) ids.back().push_back(p.id);
  }
  return ids;
}

// A record matches the canvas when it has its strokes, each with the canvas stroke's points, in order;
// clipping to the view may have left some points out.
bool matches(const QnSignature& record, const std::vector<std::vector<uint64_t>>& canvas, bool clipped) {
  auto recorded = idsOf(record.rawPoints());
  if (recorded.size() != canvas.size()) return false;
  for (size_t s = 0; s < canvas.size(); ++s) {
    if (!clipped && recorded[s] != canvas[s]) return false;
    auto at = canvas[s].begin();
    for (uint64_t id : recorded[s])
      if ((at = std::find(at, canvas[s].end(), id)) == canvas[s].end()) return false;
  }
  return true;
}

}  // namespace

// What the delegate's calls reach, held weakly by them so that the session may go first.
struct SignatureSession::State {
  SignatureSession* session;
  bool answerOwed = false;
  std::vector<std::vector<uint64_t>> expected;  // the canvas when "Done" came
};

SignatureSession::SignatureSession(std::shared_ptr<QnView> view)
    : state_(std::make_shared<State>(State{this, false, {}})),
      delegate_(std::make_shared<QnScrivletControllerDelegate>()),
      scrivlet_(QnScrivlet::scrivletWithViewDelegate(std::move(view), delegate_)) {
  std::weak_ptr<State> weak = state_;
  delegate_->scrivletDidEndLineWithSignaturePointCount = [weak](auto, unsigned long points) {
    if (auto state = weak.lock(); state && state->session->strokeEnded) state->session->strokeEnded(points);
  };
  // Completion reaches here only when the session asked for a record; a stale one is let pass.
  delegate_->scrivletDidCompleteWithSignature = [weak](auto, std::shared_ptr<QnSignature> record) {
    auto state = weak.lock();
    if (!state || !state->answerOwed) return;
    SignatureSession& session = *state->session;
    auto controller = session.scrivlet_->scrivletController();
    if (!record || !matches(*record, state->expected, controller->clipSignatureToBounds())) {
      controller->setDoneCallbackRequested(1);  // a preparation of the canvas is still under way
      return;
    }
    state->answerOwed = false;
    if (session.signatureReady) session.signatureReady(record);
  };
}

SignatureSession::~SignatureSession() = default;

SignatureSession::CanvasState SignatureSession::canvasState() const {
  const QnDemoDrawingController& model = *scrivlet_->scrivletController()->drawingController();
  CanvasState state{model.drawingArray()->size(), 0, model.drawingArrayForRedo()->size(), model.drawing()};
  for (const QnStrokeRef& stroke : *model.drawingArray()) state.points += stroke ? stroke->size() : 0;
  return state;
}

SignatureSession::CanvasChange SignatureSession::changeSince(CanvasState& seen) const {
  CanvasState now = canvasState();
  if (now == seen) return {};
  CanvasChange change{true, now.drawing && (!seen.drawing || now.strokes != seen.strokes),
                      (seen.points == 0) != (now.points == 0), now.points == 0};
  seen = now;
  return change;
}

bool SignatureSession::isEmpty() const {
  for (const QnStrokeRef& stroke : *scrivlet_->scrivletController()->drawingController()->drawingArray())
    if (stroke && !stroke->empty()) return false;
  return true;
}

bool SignatureSession::canUndo() const {
  return !scrivlet_->scrivletController()->drawingController()->drawingArray()->empty();
}

bool SignatureSession::canRedo() const {
  return !scrivlet_->scrivletController()->drawingController()->drawingArrayForRedo()->empty();
}

void SignatureSession::undo() { scrivlet_->scrivletController()->undo(); }
void SignatureSession::redo() { scrivlet_->scrivletController()->redo(); }
void SignatureSession::clear() { scrivlet_->reset(); }

QnStrokeListRef SignatureSession::strokes() const {
  return copyOfStrokesMovedBy(scrivlet_->scrivletController()->drawingController()->drawingArray(), {0, 0});
}

void SignatureSession::setStrokes(const QnStrokeListRef& strokes) {
  auto controller = scrivlet_->scrivletController();
  controller->drawingController()->cancelDrawingStroke();
  // A copy, without the points whose position is not finite: those are never stored.
  auto copy = std::make_shared<QnStrokeList>();
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{}) {
    copy->push_back(std::make_shared<QnStroke>());
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      if (std::isfinite(p.location.x) && std::isfinite(p.location.y)) copy->back()->push_back(p);
  }
  controller->drawingController()->setDrawingArray(copy);
  controller->drawingController()->redraw();
  controller->cacheSignatureAfterDelay(controller->delayBeforeCaching());
}

void SignatureSession::done() {
  if (isEmpty()) {
    state_->answerOwed = false;
    if (signedNothing) signedNothing();
    return;
  }
  auto controller = scrivlet_->scrivletController();
  state_->expected = idsOf(controller->drawingController()->drawingArray());
  state_->answerOwed = true;
  const auto& cached = controller->cachedSignature();
  if (cached && matches(*cached, state_->expected, controller->clipSignatureToBounds())) {
    state_->answerOwed = false;
    if (signatureReady) signatureReady(cached);
    return;
  }
  // Prepare the canvas as it is now; the record comes through the delegate when it is ready.
  controller->cacheSignatureAfterDelay(0);
  controller->setDoneCallbackRequested(1);
}

}  // namespace scrivlet
