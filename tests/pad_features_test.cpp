// What hosts use on both the widget and the QML item: signals once per stroke, undo, redo, clear and
// load, and the accessible canvas's description of them; bindable state; the keys; widths kept within
// limits and a tap's dot; read-only showing a saved signature; resizing that keeps, scales or clears the
// ink and never cuts it; and the record saved to files.
#include "pad_twins.h"

#include "output_support.h"

#include <scrivlet/record_file.h>

#include <QAccessible>

namespace scrivlet {
namespace {

using namespace qt_test;
using namespace test_support;

TEST_F(Twins, SignalsComeOncePerStrokeUndoRedoClearAndLoadAndTheKeysUndoAndRedo) {
  for (const Twin& twin : twins_) {
    QSignalSpy began(twin.pad, SIGNAL(strokeBegan())), ended(twin.pad, SIGNAL(strokeEnded(int, int))),
        changed(twin.pad, SIGNAL(changed())), undoable(twin.pad, SIGNAL(canUndoChanged(bool))),
        redoable(twin.pad, SIGNAL(canRedoChanged(bool))), count(twin.pad, SIGNAL(strokeCountChanged(int))),
        empty(twin.pad, SIGNAL(emptyChanged(bool)));
    twin.pad->setProperty("swipeToUndo", false);  // the keys work without swipes
    // An accessible canvas named "Signature" that describes its strokes. (Announcements of the changes go
    // through QAccessible, which stays silent on the offscreen platform.)
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(twin.pad);
    ASSERT_TRUE(accessible) << twin.name;
    auto described = [&] { return accessible->text(QAccessible::Description); };
    EXPECT_EQ(std::tuple(accessible->role(), accessible->text(QAccessible::Name), described()),
              std::tuple(QAccessible::Canvas, QString("Signature"), QString("empty"))) << twin.name;
    playAll(twin.window, {wave(Sample::finger, 20, 50, 1000), wave(Sample::pen, 9, 120, 2000)});
    EXPECT_EQ(described(), "2 strokes") << twin.name;
    EXPECT_EQ(began.size(), 2) << twin.name;
    ASSERT_EQ(ended.size(), 2) << twin.name;
    EXPECT_EQ(std::pair(ended[0][0].toInt(), ended[0][1].toInt()), std::pair(0, 20)) << twin.name;
    EXPECT_EQ(std::pair(ended[1][0].toInt(), ended[1][1].toInt()), std::pair(1, 9)) << twin.name;
    EXPECT_EQ(std::tuple(changed.size(), count.size(), undoable.size(), empty.size()),
              std::tuple(qsizetype(2), qsizetype(2), qsizetype(1), qsizetype(1))) << twin.name;
    const QString two = twin.pad->property("strokesJson").toString();
    // Keys reach the pad with focus: Undo, then Redo.
    twin.window->requestActivate();  // on X11 the window becomes active later
    ASSERT_TRUE(QTest::qWaitForWindowActive(twin.window)) << twin.name;
    twin.pad == area_ ? area_->forceActiveFocus() : widget_.setFocus();
    QTest::keySequence(twin.window, QKeySequence::Undo);
    EXPECT_EQ(std::tuple(twin.pad->property("strokeCount").toInt(), twin.pad->property("canRedo").toBool(), changed.size(),
                         described()),
              std::tuple(1, true, qsizetype(3), QString("1 stroke"))) << twin.name;
    QTest::keySequence(twin.window, QKeySequence::Redo);
    QMetaObject::invokeMethod(twin.pad, "undo");
    QMetaObject::invokeMethod(twin.pad, "clear");
    EXPECT_EQ(std::tuple(changed.size(), twin.pad->property("empty").toBool(), redoable.size(), described()),
              std::tuple(qsizetype(6), true, qsizetype(4), QString("empty"))) << twin.name;
    // Loading is a change, even of the same strokes; a document that is not one changes nothing.
    twin.pad->setProperty("strokesJson", two);
    twin.pad->setProperty("strokesJson", two);
    twin.pad->setProperty("strokesJson", "{\"format\": \"other\"}");
    EXPECT_EQ(std::pair(changed.size(), twin.pad->property("strokeCount").toInt()), std::pair(qsizetype(8), 2));
    EXPECT_EQ(twin.pad->property("strokesJson").toString(), two) << twin.name;
    // Read-only, the keys change nothing.
    twin.pad->setProperty("readOnly", true);
    QTest::keySequence(twin.window, QKeySequence::Undo);
    EXPECT_EQ(twin.pad->property("strokeCount").toInt(), 2) << twin.name;
    EXPECT_EQ(began.size(), 2) << twin.name;  // undo, redo and loading begin no stroke
  }
}

TEST_F(Twins, WidthsStayWithinTheirLimitsAndATapLeavesADotOfTheSizeAskedFor) {
  for (const Twin& twin : twins_) {
    // Fast strokes thin to 0.6 and pressure widens to over 5 without limits.
    twin.pad->setProperty("minWidth", 1.5), twin.pad->setProperty("maxWidth", 2.5);
    playAll(twin.window, {wave(Sample::finger, 20, 50, 1000), wave(Sample::pen, 14, 100, 3000)});
    std::vector<float> widths;
    QnStrokeListRef strokes = twin.strokes();
    for (const QnStrokeRef& stroke : *strokes)
      for (const QnSignaturePoint& p : *stroke) widths.push_back(p.diameter);
    EXPECT_EQ(std::pair(*std::min_element(widths.begin(), widths.end()), *std::max_element(widths.begin(), widths.end())),
              std::pair(1.5f, 2.5f)) << twin.name;
    // A click leaves a dot 12 wide: inked 5 from its centre, not 7; without a size, not 3 from it.
    twin.pad->setProperty("dotSize", 12.0);
    play(twin.window, {{Sample::mouse, {300, 160}, 5000}, {Sample::mouse, {300, 160}, 5040}});
    twin.pad->setProperty("dotSize", 0.0);
    play(twin.window, {{Sample::mouse, {350, 160}, 6000}, {Sample::mouse, {350, 160}, 6040}});
    QImage shown = twin.grab();
    shown.save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/dots_" + twin.name + ".png");
    EXPECT_TRUE(inked(shown, 300, 160) && inked(shown, 305, 160) && inked(shown, 300, 155) && !inked(shown, 307, 160))
        << twin.name;
    EXPECT_TRUE(inked(shown, 350, 160) && !inked(shown, 353, 160)) << twin.name;
    EXPECT_EQ(twin.strokes()->at(2)->front().diameter, 12.0f) << twin.name;
  }
}

TEST_F(Twins, ReadOnlyShowsASavedSignatureWithTheSamePixelsAndTheNextRecordHoldsIt) {
  for (const Twin& twin : twins_) {
    playAll(twin.window, {wave(Sample::finger, 20, 50, 1000), wave(Sample::pen, 14, 100, 3000)});
    QImage signed_ = twin.grab();
    const QVariant saved = twin.pad->property("strokesJson");
    QMetaObject::invokeMethod(twin.pad, "clear");
    twin.pad->setProperty("readOnly", true);
    twin.pad->setProperty("strokesJson", saved);
    QCoreApplication::processEvents();
    QImage shown = twin.grab();
    shown.save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/read_only_" + twin.name + ".png");
    EXPECT_TRUE(shown == signed_) << twin.name;
    int dark = 0;
    for (int y = 0; y < shown.height(); ++y)
      for (int x = 0; x < shown.width(); ++x) dark += inked(shown, x, y);
    EXPECT_GT(dark, 500) << twin.name;  // the strokes and the signing line
    // Taking input again, the next record holds the loaded strokes and the new one.
    twin.pad->setProperty("readOnly", false);
    play(twin.window, wave(Sample::mouse, 5, 160, 5000));
    Trace expected = traceOf(*strokesFromJson(saved.toString().toStdString()));
    expected.push_back(traceOf(twin.strokes()).back());
    SignatureRecord record = recordOf(twin.pad);
    EXPECT_EQ(traceOf(record.strokes()), expected) << twin.name;
    // The record is a value: changing its strokes changes neither it nor the pad. Cleared, done() has nothing.
    record.strokes()->front()->front().location = {290, 290};
    EXPECT_EQ(std::pair(traceOf(record.strokes()), traceOf(twin.strokes())), std::pair(expected, expected)) << twin.name;
    QSignalSpy nothing(twin.pad, SIGNAL(signedNothing()));
    QMetaObject::invokeMethod(twin.pad, "clear"), QMetaObject::invokeMethod(twin.pad, "done");
    EXPECT_EQ(nothing.size(), 1) << twin.name;
  }
}

TEST_F(Twins, AResizeKeepsScalesOrClearsTheInkAndNeverCutsIt) {
  const Recording stroke = wave(Sample::finger, 20, 50, 1000);
  for (const Twin& twin : twins_) {
    auto resize = [&](int w, int h) {
      twin.pad == area_ ? area_->setSize(QSizeF(w, h)) : widget_.resize(w, h);
      QCoreApplication::processEvents();
    };
    QSignalSpy changed(twin.pad, SIGNAL(changed()));
    play(twin.window, stroke);
    // Scaled: twice the size, every point twice as far from the corner, as the signing line is.
    twin.pad->setProperty("resizePolicy", 1);
    resize(800, 400);
    QnStrokeListRef strokes = twin.strokes();
    const QnStroke& scaled = *strokes->front();
    for (size_t i = 0; i < stroke.size(); ++i) {
      EXPECT_NEAR(scaled[i].location.x, 2 * stroke[i].at.x(), 1e-4) << twin.name << i;
      EXPECT_NEAR(scaled[i].location.y, 2 * stroke[i].at.y(), 1e-4) << twin.name << i;
    }
    // Kept: the ink moves with the line, and is scaled down where it would be cut (the wave reaches
    // x 720 at this size).
    twin.pad->setProperty("resizePolicy", 0);
    resize(400, 400);
    strokes = twin.strokes();
    auto right = std::max_element(strokes->front()->begin(), strokes->front()->end(),
                                  [](auto& a, auto& b) { return a.location.x < b.location.x; });
    EXPECT_LE(right->location.x + right->diameter / 2, 400) << twin.name;
    EXPECT_GT(right->location.x, 350) << twin.name;
    EXPECT_EQ(changed.size(), 3) << twin.name;  // the stroke, the scaling and the fitting
    twin.pad->setProperty("resizePolicy", 2);
    resize(400, 200);
    EXPECT_TRUE(twin.pad->property("empty").toBool()) << twin.name;
    EXPECT_EQ(changed.size(), 4) << twin.name;
  }
}

TEST_F(Twins, TheRecordSavesEachPartToAFileThatItsReadersTake) {
  play(area_->window(), wave(Sample::pen, 10, 80, 1000));
  SignatureRecord record = recordOf(area_);
  EXPECT_LT(std::abs(record.timestamp().secsTo(QDateTime::currentDateTimeUtc())), 60);
  const QString dir = QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/saved/";
  QDir().mkpath(dir);
  for (const char* name : {"signature.png", "signature.pdf", "signature.svg", "signature.xml", "record.json"})
    EXPECT_TRUE(record.save(QUrl::fromLocalFile(dir + name))) << name;
  EXPECT_TRUE(record.save(QUrl::fromLocalFile(dir + "strokes.txt"), "strokes"));
  EXPECT_FALSE(record.save(QUrl("https://example.org/signature.png")));
  EXPECT_FALSE(record.save(QUrl::fromLocalFile(dir + "signature.doc")));
  EXPECT_FALSE(record.save(QUrl::fromLocalFile(dir + "no such folder/signature.png")));
  EXPECT_TRUE(QImage(dir + "signature.png") == record.image());
  EXPECT_EQ(failureOf("qpdf --check '" + (dir + "signature.pdf").toStdString() + "'"), "");
  EXPECT_EQ(failureOf("xmllint --noout '" + (dir + "signature.svg").toStdString() + "' '" +
                      (dir + "signature.xml").toStdString() + "'"), "");
  auto text = [&](const char* name) {
    QFile file(dir + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
  };
  EXPECT_EQ(traceOf(strokesFromJson(text("strokes.txt")).value_or(nullptr)), traceOf(record.strokes()));
  auto file = recordFromJson(text("record.json"));
  ASSERT_TRUE(file);
  EXPECT_EQ(std::pair(traceOf(file->strokes()), file->hash()), std::pair(traceOf(record.strokes()), record.hash().toStdString()));
}

}  // namespace
}  // namespace scrivlet
