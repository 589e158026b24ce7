// The capture widget on the offscreen platform: finger, pen and mouse input become strokes, gestures
// undo and redo, the ink follows the guideline, and odd input loses nothing. Also the tests' main.
#include <scrivlet/facade.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "platform/image_view.h"
#include "qt_capture_widget.h"
#include "qt_input.h"
#include "qt_platform.h"

#include <QApplication>
#include <QRegularExpression>
#include <QTouchEvent>

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace qt_test;
using Calls = std::vector<std::string>;

class CaptureWidgetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    window_.resize(660, 360);
    widget_ = new QnQtCaptureWidget(&window_);
    widget_->setGeometry(20, 20, 400, 200);
    widget_->setAutoFillBackground(true);
    QPalette palette = widget_->palette();
    palette.setColor(QPalette::Window, Qt::white);
    widget_->setPalette(palette);
    scrivlet_ = QnScrivlet::scrivletWithViewDelegate(widget_->view(), log_.delegate);
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
  }

  QnDemoDrawingController& model() { return *scrivlet_->scrivletController()->drawingController(); }
  Trace strokes() { return traceOf(model().drawingArray()); }
  // Three fingers land together, move sideways by dx in each of two steps, and lift.
  void swipe(int dx) {
    const QPoint at[] = {{150, 40}, {180, 40}, {210, 40}};
    auto seq = QTest::touchEvent(widget_, screen_, false);
    for (int i = 0; i < 3; ++i) seq.press(i, at[i]);
    seq.commit();
    for (int step = 1; step <= 2; ++step) {
      for (int i = 0; i < 3; ++i) seq.move(i, at[i] + QPoint(dx * step, 0));
      seq.commit();
    }
    for (int i = 0; i < 3; ++i) seq.release(i, at[i] + QPoint(2 * dx, 0));
    seq.commit();
  }

  QWidget window_;
  QnQtCaptureWidget* widget_ = nullptr;
  QPointingDevice* screen_ = QTest::createTouchDevice();
  CallLog log_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

TEST_F(CaptureWidgetTest, FingerStrokeBecomesOneStrokeAndTheViewFollowsTheWidget) {
  EXPECT_EQ(widget_->view()->frame(), makeRect(20, 20, 400, 200));
  std::vector<QPoint> path = {{40, 60}, {80, 62}, {120, 66}, {160, 72}, {200, 80}};
  fingerStroke(widget_, screen_, path);
  EXPECT_EQ(strokes(), traceOf(std::vector<QPointF>(path.begin(), path.end())));
  EXPECT_EQ(log_.calls, Calls{"didEndLine 5"});
  // A finger has no force: the points carry none, and an upright pen's angles.
  for (const QnSignaturePoint& p : *model().drawingArray()->front()) {
    EXPECT_EQ(p.pressure, 0.0f);
    EXPECT_FLOAT_EQ(p.altitudeAngle, float(M_PI / 2));
  }
  saveGrab(widget_, "finger_stroke");

  widget_->setGeometry(30, 50, 380, 180);
  EXPECT_EQ(widget_->view()->frame(), makeRect(30, 50, 380, 180));
  widget_->move(0, 0);
  EXPECT_EQ(widget_->view()->frame(), makeRect(0, 0, 380, 180));
}

TEST_F(CaptureWidgetTest, TwoFingersLandingTogetherBeginNoStroke) {
  auto seq = QTest::touchEvent(widget_, screen_, false);
  seq.press(0, {100, 50}).press(1, {200, 50}).commit();
  seq.move(0, {110, 60}).move(1, {210, 60}).commit();
  seq.release(0, {110, 60}).release(1, {210, 60}).commit();
  EXPECT_TRUE(strokes().empty());
  EXPECT_TRUE(log_.calls.empty());
}

