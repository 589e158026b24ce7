// Images and bitmap contexts on cairo image surfaces.
#include "platform/image.h"

#include <scrivlet/view.h>

#include "platform/cairo_context.h"
#include "platform/drawing_log.h"
#include "platform/format.h"
#include "platform/log.h"
#include "platform/parallel.h"
#include "platform/png_encoder.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace scrivlet {

namespace {

constexpr double kMaxPixels = 32767;  // cairo's largest image side
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

void QnBitmapContext::drawInBands(const DrawingLog& log, int bands) {
  int width = pixelWidth(), height = pixelHeight();
  std::vector<RowBand> rows = rowBands(height, bands);
  if (rows.size() == 1 || width == 0) {
    log.replay(*context_);
    return;
  }
  cairo_surface_flush(surface_);
  unsigned char* pixels = cairo_image_surface_get_data(surface_);
  int stride = cairo_image_surface_get_stride(surface_);
  forEachBandInParallel(rows, [&](size_t i) {
    int top = rows[i].firstRow, bottom = rows[i].endRow;
    cairo_surface_t* band = cairo_image_surface_create_for_data(pixels + size_t(top) * stride, CAIRO_FORMAT_ARGB32,
                                                                width, bottom - top, stride);
    cairo_t* cr = cairo_create(band);
    cairo_translate(cr, 0, -top);  // whole pixels: every shape covers each pixel as it would in one piece
    if (std::isfinite(scale_) && scale_ > 0) cairo_scale(cr, scale_, scale_);
    {
      CairoContext context(cr);
      log.replay(context);
    }
    cairo_destroy(cr);
    cairo_surface_finish(band);
    cairo_surface_destroy(band);
  });
  cairo_surface_mark_dirty(surface_);
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
