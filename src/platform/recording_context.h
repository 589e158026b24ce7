// A drawing context that only logs its calls, so tests can check exactly what was drawn.
#pragma once

#include "platform/cg_context.h"

#include <string>
#include <vector>

namespace scrivlet {

class RecordingContext : public CGContext {
 public:
  struct Call {
    std::string name;
    std::vector<double> args;
    std::string text;  // the text of showText
    // "name a b c" with the numbers in "%g", for readable comparisons.
    std::string str() const;
  };

  const std::vector<Call>& calls() const { return calls_; }
  // Every call's str(), one a line.
  std::string log() const;
  std::vector<std::string> names() const;
  void clear() { calls_.clear(); }

  void scaleCTM(double sx, double sy) override { add("scaleCTM", {sx, sy}); }
  void translateCTM(double tx, double ty) override { add("translateCTM", {tx, ty}); }
  void saveGState() override { add("saveGState", {}); }
  void restoreGState() override { add("restoreGState", {}); }
  void setBlendMode(int mode) override { add("setBlendMode", {double(mode)}); }
  void setFillColor(const QnColor& c) override { add("setFillColor", components(c)); }
  void setStrokeColor(const QnColor& c) override { add("setStrokeColor", components(c)); }
  void setAlpha(double alpha) override { add("setAlpha", {alpha}); }
  void setLineWidth(double width) override { add("setLineWidth", {width}); }
  void setLineJoin(int join) override { add("setLineJoin", {double(join)}); }
  void setLineCap(int cap) override { add("setLineCap", {double(cap)}); }
  void setMiterLimit(double limit) override { add("setMiterLimit", {limit}); }
  void setShadow(QnSize offset, double blur, const QnColor& c) override;
  void setTextDrawingMode(int mode) override { add("setTextDrawingMode", {double(mode)}); }
  void beginPath() override { add("beginPath", {}); }
  void moveToPoint(double x, double y) override { add("moveToPoint", {x, y}); }
  void addLineToPoint(double x, double y) override { add("addLineToPoint", {x, y}); }
  void addCurveToPoint(double a, double b, double c, double d, double x, double y) override {
    add("addCurveToPoint", {a, b, c, d, x, y});
  }
  void addArc(double x, double y, double r, double a0, double a1, int cw) override {
    add("addArc", {x, y, r, a0, a1, double(cw)});
  }
  void closePath() override { add("closePath", {}); }
  void drawPath(int mode) override { add("drawPath", {double(mode)}); }
  void fillRect(const QnRect& r) override {
    add("fillRect", {r.origin.x, r.origin.y, r.size.width, r.size.height});
  }
  void drawImage(const QnImage& image, const QnRect& r) override;
  void showText(const std::string& text, QnPoint p, double size, const QnColor& c) override;

 private:
  static std::vector<double> components(const QnColor& c);
  void add(const char* name, std::vector<double> args, std::string text = {});
  std::vector<Call> calls_;
};

}  // namespace scrivlet
