// Timers on Qt's event loop, background work on Qt's thread pool, and queued calls to the GUI thread.
#pragma once

#include <scrivlet/engine/scheduler.h>

namespace scrivlet {

class QtScheduler : public QnScheduler {
 public:
  std::shared_ptr<QnTimer> scheduleTimer(double interval, std::function<void()> action) override;
  void runInBackground(std::function<void()> work) override;
  void postToMainThread(std::function<void()> task) override;
};

}  // namespace scrivlet
