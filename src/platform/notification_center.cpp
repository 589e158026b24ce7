// A notification centre, safe to use from any thread (the default one is the default context's).
#include <scrivlet/engine/notification_center.h>

#include <algorithm>

namespace scrivlet {

void QnNotificationCenter::addObserver(const void* observer, const std::string& name,
                                       Handler handler) {
  std::lock_guard<std::mutex> lock(mutex_);
  registrations_.push_back({nextId_++, observer, name, std::move(handler)});
}

void QnNotificationCenter::removeObserver(const void* observer) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(registrations_, [observer](const Registration& r) { return r.observer == observer; });
}

bool QnNotificationCenter::isRegistered(uint64_t id) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::any_of(registrations_.begin(), registrations_.end(),
                     [id](const Registration& r) { return r.id == id; });
}

size_t QnNotificationCenter::observerCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return registrations_.size();
}

void QnNotificationCenter::postNotification(const QnNotification& notification) {
  // A handler may add or remove observers: tell those registered when the post began that are
  // still registered when their turn comes.
  std::vector<Registration> current;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    current = registrations_;
  }
  for (const Registration& r : current)
    if (r.name == notification.name && r.handler && isRegistered(r.id)) r.handler(notification);
}

void QnNotificationCenter::postNotificationName(const std::string& name, const void* sender,
                                                std::map<std::string, std::any> userInfo) {
  postNotification({name, sender, std::move(userInfo)});
}

}  // namespace scrivlet
