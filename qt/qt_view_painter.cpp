// The view tree painted through cairo straight into a QImage's pixels.
#include "qt_view_painter.h"

#include <scrivlet/view.h>

#include "platform/cairo_context.h"

#include <cairo.h>

namespace scrivlet {

QImage renderViewTree(QnView& view, QSize size, qreal ratio) {
  QImage canvas((QSizeF(size) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  canvas.fill(Qt::transparent);
  cairo_surface_t* surface = cairo_image_surface_create_for_data(
      canvas.bits(), CAIRO_FORMAT_ARGB32, canvas.width(), canvas.height(), canvas.bytesPerLine());
  cairo_t* cr = cairo_create(surface);
  cairo_scale(cr, ratio, ratio);
  {
    CairoContext context(cr);
    view.displayInContext(context);
  }
  cairo_destroy(cr);
  cairo_surface_finish(surface);
  cairo_surface_destroy(surface);
  canvas.setDevicePixelRatio(ratio);
  return canvas;
}

}  // namespace scrivlet
