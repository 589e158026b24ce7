// The pad and the QML item laid out to nothing and back: they keep their last size meanwhile, so the
// signing line and the ink stay where they were (an empty capture view takes the line away for good
// and moves the ink with it).
#include <scrivlet/signature_area.h>
#include <scrivlet/signature_pad.h>

#include "qt_input.h"

#include <QQuickView>

namespace scrivlet {
namespace {

using namespace qt_test;

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

TEST(PadResize, AQmlItemLaidOutToNothingAndBackKeepsItsSigningLineAndItsInk) {
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  registerScrivletQuickTypes();
  QQuickView view;
  view.resize(400, 200);
  auto* area = new SignatureArea(view.contentItem());
  area->setSize({400, 200});
  view.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
  QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(40, 60));
  QTest::mouseMove(&view, QPoint(80, 70));
  QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(120, 65));
  const Trace ink = traceOf(area->strokes());
  ASSERT_EQ(ink.size(), 1u);
  for (QSizeF nothing : {QSizeF(0, 0), QSizeF(0, 200), QSizeF(400, 0)}) {
    area->setSize(nothing);
    area->setSize({400, 200});
    EXPECT_EQ(traceOf(area->strokes()), ink) << nothing.width() << " x " << nothing.height();
  }
  const QImage shot = view.grabWindow();
  EXPECT_TRUE(inked(shot, 80, 68) && inked(shot, 200, 133));
}

}  // namespace
}  // namespace scrivlet