TEST_F(CaptureWidgetTest, ThirdFingerLandingCancelsTheStrokeInProgress) {
  fingerStroke(widget_, screen_, {{40, 40}, {80, 40}, {120, 40}});
  Trace finished = strokes();
  // One sequence, so that fingers left alone are reported where they are.
  auto seq = QTest::touchEvent(widget_, screen_, false);
  seq.press(0, {50, 150}).commit();
  seq.move(0, {90, 150}).commit();
  seq.stationary(0).press(1, {300, 40}).commit();  // a second finger changes nothing
  seq.move(0, {130, 150}).stationary(1).commit();
  ASSERT_EQ(model().drawingArray()->size(), 2u);
  EXPECT_EQ(model().drawingArray()->back()->size(), 3u);

  seq.stationary(0).stationary(1).press(2, {320, 40}).commit();
  EXPECT_EQ(strokes(), finished);
  EXPECT_FALSE(model().drawing());
  seq.release(0, {130, 150}).release(1, {300, 40}).release(2, {320, 40}).commit();
  EXPECT_EQ(strokes(), finished);
}

TEST_F(CaptureWidgetTest, ThreeFingerSwipesUndoAndRedo) {
  fingerStroke(widget_, screen_, {{40, 120}, {80, 120}, {120, 125}});
  fingerStroke(widget_, screen_, {{200, 130}, {240, 140}, {280, 150}, {320, 160}});
  Trace both = strokes();
  ASSERT_EQ(both.size(), 2u);

  swipe(-20);  // 40 points sideways is not a swipe
  EXPECT_EQ(strokes(), both);
  swipe(-30);
  EXPECT_EQ(strokes(), Trace{both[0]});
  swipe(30);
  EXPECT_EQ(strokes(), both);

  scrivlet_->setSwipeToUndoEnabled(false);
  swipe(-30);
  EXPECT_EQ(strokes(), both);
}

TEST_F(CaptureWidgetTest, StylusOnlyModeDrawsWithThePenAlone) {
  scrivlet_->setDrawOnlyWithApplePencil(true);
  fingerStroke(widget_, screen_, {{40, 40}, {80, 40}, {120, 40}});
  mouseStroke(widget_, {{40, 80}, {80, 80}, {120, 80}}, 1000);
  EXPECT_TRUE(strokes().empty());

  QPointingDevice* pen = makePen(501);
  penStroke(widget_, pen, {{{40, 150}}, {{80, 150}}, {{120, 152}}, {{160, 156}}}, 2000);
  EXPECT_EQ(strokes(), Trace({{{40, 150}, {80, 150}, {120, 152}, {160, 156}}}));
  EXPECT_EQ(log_.calls, Calls{"didEndLine 4"});
}

TEST_F(CaptureWidgetTest, PenPressureAndTiltReachTheStrokesAndTheRecord) {
  QPointingDevice* pen = makePen(502);
  // Upright; leaning 30 degrees towards x; leaning 45 degrees towards y.
  penStroke(widget_, pen, {{{60, 60}, 0.25, 0, 0}, {{100, 70}, 0.5, 30, 0}, {{140, 80}, 0.75, 0, 45}}, 5000);
  ASSERT_EQ(model().drawingArray()->size(), 1u);
  const QnStroke& stroke = *model().drawingArray()->front();
  ASSERT_EQ(stroke.size(), 3u);
  const float pressure[] = {0.25f, 0.5f, 0.75f};
  const double azimuth[] = {0, 0, M_PI / 2};
  const double altitude[] = {M_PI / 2, M_PI / 2 - M_PI / 6, M_PI / 4};
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(stroke[i].pressure, pressure[i]) << i;
    EXPECT_NEAR(stroke[i].azimuthAngle, azimuth[i], 1e-6) << i;
    EXPECT_NEAR(stroke[i].altitudeAngle, altitude[i], 1e-6) << i;
  }

  scrivlet_->done();
  ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has("didComplete"); }, 20000));
  ASSERT_TRUE(log_.records.back() && log_.records.back()->xmlString());
  QString xml = QString::fromStdString(*log_.records.back()->xmlString());
  auto values = [&](const QString& tag) {
    std::vector<int> found;
    QRegularExpression re("<" + tag + ">(-?\\d+)</" + tag + ">");
    for (auto it = re.globalMatch(xml); it.hasNext();) found.push_back(it.next().captured(1).toInt());
    return found;
  };
  // fmod(azimuth + pi/2, 0.63661975) in degrees: 17.05, 17.05, 34.10.
  EXPECT_EQ(values("sig:PenAzimuth"), (std::vector<int>{17, 17, 34}));
  EXPECT_EQ(values("sig:PenElevation"), (std::vector<int>{90, 60, 45}));
  // pressure x 19.6133 x 100: 490.33, 980.67, 1471.00 (1470.9975).
  EXPECT_EQ(values("sig:FChannel"), (std::vector<int>{490, 981, 1471}));
}

