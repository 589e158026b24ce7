// The signature pad on the offscreen platform: Done delivering exactly the canvas after an undo, with
// the settings as they are at Done. (Settings: pad_settings_test.cpp; loading: pad_features_test.cpp.)
#include <scrivlet/signature_pad.h>

#include "qt_input.h"

#include <QSignalSpy>

namespace scrivlet {
namespace {

using namespace qt_test;

class Pad : public ::testing::Test {
 protected:
  void SetUp() override {
    pad.resize(400, 200), pad.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&pad));
  }
  QWidget* surface() { return pad.focusProxy(); }
  SignatureRecord waitForRecord(QSignalSpy& ready) {
    EXPECT_TRUE(ready.wait(20000));
    return ready.isEmpty() ? SignatureRecord() : ready.takeFirst().at(0).value<SignatureRecord>();
  }
  SignaturePad pad;
};

TEST_F(Pad, DoneAfterAnUndoDeliversTheCanvasAndAfterAClearNothing) {
  QSignalSpy ready(&pad, &SignaturePad::signatureReady);
  const Path first = {{40, 60}, {80, 70}, {120, 65}}, second = {{200, 100}, {260, 120}};
  mouseStroke(surface(), first, 1000), mouseStroke(surface(), second, 2000);
  QTest::qWait(400);  // the record of both strokes is prepared
  pad.undo();
  pad.done();
  SignatureRecord record = waitForRecord(ready);
  EXPECT_EQ(traceOf(record.strokes()), Trace{first});
  EXPECT_FALSE(record.image().isNull());
  EXPECT_TRUE(record.pdf().startsWith("%PDF") && record.svg().startsWith("<svg") && record.xml().contains("SamplePoint"));
  EXPECT_EQ(record.hash().size(), 10);
  EXPECT_LT(std::abs(record.timestamp().secsTo(QDateTime::currentDateTimeUtc())), 60);
  pad.clear();
  QSignalSpy nothing(&pad, &SignaturePad::signedNothing);
  pad.done();
  EXPECT_EQ(nothing.size(), 1);
}

TEST_F(Pad, SettingsChangedAfterTheRecordWasPreparedReachTheRecordWhichIsAValue) {
  QSignalSpy ready(&pad, &SignaturePad::signatureReady);
  mouseStroke(surface(), {{40, 60}, {80, 70}, {120, 65}}, 1000);
  QTest::qWait(400);  // the record of the stroke with the settings before is prepared
  auto settings = [](SignaturePad& p) {
    p.setPenColor(Qt::red), p.setExportScale(2), p.setHashStamp(true), p.setCustomHash("HOST-42");
    p.setBackgroundColor(QColor(250, 250, 200)), p.setBackgroundInRecord(true), p.setSkipPdf(true);
  };
  settings(pad);
  pad.done();
  SignatureRecord record = waitForRecord(ready);
  SignaturePad fresh;
  settings(fresh);
  fresh.setStrokes(pad.strokes());
  QSignalSpy freshReady(&fresh, &SignaturePad::signatureReady);
  fresh.done();
  SignatureRecord expected = waitForRecord(freshReady);
  ASSERT_FALSE(record.image().isNull());
  EXPECT_EQ(record.image(), expected.image());
  EXPECT_EQ(record.hash(), "HOST-42");
  EXPECT_TRUE(record.pdf().isEmpty());
  EXPECT_EQ(record.image().pixelColor(0, 0), QColor(250, 250, 200));
  // Changing the record's strokes changes neither the record nor the pad.
  QnStrokeListRef strokes = record.strokes();
  strokes->front()->front().location = {290, 290};
  EXPECT_EQ(traceOf(record.strokes()).front().front(), (std::pair(40.0, 60.0)));
  EXPECT_EQ(traceOf(pad.strokes()).front().front(), (std::pair(40.0, 60.0)));
}

// A host closing a dialog deletes the pad while it has the focus, perhaps in the middle of a stroke.
TEST(PadLifetime, APadWithTheFocusIsDeletedMidStrokeWithoutHarm) {
  auto* pad = new SignaturePad;
  pad->resize(400, 200), pad->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(pad));
  pad->activateWindow(), pad->setFocus();
  sendMouse(pad->focusProxy(), QEvent::MouseButtonPress, {40, 60}, 1000);
  sendMouse(pad->focusProxy(), QEvent::MouseMove, {80, 70}, 1020);
  ASSERT_TRUE(pad->focusProxy()->hasFocus());
  delete pad;
}

}  // namespace
}  // namespace scrivlet
