// The thread pool, and rows drawn in bands on it.
#include "platform/parallel.h"

#include <algorithm>
#include <cstdint>
#include <system_error>

namespace scrivlet {

namespace {
int processors() { return int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u)); }
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

std::vector<RowBand> rowBands(int height, int wanted) {
  constexpr int kRowsPerBandAtLeast = 64;
  height = std::max(height, 0);
  int count = wanted > 0 ? wanted : std::clamp(height / kRowsPerBandAtLeast, 1, processors());
  count = std::clamp(count, 1, std::max(height, 1));
  std::vector<RowBand> bands(count);
  for (int i = 0; i < count; ++i)
    bands[i] = {int(int64_t(height) * i / count), int(int64_t(height) * (i + 1) / count)};
  return bands;
}

void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work) {
  std::vector<std::shared_ptr<ThreadPool::Task>> helpers;
  for (size_t i = 1; i < bands.size(); ++i) helpers.push_back(sharedThreadPool().submit([&work, i] { work(i); }));
  if (!bands.empty()) work(0);
  for (const auto& helper : helpers) helper->wait();
}

}  // namespace scrivlet
