// A PDF page's drawing written straight as content-stream operators, for the many filled and stroked
// shapes of ink: cairo's PDF surface formats and compresses them several times slower.
#pragma once

#include <scrivlet/engine/color.h>

#include <string>
#include <vector>

typedef struct cairo_path cairo_path_t;
typedef struct _cairo_matrix cairo_matrix_t;

namespace scrivlet {

class PdfContentStream {
 public:
  struct LineStyle {
    double width = 2, miterLimit = 10;
    int cap = 0, join = 0;  // PDF's numbering: butt, round, square; miter, round, bevel
  };

  // Coordinates are cairo's device space: points from the page's top-left corner, y down.
  explicit PdfContentStream(double pageHeight);

  // A path in device coordinates, filled in a colour whose alpha already includes the global alpha.
  void fill(const cairo_path_t& path, const QnColor::RGBA& color, bool evenOdd);
  // A path in user coordinates, stroked under the transform from user to device space.
  void stroke(const cairo_path_t& path, const cairo_matrix_t& userToDevice, const LineStyle& style,
              const QnColor::RGBA& color);

  bool empty() const { return text_.empty(); }
  // The operators so far, complete (the page's transform restored at the end), deflated.
  std::string deflated() const;
  // The graphics states the operators name: /sa0 has opacity opacities()[0], and so on.
  const std::vector<double>& opacities() const { return opacities_; }

 private:
  void begin();
  void number(double value, int decimals);
  void point(double x, double y);
  void path(const cairo_path_t& path);
  void color(const QnColor::RGBA& color, const char* op);
  void opacity(double alpha);

  double pageHeight_;
  std::string text_;
  std::vector<double> opacities_;
  double currentOpacity_ = 1;
  QnColor::RGBA currentFill_{0, 0, 0, 1};  // the page's initial fill colour
};

}  // namespace scrivlet
