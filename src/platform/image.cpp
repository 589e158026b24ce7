// Images and bitmap contexts on cairo image surfaces.
#include "platform/image.h"

#include <scrivlet/engine/view.h>

#include "platform/cairo_context.h"
#include "platform/drawing_log.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/parallel.h"
#include "platform/png_encoder.h"

#include <cairo.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace scrivlet {

namespace {

constexpr int kMaxSide = 32767;  // cairo's largest image side
constexpr double kMaxPixels = kMaxSide;
// The most pixels one bitmap may have: 256 MB of premultiplied ARGB. The fuzzing build sets a smaller
// budget, so that its runs stay quick while refusals still happen.
#ifndef SCRIVLET_PIXEL_BUDGET
#define SCRIVLET_PIXEL_BUDGET (64.0 * 1024 * 1024)
#endif
constexpr double kPixelBudget = SCRIVLET_PIXEL_BUDGET;

int pixelCount(double points, double scale) {
  double pixels = points * scale;
  if (!std::isfinite(pixels) || pixels <= 0) return 0;
  return static_cast<int>(std::min(pixels, kMaxPixels));
}

// A bitmap over the budget is refused, with one line on standard error: it is made empty.
cairo_surface_t* createBitmapSurface(QnSize sizeInPoints, double scale) {
  int width = pixelCount(sizeInPoints.width, scale), height = pixelCount(sizeInPoints.height, scale);
  if (double(width) * height > kPixelBudget) {
    logLine(cformat("Scrivlet: a bitmap of %d x %d pixels is over the budget of %.0f megapixels; none is made",
                    width, height, kPixelBudget / (1024 * 1024)));
    width = height = 0;
  }
  return cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
}

// Draws the calls into a band of rows of a bitmap of `width` pixels, in pieces cairo can hold.
BandPixels drawBand(const DrawingLog& log, int width, RowBand band, double scale, std::vector<unsigned char>& scratch) {
  size_t stride = size_t(width) * 4;
  int rows = band.endRow - band.firstRow;
  scratch.assign(stride * rows, 0);
  for (int left = 0; left < width; left += kMaxSide) {
    cairo_surface_t* piece = cairo_image_surface_create_for_data(scratch.data() + size_t(left) * 4, CAIRO_FORMAT_ARGB32,
                                                                 std::min(kMaxSide, width - left), rows, int(stride));
    cairo_t* cr = cairo_create(piece);
    cairo_translate(cr, -left, -band.firstRow);  // whole pixels
    bool scaled = std::isfinite(scale) && scale > 0;
    if (scaled) cairo_scale(cr, scale, scale);
    {
      CairoContext context(cr);
      // What reaches the band's rows, a pixel either side for antialiasing.
      if (scaled)
        log.replay(context, (band.firstRow - 1) / scale, (band.endRow + 1) / scale);
      else
        log.replay(context);
    }
    cairo_destroy(cr);
    cairo_surface_finish(piece);
    bool drawn = cairo_surface_status(piece) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(piece);
    if (!drawn) return {};
  }
  return {scratch.data(), stride};
}

std::shared_ptr<cairo_surface_t> adopt(cairo_surface_t* surface) {
  return std::shared_ptr<cairo_surface_t>(surface, cairo_surface_destroy);
}

struct ReadCursor {
  const std::vector<uint8_t>* bytes;
  size_t offset;
};

cairo_status_t readBytes(void* closure, unsigned char* data, unsigned int length) {
  auto* cursor = static_cast<ReadCursor*>(closure);
  if (cursor->offset + length > cursor->bytes->size()) return CAIRO_STATUS_READ_ERROR;
  std::memcpy(data, cursor->bytes->data() + cursor->offset, length);
  cursor->offset += length;
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

std::vector<uint8_t> drawAsPNG(const DrawingLog& log, QnSize sizeInPoints, double scale, int threads) {
  auto side = [](double pixels) { return std::isfinite(pixels) && pixels > 0 ? std::floor(pixels) : 0.0; };
  double width = side(sizeInPoints.width * scale), height = side(sizeInPoints.height * scale);
  if (width == 0 || height == 0) {
    logLine("Scrivlet: no PNG: the image has no pixels");
    return {};
  }
  // Only one band's pixels need to be held; the rows are counted in whole numbers.
  double bandPixels = width * kBandRows;
  if (bandPixels > kPixelBudget || height > INT32_MAX) {
    logLine(cformat("Scrivlet: no PNG: a bitmap of %.0f x %.0f pixels is over the budget of %.0f megapixels a band",
                    width, height, kPixelBudget / (1024 * 1024)));
    return {};
  }
  // As many bands at once as the budget holds.
  threads = std::clamp(int(kPixelBudget / bandPixels), 1, threads > 0 ? threads : bandThreads());
  std::vector<uint8_t> png = encodePNGInBands(
      int(width), int(height),
      [&](RowBand band, std::vector<unsigned char>& scratch) { return drawBand(log, int(width), band, scale, scratch); },
      threads);
  if (png.empty()) logLine("Scrivlet: no PNG: the image could not be encoded");
  return png;
}

QnImage::QnImage(cairo_surface_t* surface, double scale) : surface_(adopt(surface)), scale_(scale) {}

QnImage QnImage::decodePNG(const std::vector<uint8_t>& bytes, double scale) {
  ReadCursor cursor{&bytes, 0};
  cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(readBytes, &cursor);
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(surface);
    return {};
  }
  return QnImage(surface, scale);
}

std::vector<uint8_t> QnImage::encodePNG() const {
  int width = pixelWidth(), height = pixelHeight();
  if (width == 0 || height == 0) {
    logLine("Scrivlet: no PNG: the image has no pixels");
    return {};
  }
  cairo_surface_flush(surface_.get());
  std::vector<uint8_t> png = encodeARGBAsPNG(cairo_image_surface_get_data(surface_.get()), width, height,
                                             cairo_image_surface_get_stride(surface_.get()));
  if (png.empty()) logLine("Scrivlet: no PNG: the image could not be encoded");
  return png;
}

int QnImage::pixelWidth() const { return surface_ ? cairo_image_surface_get_width(surface_.get()) : 0; }
int QnImage::pixelHeight() const {
  return surface_ ? cairo_image_surface_get_height(surface_.get()) : 0;
}

QnSize QnImage::size() const {
  if (!surface_ || scale_ <= 0) return {};
  return {pixelWidth() / scale_, pixelHeight() / scale_};
}

QnImage::Pixel QnImage::pixelAt(int x, int y) const {
  if (!surface_ || x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight()) return {};
  cairo_surface_flush(surface_.get());
  const unsigned char* row =
      cairo_image_surface_get_data(surface_.get()) + y * cairo_image_surface_get_stride(surface_.get());
  uint32_t argb;
  std::memcpy(&argb, row + 4 * x, 4);
  return {static_cast<uint8_t>(argb >> 16), static_cast<uint8_t>(argb >> 8),
          static_cast<uint8_t>(argb), static_cast<uint8_t>(argb >> 24)};
}

QnBitmapContext::QnBitmapContext(QnSize sizeInPoints, double scale)
    : surface_(createBitmapSurface(sizeInPoints, scale)), scale_(scale) {
  cairo_t* cr = cairo_create(surface_);
  if (std::isfinite(scale) && scale > 0) cairo_scale(cr, scale, scale);
  context_ = std::make_unique<CairoContext>(cr);
  cairo_destroy(cr);
}

QnBitmapContext::~QnBitmapContext() {
  context_.reset();
  cairo_surface_destroy(surface_);
}

CGContext& QnBitmapContext::context() { return *context_; }

void QnBitmapContext::commitPages() {
  unsigned char* bytes = cairo_image_surface_get_data(surface_);
  size_t size = size_t(std::max(0, cairo_image_surface_get_stride(surface_))) *
                size_t(std::max(0, cairo_image_surface_get_height(surface_)));
  if (!bytes || !size) return;
  static const size_t kPage = size_t(sysconf(_SC_PAGESIZE));
  // The whole pages within the pixels (the bytes around them are the allocator's).
  uintptr_t first = (reinterpret_cast<uintptr_t>(bytes) + kPage - 1) / kPage * kPage;
  uintptr_t end = (reinterpret_cast<uintptr_t>(bytes) + size) / kPage * kPage;
  if (end <= first) return;
#ifdef MADV_POPULATE_WRITE
  if (madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE) == 0) return;
#endif
  // Without the call (a kernel before 5.14): a write to each page, of the zero it already holds.
  for (uintptr_t page = first; page < end; page += kPage) *reinterpret_cast<volatile unsigned char*>(page) = 0;
}

