// The signing session: the canvas's state, undo and redo whatever the gestures, strokes saved and
// loaded back, and "Done" answering exactly once with a record of the canvas and settings at "Done".
// (The record's background, painted or not: pad_settings_test.cpp. A touch cancelled mid-stroke:
// pad_twins_test.cpp.)
#include <scrivlet/context.h>
#include <scrivlet/headless_view.h>
#include <scrivlet/signature_session.h>
#include <scrivlet/stroke_json.h>
#include <scrivlet/engine/notification_center.h>
#include <scrivlet/engine/scrivlet_controller.h>

#include "delegate_log.h"
#include "output_support.h"
#include "platform/clock.h"
#include "capture/drawing_controller.h"
#include "platform/image_view.h"
#include "render/drawing_view.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scrivlet {
namespace {

using namespace test_support;
using Touch = std::shared_ptr<HeadlessTouch>;

class Session : public ::testing::Test {
 protected:
  void SetUp() override {
    QnClock::setFixedTime(1700000000);  // the date and time stamps read the same in every record
    watch(session);
  }
  void TearDown() override { QnClock::setFixedTime(std::nullopt); }
  void watch(SignatureSession& s) {
    s.setOnStrokeEnded([this](unsigned long n) { calls.push_back("strokeEnded " + std::to_string(n)); });
    s.setOnSignatureReady([this](std::shared_ptr<QnSignature> r) { records.push_back(r), calls.push_back("ready"); });
    s.setOnSignedNothing([this] { calls.push_back("nothing"); });
  }
  // Time enough for every timer and preparation to be done.
  void settle() {
    for (int i = 0; i < 4; ++i) manual.loop->advance(0.25), manual.loop->runUntilIdle();
  }
  // The record a session gives for "Done" once everything has settled.
  std::shared_ptr<QnSignature> recordOf(SignatureSession& s) {
    size_t before = records.size();
    s.done();
    settle();
    return records.size() == before + 1 ? records.back() : nullptr;
  }

  ManualLoop manual;
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 400, 300));
  SignatureSession session{view};
  Calls calls;
  std::vector<std::shared_ptr<QnSignature>> records;
};

// Every pixel of two PNGs, compared.
::testing::AssertionResult samePixels(const QnSignature& a, const QnSignature& b) {
  if (!a.imageData() || !b.imageData()) return ::testing::AssertionFailure() << "a record without a PNG";
  QnImage x = QnImage::decodePNG(*a.imageData()), y = QnImage::decodePNG(*b.imageData());
  if (x.pixelWidth() != y.pixelWidth() || x.pixelHeight() != y.pixelHeight())
    return ::testing::AssertionFailure() << x.pixelWidth() << " x " << x.pixelHeight() << " pixels against "
                                         << y.pixelWidth() << " x " << y.pixelHeight();
  const int differing = differingPixels(x, y);
  return differing ? ::testing::AssertionFailure() << differing << " pixels differ" : ::testing::AssertionSuccess();
}

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
  session.done();  // now the prepared record matches: at once, as a record of its own
  ASSERT_EQ(records.size(), 2u);
  EXPECT_NE(records[1], records[0]);
  EXPECT_EQ(records[1]->hashString(), records[0]->hashString());
  session.redo(), session.clear();
  EXPECT_TRUE(session.isEmpty() && !session.canUndo());
}

TEST_F(Session, EveryDoneIsAnsweredOnceInTheOrderAsked) {
  touchPaths(*view, {{{20, 20}, {60, 40}}}, 1);
  session.done(), session.done();  // twice before any record is ready
  EXPECT_TRUE(records.empty());
  settle();
  EXPECT_EQ(records.size(), 2u);
  session.done(), session.done();  // twice with the record ready
  EXPECT_EQ(records.size(), 4u);
  // A host that answers "Done" with another "Done", and an empty canvas between two: in order.
  session.setOnSignatureReady([this](std::shared_ptr<QnSignature> r) {
    records.push_back(r), calls.push_back("ready");
    if (records.size() == 5) session.done();
  });
  calls.clear();
  touchPaths(*view, {{{100, 100}, {150, 120}}}, 2);
  session.done(), session.clear(), session.done();
  settle();
  EXPECT_EQ(calls, (Calls{"strokeEnded 6", "ready", "nothing", "nothing"}));
}

