// Content-stream operators for filled and stroked paths, numbers as cairo's PDF writer rounds them.
#include "platform/pdf_content_stream.h"

#include "platform/format.h"

#include <cairo.h>
#include <libdeflate.h>

#include <algorithm>
#include <cmath>

namespace scrivlet {

namespace {

// A colour component or an opacity as cairo takes it: within 0 to 1, and 0 when it is not a number.
double unit(double value) { return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0); }

QnColor::RGBA inUnitRange(const QnColor::RGBA& c) { return {unit(c.r), unit(c.g), unit(c.b), unit(c.a)}; }

}  // namespace

PdfContentStream::PdfContentStream(double pageHeight) : pageHeight_(pageHeight) {}

void PdfContentStream::number(double value, int decimals) {
  char buffer[400];  // the largest double has 309 digits before the point
  char* end = toCharsFixed(buffer, buffer + sizeof buffer, value, decimals);
  if (!end) {
    text_ += "0 ";
    return;
  }
  // Trailing zeros and a bare point go; what is left of a negative zero is written 0.
  if (std::find(buffer, end, '.') != end) {
    while (end[-1] == '0') --end;
    if (end[-1] == '.') --end;
  }
  std::string_view digits(buffer, end - buffer);
  if (digits == "-0") digits = "0";
  text_ += digits;
  text_ += ' ';
}

void PdfContentStream::point(double x, double y) {
  number(x, 3);
  number(y, 3);
}

void PdfContentStream::path(const cairo_path_t& path) {
  for (int i = 0; i < path.num_data; i += path.data[i].header.length) {
    const cairo_path_data_t* p = &path.data[i];
    switch (p->header.type) {
      case CAIRO_PATH_MOVE_TO: point(p[1].point.x, p[1].point.y), text_ += "m "; break;
      case CAIRO_PATH_LINE_TO: point(p[1].point.x, p[1].point.y), text_ += "l "; break;
      case CAIRO_PATH_CURVE_TO:
        point(p[1].point.x, p[1].point.y), point(p[2].point.x, p[2].point.y);
        point(p[3].point.x, p[3].point.y), text_ += "c ";
        break;
      case CAIRO_PATH_CLOSE_PATH: text_ += "h "; break;
    }
  }
}

void PdfContentStream::color(const QnColor::RGBA& c, const char* op) {
  number(c.r, 6), number(c.g, 6), number(c.b, 6);
  text_ += op;
  text_ += ' ';
}

void PdfContentStream::opacity(double alpha) {
  if (alpha == currentOpacity_) return;
  auto known = std::find(opacities_.begin(), opacities_.end(), alpha);
  if (known == opacities_.end()) known = opacities_.insert(known, alpha);
  text_ += "/sa" + std::to_string(known - opacities_.begin()) + " gs ";
  currentOpacity_ = alpha;
}

void PdfContentStream::begin() {
  if (!text_.empty()) return;
  // From the page's own space, origin at the bottom left and y up, to the device space.
  text_ += "q 1 0 0 -1 0 ";
  number(pageHeight_, 6);
  text_ += "cm\n";
}

void PdfContentStream::fill(const cairo_path_t& shape, const QnColor::RGBA& given, bool evenOdd) {
  if (shape.num_data == 0) return;
  begin();
  QnColor::RGBA c = inUnitRange(given);
  opacity(c.a);
  if (c.r != currentFill_.r || c.g != currentFill_.g || c.b != currentFill_.b) {
    color(c, "rg");
    currentFill_ = c;
  }
  path(shape);
  text_ += evenOdd ? "f*\n" : "f\n";
}

void PdfContentStream::stroke(const cairo_path_t& shape, const cairo_matrix_t& m, const LineStyle& style,
                              const QnColor::RGBA& given) {
  if (shape.num_data == 0) return;
  QnColor::RGBA c = inUnitRange(given);
  begin();
  // The pen is drawn in user space, so that a scaled or skewed transform shapes it as it does on screen.
  text_ += "q ";
  for (double v : {m.xx, m.yx, m.xy, m.yy, m.x0, m.y0}) number(v, 6);
  text_ += "cm ";
  double outerOpacity = currentOpacity_;
  opacity(c.a);
  color(c, "RG");
  number(style.width, 6);
  text_ += "w " + std::to_string(style.cap) + " J " + std::to_string(style.join) + " j ";
  number(style.miterLimit, 6);
  text_ += "M ";
  path(shape);
  text_ += "S Q\n";
  currentOpacity_ = outerOpacity;
}

std::string PdfContentStream::deflated() const {
  if (text_.empty()) return {};
  std::string complete = text_ + "Q\n";
  // libdeflate's fastest level: zlib's fastest takes more than twice as long, for a stream 7 % larger.
  libdeflate_compressor* compressor = libdeflate_alloc_compressor(1);
  if (!compressor) return {};
  std::string out(libdeflate_zlib_compress_bound(compressor, complete.size()), '\0');
  size_t size = libdeflate_zlib_compress(compressor, complete.data(), complete.size(), out.data(), out.size());
  libdeflate_free_compressor(compressor);
  out.resize(size);  // none when it did not fit, which the bound rules out
  return out;
}

}  // namespace scrivlet
