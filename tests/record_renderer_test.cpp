// Records drawn from saved strokes: many at once on threads of one process, each as it would be
// alone, and none of them disturbing a signing session on the host's loop.
#include <scrivlet/headless_view.h>
#include <scrivlet/record_renderer.h>
#include <scrivlet/signature_session.h>

#include <scrivlet/engine/device.h>

#include "delegate_log.h"
#include "platform/clock.h"
#include "platform/image_view.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <latch>
#include <thread>

namespace scrivlet {
namespace {

using namespace test_support;

constexpr int kRecords = 8;
constexpr double kDay = 86400;

// A wave of three strokes whose shape and size differ with the seed.
QnStrokeListRef strokesOf(int seed) {
  auto strokes = std::make_shared<QnStrokeList>();
  for (int s = 0; s < 3; ++s) {
    auto stroke = std::make_shared<QnStroke>();
    for (int i = 0; i < 30 + 5 * seed; ++i) {
      QnSignaturePoint p;
      p.location = {10.0 + 3 * i + 25 * s, 40.0 + (10 + seed) * std::sin(0.2 * i + seed + s)};
      p.velocity = {0.2 * std::cos(0.3 * i), 0.1 * std::sin(0.4 * i)};
      p.timestamp = s + 0.01 * i;
      p.pressure = 0.5f;
      p.diameter = 1.0f + 0.25f * float((i + seed) % 12);
      stroke->push_back(p);
    }
    strokes->push_back(stroke);
  }
  return strokes;
}

// Each record prints its own date and hash: a record printing another's would show.
RecordRenderSettings settingsOf(int seed) {
  RecordRenderSettings settings;
  settings.setExportScale(1.5f + 0.25f * float(seed));
  settings.setShowDate(true);
  settings.setDateIncludesTime(true);
  settings.setShowHash(true);
  settings.setHash("record-" + std::to_string(seed));
  settings.setTimestamp(700000000 + seed * kDay);  // seconds since 2001: a different day each
  return settings;
}

// The PDF's bytes but for the second it was written: its creation date and the identifier made with it.
std::string pdfWithoutCreationDate(const std::optional<std::vector<uint8_t>>& pdf) {
  std::string text(pdf ? std::string(pdf->begin(), pdf->end()) : "");
  // cairo writes the date it is given without the "D:" of the PDF format.
  for (const char* key : {"/CreationDate (", "/ID [<"})
    if (size_t at = text.find(key); at != std::string::npos)
      for (size_t i = at + std::strlen(key); i < text.size() && text[i] != ')' && text[i] != ']'; ++i)
        if (std::isxdigit(static_cast<unsigned char>(text[i]))) text[i] = '0';
  return text;
}

void expectSameRecord(const QnSignature& a, const QnSignature& b, int seed) {
  SCOPED_TRACE("record " + std::to_string(seed));
  ASSERT_TRUE(a.imageData() && a.pdfData() && a.svgString() && a.xmlString());
  EXPECT_TRUE(a.imageData() == b.imageData());
  EXPECT_TRUE(pdfWithoutCreationDate(a.pdfData()) == pdfWithoutCreationDate(b.pdfData())) << "the PDFs differ";
  EXPECT_TRUE(a.svgString() == b.svgString()) << "the SVGs differ";
  EXPECT_TRUE(a.xmlString() == b.xmlString()) << "the XML documents differ";
  EXPECT_EQ(a.hashString(), b.hashString());
  EXPECT_EQ(a.frame(), b.frame());
  EXPECT_EQ(a.timestamp(), b.timestamp());
}

TEST(RecordRenderer, EightRecordsDrawnAtOnceOnEightThreadsAreThoseDrawnOneAtATime) {
  std::vector<std::shared_ptr<QnSignature>> alone(kRecords), together(kRecords);
  for (int i = 0; i < kRecords; ++i) alone[i] = renderRecordOfStrokes(strokesOf(i), settingsOf(i));
  std::latch start(kRecords);
  std::vector<std::jthread> threads;
  for (int i = 0; i < kRecords; ++i)
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      together[i] = renderRecordOfStrokes(strokesOf(i), settingsOf(i));
    });
  threads.clear();
  for (int i = 0; i < kRecords; ++i) {
    ASSERT_TRUE(alone[i] && together[i]);
    expectSameRecord(*alone[i], *together[i], i);
    EXPECT_EQ(alone[i]->timestamp(), 700000000 + i * kDay);
    EXPECT_NE(alone[i]->xmlString()->find(utcDateString(700000000 + i * kDay + kReferenceDateOffset,
                                                        "yyyy-MM-dd'T'HH:mm:ss'Z'")),
              std::string::npos);
  }
}

TEST(RecordRenderer, ASessionOnTheHostsLoopAnswersDoneAfterARecordWasDrawn) {
  ManualLoop host;
  constexpr double kHostTime = 1700000000;
  QnClock::setFixedTime(kHostTime);
  ASSERT_TRUE(renderRecordOfStrokes(strokesOf(1), settingsOf(1)));
  EXPECT_EQ(QnClock::now(), kHostTime) << "the host's clock was changed";

  auto view = HeadlessView::create(makeRect(0, 0, 300, 200));
  SignatureSession session(view);
  std::vector<std::shared_ptr<QnSignature>> records;
  session.setOnSignatureReady([&](std::shared_ptr<QnSignature> r) { records.push_back(std::move(r)); });
  touchPaths(*view, {{{20, 20}, {60, 40}, {90, 30}}}, 1);
  session.done();
  for (int i = 0; i < 4 && records.empty(); ++i) host.loop->advance(0.25), host.loop->runUntilIdle();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0]->timestamp(), kHostTime - kReferenceDateOffset);
  QnClock::setFixedTime(std::nullopt);
}

// A record drawn for the device it was signed on (scale 3, 264 pixels an inch): the image is shown at
// that scale, and the time series' resolution is that screen's, 10 / (0.0254 m / 264 * 3) = 34646 a
// point in tenths of a millimetre's units, whatever this machine's scale.
TEST(RecordRenderer, ARecordIsDrawnForTheDeviceItWasSignedOn) {
  RecordRenderSettings settings = settingsOf(0);
  settings.setDevice(CaptureDevice("iPad8,1", 3, 264));
  std::shared_ptr<QnSignature> record = renderRecordOfStrokes(strokesOf(0), settings);
  ASSERT_TRUE(record && record->imageView() && record->xmlString());
  EXPECT_EQ(record->imageView()->image().scale(), 3);
  EXPECT_NE(record->xmlString()->find("<sig:PenTipOrientationChannelDescription><sig:ScalingValue>34646<"), std::string::npos);
  // A scale that is not a positive number is not a device's: this machine's is taken instead.
  settings.setDevice(CaptureDevice("iPad8,1", std::nan(""), 264));
  record = renderRecordOfStrokes(strokesOf(0), settings);
  ASSERT_TRUE(record && record->imageView());
  EXPECT_EQ(record->imageView()->image().scale(), QnDevice::screenScale());
}

}  // namespace
}  // namespace scrivlet
