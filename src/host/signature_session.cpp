// The signing session over the facade and its capture controller: its own records of the canvas, a
// watcher of the touches after the controller has seen them, and strokes to redo that follow layouts.
#include <scrivlet/signature_session.h>

#include <scrivlet/engine/context.h>
#include <scrivlet/engine/gesture_recognizer.h>
#include <scrivlet/engine/scheduler.h>
#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/stroke_json.h>

#include "capture/drawing_controller.h"
#include "host/record_preparation.h"
#include "platform/image_view.h"

#include <algorithm>
#include <cmath>
#include <deque>

namespace scrivlet {

namespace {

// The geometry whose change lays the canvas out again.
constexpr std::pair<QnGeometryTarget, const char*> kLayoutGeometry[] = {
    {QnGeometryTarget::view, "frame"},         {QnGeometryTarget::layer, "bounds"},
    {QnGeometryTarget::layer, "transform"},    {QnGeometryTarget::layer, "position"},
    {QnGeometryTarget::layer, "zPosition"},    {QnGeometryTarget::layer, "anchorPoint"},
    {QnGeometryTarget::layer, "anchorPointZ"}, {QnGeometryTarget::layer, "frame"}};

}  // namespace

// What the callbacks reach, held weakly by them so that the session may go first.
struct SignatureSession::State : std::enable_shared_from_this<State> {
  class Watcher;
  // A record asked for: what it is of, and the record once it is made.
  struct Preparation {
    RecordRequest request;
    uint64_t sequence;
    std::shared_ptr<QnSignature> record;
  };

  SignatureSession* session;  // none once the session is gone
  std::function<void(unsigned long)> onStrokeEnded;
  std::function<void(std::shared_ptr<QnSignature>)> onSignatureReady;
  std::function<void()> onSignedNothing;
  std::shared_ptr<QnScrivletControllerDelegate> delegate;
  std::shared_ptr<QnScrivlet> scrivlet;
  std::shared_ptr<QnContext> context;  // none for the default context
  std::shared_ptr<QnScrivletController> controller;
  std::optional<QnColor> background;
  // Under way, and the latest made.
  std::vector<std::shared_ptr<Preparation>> preparations;
  uint64_t nextSequence = 0;
  // The answers owed, in order: a record once made, or none for an empty canvas.
  std::deque<std::shared_ptr<Preparation>> answersOwed;
  bool answering = false;
  std::shared_ptr<QnTimer> advanceTimer;
  // The touch that began the stroke being drawn, and that stroke.
  std::weak_ptr<QnTouch> drawingTouch;
  std::weak_ptr<QnStroke> drawingStroke;
  QnPoint guidelineOrigin;
  // What the session put on the view, to take off when it goes.
  std::weak_ptr<QnView> view;
  std::shared_ptr<QnGestureRecognizer> watcher;
  std::vector<QnView::ObserverToken> observations;

  QnDemoDrawingController& model() const { return *controller->drawingController(); }
  bool canvasEmpty() const;
  std::shared_ptr<Preparation> preparationOf(RecordRequest request);
  void prepared(const std::shared_ptr<Preparation>& preparation);
  void answer();
  void prepareInAdvance();
  void touchesBegan(const QnTouchSet& touches);
  void touchesEnded(const QnTouchSet& touches, bool cancelled);
  void followLayout();
};

// Sees every touch phase after the capture controller, for the session.
class SignatureSession::State::Watcher : public QnGestureRecognizer {
 public:
  explicit Watcher(std::weak_ptr<State> state) : state_(std::move(state)) {
    setCancelsTouchesInView(false), setDelaysTouchesEnded(false);
  }
  void touchesBeganWithEvent(const QnTouchSet& touches, const QnEvent&) override {
    if (auto state = live()) state->touchesBegan(touches);
  }
  void touchesEndedWithEvent(const QnTouchSet& touches, const QnEvent&) override {
    if (auto state = live()) state->touchesEnded(touches, false);
  }
  void touchesCancelledWithEvent(const QnTouchSet& touches, const QnEvent&) override {
    if (auto state = live()) state->touchesEnded(touches, true);
  }

