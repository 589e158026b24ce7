// Fuzzes reading strokes from a 19794-7 time series: whatever is read has finite positions and times,
// and the pen diameters the stroke model gives are finite and never negative.
#include <scrivlet/time_series_import.h>

#include <cmath>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  QnStrokeListRef strokes =
      strokesFromTimeSeriesXml(std::string_view(reinterpret_cast<const char*>(data), size)).value_or(nullptr);
  if (!strokes) return 0;
  for (const auto& stroke : *strokes)
    for (const QnSignaturePoint& p : *stroke)
      if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y) || !std::isfinite(p.timestamp) ||
          !std::isfinite(p.diameter) || p.diameter < 0)
        std::abort();
  return 0;
}
