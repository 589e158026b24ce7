// The drawing-context interface every raster, PDF and test target implements, with CoreGraphics semantics.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>

#include <string>

namespace scrivlet {

class QnImage;

enum QnBlendMode { kQnBlendModeNormal = 0, kQnBlendModeClear = 16 };
enum QnLineJoin { kQnLineJoinMiter = 0, kQnLineJoinRound = 1, kQnLineJoinBevel = 2 };
enum QnLineCap { kQnLineCapButt = 0, kQnLineCapRound = 1, kQnLineCapSquare = 2 };
enum QnPathDrawingMode {
  kQnPathFill = 0,
  kQnPathEOFill = 1,
  kQnPathStroke = 2,
  kQnPathFillStroke = 3,
  kQnPathEOFillStroke = 4,
};
enum QnTextDrawingMode { kQnTextFill = 0, kQnTextStroke = 1, kQnTextFillStroke = 2, kQnTextInvisible = 3 };

class CGContext {
 public:
  virtual ~CGContext() = default;

  virtual void scaleCTM(double sx, double sy) = 0;
  virtual void translateCTM(double tx, double ty) = 0;
  virtual void saveGState() = 0;
  virtual void restoreGState() = 0;

  virtual void setBlendMode(int mode) = 0;
  virtual void setFillColor(const QnColor& color) = 0;
  virtual void setStrokeColor(const QnColor& color) = 0;
  // Multiplies the alpha of everything drawn afterwards.
  virtual void setAlpha(double alpha) = 0;
  virtual void setLineWidth(double width) = 0;
  virtual void setLineJoin(int join) = 0;
  virtual void setLineCap(int cap) = 0;
  virtual void setMiterLimit(double limit) = 0;
  // A shadow with zero blur: each shape is first drawn offset in the shadow colour.
  virtual void setShadow(QnSize offset, double blur, const QnColor& color) = 0;
  virtual void setTextDrawingMode(int mode) = 0;

  virtual void beginPath() = 0;
  virtual void moveToPoint(double x, double y) = 0;
  virtual void addLineToPoint(double x, double y) = 0;
  virtual void addCurveToPoint(double cp1x, double cp1y, double cp2x, double cp2y, double x,
                               double y) = 0;
  // Adds a line from the current point to the arc's start first, as CoreGraphics does.
  virtual void addArc(double x, double y, double radius, double startAngle, double endAngle,
                      int clockwise) = 0;
  virtual void closePath() = 0;
  // Draws the current path in the given mode and consumes it.
  virtual void drawPath(int mode) = 0;
  virtual void fillRect(const QnRect& rect) = 0;

  // Draws the image scaled into the rectangle.
  virtual void drawImage(const QnImage& image, const QnRect& rect) = 0;

  // Bold "Helvetica" text with its top-left corner at the point, in the given colour.
  virtual void showText(const std::string& text, QnPoint topLeft, double fontSize,
                        const QnColor& color) = 0;
};

}  // namespace scrivlet
