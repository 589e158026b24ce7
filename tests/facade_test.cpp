// The facade in a host's view and as a modal screen, and the modal screen's prompt and buttons.
#include <scrivlet/engine/context.h>
#include <scrivlet/headless_run_loop.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/navigation_controller.h>
#include <scrivlet/popup.h>

#include "delegate_log.h"
#include "output_support.h"

#include <gtest/gtest.h>

namespace scrivlet {
namespace {

using namespace test_support;

class Facade : public ::testing::Test {
 protected:
  void SetUp() override {
    log.delegate->presentViewControllerAnimatedCompletion = [this](auto container, bool animated, auto completion) {
      log.calls.push_back(animated ? "present animated" : "present"), presented = container;
      container->setPresented(true, dismissal);
      if (completion) completion();
    };
  }
  void makeModal(std::optional<std::string> prompt = std::nullopt) {
    log.calls.clear(), log.facade = facade = QnScrivlet::scrivletWithDelegateModalDisplayString(log.delegate, prompt);
    screen = facade->modalController();
  }
  void tap(const std::string& title) {
    for (const QnBarButtonItem& item : screen->toolbarItems())
      if (item.title == title && item.action) return item.action();
    ADD_FAILURE() << "no button " << title;
  }
  void finishDismissal() { ASSERT_TRUE(dismissed); std::exchange(dismissed, nullptr)(); }

