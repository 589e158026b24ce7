// CoreGraphics rectangle rules on plain doubles.
#include <scrivlet/engine/geometry.h>

#include <algorithm>
#include <cmath>

namespace scrivlet {

QnRect rectStandardize(const QnRect& r) {
  QnRect s = r;
  if (s.size.width < 0) {
    s.origin.x += s.size.width;
    s.size.width = -s.size.width;
  }
  if (s.size.height < 0) {
    s.origin.y += s.size.height;
    s.size.height = -s.size.height;
  }
  return s;
}

double rectMinX(const QnRect& r) { return rectStandardize(r).origin.x; }
double rectMinY(const QnRect& r) { return rectStandardize(r).origin.y; }
double rectMaxX(const QnRect& r) {
  QnRect s = rectStandardize(r);
  return s.origin.x + s.size.width;
}
double rectMaxY(const QnRect& r) {
  QnRect s = rectStandardize(r);
  return s.origin.y + s.size.height;
}

bool rectContainsPoint(const QnRect& r, QnPoint p) {
  return p.x >= rectMinX(r) && p.x < rectMaxX(r) && p.y >= rectMinY(r) && p.y < rectMaxY(r);
}

QnRect rectIntegral(const QnRect& r) {
  QnRect s = rectStandardize(r);
  double x0 = std::floor(s.origin.x);
  double y0 = std::floor(s.origin.y);
  double x1 = std::ceil(s.origin.x + s.size.width);
  double y1 = std::ceil(s.origin.y + s.size.height);
  return makeRect(x0, y0, x1 - x0, y1 - y0);
}

QnRect rectUnion(const QnRect& a, const QnRect& b) {
  double x0 = std::min(rectMinX(a), rectMinX(b));
  double y0 = std::min(rectMinY(a), rectMinY(b));
  double x1 = std::max(rectMaxX(a), rectMaxX(b));
  double y1 = std::max(rectMaxY(a), rectMaxY(b));
  return makeRect(x0, y0, x1 - x0, y1 - y0);
}

QnRect rectInset(const QnRect& r, double dx, double dy) {
  QnRect s = rectStandardize(r);
  return makeRect(s.origin.x + dx, s.origin.y + dy, s.size.width - 2 * dx, s.size.height - 2 * dy);
}

bool rectIsEmpty(const QnRect& r) { return !(r.size.width != 0 && r.size.height != 0); }

}  // namespace scrivlet
