// Fuzzes reading record files: the input as it is (first byte even), or a record made from it with
// members of wrong types, deep nesting and long lists (first byte odd). Whatever reads must write and
// read again to the same document; a record made only of right members must read; a refusal gives
// one line of reason; and the reading never holds more than four times the input in memory, plus the
// room of the most strokes a document may have.
#include <scrivlet/record_file.h>

#include "document_generator.h"
#include "peak_heap.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int64_t kMostHeldBeyondInput = 1 << 20;  // 10,000 empty strokes

[[noreturn]] void violated(const char* what) {
  std::fprintf(stderr, "record file fuzzer: %s\n", what);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  if (size == 0) return 0;
  fuzz::DocumentGenerator generator(data + 1, size - 1);
  const bool made = data[0] & 1;
  const std::string text = made ? generator.recordDocument() : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
  LoadError error;
  fuzz::PeakHeap::start();
  std::optional<RecordFile> record = recordFromJson(text, &error);
  fuzz::PeakHeap::expectWithin(fuzz::PeakHeap::stop(), text.size(), 4, kMostHeldBeyondInput, "recordFromJson");
  if (!record) {
    if (made && generator.valid()) violated("a record of right members did not read");
    if (error.message.empty() || error.message.find('\n') != std::string::npos) violated("a refusal without one line of reason");
    return 0;
  }
  if (!record->strokes) violated("a record without strokes");
  std::string written = recordFileToJson(*record);
  std::optional<RecordFile> again = recordFromJson(written);
  if (!again || recordFileToJson(*again) != written) violated("a record read does not write and read again the same");
  return 0;
}
