// The signature pad as a Qt Quick item, Scrivlet.SignatureArea: the same properties, signals and slots
// as the widget, drawn from the same ink cache, with touch, pen and mouse input.
#pragma once

#include <scrivlet/signature_record.h>
#include <scrivlet/signature_session.h>

#include <QColor>
#include <QQuickPaintedItem>

#include <memory>

namespace scrivlet {

class QtInputTranslator;
class SignatureSettings;

// Registers Scrivlet.SignatureArea 1.0 (and the record type) with QML: call once before loading QML
// that imports Scrivlet.
void registerScrivletQuickTypes();

class SignatureArea : public QQuickPaintedItem {
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
  // Installs the Qt platform on first use; the QGuiApplication must exist.
  explicit SignatureArea(QQuickItem* parent = nullptr);
  ~SignatureArea() override;

  QColor penColor() const;
  void setPenColor(const QColor& value);
  double penWidth() const;
  void setPenWidth(double value);
  double velocityReduction() const;
  void setVelocityReduction(double value);
  bool calligraphic() const;
  void setCalligraphic(bool value);
  bool guidelineVisible() const;
  void setGuidelineVisible(bool value);
  bool stylusOnly() const;
  void setStylusOnly(bool value);
  bool swipeToUndo() const;
  void setSwipeToUndo(bool value);
  double exportScale() const;
  void setExportScale(double value);
  bool dateStamp() const;
  void setDateStamp(bool value);
  bool timeStamp() const;
  void setTimeStamp(bool value);
  bool hashStamp() const;
  void setHashStamp(bool value);
  QString customHash() const;
  void setCustomHash(const QString& value);
  bool clipToBounds() const;
  void setClipToBounds(bool value);
  bool skipPdf() const;
  void setSkipPdf(bool value);
  QColor backgroundColor() const;
  void setBackgroundColor(const QColor& value);
  bool backgroundInRecord() const;
  void setBackgroundInRecord(bool on);

  bool isEmpty() const { return session_->isEmpty(); }
  Q_INVOKABLE bool canUndo() const { return session_->canUndo(); }
  Q_INVOKABLE bool canRedo() const { return session_->canRedo(); }
  QnStrokeListRef strokes() const { return session_->strokes(); }
  void setStrokes(const QnStrokeListRef& strokes);
  // Loads a strokes document in place of the item's strokes: an empty text when it loaded, else why
  // not, and the item is left as it was.
  Q_INVOKABLE QString loadStrokes(const QString& json);
  SignatureSession& session() { return *session_; }

  void paint(QPainter* painter) override;

 public slots:
  void clear();
  void undo();
  void redo();
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
  bool event(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void touchEvent(QTouchEvent* event) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

 private:
  void noticeChanges();

  std::shared_ptr<QnView> view_;
  std::unique_ptr<QtInputTranslator> input_;
  std::unique_ptr<SignatureSession> session_;
  std::unique_ptr<SignatureSettings> settings_;
  SignatureSession::CanvasState seen_;
};

}  // namespace scrivlet
