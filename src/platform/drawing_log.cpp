// Keeping drawing calls and making them again.
#include "platform/drawing_log.h"

#include <algorithm>

namespace scrivlet {

void DrawingLog::add(Op op, std::initializer_list<double> args, int32_t index) {
  Call call{op, index, {}};
  std::copy(args.begin(), args.end(), call.args);
  calls_.push_back(call);
}

void DrawingLog::restoreGState() {
  if (!saved_.empty()) state_ = saved_.back(), saved_.pop_back();
  add(kRestore, {});
}

void DrawingLog::setBlendMode(int mode) {
  // Other modes may change pixels outside the shape.
  if (mode != kQnBlendModeNormal && mode != kQnBlendModeClear) alwaysDrawn_ = true;
  add(kBlendMode, {}, mode);
}

void DrawingLog::reach() {
  if (path_.first == SIZE_MAX) path_.first = calls_.size();
}

void DrawingLog::reach(double y) {
  reach();
  double row = state_.scaleY * y + state_.offsetY;
  if (std::isnan(row)) row = -INFINITY, path_.bottom = INFINITY;  // reaches anywhere
  path_.top = std::min(path_.top, row), path_.bottom = std::max(path_.bottom, row);
}

void DrawingLog::drawPath(int mode) {
  reach();
  // The pen's reach, a miter's too, and a unit for antialiasing.
  double pen = std::fabs(state_.lineWidth * state_.scaleY) * 0.5 * std::max(state_.miterLimit, 1.0) + 1;
  bool known = !alwaysDrawn_ && std::isfinite(pen);
  paths_.push_back({path_.first, calls_.size(), known ? path_.top - pen : -INFINITY, known ? path_.bottom + pen : INFINITY});
  path_ = {};
  add(kDrawPath, {}, mode);
}

void DrawingLog::replay(CGContext& c) const { replay(c, -INFINITY, INFINITY); }

void DrawingLog::replay(CGContext& c, double top, double bottom) const {
  size_t text = 0, skipUntil = 0, path = 0;
  bool skipping = false;
  for (size_t i = 0; i < calls_.size(); ++i) {
    const Call& call = calls_[i];
    if (path < paths_.size() && paths_[path].first == i) {
      const Drawn& drawn = paths_[path++];
      // A path that misses the rows is left out, and the calls between that build no path are made.
      skipping = !(drawn.bottom >= top && drawn.top <= bottom);
      skipUntil = drawn.last;
    }
    if (skipping && i > skipUntil) skipping = false;
    if (skipping && buildsPath(call.op)) continue;
    const double* a = call.args;
    switch (call.op) {
      case kScale: c.scaleCTM(a[0], a[1]); break;
      case kTranslate: c.translateCTM(a[0], a[1]); break;
      case kSave: c.saveGState(); break;
      case kRestore: c.restoreGState(); break;
      case kBlendMode: c.setBlendMode(call.index); break;
      case kFillColor: c.setFillColor(colors_[call.index]); break;
      case kStrokeColor: c.setStrokeColor(colors_[call.index]); break;
      case kAlpha: c.setAlpha(a[0]); break;
      case kLineWidth: c.setLineWidth(a[0]); break;
      case kLineJoin: c.setLineJoin(call.index); break;
      case kLineCap: c.setLineCap(call.index); break;
      case kMiterLimit: c.setMiterLimit(a[0]); break;
      case kShadow: c.setShadow({a[0], a[1]}, a[2], colors_[call.index]); break;
      case kTextMode: c.setTextDrawingMode(call.index); break;
      case kBeginPath: c.beginPath(); break;
      case kMove: c.moveToPoint(a[0], a[1]); break;
      case kLine: c.addLineToPoint(a[0], a[1]); break;
      case kCurve: c.addCurveToPoint(a[0], a[1], a[2], a[3], a[4], a[5]); break;
      case kArc: c.addArc(a[0], a[1], a[2], a[3], a[4], call.index); break;
      case kClose: c.closePath(); break;
      case kDrawPath: c.drawPath(call.index); break;
      case kFillRect: c.fillRect({{a[0], a[1]}, {a[2], a[3]}}); break;
      case kImage: c.drawImage(images_[call.index], {{a[0], a[1]}, {a[2], a[3]}}); break;
      case kText: c.showText(texts_[text++], {a[0], a[1]}, a[2], colors_[call.index]); break;
    }
  }
}

}  // namespace scrivlet
