// The vector artwork: the guideline's x-mark and rule, and the padlock of the hash badge.
#pragma once

#include <scrivlet/engine/color.h>
#include <scrivlet/engine/geometry.h>

#include "platform/image.h"

#include <memory>
#include <vector>

namespace scrivlet {

class CGContext;
class QnComboContext;
class QnImageView;

class QnScrivletStyleKit {
 public:
  // The size of the guideline artwork, in points.
  static constexpr QnSize kScrivletXSize{472, 38};

  static void initialize() {}
  // Draws the x-mark and the rule, black, in a 472 x 38 area from the context's origin.
  static void drawScrivlet_x(CGContext& context);
  // The artwork as an image at the screen scale, rendered on the first call and then kept.
  static const QnImage& imageOfScrivlet_x();
  // Fills the padlock glyph (15 x 20) with its top-left corner at the start point.
  static void drawQn_lockWithFillColorStartPoint(CGContext& context, const QnColor& fillColor,
                                                 QnPoint startPoint);
  // Adds the padlock's three subpaths to an SVG or raster surface, in glyph units.
  static void addQn_lockPath(QnComboContext& context);

  // Objects that want the mark's image; each is given it when the list is set.
  const std::vector<std::shared_ptr<QnImageView>>& scrivlet_xTargets() const { return targets_; }
  void setScrivlet_xTargets(std::vector<std::shared_ptr<QnImageView>> targets);

 private:
  std::vector<std::shared_ptr<QnImageView>> targets_;
};

}  // namespace scrivlet
