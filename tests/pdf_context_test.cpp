// The PDF context: a one-page document that shows its media box, read back as pixels; and a PDF's
// pages and their sizes read back from its bytes, on files made by other writers.
#include "platform/pdf_context.h"

#include <scrivlet/pdf_document.h>

#include "output_support.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace scrivlet {
namespace {

// The document, which qpdf must pass, as pdftoppm draws it at 72 dpi: one pixel a point.
QnImage pageOf(const std::vector<uint8_t>& bytes, const std::string& name) {
  std::string path = test_support::writeOutput("pdf_context/" + name + ".pdf", bytes);
  EXPECT_EQ(test_support::failureOf("qpdf --check '" + path + "'"), "") << name;
  return test_support::pdfPageImage(path);
}

TEST(PDFContext, ThePageShowsTheMediaBoxWhateverItsOrigin) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(30, 40, 200, 100), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  ASSERT_TRUE(pdf.isValid());
  pdf.context().setFillColor(QnColor(0, 1));
  pdf.context().fillRect(makeRect(30, 40, 20, 20));   // the box's top-left corner
  pdf.context().fillRect(makeRect(0, 0, 20, 20));     // outside the box
  pdf.context().fillRect(makeRect(220, 130, 20, 20)); // its bottom-right corner, half outside
  pdf.end();
  QnImage page = pageOf(bytes, "box");
  ASSERT_EQ(std::pair(page.pixelWidth(), page.pixelHeight()), std::pair(200, 100));
  auto dark = [&](int x, int y) { return page.pixelAt(x, y).r < 64; };
  EXPECT_TRUE(dark(2, 2) && dark(17, 17) && !dark(23, 23));  // the first square at the page's corner
  EXPECT_TRUE(dark(195, 95) && !dark(185, 85));              // the last one, clipped by the page
  EXPECT_FALSE(dark(100, 50));
}

// A pen wider than 2^22 points (a stylus reporting an absurd force) is written at that width, which
// covers any page, so that no reader has to draw a round cap of a million million points.
TEST(PDFContext, PensWiderThanAnyPageAreWrittenAtTheLargestWidth) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(0, 0, 200, 100), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  CGContext& cg = pdf.context();
  cg.setLineCap(kQnLineCapRound);
  cg.setLineWidth(1e12);
  cg.moveToPoint(100, 50), cg.addLineToPoint(100, 50);
  cg.drawPath(kQnPathStroke);
  cg.setLineWidth(3);  // an ordinary pen keeps its width
  cg.moveToPoint(10, 10), cg.addLineToPoint(20, 10);
  cg.drawPath(kQnPathStroke);
  pdf.end();
  std::string path = test_support::writeOutput("pdf_context/wide_pen.pdf", bytes);
  EXPECT_EQ(test_support::outputOf("qpdf --qdf --object-streams=disable '" + path + "' - | grep -ao '[0-9.]* w '"),
            "4194304 w \n3 w \n");
  QnImage page = pageOf(bytes, "wide_pen");
  ASSERT_EQ(page.pixelWidth(), 200);
  EXPECT_TRUE(page.pixelAt(0, 0).r < 64 && page.pixelAt(199, 99).r < 64);
}

