// The headless run loop.
#include <scrivlet/headless_run_loop.h>

#include <algorithm>
#include <chrono>

namespace scrivlet {

namespace {

double steadySeconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

class HeadlessRunLoop::Timer : public QnTimer {
 public:
  void invalidate() override { valid_ = false; }
  bool isValid() const override { return valid_; }

 private:
  bool valid_ = true;
};

HeadlessRunLoop::HeadlessRunLoop(Clock clock, int backgroundThreads)
    : clock_(clock), startTime_(steadySeconds()) {
  for (int i = 0; i < std::max(1, backgroundThreads); ++i) workers_.emplace_back([this] { workerLoop(); });
}

HeadlessRunLoop::~HeadlessRunLoop() {
  waitForBackgroundWork();
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  workAvailable_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

double HeadlessRunLoop::now() const {
  return clock_ == Clock::manual ? manualTime_ : steadySeconds() - startTime_;
}

std::shared_ptr<QnTimer> HeadlessRunLoop::scheduleTimer(double interval, std::function<void()> action) {
  auto timer = std::make_shared<Timer>();
  double due = now() + (interval > 0 ? interval : 0);
  timers_.push_back({due, timerOrder_++, timer, std::move(action)});
  return timer;
}

void HeadlessRunLoop::runInBackground(std::function<void()> work) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    backgroundQueue_.push_back(std::move(work));
  }
  workAvailable_.notify_one();
}

void HeadlessRunLoop::postToMainThread(std::function<void()> task) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    postedTasks_.push_back(std::move(task));
  }
  posted_.notify_all();
}

void HeadlessRunLoop::workerLoop() {
  for (;;) {
    std::function<void()> work;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      workAvailable_.wait(lock, [this] { return stopping_ || !backgroundQueue_.empty(); });
      if (backgroundQueue_.empty()) return;
      work = std::move(backgroundQueue_.front());
      backgroundQueue_.pop_front();
      ++runningWork_;
    }
    work();
    work = nullptr;  // what the work held goes before it counts as done
    {
      std::lock_guard<std::mutex> lock(mutex_);
      --runningWork_;
    }
    workDone_.notify_all();
    posted_.notify_all();
  }
}

void HeadlessRunLoop::runPostedTasks() {
  for (;;) {
    std::function<void()> task;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (postedTasks_.empty()) return;
      task = std::move(postedTasks_.front());
      postedTasks_.pop_front();
    }
    task();
  }
}

void HeadlessRunLoop::waitForBackgroundWork() {
  std::unique_lock<std::mutex> lock(mutex_);
  workDone_.wait(lock, [this] { return backgroundQueue_.empty() && runningWork_ == 0; });
}

void HeadlessRunLoop::runUntilIdle() {
  for (;;) {
    waitForBackgroundWork();
    runPostedTasks();
    std::lock_guard<std::mutex> lock(mutex_);
    if (postedTasks_.empty() && backgroundQueue_.empty() && runningWork_ == 0) return;
  }
}

bool HeadlessRunLoop::fireNextDueTimer() {
  // Timers invalidated meanwhile are dropped.
  timers_.erase(std::remove_if(timers_.begin(), timers_.end(),
                               [](const PendingTimer& t) { return !t.timer->isValid(); }),
                timers_.end());
  auto next = std::min_element(timers_.begin(), timers_.end(), [](const auto& a, const auto& b) {
    return a.due != b.due ? a.due < b.due : a.order < b.order;
  });
  if (next == timers_.end() || next->due > now()) return false;
  PendingTimer fired = std::move(*next);
  timers_.erase(next);
  fired.timer->invalidate();  // a one-shot timer is spent once it fires
  if (fired.action) fired.action();
  return true;
}

void HeadlessRunLoop::advance(double seconds) {
  if (clock_ == Clock::manual) {
    double end = manualTime_ + seconds;
    for (;;) {
      runPostedTasks();
      // Move the clock to the next timer due before the end, and fire it.
      double nextDue = end;
      for (const PendingTimer& t : timers_)
        if (t.timer->isValid() && t.due < nextDue) nextDue = t.due;
      manualTime_ = std::max(manualTime_, nextDue);
      if (!fireNextDueTimer() && manualTime_ >= end) break;
    }
    runPostedTasks();
    return;
  }
  double end = now() + seconds;
  while (now() < end) {
    runPostedTasks();
    while (fireNextDueTimer()) runPostedTasks();
    std::unique_lock<std::mutex> lock(mutex_);
    posted_.wait_for(lock, std::chrono::milliseconds(2), [this] { return !postedTasks_.empty(); });
  }
  runPostedTasks();
}

}  // namespace scrivlet
