// The most heap a reader holds at once while it reads, counted through the sanitizer's allocation
// hooks: each reader must stay within a few times its input's size.
#pragma once

#include <sanitizer/allocator_interface.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace scrivlet::fuzz {

class PeakHeap {
 public:
  // Counts from now on; what was allocated before and freed meanwhile counts as less.
  static void start() {
    static const bool installed = (__sanitizer_install_malloc_and_free_hooks(allocated, freed), true);
    (void)installed;
    live() = peak() = 0;
    counting() = true;
  }
  // The largest growth since start.
  static int64_t stop() { return counting() = false, peak(); }

  // Aborts when the reader held more than `factor` times the input's size plus `constant` bytes.
  static void expectWithin(int64_t held, size_t inputSize, int64_t factor, int64_t constant, const char* reader) {
    if (held <= factor * int64_t(inputSize) + constant) return;
    std::fprintf(stderr, "%s held %lld bytes of heap at once for %zu bytes of input\n", reader,
                 static_cast<long long>(held), inputSize);
    std::abort();
  }

 private:
  static int64_t& live() { static int64_t value; return value; }
  static int64_t& peak() { static int64_t value; return value; }
  static bool& counting() { static bool value; return value; }
  static void allocated(const volatile void*, size_t size) {
    if (!counting()) return;
    live() += int64_t(size);
    if (live() > peak()) peak() = live();
  }
  static void freed(const volatile void* pointer) {
    if (counting()) live() -= int64_t(__sanitizer_get_allocated_size(const_cast<const void*>(pointer)));
  }
};

}  // namespace scrivlet::fuzz
