// The time series read back: a signature's document drawn again as it was signed, and documents that
// cannot be read in full refused.
#include <scrivlet/headless.h>
#include <scrivlet/record_renderer.h>
#include <scrivlet/signature_session.h>
#include <scrivlet/time_series_import.h>

#include "delegate_log.h"
#include "export_fixture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace export_test;
using test_support::ManualLoop;

class TimeSeriesDocument : public ControllerTest {};

// A signature signed with a finger, or a stylus pressing between 0.2 and 0.9 of its force, through
// a session on the current device: loops that speed up and slow down, 8 ms apart, on whole points.
std::shared_ptr<QnSignature> sign(bool stylus) {
  constexpr int kSteps = 60;
  ManualLoop manual;
  auto view = HeadlessView::create(makeRect(0, 0, 400, 200));
  SignatureSession session(view);
  std::shared_ptr<QnSignature> record;
  session.setOnSignatureReady([&record](auto r) { record = r; });
  double t = 10;
  for (int s = 0; s < 3; ++s, t += 0.8) {
    auto touch = std::make_shared<HeadlessTouch>(QnPoint{40.0 + 110 * s, 100}, t, stylus ? kQnTouchTypeStylus : kQnTouchTypeDirect);
    for (int i = 0; i <= kSteps; ++i) {
      double u = double(i) / kSteps, speed = u * u * (3 - 2 * u);  // slow, fast, slow
      if (stylus) touch->setForce(0.2 + 0.7 * std::sin(u * M_PI), 1);
      if (i > 0) touch->moveTo({std::round(40 + 110 * s + 80 * speed + 20 * std::sin(speed * 6 * M_PI)),
                                std::round(100 - 50 * std::sin(speed * 4 * M_PI + s))}, t + 0.008 * i);
      QnTouchSet fingers{touch};
      view->deliverTouches(i == 0 ? QnTouchPhase::began : i == kSteps ? QnTouchPhase::ended : QnTouchPhase::moved,
                           fingers, QnEvent(fingers));
    }
  }
  session.done();
  manual.loop->advance(0.25), manual.loop->runUntilIdle();
  return record;
}

// The strokes as a record, drawn in full by the renderer.
QnImage drawn(const QnStrokeListRef& strokes) {
  std::shared_ptr<QnSignature> record = renderRecordOfStrokes(strokes, {});
  return record && record->imageData() ? QnImage::decodePNG(*record->imageData()) : QnImage();
}

// A signature's time series read back draws what was signed: the same pixels from a finger, whose
// samples the channels keep exactly here (positions on whole points, steps of 8 ms, no force). With a
// stylus the force is kept to 1/1961, which moves a diameter by at most 0.0008 points; where that
// changes how cairo cuts an edge into pieces, a pixel's coverage moves by a few percent: at most 12
// levels of 255, in fewer than 1% of the inked pixels.
TEST(TimeSeriesImport, ASignatureReadBackDrawsAsItWasSigned) {
  for (bool stylus : {false, true}) {
    SCOPED_TRACE(stylus ? "stylus" : "finger");
    std::shared_ptr<QnSignature> signedRecord = sign(stylus);
    ASSERT_TRUE(signedRecord && signedRecord->xmlString() && signedRecord->imageData());
    QnStrokeListRef back = strokesFromTimeSeriesXml(*signedRecord->xmlString()).value_or(nullptr);
    ASSERT_TRUE(back);
    const QnStrokeList& was = *signedRecord->rawPoints();
    ASSERT_EQ(back->size(), was.size());
    float widest = 0;
    for (size_t s = 0; s < was.size(); ++s) {
      ASSERT_EQ(back->at(s)->size(), was[s]->size());
      for (size_t i = 0; i < was[s]->size(); ++i) {
        const QnSignaturePoint &a = was[s]->at(i), &b = back->at(s)->at(i);
        widest = std::max(widest, std::fabs(a.diameter - b.diameter));
        EXPECT_NEAR(b.velocity.x, a.velocity.x, 1e-5 * std::fabs(a.velocity.x) + 1e-12);
        EXPECT_EQ(b.id, a.id);
      }
    }
    EXPECT_LE(widest, stylus ? 0.0008f : 0.0f);
    const QnImage before = QnImage::decodePNG(*signedRecord->imageData()), after = drawn(back);
    test_support::savePNG(before, std::string("time_series/signed_") + (stylus ? "stylus" : "finger") + ".png");
    test_support::savePNG(after, std::string("time_series/read_back_") + (stylus ? "stylus" : "finger") + ".png");
    ASSERT_EQ(std::pair(after.pixelWidth(), after.pixelHeight()), std::pair(before.pixelWidth(), before.pixelHeight()));
    int largest = 0, moved = 0, ink = 0;
    for (int y = 0; y < before.pixelHeight(); ++y)
      for (int x = 0; x < before.pixelWidth(); ++x) {
        int d = std::abs(before.pixelAt(x, y).a - after.pixelAt(x, y).a);
        largest = std::max(largest, d), moved += d > 0, ink += before.pixelAt(x, y).a > 0;
      }
    EXPECT_GT(ink, 2000);
    EXPECT_TRUE(largest <= (stylus ? 12 : 0) && moved <= ink / 100) << largest << ": " << moved << " pixels moved of " << ink;
  }
}

