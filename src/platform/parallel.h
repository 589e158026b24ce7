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

// Rows 0 to `height` in bands of nearly equal height: `wanted` of them, or by default one for each
// processor (at most 8) with none under 64 rows, a thinner band costing more in thread start than it
// saves. Never more bands than rows, and always at least one.
std::vector<RowBand> rowBands(int height, int wanted = 0);

// Calls work(i) for every band i, band 0 on this thread and each other on a thread of its own (or on
// this one, when no thread can be had), and returns when all are done.
void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work);

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
