// The thread pool, and rows drawn in bands on it.
#include "platform/parallel.h"

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>

namespace scrivlet {

namespace {
int processors() { return int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u)); }
std::atomic<int> threadsSet{0};
}  // namespace

bool ThreadPool::Task::runIfPending() {
  int pending = 0;
  if (!state_.compare_exchange_strong(pending, 1)) return false;
  work_();
  work_ = nullptr;
  {
    std::lock_guard lock(mutex_);
    state_ = 2;
  }
  done_.notify_all();
  return true;
}

void ThreadPool::Task::wait() {
  if (runIfPending()) return;
  std::unique_lock lock(mutex_);
  done_.wait(lock, [this] { return state_ == 2; });
}

ThreadPool::ThreadPool(int threads) {
  for (int i = 0; i < (threads > 0 ? threads : processors()); ++i) {
    try {
      workers_.emplace_back([this] { workerLoop(); });
    } catch (const std::system_error&) {
      break;  // fewer workers; with none, every task runs where it is waited for
    }
  }
}

ThreadPool::~ThreadPool() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  available_.notify_all();
  for (std::thread& worker : workers_) worker.join();
  for (const std::shared_ptr<Task>& task : queue_) task->runIfPending();
}

std::shared_ptr<ThreadPool::Task> ThreadPool::submit(std::function<void()> work) {
  auto task = std::make_shared<Task>(std::move(work));
  if (workers_.empty()) return task;  // run by whoever waits for it
  {
    std::lock_guard lock(mutex_);
    queue_.push_back(task);
  }
  available_.notify_one();
  return task;
}

void ThreadPool::workerLoop() {
  for (;;) {
    std::shared_ptr<Task> task;
    {
      std::unique_lock lock(mutex_);
      available_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      if (queue_.empty()) return;
      task = std::move(queue_.front());
      queue_.pop_front();
    }
    task->runIfPending();
  }
}

void SerialLane::post(std::function<void()> job) {
  std::vector<std::function<void()>> done;
  std::lock_guard lock(mutex_);
  done.swap(done_);
  jobs_.push_back(std::move(job));
  if (!draining_) draining_ = pool_.submit([this] { drain(); });
}

size_t SerialLane::queued() {
  std::lock_guard lock(mutex_);
  return jobs_.size();
}

void SerialLane::drain() {
  std::function<void()> job;
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      if (job) done_.push_back(std::exchange(job, nullptr));
      if (jobs_.empty()) {
        draining_ = nullptr;  // the task ends; the next post submits another
        return;
      }
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    job();
  }
}

void SerialLane::wait() {
  std::shared_ptr<ThreadPool::Task> task;
  {
    std::lock_guard lock(mutex_);
    task = std::move(draining_);
  }
  // The task runs jobs until none is left, and only this thread posts; no task, no job left.
  if (task) task->wait();
  std::vector<std::function<void()>> done;
  std::lock_guard lock(mutex_);
  done.swap(done_);
}

std::vector<RowBand> rowBands(int height) {
  std::vector<RowBand> bands;
  for (int top = 0; top < height; top += std::min(kBandRows, height - top))
    bands.push_back({top, top + std::min(kBandRows, height - top)});
  if (bands.empty()) bands.push_back({0, 0});
  return bands;
}

int bandThreads() {
  int set = threadsSet.load();
  return set > 0 ? set : processors();
}

void setBandThreads(int count) { threadsSet = std::max(count, 0); }

void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work, int threads) {
  std::atomic<size_t> next{0};
  auto takeBands = [&] {
    for (size_t i = next++; i < bands.size(); i = next++) work(i);
  };
  size_t helpers = bands.empty() ? 0 : std::min(size_t(std::max(threads, 1)), bands.size()) - 1;
  std::vector<std::shared_ptr<ThreadPool::Task>> running;
  for (size_t i = 0; i < helpers; ++i) running.push_back(sharedThreadPool().submit(takeBands));
  takeBands();
  for (const auto& helper : running) helper->wait();  // runs a helper no worker began: it finds no band left
}

}  // namespace scrivlet
