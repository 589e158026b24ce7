// Fuzzes the fixed-point formatting of the outputs' numbers: for any double and any count of
// decimals it writes what printf's "%.*f" writes, or refuses a value that is not finite.
#include "platform/format.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace scrivlet;
  if (size < sizeof(double) + 1) return 0;
  double value;
  std::memcpy(&value, data, sizeof value);
  int decimals = data[sizeof value] % 12;
  char written[400];
  char* end = toCharsFixed(written, written + sizeof written, value, decimals);
  if ((end != nullptr) != std::isfinite(value)) std::abort();
  if (end && std::string(written, end) != cformat("%.*f", decimals, value)) std::abort();
  return 0;
}
