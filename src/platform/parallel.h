// Work spread over threads: an image's rows in bands, and a single job run beside the caller.
#pragma once

#include <functional>
#include <future>
#include <system_error>
#include <type_traits>
#include <vector>

namespace scrivlet {

struct RowBand {
  int firstRow = 0, endRow = 0;
};

// Rows 0 to `height` in bands of kBandRows rows, the last one shorter. The edges depend on the height
// alone, so that work done band by band gives the same pixels and bytes on any number of threads.
constexpr int kBandRows = 256;
std::vector<RowBand> rowBands(int height);

// The threads that band work runs on: by default one a processor, at most 8. A count set here
// (1 runs everything on the calling thread) holds until 0 puts the default back.
int bandThreads();
void setBandThreads(int count);

// Calls work(i) once for every band i, on up to `threads` threads (the calling one included), each
// taking the next band not yet taken, and returns when all are done. A thread that cannot be had
// leaves its share to the others.
void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work,
                           int threads = bandThreads());

// A job started on a thread of its own, or done here and now when no thread can be had or
// `aside` is false; `get` waits for its result.
template <class Result>
class Aside {
 public:
  template <class Work>
  explicit Aside(Work work, bool aside = true) {
    if (aside) {
      try {
        future_ = std::async(std::launch::async, work);
        return;
      } catch (const std::system_error&) {
      }
    }
    result_ = work();
  }

  Result get() { return future_.valid() ? future_.get() : std::move(result_); }

 private:
  std::future<Result> future_;
  Result result_{};
};

template <class Work>
Aside(Work, bool = true) -> Aside<std::invoke_result_t<Work&>>;

}  // namespace scrivlet
