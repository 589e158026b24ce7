// Signing on a view without Qt: the facade and its delegate kept together, the state of the canvas,
// strokes saved and loaded, and "Done" that always answers once with a record of exactly the canvas.
#pragma once

#include <scrivlet/export.h>
#include <scrivlet/facade.h>
#include <scrivlet/signature.h>

#include <functional>
#include <memory>

namespace scrivlet {

class SCRIVLET_EXPORT SignatureSession {
 public:
  // Signs on the view (any QnView: a HeadlessView, a Qt capture widget's view). The session keeps the
  // facade and its delegate alive as long as it lives.
  explicit SignatureSession(std::shared_ptr<QnView> view);
  ~SignatureSession();
  SignatureSession(const SignatureSession&) = delete;
  SignatureSession& operator=(const SignatureSession&) = delete;

  // What the session tells, on the main thread; each is optional.
  std::function<void(unsigned long pointCount)> strokeEnded;  // every point on the canvas
  std::function<void(std::shared_ptr<QnSignature>)> signatureReady;
  std::function<void()> signedNothing;

  // The facade, for its settings.
  QnScrivlet& scrivlet() { return *scrivlet_; }

  // The canvas at a glance, to compare with an earlier look: strokes, points, strokes to redo, and
  // whether a stroke is being drawn.
  struct CanvasState {
    size_t strokes = 0, points = 0, redoable = 0;
    bool drawing = false;
    bool operator==(const CanvasState&) const = default;
  };
  CanvasState canvasState() const;
  // What changed since the state last seen, which it updates: anything, a stroke begun, emptiness.
  struct CanvasChange {
    bool changed = false, strokeBegan = false, emptinessChanged = false, empty = false;
  };
  CanvasChange changeSince(CanvasState& seen) const;

  bool isEmpty() const;
  bool canUndo() const;
  bool canRedo() const;
  void undo();
  void redo();
  void clear();

  // A copy of the strokes on the canvas.
  QnStrokeListRef strokes() const;
  // Shows a copy of the strokes in place of the canvas's, leaving out points whose position is not
  // finite; the signer may go on, and the next record holds them.
  void setStrokes(const QnStrokeListRef& strokes);

  // Answers once: signatureReady with a record of exactly the strokes on the canvas now (at once when
  // the prepared one matches, else when a new preparation has finished), or signedNothing.
  void done();

 private:
  struct State;
  std::shared_ptr<State> state_;
  std::shared_ptr<QnScrivletControllerDelegate> delegate_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

}  // namespace scrivlet
