// The signature pad on the offscreen platform: Done delivering exactly the canvas after an undo, as a
// value; and laid out to nothing and back, keeping its last size meanwhile, so that the signing line
// and the ink stay where they were (an empty capture view would take the line away for good and move
// the ink with it). (Settings changed before Done: signature_session_test.cpp and
// pad_settings_test.cpp; loading: pad_features_test.cpp.)
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
  // The record is a value: changing its strokes changes neither it nor the pad.
  record.strokes()->front()->front().location = {290, 290};
  EXPECT_EQ(std::pair(traceOf(record.strokes())[0][0], traceOf(pad.strokes())[0][0]),
            std::pair(first[0], first[0]));
  pad.clear();
  QSignalSpy nothing(&pad, &SignaturePad::signedNothing);
  pad.done();
  EXPECT_EQ(nothing.size(), 1);
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

TEST(PadResize, APadLaidOutToNothingAndBackKeepsItsSigningLineAndItsInk) {
  QWidget window;
  window.resize(400, 200);
  auto* pad = new SignaturePad(&window);
  pad->setGeometry(0, 0, 400, 200);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  mouseStroke(pad->focusProxy(), {{40, 60}, {80, 70}, {120, 65}}, 1000);
  const Trace ink = traceOf(pad->strokes());
  for (QSize nothing : {QSize(0, 0), QSize(0, 200), QSize(400, 0)}) {
    pad->resize(nothing);
    QCoreApplication::processEvents();
    pad->resize(400, 200);
    QCoreApplication::processEvents();
    EXPECT_EQ(traceOf(pad->strokes()), ink) << nothing.width() << " x " << nothing.height();
  }
  const QImage shot = saveGrab(pad, "pad_after_nothing");
  EXPECT_TRUE(inked(shot, 80, 68) && inked(shot, 200, 133));  // the ink, and the line 9/16 down
}

}  // namespace
}  // namespace scrivlet
