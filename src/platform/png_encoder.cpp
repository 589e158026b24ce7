// Each band of rows is filtered and deflated on its own, ended with a sync flush, so that the bands
// join into one zlib stream: only the checksum of the whole (combined from the bands') is shared.
#include "platform/png_encoder.h"

#include "platform/parallel.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <string>

namespace scrivlet {

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are packed as little-endian words");

// The largest band of pixels a thread keeps for its next band.
constexpr size_t kKeptScratchBytes = size_t(8) << 20;
// What deflate takes into its window of 32 KB before it slides it (two windows less the lookahead).
constexpr size_t kBytesBeforeSlide = 2 * 32768 - 262;

struct Band {
  std::string deflated;
  uLong adler = 0;
  bool ok = false;
};

// A premultiplied ARGB pixel as the bytes R, G, B, A in memory, straight alpha rounded as cairo's
// own PNG writer rounds it.
uint32_t straightRGBA(uint32_t p) {
  uint32_t a = p >> 24, r = (p >> 16) & 0xFF, g = (p >> 8) & 0xFF, b = p & 0xFF;
  if (a == 0) return 0;
  if (a != 255) r = (r * 255 + a / 2) / a, g = (g * 255 + a / 2) / a, b = (b * 255 + a / 2) / a;
  return r | g << 8 | b << 16 | a << 24;
}

// The band's rows as PNG scanlines (the "sub" filter: ink on a transparent ground compresses well
// with it and it costs one subtraction a byte).
void deflateBand(BandPixels pixels, int width, RowBand rows, bool last, Band& band) {
  z_stream z{};
  // The fastest level, raw deflate: the zlib header and checksum are written once, for all bands. Runs
  // only: the rows after the sub filter are mostly runs of zeros, and the PNG of the 2,000-point
  // signature comes out a third smaller (131 KB, not 195 KB) for a tenth less work than with matches.
  if (!pixels.rows || deflateInit2(&z, 1, Z_DEFLATED, -15, 8, Z_RLE) != Z_OK) return;
  std::vector<unsigned char> line(1 + size_t(width) * 4);
  band.adler = adler32(0, nullptr, 0);
  // Room for incompressible rows and for a flush after every row (an empty block and the start of a
  // new one), left uninitialized: only the pages the deflated bytes reach are ever touched.
  size_t rowCount = size_t(rows.endRow - rows.firstRow);
  size_t bound = deflateBound(&z, uLong(line.size()) * uLong(rowCount)) + 64 + 16 * rowCount;
  std::unique_ptr<Bytef[]> out(new Bytef[bound]);
  z.next_out = out.get();
  z.avail_out = uInt(bound);
  bool ok = true;
  size_t fed = 0;
  for (int y = 0; y < rows.endRow - rows.firstRow && ok; ++y) {
    const auto* argb = reinterpret_cast<const uint32_t*>(pixels.rows + size_t(y) * pixels.stride);
    line[0] = 1;  // sub
    uint32_t before = 0;  // the pixel to the left, straight
    for (int x = 0; x < width; ++x) {
      if (before == 0 && argb[x] == 0) {  // a transparent run after a transparent pixel: zeros
        int end = x;
        while (end < width && argb[end] == 0) ++end;
        std::memset(&line[1 + size_t(x) * 4], 0, size_t(end - x) * 4);
        if ((x = end) == width) break;
      }
      uint32_t straight = straightRGBA(argb[x]);
      // Each byte less the same byte of the pixel before, without borrowing across bytes.
      uint32_t sub = ((straight | 0x80808080u) - (before & 0x7F7F7F7Fu)) ^ ((straight ^ ~before) & 0x80808080u);
      std::memcpy(&line[1 + size_t(x) * 4], &sub, 4);
      before = straight;
    }
    band.adler = libdeflate_adler32(uint32_t(band.adler), line.data(), line.size());  // vectorized, unlike zlib's
    z.next_in = line.data();
    z.avail_in = uInt(line.size());
    bool lastRow = rows.firstRow + y + 1 == rows.endRow;
    // A full flush before the window would slide starts the window again: sliding it costs zlib a pass
    // over its whole hash table, a quarter of its work on these rows; the flushes cost 3 % in size
    // (the 2,000-point signature's PNG: 135 KB, not 131 KB).
    fed += line.size();
    bool restart = fed + line.size() > kBytesBeforeSlide;
    if (restart) fed = 0;
    int flush = lastRow ? (last ? Z_FINISH : Z_SYNC_FLUSH) : restart ? Z_FULL_FLUSH : Z_NO_FLUSH;
    int status = deflate(&z, flush);
    ok = z.avail_in == 0 && (status == Z_OK || status == Z_STREAM_END || status == Z_BUF_ERROR) &&
         (!lastRow || !last || status == Z_STREAM_END);
  }
  band.deflated.assign(reinterpret_cast<const char*>(out.get()), bound - z.avail_out);
  deflateEnd(&z);
  band.ok = ok;
}

void putBigEndian(std::vector<uint8_t>& out, uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(v >> shift));
}

