// Locale-independent printf: the "C" locale is made current for this thread while formatting.
#include "platform/format.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <locale.h>

namespace scrivlet {

namespace {

locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  return locale;
}

constexpr uint64_t kPowersOfTen[10] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// value / 10^decimals, by a constant divisor for each count (a multiplication, not a division).
uint64_t wholePart(uint64_t value, int decimals) {
  switch (decimals) {
    case 1: return value / 10;
    case 2: return value / 100;
    case 3: return value / 1000;
    case 4: return value / 10000;
    case 5: return value / 100000;
    case 6: return value / 1000000;
    case 7: return value / 10000000;
    case 8: return value / 100000000;
    case 9: return value / 1000000000;
    default: return value;
  }
}

}  // namespace

std::string cformat(const char* format, ...) {
  locale_t previous = uselocale(cLocale());
  char small[128];
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  int length = std::vsnprintf(small, sizeof small, format, args);
  va_end(args);
  std::string result;
  if (length >= 0 && static_cast<size_t>(length) < sizeof small) {
    result.assign(small, static_cast<size_t>(length));
  } else if (length >= 0) {
    result.resize(static_cast<size_t>(length));
    std::vsnprintf(result.data(), result.size() + 1, format, again);
  }
  va_end(again);
  uselocale(previous);
  return result;
}

char* toCharsFixed(char* first, char* last, double value, int decimals) {
  if (!std::isfinite(value)) return nullptr;
  if (!(std::fabs(value) < 4294967296.0) || decimals < 0 || decimals > 9) {
    auto [end, error] = std::to_chars(first, last, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? end : nullptr;
  }
  if (last - first < 21) return nullptr;  // a sign, 10 digits, the point and 9 decimals
  // The value is mantissa x 2^-shift exactly (read from its bits); times 10^decimals it is a fraction
  // of 128-bit integers, rounded to the nearest, ties to even, as printf rounds.
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  int biased = int(bits >> 52) & 0x7ff;  // 0 for zeros and subnormals
  uint64_t mantissa = bits & ((uint64_t(1) << 52) - 1);
  if (biased) mantissa |= uint64_t(1) << 52;
  int shift = 1075 - (biased ? biased : 1);  // at least 21 below 2^32
  unsigned __int128 scaled = static_cast<unsigned __int128>(mantissa) * kPowersOfTen[decimals];  // below 2^83
  uint64_t rounded = 0;
  if (shift < 84) {  // otherwise the value is below half a unit of the last digit
    unsigned __int128 one = 1, rest = scaled & ((one << shift) - 1), half = one << (shift - 1);
    rounded = uint64_t(scaled >> shift);
    if (rest > half || (rest == half && (rounded & 1))) ++rounded;
  }
  if (bits >> 63) *first++ = '-';
  uint64_t whole = wholePart(rounded, decimals);
  first = std::to_chars(first, last, whole).ptr;
  if (decimals == 0) return first;
  *first++ = '.';
  // The decimals, below 10^9, two digits at a time from the last.
  auto fraction = uint32_t(rounded - whole * kPowersOfTen[decimals]);
  int i = decimals;
  for (; i >= 2; i -= 2, fraction /= 100) std::memcpy(first + i - 2, &kDigitPairs[2 * (fraction % 100)], 2);
  if (i) first[0] = char('0' + fraction);
  return first + decimals;
}

void appendF(std::string& out, double value) {
  char digits[400];  // "%f" of the largest double has 309 digits before the point
  if (char* end = toCharsFixed(digits, digits + sizeof digits, value, 6))
    out.append(digits, end);
  else
    out += cformat("%f", value);
}

}  // namespace scrivlet
