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
  Q_PROPERTY(bool empty READ isEmpty NOTIFY emptyChanged)

 public:
  // Installs the Qt platform on first use; the QApplication must exist.
  explicit SignaturePad(QWidget* parent = nullptr);
  ~SignaturePad() override;

  QColor penColor() const { return penColor_; }
  void setPenColor(const QColor& color);
  // The largest pen width in points, 0.5 to 50; pressure widens it by up to 3 more.
  double penWidth() const { return penWidth_; }
  void setPenWidth(double width);
  // How much speed thins the pen, 0 to 1.
  double velocityReduction() const { return velocityReduction_; }
  void setVelocityReduction(double reduction);
  bool calligraphic() const { return calligraphic_; }
  void setCalligraphic(bool calligraphic);
  bool guidelineVisible() const { return guidelineVisible_; }
  void setGuidelineVisible(bool visible);
  bool stylusOnly() const { return stylusOnly_; }
  void setStylusOnly(bool stylusOnly);
  bool swipeToUndo() const { return swipeToUndo_; }
  void setSwipeToUndo(bool enabled);
  // The exported canvas's scale, 0.1 to 8.
  double exportScale() const { return exportScale_; }
  void setExportScale(double scale);
  bool dateStamp() const { return dateStamp_; }
  void setDateStamp(bool stamp);
  bool timeStamp() const { return timeStamp_; }
  void setTimeStamp(bool stamp);
  bool hashStamp() const { return hashStamp_; }
  void setHashStamp(bool stamp);
  // Letters, digits and "-_." only (the SVG carries it unescaped); empty for the generated hash.
  QString customHash() const { return customHash_; }
  void setCustomHash(const QString& hash);
  bool clipToBounds() const { return clipToBounds_; }
  void setClipToBounds(bool clip);
  bool skipPdf() const { return skipPdf_; }
  void setSkipPdf(bool skip);
  QColor backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const QColor& color);

  bool isEmpty() const;
  bool canUndo() const;
  bool canRedo() const;
  // A copy of the strokes on the pad; setStrokes shows a copy of others, and the next record holds them.
  QnStrokeListRef strokes() const;
  void setStrokes(const QnStrokeListRef& strokes);
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

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  class Surface;

  // Compares the canvas with what it was and says what changed: after input and after each slot.
  void noticeChanges();

  QnQtCaptureWidget* capture_;
  std::unique_ptr<SignatureSession> session_;
  QColor penColor_ = Qt::black;
  double penWidth_ = 4;
  double velocityReduction_ = 0.85;
  bool calligraphic_ = false;
  bool guidelineVisible_ = true;
  bool stylusOnly_ = false;
  bool swipeToUndo_ = true;
  double exportScale_ = 1;
  bool dateStamp_ = false;
  bool timeStamp_ = false;
  bool hashStamp_ = false;
  QString customHash_;
  bool clipToBounds_ = false;
  bool skipPdf_ = false;
  QColor backgroundColor_ = Qt::white;
  struct CanvasState {
    size_t strokes = 0, points = 0, redo = 0;
    bool drawing = false;
    bool operator==(const CanvasState&) const = default;
  } seen_;
};

}  // namespace scrivlet
