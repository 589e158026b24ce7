// The Qt Quick item in a QML document on the offscreen platform: QML sets its properties, binds to its
// state, mirrors it and handles its answers; a button over it keeps its input. Laid out to nothing and
// back, it keeps its signing line and its ink.
#include "pad_twins.h"

#include <QAccessible>

namespace scrivlet {
namespace {

using namespace qt_test;

// A form as a QML host writes one: the pad's state bound into text, a second pad that mirrors the
// first through strokesJson, a button drawn over the pad's corner, a text field to move the focus
// to, and the record handled in QML. (Each done() answered once, or with nothing: the session's and
// the twins' tests.)
const char* const kForm = R"(import QtQuick
import Scrivlet
Item {
  width: 400; height: 300
  property url saveTo
  property string hash: ""
  property bool saved: false
  property string loadError: "not loaded"
  property string status: area.empty ? "empty" : area.strokeCount + " strokes"
  function finish() { area.done() }
  function load(json) { loadError = area.loadStrokes(json) }
  SignatureArea {
    id: area; objectName: "area"
    width: 400; height: 200
    customHash: "QML-7"; resizePolicy: SignatureArea.ScaleInk; penWidth: 6; backgroundColor: "lightyellow"
    Accessible.name: "Customer signature"
    onSignatureReady: (record) => { hash = record.hash; saved = record.save(saveTo) }
  }
  SignatureArea {
    id: mirror; objectName: "mirror"
    y: 200; width: 400; height: 100; readOnly: true
    strokesJson: area.strokesJson
  }
  Rectangle {
    x: 300; width: 100; height: 60; z: 1
    MouseArea { anchors.fill: parent }
  }
  TextInput { objectName: "field"; y: 280; width: 100; height: 20 }
})";

TEST_F(Twins, AQmlFormBindsThePadsStateMirrorsItsStrokesKeepsAButtonOverItAndHandlesTheAnswers) {
  QQuickView view(QUrl::fromLocalFile(writeQml("form", kForm)));
  ASSERT_EQ(view.status(), QQuickView::Ready) << view.errors().value(0).toString().toStdString();
  view.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
  QObject* form = view.rootObject();
  auto* area = form->findChild<SignatureArea*>("area");
  auto* mirror = form->findChild<SignatureArea*>("mirror");
  ASSERT_TRUE(area && mirror);
  EXPECT_EQ(std::tuple(area->resizePolicy(), area->customHash(), area->session().scrivlet().strokeWidth()),
            std::tuple(SignatureArea::ScaleInk, QString("QML-7"), 6.0f));
  EXPECT_EQ(view.grabWindow().pixelColor(200, 180), QColor("lightyellow"));
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(area);
  ASSERT_TRUE(accessible);
  EXPECT_EQ(std::pair(accessible->role(), accessible->text(QAccessible::Name)),
            std::pair(QAccessible::Canvas, QString("Customer signature")));  // the host's name is kept
  EXPECT_EQ(form->property("status").toString(), "empty");

  // A finger and a pen pressed on the button draw nothing; a finger pressed on the pad draws even
  // where it passes under the button.
  play(&view, wave(Sample::finger, 6, 30, 1000));
  Recording onButton = wave(Sample::finger, 3, 30, 2000), pen = wave(Sample::pen, 3, 30, 2500);
  for (Sample& s : onButton) s.at += QPointF(300, 0);
  for (Sample& s : pen) s.at += QPointF(300, 0);
  playAll(&view, {onButton, pen});
  play(&view, wave(Sample::finger, 20, 100, 3000));
  EXPECT_EQ(form->property("status").toString(), "2 strokes");
  EXPECT_GT(traceOf(area->strokes()).back().back().first, 300);
  // The mirror loads each change through its binding.
  EXPECT_EQ(std::pair(mirror->strokeCount(), mirror->strokesJson()), std::pair(2, area->strokesJson()));

  // Focus moved away mid-stroke ends the stroke and keeps it; the rest of it draws nothing.
  QSignalSpy ended(area, &SignatureArea::strokeEnded);
  Recording half = wave(Sample::mouse, 6, 150, 4000);
  play(&view, Recording(half.begin(), half.begin() + 3));
  form->findChild<QQuickItem*>("field")->forceActiveFocus();
  for (size_t i = 3; i < half.size(); ++i) {  // the button still held, then released
    bool last = i + 1 == half.size();
    QWindowSystemInterface::handleMouseEvent(&view, half[i].ms, half[i].at, view.mapToGlobal(half[i].at),
                                             last ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
                                             last ? QEvent::MouseButtonRelease : QEvent::MouseMove);
  }
  QWindowSystemInterface::flushWindowSystemEvents();
  EXPECT_EQ(std::pair(ended.size(), area->strokeCount()), std::pair(qsizetype(1), 3));
  Path kept;  // the stroke so far, ended where the pointer last was
  for (size_t i : {0, 1, 2, 2}) kept.emplace_back(half[i].at.x(), half[i].at.y());
  EXPECT_EQ(traceOf(area->strokes()).back(), kept);

  // done() from QML: the handler has the record, and saves it where the host said.
  const QString png = QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/form.png";
  QFile::remove(png);
  form->setProperty("saveTo", QUrl::fromLocalFile(png));
  QMetaObject::invokeMethod(form, "finish");
  EXPECT_TRUE(QTest::qWaitFor([&] { return form->property("hash").toString() == "QML-7"; }, 20000));
  EXPECT_TRUE(form->property("saved").toBool());
  EXPECT_FALSE(QImage(png).isNull());
  const QString three = area->strokesJson();
  area->clear();
  EXPECT_EQ(std::pair(mirror->isEmpty(), form->property("status").toString()), std::pair(true, QString("empty")));

  // Loading from QML: why not, or "" when it loaded.
  QMetaObject::invokeMethod(form, "load", Q_ARG(QVariant, "{\"format\":5,\"version\":1,\"strokes\":[]}"));
  EXPECT_EQ(form->property("loadError").toString(), "not a strokes document");
  EXPECT_TRUE(area->isEmpty());
  QMetaObject::invokeMethod(form, "load", Q_ARG(QVariant, three));
  EXPECT_EQ(std::tuple(form->property("loadError").toString(), form->property("status").toString(),
                       mirror->strokeCount()),
            std::tuple(QString(""), QString("3 strokes"), 3));
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
