// The one drawing surface of the ink: drawn into a raster context, or recorded as an SVG document.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

class CGContext;

class QnComboContext {
 public:
  // The context is not owned; its owner keeps it alive. Without one, raster drawing does nothing.
  explicit QnComboContext(CGContext* context);

  CGContext* context() const { return context_; }
  void setContext(CGContext* context) { context_ = context; }
  bool isSVG() const { return isSVG_; }
  void setIsSVG(bool isSVG) { isSVG_ = isSVG; }

  // Recorded state (SVG mode).
  const std::optional<std::string>& pathString() const { return pathString_; }
  const std::vector<std::string>& pathArray() const { return pathArray_; }
  float strokeLineWidth() const { return strokeLineWidth_; }
  int strokeLineJoin() const { return strokeLineJoin_; }
  int strokeLineCap() const { return strokeLineCap_; }
  const std::string& strokeColorString() const { return strokeColorString_; }
  const std::string& fillColorString() const { return fillColorString_; }
  double opacity() const { return opacity_; }
  QnPoint scale() const { return scale_; }
  QnPoint translate() const { return translate_; }

  void setScaleCTMXY(float x, float y);
  void setTranslateCTMXY(float x, float y);
  void clearRect(const QnRect& rect);
  void setStrokeColorWithColor(const QnColor& color);
  void setFillColorWithColor(const QnColor& color);
  void setAlpha(double alpha);
  void setLineWidth(double width);
  void setLineJoin(int join);
  void setLineCap(int cap);
  void beginPath();
  void moveToPoint(QnPoint point);
  void addLineToPoint(QnPoint point);
  void addCurveToPointCp1Cp2Point(QnPoint cp1, QnPoint cp2, QnPoint point);
  void addArcRadiusStartAngleEndAngleClockwise(QnPoint center, double radius, double startAngle,
                                               double endAngle, int clockwise);
  void closePath();
  void fillPath();
  void strokePath();
  void drawPath(int mode);
  // Records a text element in either mode; draws nothing.
  void showTextAtPointTextSize(QnPoint point, const std::string& text, double size);

  // The SVG coordinate transform: translation first, in unscaled units, then the scale.
  QnPoint st(QnPoint point) const;
  // "#RRGGBB" in upper-case hexadecimal; alpha is dropped.
  static std::string hexStringFromColor(const QnColor& color);
  static QnColor::RGBA rgbaFromColor(const QnColor& color) { return color.rgba(); }
  // The SVG document of everything recorded so far.
  std::string serializeSVG(QnSize size) const;
  // Whether that document would hold only finite numbers: "inf" or "nan" would make it one that no
  // renderer draws.
  bool writesOnlyFiniteNumbers(QnSize size) const;

 private:
  // Appends a path command and its numbers to the path being built.
  void appendCommand(char command, std::initializer_list<double> values);
  void noteNumbers(std::initializer_list<double> values);
  bool drawsRaster() const { return !isSVG_ && context_; }

  CGContext* context_;
  bool isSVG_ = false;
  std::optional<std::string> pathString_;
  std::vector<std::string> pathArray_;
  float strokeLineWidth_ = 1.0f;
  int strokeLineJoin_ = 0;
  int strokeLineCap_ = 0;
  // No "#" here, unlike the colour texts that the setters make.
  std::string strokeColorString_ = "000000";
  std::string fillColorString_ = "000000";
  double opacity_ = 1.0;
  QnPoint scale_{0, 0};
  QnPoint translate_{0, 0};
  bool wroteNonFiniteNumber_ = false;
};

}  // namespace scrivlet
