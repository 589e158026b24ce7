// The signature record and its preparation from the controller's strokes.
#include <gtest/gtest.h>
#include <scrivlet/device.h>
#include <scrivlet/pdf_document.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>

#include <array>
#include <cmath>
#include <limits>

#include "platform/clock.h"
#include "platform/headless/headless_view.h"
#include "platform/image.h"
#include "platform/image_view.h"

namespace scrivlet {
namespace {

constexpr double kFixedUnixTime = 1700000000;  // 2023-11-14 22:13:20 UTC

std::array<double, 4> edges(QnRect r) {
  return {r.origin.x, r.origin.y, r.size.width, r.size.height};
}

QnStrokeRef strokeThrough(std::initializer_list<QnPoint> locations) {
  auto stroke = std::make_shared<QnStroke>();
  for (QnPoint location : locations) {
    QnSignaturePoint p;
    p.location = location;
    p.diameter = 3;
    stroke->push_back(p);
  }
  return stroke;
}

class SignaturePreparation : public ::testing::Test {
 protected:
  void SetUp() override {
    QnClock::setFixedTime(kFixedUnixTime);
    view = HeadlessView::create(makeRect(0, 0, 300, 200));
    c = QnScrivletController::create(view, {}, {});
    c->setCopyOfTargetViewBounds(view->bounds());
    // Points from (10, 10) to (110, 50): a 100 x 40 box.
    strokes = std::make_shared<QnStrokeList>(
        QnStrokeList{strokeThrough({{10, 50}, {35, 10}, {60, 50}, {85, 10}, {110, 50}}),
                     strokeThrough({{20, 30}, {100, 30}})});
    c->setMyBrushStrokes(strokes);
  }
  void TearDown() override {
    QnClock::setFixedTime(std::nullopt);
    QnDevice::resetToDefaults();
  }

