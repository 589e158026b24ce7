// An image laid on a colour: what a format without transparency shows of it.
#pragma once

#include <scrivlet/engine/color.h>

#include "platform/image.h"

namespace scrivlet {

// Paints the colour behind the image's pixels, in place: each pixel as it would show on that colour.
void paintBehindImage(QnImage& image, const QnColor& color);

}  // namespace scrivlet