QnImage QnBitmapContext::makeImage() const {
  cairo_surface_flush(surface_);
  int w = pixelWidth(), h = pixelHeight();
  cairo_surface_t* copy = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
  cairo_t* cr = cairo_create(copy);
  cairo_set_source_surface(cr, surface_, 0, 0);
  cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
  cairo_paint(cr);
  cairo_destroy(cr);
  return QnImage(copy, scale_);
}

QnImage QnBitmapContext::sharedImage() const {
  cairo_surface_flush(surface_);
  return QnImage(cairo_surface_reference(surface_), scale_);
}

void QnBitmapContext::copyPixelsFrom(const QnBitmapContext& other) {
  if (other.pixelWidth() != pixelWidth() || other.pixelHeight() != pixelHeight()) return;
  cairo_surface_flush(other.surface_);
  cairo_surface_flush(surface_);
  const unsigned char* from = cairo_image_surface_get_data(other.surface_);
  unsigned char* to = cairo_image_surface_get_data(surface_);
  int fromStride = cairo_image_surface_get_stride(other.surface_), toStride = cairo_image_surface_get_stride(surface_);
  if (!from || !to) return;
  for (int y = 0; y < pixelHeight(); ++y)
    std::memcpy(to + size_t(y) * toStride, from + size_t(y) * fromStride, size_t(pixelWidth()) * 4);
  cairo_surface_mark_dirty(surface_);
}

unsigned char* QnBitmapContext::pixels() {
  cairo_surface_flush(surface_);
  return cairo_image_surface_get_data(surface_);
}

int QnBitmapContext::stride() const { return cairo_image_surface_get_stride(surface_); }

void QnBitmapContext::pixelsChanged() { cairo_surface_mark_dirty(surface_); }

bool QnBitmapContext::drawsPlainlyAtItsScale() const {
  cairo_matrix_t m;
  cairo_get_matrix(context_->cairo(), &m);
  return context_->fillsOpaqueColorsAsIs() && m.xx == scale_ && m.yy == scale_ && m.xy == 0 && m.yx == 0 &&
         m.x0 == 0 && m.y0 == 0;
}

int QnBitmapContext::pixelWidth() const { return cairo_image_surface_get_width(surface_); }
int QnBitmapContext::pixelHeight() const { return cairo_image_surface_get_height(surface_); }

}  // namespace scrivlet

namespace scrivlet {

QnImage snapshotOfView(QnView& view, double scale) {
  QnBitmapContext bitmap(view.frame().size, scale);
  view.displayInContext(bitmap.context());
  return bitmap.makeImage();
}

}  // namespace scrivlet