// Shapes are written beneath the page cairo makes until text comes; from then on cairo draws them. The
// page shows both in the order drawn, with their colours, opacities and pens.
TEST(PDFContext, ShapesBeforeAndAfterTextKeepTheirOrderColoursAndPens) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(0, 0, 100, 60), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  CGContext& cg = pdf.context();
  cg.setFillColor(QnColor(1, 0, 0, 1));
  cg.fillRect(makeRect(0, 0, 60, 60));
  cg.setAlpha(0.5);
  cg.setFillColor(QnColor(0, 0, 1, 1));
  cg.beginPath();  // a path this time, filled even-odd: a square with a square hole
  for (QnRect r : {makeRect(40, 0, 40, 40), makeRect(50, 10, 10, 10)}) {
    cg.moveToPoint(r.origin.x, r.origin.y);
    cg.addLineToPoint(r.origin.x + r.size.width, r.origin.y);
    cg.addLineToPoint(r.origin.x + r.size.width, r.origin.y + r.size.height);
    cg.addLineToPoint(r.origin.x, r.origin.y + r.size.height);
    cg.closePath();
  }
  cg.drawPath(kQnPathEOFill);
  cg.setAlpha(1);
  cg.saveGState();
  cg.scaleCTM(2, 2);  // a 5-point pen at twice the size: 10 points across
  cg.setStrokeColor(QnColor(0, 0.5, 0, 1));
  cg.setLineWidth(5);
  cg.setLineCap(kQnLineCapButt);
  cg.beginPath();
  cg.moveToPoint(42, 25);
  cg.addLineToPoint(48, 25);
  cg.drawPath(kQnPathStroke);
  cg.restoreGState();
  cg.showText("Hi", {70, 42}, 12, QnColor::black());
  cg.setFillColor(QnColor(1, 1, 0, 1));
  cg.fillRect(makeRect(0, 0, 20, 20));  // after the text: over the red square
  pdf.end();
  QnImage page = pageOf(bytes, "order");
  ASSERT_EQ(std::pair(page.pixelWidth(), page.pixelHeight()), std::pair(100, 60));
  auto near = [&](int x, int y, int r, int g, int b) {
    QnImage::Pixel p = page.pixelAt(x, y);
    return std::abs(p.r - r) <= 3 && std::abs(p.g - g) <= 3 && std::abs(p.b - b) <= 3;
  };
  EXPECT_TRUE(near(30, 30, 255, 0, 0));    // red alone
  EXPECT_TRUE(near(45, 5, 128, 0, 128));   // half blue over red
  EXPECT_TRUE(near(70, 5, 128, 128, 255)); // half blue over the white page
  EXPECT_TRUE(near(55, 15, 255, 0, 0));    // the hole: red alone
  EXPECT_TRUE(near(70, 15, 128, 128, 255));// the hole ends at 60
  EXPECT_TRUE(near(90, 50, 0, 128, 0) && near(90, 46, 0, 128, 0) && near(90, 54, 0, 128, 0));
  EXPECT_TRUE(near(90, 43, 255, 255, 255) && near(90, 57, 255, 255, 255));
  EXPECT_TRUE(near(5, 5, 255, 255, 0));    // drawn last, on top
  bool textShown = false;
  for (int y = 42; y < 60; ++y)
    for (int x = 70; x < 85; ++x) textShown = textShown || near(x, y, 0, 0, 0);
  EXPECT_TRUE(textShown);
}

