// Many inputs at once: each in a worker process of its own, as many at a time as there are cores,
// with the progress on standard error.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace scrivlet::tool {

// Runs the job on every input and answers 0 when every one answered 0, else 1. A single input runs in
// this process. With several, each runs in a child process (the library's signing sessions are one
// per process), at most `jobs` at once, and a line "[done/total] input: ok" or "failed" is written
// on standard error as each ends.
int runBatch(const std::vector<std::string>& inputs, int jobs, const std::function<int(const std::string&)>& job);

// The number of cores.
int defaultJobs();

}  // namespace scrivlet::tool