TEST_F(CaptureWidgetTest, HoveringPenDrawsNothing) {
  QPointingDevice* pen = makePen(503);
  penStroke(widget_, pen, {{{50, 60}}, {{90, 60}}, {{130, 60}}}, 100);
  Trace drawn = strokes();
  // Lifted, the pen hovers on from where it left the surface, then reports a release it never pressed.
  for (int i = 0; i < 4; ++i) sendTablet(widget_, pen, QEvent::TabletMove, {{130.0 + 20 * i, 60}, 0}, 200 + 10 * i);
  sendTablet(widget_, pen, QEvent::TabletRelease, {{190, 60}, 0}, 250);
  EXPECT_EQ(strokes(), drawn);
  EXPECT_EQ(log_.calls, Calls{"didEndLine 3"});
}

TEST_F(CaptureWidgetTest, MouseStrokeShowsInkAndTouchMadeMouseEventsAreIgnored) {
  std::vector<QPointF> path;
  for (int x = 60; x <= 340; x += 10) path.emplace_back(x, 60);
  mouseStroke(widget_, path, 1000);
  EXPECT_EQ(strokes(), traceOf(path));

  // Mouse events made up from a finger: the finger's own events already drew.
  sendMouse(widget_, QEvent::MouseButtonPress, {60, 150}, 3000, screen_);
  sendMouse(widget_, QEvent::MouseMove, {160, 150}, 3020, screen_);
  sendMouse(widget_, QEvent::MouseButtonRelease, {260, 150}, 3040, screen_);
  EXPECT_EQ(strokes(), traceOf(path));

  QImage shown = saveGrab(widget_, "mouse_stroke");
  ASSERT_EQ(shown.size(), QSize(400, 200));
  for (int x : {80, 200, 320}) EXPECT_TRUE(inked(shown, x, 60)) << x;
  EXPECT_FALSE(inked(shown, 200, 30));
  EXPECT_FALSE(inked(shown, 200, 150));  // where the made-up mouse events went
}

TEST_F(CaptureWidgetTest, ResizingKeepsTheInkOnTheGuideline) {
  mouseStroke(widget_, {{60, 100}, {120, 110}, {180, 120}, {240, 110}}, 1000);
  Trace before = strokes();
  auto guideline = scrivlet_->scrivletController()->guideline();
  // x = 400 x 0.05 / 2, y = 200 x 9 / 16, 0.95 taken in single precision.
  EXPECT_NEAR(guideline->frame().origin.x, 10.000002384185791, 1e-9);
  EXPECT_DOUBLE_EQ(guideline->frame().origin.y, 112.5);
  saveGrab(widget_, "before_resize");

  widget_->setGeometry(20, 20, 600, 300);
  EXPECT_NEAR(guideline->frame().origin.x, 15.000003576278687, 1e-9);
  EXPECT_DOUBLE_EQ(guideline->frame().origin.y, 168.75);
  EXPECT_NEAR(guideline->frame().size.width, 569.9999928474426, 1e-9);
  Trace after = strokes();
  ASSERT_EQ(after.size(), 1u);
  ASSERT_EQ(after[0].size(), before[0].size());
  for (size_t i = 0; i < after[0].size(); ++i) {
    EXPECT_NEAR(after[0][i].x() - before[0][i].x(), 5.000001192092896, 1e-9) << i;
    EXPECT_NEAR(after[0][i].y() - before[0][i].y(), 56.25, 1e-9) << i;
  }
  QImage shown = saveGrab(widget_, "after_resize");
  ASSERT_EQ(shown.size(), QSize(600, 300));
  EXPECT_TRUE(inked(shown, 125, 166));  // (120, 110) moved by (5, 56.25)
  EXPECT_FALSE(inked(shown, 120, 110));
}

