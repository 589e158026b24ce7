// Locale-independent printf: the "C" locale is made current for this thread while formatting.
#include "platform/format.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <locale.h>

namespace scrivlet {

namespace {

locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  return locale;
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

void appendF(std::string& out, double value) {
  char digits[400];  // "%f" of the largest double has 309 digits before the point
  auto [end, error] = std::isfinite(value)
                          ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6)
                          : std::to_chars_result{digits, std::errc::value_too_large};
  if (error == std::errc())
    out.append(digits, end);
  else
    out += cformat("%f", value);
}

}  // namespace scrivlet
