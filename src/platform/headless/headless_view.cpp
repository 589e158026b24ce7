// Headless views.
#include "platform/headless/headless_view.h"

namespace scrivlet {

QnImage HeadlessView::snapshot(double scale) {
  QnBitmapContext bitmap(frame().size, scale);
  displayInContext(bitmap.context());
  return bitmap.makeImage();
}

}  // namespace scrivlet
