// Checking the pad's settings and forwarding them to the facade.
#include "signature_settings.h"

#include "qt_log.h"

#include <scrivlet/engine/scrivlet_controller.h>

#include "capture/drawing_controller.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <optional>

namespace scrivlet {

namespace {

constexpr double kThinnestPen = 0.5, kWidestPen = 50;
constexpr double kWidestInk = kWidestPen + 3;  // the widest pen at full pressure
constexpr double kSmallestExportScale = 0.1, kLargestExportScale = 8;

QnColor colorOf(const QColor& c) { return QnColor(c.redF(), c.greenF(), c.blueF(), c.alphaF()); }

// A finite value within [low, high]: clamped with a warning, or refused (nothing) when not a number.
std::optional<double> bounded(const char* what, double value, double low, double high) {
  if (!std::isfinite(value)) {
    logWarning(QString::asprintf("Scrivlet: %s %g refused: not a finite number", what, value));
    return std::nullopt;
  }
  double clamped = std::clamp(value, low, high);
  if (clamped != value) logWarning(QString::asprintf("Scrivlet: %s %g clamped to %g", what, value, clamped));
  return clamped;
}

template <class T>
bool assign(T& member, const T& value) {
  if (member == value) return false;
  member = value;
  return true;
}

}  // namespace

bool SignatureSettings::setPenColor(const QColor& color) {
  if (!color.isValid()) return logWarning("Scrivlet: pen colour refused: not a valid colour"), false;
  return assign(penColor, color) && (session_.scrivlet().setStrokeColor(colorOf(color)), true);
}

bool SignatureSettings::setPenWidth(double width) {
  auto value = bounded("pen width", width, kThinnestPen, kWidestPen);
  return value && assign(penWidth, *value) && (session_.scrivlet().setStrokeWidth(float(*value)), true);
}

bool SignatureSettings::setVelocityReduction(double reduction) {
  auto value = bounded("velocity reduction", reduction, 0, 1);
  return value && assign(velocityReduction, *value) && (session_.scrivlet().setVelocityReduction(float(*value)), true);
}

bool SignatureSettings::setCalligraphic(bool on) {
  return assign(calligraphic, on) && (session_.scrivlet().setUseCalligraphicBrush(on), true);
}

bool SignatureSettings::setGuidelineVisible(bool on) {
  return assign(guidelineVisible, on) && (session_.scrivlet().setShowGuideline(on), true);
}

bool SignatureSettings::setStylusOnly(bool on) {
  return assign(stylusOnly, on) && (session_.scrivlet().setDrawOnlyWithApplePencil(on), true);
}

bool SignatureSettings::setSwipeToUndo(bool on) {
  return assign(swipeToUndo, on) && (session_.scrivlet().setSwipeToUndoEnabled(on), true);
}

bool SignatureSettings::setExportScale(double scale) {
  auto value = bounded("export scale", scale, kSmallestExportScale, kLargestExportScale);
  return value && assign(exportScale, *value) && (session_.scrivlet().setExportScale(float(*value)), true);
}

bool SignatureSettings::setDateStamp(bool on) {
  return assign(dateStamp, on) && (session_.scrivlet().setShowDate(on), true);
}

bool SignatureSettings::setTimeStamp(bool on) {
  return assign(timeStamp, on) && (session_.scrivlet().setDateIncludesTime(on), true);
}

bool SignatureSettings::setHashStamp(bool on) {
  return assign(hashStamp, on) && (session_.scrivlet().setShowHash(on), true);
}

bool SignatureSettings::setCustomHash(const QString& hash) {
  // The SVG carries the hash unescaped: only characters that need no escaping.
  static const QRegularExpression kSafe("^[A-Za-z0-9._-]{0,64}$");
  if (!kSafe.match(hash).hasMatch())
    return logWarning("Scrivlet: custom hash refused: only up to 64 letters, digits, '.', '_' and '-'"), false;
  return assign(customHash, hash) &&
         (session_.scrivlet().setCustomHash(hash.isEmpty() ? std::nullopt : std::optional(hash.toStdString())), true);
}

bool SignatureSettings::setClipToBounds(bool on) {
  return assign(clipToBounds, on) && (session_.scrivlet().setClipSignatureToBounds(on), true);
}

bool SignatureSettings::setSkipPdf(bool on) {
  return assign(skipPdf, on) && (session_.scrivlet().scrivletController()->setSkipPDFData(on), true);
}

bool SignatureSettings::setBackgroundColor(const QColor& color) {
  if (!color.isValid()) return logWarning("Scrivlet: background colour refused: not a valid colour"), false;
  if (!assign(backgroundColor, color)) return false;
  if (backgroundInRecord) session_.setRecordBackground(colorOf(color));
  return true;
}

bool SignatureSettings::setBackgroundInRecord(bool on) {
  return assign(backgroundInRecord, on) &&
         (session_.setRecordBackground(on ? std::optional(colorOf(backgroundColor)) : std::nullopt), true);
}

bool SignatureSettings::setMinWidth(double width) {
  auto value = bounded("minimum width", width, 0, kWidestInk);
  return value && assign(minWidth, *value) && (applyWidthLimits(), true);
}

bool SignatureSettings::setMaxWidth(double width) {
  auto value = bounded("maximum width", width, 0, kWidestInk);
  return value && assign(maxWidth, *value) && (applyWidthLimits(), true);
}

void SignatureSettings::applyWidthLimits() {
  // Without limits the stroke model keeps its own diameters untouched. A maximum below the minimum wins.
  std::function<float(float)> limit;
  if (minWidth > 0 || maxWidth > 0)
    limit = [low = float(minWidth), high = maxWidth > 0 ? float(maxWidth) : INFINITY](float d) {
      return std::min(std::max(d, low), high);
    };
  session_.scrivlet().scrivletController()->drawingController()->setDiameterLimit(std::move(limit));
}

bool SignatureSettings::setDotSize(double size) {
  auto value = bounded("dot size", size, 0, kWidestInk);
  return value && assign(dotSize, *value);
}

bool SignatureSettings::setReadOnly(bool on) { return assign(readOnly, on); }

bool SignatureSettings::setResizePolicy(int policy) {
  if (policy < 0 || policy > 2)
    return logWarning(QString::asprintf("Scrivlet: resize policy %d refused", policy)), false;
  return assign(resizePolicy, policy);
}

}  // namespace scrivlet
