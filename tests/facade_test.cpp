// The facade in a host's view and as a modal screen, the modal screen's prompt and buttons, and the
// version symbols.
#include <scrivlet/device.h>
#include <scrivlet/facade.h>
#include <scrivlet/navigation_controller.h>
#include <scrivlet/popup.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/version.h>

#include "capture/drawing_controller.h"
#include "delegate_log.h"
#include "platform/headless/headless_touch.h"
#include "platform/image.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace scrivlet {
namespace {

using test_support::DelegateLog;
using test_support::Trace;
using test_support::traceOf;
using Calls = std::vector<std::string>;

// Touch phases on a plain view as a screen reports them: each event holds every touch that is down.
class Fingers {
 public:
  explicit Fingers(std::shared_ptr<QnView> view) : view_(std::move(view)) {}
  void deliver(QnTouchPhase phase, const QnTouchSet& touches) {
    for (const auto& t : touches)
      if (std::find(down_.begin(), down_.end(), t) == down_.end()) down_.push_back(t);
    view_->deliverTouches(phase, touches, QnEvent(down_));
    if (phase == QnTouchPhase::ended || phase == QnTouchPhase::cancelled)
      for (const auto& t : touches) down_.erase(std::find(down_.begin(), down_.end(), t));
  }
  void stroke(const std::vector<QnPoint>& points, double t) {
    auto f = std::make_shared<HeadlessTouch>(points.front(), t);
    deliver(QnTouchPhase::began, {f});
    for (size_t i = 1; i < points.size(); ++i) {
      f->moveTo(points[i], t + 0.01 * static_cast<double>(i));
      deliver(QnTouchPhase::moved, {f});
    }
    deliver(QnTouchPhase::ended, {f});
  }
  // Three fingers land together, travel sideways in two steps of dx / 2, and lift.
  void swipe(double dx, double t) {
    QnTouchSet three;
    for (double x : {150.0, 170.0, 190.0}) three.push_back(std::make_shared<HeadlessTouch>(QnPoint{x, 150}, t));
    deliver(QnTouchPhase::began, three);
    for (int step = 1; step <= 2; ++step) {
      for (const auto& f : three)
        static_cast<HeadlessTouch&>(*f).moveTo({f->locationInView(nullptr).x + dx / 2, 150}, t + 0.01 * step);
      deliver(QnTouchPhase::moved, three);
    }
    deliver(QnTouchPhase::ended, three);
  }

 private:
  std::shared_ptr<QnView> view_;
  QnTouchSet down_;
};

class Facade : public ::testing::Test {
 protected:
  void SetUp() override {
    QnDevice::resetToDefaults();
    loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual);
    QnScheduler::setCurrent(loop);
    log.delegate->presentViewControllerAnimatedCompletion = [this](auto container, bool animated,
                                                                   auto completion) {
      log.note(animated ? "present animated" : "present");
      presented = container;
      screenWiredWhenPresented = container->rootViewController()->delegate() != nullptr;
      QnNavigationController::DismissHandler handler;
      if (handleDismissal)
        handler = [this](bool animated, std::function<void()> done) {
          log.note(animated ? "dismiss animated" : "dismiss");
          dismissed = std::move(done);
        };
      container->setPresented(true, handler);
      if (completion) completion();
    };
  }
  void TearDown() override {
    facade.reset();
    QnScheduler::setCurrent(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime));
    QnDevice::resetToDefaults();
  }
  void makeModal(std::optional<std::string> prompt = std::nullopt) {
    facade = QnScrivlet::scrivletWithDelegateModalDisplayString(log.delegate, std::move(prompt));
    log.facade = facade;
    screen = facade->modalController();
  }
  void tap(const std::string& title) {
    for (const QnBarButtonItem& item : screen->toolbarItems())
      if (item.title == title && item.action) return item.action();
    ADD_FAILURE() << "no button " << title;
  }

  std::shared_ptr<HeadlessRunLoop> loop;
  DelegateLog log;
  std::shared_ptr<QnScrivlet> facade;
  std::shared_ptr<QnScrivletPopup> screen;
  std::shared_ptr<QnNavigationController> presented;
  bool screenWiredWhenPresented = false;
  bool handleDismissal = true;
  std::function<void()> dismissed;
};

