#include "platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace scrivlet {

namespace {
std::atomic<int> threadsSet{0};
}  // namespace

std::vector<RowBand> rowBands(int height) {
  std::vector<RowBand> bands;
  for (int top = 0; top < height; top += std::min(kBandRows, height - top))
    bands.push_back({top, top + std::min(kBandRows, height - top)});
  if (bands.empty()) bands.push_back({0, 0});
  return bands;
}

int bandThreads() {
  int set = threadsSet.load();
  return set > 0 ? set : int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u));
}

void setBandThreads(int count) { threadsSet = std::max(count, 0); }

void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work, int threads) {
  std::atomic<size_t> next{0};
  auto takeBands = [&] {
    for (size_t i = next++; i < bands.size(); i = next++) work(i);
  };
  size_t helpers = std::min(size_t(std::max(threads, 1)), bands.size()) - (bands.empty() ? 0 : 1);
  std::vector<std::jthread> running;
  for (size_t i = 0; i < helpers; ++i) {
    try {
      running.emplace_back(takeBands);
    } catch (const std::system_error&) {
      break;
    }
  }
  takeBands();
}

}  // namespace scrivlet
