// Bold "Helvetica" through cairo's font selection, which asks fontconfig (Nimbus Sans has its metrics).
#include "platform/fonts.h"

#include <cairo-ft.h>
#include <cairo.h>

#include <cmath>

namespace scrivlet {

cairo_font_face_t* boldFontFace() {
  static cairo_font_face_t* const face =
      cairo_toy_font_face_create("Helvetica", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  return face;
}

namespace {

// A scaled font of the face at the size; the caller destroys it.
cairo_scaled_font_t* scaledBoldFont(double fontSize) {
  cairo_matrix_t size, identity;
  cairo_matrix_init_scale(&size, fontSize, fontSize);
  cairo_matrix_init_identity(&identity);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_scaled_font_t* font = cairo_scaled_font_create(boldFontFace(), &size, &identity, options);
  cairo_font_options_destroy(options);
  return font;
}

}  // namespace

QnSize measureBoldText(const std::string& text, double fontSize) {
  if (!std::isfinite(fontSize) || fontSize <= 0) return {};
  cairo_scaled_font_t* font = scaledBoldFont(fontSize);
  cairo_font_extents_t fontExtents;
  cairo_text_extents_t textExtents;
  cairo_scaled_font_extents(font, &fontExtents);
  cairo_scaled_font_text_extents(font, text.c_str(), &textExtents);
  cairo_scaled_font_destroy(font);
  return {textExtents.x_advance, fontExtents.ascent + fontExtents.descent};
}

std::string boldFontFamilyName() {
  cairo_scaled_font_t* font = scaledBoldFont(12);
  std::string family;
  if (cairo_scaled_font_status(font) == CAIRO_STATUS_SUCCESS) {
    FT_Face face = cairo_ft_scaled_font_lock_face(font);
    if (face && face->family_name) family = face->family_name;
    cairo_ft_scaled_font_unlock_face(font);
  }
  cairo_scaled_font_destroy(font);
  return family;
}

}  // namespace scrivlet
