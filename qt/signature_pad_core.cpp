// The pad's shared core: change detection, taps' dots, resizing, strokes as JSON and the keys.
#include "signature_pad_core.h"

#include "qt_log.h"

#include <scrivlet/engine/scrivlet_controller.h>
#include <scrivlet/stroke_json.h>

#include "capture/drawing_controller.h"
#include "platform/image_view.h"

#include <QKeyEvent>

#include <algorithm>
#include <cmath>
#include <optional>

namespace scrivlet {

namespace {

// A stroke whose points all lie this close to its first one is a tap.
constexpr double kTapReach = 2.0;

// The rectangle the ink covers, its widths included; nothing without ink.
std::optional<QnRect> inkBounds(const QnStrokeListRef& strokes) {
  double left = INFINITY, top = INFINITY, right = -INFINITY, bottom = -INFINITY;
  for (const QnStrokeRef& stroke : *strokes)
    for (const QnSignaturePoint& p : *stroke) {
      double r = std::isfinite(p.diameter) ? p.diameter / 2 : 0;
      left = std::min(left, p.location.x - r), right = std::max(right, p.location.x + r);
      top = std::min(top, p.location.y - r), bottom = std::max(bottom, p.location.y + r);
    }
  if (!(left <= right && top <= bottom)) return std::nullopt;
  return makeRect(left, top, right - left, bottom - top);
}

bool inside(const QnRect& ink, QnSize view) {
  return ink.origin.x >= 0 && ink.origin.y >= 0 && ink.origin.x + ink.size.width <= view.width &&
         ink.origin.y + ink.size.height <= view.height;
}

bool isTap(const QnStroke& stroke) {
  return std::all_of(stroke.begin(), stroke.end(), [&](const QnSignaturePoint& p) {
    return std::hypot(p.location.x - stroke[0].location.x, p.location.y - stroke[0].location.y) <= kTapReach;
  });
}

}  // namespace

SignaturePadCore::SignaturePadCore(std::shared_ptr<QnView> view)
    : view_(std::move(view)),
      input_(view_),
      session_(std::make_unique<SignatureSession>(view_)),
      settings_(std::make_unique<SignatureSettings>(*session_)) {
  told_ = look();
  session_->setOnStrokeEnded([this](unsigned long) { strokeDidEnd(); });
  session_->setOnSignatureReady([this](std::shared_ptr<QnSignature> record) {
    if (events.signatureReady) events.signatureReady(SignatureRecord(std::move(record)));
  });
  session_->setOnSignedNothing([this] {
    if (events.signedNothing) events.signedNothing();
  });
}

SignaturePadCore::~SignaturePadCore() {
  events = {};  // nothing is told while the session goes
}

SignaturePadCore::Look SignaturePadCore::look() const {
  const QnDemoDrawingController& model = *session_->scrivlet().scrivletController()->drawingController();
  Look now;
  now.open = model.drawing() ? model.pointArray().get() : nullptr;
  for (const QnStrokeRef& stroke : *model.drawingArray())
    if (stroke.get() != now.open) now.finished.emplace_back(stroke->empty() ? 0 : stroke->front().id, stroke->size());
  now.redoable = model.drawingArrayForRedo()->size();
  now.empty = session_->isEmpty(), now.canUndo = session_->canUndo(), now.canRedo = session_->canRedo();
  now.description = description();
  return now;
}

int SignaturePadCore::strokeCount() const {
  const QnDemoDrawingController& model = *session_->scrivlet().scrivletController()->drawingController();
  size_t count = model.drawingArray()->size() - (model.drawing() ? 1 : 0);
  return int(std::min<size_t>(count, INT_MAX));
}

QString SignaturePadCore::description() const {
  // Finished strokes: the description changes, and is announced, as each stroke ends.
  int count = strokeCount();
  if (count == 0) return "empty";
  return count == 1 ? QString("1 stroke") : QString("%1 strokes").arg(count);
}

void SignaturePadCore::noticeChanges() {
  Look now = look();
  Look before = std::exchange(told_, now);
  if (now.open && now.open != before.open && events.strokeBegan) events.strokeBegan();
  bool changed = changedUntold_ || now.finished != before.finished || now.redoable != before.redoable;
  changedUntold_ = false;
  if (changed && events.changed) events.changed();
  if (now.finished.size() != before.finished.size() && events.strokeCountChanged)
    events.strokeCountChanged(int(now.finished.size()));
  if (now.empty != before.empty && events.emptyChanged) events.emptyChanged(now.empty);
  if (now.canUndo != before.canUndo && events.canUndoChanged) events.canUndoChanged(now.canUndo);
  if (now.canRedo != before.canRedo && events.canRedoChanged) events.canRedoChanged(now.canRedo);
  if (now.description != before.description && events.descriptionChanged) events.descriptionChanged();
}

void SignaturePadCore::strokeDidEnd() {
  const QnStrokeListRef& drawn = session_->scrivlet().scrivletController()->drawingController()->drawingArray();
  if (drawn->empty()) return noticeChanges();
  int index = int(drawn->size()) - 1, points = int(std::min<size_t>(drawn->back()->size(), INT_MAX));
  // A tap is drawn as a dot of the size asked for: the strokes are shown again with its points at that
  // width (the record, prepared later, holds the same widths).
  if (settings_->dotSize > 0 && !drawn->back()->empty() && isTap(*drawn->back())) {
    QnStrokeListRef strokes = session_->strokes();
    for (QnSignaturePoint& p : *strokes->back()) p.diameter = float(settings_->dotSize);
    session_->setStrokes(strokes);
  }
  if (events.strokeEnded) events.strokeEnded(index, points);
  noticeChanges();
}

void SignaturePadCore::endInput() {
  input_.endAll();
  noticeChanges();
}

bool SignaturePadCore::handleKey(QKeyEvent* event) {
  if (settings_->readOnly) return false;
  if (event->matches(QKeySequence::Undo)) return undo(), true;
  if (event->matches(QKeySequence::Redo)) return redo(), true;
  return false;
}

void SignaturePadCore::setStrokes(const QnStrokeListRef& strokes) {
  input_.endAll();
  session_->setStrokes(strokes);
  if (!painted_) loadedBeforePainted_ = session_->strokes();
  changedUntold_ = true;  // loading the same strokes again is a load all the same
  noticeChanges();
}

QString SignaturePadCore::strokesJson() const { return QString::fromStdString(strokesToJson(session_->strokes())); }

void SignaturePadCore::setStrokesJson(const QString& json) {
  if (json.isEmpty()) return clear();
  if (QString why = loadStrokes(json); !why.isEmpty())
    logWarning(QString::asprintf("Scrivlet: strokes refused: %s", qPrintable(why)));
}

QString SignaturePadCore::loadStrokes(const QString& json) {
  Result<QnStrokeListRef> strokes = strokesFromJson(json.toStdString());
  if (!strokes) return QString::fromStdString(strokes.error().message());
  setStrokes(*strokes);
  return {};
}

void SignaturePadCore::clear() {
  input_.endAll();
  session_->clear();
  loadedBeforePainted_ = nullptr;
  noticeChanges();
}

void SignaturePadCore::undo() { session_->undo(), noticeChanges(); }
void SignaturePadCore::redo() { session_->redo(), noticeChanges(); }

void SignaturePadCore::beforeResize() {
  // A stroke open while the engine moves the ink would lose its later points: it ends here.
  input_.endAll();
  sizeBefore_ = view_->frame().size;
  auto ink = inkBounds(session_->scrivlet().scrivletController()->drawingController()->drawingArray());
  inkInsideBefore_ = !ink || inside(*ink, sizeBefore_);
}

void SignaturePadCore::afterResize() {
  QnSize size = view_->frame().size;
  if (!painted_) {
    // Strokes loaded into a pad not yet laid out stay where they were loaded.
    if (loadedBeforePainted_) session_->setStrokes(loadedBeforePainted_);
    return noticeChanges();
  }
  if (size.width == sizeBefore_.width && size.height == sizeBefore_.height) return noticeChanges();
  switch (settings_->resizePolicy) {
    case 1:
      // The engine has moved the ink with the signing line; scaled about the line's new start.
      if (sizeBefore_.width > 0 && sizeBefore_.height > 0) {
        QnPoint line = session_->scrivlet().scrivletController()->guideline()->frame().origin;
        transformInk(line, line, std::min(size.width / sizeBefore_.width, size.height / sizeBefore_.height));
      }
      break;
    case 2:
      session_->clear();
      break;
    default:
      break;
  }
  if (inkInsideBefore_) fitInk();
  noticeChanges();
}

void SignaturePadCore::transformInk(QnPoint from, QnPoint to, double scale) {
  QnStrokeListRef strokes = session_->strokes();
  if (strokes->empty()) return;
  for (QnStrokeRef& stroke : *strokes)
    for (QnSignaturePoint& p : *stroke) {
      p.location = {to.x + (p.location.x - from.x) * scale, to.y + (p.location.y - from.y) * scale};
      p.diameter = float(p.diameter * scale);
    }
  session_->setStrokes(strokes);
  changedUntold_ = true;
}

void SignaturePadCore::fitInk() {
  QnSize size = view_->frame().size;
  auto ink = inkBounds(session_->scrivlet().scrivletController()->drawingController()->drawingArray());
  if (!ink || inside(*ink, size) || size.width <= 0 || size.height <= 0) return;
  double scale = std::min({1.0, size.width / ink->size.width, size.height / ink->size.height});
  // The scaled ink keeps its place as far as the view allows.
  double x = std::clamp(ink->origin.x, 0.0, size.width - ink->size.width * scale);
  double y = std::clamp(ink->origin.y, 0.0, size.height - ink->size.height * scale);
  transformInk(ink->origin, {x, y}, scale);
}

}  // namespace scrivlet