 private:
  std::shared_ptr<State> live() const {
    auto state = state_.lock();
    return state && state->session ? state : nullptr;
  }
  std::weak_ptr<State> state_;
};

bool SignatureSession::State::canvasEmpty() const {
  const QnStrokeList& strokes = *model().drawingArray();
  return std::all_of(strokes.begin(), strokes.end(), [](const QnStrokeRef& s) { return !s || s->empty(); });
}

std::shared_ptr<SignatureSession::State::Preparation> SignatureSession::State::preparationOf(RecordRequest request) {
  for (const auto& preparation : preparations)
    if (preparation->request.sameRecordAs(request)) return preparation;
  auto preparation = std::make_shared<Preparation>(Preparation{std::move(request), nextSequence++, nullptr});
  preparations.push_back(preparation);
  std::weak_ptr<State> weak = weak_from_this();
  prepareRecordInBackground(controller->context(), preparation->request, [weak, preparation](std::shared_ptr<QnSignature> record) {
    preparation->record = std::move(record);
    if (auto state = weak.lock()) state->prepared(preparation);
  });
  return preparation;
}

void SignatureSession::State::prepared(const std::shared_ptr<Preparation>& preparation) {
  // Of the records made, only the one asked for last is kept for the next "Done".
  uint64_t latest = preparation->sequence;
  for (const auto& p : preparations)
    if (p->record) latest = std::max(latest, p->sequence);
  std::erase_if(preparations, [latest](const auto& p) { return p->record && p->sequence < latest; });
  answer();
}

void SignatureSession::State::answer() {
  if (answering) return;  // a host answering "Done" with another "Done": the loop below takes it
  answering = true;
  std::shared_ptr<State> self = shared_from_this();  // the host may let the session go meanwhile
  while (session && !answersOwed.empty() && (!answersOwed.front() || answersOwed.front()->record)) {
    std::shared_ptr<Preparation> owed = std::move(answersOwed.front());
    answersOwed.pop_front();
    if (!owed) {
      if (auto told = onSignedNothing) told();
    } else if (auto told = onSignatureReady) {
      told(copyOfRecord(*owed->record));
    }
  }
  answering = false;
}

void SignatureSession::State::prepareInAdvance() {
  if (advanceTimer) advanceTimer->invalidate();
  std::weak_ptr<State> weak = weak_from_this();
  advanceTimer = controller->context().scheduler().scheduleTimer(controller->delayBeforeCaching(), [weak] {
    auto state = weak.lock();
    if (state && state->session && !state->canvasEmpty() && !state->model().drawing())
      state->preparationOf(requestOfCanvas(*state->controller, state->background));
  });
}

void SignatureSession::State::touchesBegan(const QnTouchSet& touches) {
  const QnStrokeRef& open = model().pointArray();
  if (!model().drawing() || !open || open == drawingStroke.lock() || touches.empty()) return;
  // A stroke began with the set's first touch: the record waits until it ends.
  drawingStroke = open, drawingTouch = touches.front();
  if (advanceTimer) advanceTimer->invalidate();
}

void SignatureSession::State::touchesEnded(const QnTouchSet& touches, bool cancelled) {
  // The controller follows its touch by position alone: a cancel reported elsewhere would leave the
  // stroke open. The session knows the touch itself.
  std::shared_ptr<QnTouch> touch = drawingTouch.lock();
  if (cancelled && touch && model().drawing() && model().pointArray() == drawingStroke.lock() &&
      std::find(touches.begin(), touches.end(), touch) != touches.end())
    model().cancelDrawingStroke();
  // The session prepares its records itself, with every setting.
  if (controller->cacheTimer()) controller->cacheTimer()->invalidate();
  if (!model().drawing()) prepareInAdvance();
}

void SignatureSession::State::followLayout() {
  // A layout moves the strokes on the canvas with the guideline, and the strokes to redo with them.
  QnPoint origin = controller->guideline() ? controller->guideline()->frame().origin : QnPoint{};
  QnPoint offset{origin.x - guidelineOrigin.x, origin.y - guidelineOrigin.y};
  guidelineOrigin = origin;
  if (offset == QnPoint{} || !std::isfinite(offset.x) || !std::isfinite(offset.y)) return;
  // As the engine keeps the canvas's ink where a move would carry a point past the largest number,
  // the strokes to redo stay where they are then.
  QnStrokeListRef redo = model().drawingArrayForRedo();
  if (movingStrokesLosesPoints(redo, offset)) return;
  *redo = *copyOfStrokesMovedBy(redo, offset);
}

SignatureSession::SignatureSession(std::shared_ptr<QnView> view) : SignatureSession(std::move(view), nullptr) {}

SignatureSession::SignatureSession(std::shared_ptr<QnView> view, std::shared_ptr<QnContext> context)
    : state_(std::make_shared<State>()) {
  state_->session = this;
  state_->delegate = std::make_shared<QnScrivletControllerDelegate>();
  state_->scrivlet = QnScrivlet::scrivletWithViewDelegate(view, state_->delegate);
  state_->context = context;
  state_->controller = state_->scrivlet->scrivletController();
  state_->controller->setContext(std::move(context));
  std::weak_ptr<State> weak = state_;
  state_->delegate->scrivletDidEndLineWithSignaturePointCount = [weak](auto, unsigned long points) {
    auto state = weak.lock();
    if (auto told = state && state->session ? state->onStrokeEnded : nullptr) told(points);
  };
  if (!view) return;
  state_->view = view;
  state_->watcher = std::make_shared<State::Watcher>(weak);
  view->addGestureRecognizer(state_->watcher);
  for (auto [target, key] : kLayoutGeometry)
    state_->observations.push_back(
        view->addGeometryObserver(target, key, [weak](QnGeometryTarget, const std::string&) {
          if (auto state = weak.lock(); state && state->session) state->followLayout();
        }));
  state_->followLayout();
}

SignatureSession::~SignatureSession() {
  state_->session = nullptr;
  if (state_->advanceTimer) state_->advanceTimer->invalidate();
  if (auto view = state_->view.lock()) {
    view->removeGestureRecognizer(state_->watcher.get());
    for (QnView::ObserverToken token : state_->observations) view->removeGeometryObserver(token);
  }
  // The facade goes with the session, whatever callbacks still hold of its state.
  state_->scrivlet.reset();
  state_->delegate.reset();
}

void SignatureSession::setOnStrokeEnded(std::function<void(unsigned long)> told) { state_->onStrokeEnded = std::move(told); }
void SignatureSession::setOnSignatureReady(std::function<void(std::shared_ptr<QnSignature>)> told) {
  state_->onSignatureReady = std::move(told);
}
void SignatureSession::setOnSignedNothing(std::function<void()> told) { state_->onSignedNothing = std::move(told); }

QnScrivlet& SignatureSession::scrivlet() { return *state_->scrivlet; }

bool SignatureSession::isEmpty() const { return state_->canvasEmpty(); }
bool SignatureSession::canUndo() const { return !state_->model().drawingArray()->empty(); }
bool SignatureSession::canRedo() const { return !state_->model().drawingArrayForRedo()->empty(); }

void SignatureSession::undo() {
  state_->model().undoDrawingStroke();
  state_->prepareInAdvance();
}

void SignatureSession::redo() {
  state_->followLayout();
  state_->model().redoDrawingStroke();
  state_->prepareInAdvance();
}

void SignatureSession::clear() {
  state_->scrivlet->reset();
  if (state_->advanceTimer) state_->advanceTimer->invalidate();
}

QnStrokeListRef SignatureSession::strokes() const { return exactCopyOfStrokes(state_->model().drawingArray()); }

void SignatureSession::setStrokes(const QnStrokeListRef& strokes) {
  if (!strokes) return;
  QnDemoDrawingController& model = state_->model();
  model.cancelDrawingStroke();
  // A copy, without the points whose position is not finite: those are never stored.
  auto copy = std::make_shared<QnStrokeList>();
  for (const QnStrokeRef& stroke : *strokes) {
    copy->push_back(std::make_shared<QnStroke>());
    for (const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      if (std::isfinite(p.location.x) && std::isfinite(p.location.y)) copy->back()->push_back(p);
  }
  model.setDrawingArray(copy);
  model.drawingArrayForRedo()->clear();
  model.redraw();
  state_->prepareInAdvance();
}

std::optional<Error> SignatureSession::loadStrokes(std::string_view json) {
  Result<QnStrokeListRef> strokes = strokesFromJson(json);
  if (!strokes) return strokes.error();
  setStrokes(*strokes);
  return std::nullopt;
}

std::optional<QnColor> SignatureSession::recordBackground() const { return state_->background; }
void SignatureSession::setRecordBackground(std::optional<QnColor> color) { state_->background = std::move(color); }

void SignatureSession::done() {
  state_->answersOwed.push_back(
      isEmpty() ? nullptr : state_->preparationOf(requestOfCanvas(*state_->controller, state_->background)));
  state_->answer();
}

}  // namespace scrivlet
