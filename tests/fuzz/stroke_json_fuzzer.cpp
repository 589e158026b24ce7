// Fuzzes loading strokes from JSON: whatever loads must save and load again to the same document.
#include <scrivlet/stroke_json.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  QnStrokeListRef strokes = strokesFromJson(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!strokes) return 0;
  for (const auto& stroke : *strokes)
    for (const QnSignaturePoint& p : *stroke)
      if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y)) std::abort();
  std::string saved = strokesToJson(strokes);
  QnStrokeListRef again = strokesFromJson(saved);
  if (!again || strokesToJson(again) != saved) {
    std::fprintf(stderr, "stroke JSON fuzzer: a loaded document does not save and load again the same\n");
    std::abort();
  }
  return 0;
}
