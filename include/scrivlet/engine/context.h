// What was once process-wide, per context: the scheduler, the clock, the device's facts, the
// notification centre and one pool of worker threads. The default context serves the one-pad case and
// is what the static entry points (QnScheduler::current, QnClock, QnDevice,
// QnNotificationCenter::defaultCenter) read and change; a context of its own keeps a server's renders
// or a test apart from it.
#pragma once

#include <scrivlet/export.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace scrivlet {

class QnNotificationCenter;
class QnScheduler;
class ThreadPool;

class SCRIVLET_EXPORT QnContext {
 public:
  static QnContext& defaultContext();
  // A context of its own: the real clock, the headless device's defaults, no observers, and a
  // real-time headless scheduler made when first asked for.
  static std::shared_ptr<QnContext> create();
  ~QnContext();
  QnContext(const QnContext&) = delete;
  QnContext& operator=(const QnContext&) = delete;

  // The scheduler in use: one a backend or a test installed, or else a headless run loop in real time.
  QnScheduler& scheduler();
  void setScheduler(std::shared_ptr<QnScheduler> scheduler);

  // Seconds since the Unix epoch: the real time, or the fixed time while one is set.
  double now() const;
  void setFixedTime(std::optional<double> unixSeconds);

  double screenScale() const;
  void setScreenScale(double scale);
  double nativeScale() const;
  void setNativeScale(double scale);
  int userInterfaceIdiom() const;
  void setUserInterfaceIdiom(int idiom);
  bool reportsUserInterfaceIdiom() const;
  void setReportsUserInterfaceIdiom(bool reports);
  void resetDeviceToDefaults();

  QnNotificationCenter& notificationCenter();
  // The workers that PNG bands, a record's parts and batches run on.
  ThreadPool& threadPool();
  // Calls work(i) for every i below count, at most `width` at once: on this thread and the workers
  // (what no worker has begun, this thread does), and returns when all are done.
  void forEachInParallel(size_t count, size_t width, const std::function<void(size_t)>& work);

 private:
  QnContext();
  struct Private;
  std::unique_ptr<Private> d_;
};

}  // namespace scrivlet
