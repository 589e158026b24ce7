// Reading a PDF's pages and their sizes back from its bytes, on files made by other writers.
#include <scrivlet/pdf_document.h>

#include "output_support.h"

#include <gtest/gtest.h>

namespace scrivlet {
namespace {

const std::string kThreePages = std::string(SCRIVLET_TEST_DATA_DIR) + "/three_pages.pdf";

// three_pages.pdf, written by hand: a media box with its origin off zero and a fractional width, one
// inherited from the page tree, and one of a page rotated by 90 degrees (the box, not the view).
TEST(PDFDocument, PagesAndTheirMediaBoxesAsPDFReadersSeeThem) {
  ASSERT_EQ(test_support::failureOf("qpdf --check '" + kThreePages + "'"), "");
  auto document = QnPDFDocument::createWithData(test_support::readBytes(kThreePages));
  ASSERT_TRUE(document);
  EXPECT_EQ(document->numberOfPages(), 3);
  EXPECT_EQ(document->pageSize(0), (QnSize{100.5, 50}));
  EXPECT_EQ(document->pageSize(1), (QnSize{300, 200}));
  EXPECT_EQ(document->pageSize(2), (QnSize{842, 595}));
  EXPECT_EQ(document->pageSize(3), QnSize{});
  EXPECT_EQ(document->pageSize(-1), QnSize{});
}

TEST(PDFDocument, NothingForBytesThatAreNoReadablePDF) {
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
