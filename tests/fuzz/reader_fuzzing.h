// What the strokes and record-file fuzzers check of every reading: the memory it held, and a refusal.
#pragma once

#include <scrivlet/error.h>

#include "document_generator.h"
#include "peak_heap.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace scrivlet::fuzz {

[[noreturn]] inline void violated(const char* fuzzer, const char* what) {
  std::fprintf(stderr, "%s: %s\n", fuzzer, what);
  std::abort();
}

// Reads the text, holding the reader to four times the text in memory plus the room of the most
// strokes a document may have (10,000 empty ones).
template <class Read>
auto readWithinBounds(const std::string& text, const char* reader, Read read) {
  PeakHeap::start();
  auto result = read();
  PeakHeap::expectWithin(PeakHeap::stop(), text.size(), 4, 1 << 20, reader);
  return result;
}

// A refusal: never of a document made of right members, always with one line of reason.
inline void checkRefusal(const char* fuzzer, const Error& error, bool madeValid) {
  if (madeValid) violated(fuzzer, "a document of right members was refused");
  if (error.message.empty() || error.message.find('\n') != std::string::npos)
    violated(fuzzer, "a refusal without one line of reason");
}

// One run of a reader's fuzzer: the input as it is (first byte even), or a document `make` builds from
// it (first byte odd). A refusal must be one of `checkRefusal`; whatever reads must write and read
// again to the same document, after `check` has looked at it.
template <class Make, class Read, class Write, class Check>
int fuzzReader(const uint8_t* data, size_t size, const char* fuzzer, const char* reader, Make make, Read read,
               Write write, Check check) {
  if (size == 0) return 0;
  DocumentGenerator generator(data + 1, size - 1);
  const bool made = data[0] & 1;
  const std::string text = made ? make(generator) : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
  auto result = readWithinBounds(text, reader, [&] { return read(text); });
  if (!result) return checkRefusal(fuzzer, result.error(), made && generator.valid()), 0;
  check(*result);
  std::string written = write(*result);
  auto again = read(written);
  if (!again || write(*again) != written) violated(fuzzer, "what was read does not write and read again the same");
  return 0;
}

}  // namespace scrivlet::fuzz