TEST_F(Session, ATouchAfterDoneNeitherStopsTheAnswerNorGetsIntoTheRecord) {
  touchPaths(*view, {{{20, 20}, {60, 40}, {90, 30}}}, 1);
  session.done();  // before the record is prepared: it is made now, of this canvas
  Touch next = std::make_shared<HeadlessTouch>(QnPoint{200, 100}, 2);
  view->beginTouches({next}), next->moveTo({240, 120}, 2.01), view->moveTouches({next});
  settle();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(traceOf(records[0]->rawPoints()), (Trace{{{20, 20}, {60, 40}, {90, 30}, {90, 30}}}));
  view->endTouches({next});
  settle();
  EXPECT_EQ(records.size(), 1u);
  // Done while a finger is down: the stroke so far is part of the canvas.
  Touch third = std::make_shared<HeadlessTouch>(QnPoint{300, 100}, 3);
  view->beginTouches({third}), third->moveTo({320, 110}, 3.01), view->moveTouches({third});
  session.done();
  third->moveTo({340, 120}, 3.02), view->moveTouches({third}), view->endTouches({third});
  settle();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(traceOf(records[1]->rawPoints()).back(), (Path{{300, 100}, {320, 110}}));
}

TEST_F(Session, EverySettingChangedAfterTheRecordWasPreparedReachesTheRecord) {
  QnScrivlet& f = session.scrivlet();
  f.setCustomHash("HOST-42");  // hashes drawn on the image must be the same to compare pixels
  touchPaths(*view, {{{20, 20}, {60, 40}, {90, 30}}, }, 1);
  touchPaths(*view, {{{100, 60}, {130, 90}}}, 2);
  const QnStrokeListRef strokes = session.strokes();
  // One setting of each kind the record depends on (the ink, the exports' settings, the date printed,
  // the view's bounds, the background), the time the date and time shown are of, and some settings it
  // does not depend on. (Each export setting reaching the outputs: export_renderer_test.cpp and
  // signature_hash_test.cpp.)
  std::vector<std::pair<const char*, std::function<void(SignatureSession&)>>> changes = {
      {"pen colour", [](auto& s) { s.scrivlet().setStrokeColor(QnColor(1, 0, 0, 1)); }},
      {"export scale", [](auto& s) { s.scrivlet().setExportScale(2); }},
      {"date without the time", [](auto& s) { s.scrivlet().setDateIncludesTime(false); }},
      {"a minute later", [](auto&) { QnClock::setFixedTime(1700000000 + 61); }},
      {"hash", [](auto& s) { s.scrivlet().setShowHash(true); }},
      {"custom hash", [](auto& s) { s.scrivlet().setShowHash(true), s.scrivlet().setCustomHash("OTHER-7"); }},
      {"clipping", [](auto& s) { s.scrivlet().setClipSignatureToBounds(true); }},
      {"skip PDF", [](auto& s) { s.scrivlet().scrivletController()->setSkipPDFData(true); }},
      {"record background", [](auto& s) { s.setRecordBackground(QnColor(1, 1, 0.8, 1)); }},
      {"guideline, stylus and swipes", [](auto& s) {
         s.scrivlet().setShowGuideline(false), s.scrivlet().setDrawOnlyWithApplePencil(true);
         s.scrivlet().setSwipeToUndoEnabled(false), s.scrivlet().setVelocityReduction(0.2f);
       }}};
  std::shared_ptr<QnSignature> before = recordOf(session);  // prepared with the settings before
  ASSERT_TRUE(before);
  for (auto& [what, change] : changes) {
    SCOPED_TRACE(what);
    QnClock::setFixedTime(1700000000);
    SignatureSession signed_(HeadlessView::create(makeRect(0, 0, 400, 300))), fresh(HeadlessView::create(makeRect(0, 0, 400, 300)));
    watch(signed_), watch(fresh);
    for (SignatureSession* s : {&signed_, &fresh})
      s->scrivlet().setCustomHash("HOST-42"), s->scrivlet().setShowDate(true), s->scrivlet().setDateIncludesTime(true);
    signed_.setStrokes(strokes);
    settle();  // the record of the settings before is ready
    change(signed_);
    change(fresh);
    fresh.setStrokes(strokes);
    std::shared_ptr<QnSignature> changed = recordOf(signed_), expected = recordOf(fresh);
    ASSERT_TRUE(changed && expected);
    EXPECT_TRUE(samePixels(*changed, *expected));
    EXPECT_EQ(changed->frame(), expected->frame());
    EXPECT_EQ(changed->hashString(), expected->hashString());
    EXPECT_EQ(changed->pdfData().has_value(), expected->pdfData().has_value());
    EXPECT_EQ(changed->svgString(), expected->svgString());
  }
  // The settings of the issue together: red ink at twice the size with the host's hash, at once.
  f.setStrokeColor(QnColor(1, 0, 0, 1)), f.setExportScale(2), f.setShowHash(true), f.setCustomHash("HOST-42");
  std::shared_ptr<QnSignature> after = recordOf(session);
  ASSERT_TRUE(after);
  EXPECT_EQ(after->hashString(), "HOST-42");
  EXPECT_GT(after->frame().size.width, 1.9 * before->frame().size.width);
  EXPECT_NE(after->svgString()->find("stroke=\"#FF0000\""), std::string::npos);
}

