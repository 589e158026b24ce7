// The signature pad on the offscreen platform: properties with real values and their signals, and Done
// delivering exactly the canvas, after an undo and after loading.
#include <scrivlet/log.h>
#include <scrivlet/signature_pad.h>
#include <scrivlet/stroke_json.h>

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

TEST_F(Pad, PropertiesHaveRealValuesAndSayWhenTheyChangeAndBadValuesAreClampedOrRefused) {
  EXPECT_EQ(std::tuple(pad.penColor(), pad.penWidth(), pad.velocityReduction(), pad.exportScale(), pad.guidelineVisible(),
                       pad.swipeToUndo(), pad.backgroundColor(), pad.isEmpty()),
            std::tuple(QColor(Qt::black), 4.0, 0.85, 1.0, true, true, QColor(Qt::white), true));
  EXPECT_EQ(surface()->palette().color(QPalette::Window), QColor(Qt::white));
  QSignalSpy width(&pad, &SignaturePad::penWidthChanged), hash(&pad, &SignaturePad::customHashChanged);
  // Each refusal and clamp is one warning in the host's log sink, and nothing on standard error.
  std::vector<std::string> warnings;
  setLogSink([&](LogLevel level, std::string_view line) {
    if (level == LogLevel::warning) warnings.emplace_back(line);
  });
  testing::internal::CaptureStderr();
  EXPECT_TRUE(pad.setProperty("penWidth", 6.0));
  pad.setPenWidth(6);  // unchanged: no signal
  pad.setPenWidth(100);
  pad.setPenWidth(NAN);
  EXPECT_EQ(width.size(), 2);
  EXPECT_EQ(std::pair(pad.penWidth(), pad.session().scrivlet().strokeWidth()), std::pair(50.0, 50.0f));
  pad.setCustomHash("<b>"), pad.setCustomHash("A-17");
  EXPECT_EQ(std::pair(hash.size(), pad.customHash()), std::pair(qsizetype(1), QString("A-17")));
  pad.setBackgroundColor(Qt::yellow), pad.setExportScale(0);
  EXPECT_EQ(surface()->palette().color(QPalette::Window), QColor(Qt::yellow));
  EXPECT_EQ(pad.exportScale(), 0.1);
  // Widths reach 53 at most (the widest pen at full pressure); a policy that is none is refused.
  pad.setMinWidth(-1), pad.setMaxWidth(100), pad.setDotSize(NAN), pad.setResizePolicy(SignaturePad::ResizePolicy(7));
  EXPECT_EQ(std::tuple(pad.minWidth(), pad.maxWidth(), pad.dotSize(), pad.resizePolicy()),
            std::tuple(0.0, 53.0, 0.0, SignaturePad::KeepInk));
  setLogSink({});
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(warnings, (std::vector<std::string>{
                          "Scrivlet: pen width 100 clamped to 50",
                          "Scrivlet: pen width nan refused: not a finite number",
                          "Scrivlet: custom hash refused: only up to 64 letters, digits, '.', '_' and '-'",
                          "Scrivlet: export scale 0 clamped to 0.1",
                          "Scrivlet: minimum width -1 clamped to 0",
                          "Scrivlet: maximum width 100 clamped to 53",
                          "Scrivlet: dot size nan refused: not a finite number",
                          "Scrivlet: resize policy 7 refused",
                      }));
}

// (The signals and keys of both pads: pad_features_test.cpp.)
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

TEST_F(Pad, StrokesLoadedIntoAPadAreShownAndTheNextRecordHoldsThemAndTheNewOnes) {
  mouseStroke(surface(), {{40, 60}, {80, 70}, {120, 65}}, 1000);
  const std::string saved = strokesToJson(pad.strokes());
  SignaturePad other;
  other.resize(400, 200), other.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
  QSignalSpy empty(&other, &SignaturePad::emptyChanged), ready(&other, &SignaturePad::signatureReady);
  other.setStrokes(*strokesFromJson(saved));
  EXPECT_EQ(std::pair(empty.size(), other.isEmpty()), std::pair(qsizetype(1), false));
  EXPECT_TRUE(inked(other.grab().toImage(), 80, 68));
  mouseStroke(other.focusProxy(), {{200, 100}, {260, 120}}, 5000);
  other.done();
  SignatureRecord record = waitForRecord(ready);
  EXPECT_EQ(traceOf(record.strokes()), (Trace{{{40, 60}, {80, 70}, {120, 65}}, {{200, 100}, {260, 120}}}));
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

TEST_F(Pad, UndoAndRedoWorkWithoutSwipesAndStrokesThatDoNotLoadLeaveThePad) {
  pad.setSwipeToUndo(false);
  mouseStroke(surface(), {{40, 60}, {80, 70}}, 1000), mouseStroke(surface(), {{200, 100}, {260, 120}}, 2000);
  pad.setFocus();
  QTest::keySequence(surface(), QKeySequence::Undo);
  EXPECT_EQ(traceOf(pad.strokes()), (Trace{{{40, 60}, {80, 70}}}));
  pad.redo();
  EXPECT_EQ(pad.strokes()->size(), 2u);
  const std::string saved = strokesToJson(pad.strokes());
  EXPECT_EQ(pad.loadStrokes("{\"format\":5,\"version\":1,\"strokes\":[]}"), "not a strokes document");
  EXPECT_EQ(strokesToJson(pad.strokes()), saved);
  EXPECT_EQ(pad.loadStrokes(QByteArray::fromStdString(saved)), "");
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
