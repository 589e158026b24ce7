// The view tree painted through cairo straight into a QImage's pixels.
#include "qt_view_painter.h"

#include <scrivlet/engine/view.h>

#include "platform/cairo_context.h"

#include <cairo.h>

namespace scrivlet {

QImage renderViewTree(QnView& view, QRect area, qreal ratio) {
  // Whole device pixels around the area, so that the image lands on the pixel grid.
  QRect pixels = QRectF(QPointF(area.topLeft()) * ratio, QSizeF(area.size()) * ratio).toAlignedRect();
  QImage canvas(pixels.size(), QImage::Format_ARGB32_Premultiplied);
  if (canvas.isNull()) return canvas;
  canvas.fill(Qt::transparent);
  cairo_surface_t* surface = cairo_image_surface_create_for_data(
      canvas.bits(), CAIRO_FORMAT_ARGB32, canvas.width(), canvas.height(), canvas.bytesPerLine());
  cairo_t* cr = cairo_create(surface);
  cairo_translate(cr, -pixels.x(), -pixels.y());
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
