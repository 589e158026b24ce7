// The PDF context: a one-page document that shows its media box, read back as pixels.
#include "platform/pdf_context.h"

#include "image_support.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace scrivlet {
namespace {

TEST(PDFContext, ThePageShowsTheMediaBoxWhateverItsOrigin) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(30, 40, 200, 100), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  ASSERT_TRUE(pdf.isValid());
  pdf.context().setFillColor(QnColor(0, 1));
  pdf.context().fillRect(makeRect(30, 40, 20, 20));   // the box's top-left corner
  pdf.context().fillRect(makeRect(0, 0, 20, 20));     // outside the box
  pdf.context().fillRect(makeRect(220, 130, 20, 20)); // its bottom-right corner, half outside
  pdf.end();
  const std::string dir = SCRIVLET_TEST_OUTPUT_DIR "/pdf_context";
  std::filesystem::create_directories(dir);
  std::ofstream(dir + "/box.pdf", std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  ASSERT_EQ(std::system(("pdftoppm -r 72 -png -singlefile '" + dir + "/box.pdf' '" + dir + "/box'").c_str()), 0);
  std::ifstream png(dir + "/box.png", std::ios::binary);
  QnImage page = QnImage::decodePNG({std::istreambuf_iterator<char>(png), {}});
  ASSERT_EQ(std::pair(page.pixelWidth(), page.pixelHeight()), std::pair(200, 100));
  auto dark = [&](int x, int y) { return page.pixelAt(x, y).r < 64; };
  EXPECT_TRUE(dark(2, 2) && dark(17, 17) && !dark(23, 23));  // the first square at the page's corner
  EXPECT_TRUE(dark(195, 95) && !dark(185, 85));              // the last one, clipped by the page
  EXPECT_FALSE(dark(100, 50));
}

TEST(PDFContext, AnUnusableBoxGivesAContextThatDrawsNowhere) {
  for (QnRect box : {makeRect(0, 0, 0, 10), makeRect(NAN, 0, 10, 10), makeRect(0, 0, INFINITY, 10)}) {
    std::vector<uint8_t> bytes;
    QnPDFContext pdf(box, [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
    EXPECT_FALSE(pdf.isValid());
    pdf.context().fillRect(makeRect(0, 0, 5, 5));
    pdf.end();
    EXPECT_TRUE(bytes.empty());
  }
}

// A page so large that cairo would fail part way through writing it (found by fuzzing a session at an
// export scale of a million): refused before it is begun, in one line, and no bytes.
TEST(PDFContext, APageTooLargeForCairoIsRefusedInOneLine) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(0, 0, 158e6, 51e6), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  EXPECT_FALSE(pdf.isValid());
  pdf.context().fillRect(makeRect(1e6, 1e6, 5e7, 2e7));
  testing::internal::CaptureStderr();
  pdf.end();
  std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(said, "Scrivlet: no PDF: a page of 1.58e+08 x 5.1e+07 points cannot be made\n");
  EXPECT_TRUE(bytes.empty());
  QnPDFContext largest(makeRect(0, 0, 1e6, 10), [](const uint8_t*, size_t) {});
  EXPECT_TRUE(largest.isValid());
}

}  // namespace
}  // namespace scrivlet
