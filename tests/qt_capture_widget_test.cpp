// The capture widget on the offscreen platform: fingers' strokes and gestures (swipes that undo and
// redo, a third finger that cancels), repainting a part, and odd input that loses nothing. (A finger,
// a pen and the mouse through the platform's path, stylus-only mode and resizing: the pads' tests,
// whose surface is this widget.) Also the tests' main.
#include "platform/image_view.h"
#include <scrivlet/qt_platform.h>

#include "qt_input.h"

#include <QApplication>

namespace scrivlet {
namespace {

using namespace qt_test;

class CaptureWidgetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    window_.resize(660, 360), widget_->setGeometry(20, 20, 400, 200);
    widget_->setAutoFillBackground(true), widget_->setPalette(QPalette(Qt::black, Qt::white));
    log_.facade = scrivlet_ = QnScrivlet::scrivletWithViewDelegate(widget_->view(), log_.delegate);
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
  }
  QnDemoDrawingController& model() { return *scrivlet_->scrivletController()->drawingController(); }
  Trace strokes() { return traceOf(model().drawingArray()); }
  // Fingers pressed on the paths' first points, moved through the others, lifted on the last.
  void fingers(const Trace& paths) {
    auto seq = QTest::touchEvent(widget_, screen_, false);
    for (size_t i = 0; i < paths[0].size(); ++i, seq.commit())
      for (int k = 0; k < int(paths.size()); ++k) {
        QPoint at(paths[k][i].first, paths[k][i].second);
        i == 0 ? seq.press(k, at) : i + 1 == paths[0].size() ? seq.release(k, at) : seq.move(k, at);
      }
  }

