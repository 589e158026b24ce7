// A shape's coverage, rasterized once and laid on a bitmap as often as wanted: each laying leaves
// exactly the pixels that filling the shape there in an opaque colour would. Live ink draws each of
// its pieces twice (once as the newest, once more at the next sample); the second time costs a pass
// over the covered pixels instead of a rasterization.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>

#include <cstdint>
#include <memory>

typedef struct _cairo_surface cairo_surface_t;

namespace scrivlet {

class CairoContext;
class CGContext;
class QnBitmapContext;

class QnCoverageMask {
 public:
  QnCoverageMask();
  ~QnCoverageMask();
  QnCoverageMask(const QnCoverageMask&) = delete;
  QnCoverageMask& operator=(const QnCoverageMask&) = delete;

  // The context to draw a shape in, in the points of `target`, for a shape whose pixels lie within
  // `pixels` of it (whole pixels); null when the mask cannot stand for a fill of the target in
  // `color`: the rectangle is larger than the mask or not inside the target, the colour is not
  // opaque, or the target does not draw plainly at its scale (a transform, an alpha, a shadow or
  // another blend mode set on it).
  CGContext* begin(QnBitmapContext& target, const QnRect& pixels, const QnColor& color);
  // Lays the shape last drawn on a target of the same size, where and in the colour it was begun.
  void layOn(QnBitmapContext& target) const;

 private:
  static constexpr int kSide = 256;  // the largest shape held, in pixels a side
  cairo_surface_t* surface_;
  std::unique_ptr<CairoContext> context_;
  int left_ = 0, top_ = 0, width_ = 0, height_ = 0;  // the shape's pixels in the target
  // Each row's covered columns [first, last), found at the first laying: only they are visited.
  mutable bool rowsKnown_ = false;
  mutable uint16_t first_[kSide], last_[kSide];
  QnColor color_ = QnColor::clear();
  uint32_t pixel_ = 0;  // the colour as the target stores it
};

}  // namespace scrivlet
