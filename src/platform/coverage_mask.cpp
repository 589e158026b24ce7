#include "platform/coverage_mask.h"

#include "platform/cairo_context.h"
#include "platform/image.h"

#include <cairo.h>

#include <bit>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace scrivlet {

namespace {

// cairo's blend of an opaque pixel over another by a coverage, two channels at a time, rounded as it
// rounds it: the same bytes as its own fill of a partly covered pixel.
constexpr uint32_t kRedBlue = 0x00ff00ff, kHalf = 0x007f007f, kRedBluePlusOne = 0x01000100;

uint32_t multiplyTwoChannels(uint32_t channels, uint8_t by) {
  uint32_t t = (channels & kRedBlue) * by + kHalf;
  return ((t + ((t >> 8) & kRedBlue)) >> 8) & kRedBlue;
}

uint32_t addTwoChannels(uint32_t a, uint32_t b) {
  uint32_t t = a + b;
  t |= kRedBluePlusOne - ((t >> 8) & kRedBlue);
  return t & kRedBlue;
}

uint32_t blend(uint32_t source, uint8_t coverage, uint32_t destination) {
  uint8_t rest = uint8_t(~coverage);
  return addTwoChannels(multiplyTwoChannels(source, coverage), multiplyTwoChannels(destination, rest)) |
         addTwoChannels(multiplyTwoChannels(source >> 8, coverage), multiplyTwoChannels(destination >> 8, rest)) << 8;
}

// The colour as cairo stores it in a pixel it fills wholly: a triangle past the pixel's corners, so
// that the pixel comes from a fill as a shape's inside does.
uint32_t storedPixel(const QnColor& color) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1);
  cairo_t* cr = cairo_create(surface);
  QnColor::RGBA c = color.rgba();
  cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
  cairo_move_to(cr, -1, -1);
  cairo_line_to(cr, 4, -1);
  cairo_line_to(cr, -1, 4);
  cairo_fill(cr);
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  uint32_t pixel = 0;
  if (unsigned char* data = cairo_image_surface_get_data(surface)) std::memcpy(&pixel, data, sizeof pixel);
  cairo_surface_destroy(surface);
  return pixel;
}

// The first byte of a row that is not zero, eight at a time; the width when none is.
int firstCovered(const unsigned char* line, int width) {
  int at = 0;
  for (uint64_t eight; at + 8 <= width; at += 8) {
    std::memcpy(&eight, line + at, sizeof eight);
    if (eight) return at + std::countr_zero(eight) / 8;  // the lowest address is the lowest byte
  }
  while (at < width && !line[at]) ++at;
  return at;
}

// One past the last byte of a row that is not zero, at `first` at least, eight at a time from the end.
int lastCovered(const unsigned char* line, int first, int width) {
  int end = width;
  for (uint64_t eight; end - 8 >= first; end -= 8) {
    std::memcpy(&eight, line + end - 8, sizeof eight);
    if (eight) return end - std::countl_zero(eight) / 8;  // the highest address is the highest byte
  }
  while (end > first && !line[end - 1]) --end;
  return end;
}

#if defined(__SSE2__)
// The same blend for four pixels at once, a 16-bit lane a channel. A coverage of 0 gives back the
// pixel beneath and one of 255 the source, exactly, so no pixel needs a branch.
__m128i multiplyChannels(__m128i channels, __m128i by) {
  __m128i t = _mm_add_epi16(_mm_mullo_epi16(channels, by), _mm_set1_epi16(0x7f));
  return _mm_srli_epi16(_mm_add_epi16(t, _mm_srli_epi16(t, 8)), 8);
}

void blendFour(__m128i source, const uint8_t* coverage, uint32_t* destination) {
  const __m128i zero = _mm_setzero_si128(), full = _mm_set1_epi16(0xff);
  int32_t four;
  std::memcpy(&four, coverage, sizeof four);
  __m128i a = _mm_cvtsi32_si128(four);
  a = _mm_unpacklo_epi8(a, a);
  a = _mm_unpacklo_epi16(a, a);  // each pixel's coverage in its four channels
  __m128i aLow = _mm_unpacklo_epi8(a, zero), aHigh = _mm_unpackhi_epi8(a, zero);
  __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(destination));
  __m128i low = _mm_add_epi16(multiplyChannels(source, aLow),
                              multiplyChannels(_mm_unpacklo_epi8(d, zero), _mm_xor_si128(aLow, full)));
  __m128i high = _mm_add_epi16(multiplyChannels(source, aHigh),
                               multiplyChannels(_mm_unpackhi_epi8(d, zero), _mm_xor_si128(aHigh, full)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(destination), _mm_packus_epi16(low, high));  // adds saturate
}
#endif

}  // namespace

