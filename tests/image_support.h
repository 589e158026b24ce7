// Test support for raster output: pixels read back as arrays, and PNGs kept for a look by eye.
#pragma once

#include "platform/image.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace scrivlet::test_support {

using Rgba = std::array<int, 4>;  // premultiplied, as stored

inline Rgba rgbaAt(const QnImage& image, int x, int y) {
  QnImage::Pixel p = image.pixelAt(x, y);
  return {p.r, p.g, p.b, p.a};
}

// Writes the image as a PNG named `name` into the test output folder.
inline void savePNG(const QnImage& image, const std::string& name) {
  std::filesystem::create_directories(SCRIVLET_TEST_OUTPUT_DIR);
  std::vector<uint8_t> png = image.encodePNG();
  std::ofstream(std::string(SCRIVLET_TEST_OUTPUT_DIR) + "/" + name, std::ios::binary)
      .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
}

}  // namespace scrivlet::test_support