  ManualLoop manual;
  DelegateLog log;
  std::shared_ptr<QnScrivlet> facade;
  std::shared_ptr<QnScrivletPopup> screen;
  std::shared_ptr<QnNavigationController> presented;
  std::function<void()> dismissed;
  QnNavigationController::DismissHandler dismissal = [this](bool animated, std::function<void()> done) {
    log.calls.push_back(animated ? "dismiss animated" : "dismiss"), dismissed = std::move(done);
  };  // the host's: without one the container closes as the next main-thread task
};

TEST_F(Facade, ModalScreenButtonsCloseItBeforeTheDelegateHearsAndDoneDeliversAValidRecord) {
  auto hostView = std::make_shared<QnView>(makeRect(0, 0, 800, 600));  // ignored in modal use
  log.facade = facade = QnScrivlet::initWithViewDelegateModalModalDisplayString(hostView, log.delegate, true, {});
  screen = facade->modalController();
  ASSERT_TRUE(screen && presented == facade->modalContainer() && hostView->subviews().empty());
  touchPaths(*screen->view(), {{{60, 80}, {110, 100}, {160, 90}}}, 1);
  touchPaths(*screen->view(), {{{200, 60}, {230, 120}}}, 2);
  manual.loop->advance(0.25), manual.loop->runUntilIdle();
  tap("Done");  // the record follows the dismissal
  EXPECT_EQ(std::pair(presented->isPresented(), log.calls.back()), std::pair(false, std::string("dismiss animated")));
  finishDismissal();
  ASSERT_EQ(log.calls, (Calls{"present animated", "didEndLine 4", "didEndLine 7", "willComplete #1",
                              "dismiss animated", "didComplete #1"}));
  const auto& record = log.records.at(0);
  EXPECT_EQ(traceOf(record->rawPoints()),
            (Trace{{{60, 80}, {110, 100}, {160, 90}, {160, 90}}, {{200, 60}, {230, 120}, {230, 120}}}));
  // Every part (each checked by its readers: export_renderer_test.cpp and time_series_export_test.cpp).
  EXPECT_TRUE(record->imageData() && record->pdfData() && record->svgString() && record->xmlString());
  // Clear and Cancel on a new screen; Done on an empty one.
  makeModal();
  touchPaths(*screen->view(), {{{60, 80}, {110, 100}}}, 1);
  tap("Clear");  // empties the canvas, keeps the screen, and tells nobody
  EXPECT_TRUE(facade->scrivletController()->numberOfPointsInCurrentSignature() == 0 && presented->isPresented());
  manual.loop->runPostedTasks();
  tap("Cancel");  // closes the screen, then reports the cancellation
  EXPECT_EQ(std::pair(presented->isPresented(), log.calls),
            std::pair(false, Calls{"present animated", "didEndLine 3", "dismiss animated"}));
  finishDismissal();
  EXPECT_EQ(log.calls.back(), "cancel");
  dismissal = nullptr;
  makeModal();
  tap("Done");  // on an empty canvas: no signature, once the screen has closed
  EXPECT_EQ(std::pair(presented->isPresented(), log.calls), std::pair(false, Calls{"present animated"}));
  manual.loop->runPostedTasks();
  EXPECT_EQ(log.calls, (Calls{"present animated", "noSignature"}));
  // A screen whose controller has a context of its own closes on that context's loop.
  makeModal();
  auto own = QnContext::create();
  auto ownLoop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
  own->setScheduler(ownLoop);
  facade->scrivletController()->setContext(own);
  tap("Cancel");
  manual.loop->runPostedTasks();
  EXPECT_EQ(log.calls, (Calls{"present animated"}));
  ownLoop->runPostedTasks();
  EXPECT_EQ(log.calls, (Calls{"present animated", "cancel"}));
}

TEST_F(Facade, APresenterThatHoldsTheOwnerKeepsAModalFacadeAliveUntilItsOwedAnswerIsGiven) {
  QnNavigationController::Hold hold;
  log.delegate->presentViewControllerAnimatedCompletion = [&](auto container, bool, auto) {
    presented = container, hold = container->holdOwner();
    container->setPresented(true, [&](bool, std::function<void()> completion) {
      manual.loop->postToMainThread([completion, hold = std::exchange(hold, nullptr)] { completion(); });
    });
  };
  makeModal();
  std::weak_ptr<QnScrivlet> weak = std::exchange(facade, nullptr);
  touchPaths(*screen->view(), {{{60, 80}, {110, 100}}}, 1);
  tap("Done");  // within the delay before preparing: the record is owed once the screen has gone
  manual.loop->runPostedTasks();
  EXPECT_TRUE(!weak.expired() && log.calls == (Calls{"didEndLine 3"}));
  manual.loop->advance(0.25), manual.loop->runUntilIdle(), manual.loop->advance(0.25);
  EXPECT_EQ(log.calls, (Calls{"didEndLine 3", "willComplete #1", "didComplete #1"}));  // from the facade
  EXPECT_TRUE(weak.expired());
}

// Pixels with any ink: not transparent in the PNG and the SVG's picture, not white on the PDF's page.
int inkedPixels(const QnImage& image, bool onWhite) {
  return countPixels(image, [onWhite](QnImage::Pixel p, int) {
    return onWhite ? p.r < 255 || p.g < 255 || p.b < 255 : p.a > 0;
  });
}

// A pen of width 0 inks nothing, and every output says so alike: in a PDF a line width of 0 would
// otherwise mean the thinnest line the reader can draw.
TEST_F(Facade, APenOfWidthZeroInksNoOutputAndAnOrdinaryPenInksEvery) {
  for (float width : {0.0f, 4.0f}) {
    SCOPED_TRACE(testing::Message() << "pen width " << width);
    auto view = HeadlessView::create(makeRect(0, 0, 300, 200));
    log.facade = facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
    facade->setStrokeWidth(width);
    touchPaths(*view, {{{40, 60}, {80, 90}, {140, 70}, {200, 120}, {230, 100}}}, 1);
    touchPaths(*view, {{{60, 140}}}, 2);  // a tap
    manual.loop->advance(0.25), manual.loop->runUntilIdle();
    log.records.clear(), facade->done(nullptr);
    ASSERT_EQ(log.records.size(), 1u);
    const QnSignature& record = *log.records[0];
    ASSERT_TRUE(record.imageData() && record.pdfData() && record.svgString());
    const std::string name = "facade/pen" + std::to_string(int(width));
    const std::string pdf = writeOutput(name + ".pdf", *record.pdfData());
    const std::string svg = writeOutput(name + ".svg", *record.svgString());
    const int png = inkedPixels(QnImage::decodePNG(*record.imageData()), false);
    const int page = inkedPixels(pdfPageImage(pdf), true), picture = inkedPixels(svgImage(svg), false);
    if (width == 0)
      EXPECT_EQ(std::tuple(png, page, picture), std::tuple(0, 0, 0));
    else
      EXPECT_TRUE(png > 500 && page > 500 && picture > 500) << png << " " << page << " " << picture;
  }
}

TEST_F(Facade, TheScreenSuitsTheDeviceAndThePromptShrinksUntilItFitsTheUpperThird) {
  std::string sign = "Please sign below", endless, terms = "By signing you agree to the terms and conditions of "
                     "this rental agreement and confirm that the details above are correct.";
  for (int i = 0; i < 300; ++i) endless += "signature ";
  // Idiom (-1: none reported), prompt, the screen's size and the font sizes it may take: 20 when it
  // fits, a smaller one whose wrapped text fits the upper third, 6 at the least.
  for (const auto& [idiom, prompt, w, h, lo, hi] :
       {std::tuple(0, sign, 350.0, 200.0, 20, 20), std::tuple(1, sign, 540.0, 527.0, 20, 20),
        std::tuple(0, terms, 350.0, 200.0, 7, 19), std::tuple(0, endless, 350.0, 200.0, 6, 6),
        std::tuple(-1, sign, 350.0, 200.0, 20, 20)}) {
    SCOPED_TRACE(prompt.substr(0, 30) + ", idiom " + std::to_string(idiom));
    idiom < 0 ? QnDevice::setReportsUserInterfaceIdiom(false) : QnDevice::setUserInterfaceIdiom(idiom);
    makeModal(prompt);
    EXPECT_EQ(screen->view()->frame(), makeRect(0, 0, w, h));
    const auto& label = screen->promptLabel();
    ASSERT_EQ(screen->view()->subviews().at(0), label);
    EXPECT_EQ(label->text(), prompt);
    EXPECT_TRUE(label->fontSize() >= lo && label->fontSize() <= hi) << label->fontSize();
    const QnRect frame = label->frame();
    EXPECT_EQ(std::tuple(frame.origin.x, frame.origin.y, frame.size.width),
              std::tuple(w * 0.09999999999999998 * 0.5, h / 15, w * 0.9));
    EXPECT_TRUE(lo == 6 || frame.size.height < h / 3) << frame.size.height;
  }
}

}  // namespace
}  // namespace scrivlet
