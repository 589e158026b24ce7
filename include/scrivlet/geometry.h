// Points, sizes and rectangles in screen points (origin top left, y down), with CoreGraphics rules.
#pragma once

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

double rectMinX(const QnRect& r);
double rectMinY(const QnRect& r);
double rectMaxX(const QnRect& r);
double rectMaxY(const QnRect& r);

// A rectangle with a negative size turned into the same area with a positive size.
QnRect rectStandardize(const QnRect& r);

// Left and top edges are inside, right and bottom edges outside; NaN is never inside.
bool rectContainsPoint(const QnRect& r, QnPoint p);

// The smallest rectangle with whole-number edges that encloses r.
QnRect rectIntegral(const QnRect& r);

// The smallest rectangle that holds both.
QnRect rectUnion(const QnRect& a, const QnRect& b);

QnRect rectInset(const QnRect& r, double dx, double dy);

bool rectIsEmpty(const QnRect& r);

}  // namespace scrivlet
