// Work spread over threads: one pool of workers, an image's rows in bands, and a single job run beside
// the caller.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <vector>

namespace scrivlet {

// A fixed set of worker threads running submitted tasks in order. A task that nobody has started yet
// is run by whoever waits for it, so tasks may wait for tasks they submitted, at any depth, without
// running out of workers.
class ThreadPool {
 public:
  class Task;
  // `threads` workers, or by default one for each processor (at most 8).
  explicit ThreadPool(int threads = 0);
  // Runs what is still queued, then stops the workers.
  ~ThreadPool();
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  // Queues the work; the handle waits for it (or runs it, when no worker has).
  std::shared_ptr<Task> submit(std::function<void()> work);
  int threadCount() const { return int(workers_.size()); }

 private:
  void workerLoop();
  std::mutex mutex_;
  std::condition_variable available_;
  std::deque<std::shared_ptr<Task>> queue_;
  bool stopping_ = false;
  std::vector<std::thread> workers_;
};

class ThreadPool::Task {
 public:
  explicit Task(std::function<void()> work) : work_(std::move(work)) {}
  // Runs the work here unless a worker has begun it, then waits until it is done.
  void wait();
  // Runs the work unless someone has begun it; false when someone had.
  bool runIfPending();

 private:
  std::function<void()> work_;
  std::atomic<int> state_{0};  // pending, running, done
  std::mutex mutex_;
  std::condition_variable done_;
};

// Jobs run one after another, in the order posted, on workers of a pool: off the poster's thread, with
// no job beside another of the same lane. Post and wait from one thread.
class SerialLane {
 public:
  explicit SerialLane(ThreadPool& pool) : pool_(pool) {}
  // Waits for every job posted.
  ~SerialLane() { wait(); }
  SerialLane(const SerialLane&) = delete;
  SerialLane& operator=(const SerialLane&) = delete;

  void post(std::function<void()> job);
  // Returns once every job posted is done (running what no worker has begun here).
  void wait();
  // Jobs posted that no worker has begun.
  size_t queued();

 private:
  void drain();
  ThreadPool& pool_;
  std::mutex mutex_;
  std::deque<std::function<void()>> jobs_;
  // Jobs run, let go of on the poster's thread: what they hold goes back to the allocator where it
  // came from, instead of piling up in a worker's cache of freed blocks.
  std::vector<std::function<void()>> done_;
  std::shared_ptr<ThreadPool::Task> draining_;  // the task running the jobs, while there are any
};

// The pool of the default context.
ThreadPool& sharedThreadPool();

struct RowBand {
  int firstRow = 0, endRow = 0;
};

// Rows 0 to `height` in bands of kBandRows rows, the last one shorter. The edges depend on the height
// alone, so that work done band by band gives the same pixels and bytes on any number of threads.
constexpr int kBandRows = 256;
std::vector<RowBand> rowBands(int height);

// The threads that band work runs on: by default one a processor, at most 8. A count set here
// (1 runs everything on the calling thread) holds until 0 puts the default back.
int bandThreads();
void setBandThreads(int count);

// Calls work(i) once for every band i, on up to `threads` threads (the calling one and workers of the
// shared pool), each taking the next band not yet taken, and returns when all are done.
void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work,
                           int threads = bandThreads());

// A job run on the shared pool beside the caller, or here and now when `aside` is false; `get` waits
// for its result (running it itself when no worker has begun it).
template <class Result>
class Aside {
 public:
  template <class Work>
  explicit Aside(Work work, bool aside = true) {
    if (!aside) {
      result_ = work();
      return;
    }
    task_ = sharedThreadPool().submit([this, work = std::move(work)]() mutable { result_ = work(); });
  }
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
  ~Aside() {
    if (task_) task_->wait();
  }

  Result get() {
    if (task_) task_->wait(), task_.reset();
    return std::move(result_);
  }

 private:
  std::shared_ptr<ThreadPool::Task> task_;
  Result result_{};
};

template <class Work>
Aside(Work, bool = true) -> Aside<std::invoke_result_t<Work&>>;

}  // namespace scrivlet
