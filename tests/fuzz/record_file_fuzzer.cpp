// Fuzzes reading record files: the input as it is (first byte even), or a record made from it with
// members of wrong types, deep nesting and long lists (first byte odd). Whatever reads must write and
// read again to the same document; a record made only of right members must read; a refusal gives
// one line of reason; and the reading never holds more than four times the input in memory, plus the
// room of the most strokes a document may have.
#include <scrivlet/record_file.h>

#include "reader_fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  constexpr const char* kFuzzer = "record file fuzzer";
  return fuzz::fuzzReader(
      data, size, kFuzzer, "recordFromJson", [](fuzz::DocumentGenerator& g) { return g.recordDocument(); },
      [](const std::string& text) { return recordFromJson(text); }, recordFileToJson,
      [](const RecordFile& record) {
        if (!record.strokes) fuzz::violated(kFuzzer, "a record without strokes");
      });
}
