// The signature's PNG decoded for a PDF image XObject: RGB samples and, when any pixel is not opaque,
// alpha samples for its soft mask.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet {

struct SignatureImage {
  uint32_t width = 0, height = 0;
  std::string rgb, alpha;  // alpha empty when every pixel is opaque
};

// Big enough for any signature image, small enough that a hostile PNG header cannot ask for gigabytes.
inline constexpr uint64_t kLargestSignatureImagePixels = uint64_t(1) << 26;

// Nothing, with the reason in *error, when the bytes are not a PNG that decodes whole or it is larger
// than kLargestSignatureImagePixels.
std::optional<SignatureImage> decodeSignaturePng(std::string_view png, std::string* error);

}  // namespace scrivlet