TEST_F(CaptureWidgetTest, TouchLeavingTheWidgetOrCancelledKeepsFinishedStrokes) {
  // A finger that slides off the widget keeps drawing to where it lifts.
  EXPECT_NO_THROW(fingerStroke(widget_, screen_, {{350, 100}, {390, 100}, {430, 100}, {470, -10}}));
  Trace finished = {{{350, 100}, {390, 100}, {430, 100}, {470, -10}}};
  EXPECT_EQ(strokes(), finished);

  QTest::touchEvent(widget_, screen_, false).press(0, {50, 150}).commit();
  QTest::touchEvent(widget_, screen_, false).move(0, {90, 150}).commit();
  EXPECT_EQ(model().drawingArray()->size(), 2u);
  QTouchEvent cancel(QEvent::TouchCancel, screen_);
  EXPECT_NO_THROW(QCoreApplication::sendEvent(widget_, &cancel));
  EXPECT_EQ(strokes(), finished);
  EXPECT_FALSE(model().drawing());
  EXPECT_EQ(log_.calls, Calls{"didEndLine 4"});
}

TEST_F(CaptureWidgetTest, SecondPenAndProximityEventsChangeNothing) {
  QPointingDevice* first = makePen(504);
  QPointingDevice* second = makePen(505);
  EXPECT_NO_THROW({
    sendTablet(widget_, first, QEvent::TabletEnterProximity, {{0, 0}, 0}, 90);
    sendTablet(widget_, first, QEvent::TabletPress, {{100, 100}}, 100);
    sendTablet(widget_, first, QEvent::TabletMove, {{120, 100}}, 120);
    sendTablet(widget_, second, QEvent::TabletPress, {{300, 150}}, 130);
    sendTablet(widget_, second, QEvent::TabletMove, {{310, 150}}, 135);
    sendTablet(widget_, first, QEvent::TabletMove, {{140, 100}}, 140);
    sendTablet(widget_, first, QEvent::TabletRelease, {{160, 100}}, 160);
    sendTablet(widget_, second, QEvent::TabletRelease, {{320, 150}}, 170);
    sendTablet(widget_, first, QEvent::TabletLeaveProximity, {{0, 0}, 0}, 180);
  });
  EXPECT_EQ(strokes(), Trace({{{100, 100}, {120, 100}, {140, 100}, {160, 100}}}));
  EXPECT_EQ(log_.calls, Calls{"didEndLine 4"});
}

TEST_F(CaptureWidgetTest, HidingMidStrokeEndsAndKeepsTheStroke) {
  mouseStroke(widget_, {{40, 40}, {80, 40}}, 1000);
  sendMouse(widget_, QEvent::MouseButtonPress, {50, 150}, 2000);
  sendMouse(widget_, QEvent::MouseMove, {90, 150}, 2020);
  EXPECT_NO_THROW(widget_->hide());
  // The open stroke ends where the pointer last was.
  EXPECT_EQ(strokes(), Trace({{{40, 40}, {80, 40}}, {{50, 150}, {90, 150}, {90, 150}}}));
  EXPECT_FALSE(model().drawing());

  widget_->show();
  Trace kept = strokes();
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseButtonRelease, {120, 150}, 2040));
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseButtonRelease, {200, 20}, 3000));
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseMove, {210, 20}, 3020));
  EXPECT_EQ(strokes(), kept);
  EXPECT_EQ(log_.calls, (Calls{"didEndLine 2", "didEndLine 5"}));
}

}  // namespace
}  // namespace scrivlet

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  scrivlet::installQtPlatform();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
