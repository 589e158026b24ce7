// A view that shows an image, scaled to fill it or fitted inside it.
#pragma once

#include <scrivlet/engine/view.h>

#include "platform/image.h"

namespace scrivlet {

enum QnViewContentMode { kQnContentModeScaleToFill = 0, kQnContentModeScaleAspectFit = 1 };

class QnImageView : public QnView {
 public:
  // Sized to the image's size in points.
  explicit QnImageView(const QnImage& image);

  const QnImage& image() const { return image_; }
  void setImage(const QnImage& image);
  int contentMode() const { return contentMode_; }
  void setContentMode(int mode) { contentMode_ = mode; }
  // Where the image lands in the bounds under the content mode.
  QnRect imageRect() const;

  void drawRect(CGContext& context, const QnRect& rect) override;

 private:
  QnImage image_;
  int contentMode_ = kQnContentModeScaleToFill;
};

}  // namespace scrivlet
