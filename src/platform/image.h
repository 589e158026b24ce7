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

// A PNG of the calls drawn as a fresh transparent bitmap of (width * scale) by (height * scale) pixels
// would show them, drawn and compressed band by band (rowBands) on up to `threads` threads: only the
// bands being worked on are held, so that any size whose band fits the pixel budget can be made (one
// line on standard error says why not otherwise). The bytes are the same on any number of threads.
std::vector<uint8_t> drawAsPNG(const DrawingLog& log, QnSize sizeInPoints, double scale, int threads = 0);

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
  // Whether the context draws in points at the bitmap's scale, unmoved, and a fill in an opaque
  // colour reaches the pixels as it is (see CairoContext).
  bool drawsPlainlyAtItsScale() const;
  // Gives every page of the pixels its own memory now. A fresh bitmap's pages are the system's shared
  // page of zeros until written; drawing reads a pixel before writing it, and the write then costs a
  // fault and, in a process with threads, a flush of every core's address cache: some 60 us a sample
  // of live ink while a 2000 x 800 bitmap fills. Committed in one call, they cost under a
  // millisecond, once.
  void commitPages();

 private:
  cairo_surface_t* surface_;
  std::unique_ptr<CairoContext> context_;
  double scale_;
};

// What a view and its subviews would show on a screen of the given scale.
QnImage snapshotOfView(QnView& view, double scale);

}  // namespace scrivlet
