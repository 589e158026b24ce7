// The export canvas: its size around the strokes, the date and hash room, and the three targets.
#include "export/export_renderer.h"

#include "export/export_settings.h"
#include "export/signature_hash.h"
#include "export/stroke_copies.h"
#include "platform/clock.h"
#include "platform/drawing_log.h"
#include "platform/fonts.h"
#include "platform/image.h"
#include "platform/narrowing.h"
#include "platform/log.h"
#include "platform/pdf_context.h"
#include "render/combo_context.h"
#include "render/drawing_view.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace scrivlet {

namespace {

constexpr double kDateMargin = 8.0;   // beside the date text
constexpr double kHashMargin = 28.0;  // the padlock and its spacing beside the hash text
constexpr QnPoint kDateOrigin{2.5, -5.5};  // from the canvas's bottom-left, less the font size
constexpr double kSVGTextDrop = 3.0;

std::vector<uint8_t> bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// The integer part of a canvas origin; one that is not a number at all counts as 0.
int integerPart(float value) {
  if (!std::isfinite(value)) return 0;
  return static_cast<int>(std::clamp<double>(value, INT_MIN, INT_MAX));
}

}  // namespace

ExportCanvasFrame exportCanvasFrame(const QnStrokeListRef& strokes, const ExportSettings& settings) {
  QnRect box = boundingRectOfStrokes(strokes);
  float m = settings.strokeWidthMax;
  // A margin of one and a half pen widths on every side, the products in single precision.
  ExportCanvasFrame frame{box.size.width + static_cast<double>(3 * m), box.size.height + static_cast<double>(3 * m),
                          box.origin.x - static_cast<double>(1.5f * m), box.origin.y - static_cast<double>(1.5f * m)};
  if (settings.showDate) frame.h += settings.exportDateSize + 3.0;
  if (settings.clipSignatureToBounds) {
    frame.w = settings.copyOfTargetViewBounds.size.width;
    frame.h = settings.copyOfTargetViewBounds.size.height;
    frame.x0 = frame.y0 = 0;
  }
  return frame;
}

std::optional<std::vector<uint8_t>> exportOfStrokes(const QnStrokeListRef& strokes, const std::string& format,
                                                    const ExportSettings& settings, const std::string& hash,
                                                    ExportCanvasOutcome* outcome, PNGJob* pngLater) {
  ExportCanvasFrame frame = exportCanvasFrame(strokes, settings);
  return drawExportCanvas(strokes, format, false, settings, hash, frame.w, frame.h, frame.x0, frame.y0,
                          settings.exportScale, outcome, pngLater);
}

