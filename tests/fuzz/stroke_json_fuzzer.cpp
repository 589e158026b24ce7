// Fuzzes loading strokes from JSON: the input as it is (first byte even), or a document made from it
// with members of wrong types, deep nesting and long lists (first byte odd). Whatever loads must save
// and load again to the same document; a document made only of right members must load; a refusal
// gives one line of reason; and the reading never holds more than four times the input in memory,
// plus the room of the most strokes a document may have.
#include <scrivlet/stroke_json.h>

#include "document_generator.h"
#include "reader_fuzzing.h"

#include <cmath>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  constexpr const char* kFuzzer = "stroke JSON fuzzer";
  if (size == 0) return 0;
  fuzz::DocumentGenerator generator(data + 1, size - 1);
  const bool made = data[0] & 1;
  const std::string text = made ? generator.strokesDocument() : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
  Result<QnStrokeListRef> read = fuzz::readWithinBounds(text, "strokesFromJson", [&] { return strokesFromJson(text); });
  if (!read) return fuzz::checkRefusal(kFuzzer, read.error(), made && generator.valid()), 0;
  QnStrokeListRef strokes = *read;
  for (const auto& stroke : *strokes)
    for (const QnSignaturePoint& p : *stroke)
      if (!std::isfinite(p.location.x) || !std::isfinite(p.location.y)) fuzz::violated(kFuzzer, "a position that is not finite");
  std::string saved = strokesToJson(strokes);
  Result<QnStrokeListRef> again = strokesFromJson(saved);
  if (!again || strokesToJson(*again) != saved) fuzz::violated(kFuzzer, "a loaded document does not save and load again the same");
  return 0;
}