TEST_F(Session, ARecordIsItsOwnAndChangesNothingWhenChanged) {
  touchPaths(*view, {{{40, 40}, {80, 60}}}, 1);
  std::shared_ptr<QnSignature> first = recordOf(session);
  ASSERT_TRUE(first && first->rawPoints());
  for (const QnStrokeRef& stroke : *first->rawPoints())
    for (QnSignaturePoint& p : *stroke) p.location.x = 290;
  first->rawPoints()->push_back(first->rawPoints()->front());
  EXPECT_EQ(traceOf(session.strokes()), (Trace{{{40, 40}, {80, 60}, {80, 60}}}));
  std::shared_ptr<QnSignature> second = recordOf(session);
  ASSERT_TRUE(second);
  EXPECT_EQ(traceOf(second->rawPoints()), (Trace{{{40, 40}, {80, 60}, {80, 60}}}));
  QnStrokeListRef copy = session.strokes();  // a copy too
  copy->front()->front().location.y = -1;
  EXPECT_EQ(traceOf(session.strokes()).front().front(), (std::pair(40.0, 40.0)));
}

TEST_F(Session, AResizeWithClippingOnGivesARecordOfTheNewBounds) {
  session.scrivlet().setClipSignatureToBounds(true);
  Path path;
  for (int i = 0; i < 20; ++i) path.emplace_back(100 + 5 * i, 150 + (i % 3));
  touchPaths(*view, {path}, 1);  // 21 points
  settle();  // a record clipped to 400 x 300 is prepared
  view->setFrame(makeRect(0, 0, 200, 300));  // the ink moves left with the guideline
  std::shared_ptr<QnSignature> record = recordOf(session);
  ASSERT_TRUE(record);
  EXPECT_EQ(traceOf(record->rawPoints()), traceOf(session.strokes()));
  EXPECT_EQ(traceOf(record->rawPoints()).front().size(), 21u);
  EXPECT_EQ(record->frame().size, (QnSize{200, 300}));
}

