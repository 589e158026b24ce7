// The widget and the QML item side by side, fed the same recorded input through the platform's path
// (QWindowSystemInterface, queued as a platform plugin queues it): a finger, a pen with pressure and
// tilt, and the mouse give both the same samples and the same record; disabled and read-only, neither
// takes input of any kind.
#include "pad_twins.h"

namespace scrivlet {
namespace {

using namespace qt_test;

TEST_F(Twins, AFingerAPenWithPressureAndTiltAndTheMouseGiveBothTheSameSamplesAndTheSameRecord) {
  const std::vector<Recording> strokes = {wave(Sample::finger, 20, 50, 1000), wave(Sample::pen, 14, 100, 3000),
                                          wave(Sample::mouse, 12, 150, 5000)};
  std::vector<QnStrokeListRef> captured;
  std::vector<QImage> records;
  for (const Twin& twin : twins_) {
    playAll(twin.window, strokes);
    captured.push_back(twin.strokes());
    ASSERT_TRUE(captured.back()) << twin.name;
    // Every sample, where it was: Qt Quick merges none of the finger's moves. (Qt moves the mouse to
    // where a button is released before releasing it.)
    Trace expected;
    for (const Recording& stroke : strokes) {
      expected.emplace_back();
      for (const Sample& s : stroke) expected.back().emplace_back(s.at.x(), s.at.y());
    }
    expected[2].push_back(expected[2].back());
    EXPECT_EQ(traceOf(captured.back()), expected) << twin.name;
    // The pen's pressure (the release's, 0, excepted) and lean; no force for finger and mouse.
    const QnStroke& pen = *captured.back()->at(1);
    for (size_t i = 0; i + 1 < pen.size(); ++i) EXPECT_EQ(pen[i].pressure, float(strokes[1][i].pressure)) << twin.name << i;
    EXPECT_EQ(pen[0].altitudeAngle, float(M_PI / 2 - std::atan(std::hypot(std::tan(-30 * M_PI / 180), std::tan(12 * M_PI / 180)))));
    EXPECT_NEAR(pen[0].azimuthAngle, 2.7888332, 1e-6);  // leaning towards (tan -30°, tan 12°): 159.8°
    for (int s : {0, 2})
      for (const QnSignaturePoint& p : *captured.back()->at(s)) EXPECT_EQ(p.pressure, 0.0f) << twin.name;
    SignatureRecord record = recordOf(twin.pad);
    records.push_back(record.image());
    EXPECT_EQ(traceOf(record.strokes()), expected) << twin.name;
    QImage shown = twin.grab();
    shown.save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/twin_" + twin.name + ".png");
    // The signing line: 9/16 down, plus 26/472 of its width (95% of the pad's).
    EXPECT_TRUE(inked(shown, 200, 133) && inked(shown, 360, 133) && !inked(shown, 200, 150)) << twin.name;
  }
  // Every field of every point, to the bit, and the record's pixels.
  EXPECT_EQ(strokesToJson(captured[0]), strokesToJson(captured[1]));
  ASSERT_FALSE(records[0].isNull());
  EXPECT_TRUE(records[0] == records[1]);
  records[0].save(QString(SCRIVLET_TEST_OUTPUT_DIR) + "/qml/twin_record.png");
}

TEST_F(Twins, DisabledOrReadOnlyNeitherTakesAFingerAPenNorTheMouseAndAStrokeUnderWayIsKept) {
  const std::vector<Recording> strokes = {wave(Sample::finger, 6, 50, 1000), wave(Sample::pen, 6, 100, 2000),
                                          wave(Sample::mouse, 6, 150, 3000)};
  for (const Twin& twin : twins_) {
    QSignalSpy began(twin.pad, SIGNAL(strokeBegan())), changed(twin.pad, SIGNAL(changed()));
    for (const char* property : {"enabled", "readOnly"}) {
      twin.pad->setProperty(property, property == std::string("readOnly"));
      playAll(twin.window, strokes);
      EXPECT_EQ(std::tuple(twin.pad->property("empty").toBool(), began.size(), changed.size()),
                std::tuple(true, qsizetype(0), qsizetype(0)))
          << twin.name << " " << property;
      twin.pad->setProperty(property, property != std::string("readOnly"));
    }
    // Taken again: all three draw. Disabled or made read-only halfway through a stroke, the stroke so
    // far is kept, ended where the pointer last was.
    playAll(twin.window, strokes);
    EXPECT_EQ(twin.pad->property("strokeCount").toInt(), 3) << twin.name;
    for (const char* property : {"enabled", "readOnly"}) {
      const bool taking = property == std::string("enabled");
      Recording half = wave(Sample::mouse, 6, 180, 4000);
      play(twin.window, Recording(half.begin(), half.begin() + 3));
      twin.pad->setProperty(property, !taking);
      play(twin.window, Recording(half.begin() + 3, half.end()));
      EXPECT_EQ(traceOf(twin.strokes()).back(), (Path{{31, 180}, {48, 195}, {65, 204}, {65, 204}}))
          << twin.name << " " << property;
      twin.pad->setProperty(property, taking);
    }
    EXPECT_EQ(twin.pad->property("strokeCount").toInt(), 5) << twin.name;
    // Stylus only: the pen alone draws.
    QMetaObject::invokeMethod(twin.pad, "clear");
    twin.pad->setProperty("stylusOnly", true);
    playAll(twin.window, strokes);
    EXPECT_EQ(traceOf(twin.strokes()).size(), 1u) << twin.name;
    EXPECT_EQ(twin.strokes()->at(0)->front().location.y, 100) << twin.name;
  }
}

TEST_F(Twins, ATouchCancelledByThePlatformDropsTheStrokeUnderWayAndTheNextOneDraws) {
  for (const Twin& twin : twins_) {
    Recording half = wave(Sample::finger, 8, 50, 1000);
    half.pop_back();  // no release: the platform cancels instead
    for (size_t i = 0; i < half.size(); ++i) {
      QWindowSystemInterface::TouchPoint point;
      point.id = 1;
      point.state = i == 0 ? QEventPoint::State::Pressed : QEventPoint::State::Updated;
      point.area = QRectF(twin.window->mapToGlobal(half[i].at) - QPointF(4, 4), QSizeF(8, 8));
      QWindowSystemInterface::handleTouchEvent(twin.window, half[i].ms, screen_, {point});
    }
    QWindowSystemInterface::handleTouchCancelEvent(twin.window, 1100, screen_);
    QWindowSystemInterface::flushWindowSystemEvents();
    EXPECT_TRUE(twin.pad->property("empty").toBool()) << twin.name;
    play(twin.window, wave(Sample::finger, 5, 120, 2000));
    EXPECT_EQ(twin.pad->property("strokeCount").toInt(), 1) << twin.name;
  }
}

}  // namespace
}  // namespace scrivlet
