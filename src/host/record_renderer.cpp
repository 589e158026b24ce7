// Saved strokes drawn into a record by a signing session on a headless view.
#include <scrivlet/record_renderer.h>

#include <scrivlet/headless.h>
#include <scrivlet/signature_session.h>

#include "platform/clock.h"

#include <cmath>
#include <cstdio>

namespace scrivlet {

namespace {

// The exports frame the strokes themselves, so the view only has to exist: a small one keeps the
// live ink cache small.
constexpr double kViewWidth = 320, kViewHeight = 160;
// Steps of the manual clock until the record is ready: the preparation starts after its delay (0.2 s)
// and each step waits for the background work it started.
constexpr int kMostSteps = 100;
constexpr double kStep = 0.05;

}  // namespace

std::shared_ptr<QnSignature> renderRecordOfStrokes(const QnStrokeListRef& strokes,
                                                   const RecordRenderSettings& settings) {
  auto loop = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, 1);
  QnScheduler::setCurrent(loop);
  // The date line and the record's time are those of the signing when one is given.
  bool fixedTime = settings.timestamp && std::isfinite(*settings.timestamp);
  if (fixedTime) QnClock::setFixedTime(*settings.timestamp + kReferenceDateOffset);

  std::shared_ptr<QnSignature> record;
  bool answered = false;
  {
    SignatureSession session(HeadlessView::create(makeRect(0, 0, kViewWidth, kViewHeight)));
    QnScrivlet& scrivlet = session.scrivlet();
    scrivlet.setExportScale(settings.exportScale);
    if (settings.strokeColor) scrivlet.setStrokeColor(*settings.strokeColor);
    scrivlet.setShowDate(settings.showDate);
    scrivlet.setDateIncludesTime(settings.dateIncludesTime);
    scrivlet.setShowHash(settings.showHash);
    if (settings.hash) scrivlet.setCustomHash(settings.hash);
    session.signatureReady = [&](std::shared_ptr<QnSignature> r) { record = std::move(r), answered = true; };
    session.signedNothing = [&] { answered = true; };
    session.setStrokes(strokes);
    session.done();
    for (int i = 0; i < kMostSteps && !answered; ++i) loop->advance(kStep), loop->runUntilIdle();
  }
  loop->runUntilIdle();
  if (fixedTime) QnClock::setFixedTime(std::nullopt);
  if (!record) std::fprintf(stderr, "Scrivlet: no record drawn: there are no points to draw\n");
  return record;
}

}  // namespace scrivlet
