// Batches on the default context's workers, with the progress on standard error.
#include "batch.h"

#include <scrivlet/engine/context.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

namespace scrivlet::tool {

std::string collidingStems(const std::vector<std::string>& inputs) {
  std::map<std::string, std::string> seen;
  for (const std::string& input : inputs) {
    auto [at, added] = seen.emplace(std::filesystem::path(input).stem().string(), input);
    if (!added) return at->second + " and " + input + " would write the same outputs: rename one";
  }
  return "";
}

int defaultJobs() { return std::max(1u, std::thread::hardware_concurrency()); }

int runBatch(const std::vector<std::string>& inputs, int jobs, const std::function<int(const std::string&)>& job) {
  if (inputs.size() == 1) return job(inputs[0]);
  std::mutex progress;
  size_t finished = 0;
  int status = 0;
  QnContext::defaultContext().forEachInParallel(inputs.size(), size_t(std::max(1, jobs)), [&](size_t i) {
    int exit = job(inputs[i]);
    std::lock_guard lock(progress);
    status = std::max(status, exit);
    // Holding standard output, so that the line never lands inside another input's report there.
    flockfile(stdout);
    std::fflush(stdout);
    std::fprintf(stderr, "[%zu/%zu] %s: %s\n", ++finished, inputs.size(), inputs[i].c_str(), exit == 0 ? "ok" : "failed");
    funlockfile(stdout);
  });
  return status;
}

}  // namespace scrivlet::tool
