// Fuzzes reading record files: the input as it is (first byte even), or a record made from it with
// members of wrong types, deep nesting and long lists (first byte odd). Whatever reads must write and
// read again to the same document; a record made only of right members must read; a refusal gives
// one line of reason; and the reading never holds more than four times the input in memory, plus the
// room of the most strokes a document may have.
#include <scrivlet/record_file.h>

#include "document_generator.h"
#include "reader_fuzzing.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  constexpr const char* kFuzzer = "record file fuzzer";
  if (size == 0) return 0;
  fuzz::DocumentGenerator generator(data + 1, size - 1);
  const bool made = data[0] & 1;
  const std::string text = made ? generator.recordDocument() : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
  Result<RecordFile> record = fuzz::readWithinBounds(text, "recordFromJson", [&] { return recordFromJson(text); });
  if (!record) return fuzz::checkRefusal(kFuzzer, record.error(), made && generator.valid()), 0;
  if (!record->strokes()) fuzz::violated(kFuzzer, "a record without strokes");
  std::string written = recordFileToJson(*record);
  Result<RecordFile> again = recordFromJson(written);
  if (!again || recordFileToJson(*again) != written) fuzz::violated(kFuzzer, "a record read does not write and read again the same");
  return 0;
}
