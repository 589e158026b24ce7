// The headless run loop.
#include <scrivlet/headless_run_loop.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

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

struct HeadlessRunLoop::State {
  struct PendingTimer {
    double due;
    uint64_t order;
    std::shared_ptr<Timer> timer;
    std::function<void()> action;
  };

  Clock clock;
  double manualTime = 0;
  double startTime = steadySeconds();
  uint64_t timerOrder = 0;
  std::vector<PendingTimer> timers;  // main thread only

  mutable std::mutex mutex;
  std::condition_variable workAvailable;
  std::condition_variable workDone;
  std::condition_variable posted;
  std::deque<std::function<void()>> backgroundQueue;
  std::deque<std::function<void()>> postedTasks;
  int runningWork = 0;
  bool stopping = false;
  std::vector<std::thread> workers;
};

HeadlessRunLoop::HeadlessRunLoop(Clock clock, int backgroundThreads) : d_(std::make_unique<State>()) {
  d_->clock = clock;
  for (int i = 0; i < std::max(1, backgroundThreads); ++i) d_->workers.emplace_back([this] { workerLoop(); });
}

HeadlessRunLoop::~HeadlessRunLoop() {
  waitForBackgroundWork();
  {
    std::lock_guard<std::mutex> lock(d_->mutex);
    d_->stopping = true;
  }
  d_->workAvailable.notify_all();
  for (std::thread& worker : d_->workers) worker.join();
}

double HeadlessRunLoop::now() const {
  return d_->clock == Clock::manual ? d_->manualTime : steadySeconds() - d_->startTime;
}

std::shared_ptr<QnTimer> HeadlessRunLoop::scheduleTimer(double interval, std::function<void()> action) {
  auto timer = std::make_shared<Timer>();
  double due = now() + (interval > 0 ? interval : 0);
  d_->timers.push_back({due, d_->timerOrder++, timer, std::move(action)});
  return timer;
}

void HeadlessRunLoop::runInBackground(std::function<void()> work) {
  {
    std::lock_guard<std::mutex> lock(d_->mutex);
    d_->backgroundQueue.push_back(std::move(work));
  }
  d_->workAvailable.notify_one();
}

void HeadlessRunLoop::postToMainThread(std::function<void()> task) {
  {
    std::lock_guard<std::mutex> lock(d_->mutex);
    d_->postedTasks.push_back(std::move(task));
  }
  d_->posted.notify_all();
}

void HeadlessRunLoop::workerLoop() {
  for (;;) {
    std::function<void()> work;
    {
      std::unique_lock<std::mutex> lock(d_->mutex);
      d_->workAvailable.wait(lock, [this] { return d_->stopping || !d_->backgroundQueue.empty(); });
      if (d_->backgroundQueue.empty()) return;
      work = std::move(d_->backgroundQueue.front());
      d_->backgroundQueue.pop_front();
      ++d_->runningWork;
    }
    work();
    work = nullptr;  // what the work held goes before it counts as done
    {
      std::lock_guard<std::mutex> lock(d_->mutex);
      --d_->runningWork;
    }
    d_->workDone.notify_all();
    d_->posted.notify_all();
  }
}

void HeadlessRunLoop::runPostedTasks() {
  for (;;) {
    std::function<void()> task;
    {
      std::lock_guard<std::mutex> lock(d_->mutex);
      if (d_->postedTasks.empty()) return;
      task = std::move(d_->postedTasks.front());
      d_->postedTasks.pop_front();
    }
    task();
  }
}

void HeadlessRunLoop::waitForBackgroundWork() {
  std::unique_lock<std::mutex> lock(d_->mutex);
  d_->workDone.wait(lock, [this] { return d_->backgroundQueue.empty() && d_->runningWork == 0; });
}

void HeadlessRunLoop::runUntilIdle() {
  for (;;) {
    waitForBackgroundWork();
    runPostedTasks();
    std::lock_guard<std::mutex> lock(d_->mutex);
    if (d_->postedTasks.empty() && d_->backgroundQueue.empty() && d_->runningWork == 0) return;
  }
}

bool HeadlessRunLoop::fireNextDueTimer() {
  // Timers invalidated meanwhile are dropped.
  d_->timers.erase(std::remove_if(d_->timers.begin(), d_->timers.end(),
                               [](const State::PendingTimer& t) { return !t.timer->isValid(); }),
                d_->timers.end());
  auto next = std::min_element(d_->timers.begin(), d_->timers.end(), [](const auto& a, const auto& b) {
    return a.due != b.due ? a.due < b.due : a.order < b.order;
  });
  if (next == d_->timers.end() || next->due > now()) return false;
  State::PendingTimer fired = std::move(*next);
  d_->timers.erase(next);
  fired.timer->invalidate();  // a one-shot timer is spent once it fires
  if (fired.action) fired.action();
  return true;
}

void HeadlessRunLoop::advance(double seconds) {
  if (d_->clock == Clock::manual) {
    double end = d_->manualTime + seconds;
    for (;;) {
      runPostedTasks();
      // Move the clock to the next timer due before the end, and fire it.
      double nextDue = end;
      for (const State::PendingTimer& t : d_->timers)
        if (t.timer->isValid() && t.due < nextDue) nextDue = t.due;
      d_->manualTime = std::max(d_->manualTime, nextDue);
      if (!fireNextDueTimer() && d_->manualTime >= end) break;
    }
    runPostedTasks();
    return;
  }
  double end = now() + seconds;
  while (now() < end) {
    runPostedTasks();
    while (fireNextDueTimer()) runPostedTasks();
    std::unique_lock<std::mutex> lock(d_->mutex);
    d_->posted.wait_for(lock, std::chrono::milliseconds(2), [this] { return !d_->postedTasks.empty(); });
  }
  runPostedTasks();
}

}  // namespace scrivlet