TEST_F(Session, UndoAndRedoWorkWithoutSwipesAndARedoneStrokeFollowsTheLayout) {
  session.scrivlet().setSwipeToUndoEnabled(false);
  touchPaths(*view, {{{20, 200}, {60, 210}}}, 1), touchPaths(*view, {{{100, 200}, {140, 220}}}, 2);
  session.undo();
  EXPECT_EQ(traceOf(session.strokes()), (Trace{{{20, 200}, {60, 210}, {60, 210}}}));
  session.redo();
  EXPECT_EQ(session.strokes()->size(), 2u);
  session.undo();
  const QnPoint guideline = session.scrivlet().scrivletController()->guideline()->frame().origin;
  view->setFrame(makeRect(0, 0, 400, 500));  // the guideline and the ink move down
  const QnPoint moved = session.scrivlet().scrivletController()->guideline()->frame().origin;
  const double dy = moved.y - guideline.y;
  ASSERT_GT(dy, 0);
  session.redo();
  EXPECT_EQ(traceOf(session.strokes()),
            (Trace{{{20, 200 + dy}, {60, 210 + dy}, {60, 210 + dy}}, {{100, 200 + dy}, {140, 220 + dy}, {140, 220 + dy}}}));

  // A layout that would carry a stroke to redo past the largest number leaves it where it is: redone,
  // it comes back whole, at finite positions.
  session.clear();
  const double far = 1.79e308;  // a pen reported near the largest number, out of the view
  touchPaths(*view, {{{far, 100}, {far, 120}}}, 3);
  ASSERT_EQ(session.strokes()->size(), 1u);
  const size_t points = session.strokes()->front()->size();
  session.undo();
  view->setFrame(makeRect(0, 0, 1e308, 500));  // the guideline's margin moves right by some 5e306
  session.redo();
  const QnStrokeListRef redone = session.strokes();
  ASSERT_EQ(redone->size(), 1u);
  EXPECT_EQ(redone->front()->size(), points);
  for (const QnSignaturePoint& p : *redone->front())
    EXPECT_TRUE(std::isfinite(p.location.x) && std::isfinite(p.location.y));
}

TEST_F(Session, StrokesThatDoNotLoadLeaveTheCanvasAndSayWhy) {
  touchPaths(*view, {{{20, 20}, {60, 40}, {80, 30}}}, 1);
  const std::string saved = strokesToJson(session.strokes());
  testing::internal::CaptureStderr();
  session.setStrokes(strokesFromJson("{\"format\":\"scrivlet-strokes\",\"version\":1}").value_or(nullptr));  // nothing to show
  std::optional<Error> error = session.loadStrokes("{\"format\":5,\"version\":1,\"strokes\":[]}");
  std::optional<Error> cut = session.loadStrokes(saved.substr(0, saved.size() / 2));
  testing::internal::GetCapturedStderr();
  ASSERT_TRUE(error && cut);
  EXPECT_EQ(error->code(), ErrorCode::NotThisFormat);
  EXPECT_EQ(error->message(), "not a strokes document");
  EXPECT_EQ(cut->code(), ErrorCode::NotJson);
  EXPECT_EQ(strokesToJson(session.strokes()), saved);
  // What loads is shown in place of the canvas. (The next record holds it: pad_features_test.cpp.)
  session.clear();
  EXPECT_FALSE(session.loadStrokes(saved));
  EXPECT_EQ(strokesToJson(session.strokes()), saved);
  // Points whose position is not finite, and missing strokes, are left out.
  QnStrokeListRef withBadPoints = *strokesFromJson(saved);
  withBadPoints->front()->push_back(withBadPoints->front()->back());
  withBadPoints->front()->back().location.y = NAN;
  withBadPoints->push_back(nullptr);
  session.setStrokes(withBadPoints);
  EXPECT_EQ(traceOf(session.strokes()), (Trace{{{20, 20}, {60, 40}, {80, 30}, {80, 30}}, {}}));
}