// A pad's document stored by an earlier build, which every later build reads the same: a stylus, two
// strokes of 17 samples 8 ms apart, the second after a pause of 672 ms, at 157874 tenths of a point a
// metre. The values are worked out from its channels and the pen's rules, in single precision.
TEST(TimeSeriesImport, AStoredPadSignatureReadsAsSigned) {
  const std::string stored = test_support::readText(SCRIVLET_TEST_DATA_DIR "/time_series_pad_signature.xml");
  QnStrokeListRef strokes = strokesFromTimeSeriesXml(stored).value_or(nullptr);
  ASSERT_TRUE(strokes && strokes->size() == 2);
  const QnStroke &first = *strokes->at(0), &second = *strokes->at(1);
  ASSERT_EQ(std::pair(first.size(), second.size()), std::pair(size_t(17), size_t(17)));
  // Y runs down from the highest sample, 980: the first sample, (0, 480), lies at (0, 50). At rest, its
  // diameter is (3P + 4 + 2 x 2.6666667) / 3 with P = 392 / 1961.33 = 0.19986437.
  EXPECT_EQ(std::tuple(first[0].location, first[0].timestamp, first[0].id, first[0].diameter),
            std::tuple(QnPoint{0, 50}, 0.0, uint64_t(100), 3.3109753f));
  // The next, (50, 550), 8 ms on: (5, -7) points in 8 ms at 10/157874 m a point is (0.0395885,
  // -0.0554239) m/s, 0.7168604 of full speed (0.0950125 m/s). With P = 660 / 1961.33 = 0.3365063 the
  // target 5.0095191 loses 0.85 x 0.7168604 of 4.5047595: 2.2646332, and (2.2646332 + 2 x 3.3109753) / 3.
  EXPECT_EQ(first[1].location, (QnPoint{5, 43}));
  EXPECT_NEAR(first[1].velocity.x, 0.0395885, 1e-7);
  EXPECT_NEAR(first[1].velocity.y, -0.0554239, 1e-7);
  EXPECT_EQ(first[1].diameter, 2.9621928f);
  // The end takes the velocity before it; the second stroke begins at rest at 16 x 8 + 672 ms, its
  // diameter blended with the first stroke's last one.
  EXPECT_EQ(first[16].velocity, first[15].velocity);
  const float p = second[0].pressure;
  EXPECT_EQ(std::tuple(second[0].timestamp, second[0].velocity, second[0].id), std::tuple(0.8, QnPoint{0, 0}, uint64_t(117)));
  EXPECT_EQ(second[0].diameter, (p * 3.0f + 4.0f + (first[16].diameter + first[16].diameter)) / 3.0f);
  std::shared_ptr<QnSignature> record = renderRecordOfStrokes(strokes, {});
  ASSERT_TRUE(record && record->imageData());
  const QnImage image = QnImage::decodePNG(*record->imageData());
  test_support::savePNG(image, "time_series/stored_pad_signature.png");
  EXPECT_GT(test_support::countPixels(image, [](QnImage::Pixel p, int) { return p.a > 128; }), 800);
}

// Nothing is read in part: a second signature, something in the sample list or in a sample that is
// not read, a channel out of its range or given twice, are refused as a whole.
TEST_F(TimeSeriesDocument, DocumentsThatCannotBeReadInFullAreRefusedWithAReason) {
  c->setMyBrushStrokes(strokesSpanning(10, 10, 40, 20));
  const std::string good = c->createXmlString();
  ASSERT_TRUE(strokesFromTimeSeriesXml(good));
  auto replaced = [&good](const std::string& what, const std::string& with) {
    std::string text = good;
    return text.replace(text.find(what), what.size(), with);
  };
  const size_t from = good.find("<sig:Representation>"), to = good.find("</sig:RepresentationList>");
  const std::string twoSignatures = std::string(good).insert(to, good.substr(from, to - from));
  for (const std::string& bad :
       {std::string(""), std::string("not xml"), good.substr(0, good.size() / 2), std::string("<svg></svg>"),
        replaced("<sig:SamplePointList>", "<sig:OtherList>"), replaced("<cmn:X>", "<cmn:W>"),
        replaced("<sig:DTChannel>", "<sig:DTChannel>99999999999"), replaced("<cmn:Y>", "<cmn:Y>NaN"),
        replaced("<sig:FChannel>", "<sig:FChannel>x"), twoSignatures,
        replaced("<sig:SamplePoint>", "<sig:Comment>pen up</sig:Comment><sig:SamplePoint>"),
        replaced("<sig:SamplePoint>", "pen up<sig:SamplePoint>"),
        replaced("<sig:DTChannel>", "<sig:TiltChannel>4</sig:TiltChannel><sig:DTChannel>"),
        replaced("<cmn:X>", "<cmn:X>7</cmn:X><cmn:X>"), replaced("<cmn:Z>0", "<cmn:Z>12"),
        replaced("<sig:FChannel>", "<sig:FChannel><sig:Newton/>")}) {
    Error error = strokesFromTimeSeriesXml(bad).error();
    EXPECT_NE(error.code(), ErrorCode::None) << bad.substr(0, 80);
    EXPECT_FALSE(error.message().empty() || error.message().find('\n') != std::string::npos) << error.message();
  }
  EXPECT_EQ(strokesFromTimeSeriesXml("").error().code(), ErrorCode::NotXml);
  EXPECT_EQ(strokesFromTimeSeriesXml(good.substr(0, good.size() / 2)).error().code(), ErrorCode::NotXml);
  EXPECT_EQ(strokesFromTimeSeriesXml("<svg></svg>").error().code(), ErrorCode::NotThisFormat);
  Error error = strokesFromTimeSeriesXml(twoSignatures).error();
  EXPECT_EQ(error.code(), ErrorCode::Malformed);
  EXPECT_EQ(error.message(), "more than one representation, where one signature is read");
  EXPECT_EQ(strokesFromTimeSeriesXml(replaced("<cmn:Z>0", "<cmn:Z>12")).error().code(), ErrorCode::Malformed);
}

}  // namespace
}  // namespace scrivlet