  QWidget window_;
  QnQtCaptureWidget* widget_ = new QnQtCaptureWidget(&window_);
  QPointingDevice* screen_ = QTest::createTouchDevice();
  DelegateLog log_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

TEST_F(CaptureWidgetTest, FingerStrokesThreeFingerSwipesAndAThirdFingerCancellingTheStrokeInProgress) {
  const Path first = {{40, 60}, {80, 62}, {120, 66}, {160, 72}, {200, 80}}, second = {{200, 130}, {280, 150}};
  for (const Path& p : {first, second}) fingers({p});
  EXPECT_EQ(std::pair(strokes(), log_.calls), std::pair(Trace{first, second}, Calls{"didEndLine 5", "didEndLine 7"}));
  // A finger has no force: the points carry none, and an upright pen's angles.
  for (const QnSignaturePoint& p : *model().drawingArray()->front())
    EXPECT_EQ(std::pair(p.pressure, p.altitudeAngle), std::pair(0.0f, float(M_PI / 2)));
  // Three fingers land together, move sideways by dx in each of two steps, and lift there: left undoes, right redoes.
  for (auto [dx, expected] : {std::pair(-30.0, Trace{first}), std::pair(30.0, Trace{first, second})}) {
    Trace three;
    for (double x : {150, 180, 210}) three.push_back({{x, 40}, {x + dx, 40}, {x + 2 * dx, 40}, {x + 2 * dx, 40}});
    fingers(three);
    EXPECT_EQ(strokes(), expected);
  }
  // A third finger cancels the stroke in progress. One sequence, so that fingers left alone are reported where they are.
  auto seq = QTest::touchEvent(widget_, screen_, false);
  seq.press(0, {50, 150}).commit();
  seq.move(0, {90, 150}).commit();
  seq.stationary(0).press(1, {300, 40}).commit();  // a second finger changes nothing
  seq.move(0, {130, 150}).stationary(1).commit();
  EXPECT_EQ(strokes(), (Trace{first, second, {{50, 150}, {90, 150}, {130, 150}}}));
  seq.stationary(0).stationary(1).press(2, {320, 40}).commit();
  EXPECT_FALSE(model().drawing());
  seq.release(0, {130, 150}).release(1, {300, 40}).release(2, {320, 40}).commit();
  EXPECT_EQ(strokes(), (Trace{first, second}));
}

TEST_F(CaptureWidgetTest, ARepaintOfADirtyRectangleShowsWhatAWholeRepaintShowsThere) {
  mouseStroke(widget_, {{60, 100}, {120, 140}, {180, 90}, {240, 150}, {300, 120}}, 1000);
  QImage whole = widget_->grab().toImage();
  // Rectangles across the ink, the guideline and the edges; grabbing one paints that region alone.
  for (QRect area : {QRect(55, 95, 30, 30), QRect(101, 117, 57, 41), QRect(0, 0, 400, 200), QRect(370, 150, 30, 50),
                     QRect(10, 105, 380, 20)}) {
    QImage part = widget_->grab(area).toImage();
    ASSERT_EQ(part.size(), area.size());
    EXPECT_EQ(part.convertToFormat(QImage::Format_ARGB32), whole.copy(area).convertToFormat(QImage::Format_ARGB32))
        << area.x() << "," << area.y();
  }
  ASSERT_TRUE(inked(whole, 90, 120));  // the comparison covers ink
}

TEST_F(CaptureWidgetTest, UnexpectedInputThrowsNothingAndKeepsFinishedStrokes) {
  // A finger that slides off the widget keeps drawing to where it lifts.
  const Path slide = {{350, 100}, {390, 100}, {430, 100}, {470, -10}};
  EXPECT_NO_THROW(fingers({slide}));
  QTest::touchEvent(widget_, screen_, false).press(0, {50, 150}).commit();
  QTest::touchEvent(widget_, screen_, false).move(0, {90, 150}).commit();
  QTouchEvent cancel(QEvent::TouchCancel, screen_);
  EXPECT_NO_THROW(QCoreApplication::sendEvent(widget_, &cancel));
  // A pen hovers on from where it left the surface, then reports a release it never pressed.
  QPointingDevice *first = makePen(504), *second = makePen(505);
  penStroke(widget_, first, {{{50, 60}}, {{90, 60}}, {{130, 60}}}, 10);
  for (int i = 0; i < 4; ++i) sendTablet(widget_, first, QEvent::TabletMove, {{130.0 + 20 * i, 60}, 0}, 60 + 5 * i);
  sendTablet(widget_, first, QEvent::TabletRelease, {{190, 60}, 0}, 85);
  // A second pen joins mid-stroke, between proximity changes.
  const std::tuple<QPointingDevice*, QEvent::Type, double, double> events[] = {
      {first, QEvent::TabletEnterProximity, 0, 0}, {first, QEvent::TabletPress, 100, 100},
      {first, QEvent::TabletMove, 120, 100},       {second, QEvent::TabletPress, 300, 150},
      {second, QEvent::TabletMove, 310, 150},      {first, QEvent::TabletMove, 140, 100},
      {first, QEvent::TabletRelease, 160, 100},    {second, QEvent::TabletRelease, 320, 150},
      {first, QEvent::TabletLeaveProximity, 0, 0}};
  quint64 ms = 90;
  for (const auto& [pen, type, x, y] : events) EXPECT_NO_THROW(sendTablet(widget_, pen, type, {{x, y}}, ms += 10));
  // Hidden mid-stroke, the open stroke ends where the pointer last was; stray releases and moves draw nothing.
  sendMouse(widget_, QEvent::MouseButtonPress, {50, 150}, 2000), sendMouse(widget_, QEvent::MouseMove, {90, 150}, 2020);
  EXPECT_NO_THROW(widget_->hide());
  EXPECT_FALSE(model().drawing());
  widget_->show();
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseButtonRelease, {120, 150}, 2040));
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseButtonRelease, {200, 20}, 3000));
  EXPECT_NO_THROW(sendMouse(widget_, QEvent::MouseMove, {210, 20}, 3020));
  // Mouse events made up from a finger draw nothing: the finger's own events already drew.
  sendMouse(widget_, QEvent::MouseButtonPress, {60, 170}, 4000, screen_);
  sendMouse(widget_, QEvent::MouseMove, {160, 170}, 4020, screen_);
  sendMouse(widget_, QEvent::MouseButtonRelease, {260, 170}, 4040, screen_);
  EXPECT_EQ(strokes(), (Trace{slide, {{50, 60}, {90, 60}, {130, 60}}, {{100, 100}, {120, 100}, {140, 100}, {160, 100}},
                              {{50, 150}, {90, 150}, {90, 150}}}));
  EXPECT_EQ(log_.calls, (Calls{"didEndLine 4", "didEndLine 7", "didEndLine 11", "didEndLine 14"}));
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
