// A shape's coverage, rasterized once and laid on a bitmap as often as wanted: each laying leaves
// exactly the pixels that filling the shape there in an opaque colour would. Live ink draws each of
// its segments twice (as the newest, and again at the next sample), and the kept ink once more: the
// second and third times cost a pass over the covered pixels instead of a rasterization.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>

#include <cstdint>
#include <memory>
#include <vector>

typedef struct _cairo_surface cairo_surface_t;

namespace scrivlet {

class CairoContext;
class CGContext;
class QnBitmapContext;

// A shape's coverage of the pixels of bitmaps of one size and scale, in one opaque colour.
class QnCoverage {
 public:
  const QnColor& color() const { return color_; }
  // Lays the shape on the target where it was drawn; false (and nothing changed) when the target is
  // not of the size and scale it was drawn for, or does not draw plainly at its scale.
  bool layOn(QnBitmapContext& target) const;

 private:
  friend class QnCoverageMask;
  int targetWidth_ = 0, targetHeight_ = 0;
  double scale_ = 1;
  QnColor color_ = QnColor::clear();  // no coverage is of a clear colour: the first one is worked out
  uint32_t pixel_ = 0;                 // the colour as the target stores it
  int left_ = 0, top_ = 0, width_ = 0, height_ = 0;  // the shape's pixels in the target
  std::vector<uint16_t> spans_;  // each row's covered columns [first, last), as pairs
  std::vector<uint8_t> coverage_;  // width x height
};

// Where shapes are rasterized: one at a time, each taken as a coverage of its own.
class QnCoverageMask {
 public:
  QnCoverageMask();
  ~QnCoverageMask();
  QnCoverageMask(const QnCoverageMask&) = delete;
  QnCoverageMask& operator=(const QnCoverageMask&) = delete;

  // The context to draw a shape in, in the points of `target`, for a shape whose pixels lie within
  // `pixels` of it (whole pixels); null when a coverage cannot stand for a fill of the target in
  // `color`: the rectangle is larger than the mask or not inside the target, the colour is not
  // opaque, or the target does not draw plainly at its scale (a transform, an alpha, a shadow or
  // another blend mode set on it).
  CGContext* begin(QnBitmapContext& target, const QnRect& pixels, const QnColor& color);
  // The coverage of what was drawn since begin().
  std::shared_ptr<const QnCoverage> take();

 private:
  static constexpr int kSide = 256;  // the largest shape held, in pixels a side
  cairo_surface_t* surface_;
  std::unique_ptr<CairoContext> context_;
  QnCoverage next_;  // all but the coverage, from begin()
};

}  // namespace scrivlet
