// In-process notifications by name, with user information, such as "colorChanged" with a "color".
#pragma once

#include <scrivlet/export.h>

#include <any>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace scrivlet {

struct SCRIVLET_EXPORT QnNotification {
  std::string name;
  const void* sender = nullptr;
  std::map<std::string, std::any> userInfo;
};

class SCRIVLET_EXPORT QnNotificationCenter {
 public:
  using Handler = std::function<void(const QnNotification&)>;

  static QnNotificationCenter& defaultCenter();

  // The observer is a key that removeObserver takes; a handler is told of every post of the name.
  void addObserver(const void* observer, const std::string& name, Handler handler);
  // Removes every registration of the observer.
  void removeObserver(const void* observer);
  // Tells the handlers registered for the name, on the calling thread, in registration order.
  // Registering, removing and posting are safe from any thread; handlers run without a lock held.
  void postNotification(const QnNotification& notification);
  void postNotificationName(const std::string& name, const void* sender,
                            std::map<std::string, std::any> userInfo = {});
  // How many registrations are in force.
  size_t observerCount() const;

 private:
  struct Registration {
    uint64_t id;
    const void* observer;
    std::string name;
    Handler handler;
  };
  bool isRegistered(uint64_t id) const;

  mutable std::mutex mutex_;
  std::vector<Registration> registrations_;
  uint64_t nextId_ = 1;
};

}  // namespace scrivlet