class ModalScreen : public Facade {};

TEST_F(Facade, FreshFacadeReportsOnlyWhatTheHostSetWhileTheControllerUsesItsDefaults) {
  auto view = std::make_shared<QnView>(makeRect(0, 0, 540, 527));
  facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
  EXPECT_FALSE(facade->showGuideline() || facade->showDate() || facade->dateIncludesTime() ||
               facade->showHash() || facade->swipeToUndoEnabled() || facade->clipSignatureToBounds() ||
               facade->drawOnlyWithApplePencil() || facade->useCalligraphicBrush());
  EXPECT_EQ(facade->strokeWidth(), 0.0f);
  EXPECT_EQ(facade->velocityReduction(), 0.0f);
  EXPECT_EQ(facade->exportScale(), 0.0f);
  EXPECT_FALSE(facade->strokeColor());
  EXPECT_FALSE(facade->customHash());
  const auto& c = facade->scrivletController();
  ASSERT_TRUE(c);
  EXPECT_TRUE(c->showGuideline());
  EXPECT_TRUE(c->swipeToUndoEnabled());
  EXPECT_EQ(c->strokeWidthMax(), 4.0f);
  EXPECT_EQ(c->strokeExportColor(), QnColor::black());
  // In-view use: the host's view, the facade as manager, nothing modal and nothing presented.
  EXPECT_EQ(c->scrivletView(), view);
  EXPECT_EQ(c->manager(), facade);
  EXPECT_EQ(c->delegate(), log.delegate);
  EXPECT_FALSE(facade->modalController());
  EXPECT_FALSE(facade->modalContainer());
  EXPECT_TRUE(log.calls.empty());
}

TEST_F(Facade, EverySetterKeepsItsValueAndForwardsItToTheController) {
  facade = QnScrivlet::scrivletWithViewDelegate(std::make_shared<QnView>(makeRect(0, 0, 300, 200)),
                                                log.delegate);
  const auto& c = facade->scrivletController();
  struct Flag {
    const char* name;
    void (QnScrivlet::*set)(bool);
    bool (QnScrivlet::*get)() const;
    bool (QnScrivletController::*controllerGet)() const;
  };
  const Flag flags[] = {
      {"showGuideline", &QnScrivlet::setShowGuideline, &QnScrivlet::showGuideline, &QnScrivletController::showGuideline},
      {"showDate", &QnScrivlet::setShowDate, &QnScrivlet::showDate, &QnScrivletController::showDate},
      {"dateIncludesTime", &QnScrivlet::setDateIncludesTime, &QnScrivlet::dateIncludesTime, &QnScrivletController::dateIncludesTime},
      {"showHash", &QnScrivlet::setShowHash, &QnScrivlet::showHash, &QnScrivletController::showHash},
      {"swipeToUndoEnabled", &QnScrivlet::setSwipeToUndoEnabled, &QnScrivlet::swipeToUndoEnabled, &QnScrivletController::swipeToUndoEnabled},
      {"clipSignatureToBounds", &QnScrivlet::setClipSignatureToBounds, &QnScrivlet::clipSignatureToBounds, &QnScrivletController::clipSignatureToBounds},
      {"drawOnlyWithApplePencil", &QnScrivlet::setDrawOnlyWithApplePencil, &QnScrivlet::drawOnlyWithApplePencil, &QnScrivletController::drawOnlyWithApplePencil},
      {"useCalligraphicBrush", &QnScrivlet::setUseCalligraphicBrush, &QnScrivlet::useCalligraphicBrush, &QnScrivletController::useCalligraphicBrush},
  };
  for (const Flag& flag : flags) {
    SCOPED_TRACE(flag.name);
    // The opposite of the controller's default, so that forwarding shows.
    bool value = !((*c).*flag.controllerGet)();
    ((*facade).*flag.set)(value);
    EXPECT_EQ(((*facade).*flag.get)(), value);
    EXPECT_EQ(((*c).*flag.controllerGet)(), value);
  }
  EXPECT_TRUE(c->guideline()->isHidden());
  EXPECT_TRUE(c->drawingController()->useCalligraphicBrush());

  facade->setStrokeWidth(7.5f);
  EXPECT_EQ(facade->strokeWidth(), 7.5f);
  EXPECT_EQ(c->strokeWidthMax(), 7.5f);
  EXPECT_EQ(c->drawingController()->strokeWidthMax(), 7.5f);
  facade->setVelocityReduction(0.5f);
  EXPECT_EQ(facade->velocityReduction(), 0.5f);
  EXPECT_EQ(c->velocityReduction(), 0.5f);
  facade->setExportScale(3);
  EXPECT_EQ(facade->exportScale(), 3.0f);
  EXPECT_EQ(c->exportScale(), 3.0f);
  const QnColor red(1, 0, 0, 1);
  facade->setStrokeColor(red);
  EXPECT_EQ(facade->strokeColor(), red);
  EXPECT_EQ(c->strokeExportColor(), red);
  EXPECT_EQ(c->drawingController()->canvasView()->strokeColor(), red);
  facade->setCustomHash("CAFE");
  EXPECT_EQ(facade->customHash(), "CAFE");
  EXPECT_EQ(c->customHash(), "CAFE");
}

