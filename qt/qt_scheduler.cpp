// The Qt scheduler.
#include "qt_scheduler.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <cmath>

namespace scrivlet {

namespace {

class QtTimer : public QnTimer {
 public:
  explicit QtTimer(QTimer* timer) : timer_(timer) {}
  ~QtTimer() override { invalidate(); }
  void invalidate() override {
    if (timer_) {
      timer_->stop();
      timer_->deleteLater();
      timer_.clear();
    }
  }
  bool isValid() const override { return timer_ && timer_->isActive(); }

 private:
  QPointer<QTimer> timer_;
};

}  // namespace

std::shared_ptr<QnTimer> QtScheduler::scheduleTimer(double interval, std::function<void()> action) {
  auto* timer = new QTimer(QCoreApplication::instance());
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, action = std::move(action)] {
    timer->deleteLater();
    if (action) action();
  });
  double milliseconds = std::isfinite(interval) && interval > 0 ? interval * 1000.0 : 0.0;
  timer->start(static_cast<int>(std::lround(std::min(milliseconds, 2e9))));
  return std::make_shared<QtTimer>(timer);
}

void QtScheduler::runInBackground(std::function<void()> work) {
  QThreadPool::globalInstance()->start(std::move(work));
}

void QtScheduler::postToMainThread(std::function<void()> task) {
  // Queued calls to one object run in the order they were posted.
  QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(task), Qt::QueuedConnection);
}

}  // namespace scrivlet
