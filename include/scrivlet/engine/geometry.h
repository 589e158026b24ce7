// Points, sizes and rectangles in screen points (origin top left, y down), with CoreGraphics rules.
#pragma once

#include <scrivlet/export.h>

namespace scrivlet {

struct QnPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const QnPoint&, const QnPoint&) = default;
};

struct QnSize {
  double width = 0;
  double height = 0;
  friend bool operator==(const QnSize&, const QnSize&) = default;
};

struct QnRect {
  QnPoint origin;
  QnSize size;
  friend bool operator==(const QnRect&, const QnRect&) = default;
};

inline constexpr QnRect QnRectZero{};

inline QnRect makeRect(double x, double y, double width, double height) {
  return QnRect{{x, y}, {width, height}};
}

SCRIVLET_EXPORT double rectMinX(const QnRect& r);
SCRIVLET_EXPORT double rectMinY(const QnRect& r);
SCRIVLET_EXPORT double rectMaxX(const QnRect& r);
SCRIVLET_EXPORT double rectMaxY(const QnRect& r);

// A rectangle with a negative size turned into the same area with a positive size.
SCRIVLET_EXPORT QnRect rectStandardize(const QnRect& r);

// Left and top edges are inside, right and bottom edges outside; NaN is never inside.
SCRIVLET_EXPORT bool rectContainsPoint(const QnRect& r, QnPoint p);

// The smallest rectangle with whole-number edges that encloses r.
SCRIVLET_EXPORT QnRect rectIntegral(const QnRect& r);

// The smallest rectangle that holds both.
SCRIVLET_EXPORT QnRect rectUnion(const QnRect& a, const QnRect& b);

SCRIVLET_EXPORT QnRect rectInset(const QnRect& r, double dx, double dy);

SCRIVLET_EXPORT bool rectIsEmpty(const QnRect& r);

}  // namespace scrivlet
