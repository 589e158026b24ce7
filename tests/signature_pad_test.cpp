// The signature pad on the offscreen platform: deleted mid-stroke with the focus; and laid out to
// nothing and back, keeping its last size meanwhile, so that the signing line and the ink stay where
// they were (an empty capture view would take the line away for good and move the ink with it). (Done
// after an undo: signature_session_test.cpp; the record as a value: pad_features_test.cpp.)
#include <scrivlet/signature_pad.h>

#include "qt_input.h"

namespace scrivlet {
namespace {

using namespace qt_test;

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
