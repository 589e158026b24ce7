// Raster images (premultiplied ARGB pixels with a scale), PNG coding, and bitmap drawing contexts.
#pragma once

#include "platform/cg_context.h"

#include <cstdint>
#include <memory>
#include <vector>

typedef struct _cairo_surface cairo_surface_t;

namespace scrivlet {

class CairoContext;
class DrawingLog;
class QnView;

class QnImage {
 public:
  QnImage() = default;
  // Takes over the reference to an image surface.
  QnImage(cairo_surface_t* surface, double scale);

  // An empty image when the bytes are not a PNG.
  static QnImage decodePNG(const std::vector<uint8_t>& bytes, double scale = 1.0);
  // Empty bytes for an empty image.
  std::vector<uint8_t> encodePNG() const;

  bool isNull() const { return !surface_; }
  int pixelWidth() const;
  int pixelHeight() const;
  double scale() const { return scale_; }
  // The size in points: pixels divided by the scale.
  QnSize size() const;

  struct Pixel {
    uint8_t r = 0, g = 0, b = 0, a = 0;  // premultiplied
  };
  Pixel pixelAt(int x, int y) const;

  cairo_surface_t* surface() const { return surface_.get(); }

 private:
  std::shared_ptr<cairo_surface_t> surface_;
  double scale_ = 1.0;
};

// A transparent bitmap of (width * scale) by (height * scale) pixels whose context draws in points.
class QnBitmapContext {
 public:
  QnBitmapContext(QnSize sizeInPoints, double scale);
  ~QnBitmapContext();
  QnBitmapContext(const QnBitmapContext&) = delete;
  QnBitmapContext& operator=(const QnBitmapContext&) = delete;

  CGContext& context();
  // A snapshot of the pixels as they are now.
  QnImage makeImage() const;
  // An image over the bitmap's own pixels: it changes as the bitmap is drawn into.
  QnImage sharedImage() const;
  int pixelWidth() const;
  int pixelHeight() const;
  double scale() const { return scale_; }
  // Replaces every pixel with the other bitmap's, which must have the same pixel size.
  void copyPixelsFrom(const QnBitmapContext& other);
  // The pixels to read and write directly (premultiplied ARGB, stride() bytes a row; null without
  // pixels); pixelsChanged() once written.
  unsigned char* pixels();
  int stride() const;
  void pixelsChanged();
  // Draws the calls as a fresh context() would, in horizontal bands on one thread each (by default one
  // a processor, fewer in a short bitmap): the same pixels, since each pixel sees the same drawing in
  // the same order.
  void drawInBands(const DrawingLog& log, int bands = 0);

 private:
  cairo_surface_t* surface_;
  std::unique_ptr<CairoContext> context_;
  double scale_;
};

// What a view and its subviews would show on a screen of the given scale.
QnImage snapshotOfView(QnView& view, double scale);

}  // namespace scrivlet
