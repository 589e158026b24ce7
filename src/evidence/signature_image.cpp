// PNG decoding with libpng's simplified API. libpng's 8-bit RGBA output is sRGB, not premultiplied.
#include "evidence/signature_image.h"

#include <png.h>

#include <vector>

namespace scrivlet {

std::optional<SignatureImage> decodeSignaturePng(std::string_view png, std::string* error) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  auto refuse = [&](const std::string& why) {
    if (error) *error = why;
    return std::nullopt;
  };
  if (!png_image_begin_read_from_memory(&image, png.data(), png.size()))
    return refuse(std::string("the image does not decode as PNG: ") + image.message);
  if (uint64_t(image.width) * image.height > kLargestSignatureImagePixels) {
    png_image_free(&image);
    return refuse("the image is too large");
  }
  image.format = PNG_FORMAT_RGBA;
  std::vector<uint8_t> rgba(size_t(image.width) * image.height * 4);
  if (!png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr))  // frees the image on failure too
    return refuse(std::string("the image does not decode as PNG: ") + image.message);
  SignatureImage split{image.width, image.height, {}, {}};
  split.rgb.reserve(rgba.size() / 4 * 3);
  split.alpha.reserve(rgba.size() / 4);
  bool translucent = false;
  for (size_t i = 0; i < rgba.size(); i += 4) {
    split.rgb.append(reinterpret_cast<const char*>(&rgba[i]), 3);
    split.alpha += char(rgba[i + 3]);
    translucent = translucent || rgba[i + 3] != 255;
  }
  if (!translucent) split.alpha.clear();
  return split;
}

}  // namespace scrivlet
