// The drawing context over a cairo surface (image or PDF), bridging CoreGraphics semantics to cairo.
#pragma once

#include <scrivlet/export.h>

#include "platform/cg_context.h"

#include <vector>

typedef struct _cairo cairo_t;

namespace scrivlet {

class PdfContentStream;

// Exported from the shared library for the Qt backend, which paints views through it; not a public API.
class SCRIVLET_EXPORT CairoContext : public CGContext {
 public:
  // Keeps its own reference to cr. The transform in force now is the base space of shadow offsets.
  explicit CairoContext(cairo_t* cr);
  ~CairoContext() override;
  CairoContext(const CairoContext&) = delete;
  CairoContext& operator=(const CairoContext&) = delete;

  cairo_t* cairo() const { return cr_; }
  // Fills and strokes are written to the stream instead of the surface, until something only cairo
  // can draw (text, an image, a shadow) comes: from then on cairo draws everything, in order.
  void writeShapesTo(PdfContentStream* stream) { shapes_ = stream; }
  // Whether a fill in an opaque colour reaches the surface as it is: no alpha, shadow or blend mode
  // set, and not written to a stream.
  bool fillsOpaqueColorsAsIs() const;

  void scaleCTM(double sx, double sy) override;
  void translateCTM(double tx, double ty) override;
  void saveGState() override;
  void restoreGState() override;
  void setBlendMode(int mode) override;
  void setFillColor(const QnColor& color) override;
  void setStrokeColor(const QnColor& color) override;
  void setAlpha(double alpha) override;
  void setLineWidth(double width) override;
  void setLineJoin(int join) override;
  void setLineCap(int cap) override;
  void setMiterLimit(double limit) override;
  void setShadow(QnSize offset, double blur, const QnColor& color) override;
  void setTextDrawingMode(int mode) override;
  void beginPath() override;
  void moveToPoint(double x, double y) override;
  void addLineToPoint(double x, double y) override;
  void addCurveToPoint(double cp1x, double cp1y, double cp2x, double cp2y, double x,
                       double y) override;
  void addArc(double x, double y, double radius, double startAngle, double endAngle,
              int clockwise) override;
  void closePath() override;
  void drawPath(int mode) override;
  void fillRect(const QnRect& rect) override;
  void drawImage(const QnImage& image, const QnRect& rect) override;
  void showText(const std::string& text, QnPoint topLeft, double fontSize,
                const QnColor& color) override;

 private:
  // The parts of the graphics state cairo does not keep itself.
  struct State {
    QnColor fill = QnColor::black();
    QnColor stroke = QnColor::black();
    double alpha = 1.0;
    int blendMode = kQnBlendModeNormal;
    QnSize shadowOffset;
    QnColor shadowColor = QnColor::clear();
    int textMode = kQnTextFill;
  };

  QnColor::RGBA withAlpha(const QnColor& color) const;
  void setSource(const QnColor& color);
  // Fills and/or strokes the current path (kept), shadow first.
  void paint(bool fill, bool evenOdd, bool stroke);
  // A length in user space, shortened where it would span more than 2^22 pixels.
  double withinPixelLimit(double length) const;
  void paintShadow(bool fill, bool evenOdd, bool stroke);
  void writeShapes(bool fill, bool evenOdd, bool stroke);
  QnSize shadowOffsetInDeviceSpace() const;
  QnSize shadowOffsetInUserSpace() const;
  bool hasShadow() const;

  cairo_t* cr_;
  double baseMatrix_[6];
  State state_;
  std::vector<State> saved_;
  PdfContentStream* shapes_ = nullptr;
};

}  // namespace scrivlet
