// Timers on the main thread, a background executor, and posting back to the main thread.
#pragma once

#include <scrivlet/export.h>

#include <functional>
#include <memory>

namespace scrivlet {

// A one-shot timer; invalidating it before it fires means it never fires.
class SCRIVLET_EXPORT QnTimer {
 public:
  virtual ~QnTimer() = default;
  virtual void invalidate() = 0;
  virtual bool isValid() const = 0;
};

class SCRIVLET_EXPORT QnScheduler {
 public:
  virtual ~QnScheduler() = default;

  // Runs the action once on the main thread after the interval in seconds, unless invalidated.
  virtual std::shared_ptr<QnTimer> scheduleTimer(double interval, std::function<void()> action) = 0;
  // Runs the work on a background thread; several may run at once.
  virtual void runInBackground(std::function<void()> work) = 0;
  // Runs the task on the main thread, after the tasks posted before it. Safe from any thread.
  virtual void postToMainThread(std::function<void()> task) = 0;

  // The scheduler in use: one a backend or a test installed, or else a headless run loop in real time.
  static QnScheduler& current();
  static void setCurrent(std::shared_ptr<QnScheduler> scheduler);
};

}  // namespace scrivlet
