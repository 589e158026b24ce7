// The main thread's identity, taken when the library is loaded.
#include "platform/main_thread.h"

#include <atomic>
#include <thread>

namespace scrivlet {

namespace {
std::atomic<std::thread::id>& mainThreadId() {
  static std::atomic<std::thread::id> id{std::this_thread::get_id()};
  return id;
}
// Static initialisation runs on the thread that starts the process.
const bool gMainThreadTaken = (mainThreadId(), true);
}  // namespace

bool isMainThread() { return mainThreadId().load() == std::this_thread::get_id(); }

void markMainThread() { mainThreadId().store(std::this_thread::get_id()); }

}  // namespace scrivlet