TEST_F(ModalScreen, ModalUseBuildsTheScreenAndAsksTheDelegateToPresentIt) {
  // The view argument is ignored in modal use.
  auto hostView = std::make_shared<QnView>(makeRect(0, 0, 800, 600));
  facade = QnScrivlet::initWithViewDelegateModalModalDisplayString(hostView, log.delegate, true, std::nullopt);
  screen = facade->modalController();
  ASSERT_TRUE(screen);
  EXPECT_EQ(log.calls, (Calls{"present animated"}));
  EXPECT_TRUE(screenWiredWhenPresented);
  const auto& container = facade->modalContainer();
  ASSERT_TRUE(container);
  EXPECT_EQ(presented, container);
  EXPECT_EQ(container->rootViewController(), screen);
  EXPECT_TRUE(container->isNavigationBarHidden());
  EXPECT_FALSE(container->isToolbarHidden());
  EXPECT_EQ(container->modalPresentationStyle(), 2);
  EXPECT_EQ(container->backgroundColor(), QnColor::white());

  EXPECT_EQ(screen->view()->frame(), makeRect(0, 0, 350, 200));
  EXPECT_EQ(screen->view()->autoresizingMask(), 18);
  const auto& items = screen->toolbarItems();
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(items[0].title, "Cancel");
  EXPECT_EQ(items[0].style, 0);
  EXPECT_EQ(items[1].title, "Clear");
  EXPECT_EQ(items[1].style, 0);
  EXPECT_TRUE(items[2].flexibleSpace);
  EXPECT_EQ(items[3].title, "Done");
  EXPECT_EQ(items[3].style, 2);
  EXPECT_TRUE(items[0].action && items[1].action && items[3].action);
  EXPECT_FALSE(items[0].flexibleSpace || items[1].flexibleSpace || items[3].flexibleSpace);

  const auto& c = facade->scrivletController();
  EXPECT_EQ(c->scrivletView(), screen->view());
  EXPECT_EQ(screen->delegate(), c);
  EXPECT_EQ(c->manager(), facade);
  EXPECT_EQ(c->delegate(), log.delegate);
  EXPECT_TRUE(hostView->subviews().empty());
  EXPECT_FALSE(screen->modalDisplayString());
  EXPECT_FALSE(screen->promptLabel());
  EXPECT_EQ(screen->view()->subviews().size(), 2u);  // the guideline and the ink
  for (int orientation : {0, 1, 2, 3, 4, 99}) EXPECT_TRUE(screen->shouldAutorotateToInterfaceOrientation(orientation));

  QnDevice::setUserInterfaceIdiom(kQnUserInterfaceIdiomPad);
  makeModal();
  EXPECT_EQ(screen->view()->frame(), makeRect(0, 0, 540, 527));
  QnDevice::setReportsUserInterfaceIdiom(false);
  makeModal();
  EXPECT_EQ(screen->view()->frame(), makeRect(0, 0, 350, 200));
}

