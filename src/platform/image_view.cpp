// Image views.
#include "platform/image_view.h"

#include "platform/cg_context.h"

#include <algorithm>

namespace scrivlet {

QnImageView::QnImageView(const QnImage& image) : QnView({{0, 0}, image.size()}), image_(image) {}

void QnImageView::setImage(const QnImage& image) {
  image_ = image;
  setNeedsDisplay();
}

QnRect QnImageView::imageRect() const {
  QnRect area = bounds();
  QnSize size = image_.size();
  if (contentMode_ != kQnContentModeScaleAspectFit || size.width <= 0 || size.height <= 0)
    return area;
  double fit = std::min(area.size.width / size.width, area.size.height / size.height);
  QnSize fitted{size.width * fit, size.height * fit};
  return {{(area.size.width - fitted.width) / 2, (area.size.height - fitted.height) / 2}, fitted};
}

void QnImageView::drawRect(CGContext& context, const QnRect&) {
  if (!image_.isNull()) context.drawImage(image_, imageRect());
}

}  // namespace scrivlet
