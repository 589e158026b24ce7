// The signing session: the canvas's state, undo and redo, strokes saved and loaded back, and "Done"
// answering once with a record of exactly the canvas.
#include <scrivlet/headless_view.h>
#include <scrivlet/signature_session.h>
#include <scrivlet/stroke_json.h>

#include "delegate_log.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace test_support;

class Session : public ::testing::Test {
 protected:
  void SetUp() override {
    session.strokeEnded = [this](unsigned long n) { calls.push_back("strokeEnded " + std::to_string(n)); };
    session.signatureReady = [this](std::shared_ptr<QnSignature> r) { records.push_back(r), calls.push_back("ready"); };
    session.signedNothing = [this] { calls.push_back("nothing"); };
  }
  void settle() { manual.loop->advance(0.25), manual.loop->runUntilIdle(), manual.loop->advance(0.05); }

  ManualLoop manual;
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 400, 300));
  SignatureSession session{view};
  Calls calls;
  std::vector<std::shared_ptr<QnSignature>> records;
};

TEST_F(Session, UndoThenDoneDeliversTheCanvasOnceAndTheStateFollows) {
  EXPECT_TRUE(session.isEmpty() && !session.canUndo() && !session.canRedo());
  session.done();
  EXPECT_EQ(calls, Calls{"nothing"});
  const Trace first = {{{20, 20}, {60, 40}}}, second = {{{100, 80}, {150, 90}, {190, 70}}};
  touchPaths(*view, first, 1), touchPaths(*view, second, 2);
  settle();  // the record of both strokes is prepared
  session.undo();
  EXPECT_TRUE(!session.isEmpty() && session.canUndo() && session.canRedo());
  session.done();  // the prepared record holds a stroke the signer no longer sees: it is not given
  EXPECT_EQ(calls, (Calls{"nothing", "strokeEnded 3", "strokeEnded 7"}));
  settle();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(traceOf(records[0]->rawPoints()), (Trace{{{20, 20}, {60, 40}, {60, 40}}}));
  session.done();  // now the prepared record matches: at once
  EXPECT_EQ(records.size(), 2u);
  EXPECT_EQ(records[1], records[0]);
  session.redo(), session.clear();
  EXPECT_TRUE(session.isEmpty() && !session.canUndo());
}

TEST_F(Session, SavedStrokesLoadBackAndTheNextRecordHoldsThemAndTheNewOnes) {
  touchPaths(*view, {{{20, 20}, {60, 40}, {80, 30}}}, 1);
  const std::string saved = strokesToJson(session.strokes());
  SignatureSession other{HeadlessView::create(makeRect(0, 0, 400, 300))};
  std::vector<std::shared_ptr<QnSignature>> got;
  other.signatureReady = [&got](auto record) { got.push_back(record); };
  other.setStrokes(strokesFromJson(saved));
  EXPECT_EQ(strokesToJson(other.strokes()), saved);
  QnStrokeListRef withBadPoints = strokesFromJson(saved);
  withBadPoints->front()->push_back(withBadPoints->front()->back());
  withBadPoints->front()->back().location.y = NAN;
  withBadPoints->push_back(nullptr);
  session.setStrokes(withBadPoints);  // the point that is not finite, and the missing stroke, are left out
  EXPECT_EQ(traceOf(session.strokes()), (Trace{{{20, 20}, {60, 40}, {80, 30}, {80, 30}}, {}}));
  touchPaths(*other.scrivlet().scrivletController()->scrivletView(), {{{200, 100}, {240, 120}}}, 5);
  other.done();
  settle();
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(traceOf(got[0]->rawPoints()),
            (Trace{{{20, 20}, {60, 40}, {80, 30}, {80, 30}}, {{200, 100}, {240, 120}, {240, 120}}}));
}

}  // namespace
}  // namespace scrivlet
