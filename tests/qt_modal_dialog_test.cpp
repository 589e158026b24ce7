// The modal signing dialog: its toolbar, and what "Cancel", "Clear", "Done" and closing the window
// tell the host, in order, with the dialog's closing among them.
#include <scrivlet/popup.h>

#include "qt_input.h"
#include "qt_modal_dialog.h"

#include <QAction>
#include <QPointer>
#include <QToolBar>
#include <QWidgetAction>

namespace scrivlet {
namespace {

using namespace qt_test;

const Path kPath = {{60, 150}, {100, 140}, {140, 150}, {180, 140}, {220, 150}};

class ModalDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    log_.delegate->presentViewControllerAnimatedCompletion = [this](auto container, bool, auto completion) {
      dialog_ = QnQtModalDialog::present(container);
      if (completion) completion();
    };
    open();
  }
  void TearDown() override { delete dialog_.data(); }
  // A new dialog with one stroke drawn on it.
  void open() {
    log_.calls.clear();
    scrivlet_ = QnScrivlet::scrivletWithDelegateModalDisplayString(log_.delegate, "Please sign below");
    log_.facade = scrivlet_;
    ASSERT_TRUE(dialog_);
    QObject::connect(dialog_, &QDialog::finished, [this] { log_.calls.push_back("closed"); });
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog_));
    mouseStroke(dialog_->captureWidget(), kPath, 1000);
  }
  void trigger(const QString& text) {
    for (QAction* a : dialog_->toolbar()->actions())
      if (a->text() == text) return a->trigger();
    ADD_FAILURE() << "no action " << text.toStdString();
  }
  size_t strokeCount() { return scrivlet_->scrivletController()->drawingController()->drawingArray()->size(); }

  DelegateLog log_;
  QPointer<QnQtModalDialog> dialog_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

TEST_F(ModalDialogTest, ToolbarOffersCancelClearAndDoneAtTheFarEndAndClearKeepsTheDialogOpen) {
  QList<QAction*> actions = dialog_->toolbar()->actions();
  ASSERT_EQ(actions.size(), 4);
  EXPECT_EQ(std::tuple(actions[0]->text(), actions[1]->text(), actions[3]->text()), std::tuple("Cancel", "Clear", "Done"));
  ASSERT_TRUE(qobject_cast<QWidgetAction*>(actions[2]));
  EXPECT_EQ(dialog_->toolbar()->widgetForAction(actions[2])->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
  EXPECT_TRUE(actions[3]->font().bold());
  // Under the capture surface (the screen's view), "Done" stands at the far end.
  EXPECT_EQ(dialog_->captureWidget()->view(), scrivlet_->modalController()->view());
  EXPECT_GE(dialog_->toolbar()->y(), dialog_->captureWidget()->geometry().bottom());
  EXPECT_GT(dialog_->toolbar()->widgetForAction(actions[3])->x(), dialog_->width() / 2);
  saveGrab(dialog_, "modal_dialog");

  ASSERT_EQ(strokeCount(), 1u);
  EXPECT_NO_THROW(trigger("Clear"));
  // The preparation that the stroke started still finishes; it must tell nobody.
  auto controller = scrivlet_->scrivletController();
  EXPECT_TRUE(QTest::qWaitFor([&] { return controller->cachedSignature() != nullptr; }, 20000));
  QCoreApplication::processEvents();
  EXPECT_EQ(strokeCount(), 0u);
  ASSERT_FALSE(dialog_.isNull());
  EXPECT_TRUE(dialog_->isVisible());
  EXPECT_EQ(log_.calls, Calls{"didEndLine 5"});
}

TEST_F(ModalDialogTest, DoneCancelAndClosingTheWindowCloseTheDialogBeforeTheHostHearsTheOutcome) {
  for (std::string way : {"Done", "Cancel", "close"}) {
    SCOPED_TRACE(way);
    if (way != "Done") open();
    way == "close" ? void(dialog_->close()) : trigger(QString::fromStdString(way));
    std::string outcome = way == "Done" ? "didComplete #1" : "cancel";
    ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has(outcome); }, 20000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog_.isNull(); }, 5000));  // it deletes itself once closed
    if (way != "Done") {
      EXPECT_EQ(log_.calls, (Calls{"didEndLine 5", "closed", "cancel"}));
      continue;
    }
    // The record may be ready before or after the dialog closes; it is delivered after both.
    auto at = [&](const char* call) { return std::find(log_.calls.begin(), log_.calls.end(), call) - log_.calls.begin(); };
    EXPECT_EQ(log_.calls.size(), 4u) << ::testing::PrintToString(log_.calls);
    EXPECT_EQ(log_.calls.front(), "didEndLine 5");
    EXPECT_LT(std::max(at("willComplete #1"), at("closed")), at("didComplete #1"));
    EXPECT_EQ(traceOf(log_.records.at(0)->rawPoints()), Trace{kPath});
  }
}

}  // namespace
}  // namespace scrivlet
