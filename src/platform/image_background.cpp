// A colour painted behind an image with cairo.
#include "platform/image_background.h"

#include <cairo.h>

namespace scrivlet {

void paintBehindImage(QnImage& image, const QnColor& color) {
  if (image.isNull()) return;
  cairo_t* cr = cairo_create(image.surface());
  QnColor::RGBA c = color.rgba();
  cairo_set_operator(cr, CAIRO_OPERATOR_DEST_OVER);
  cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(image.surface());
}

}  // namespace scrivlet
