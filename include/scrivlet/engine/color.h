// A colour as its components: grey and alpha (2), or red, green, blue and alpha (4).
#pragma once

#include <scrivlet/export.h>

#include <array>
#include <cstddef>
#include <initializer_list>

namespace scrivlet {

class SCRIVLET_EXPORT QnColor {
 public:
  static constexpr size_t maxComponents = 5;

  // Opaque black, the default ink.
  QnColor() : QnColor(0.0, 1.0) {}
  QnColor(double white, double alpha) : components_{white, alpha}, count_(2) {}
  QnColor(double red, double green, double blue, double alpha)
      : components_{red, green, blue, alpha}, count_(4) {}
  // Any number of components up to five; more are dropped.
  static QnColor withComponents(std::initializer_list<double> components);

  static QnColor black() { return QnColor(0.0, 1.0); }
  static QnColor white() { return QnColor(1.0, 1.0); }
  static QnColor clear() { return QnColor(0.0, 0.0); }

  size_t numberOfComponents() const { return count_; }
  double component(size_t i) const { return i < count_ ? components_[i] : 0.0; }

  struct RGBA {
    double r = 0, g = 0, b = 0, a = 0;
  };
  // Grey-and-alpha and RGBA colours as RGBA; any other count gives all zeros.
  RGBA rgba() const;

  friend bool operator==(const QnColor&, const QnColor&) = default;

 private:
  std::array<double, maxComponents> components_{};
  size_t count_ = 0;
};

}  // namespace scrivlet