// Components out of range are taken within it, and one that is not a number as 0: the page stays a
// valid document whatever colour a host sets.
TEST(PDFContext, ColoursOutOfRangeOrNotNumbersAreTakenWithinRange) {
  std::vector<uint8_t> bytes;
  QnPDFContext pdf(makeRect(0, 0, 40, 20), [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
  pdf.context().setFillColor(QnColor(1.5, NAN, -0.5, 1));
  pdf.context().fillRect(makeRect(0, 0, 20, 20));
  pdf.context().setFillColor(QnColor(0, 0, 1, NAN));  // no opacity: not seen
  pdf.context().fillRect(makeRect(10, 0, 20, 20));
  pdf.context().setAlpha(INFINITY);  // taken as 1
  pdf.context().setFillColor(QnColor(0, 1e300, 0, 1));
  pdf.context().fillRect(makeRect(30, 0, 10, 20));
  pdf.end();
  QnImage page = pageOf(bytes, "colours");
  auto rgb = [&](int x, int y) {
    QnImage::Pixel p = page.pixelAt(x, y);
    return std::array<int, 3>{p.r, p.g, p.b};
  };
  EXPECT_EQ(rgb(5, 10), (std::array<int, 3>{255, 0, 0}));
  EXPECT_EQ(rgb(15, 10), (std::array<int, 3>{255, 0, 0}));
  EXPECT_EQ(rgb(25, 10), (std::array<int, 3>{255, 255, 255}));  // an opacity not a number: 0
  EXPECT_EQ(rgb(35, 10), (std::array<int, 3>{0, 255, 0}));
}

// A page so large that cairo would fail part way through writing it (found by fuzzing a session at an
// export scale of a million), and boxes of no size or not finite: refused before they are begun, in one
// line, and no bytes.
TEST(PDFContext, APageTooLargeForCairoOrOfNoSizeIsRefusedInOneLine) {
  for (QnRect box : {makeRect(0, 0, 158e6, 51e6), makeRect(0, 0, 0, 10), makeRect(NAN, 0, 10, 10),
                     makeRect(0, 0, INFINITY, 10)}) {
    std::vector<uint8_t> bytes;
    QnPDFContext pdf(box, [&](const uint8_t* b, size_t n) { bytes.insert(bytes.end(), b, b + n); });
    EXPECT_FALSE(pdf.isValid());
    pdf.context().fillRect(makeRect(1e6, 1e6, 5e7, 2e7));
    testing::internal::CaptureStderr();
    pdf.end();
    std::string said = testing::internal::GetCapturedStderr();
    if (box.size.width == 158e6) {
      EXPECT_EQ(said, "Scrivlet: no PDF: a page of 1.58e+08 x 5.1e+07 points cannot be made\n");
    }
    EXPECT_TRUE(said.starts_with("Scrivlet: no PDF: a page of ") && said.ends_with(" points cannot be made\n") &&
                std::count(said.begin(), said.end(), '\n') == 1)
        << said;
    EXPECT_TRUE(bytes.empty());
  }
  QnPDFContext largest(makeRect(0, 0, 1e6, 10), [](const uint8_t*, size_t) {});
  EXPECT_TRUE(largest.isValid());
}

const std::string kThreePages = std::string(SCRIVLET_TEST_DATA_DIR) + "/three_pages.pdf";

// three_pages.pdf, written by hand: a media box with its origin off zero and a fractional width, one
// inherited from the page tree, and one of a page rotated by 90 degrees (the box, not the view).
TEST(PDFDocument, PagesAndTheirMediaBoxesAsPDFReadersSeeThemAndNothingForBytesThatAreNoPDF) {
  ASSERT_EQ(test_support::failureOf("qpdf --check '" + kThreePages + "'"), "");
  auto document = QnPDFDocument::createWithData(test_support::readBytes(kThreePages));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->numberOfPages(), 3);
  EXPECT_EQ(document->pageSize(0), (QnSize{100.5, 50}));
  EXPECT_EQ(document->pageSize(1), (QnSize{300, 200}));
  EXPECT_EQ(document->pageSize(2), (QnSize{842, 595}));
  EXPECT_EQ(document->pageSize(3), QnSize{});
  EXPECT_EQ(document->pageSize(-1), QnSize{});
  // Bytes that are no readable PDF give nothing.
  EXPECT_FALSE(QnPDFDocument::createWithData({}));
  const std::string text = "not a PDF at all";
  EXPECT_FALSE(QnPDFDocument::createWithData(std::vector<uint8_t>(text.begin(), text.end())));
  // Locked with a password to open it: nothing. Locked only against changes: read as any reader does.
  const std::string out = SCRIVLET_TEST_OUTPUT_DIR;
  ASSERT_EQ(test_support::failureOf("mkdir -p '" + out + "' && qpdf --encrypt secret owner 256 -- '" + kThreePages +
                                    "' '" + out + "/locked.pdf' && qpdf --encrypt '' owner 256 -- '" + kThreePages +
                                    "' '" + out + "/owner_only.pdf'"),
            "");
  EXPECT_FALSE(QnPDFDocument::createWithData(test_support::readBytes(out + "/locked.pdf")));
  auto ownerOnly = QnPDFDocument::createWithData(test_support::readBytes(out + "/owner_only.pdf"));
  ASSERT_TRUE(ownerOnly);
  EXPECT_EQ(ownerOnly->pageSize(1), (QnSize{300, 200}));
}

}  // namespace
}  // namespace scrivlet
