// The modal signing dialog: its toolbar, and what "Cancel", "Clear", "Done" and closing the window
// tell the host, in order, with the dialog's closing among them and the facade held until then.
#include <scrivlet/popup.h>
#include <scrivlet/qt_modal_dialog.h>

#include "qt_input.h"

#include <QAction>
#include <QPointer>
#include <QToolBar>

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
    log_.facade = scrivlet_ = QnScrivlet::scrivletWithDelegateModalDisplayString(log_.delegate, "Please sign below");
    ASSERT_TRUE(dialog_ && QTest::qWaitForWindowExposed(dialog_));
    QObject::connect(dialog_, &QDialog::finished, [this] { log_.calls.push_back("closed"); });
    mouseStroke(dialog_->captureWidget(), kPath, 1000);
  }
  void trigger(const QString& text) {
    for (QAction* a : dialog_->toolbar()->actions())
      if (a->text() == text) return a->trigger();
    ADD_FAILURE() << "no action " << text.toStdString();
  }

  DelegateLog log_;
  QPointer<QnQtModalDialog> dialog_;
  std::shared_ptr<QnScrivlet> scrivlet_;
};

TEST_F(ModalDialogTest, ToolbarOffersCancelClearAndDoneAtTheFarEndAndClearKeepsTheDialogOpen) {
  QList<QAction*> actions = dialog_->toolbar()->actions();
  ASSERT_EQ(actions.size(), 4);
  EXPECT_EQ(std::tuple(actions[0]->text(), actions[1]->text(), actions[3]->text(), actions[3]->font().bold()),
            std::tuple("Cancel", "Clear", "Done", true));
  EXPECT_EQ(dialog_->toolbar()->widgetForAction(actions[2])->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
  // Under the capture surface (the screen's view), "Done" stands at the far end.
  EXPECT_EQ(dialog_->captureWidget()->view(), scrivlet_->modalController()->view());
  EXPECT_TRUE(dialog_->toolbar()->y() >= dialog_->captureWidget()->geometry().bottom() &&
              dialog_->toolbar()->widgetForAction(actions[3])->x() > dialog_->width() / 2);
  saveGrab(dialog_, "modal_dialog");

  ASSERT_EQ(scrivlet_->scrivletController()->drawingController()->drawingArray()->size(), 1u);
  EXPECT_NO_THROW(trigger("Clear"));
  // The preparation that the stroke started still finishes; it must tell nobody.
  EXPECT_TRUE(QTest::qWaitFor([&] { return scrivlet_->scrivletController()->cachedSignature() != nullptr; }, 20000));
  QCoreApplication::processEvents();
  EXPECT_EQ(std::pair(scrivlet_->scrivletController()->drawingController()->drawingArray()->size(), log_.calls),
            std::pair(size_t(0), Calls{"didEndLine 5"}));
  EXPECT_TRUE(dialog_ && dialog_->isVisible());
}

// The host keeps only the delegate: the shown dialog holds the facade until it has said the outcome.
TEST_F(ModalDialogTest, CancelClosingTheWindowAndDoneCloseTheDialogBeforeTheHostHearsTheOutcomeThenReleaseTheFacade) {
  for (std::string way : {"Cancel", "close", "Done"}) {
    SCOPED_TRACE(way);
    if (way != "Cancel") open();
    std::weak_ptr<QnScrivlet> facade = std::exchange(scrivlet_, nullptr);
    // "Done" before the record is prepared: the answer is owed.
    way == "close" ? void(dialog_->close()) : trigger(QString::fromStdString(way));
    ASSERT_TRUE(QTest::qWaitFor([&] { return log_.has(way == "Done" ? "didComplete #1" : "cancel"); }, 20000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog_.isNull(); }, 5000));  // it deletes itself once closed
    EXPECT_TRUE(QTest::qWaitFor([&] { return facade.expired(); }, 5000));
    if (way != "Done") { EXPECT_EQ(log_.calls, (Calls{"didEndLine 5", "closed", "cancel"})); }
  }
  // Done: the record may be ready before or after the dialog closes; it is delivered after both.
  auto at = [&](const char* call) { return std::ranges::find(log_.calls, call) - log_.calls.begin(); };
  EXPECT_TRUE(log_.calls.size() == 4 && log_.calls.front() == "didEndLine 5") << ::testing::PrintToString(log_.calls);
  EXPECT_LT(std::max(at("willComplete #1"), at("closed")), at("didComplete #1"));
  EXPECT_EQ(traceOf(log_.records.at(0)->rawPoints()), Trace{kPath});
}

}  // namespace
}  // namespace scrivlet
