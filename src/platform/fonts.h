// The bold "Helvetica" face (through fontconfig) that dates and hashes are drawn and measured in.
#pragma once

#include <scrivlet/engine/geometry.h>

#include <string>

typedef struct _cairo_font_face cairo_font_face_t;

namespace scrivlet {

// The width of the text's advance and the height of its line at the given size, in points.
QnSize measureBoldText(const std::string& text, double fontSize);

// The family fontconfig resolved "Helvetica" bold to, such as "Nimbus Sans".
std::string boldFontFamilyName();

// The shared cairo face, made once per process.
cairo_font_face_t* boldFontFace();

}  // namespace scrivlet
