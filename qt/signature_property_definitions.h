// The definitions behind SCRIVLET_SIGNATURE_PROPERTIES, once for both classes: each forwards to the
// class's SignaturePadCore core_ and emits the class's own signals. The class defines
// settingChanged(), run after every setting that changed (to repaint).
#pragma once

#include "signature_pad_core.h"

#define SCRIVLET_DEFINE_SETTING(Class, Type, Argument, name, setter)   \
  Type Class::name() const { return core_->settings().name; }          \
  void Class::setter(Argument value) {                                 \
    if (!core_->settings().setter(value)) return;                      \
    emit name##Changed(core_->settings().name);                        \
    settingChanged();                                                  \
  }

#define SCRIVLET_DEFINE_SIGNATURE_PROPERTIES(Class)                                                     \
  SCRIVLET_DEFINE_SETTING(Class, QColor, const QColor&, penColor, setPenColor)                          \
  SCRIVLET_DEFINE_SETTING(Class, double, double, penWidth, setPenWidth)                                 \
  SCRIVLET_DEFINE_SETTING(Class, double, double, minWidth, setMinWidth)                                 \
  SCRIVLET_DEFINE_SETTING(Class, double, double, maxWidth, setMaxWidth)                                 \
  SCRIVLET_DEFINE_SETTING(Class, double, double, dotSize, setDotSize)                                   \
  SCRIVLET_DEFINE_SETTING(Class, double, double, velocityReduction, setVelocityReduction)               \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, calligraphic, setCalligraphic)                             \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, guidelineVisible, setGuidelineVisible)                     \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, stylusOnly, setStylusOnly)                                 \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, swipeToUndo, setSwipeToUndo)                               \
  SCRIVLET_DEFINE_SETTING(Class, double, double, exportScale, setExportScale)                           \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, dateStamp, setDateStamp)                                   \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, timeStamp, setTimeStamp)                                   \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, hashStamp, setHashStamp)                                   \
  SCRIVLET_DEFINE_SETTING(Class, QString, const QString&, customHash, setCustomHash)                    \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, clipToBounds, setClipToBounds)                             \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, skipPdf, setSkipPdf)                                       \
  SCRIVLET_DEFINE_SETTING(Class, QColor, const QColor&, backgroundColor, setBackgroundColor)            \
  SCRIVLET_DEFINE_SETTING(Class, bool, bool, backgroundInRecord, setBackgroundInRecord)                 \
  bool Class::readOnly() const { return core_->settings().readOnly; }                                   \
  void Class::setReadOnly(bool value) {                                                                 \
    if (!core_->settings().setReadOnly(value)) return;                                                  \
    core_->endInput(); /* a stroke under way is kept */                                                 \
    emit readOnlyChanged(value);                                                                        \
    settingChanged();                                                                                   \
  }                                                                                                     \
  Class::ResizePolicy Class::resizePolicy() const { return ResizePolicy(core_->settings().resizePolicy); } \
  void Class::setResizePolicy(ResizePolicy value) {                                                     \
    if (core_->settings().setResizePolicy(int(value))) emit resizePolicyChanged(value);                 \
  }                                                                                                     \
  bool Class::isEmpty() const { return core_->isEmpty(); }                                              \
  bool Class::canUndo() const { return core_->canUndo(); }                                              \
  bool Class::canRedo() const { return core_->canRedo(); }                                              \
  int Class::strokeCount() const { return core_->strokeCount(); }                                       \
  QnStrokeListRef Class::strokes() const { return core_->session().strokes(); }                         \
  void Class::setStrokes(const QnStrokeListRef& strokes) { core_->setStrokes(strokes); }                \
  QString Class::strokesJson() const { return core_->strokesJson(); }                                   \
  void Class::setStrokesJson(const QString& json) { core_->setStrokesJson(json); }                      \
  QString Class::loadStrokes(const QString& json) { return core_->loadStrokes(json); }                  \
  SignatureSession& Class::session() { return core_->session(); }                                       \
  void Class::clear() { core_->clear(); }                                                               \
  void Class::undo() { core_->undo(); }                                                                 \
  void Class::redo() { core_->redo(); }                                                                 \
  void Class::done() { core_->done(); }

namespace scrivlet {

// The core's events as the owner's signals; `described` runs when the accessible description changes.
template <class Owner>
void connectCoreEvents(SignaturePadCore& core, Owner* owner, std::function<void()> described) {
  SignaturePadCore::Events& e = core.events;
  e.strokeBegan = [owner] { emit owner->strokeBegan(); };
  e.strokeEnded = [owner](int index, int points) { emit owner->strokeEnded(index, points); };
  e.changed = [owner] { emit owner->changed(); };
  e.emptyChanged = [owner](bool empty) { emit owner->emptyChanged(empty); };
  e.canUndoChanged = [owner](bool can) { emit owner->canUndoChanged(can); };
  e.canRedoChanged = [owner](bool can) { emit owner->canRedoChanged(can); };
  e.strokeCountChanged = [owner](int count) { emit owner->strokeCountChanged(count); };
  e.signatureReady = [owner](const SignatureRecord& record) { emit owner->signatureReady(record); };
  e.signedNothing = [owner] { emit owner->signedNothing(); };
  e.descriptionChanged = std::move(described);
}

}  // namespace scrivlet
