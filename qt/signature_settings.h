// The settings of a signature pad, with their defaults and checks, applied to a signing session;
// shared by the widget and the Qt Quick item, whose properties scrivlet/signature_properties.h declares.
#pragma once

#include <scrivlet/qt_export.h>

#include <scrivlet/signature_session.h>

#include <QColor>
#include <QString>

namespace scrivlet {

// Exported for the Qt Quick item; not a public API.
class SCRIVLET_QT_EXPORT SignatureSettings {
 public:
  explicit SignatureSettings(SignatureSession& session) : session_(session) {}

  // Each setter returns whether the setting changed. Values out of range are clamped, and values that
  // are not numbers or not allowed are refused, with a warning.
  bool setPenColor(const QColor& color);
  bool setPenWidth(double width);
  bool setVelocityReduction(double reduction);
  bool setCalligraphic(bool on);
  bool setGuidelineVisible(bool on);
  bool setStylusOnly(bool on);
  bool setSwipeToUndo(bool on);
  bool setExportScale(double scale);
  bool setDateStamp(bool on);
  bool setTimeStamp(bool on);
  bool setHashStamp(bool on);
  bool setCustomHash(const QString& hash);
  bool setClipToBounds(bool on);
  bool setSkipPdf(bool on);
  bool setBackgroundColor(const QColor& color);
  // The limits every new point's width is kept within (0: none), and a tap's dot (0: the pen's own).
  bool setMinWidth(double width);
  bool setMaxWidth(double width);
  bool setDotSize(double size);
  bool setReadOnly(bool on);
  bool setResizePolicy(int policy);
  bool setBackgroundInRecord(bool on);

  // The values, the controller's defaults until set.
  QColor penColor = Qt::black;
  double penWidth = 4;
  double velocityReduction = 0.85;
  bool calligraphic = false;
  bool guidelineVisible = true;
  bool stylusOnly = false;
  bool swipeToUndo = true;
  double exportScale = 1;
  bool dateStamp = false;
  bool timeStamp = false;
  bool hashStamp = false;
  QString customHash;
  bool clipToBounds = false;
  bool skipPdf = false;
  QColor backgroundColor = Qt::white;  // a signing surface even in a dark theme
  double minWidth = 0;
  double maxWidth = 0;
  double dotSize = 0;
  bool readOnly = false;
  int resizePolicy = 0;  // the pad's ResizePolicy: keep, scale, clear
  bool backgroundInRecord = false;     // the record's PNG painted on the background, not transparent

 private:
  void applyWidthLimits();

  SignatureSession& session_;
};

}  // namespace scrivlet
