// Test support for outputs: files kept in the test output folder for a look by eye, checked and drawn
// by outside tools (qpdf, xmllint, pdftoppm, rsvg-convert), pixels read back and compared, stored
// files read, and stroke lists made from strokes and traced back to their locations.
#pragma once

#include <scrivlet/signature_point.h>

#include "platform/image.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#ifndef SCRIVLET_TEST_OUTPUT_DIR
#define SCRIVLET_TEST_OUTPUT_DIR "/tmp/scrivlet-test-output"
#endif

namespace scrivlet::test_support {

using Rgba = std::array<int, 4>;  // premultiplied, as stored

inline Rgba rgbaAt(const QnImage& image, int x, int y) {
  QnImage::Pixel p = image.pixelAt(x, y);
  return {p.r, p.g, p.b, p.a};
}

// How many pixels (x, y) of the image the test holds for.
template <typename Test>
int countPixels(const QnImage& image, Test holds) {
  int count = 0;
  for (int y = 0; y < image.pixelHeight(); ++y)
    for (int x = 0; x < image.pixelWidth(); ++x) count += bool(holds(image.pixelAt(x, y), x));
  return count;
}

// Writes the bytes to `name` (folders allowed) in the test output folder; returns the file's path.
template <typename Bytes>
std::string writeOutput(const std::string& name, const Bytes& bytes) {
  std::filesystem::path path = std::filesystem::path(SCRIVLET_TEST_OUTPUT_DIR) / name;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path.string();
}

inline std::vector<uint8_t> readBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}
inline std::string readText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// How many pixels of two images of the same size differ in any channel.
inline int differingPixels(const QnImage& a, const QnImage& b) {
  int count = 0;
  for (int y = 0; y < a.pixelHeight(); ++y)
    for (int x = 0; x < a.pixelWidth(); ++x) count += rgbaAt(a, x, y) != rgbaAt(b, x, y);
  return count;
}

using Path = std::vector<std::pair<double, double>>;
using Trace = std::vector<Path>;

// The locations of every point, stroke by stroke.
inline Trace traceOf(const QnStrokeListRef& strokes) {
  Trace trace;
  for (const QnStrokeRef& stroke : strokes ? *strokes : QnStrokeList{})
    for (trace.emplace_back(); const QnSignaturePoint& p : stroke ? *stroke : QnStroke{})
      trace.back().emplace_back(p.location.x, p.location.y);
  return trace;
}

// A stroke list holding copies of the strokes.
inline QnStrokeListRef strokeList(const std::vector<QnStroke>& strokes) {
  auto list = std::make_shared<QnStrokeList>();
  for (const QnStroke& s : strokes) list->push_back(std::make_shared<QnStroke>(s));
  return list;
}

inline void savePNG(const QnImage& image, const std::string& name) { writeOutput(name, image.encodePNG()); }

// What a shell command prints on its standard output.
inline std::string outputOf(const std::string& command) {
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
    pclose(pipe);
  }
  return output;
}

// Empty when the command succeeds; otherwise all it printed and its exit status.
inline std::string failureOf(const std::string& command) {
  std::string report = outputOf("(" + command + ") 2>&1; echo \"exit $?\"");
  return report.ends_with("exit 0\n") ? "" : report;
}

// Page `page` of a PDF file as pdftoppm draws it at 72 dpi: one pixel a point, y down from the top.
inline QnImage pdfPageImage(const std::string& pdfPath, int page = 1) {
  std::string prefix = pdfPath + "-page" + std::to_string(page), number = std::to_string(page);
  std::string failure = failureOf("pdftoppm -r 72 -f " + number + " -l " + number + " -png -singlefile '" + pdfPath +
                                  "' '" + prefix + "'");
  return failure.empty() ? QnImage::decodePNG(readBytes(prefix + ".png")) : QnImage();
}

// An SVG file as rsvg-convert draws it.
inline QnImage svgImage(const std::string& svgPath) {
  return failureOf("rsvg-convert -o '" + svgPath + ".png' '" + svgPath + "'").empty()
             ? QnImage::decodePNG(readBytes(svgPath + ".png"))
             : QnImage();
}

}  // namespace scrivlet::test_support
