// Test support for completion: a delegate that logs its calls, stroke traces, and a gate that holds
// back the background thread of a run loop.
#pragma once

#include <scrivlet/delegate.h>
#include <scrivlet/signature.h>

#include "platform/headless/headless_run_loop.h"

#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace scrivlet::test_support {

// Logs every delegate call as one line, in order. Records are named "#1", "#2"... in the order they
// first arrive, so the same record delivered twice reads the same.
class DelegateLog {
 public:
  DelegateLog() : delegate(std::make_shared<QnScrivletControllerDelegate>()) {
    delegate->scrivletDidEndLineWithSignaturePointCount = [this](auto facade, unsigned long n) {
      add(facade, "didEndLine " + std::to_string(n));
    };
    delegate->scrivletWillCompleteWithSignature = [this](auto facade, auto record) {
      add(facade, "willComplete " + name(record));
    };
    delegate->scrivletDidCompleteWithSignature = [this](auto facade, auto record) {
      add(facade, "didComplete " + name(record));
    };
    delegate->scrivletDidCompleteWithNoSignature = [this](auto facade) { add(facade, "noSignature"); };
    delegate->scrivletDidCancelModalView = [this](auto facade) { add(facade, "cancel"); };
  }
  DelegateLog(const DelegateLog&) = delete;
  DelegateLog& operator=(const DelegateLog&) = delete;

  // A line for an event of the test itself, such as a dismissal.
  void note(std::string line) { calls.push_back(std::move(line)); }
  const std::shared_ptr<QnSignature>& record(size_t number) const { return records.at(number - 1); }

  std::shared_ptr<QnScrivletControllerDelegate> delegate;
  // The facade every call must name first.
  std::weak_ptr<QnScrivlet> facade;
  std::vector<std::string> calls;
  std::vector<std::shared_ptr<QnSignature>> records;

 private:
  void add(const std::shared_ptr<QnScrivlet>& first, std::string line) {
    if (!first || first != facade.lock()) line += " (not from the facade)";
    calls.push_back(std::move(line));
  }
  std::string name(const std::shared_ptr<QnSignature>& record) {
    if (!record) return "null";
    for (size_t i = 0; i < records.size(); ++i)
      if (records[i] == record) return "#" + std::to_string(i + 1);
    records.push_back(record);
    return "#" + std::to_string(records.size());
  }
};

using Trace = std::vector<std::vector<std::pair<double, double>>>;

// The locations of every point, stroke by stroke.
inline Trace traceOf(const QnStrokeListRef& strokes) {
  Trace trace;
  if (!strokes) return trace;
  for (const QnStrokeRef& stroke : *strokes) {
    trace.emplace_back();
    if (stroke)
      for (const QnSignaturePoint& point : *stroke)
        trace.back().emplace_back(point.location.x, point.location.y);
  }
  return trace;
}

// Work queued on a one-thread run loop behind close() neither starts nor finishes until open().
class BackgroundGate {
 public:
  BackgroundGate() : opened_(promise_.get_future().share()) {}
  ~BackgroundGate() { open(); }
  void close(HeadlessRunLoop& loop) {
    loop.runInBackground([opened = opened_] { opened.wait(); });
  }
  void open() {
    if (!isOpen_) promise_.set_value();
    isOpen_ = true;
  }

 private:
  std::promise<void> promise_;
  std::shared_future<void> opened_;
  bool isOpen_ = false;
};

}  // namespace scrivlet::test_support
