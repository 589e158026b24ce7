#include "platform/parallel.h"

#include <algorithm>
#include <cstdint>
#include <thread>

namespace scrivlet {

std::vector<RowBand> rowBands(int height, int wanted) {
  constexpr int kRowsPerBandAtLeast = 64;
  height = std::max(height, 0);
  int count = wanted > 0 ? wanted
                         : std::clamp(height / kRowsPerBandAtLeast, 1,
                                      int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u)));
  count = std::clamp(count, 1, std::max(height, 1));
  std::vector<RowBand> bands(count);
  for (int i = 0; i < count; ++i)
    bands[i] = {int(int64_t(height) * i / count), int(int64_t(height) * (i + 1) / count)};
  return bands;
}

void forEachBandInParallel(const std::vector<RowBand>& bands, const std::function<void(size_t)>& work) {
  std::vector<std::jthread> helpers;
  for (size_t i = 1; i < bands.size(); ++i) {
    try {
      helpers.emplace_back(work, i);
    } catch (const std::system_error&) {
      work(i);
    }
  }
  if (!bands.empty()) work(0);
}

}  // namespace scrivlet
