// PNG files from premultiplied ARGB pixels, compressed in horizontal bands on several threads.
#pragma once

#include <cstdint>
#include <vector>

namespace scrivlet {

// An RGBA PNG of the pixels (cairo's premultiplied native-endian ARGB32, `stride` bytes a row), or
// nothing when it cannot be made. The rows are compressed in `bands` bands, by default one for each
// processor (fewer in a short image).
std::vector<uint8_t> encodeARGBAsPNG(const unsigned char* pixels, int width, int height, int stride, int bands = 0);

}  // namespace scrivlet
