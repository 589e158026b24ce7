// What the widget and the Qt Quick item share beneath their properties: the view signed on, the
// session, the settings, the input, and the pad's own features over the engine (taps' dots, read-only,
// what a resize does to the ink, what changed and what to tell).
#pragma once

#include <scrivlet/qt_export.h>
#include <scrivlet/signature_record.h>
#include <scrivlet/signature_session.h>

#include "qt_input_translator.h"
#include "signature_settings.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QKeyEvent;

namespace scrivlet {

// Exported for the Qt Quick item; not a public API.
class SCRIVLET_QT_EXPORT SignaturePadCore {
 public:
  // What the owner is told, through its signals; each optional.
  struct Events {
    std::function<void()> strokeBegan, changed, signedNothing, descriptionChanged;
    std::function<void(int strokeIndex, int pointsInStroke)> strokeEnded;
    std::function<void(bool)> emptyChanged, canUndoChanged, canRedoChanged;
    std::function<void(int)> strokeCountChanged;
    std::function<void(const SignatureRecord&)> signatureReady;
  };

  explicit SignaturePadCore(std::shared_ptr<QnView> view);
  ~SignaturePadCore();

  Events events;
  SignatureSettings& settings() { return *settings_; }
  SignatureSession& session() { return *session_; }
  QtInputTranslator& input() { return input_; }
  const std::shared_ptr<QnView>& view() const { return view_; }

  // Input draws only on an enabled pad that is not read-only.
  bool takesInput(bool enabled) const { return enabled && !settings_->readOnly; }
  // Ends every touch still down, keeping its stroke: when input stops being taken.
  void endInput();
  // Compares the canvas with what was last told and tells what changed: after input and each call.
  void noticeChanges();
  // Undo and redo keys; whether the key was one of them.
  bool handleKey(QKeyEvent* event);

  bool isEmpty() const { return session_->isEmpty(); }
  bool canUndo() const { return session_->canUndo(); }
  bool canRedo() const { return session_->canRedo(); }
  int strokeCount() const;
  void setStrokes(const QnStrokeListRef& strokes);
  QString strokesJson() const;
  void setStrokesJson(const QString& json);
  // "" when the document loaded, else why not (the strokes are left as they were).
  QString loadStrokes(const QString& json);
  void clear();
  void undo();
  void redo();
  void done() { session_->done(); }

  // "empty", "1 stroke", "3 strokes": what an accessible description says.
  QString description() const;

  // Around every change of the view's size: the ink follows the resize policy. Until the pad is first
  // painted, strokes loaded keep the places they were loaded at.
  void beforeResize();
  void afterResize();
  void setPainted() { painted_ = true, loadedBeforePainted_ = nullptr; }

 private:
  // The finished strokes (first point's id and size), the strokes to redo and the open stroke.
  struct Look {
    std::vector<std::pair<uint64_t, size_t>> finished;
    size_t redoable = 0;
    const QnStroke* open = nullptr;
    bool empty = true, canUndo = false, canRedo = false;
    QString description;
  };
  Look look() const;
  void strokeDidEnd();
  // Moves and scales every point about `from` to `to`, widths too.
  void transformInk(QnPoint from, QnPoint to, double scale);
  // Scales down and moves ink that lies partly outside the view into it.
  void fitInk();

  std::shared_ptr<QnView> view_;
  QtInputTranslator input_;
  std::unique_ptr<SignatureSession> session_;
  std::unique_ptr<SignatureSettings> settings_;
  Look told_;
  bool changedUntold_ = false;
  bool painted_ = false;
  QnStrokeListRef loadedBeforePainted_;
  QnSize sizeBefore_;
  bool inkInsideBefore_ = true;
};

}  // namespace scrivlet
