// Worker processes for batches, with fork and waitpid.
#include "batch.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
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
  std::fflush(nullptr);  // nothing buffered is written twice by the children
  std::map<pid_t, std::string> running;
  size_t next = 0, finished = 0;
  int status = 0;
  while (finished < inputs.size()) {
    while (next < inputs.size() && running.size() < size_t(std::max(1, jobs))) {
      pid_t child = fork();
      if (child == 0) {
        int code = job(inputs[next]);
        std::fflush(nullptr);
        _exit(code);
      }
      if (child < 0) {
        std::fprintf(stderr, "[%zu/%zu] %s: failed (no worker process)\n", ++finished, inputs.size(),
                     inputs[next].c_str());
        status = std::max(status, 1), ++next;
        continue;
      }
      running[child] = inputs[next++];
    }
    if (running.empty()) continue;
    int code = 0;
    pid_t ended = waitpid(-1, &code, 0);
    auto found = running.find(ended);
    if (found == running.end()) continue;
    int exit = WIFEXITED(code) ? WEXITSTATUS(code) : 1;
    bool ok = exit == 0;
    status = std::max(status, exit);
    std::fprintf(stderr, "[%zu/%zu] %s: %s\n", ++finished, inputs.size(), found->second.c_str(), ok ? "ok" : "failed");
    running.erase(found);
  }
  return status;
}

}  // namespace scrivlet::tool