// The height of the text wrapped to the width at a size, as a label measures it.
double wrappedHeight(const std::string& text, double width, double size) {
  auto label = std::make_shared<QnLabel>(makeRect(0, 0, width, 10));
  label->setNumberOfLines(0);
  label->setText(text);
  label->setFontSize(size);
  label->sizeToFit();
  return label->frame().size.height;
}

TEST_F(ModalScreen, ThePromptTakesTheLargestSizeThatFitsTheUpperThird) {
  std::string endless;
  for (int i = 0; i < 300; ++i) endless += "signature ";
  struct Case {
    const char* name;
    int idiom;
    std::string prompt;
    int minSize, maxSize;  // the range the case is meant to land in
  };
  const Case cases[] = {
      {"short, phone", 0, "Please sign below", 20, 20},
      {"short, pad", 1, "Please sign below", 20, 20},
      {"long, phone", 0,
       "By signing you agree to the terms and conditions of this rental agreement and confirm that "
       "the details above are correct.",
       7, 19},
      {"endless, phone", 0, endless, 6, 6},
  };
  for (const Case& k : cases) {
    SCOPED_TRACE(k.name);
    QnDevice::setUserInterfaceIdiom(k.idiom);
    makeModal(k.prompt);
    double w = screen->view()->frame().size.width, h = screen->view()->frame().size.height;
    const auto& label = screen->promptLabel();
    ASSERT_TRUE(label);
    ASSERT_FALSE(screen->view()->subviews().empty());
    EXPECT_EQ(screen->view()->subviews()[0], label);
    EXPECT_EQ(label->text(), k.prompt);
    EXPECT_EQ(label->numberOfLines(), 0);
    EXPECT_EQ(label->lineBreakMode(), kQnLineBreakByWordWrapping);
    EXPECT_EQ(label->textAlignment(), kQnTextAlignmentCenter);
    EXPECT_EQ(label->textColor(), QnColor(1.0 / 3.0, 1.0));
    EXPECT_EQ(label->autoresizingMask(), 50);
    // The largest whole size from 20 down whose wrapped height is below a third; else 6.
    int expected = 20;
    while (expected > 6 && !(wrappedHeight(k.prompt, w * 0.9, expected) < h / 3)) --expected;
    ASSERT_GE(expected, k.minSize);
    ASSERT_LE(expected, k.maxSize);
    EXPECT_EQ(label->fontSize(), expected);
    double height = wrappedHeight(k.prompt, w * 0.9, expected);
    EXPECT_EQ(label->frame(), makeRect(w * 0.09999999999999998 * 0.5, h / 15, w * 0.9, height));
    if (k.minSize == 6) {
      EXPECT_GE(height, h / 3);
    }
    QnDevice::resetToDefaults();
  }
}

