// The capture controller's advance preparation of the record, its cache, and the completion calls.
#include <scrivlet/headless_view.h>
#include <scrivlet/pdf_document.h>

#include "delegate_log.h"
#include "platform/clock.h"
#include "platform/image.h"

#include <gtest/gtest.h>

#include <future>
#include <sstream>

namespace scrivlet {
namespace {

using namespace test_support;

const Path kA = {{100, 200}, {150, 230}, {200, 210}}, kB = {{300, 100}, {320, 120}}, kS = {{100, 200}, {150, 230}};
// A finger's stroke holds its points and the last one again.
Path ended(Path p) { p.push_back(p.back()); return p; }

class Completion : public ::testing::Test {
 protected:
  void SetUp() override { QnClock::setFixedTime(1700000000.0), log.facade = facade; }
  void TearDown() override { QnClock::setFixedTime(std::nullopt); }
  // Steps: A, B, S draw those paths; x lays a finger on B's path and cancels it past its end; a
  // number advances the clock; idle runs all due work; hold keeps background work back until release.
  void run(const std::string& steps) {
    std::istringstream in(steps);
    for (std::string s; in >> s;) {
      if (s == "A" || s == "B" || s == "S") touchPaths(*view, {s == "A" ? kA : s == "B" ? kB : kS}, ++t);
      else if (s == "x") {
        auto f = std::make_shared<HeadlessTouch>(QnPoint{300, 100}, ++t);
        view->beginTouches({f}), f->moveTo({320, 120}, t + 0.01), view->moveTouches({f});
        f->moveTo({330, 130}, t + 0.02), view->cancelTouches({f});
      } else if (std::isdigit(s[0])) loop.advance(std::stod(s));
      else if (s == "idle") loop.runUntilIdle();
      else if (s == "done") facade->done();
      else if (s == "willBeDone") c->willBeDone();
      else if (s == "reset") facade->reset();
      else if (s == "undo") c->undo();
      else if (s == "dismiss") c->didDismissModalView();
      else if (s == "-willComplete") log.delegate->scrivletWillCompleteWithSignature = nullptr;
      else if (s == "hold") loop.runInBackground([held = gate.get_future().share()] { held.wait(); });
      else if (s == "release") gate.set_value();
      else if (s == "destroy") {
        std::weak_ptr<QnScrivletController> weak = c;
        c.reset(), facade.reset();
        EXPECT_TRUE(weak.expired());
      } else ADD_FAILURE() << "no step " << s;
    }
  }

  ManualLoop manual{1};  // one background thread, so that the gate holds all background work
  HeadlessRunLoop& loop = *manual.loop;
  std::promise<void> gate;  // destroyed before the loop: held work is let go even if never released
  double t = 0;
  DelegateLog log;
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 540, 527));
  std::shared_ptr<QnScrivlet> facade = QnScrivlet::scrivletWithViewDelegate(view, log.delegate);
  std::shared_ptr<QnScrivletController> c = facade->scrivletController();
};

TEST_F(Completion, DoneSoonAfterAStrokeWaitsForThePreparationAndGetsItsRecord) {
  EXPECT_NO_THROW(run("A 0.1 done done done 0.09 idle"));  // 0.19 s after the stroke: not yet
  EXPECT_EQ(log.calls, (Calls{"didEndLine 4"}));
  EXPECT_FALSE(c->cachedSignature());
  run("0.02 idle");  // the repeated requests are answered once
  ASSERT_EQ(log.calls, (Calls{"didEndLine 4", "willComplete #1", "didComplete #1"}));
  EXPECT_EQ(c->cachedSignature(), log.records.at(0));
  EXPECT_EQ(traceOf(log.records.at(0)->rawPoints()), Trace{ended(kA)});
}

