// A drawing context that keeps its calls, to be drawn later into other contexts: a bitmap drawn in
// bands on several threads replays the same calls into each band.
#pragma once

#include "platform/cg_context.h"
#include "platform/image.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace scrivlet {

class DrawingLog : public CGContext {
 public:
  // Makes every call kept so far, in order, on the context.
  void replay(CGContext& context) const;
  // The same, less each path that cannot ink rows `top` to `bottom` (in the units the calls draw in,
  // before any scale of the context): a band of a bitmap draws only what reaches it.
  void replay(CGContext& context, double top, double bottom) const;
  bool empty() const { return calls_.empty(); }

  void scaleCTM(double sx, double sy) override { state_.scaleY *= sy, add(kScale, {sx, sy}); }
  void translateCTM(double tx, double ty) override { state_.offsetY += state_.scaleY * ty, add(kTranslate, {tx, ty}); }
  void saveGState() override { saved_.push_back(state_), add(kSave, {}); }
  void restoreGState() override;
  void setBlendMode(int mode) override;
  void setFillColor(const QnColor& color) override { add(kFillColor, {}, keep(colors_, color)); }
  void setStrokeColor(const QnColor& color) override { add(kStrokeColor, {}, keep(colors_, color)); }
  void setAlpha(double alpha) override { add(kAlpha, {alpha}); }
  void setLineWidth(double width) override { state_.lineWidth = width, add(kLineWidth, {width}); }
  void setLineJoin(int join) override { add(kLineJoin, {}, join); }
  void setLineCap(int cap) override { add(kLineCap, {}, cap); }
  void setMiterLimit(double limit) override { state_.miterLimit = limit, add(kMiterLimit, {limit}); }
  void setShadow(QnSize offset, double blur, const QnColor& color) override {
    alwaysDrawn_ = true;  // a shadow may fall anywhere
    add(kShadow, {offset.width, offset.height, blur}, keep(colors_, color));
  }
  void setTextDrawingMode(int mode) override { add(kTextMode, {}, mode); }
  void beginPath() override { path_ = {}, reach(), add(kBeginPath, {}); }
  void moveToPoint(double x, double y) override { reach(y), add(kMove, {x, y}); }
  void addLineToPoint(double x, double y) override { reach(y), add(kLine, {x, y}); }
  void addCurveToPoint(double a, double b, double c, double d, double x, double y) override {
    reach(b), reach(d), reach(y), add(kCurve, {a, b, c, d, x, y});  // within its control points
  }
  void addArc(double x, double y, double r, double from, double to, int clockwise) override {
    reach(y - r), reach(y + r), add(kArc, {x, y, r, from, to}, clockwise);
  }
  void closePath() override { add(kClose, {}); }
  void drawPath(int mode) override;
  void fillRect(const QnRect& r) override { add(kFillRect, {r.origin.x, r.origin.y, r.size.width, r.size.height}); }
  void drawImage(const QnImage& image, const QnRect& r) override {
    add(kImage, {r.origin.x, r.origin.y, r.size.width, r.size.height}, keep(images_, image));
  }
  void showText(const std::string& text, QnPoint topLeft, double size, const QnColor& color) override {
    texts_.push_back(text);
    add(kText, {topLeft.x, topLeft.y, size}, keep(colors_, color));
  }

 private:
  enum Op : uint8_t {
    kScale, kTranslate, kSave, kRestore, kBlendMode, kFillColor, kStrokeColor, kAlpha, kLineWidth,
    kLineJoin, kLineCap, kMiterLimit, kShadow, kTextMode, kBeginPath, kMove, kLine, kCurve, kArc,
    kClose, kDrawPath, kFillRect, kImage, kText,
  };
  struct Call {
    Op op;
    int32_t index;  // an integer argument, or where a colour or image is kept
    double args[6];
  };

  template <class T>
  static int32_t keep(std::vector<T>& kept, const T& value) {
    kept.push_back(value);
    return int32_t(kept.size() - 1);
  }
  void add(Op op, std::initializer_list<double> args, int32_t index = 0);
  // Counts the next call in the path being built, reaching row y (in user units; none for a start).
  void reach();
  void reach(double y);
  static bool buildsPath(Op op) { return op == kBeginPath || op == kMove || op == kLine || op == kCurve || op == kArc || op == kClose || op == kDrawPath; }

  // What the rows a path inks depend on besides its points: the transform (scales and translations
  // only), and the pen.
  struct State {
    double scaleY = 1, offsetY = 0, lineWidth = 1, miterLimit = 10;
  };
  State state_;
  std::vector<State> saved_;
  // The path being built: its first call and the rows its points reach.
  struct Path {
    size_t first = SIZE_MAX;
    double top = INFINITY, bottom = -INFINITY;
  } path_;
  bool alwaysDrawn_ = false;
  // Each path drawn: its first call, its drawPath call, and the rows it may ink.
  struct Drawn {
    size_t first, last;
    double top, bottom;
  };
  std::vector<Drawn> paths_;

  std::vector<Call> calls_;
  std::vector<QnColor> colors_;
  std::vector<QnImage> images_;
  std::vector<std::string> texts_;
};

}  // namespace scrivlet
