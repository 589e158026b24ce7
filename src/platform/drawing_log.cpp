// Keeping drawing calls and making them again.
#include "platform/drawing_log.h"

#include <algorithm>

namespace scrivlet {

void DrawingLog::add(Op op, std::initializer_list<double> args, int32_t index) {
  Call call{op, index, {}};
  std::copy(args.begin(), args.end(), call.args);
  calls_.push_back(call);
}

void DrawingLog::replay(CGContext& c) const {
  size_t text = 0;
  for (const Call& call : calls_) {
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
