// Lines of the log: to the host's sink, or to standard error in one piece each.
#include "platform/log.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace scrivlet {

namespace {

std::mutex sinkMutex;
std::shared_ptr<const LogSink> installedSink;  // empty: standard error

void writeToStandardError(std::string_view line) {
  // One write per line, so that lines of several threads never interleave.
  std::string whole(line);
  whole += '\n';
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

}  // namespace

void setLogSink(LogSink sink) {
  auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
  std::lock_guard lock(sinkMutex);
  installedSink = std::move(next);
}

void logLine(LogLevel level, std::string_view line) {
  std::shared_ptr<const LogSink> sink;
  {
    // Held only to copy the pointer: the sink runs unlocked, and one replaced meanwhile stays alive.
    std::lock_guard lock(sinkMutex);
    sink = installedSink;
  }
  if (sink) (*sink)(level, line);
  else writeToStandardError(line);
}

}  // namespace scrivlet
