// Many inputs at once on threads of this process, as many at a time as there are cores, with the
// progress on standard error.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace scrivlet::tool {

// Inputs whose outputs, named after the input's stem, would land on the same file: one line naming
// them, or nothing.
std::string collidingStems(const std::vector<std::string>& inputs);

// Runs the job on every input and answers the highest exit status any answered (0 when all did). A
// single input runs on this thread. With several, at most `jobs` run at once on this thread and the
// library's workers, and a line "[done/total] input: ok" or "failed" is written on standard error as
// each ends.
int runBatch(const std::vector<std::string>& inputs, int jobs, const std::function<int(const std::string&)>& job);

// The number of cores.
int defaultJobs();

}  // namespace scrivlet::tool