bool QnCoverage::layOn(QnBitmapContext& target) const {
  if (target.pixelWidth() != targetWidth_ || target.pixelHeight() != targetHeight_ || target.scale() != scale_ ||
      !target.drawsPlainlyAtItsScale())
    return false;
  unsigned char* pixels = target.pixels();
  if (!pixels) return false;
  size_t stride = size_t(target.stride());
#if defined(__SSE2__)
  const __m128i source = _mm_unpacklo_epi8(_mm_set1_epi32(int32_t(pixel_)), _mm_setzero_si128());
#endif
  for (int row = 0; row < height_; ++row) {
    const uint8_t* coverage = coverage_.data() + size_t(row) * size_t(width_);
    uint32_t* destination = reinterpret_cast<uint32_t*>(pixels + size_t(top_ + row) * stride) + left_;
    int column = spans_[2 * size_t(row)], end = spans_[2 * size_t(row) + 1];
#if defined(__SSE2__)
    for (; column + 4 <= end; column += 4) blendFour(source, coverage + column, destination + column);
#endif
    for (; column < end; ++column) {
      uint8_t a = coverage[column];
      if (a == 0xff)
        destination[column] = pixel_;
      else if (a)
        destination[column] = blend(pixel_, a, destination[column]);
    }
  }
  target.pixelsChanged();
  return true;
}

QnCoverageMask::QnCoverageMask() : surface_(cairo_image_surface_create(CAIRO_FORMAT_A8, kSide, kSide)) {
  cairo_t* cr = cairo_create(surface_);
  context_ = std::make_unique<CairoContext>(cr);
  cairo_destroy(cr);
}

QnCoverageMask::~QnCoverageMask() {
  context_.reset();
  cairo_surface_destroy(surface_);
}

CGContext* QnCoverageMask::begin(QnBitmapContext& target, const QnRect& pixels, const QnColor& color) {
  next_.width_ = 0;
  QnColor::RGBA c = color.rgba();
  double left = pixels.origin.x, top = pixels.origin.y, width = pixels.size.width, height = pixels.size.height;
  if (!(c.a == 1) || !target.drawsPlainlyAtItsScale() || !(left >= 0 && top >= 0 && width > 0 && height > 0) ||
      !(width <= kSide && height <= kSide) || !(left + width <= target.pixelWidth() && top + height <= target.pixelHeight()) ||
      left != std::floor(left) || top != std::floor(top) || width != std::floor(width) || height != std::floor(height) ||
      cairo_surface_status(surface_) != CAIRO_STATUS_SUCCESS)
    return nullptr;
  if (!(color == next_.color_)) next_.color_ = color, next_.pixel_ = storedPixel(color);
  next_.targetWidth_ = target.pixelWidth(), next_.targetHeight_ = target.pixelHeight(), next_.scale_ = target.scale();
  next_.left_ = int(left), next_.top_ = int(top), next_.width_ = int(width), next_.height_ = int(height);
  // The target's covered rows are read again when the coverage is laid: fetched while it is drawn.
  if (const unsigned char* pixels = target.pixels()) {
    size_t stride = size_t(target.stride());
    for (int row = 0; row < next_.height_; ++row) {
      const unsigned char* line = pixels + size_t(next_.top_ + row) * stride + size_t(next_.left_) * 4;
      for (int byte = 0; byte < next_.width_ * 4; byte += 64) __builtin_prefetch(line + byte, 1);
    }
  }
  cairo_surface_flush(surface_);
  unsigned char* data = cairo_image_surface_get_data(surface_);
  int stride = cairo_image_surface_get_stride(surface_);
  for (int row = 0; row < next_.height_; ++row) std::memset(data + row * stride, 0, size_t(next_.width_));
  cairo_surface_mark_dirty(surface_);
  // The target's transform, moved by whole pixels: every point lands the same distance from the
  // pixel grid as in the target, so the coverage is the one a fill there would have.
  cairo_t* cr = context_->cairo();
  cairo_identity_matrix(cr);
  cairo_translate(cr, -next_.left_, -next_.top_);
  cairo_scale(cr, target.scale(), target.scale());
  return context_.get();
}

std::shared_ptr<const QnCoverage> QnCoverageMask::take() {
  auto coverage = std::make_shared<QnCoverage>(next_);
  if (next_.width_ == 0) return coverage;  // covers nothing
  cairo_surface_flush(surface_);
  const unsigned char* mask = cairo_image_surface_get_data(surface_);
  int stride = cairo_image_surface_get_stride(surface_);
  int width = next_.width_, height = next_.height_;
  coverage->coverage_.resize(size_t(width) * size_t(height));
  coverage->spans_.resize(2 * size_t(height));
  for (int row = 0; row < height; ++row) {
    const unsigned char* line = mask + row * stride;
    std::memcpy(coverage->coverage_.data() + size_t(row) * size_t(width), line, size_t(width));
    int first = firstCovered(line, width), last = lastCovered(line, first, width);
    coverage->spans_[2 * size_t(row)] = uint16_t(first), coverage->spans_[2 * size_t(row) + 1] = uint16_t(last);
  }
  return coverage;
}

}  // namespace scrivlet
