// The properties, signals and slots that the widget SignaturePad and the QML item SignatureArea share,
// declared once: each class puts SCRIVLET_SIGNATURE_PROPERTIES after Q_OBJECT.
#pragma once

#include <scrivlet/signature_record.h>
#include <scrivlet/signature_session.h>

#include <QColor>
#include <QObject>
#include <QString>

// Settings, with their defaults and ranges (a value out of range is clamped and one that is not a
// number refused, each with a warning):
//   penColor (black); penWidth (4, 0.5 to 50): the pen's width, which pressure widens by up to 3 and
//   speed thins; minWidth (0, none) and maxWidth (0, none), 0 to 53: the limits the width stays
//   within; dotSize (0: the pen's own width; up to 53): the diameter of the dot a tap leaves;
//   velocityReduction (0.85, 0 to 1); calligraphic; guidelineVisible (on); stylusOnly; swipeToUndo
//   (on: three fingers left undo, right redo); exportScale (1, 0.1 to 8); dateStamp; timeStamp;
//   hashStamp; customHash (up to 64 letters, digits, '.', '_', '-'; empty for the generated hash);
//   clipToBounds; skipPdf; backgroundColor (white, a signing surface even in a dark theme);
//   backgroundInRecord (off: the record's PNG is transparent; on: painted on the background colour);
//   readOnly (shows the strokes, takes no input); resizePolicy (KeepInk: the ink moves with the
//   signing line; ScaleInk: it is scaled with the pad; ClearInk). Ink that a resize would leave
//   partly outside the pad is scaled down to fit, never cut.
// State: empty, canUndo, canRedo, strokeCount, and strokesJson (the strokes as the JSON document of
// strokesToJson; writing it loads strokes, writing "" clears).
// Every setting may change at any time: a record holds the settings as they are at its done().
// Signals: strokeBegan(); strokeEnded(strokeIndex, pointsInStroke); changed(), once for each stroke
// ended, undo, redo, clear, load or rescale; signatureReady(record) or signedNothing() once for each
// done(); and one NOTIFY signal a property.
#define SCRIVLET_SIGNATURE_PROPERTIES                                                                        \
  Q_PROPERTY(QColor penColor READ penColor WRITE setPenColor NOTIFY penColorChanged)                       \
  Q_PROPERTY(double penWidth READ penWidth WRITE setPenWidth NOTIFY penWidthChanged)                       \
  Q_PROPERTY(double minWidth READ minWidth WRITE setMinWidth NOTIFY minWidthChanged)                       \
  Q_PROPERTY(double maxWidth READ maxWidth WRITE setMaxWidth NOTIFY maxWidthChanged)                       \
  Q_PROPERTY(double dotSize READ dotSize WRITE setDotSize NOTIFY dotSizeChanged)                           \
  Q_PROPERTY(double velocityReduction READ velocityReduction WRITE setVelocityReduction                     \
                 NOTIFY velocityReductionChanged)                                                          \
  Q_PROPERTY(bool calligraphic READ calligraphic WRITE setCalligraphic NOTIFY calligraphicChanged)         \
  Q_PROPERTY(bool guidelineVisible READ guidelineVisible WRITE setGuidelineVisible                         \
                 NOTIFY guidelineVisibleChanged)                                                           \
  Q_PROPERTY(bool stylusOnly READ stylusOnly WRITE setStylusOnly NOTIFY stylusOnlyChanged)                 \
  Q_PROPERTY(bool swipeToUndo READ swipeToUndo WRITE setSwipeToUndo NOTIFY swipeToUndoChanged)             \
  Q_PROPERTY(double exportScale READ exportScale WRITE setExportScale NOTIFY exportScaleChanged)           \
  Q_PROPERTY(bool dateStamp READ dateStamp WRITE setDateStamp NOTIFY dateStampChanged)                     \
  Q_PROPERTY(bool timeStamp READ timeStamp WRITE setTimeStamp NOTIFY timeStampChanged)                     \
  Q_PROPERTY(bool hashStamp READ hashStamp WRITE setHashStamp NOTIFY hashStampChanged)                     \
  Q_PROPERTY(QString customHash READ customHash WRITE setCustomHash NOTIFY customHashChanged)              \
  Q_PROPERTY(bool clipToBounds READ clipToBounds WRITE setClipToBounds NOTIFY clipToBoundsChanged)         \
  Q_PROPERTY(bool skipPdf READ skipPdf WRITE setSkipPdf NOTIFY skipPdfChanged)                             \
  Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor                          \
                 NOTIFY backgroundColorChanged)                                                            \
  Q_PROPERTY(bool backgroundInRecord READ backgroundInRecord WRITE setBackgroundInRecord                     \
                 NOTIFY backgroundInRecordChanged)                                                         \
  Q_PROPERTY(bool readOnly READ readOnly WRITE setReadOnly NOTIFY readOnlyChanged)                         \
  Q_PROPERTY(ResizePolicy resizePolicy READ resizePolicy WRITE setResizePolicy NOTIFY resizePolicyChanged) \
  Q_PROPERTY(bool empty READ isEmpty NOTIFY emptyChanged)                                                  \
  Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)                                              \
  Q_PROPERTY(bool canRedo READ canRedo NOTIFY canRedoChanged)                                              \
  Q_PROPERTY(int strokeCount READ strokeCount NOTIFY strokeCountChanged)                                   \
  Q_PROPERTY(QString strokesJson READ strokesJson WRITE setStrokesJson NOTIFY changed)                     \
                                                                                                           \
 public:                                                                                                   \
  enum ResizePolicy { KeepInk, ScaleInk, ClearInk };                                                       \
  Q_ENUM(ResizePolicy)                                                                                     \
                                                                                                           \
  QColor penColor() const;                                                                                 \
  void setPenColor(const QColor& color);                                                                   \
  double penWidth() const;                                                                                 \
  void setPenWidth(double width);                                                                          \
  double minWidth() const;                                                                                 \
  void setMinWidth(double width);                                                                          \
  double maxWidth() const;                                                                                 \
  void setMaxWidth(double width);                                                                          \
  double dotSize() const;                                                                                  \
  void setDotSize(double size);                                                                            \
  double velocityReduction() const;                                                                        \
  void setVelocityReduction(double reduction);                                                             \
  bool calligraphic() const;                                                                               \
  void setCalligraphic(bool calligraphic);                                                                 \
  bool guidelineVisible() const;                                                                           \
  void setGuidelineVisible(bool visible);                                                                  \
  bool stylusOnly() const;                                                                                 \
  void setStylusOnly(bool stylusOnly);                                                                     \
  bool swipeToUndo() const;                                                                                \
  void setSwipeToUndo(bool enabled);                                                                       \
  double exportScale() const;                                                                              \
  void setExportScale(double scale);                                                                       \
  bool dateStamp() const;                                                                                  \
  void setDateStamp(bool stamp);                                                                           \
  bool timeStamp() const;                                                                                  \
  void setTimeStamp(bool stamp);                                                                           \
  bool hashStamp() const;                                                                                  \
  void setHashStamp(bool stamp);                                                                           \
  QString customHash() const;                                                                              \
  void setCustomHash(const QString& hash);                                                                 \
  bool clipToBounds() const;                                                                               \
  void setClipToBounds(bool clip);                                                                         \
  bool skipPdf() const;                                                                                    \
  void setSkipPdf(bool skip);                                                                              \
  QColor backgroundColor() const;                                                                          \
  void setBackgroundColor(const QColor& color);                                                            \
  /* Off: the record's PNG is transparent; on: painted on the background colour (for a JPEG). */          \
  bool backgroundInRecord() const;                                                                         \
  void setBackgroundInRecord(bool on);                                                                     \
  bool readOnly() const;                                                                                   \
  void setReadOnly(bool readOnly);                                                                         \
  ResizePolicy resizePolicy() const;                                                                       \
  void setResizePolicy(ResizePolicy policy);                                                               \
                                                                                                           \
  bool isEmpty() const;                                                                                    \
  bool canUndo() const;                                                                                    \
  bool canRedo() const;                                                                                    \
  int strokeCount() const;                                                                                 \
  /* A copy of the strokes; setStrokes shows a copy of others, and the next record holds them. */         \
  QnStrokeListRef strokes() const;                                                                         \
  void setStrokes(const QnStrokeListRef& strokes);                                                         \
  QString strokesJson() const;                                                                             \
  /* Loads the document's strokes; "" clears, and a document that does not load changes nothing. */      \
  void setStrokesJson(const QString& json);                                                                \
  /* Loads a strokes document: "" when it loaded, else why not, and the strokes are left as they were. */ \
  Q_INVOKABLE QString loadStrokes(const QString& json);                                                    \
  scrivlet::SignatureSession& session();                                                                   \
                                                                                                           \
 public Q_SLOTS:                                                                                           \
  void clear();                                                                                            \
  void undo();                                                                                             \
  void redo();                                                                                             \
  /* Answers once: signatureReady with a record of exactly the strokes now, or signedNothing. */          \
  void done();                                                                                             \
                                                                                                           \
 Q_SIGNALS:                                                                                                \
  void strokeBegan();                                                                                      \
  void strokeEnded(int strokeIndex, int pointsInStroke);                                                   \
  void changed();                                                                                          \
  void signatureReady(const scrivlet::SignatureRecord& record);                                            \
  void signedNothing();                                                                                    \
  void emptyChanged(bool empty);                                                                           \
  void canUndoChanged(bool canUndo);                                                                       \
  void canRedoChanged(bool canRedo);                                                                       \
  void strokeCountChanged(int strokeCount);                                                                \
  void penColorChanged(const QColor&);                                                                     \
  void penWidthChanged(double);                                                                            \
  void minWidthChanged(double);                                                                            \
  void maxWidthChanged(double);                                                                            \
  void dotSizeChanged(double);                                                                             \
  void velocityReductionChanged(double);                                                                   \
  void calligraphicChanged(bool);                                                                          \
  void guidelineVisibleChanged(bool);                                                                      \
  void stylusOnlyChanged(bool);                                                                            \
  void swipeToUndoChanged(bool);                                                                           \
  void exportScaleChanged(double);                                                                         \
  void dateStampChanged(bool);                                                                             \
  void timeStampChanged(bool);                                                                             \
  void hashStampChanged(bool);                                                                             \
  void customHashChanged(const QString&);                                                                  \
  void clipToBoundsChanged(bool);                                                                          \
  void skipPdfChanged(bool);                                                                               \
  void backgroundColorChanged(const QColor&);                                                              \
  void backgroundInRecordChanged(bool);                                                                    \
  void readOnlyChanged(bool);                                                                              \
  void resizePolicyChanged(ResizePolicy);                                                                  \
                                                                                                           \
 private:
