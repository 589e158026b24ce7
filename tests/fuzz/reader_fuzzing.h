// What the strokes and record-file fuzzers check of every reading: the memory it held, and a refusal.
#pragma once

#include <scrivlet/error.h>

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
  if (error.message().empty() || error.message().find('\n') != std::string::npos)
    violated(fuzzer, "a refusal without one line of reason");
}

}  // namespace scrivlet::fuzz