// A session on a context of its own: its own loop, clock and device.
struct OwnContext {
  explicit OwnContext(double time) {
    context->setScheduler(loop), context->setFixedTime(time);
    session.setOnSignatureReady([this](std::shared_ptr<QnSignature> r) { records.push_back(std::move(r)); });
    touchPaths(*view, {{{20, 20}, {60, 40}, {90, 30}}}, 1);
    session.done();
  }
  void settle() {
    for (int i = 0; i < 4; ++i) loop->advance(0.25), loop->runUntilIdle();
  }
  std::shared_ptr<HeadlessRunLoop> loop = std::make_shared<HeadlessRunLoop>();
  std::shared_ptr<QnContext> context = QnContext::create();
  std::shared_ptr<HeadlessView> view = HeadlessView::create(makeRect(0, 0, 300, 200));
  SignatureSession session{view, context};
  std::vector<std::shared_ptr<QnSignature>> records;
};

TEST(SessionContext, TwoSessionsOnContextsOfTheirOwnAreEachAnsweredOnTheirOwnLoopAtTheirOwnTime) {
  ManualLoop host;  // the default context's loop, which neither session may use
  QnClock::setFixedTime(1700000000);
  OwnContext a(1600000000), b(1500000000);
  a.settle();
  for (int i = 0; i < 4; ++i) host.loop->advance(0.25), host.loop->runUntilIdle();
  ASSERT_EQ(a.records.size(), 1u);
  EXPECT_TRUE(b.records.empty()) << "answered on another loop than its own";
  b.settle();
  ASSERT_EQ(b.records.size(), 1u);
  EXPECT_EQ(a.records[0]->timestamp(), 1600000000 - kReferenceDateOffset);
  EXPECT_EQ(b.records[0]->timestamp(), 1500000000 - kReferenceDateOffset);
  EXPECT_EQ(QnClock::now(), 1700000000);
  QnClock::setFixedTime(std::nullopt);

  // The ink view listens to its own context's notifications, not the default centre's.
  auto inkOf = [](OwnContext& s) { return s.session.scrivlet().scrivletController()->drawingController()->canvasView(); };
  auto postColor = [](QnNotificationCenter& center, QnColor color) {
    center.postNotificationName("colorChanged", nullptr, {{"color", std::any(color)}});
  };
  postColor(QnNotificationCenter::defaultCenter(), QnColor(1, 0, 0, 1));
  EXPECT_EQ(inkOf(a)->strokeColor(), QnColor::black());
  postColor(a.context->notificationCenter(), QnColor(0, 0, 1, 1));
  EXPECT_EQ(inkOf(a)->strokeColor(), QnColor(0, 0, 1, 1));
  EXPECT_EQ(inkOf(b)->strokeColor(), QnColor::black());
}

// And its own device: a screen of scale 3 (this machine's model, unknown to the density table, counts
// 401 pixels an inch) measures speed in metres of 0.0254 / 401 * 3 a point, and shows the record at 3.
TEST(SessionContext, ASessionMeasuresAndShowsForItsOwnContextsScreen) {
  auto loop = std::make_shared<HeadlessRunLoop>();
  auto context = QnContext::create();
  context->setScheduler(loop), context->setScreenScale(3), context->setNativeScale(3);
  auto view = HeadlessView::create(makeRect(0, 0, 300, 200));
  SignatureSession session(view, context);
  std::shared_ptr<QnSignature> record;
  session.setOnSignatureReady([&](std::shared_ptr<QnSignature> r) { record = std::move(r); });
  EXPECT_FLOAT_EQ(session.scrivlet().scrivletController()->drawingController()->metersPerPoint(), 0.0254f / 401 * 3);
  touchPaths(*view, {{{20, 20}, {60, 40}, {90, 30}}}, 1);
  session.done();
  for (int i = 0; i < 4 && !record; ++i) loop->advance(0.25), loop->runUntilIdle();
  ASSERT_TRUE(record && record->imageView());
  EXPECT_EQ(record->imageView()->image().scale(), 3);
}

}  // namespace
}  // namespace scrivlet