  std::shared_ptr<HeadlessView> view;
  std::shared_ptr<QnScrivletController> c;
  QnStrokeListRef strokes;
};

TEST_F(SignaturePreparation, RecordCarriesEveryOutputOfThePreparation) {
  QnDevice::setScreenScale(2);
  c->setExportScale(2);
  c->prepareScrivletData();
  std::shared_ptr<QnSignature> record = c->prepareSignature();
  ASSERT_TRUE(record);

  // The box plus 6 points a side, doubled: 224 x 104 output units from (4, 4).
  EXPECT_EQ(edges(c->lastLocation()), (std::array<double, 4>{4, 4, 224, 104}));
  EXPECT_EQ(edges(record->frame()), edges(c->lastLocation()));
  ASSERT_TRUE(c->lastHash());
  EXPECT_EQ(c->lastHash()->size(), 10u);
  EXPECT_EQ(record->hashString(), c->lastHash());
  // 1700000000 s after 1970 is 721692800 s after 2001.
  EXPECT_EQ(record->timestamp(), 721692800.0);
  EXPECT_EQ(record->rawPoints(), strokes);

  ASSERT_TRUE(record->imageData());
  EXPECT_EQ(record->imageData(), c->imageData());
  ASSERT_TRUE(record->imageView());
  const QnImage& image = record->imageView()->image();
  EXPECT_EQ(image.pixelWidth(), 448);
  EXPECT_EQ(image.pixelHeight(), 208);
  EXPECT_EQ(image.scale(), 2.0);
  EXPECT_EQ(image.size(), (QnSize{224, 104}));

  ASSERT_TRUE(record->pdfData());
  EXPECT_EQ(record->pdfData(), c->pdfData());
  ASSERT_TRUE(record->pdf());
  EXPECT_EQ(record->pdf()->numberOfPages(), 1);
  EXPECT_EQ(record->pdf()->pageSize(0), (QnSize{224, 104}));

  ASSERT_TRUE(record->svgString());
  EXPECT_EQ(record->svgString(), c->svgString());
  EXPECT_EQ(record->svgString()->rfind("<svg ", 0), 0u);
  EXPECT_EQ(record->xmlString(), c->xmlString());
  EXPECT_TRUE(record->xmlString() && !record->xmlString()->empty());
}

TEST_F(SignaturePreparation, SkippedPdfLeavesTheRecordWithoutOneEvenIfTheControllerHasOld) {
  c->prepareScrivletData();
  std::optional<std::vector<uint8_t>> earlier = c->pdfData();
  ASSERT_TRUE(earlier);
  c->setSkipPDFData(true);
  c->setExportScale(2);
  c->prepareScrivletData();
  EXPECT_EQ(c->pdfData(), earlier);
  std::shared_ptr<QnSignature> record = c->prepareSignature();
  EXPECT_FALSE(record->pdfData());
  EXPECT_FALSE(record->pdf());
  EXPECT_TRUE(record->imageData());
  EXPECT_EQ(edges(record->frame()), (std::array<double, 4>{4, 4, 224, 104}));
}

TEST_F(SignaturePreparation, ClippedRecordHoldsCopiesAndEmptiesStrokesOutsideTheView) {
  strokes->push_back(strokeThrough({{320, 40}, {350, 60}}));  // wholly right of the view
  strokes->push_back(strokeThrough({{280, 150}, {310, 160}, {290, 190}}));  // leaves and returns
  c->setClipSignatureToBounds(true);
  c->prepareScrivletData();
  std::shared_ptr<QnSignature> record = c->prepareSignature();
  EXPECT_EQ(edges(record->frame()), (std::array<double, 4>{0, 0, 300, 200}));
  const QnStrokeListRef& raw = record->rawPoints();
  ASSERT_TRUE(raw);
  ASSERT_NE(raw, strokes);
  ASSERT_EQ(raw->size(), 4u);
  for (size_t s = 0; s < 2; ++s) {
    SCOPED_TRACE("stroke " + std::to_string(s));
    ASSERT_NE((*raw)[s], (*strokes)[s]);
    ASSERT_EQ((*raw)[s]->size(), (*strokes)[s]->size());
    for (size_t i = 0; i < (*raw)[s]->size(); ++i)
      EXPECT_EQ((*(*raw)[s])[i].location, (*(*strokes)[s])[i].location);
  }
  EXPECT_TRUE((*raw)[2]->empty());
  ASSERT_EQ((*raw)[3]->size(), 2u);
  EXPECT_EQ((*(*raw)[3])[1].location, (QnPoint{290, 190}));
  EXPECT_EQ((*strokes)[2]->size(), 2u);
}

TEST_F(SignaturePreparation, BadStrokesGiveARecordWithoutThrowing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const QnStrokeListRef lists[] = {
      std::make_shared<QnStrokeList>(),
      std::make_shared<QnStrokeList>(QnStrokeList{std::make_shared<QnStroke>()}),
      std::make_shared<QnStrokeList>(QnStrokeList{strokeThrough({{nan, nan}, {20, 20}})}),
  };
  for (size_t k = 0; k < std::size(lists); ++k) {
    SCOPED_TRACE("list " + std::to_string(k));
    c->setMyBrushStrokes(lists[k]);
    std::shared_ptr<QnSignature> record;
    EXPECT_NO_THROW(c->prepareScrivletData());
    EXPECT_NO_THROW(record = c->prepareSignature());
    EXPECT_TRUE(record);
  }
  // An empty first stroke: the canvas is the next stroke's box with its margin.
  c->setMyBrushStrokes(
      std::make_shared<QnStrokeList>(QnStrokeList{std::make_shared<QnStroke>(), (*strokes)[0]}));
  c->prepareScrivletData();
  EXPECT_EQ(edges(c->prepareSignature()->frame()), (std::array<double, 4>{4, 4, 112, 52}));
}

}  // namespace
}  // namespace scrivlet
