// The Qt Quick item in a QQuickView on the offscreen platform: QML sets its properties, the mouse
// signs on it, it shows the ink, and Done delivers the canvas.
#include <scrivlet/signature_area.h>

#include "qt_input.h"

#include <QQuickView>
#include <QSignalSpy>

namespace scrivlet {
namespace {

using namespace qt_test;

TEST(SignatureAreaQml, QmlSetsItsPropertiesTheMouseSignsAndDoneDeliversTheCanvas) {
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);  // the module registers itself on import
  QDir(SCRIVLET_TEST_OUTPUT_DIR).mkpath("qml");
  const QString file = QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/area.qml";
  QFile qml(file);
  ASSERT_TRUE(qml.open(QIODevice::WriteOnly));
  qml.write("import QtQuick\nimport Scrivlet 1.0\n"
            "SignatureArea { width: 400; height: 200; penWidth: 6; backgroundColor: \"lightyellow\" }\n");
  qml.close();
  QQuickView view(QUrl::fromLocalFile(file));
  ASSERT_EQ(view.status(), QQuickView::Ready);
  view.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
  auto* area = qobject_cast<SignatureArea*>(view.rootObject());
  ASSERT_TRUE(area);
  EXPECT_EQ(std::pair(area->penWidth(), area->session().scrivlet().strokeWidth()), std::pair(6.0, 6.0f));
  QSignalSpy began(area, &SignatureArea::strokeBegan), ended(area, &SignatureArea::strokeEnded),
      ready(area, &SignatureArea::signatureReady);
  QTest::mousePress(&view, Qt::LeftButton, {}, QPoint(40, 60));
  QTest::mouseMove(&view, QPoint(80, 70));
  QTest::mouseMove(&view, QPoint(120, 65));
  QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(160, 70));
  EXPECT_EQ(std::pair(began.size(), ended.size()), std::pair(qsizetype(1), qsizetype(1)));
  EXPECT_FALSE(area->isEmpty());
  QImage shot = view.grabWindow();
  shot.save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/area.png");
  EXPECT_TRUE(inked(shot, 100, 68));
  EXPECT_EQ(shot.pixelColor(300, 30), QColor("lightyellow"));
  EXPECT_TRUE(inked(shot, 200, 133));  // the signing line: 9/16 down, plus 26/472 of its width
  area->done();
  ASSERT_TRUE(ready.wait(20000));
  EXPECT_EQ(traceOf(ready.first().at(0).value<SignatureRecord>().strokes()),
            (Trace{{{40, 60}, {80, 70}, {120, 65}, {160, 70}, {160, 70}}}));  // QTest moves to the release point first
}

}  // namespace
}  // namespace scrivlet
