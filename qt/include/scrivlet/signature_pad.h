// A signature pad for Qt hosts: a widget to sign on, with properties, signals and slots.
#pragma once

#include <scrivlet/qt_export.h>
#include <scrivlet/signature_record.h>
#include <scrivlet/signature_session.h>

#include <QColor>
#include <QWidget>

#include <memory>

namespace scrivlet {

class QnQtCaptureWidget;
class SignatureSettings;

class SCRIVLET_QT_EXPORT SignaturePad : public QWidget {
  Q_OBJECT
  Q_PROPERTY(QColor penColor READ penColor WRITE setPenColor NOTIFY penColorChanged)
  Q_PROPERTY(double penWidth READ penWidth WRITE setPenWidth NOTIFY penWidthChanged)
  Q_PROPERTY(double velocityReduction READ velocityReduction WRITE setVelocityReduction NOTIFY velocityReductionChanged)
  Q_PROPERTY(bool calligraphic READ calligraphic WRITE setCalligraphic NOTIFY calligraphicChanged)
  Q_PROPERTY(bool guidelineVisible READ guidelineVisible WRITE setGuidelineVisible NOTIFY guidelineVisibleChanged)
  Q_PROPERTY(bool stylusOnly READ stylusOnly WRITE setStylusOnly NOTIFY stylusOnlyChanged)
  Q_PROPERTY(bool swipeToUndo READ swipeToUndo WRITE setSwipeToUndo NOTIFY swipeToUndoChanged)
  Q_PROPERTY(double exportScale READ exportScale WRITE setExportScale NOTIFY exportScaleChanged)
  Q_PROPERTY(bool dateStamp READ dateStamp WRITE setDateStamp NOTIFY dateStampChanged)
  Q_PROPERTY(bool timeStamp READ timeStamp WRITE setTimeStamp NOTIFY timeStampChanged)
  Q_PROPERTY(bool hashStamp READ hashStamp WRITE setHashStamp NOTIFY hashStampChanged)
  Q_PROPERTY(QString customHash READ customHash WRITE setCustomHash NOTIFY customHashChanged)
  Q_PROPERTY(bool clipToBounds READ clipToBounds WRITE setClipToBounds NOTIFY clipToBoundsChanged)
  Q_PROPERTY(bool skipPdf READ skipPdf WRITE setSkipPdf NOTIFY skipPdfChanged)
  Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor NOTIFY backgroundColorChanged)
  Q_PROPERTY(bool backgroundInRecord READ backgroundInRecord WRITE setBackgroundInRecord NOTIFY backgroundInRecordChanged)
  Q_PROPERTY(bool empty READ isEmpty NOTIFY emptyChanged)

 public:
  // Installs the Qt platform on first use; the QApplication must exist.
  explicit SignaturePad(QWidget* parent = nullptr);
  ~SignaturePad() override;

  QColor penColor() const;
  void setPenColor(const QColor& color);
  // Ranges: pen width (the largest, in points; pressure widens it by up to 3 more) 0.5 to 50,
  // velocity reduction 0 to 1, export scale 0.1 to 8; the custom hash takes up to 64 letters, digits,
  // '.', '_' and '-' (the SVG carries it unescaped), empty for the generated hash.
  double penWidth() const;
  void setPenWidth(double width);
  double velocityReduction() const;
  void setVelocityReduction(double reduction);
  bool calligraphic() const;
  void setCalligraphic(bool calligraphic);
  bool guidelineVisible() const;
  void setGuidelineVisible(bool visible);
  bool stylusOnly() const;
  void setStylusOnly(bool stylusOnly);
  bool swipeToUndo() const;
  void setSwipeToUndo(bool enabled);
  double exportScale() const;
  void setExportScale(double scale);
  bool dateStamp() const;
  void setDateStamp(bool stamp);
  bool timeStamp() const;
  void setTimeStamp(bool stamp);
  bool hashStamp() const;
  void setHashStamp(bool stamp);
  QString customHash() const;
  void setCustomHash(const QString& hash);
  bool clipToBounds() const;
  void setClipToBounds(bool clip);
  bool skipPdf() const;
  void setSkipPdf(bool skip);
  QColor backgroundColor() const;
  void setBackgroundColor(const QColor& color);
  // Off by default: the record's PNG stays transparent. On: it is painted on the background colour,
  // for hosts that keep the image without transparency (JPEG).
  bool backgroundInRecord() const;
  void setBackgroundInRecord(bool on);

  bool isEmpty() const;
  bool canUndo() const;
  bool canRedo() const;
  // A copy of the strokes on the pad; setStrokes shows a copy of others, and the next record holds them.
  QnStrokeListRef strokes() const;
  void setStrokes(const QnStrokeListRef& strokes);
  // Loads a strokes document in place of the pad's strokes: an empty text when it loaded, else why
  // not, and the pad is left as it was.
  QString loadStrokes(const QByteArray& json);
  SignatureSession& session() { return *session_; }

 public slots:
  void clear();
  void undo();
  void redo();
  // Answers once: signatureReady with a record of exactly the strokes on the pad now, or signedNothing.
  void done();

 signals:
  void strokeBegan();
  void strokeEnded(int pointCount);
  void changed();
  void signatureReady(const scrivlet::SignatureRecord& record);
  void signedNothing();
  void emptyChanged(bool empty);
  void penColorChanged(const QColor&);
  void penWidthChanged(double);
  void velocityReductionChanged(double);
  void calligraphicChanged(bool);
  void guidelineVisibleChanged(bool);
  void stylusOnlyChanged(bool);
  void swipeToUndoChanged(bool);
  void exportScaleChanged(double);
  void dateStampChanged(bool);
  void timeStampChanged(bool);
  void hashStampChanged(bool);
  void customHashChanged(const QString&);
  void clipToBoundsChanged(bool);
  void skipPdfChanged(bool);
  void backgroundColorChanged(const QColor&);
  void backgroundInRecordChanged(bool);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  class Surface;

  // Compares the canvas with what it was and says what changed: after input and after each slot.
  void noticeChanges();
  void applyBackground();

  QnQtCaptureWidget* capture_;
  std::unique_ptr<SignatureSession> session_;
  std::unique_ptr<SignatureSettings> settings_;
  SignatureSession::CanvasState seen_;
};

}  // namespace scrivlet
