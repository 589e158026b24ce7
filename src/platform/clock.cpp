// ICU date formatting (the clock itself is the default context's).
#include "platform/clock.h"

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <cmath>
#include <memory>

namespace scrivlet {

namespace {

std::string format(icu::DateFormat* formatter, double unixSeconds) {
  if (!formatter || !std::isfinite(unixSeconds)) return {};
  icu::UnicodeString text;
  formatter->format(static_cast<UDate>(unixSeconds * 1000.0), text);
  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

}  // namespace

std::string mediumDateString(double unixSeconds) {
  std::unique_ptr<icu::DateFormat> formatter(
      icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, icu::Locale::getDefault()));
  return format(formatter.get(), unixSeconds);
}

std::string mediumTimeString(double unixSeconds) {
  std::unique_ptr<icu::DateFormat> formatter(
      icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, icu::Locale::getDefault()));
  return format(formatter.get(), unixSeconds);
}

std::string utcDateString(double unixSeconds, const std::string& pattern) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat formatter(icu::UnicodeString::fromUTF8(pattern),
                                  icu::Locale("en_US_POSIX"), status);
  if (U_FAILURE(status)) return {};
  formatter.adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
  return format(&formatter, unixSeconds);
}

}  // namespace scrivlet
