// Contexts, and the static entry points as views of the default one.
#include <scrivlet/engine/context.h>

#include <scrivlet/engine/device.h>
#include <scrivlet/headless_run_loop.h>
#include <scrivlet/engine/notification_center.h>

#include "platform/clock.h"
#include "platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>

namespace scrivlet {

struct QnContext::Private {
  std::mutex schedulerMutex;
  std::shared_ptr<QnScheduler> scheduler;
  std::atomic<bool> fixed{false};
  std::atomic<double> fixedTime{0};
  std::atomic<double> screenScale{1.0};
  std::atomic<double> nativeScale{1.0};
  std::atomic<int> idiom{kQnUserInterfaceIdiomPhone};
  std::atomic<bool> reportsIdiom{true};
  QnNotificationCenter notifications;
  std::once_flag poolMade;
  std::unique_ptr<ThreadPool> pool;  // made when first used
};

QnContext::QnContext() : d_(std::make_unique<Private>()) {}
QnContext::~QnContext() = default;

QnContext& QnContext::defaultContext() {
  // Never destroyed: work may still reach it while the process exits.
  static QnContext* context = new QnContext;
  return *context;
}

std::shared_ptr<QnContext> QnContext::create() { return std::shared_ptr<QnContext>(new QnContext); }

QnScheduler& QnContext::scheduler() {
  std::lock_guard lock(d_->schedulerMutex);
  if (!d_->scheduler) d_->scheduler = std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime);
  return *d_->scheduler;
}

void QnContext::setScheduler(std::shared_ptr<QnScheduler> scheduler) {
  std::shared_ptr<QnScheduler> previous;
  {
    std::lock_guard lock(d_->schedulerMutex);
    previous = std::move(d_->scheduler);
    d_->scheduler = std::move(scheduler);
  }
  // The previous one goes outside the lock: its destructor waits for its background work.
}

double QnContext::now() const {
  if (d_->fixed.load()) return d_->fixedTime.load();
  using namespace std::chrono;
  return duration<double>(system_clock::now().time_since_epoch()).count();
}

void QnContext::setFixedTime(std::optional<double> unixSeconds) {
  d_->fixedTime.store(unixSeconds.value_or(0));
  d_->fixed.store(unixSeconds.has_value());
}

double QnContext::screenScale() const { return d_->screenScale.load(); }
void QnContext::setScreenScale(double scale) { d_->screenScale.store(scale); }
double QnContext::nativeScale() const { return d_->nativeScale.load(); }
void QnContext::setNativeScale(double scale) { d_->nativeScale.store(scale); }
int QnContext::userInterfaceIdiom() const { return d_->idiom.load(); }
void QnContext::setUserInterfaceIdiom(int idiom) { d_->idiom.store(idiom); }
bool QnContext::reportsUserInterfaceIdiom() const { return d_->reportsIdiom.load(); }
void QnContext::setReportsUserInterfaceIdiom(bool reports) { d_->reportsIdiom.store(reports); }

void QnContext::resetDeviceToDefaults() {
  setScreenScale(1.0);
  setNativeScale(1.0);
  setUserInterfaceIdiom(kQnUserInterfaceIdiomPhone);
  setReportsUserInterfaceIdiom(true);
}

QnNotificationCenter& QnContext::notificationCenter() { return d_->notifications; }

ThreadPool& QnContext::threadPool() {
  std::call_once(d_->poolMade, [this] { d_->pool = std::make_unique<ThreadPool>(); });
  return *d_->pool;
}

void QnContext::forEachInParallel(size_t count, size_t width, const std::function<void(size_t)>& work) {
  std::atomic<size_t> next{0};
  auto loop = [&] {
    for (size_t i; (i = next++) < count;) work(i);
  };
  std::vector<std::shared_ptr<ThreadPool::Task>> helpers;
  for (size_t k = 1; k < std::min(count, std::max<size_t>(width, 1)); ++k) helpers.push_back(threadPool().submit(loop));
  loop();
  for (const auto& helper : helpers) helper->wait();
}

ThreadPool& sharedThreadPool() { return QnContext::defaultContext().threadPool(); }

// The static entry points.
QnScheduler& QnScheduler::current() { return QnContext::defaultContext().scheduler(); }
void QnScheduler::setCurrent(std::shared_ptr<QnScheduler> scheduler) {
  QnContext::defaultContext().setScheduler(std::move(scheduler));
}
double QnClock::now() { return QnContext::defaultContext().now(); }
void QnClock::setFixedTime(std::optional<double> unixSeconds) { QnContext::defaultContext().setFixedTime(unixSeconds); }
double QnDevice::screenScale() { return QnContext::defaultContext().screenScale(); }
void QnDevice::setScreenScale(double scale) { QnContext::defaultContext().setScreenScale(scale); }
double QnDevice::nativeScale() { return QnContext::defaultContext().nativeScale(); }
void QnDevice::setNativeScale(double scale) { QnContext::defaultContext().setNativeScale(scale); }
int QnDevice::userInterfaceIdiom() { return QnContext::defaultContext().userInterfaceIdiom(); }
void QnDevice::setUserInterfaceIdiom(int idiom) { QnContext::defaultContext().setUserInterfaceIdiom(idiom); }
bool QnDevice::reportsUserInterfaceIdiom() { return QnContext::defaultContext().reportsUserInterfaceIdiom(); }
void QnDevice::setReportsUserInterfaceIdiom(bool reports) {
  QnContext::defaultContext().setReportsUserInterfaceIdiom(reports);
}
void QnDevice::resetToDefaults() { QnContext::defaultContext().resetDeviceToDefaults(); }
QnNotificationCenter& QnNotificationCenter::defaultCenter() { return QnContext::defaultContext().notificationCenter(); }

}  // namespace scrivlet
