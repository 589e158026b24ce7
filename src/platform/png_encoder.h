// PNG files from premultiplied ARGB pixels, compressed in horizontal bands on several threads.
#pragma once

#include "platform/parallel.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace scrivlet {

// The pixels of one band's rows (cairo's premultiplied native-endian ARGB32, `stride` bytes a row),
// held in `scratch` or elsewhere; null when they cannot be had.
struct BandPixels {
  const unsigned char* rows = nullptr;
  size_t stride = 0;
};
using BandSource = std::function<BandPixels(RowBand band, std::vector<unsigned char>& scratch)>;

// An RGBA PNG of `width` x `height` pixels whose rows the source gives band by band (rowBands), each
// band asked for once on one of `threads` threads and compressed there, so that only the bands being
// worked on are held. The bytes depend on the pixels alone. Nothing when it cannot be made.
std::vector<uint8_t> encodePNGInBands(int width, int height, const BandSource& source, int threads = bandThreads());

// The same of pixels held whole.
std::vector<uint8_t> encodeARGBAsPNG(const unsigned char* pixels, int width, int height, int stride,
                                     int threads = bandThreads());

}  // namespace scrivlet
