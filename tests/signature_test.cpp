// The signature record and its preparation from the controller's strokes.
#include <scrivlet/pdf_document.h>
#include <scrivlet/signature.h>

#include "export_fixture.h"
#include "platform/image_view.h"

namespace scrivlet::export_test {
namespace {

using SignaturePreparation = ControllerTest;

TEST_F(SignaturePreparation, RecordCarriesEveryOutputAndNoPdfWhenSkipped) {
  QnDevice::setScreenScale(2);
  c->setExportScale(2);
  c->prepareScrivletData();
  std::shared_ptr<QnSignature> record = c->prepareSignature();
  ASSERT_TRUE(record && c->lastHash());
  // The 100 x 40 box plus 6 points a side, doubled, from (4, 4).
  EXPECT_EQ(edges(record->frame()), (std::array<double, 4>{4, 4, 224, 104}));
  EXPECT_EQ(edges(record->frame()), edges(c->lastLocation()));
  EXPECT_EQ(record->hashString(), c->lastHash());
  EXPECT_EQ(record->timestamp(), 721692800.0);  // 1700000000 s after 1970 is 721692800 after 2001
  EXPECT_EQ(record->rawPoints(), strokes);
  QnDevice::setScreenScale(3);  // the image view keeps the scale of the moment the PNG was set
  ASSERT_TRUE(record->imageView() && record->imageData() && record->imageData() == c->imageData());
  const QnImage& image = record->imageView()->image();  // 224 x 104 at the screen scale, 2
  EXPECT_EQ((std::array<double, 3>{image.size().width, image.size().height, image.scale()}),
            (std::array<double, 3>{224, 104, 2}));
  ASSERT_TRUE(record->pdf() && record->pdfData() && record->pdfData() == c->pdfData());
  EXPECT_EQ(record->pdf()->numberOfPages(), 1);
  EXPECT_EQ(record->pdf()->pageSize(0), (QnSize{224, 104}));
  EXPECT_TRUE(record->svgString() && record->svgString()->starts_with("<svg ") &&
              record->svgString() == c->svgString() && record->xmlString() == c->xmlString());

  SCOPED_TRACE("skipping the PDF: the controller keeps its old one, the record has none");
  c->setSkipPDFData(true);
  c->setExportScale(1);
  c->prepareScrivletData();
  EXPECT_EQ(c->pdfData(), record->pdfData());
  record = c->prepareSignature();
  EXPECT_TRUE(!record->pdfData() && !record->pdf() && record->imageData());
  EXPECT_EQ(edges(record->frame()), (std::array<double, 4>{4, 4, 112, 52}));

  SCOPED_TRACE("setting no PDF keeps the document of the one set before; a garbage PNG shows nothing");
  QnSignature alone;
  alone.setPdfData(c->pdfData());
  alone.setPdfData(std::nullopt);
  EXPECT_TRUE(!alone.pdfData() && alone.pdf() && alone.pdf()->numberOfPages() == 1);
  alone.setImageData(QnSignature::Bytes{1, 2, 3});
  EXPECT_FALSE(alone.imageView());
}

TEST_F(SignaturePreparation, ClippedRecordHoldsCopiesAndEmptiesStrokesOutsideTheView) {
  strokes->push_back(strokeThrough({{320, 40}, {350, 60}}));                // right of the view
  strokes->push_back(strokeThrough({{280, 150}, {310, 160}, {290, 190}}));  // leaves, returns
  c->setClipSignatureToBounds(true);
  c->prepareScrivletData();
  std::shared_ptr<QnSignature> record = c->prepareSignature();
  EXPECT_EQ(edges(record->frame()), (std::array<double, 4>{0, 0, 300, 200}));
  const QnStrokeListRef& raw = record->rawPoints();
  ASSERT_TRUE(raw && raw != strokes && raw->size() == 4);
  const test_support::Trace drawn = test_support::traceOf(strokes);
  EXPECT_EQ(test_support::traceOf(raw), (test_support::Trace{drawn[0], drawn[1], {}, {{280, 150}, {290, 190}}}));
  for (size_t s = 0; s < 4; ++s) EXPECT_NE((*raw)[s], (*strokes)[s]) << "stroke " << s;
  EXPECT_EQ((*strokes)[2]->size(), 2u);
}

TEST_F(SignaturePreparation, BadStrokesGiveARecordWithoutThrowing) {
  const QnStrokeList lists[] = {{}, {strokeThrough({})}, {strokeThrough({{NAN, NAN}, {20, 20}})},
                                {strokeThrough({}), (*strokes)[0]}};
  for (size_t k = 0; k < std::size(lists); ++k) {
    SCOPED_TRACE("list " + std::to_string(k));
    c->setMyBrushStrokes(std::make_shared<QnStrokeList>(lists[k]));
    EXPECT_NO_THROW({ c->prepareScrivletData(); EXPECT_TRUE(c->prepareSignature()); });
  }
  // The last list's empty first stroke leaves the canvas to the next stroke's box and margin.
  EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, 112, 52}));
}

}  // namespace
}  // namespace scrivlet::export_test