TEST_F(Facade, ModalSigningSessionDeliversAValidRecordAfterDone) {
  makeModal();
  Fingers fingers(screen->view());
  fingers.stroke({{60, 80}, {110, 100}, {160, 90}}, 1);
  fingers.stroke({{200, 60}, {230, 120}}, 2);
  loop->advance(0.25);
  loop->runUntilIdle();
  const auto& model = *facade->scrivletController()->drawingController();
  fingers.swipe(-60, 3);
  EXPECT_EQ(model.drawingArray()->size(), 1u);
  fingers.swipe(+60, 4);
  EXPECT_EQ(model.drawingArray()->size(), 2u);

  tap("Done");
  EXPECT_EQ(log.calls, (Calls{"present animated", "didEndLine 4", "didEndLine 7", "willComplete #1",
                              "dismiss animated"}));
  EXPECT_FALSE(presented->isPresented());
  ASSERT_TRUE(dismissed);
  dismissed();
  ASSERT_EQ(log.calls.size(), 6u);
  EXPECT_EQ(log.calls[5], "didComplete #1");

  const auto& record = log.record(1);
  EXPECT_EQ(traceOf(record->rawPoints()),
            (Trace{{{60, 80}, {110, 100}, {160, 90}, {160, 90}}, {{200, 60}, {230, 120}, {230, 120}}}));
  ASSERT_TRUE(record->imageData() && record->pdfData() && record->svgString() && record->xmlString());
  EXPECT_FALSE(QnImage::decodePNG(*record->imageData()).isNull());
  for (const char* tool : {"qpdf", "xmllint"})
    ASSERT_EQ(std::system((std::string("command -v ") + tool + " > /dev/null").c_str()), 0) << tool << " is missing";
  std::filesystem::path dir = std::filesystem::path(SCRIVLET_TEST_OUTPUT_DIR) / "facade";
  std::filesystem::create_directories(dir);
  auto save = [&dir](const std::string& name, const std::string& bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    return (dir / name).string();
  };
  std::string pdf = save("session.pdf", {record->pdfData()->begin(), record->pdfData()->end()});
  std::string svg = save("session.svg", *record->svgString());
  std::string xml = save("session.xml", *record->xmlString());
  EXPECT_EQ(std::system(("qpdf --check '" + pdf + "' > /dev/null").c_str()), 0);
  EXPECT_EQ(std::system(("xmllint --noout '" + svg + "'").c_str()), 0);
  EXPECT_EQ(std::system(("xmllint --noout '" + xml + "'").c_str()), 0);
}

TEST_F(ModalScreen, ClearEmptiesTheCanvasAndKeepsTheScreenOpen) {
  makeModal();
  Fingers(screen->view()).stroke({{60, 80}, {110, 100}}, 1);
  tap("Clear");
  EXPECT_EQ(facade->scrivletController()->numberOfPointsInCurrentSignature(), 0u);
  EXPECT_TRUE(presented->isPresented());
  loop->runPostedTasks();
  EXPECT_EQ(log.calls, (Calls{"present animated", "didEndLine 3"}));
}

TEST_F(ModalScreen, CancelClosesTheScreenThenReportsTheCancellation) {
  makeModal();
  tap("Cancel");
  EXPECT_FALSE(presented->isPresented());
  EXPECT_EQ(log.calls, (Calls{"present animated", "dismiss animated"}));
  ASSERT_TRUE(dismissed);
  dismissed();
  EXPECT_EQ(log.calls, (Calls{"present animated", "dismiss animated", "cancel"}));
}

TEST_F(ModalScreen, DoneOnAnEmptyCanvasReportsNoSignatureOnceTheScreenHasClosed) {
  handleDismissal = false;  // the container closes as the next main-thread task
  makeModal();
  tap("Done");
  EXPECT_FALSE(presented->isPresented());
  EXPECT_EQ(log.calls, (Calls{"present animated"}));
  loop->runPostedTasks();
  EXPECT_EQ(log.calls, (Calls{"present animated", "noSignature"}));
}

TEST_F(Facade, VersionSymbols) {
  EXPECT_EQ(std::string(QnScrivletVersionString), "@(#)PROGRAM:QnScrivlet  PROJECT:QnScrivlet-1\n");
  EXPECT_EQ(QnScrivletVersionNumber, 1.0);
}

}  // namespace
}  // namespace scrivlet
