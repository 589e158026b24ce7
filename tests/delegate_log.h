// Test support shared by the core and Qt tests: a delegate that logs its calls, fingers on a plain view,
// and a manual run loop.
#pragma once

#include <scrivlet/device.h>
#include <scrivlet/facade.h>
#include <scrivlet/headless_run_loop.h>
#include <scrivlet/headless_touch.h>
#include <scrivlet/scrivlet_controller.h>
#include <scrivlet/signature.h>

#include "capture/drawing_controller.h"
#include "output_support.h"

#include <algorithm>

namespace scrivlet::test_support {

using Calls = std::vector<std::string>;

// Every delegate call as one line, in order. Records are named "#1", "#2"... as they first arrive, so
// the same record delivered twice reads the same; a call that names another facade says so.
struct DelegateLog {
  DelegateLog() {
    delegate->scrivletDidEndLineWithSignaturePointCount = [this](auto f, auto n) { add(f, "didEndLine " + std::to_string(n)); };
    delegate->scrivletWillCompleteWithSignature = [this](auto f, auto r) { add(f, "willComplete " + name(r)); };
    delegate->scrivletDidCompleteWithSignature = [this](auto f, auto r) { add(f, "didComplete " + name(r)); };
    delegate->scrivletDidCompleteWithNoSignature = [this](auto f) { add(f, "noSignature"); };
    delegate->scrivletDidCancelModalView = [this](auto f) { add(f, "cancel"); };
  }
  DelegateLog(const DelegateLog&) = delete;  // the delegate's calls land in this one
  void add(const std::shared_ptr<QnScrivlet>& from, const std::string& line) {
    calls.push_back(from && from == facade.lock() ? line : line + " (not from the facade)");
  }
  std::string name(const std::shared_ptr<QnSignature>& record) {
    auto at = std::find(records.begin(), records.end(), record);
    if (record && at == records.end()) at = records.insert(at, record);
    return record ? "#" + std::to_string(at - records.begin() + 1) : "null";
  }
  bool has(const std::string& call) const { return std::find(calls.begin(), calls.end(), call) != calls.end(); }

  std::shared_ptr<QnScrivletControllerDelegate> delegate = std::make_shared<QnScrivletControllerDelegate>();
  std::weak_ptr<QnScrivlet> facade;  // the facade every call must name first
  Calls calls;
  std::vector<std::shared_ptr<QnSignature>> records;
};

// Fingers that land together on the paths' first points, move through them 0.01 s apart, and lift.
inline void touchPaths(QnView& view, const Trace& paths, double t) {
  QnTouchSet fingers;
  for (const Path& p : paths) fingers.push_back(std::make_shared<HeadlessTouch>(QnPoint{p[0].first, p[0].second}, t));
  view.deliverTouches(QnTouchPhase::began, fingers, QnEvent(fingers));
  for (size_t i = 1; i < paths[0].size(); ++i) {
    for (size_t k = 0; k < fingers.size(); ++k)
      static_cast<HeadlessTouch&>(*fingers[k]).moveTo({paths[k][i].first, paths[k][i].second}, t + 0.01 * i);
    view.deliverTouches(QnTouchPhase::moved, fingers, QnEvent(fingers));
  }
  view.deliverTouches(QnTouchPhase::ended, fingers, QnEvent(fingers));
}

// Default device settings and a manual run loop while it lives; the defaults and a real-time loop after.
struct ManualLoop {
  explicit ManualLoop(int threads = 2) : loop(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::manual, threads)) {
    QnDevice::resetToDefaults(), QnScheduler::setCurrent(loop);
  }
  ~ManualLoop() {
    QnScheduler::setCurrent(std::make_shared<HeadlessRunLoop>(HeadlessRunLoop::Clock::realTime));
    QnDevice::resetToDefaults();
  }
  std::shared_ptr<HeadlessRunLoop> loop;
};

}  // namespace scrivlet::test_support