std::optional<std::vector<uint8_t>> drawExportCanvas(
    const QnStrokeListRef& strokes, const std::string& format, bool unscaledPNG, const ExportSettings& settings,
    const std::string& hash, double w, double h, double x0, double y0, float scale, ExportCanvasOutcome* outcome,
    PNGJob* pngLater) {
  double s = scale;
  double W = w * s, H = h * s;
  bool showDate = settings.showDate;
  bool showHash = settings.showHash;
  float dateFontSize = settings.exportDateSize;
  double dateSize = std::ceil(dateFontSize);
  QnSize hashSize = measureBoldText(hash, settings.exportHashFontSize);
  double hashW = std::ceil(hashSize.width), hashH = std::ceil(hashSize.height);
  std::vector<uint8_t> buffer;
  double e = (format == "PNG" && unscaledPNG) ? 1.0 : s;

  std::string date;
  if (showDate) {
    double now = settings.time;
    date = mediumDateString(now);
    if (settings.dateIncludesTime) date += " " + mediumTimeString(now);
    // The scaled canvas width is compared with the unscaled text width.
    double textWidth = measureBoldText(date, dateFontSize).width;
    if (W < textWidth + kDateMargin) {
      w = textWidth + kDateMargin;
      W = e * w;
    }
  }
  if (showHash) {
    if (w < hashW + kHashMargin) {
      w = hashW + kHashMargin;
      W = e * w;
    }
    double d = showDate ? dateSize + kDateMargin : kDateMargin;
    if (narrowToFloat(h - d) < hashH) {
      h = d + hashH;
      H = e * h;
    }
  }
  // The enclosing whole-number rectangle depends on the origin's fraction: it may be a unit larger.
  QnSize canvas = rectIntegral(makeRect(x0 * s, y0 * s, W, H)).size;
  W = canvas.width;
  H = canvas.height;
  float cw = std::ceil(narrowToFloat(w)), ch = std::ceil(narrowToFloat(h));
  float cx = std::ceil(narrowToFloat(x0)), cy = std::ceil(narrowToFloat(y0));

  std::unique_ptr<QnPDFContext> pdf;
  std::shared_ptr<DrawingLog> drawing;
  std::unique_ptr<QnComboContext> combo;
  if (format == "PDF") {
    // Dated at the record's time: the renderer reads no clock.
    pdf = std::make_unique<QnPDFContext>(
        QnRect{{0, 0}, canvas}, [&buffer](const uint8_t* bytes, size_t n) { buffer.insert(buffer.end(), bytes, bytes + n); },
        std::string(), settings.time);
    combo = std::make_unique<QnComboContext>(&pdf->context());
  } else if (format == "SVG") {
    combo = std::make_unique<QnComboContext>(nullptr);
    combo->setIsSVG(true);
  } else {
    // The drawing is kept, then drawn and compressed in bands on several threads.
    drawing = std::make_shared<DrawingLog>();
    combo = std::make_unique<QnComboContext>(drawing.get());
  }
  combo->setScaleCTMXY(narrowToFloat(e), narrowToFloat(e));
  QnStrokeListRef drawn = renderSignatureWithInk(combo.get(), strokes, integerPart(cx), integerPart(cy), settings);
  if (showDate) renderDate(combo.get(), date, ch, dateSize);
  if (showHash)
    renderHashBadge(combo.get(), showDate, hash, settings.exportHashFontSize, settings.exportHashOpacity, ch, dateSize);
  if (outcome) outcome->size = {W, H}, outcome->drawnStrokes = std::move(drawn);

  if (format == "PDF") {
    pdf->end();
    if (!pdf->isValid()) return std::nullopt;
    return buffer;
  }
  if (format == "PNG") {
    double pixelScale = settings.screenScale;
    PNGJob draw = [drawing = std::shared_ptr<const DrawingLog>(drawing), canvas, pixelScale] {
      return drawAsPNG(*drawing, canvas, pixelScale);
    };
    // A canvas without pixels is said here and now, in its place among the outputs.
    if (pngLater && canvas.width * pixelScale >= 1 && canvas.height * pixelScale >= 1) {
      *pngLater = std::move(draw);
      return std::nullopt;
    }
    std::vector<uint8_t> png = draw();
    if (png.empty()) return std::nullopt;
    return png;
  }
  if (format == "SVG") {
    if (combo->writesOnlyFiniteNumbers({cw, ch})) return bytesOf(combo->serializeSVG({cw, ch}));
    std::string refusal = "Scrivlet: no SVG: a number of the drawing is not finite";
    if (outcome)
      outcome->refusal = std::move(refusal);
    else
      logLine(refusal);
  }
  return std::nullopt;
}

QnStrokeListRef renderSignatureWithInk(QnComboContext* context, const QnStrokeListRef& strokes, int originX,
                                       int originY, const ExportSettings& settings) {
  QnStrokeListRef moved = copyOfStrokesMovedBy(strokes, {-double(originX), -double(originY)});
  if (!context) return moved;
  if (settings.clearedBeforeInk) context->clearRect(*settings.clearedBeforeInk);
  QnDrawingView::drawStrokesWithInk(context, *moved, settings.ink);
  return moved;
}

void renderDate(QnComboContext* context, const std::string& date, double height, double fontSize) {
  if (!context) return;
  QnPoint origin{kDateOrigin.x, height - fontSize + kDateOrigin.y};
  if (context->isSVG()) {
    context->setFillColorWithColor(QnColor::black());
    context->showTextAtPointTextSize({origin.x, origin.y + kSVGTextDrop}, date, fontSize);
  } else if (context->context()) {
    context->context()->showText(date, origin, fontSize, QnColor::black());
  }
}

}  // namespace scrivlet