TEST_F(Completion, PreparationCopiesOnlyItsListOfSettings) {
  // Not copied: skipping the PDF, and the width (the margin stays 1.5 default widths). Copied: scale and hash.
  c->setSkipPDFData(true), c->setStrokeWidthMax(10), c->setExportScale(2), c->setCustomHash("F00D");
  run("S 0.25 idle");
  const auto& record = c->cachedSignature();
  ASSERT_TRUE(record && record->pdfData() && record->pdf() && record->imageData());
  // Box (100, 200, 50, 30); margin 6 on each side: (94, 194, 62, 42); twice that as the canvas.
  EXPECT_EQ(record->frame(), makeRect(94, 194, 124, 84));
  // The timestamp counts from 2001: 1700000000 s after 1970 is 721692800 s after 2001.
  EXPECT_EQ(std::pair(record->hashString().value_or(""), record->timestamp()), std::pair(std::string("F00D"), 721692800.0));
  EXPECT_EQ(record->pdf()->pageSize(0), (QnSize{124, 84}));
  QnImage png = QnImage::decodePNG(*record->imageData());
  EXPECT_EQ(std::pair(png.pixelWidth(), png.pixelHeight()), std::pair(124, 84));
}

// records: the delivered records' strokes in order, then the cached record's.
struct Script { const char* name; const char* steps; Calls calls; std::vector<Trace> records; };
void PrintTo(const Script& script, std::ostream* out) { *out << script.steps; }
class CompletionScript : public Completion, public ::testing::WithParamInterface<Script> {};

TEST_P(CompletionScript, CallsTheDelegateAsPrescribedAndLosesNoRecord) {
  EXPECT_NO_THROW(run(GetParam().steps));
  EXPECT_EQ(log.calls, GetParam().calls);
  std::vector<Trace> records;
  for (const auto& record : log.records) records.push_back(traceOf(record->rawPoints()));
  records.push_back(c && c->cachedSignature() ? traceOf(c->cachedSignature()->rawPoints()) : Trace{});
  EXPECT_EQ(records, GetParam().records);
}

const Trace kAB = {ended(kA), ended(kB)};
const Script kScripts[] = {
    // Past the first stroke's moment (0.2 s), not the second's (0.35 s): nothing may be prepared.
    {"AStrokeBegunWithinTheDelayCancelsTheEarlierPreparation", "A 0.15 B done 0.15 idle 0.1 idle",
     {"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1"}, {kAB, kAB}},
    // The first preparation runs while the second stroke is drawn; its older record is stored.
    {"APreparationFinishingAfterANewerStrokeStoresItsOlderRecord", "hold A 0.25 release B idle done 0.25 idle done",
     {"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1", "willComplete #2", "didComplete #2"},
     {{ended(kA)}, kAB, kAB}},
    {"AControllerDestroyedDuringAPreparationFinishesSilently", "hold S done 0.25 release destroy idle",
     {"didEndLine 3"}, {{}}},
    // The cache outlives an undo; methods the delegate lacks are skipped; an empty canvas has no record.
    {"RequestsAnsweredFromTheCacheRepeatTheSameRecord", "A B 0.25 idle done done undo done -willComplete done undo done",
     {"didEndLine 4", "didEndLine 7", "willComplete #1", "didComplete #1", "willComplete #1", "didComplete #1",
      "willComplete #1", "didComplete #1", "didComplete #1", "noSignature"}, {kAB, kAB}},
    // Reset while armed keeps the timer: the record is prepared but not delivered.
    {"EmptyCanvasResetWhileArmedAndDismissal", "willBeDone done done S reset done 0.25 idle dismiss",
     {"noSignature", "noSignature", "didEndLine 3", "noSignature", "cancel"}, {{ended(kS)}}},
    // The reset leaves the cache and the requests; the canvas is empty afterwards whatever the cache holds.
    {"ResetDuringAPreparation", "hold S done 0.25 reset release idle done",
     {"didEndLine 3", "willComplete #1", "didComplete #1", "noSignature"}, {{ended(kS)}, {ended(kS)}}},
    // A cancelled touch disarms and arms nothing; the next stroke keeps it and answers the waiting request.
    {"ARequestMadeWhileNothingIsArmedWaitsForALaterPreparation", "A x done 1 idle S 0.25 idle",
     {"didEndLine 4", "didEndLine 9", "willComplete #1", "didComplete #1"},
     {{ended(kA), kB, ended(kS)}, {ended(kA), kB, ended(kS)}}},
};
INSTANTIATE_TEST_SUITE_P(Completion, CompletionScript, ::testing::ValuesIn(kScripts),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace scrivlet
