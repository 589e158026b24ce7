// Fuzzes loading strokes from JSON: the input as it is (first byte even), or a document made from it
// with members of wrong types, deep nesting and long lists (first byte odd). Whatever loads must save
// and load again to the same document; a document made only of right members must load; a refusal
// gives one line of reason; and the reading never holds more than four times the input in memory,
// plus the room of the most strokes a document may have.
#include <scrivlet/stroke_json.h>

#include "reader_fuzzing.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  constexpr const char* kFuzzer = "stroke JSON fuzzer";
  return fuzz::fuzzReader(
      data, size, kFuzzer, "strokesFromJson", [](fuzz::DocumentGenerator& g) { return g.strokesDocument(); },
      [](const std::string& text) { return strokesFromJson(text); },
      [](const QnStrokeListRef& strokes) { return strokesToJson(strokes); },
      [](const QnStrokeListRef& strokes) {
        for (const auto& stroke : *strokes)
          for (const QnSignaturePoint& p : *stroke)
            if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y))
              fuzz::violated(kFuzzer, "a position that is not finite");
      });
}
