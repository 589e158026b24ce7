// The default notification centre. Registrations and posts happen on the main thread.
#include <scrivlet/notification_center.h>

#include <algorithm>

namespace scrivlet {

QnNotificationCenter& QnNotificationCenter::defaultCenter() {
  static QnNotificationCenter center;
  return center;
}

void QnNotificationCenter::addObserver(const void* observer, const std::string& name,
                                       Handler handler) {
  registrations_.push_back({nextId_++, observer, name, std::move(handler)});
}

void QnNotificationCenter::removeObserver(const void* observer) {
  registrations_.erase(std::remove_if(registrations_.begin(), registrations_.end(),
                                      [observer](const Registration& r) { return r.observer == observer; }),
                       registrations_.end());
}

void QnNotificationCenter::postNotification(const QnNotification& notification) {
  // A handler may add or remove observers: tell those registered when the post began that are
  // still registered when their turn comes.
  std::vector<Registration> current = registrations_;
  for (const Registration& r : current) {
    if (r.name != notification.name || !r.handler) continue;
    bool stillRegistered = std::any_of(registrations_.begin(), registrations_.end(),
                                       [&r](const Registration& now) { return now.id == r.id; });
    if (stillRegistered) r.handler(notification);
  }
}

void QnNotificationCenter::postNotificationName(const std::string& name, const void* sender,
                                                std::map<std::string, std::any> userInfo) {
  postNotification({name, sender, std::move(userInfo)});
}

}  // namespace scrivlet
