// Signing on a view without Qt: the facade and its delegate kept together, the state of the canvas,
// strokes saved and loaded, and "Done" that always answers once with a record of exactly the canvas.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/export.h>
#include <scrivlet/engine/facade.h>
#include <scrivlet/error.h>
#include <scrivlet/engine/signature.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace scrivlet {

class QnContext;

class SCRIVLET_EXPORT SignatureSession {
 public:
  // Signs on the view (any QnView: a HeadlessView, a Qt capture widget's view). The session keeps the
  // facade and its delegate alive as long as it lives.
  explicit SignatureSession(std::shared_ptr<QnView> view);
  // The same on a context of its own: its scheduler's loop, its clock and its device, shared with no
  // other session. The context must outlive the session's work.
  SignatureSession(std::shared_ptr<QnView> view, std::shared_ptr<QnContext> context);
  ~SignatureSession();
  SignatureSession(const SignatureSession&) = delete;
  SignatureSession& operator=(const SignatureSession&) = delete;

  // What the session tells, on the main thread; each is optional, and setting one replaces the last.
  // A stroke ended, with the count of every point on the canvas.
  void setOnStrokeEnded(std::function<void(unsigned long pointCount)> told);
  // A record of its own for each answer: changing it changes neither the canvas nor another record.
  void setOnSignatureReady(std::function<void(std::shared_ptr<QnSignature>)> told);
  void setOnSignedNothing(std::function<void()> told);

  // The facade, for its settings. Every setting may change at any time: the record follows the
  // settings as they are at "Done".
  QnScrivlet& scrivlet();

  bool isEmpty() const;
  bool canUndo() const;
  bool canRedo() const;
  // Whatever the swipe setting: a stroke redone comes back where the ink it was drawn with now is,
  // even after the view was resized.
  void undo();
  void redo();
  void clear();

  // A copy of the strokes on the canvas.
  QnStrokeListRef strokes() const;
  // Shows a copy of the strokes in place of the canvas's (and of the strokes to redo), leaving out
  // points whose position is not finite; the signer may go on, and the next record holds them. A
  // missing list leaves the canvas as it is.
  void setStrokes(const QnStrokeListRef& strokes);
  // Loads a strokes document (strokesFromJson) in place of the canvas: nothing when it loaded, else
  // why not, and the canvas is left as it was.
  std::optional<Error> loadStrokes(std::string_view json);

  // The colour the record's PNG is painted on; none by default, which keeps the PNG transparent (the
  // PDF and SVG stay transparent either way).
  std::optional<QnColor> recordBackground() const;
  void setRecordBackground(std::optional<QnColor> color);

  // Answers exactly once, in the order asked: signatureReady with a record of the canvas as it is now,
  // at this call, with the settings as they are now (at once when the record prepared after the last
  // stroke is of the same canvas and settings, else once it is made, whatever the signer does
  // meanwhile), or signedNothing when the canvas holds no point.
  void done();

 private:
  struct State;
  std::shared_ptr<State> state_;  // shared with the callbacks, which may outlive the session
};

}  // namespace scrivlet
