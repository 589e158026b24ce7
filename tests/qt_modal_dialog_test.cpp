// The modal signing dialog: its toolbar, and what "Cancel", "Clear", "Done" and closing the window
// tell the host, in order, with the dialog's closing among them.
#include <scrivlet/facade.h>
#include <scrivlet/popup.h>
#include <scrivlet/scrivlet_controller.h>

#include "capture/drawing_controller.h"
#include "qt_capture_widget.h"
#include "qt_input.h"
#include "qt_modal_dialog.h"

#include <QAction>
#include <QPointer>
#include <QToolBar>
#include <QWidgetAction>

#include <gtest/gtest.h>

namespace scrivlet {
namespace {

using namespace qt_test;
using Calls = std::vector<std::string>;

class ModalDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    log_.delegate->presentViewControllerAnimatedCompletion = [this](auto container, bool, auto completion) {
      dialog_ = QnQtModalDialog::present(container);
      if (completion) completion();
    };
    scrivlet_ = QnScrivlet::scrivletWithDelegateModalDisplayString(log_.delegate, "Please sign below");
    ASSERT_TRUE(dialog_);
    QObject::connect(dialog_, &QDialog::finished, [this] { log_.calls.push_back("closed"); });
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog_));
  }
  void TearDown() override { delete dialog_.data(); }

  QAction* action(const QString& text) {
    for (QAction* a : dialog_->toolbar()->actions())
      if (a->text() == text) return a;
    return nullptr;
  }
  size_t strokeCount() { return scrivlet_->scrivletController()->drawingController()->drawingArray()->size(); }
  // Waits for the dialog to go away; it deletes itself once closed.
  bool dialogGone() { return QTest::qWaitFor([&] { return dialog_.isNull(); }, 5000); }

  CallLog log_;
  QPointer<QnQtModalDialog> dialog_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

TEST_F(ModalDialogTest, ToolbarOffersCancelClearAndDoneAtTheFarEnd) {
  QList<QAction*> actions = dialog_->toolbar()->actions();
  ASSERT_EQ(actions.size(), 4);
  EXPECT_EQ(actions[0]->text(), "Cancel");
  EXPECT_EQ(actions[1]->text(), "Clear");
  auto* spacer = qobject_cast<QWidgetAction*>(actions[2]);
  ASSERT_TRUE(spacer);
  EXPECT_EQ(dialog_->toolbar()->widgetForAction(spacer)->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
  EXPECT_EQ(actions[3]->text(), "Done");
  EXPECT_TRUE(actions[3]->font().bold());
  // Under the capture surface (the screen's view), "Done" stands at the far end.
  EXPECT_EQ(dialog_->captureWidget()->view(), scrivlet_->modalController()->view());
  EXPECT_GE(dialog_->toolbar()->y(), dialog_->captureWidget()->geometry().bottom());
  EXPECT_GT(dialog_->toolbar()->widgetForAction(actions[3])->x(), dialog_->width() / 2);
  mouseStroke(dialog_->captureWidget(), {{60, 150}, {120, 140}, {180, 150}, {240, 140}}, 1000);
  saveGrab(dialog_, "modal_dialog");
}

TEST_F(ModalDialogTest, ClearEmptiesTheCanvasAndKeepsTheDialogOpen) {
  mouseStroke(dialog_->captureWidget(), {{60, 150}, {120, 140}, {180, 150}}, 1000);
  ASSERT_EQ(strokeCount(), 1u);
  log_.calls.clear();
  ASSERT_TRUE(action("Clear"));
  EXPECT_NO_THROW(action("Clear")->trigger());
  // The preparation that the stroke started still finishes; it must tell nobody.
  auto controller = scrivlet_->scrivletController();
  EXPECT_TRUE(QTest::qWaitFor([&] { return controller->cachedSignature() != nullptr; }, 20000));
  QCoreApplication::processEvents();
  EXPECT_EQ(strokeCount(), 0u);
  ASSERT_FALSE(dialog_.isNull());
  EXPECT_TRUE(dialog_->isVisible());
  EXPECT_EQ(log_.calls, Calls{});
}

TEST_F(ModalDialogTest, DoneReportsTheRecordAfterTheDialogHasClosed) {
  std::vector<QPointF> path = {{60, 150}, {100, 140}, {140, 150}, {180, 140}, {220, 150}};
  mouseStroke(dialog_->captureWidget(), path, 1000);
  ASSERT_TRUE(action("Done"));
  action("Done")->trigger();
  ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has("didComplete"); }, 20000));
  EXPECT_TRUE(dialogGone());

  EXPECT_EQ(log_.calls.size(), 4u) << ::testing::PrintToString(log_.calls);
  EXPECT_EQ(log_.calls.front(), "didEndLine 5");
  int closed = log_.indexOf("closed"), will = log_.indexOf("willComplete"), did = log_.indexOf("didComplete");
  ASSERT_GE(closed, 0);
  ASSERT_GE(will, 0);
  EXPECT_LT(will, did);
  EXPECT_LT(closed, did);
  ASSERT_EQ(log_.records.size(), 2u);
  EXPECT_EQ(log_.records[0], log_.records[1]);
  ASSERT_TRUE(log_.records[1]);
  EXPECT_EQ(traceOf(log_.records[1]->rawPoints()), traceOf(path));
}

TEST_F(ModalDialogTest, CancelClosesTheDialogThenReportsTheCancellation) {
  mouseStroke(dialog_->captureWidget(), {{60, 150}, {120, 140}}, 1000);
  log_.calls.clear();
  ASSERT_TRUE(action("Cancel"));
  action("Cancel")->trigger();
  ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has("cancel"); }, 5000));
  EXPECT_TRUE(dialogGone());
  EXPECT_EQ(log_.calls, (Calls{"closed", "cancel"}));
}

TEST_F(ModalDialogTest, ClosingTheWindowIsCancel) {
  EXPECT_NO_THROW(dialog_->close());
  ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has("cancel"); }, 5000));
  EXPECT_TRUE(dialog_.isNull() || !dialog_->isVisible()) << "reported cancelled while still shown";
  EXPECT_TRUE(dialogGone());
  EXPECT_EQ(log_.calls, (Calls{"closed", "cancel"}));
}

}  // namespace
}  // namespace scrivlet
