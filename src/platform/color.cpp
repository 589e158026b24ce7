// Colour components.
#include <scrivlet/engine/color.h>

namespace scrivlet {

QnColor QnColor::withComponents(std::initializer_list<double> components) {
  QnColor color;
  color.components_ = {};
  color.count_ = 0;
  for (double c : components) {
    if (color.count_ == maxComponents) break;
    color.components_[color.count_++] = c;
  }
  return color;
}

QnColor::RGBA QnColor::rgba() const {
  switch (count_) {
    case 2:
      return {components_[0], components_[0], components_[0], components_[1]};
    case 4:
      return {components_[0], components_[1], components_[2], components_[3]};
    default:
      return {};
  }
}

}  // namespace scrivlet
