// The headless scheduler: a run loop on the calling (main) thread, driven by a manual clock in tests or
// by real time in programs, with background work on real threads.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/scheduler.h>

#include <functional>
#include <memory>

namespace scrivlet {

class SCRIVLET_EXPORT HeadlessRunLoop : public QnScheduler,
                                        public std::enable_shared_from_this<HeadlessRunLoop> {
 public:
  enum class Clock { manual, realTime };

  explicit HeadlessRunLoop(Clock clock = Clock::manual, int backgroundThreads = 2);
  // Waits for background work still running, then stops the threads.
  ~HeadlessRunLoop() override;

  std::shared_ptr<QnTimer> scheduleTimer(double interval, std::function<void()> action) override;
  void runInBackground(std::function<void()> work) override;
  void postToMainThread(std::function<void()> task) override;

  // Seconds on the loop's clock.
  double now() const;
  // Manual clock: moves time on and fires the timers that come due, in time order, running posted
  // tasks as it goes. Real time: runs the loop for that long.
  void advance(double seconds);
  // Runs the tasks posted so far (and those they post), without waiting for background work.
  void runPostedTasks();
  // Waits for background work and runs posted tasks until neither is left; timers that are not due
  // stay pending.
  void runUntilIdle();
  // Blocks until no background work is running or queued.
  void waitForBackgroundWork();

 private:
  class Timer;
  struct State;

  void workerLoop();
  // Fires due timers one at a time in due order; true when one fired.
  bool fireNextDueTimer();

  std::unique_ptr<State> d_;
};

}  // namespace scrivlet