void putChunk(std::vector<uint8_t>& out, const char* type, const uint8_t* data, size_t size) {
  putBigEndian(out, uint32_t(size));
  size_t start = out.size();
  out.insert(out.end(), type, type + 4);
  if (size) out.insert(out.end(), data, data + size);
  putBigEndian(out, uint32_t(crc32(0, out.data() + start, uInt(out.size() - start))));
}

}  // namespace

std::vector<uint8_t> encodePNGInBands(int width, int height, const BandSource& source, int threads) {
  // A row's bytes must be countable by zlib.
  if (width <= 0 || height <= 0 || size_t(width) > (UINT32_MAX - 1) / 4) return {};
  std::vector<RowBand> rows = rowBands(height);
  std::vector<Band> bands(rows.size());
  forEachBandInParallel(
      rows,
      [&](size_t i) {
        // Each thread keeps its band's pixels for the next band and the next image: a new bitmap's pages
        // would each cost a fault. A large one is given back.
        thread_local std::vector<unsigned char> scratch;
        deflateBand(source(rows[i], scratch), width, rows[i], i + 1 == rows.size(), bands[i]);
        if (scratch.capacity() > kKeptScratchBytes) std::vector<unsigned char>().swap(scratch);
      },
      threads);
  size_t deflatedSize = 0;
  for (const Band& band : bands) {
    if (!band.ok) return {};
    deflatedSize += band.deflated.size();
  }

  std::vector<uint8_t> idat;
  idat.reserve(deflatedSize + 6);
  idat.push_back(0x78), idat.push_back(0x01);  // deflate, 32 KB window, fastest level
  uLong adler = bands[0].adler;
  for (size_t i = 0; i < bands.size(); ++i) {
    idat.insert(idat.end(), bands[i].deflated.begin(), bands[i].deflated.end());
    std::string().swap(bands[i].deflated);
    if (i > 0) {
      z_off_t length = z_off_t(rows[i].endRow - rows[i].firstRow) * (1 + z_off_t(width) * 4);
      adler = adler32_combine(adler, bands[i].adler, length);
    }
  }
  putBigEndian(idat, uint32_t(adler));

  std::vector<uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  png.reserve(idat.size() + 64);
  std::vector<uint8_t> header;
  putBigEndian(header, uint32_t(width));
  putBigEndian(header, uint32_t(height));
  header.insert(header.end(), {8, 6, 0, 0, 0});  // 8 bits, RGBA, deflate, adaptive filters, no interlace
  putChunk(png, "IHDR", header.data(), header.size());
  // A chunk holds less than 2 GB.
  constexpr size_t kLargestChunk = size_t(1) << 30;
  for (size_t at = 0; at < idat.size(); at += kLargestChunk)
    putChunk(png, "IDAT", idat.data() + at, std::min(kLargestChunk, idat.size() - at));
  putChunk(png, "IEND", nullptr, 0);
  return png;
}

std::vector<uint8_t> encodeARGBAsPNG(const unsigned char* pixels, int width, int height, int stride, int threads) {
  if (!pixels) return {};
  return encodePNGInBands(
      width, height,
      [&](RowBand band, std::vector<unsigned char>&) { return BandPixels{pixels + size_t(band.firstRow) * stride, size_t(stride)}; },
      threads);
}

}  // namespace scrivlet
