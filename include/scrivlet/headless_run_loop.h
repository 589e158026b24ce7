// The headless scheduler: a run loop on the calling (main) thread, driven by a manual clock in tests or
// by real time in programs, with background work on real threads.
#pragma once

#include <scrivlet/export.h>

#include <scrivlet/engine/scheduler.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

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
  struct PendingTimer {
    double due;
    uint64_t order;
    std::shared_ptr<Timer> timer;
    std::function<void()> action;
  };

  void workerLoop();
  // Fires due timers one at a time in due order; true when one fired.
  bool fireNextDueTimer();

  Clock clock_;
  double manualTime_ = 0;
  double startTime_;
  uint64_t timerOrder_ = 0;
  std::vector<PendingTimer> timers_;  // main thread only

  mutable std::mutex mutex_;
  std::condition_variable workAvailable_;
  std::condition_variable workDone_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> backgroundQueue_;
  std::deque<std::function<void()>> postedTasks_;
  int runningWork_ = 0;
  bool stopping_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace scrivlet
