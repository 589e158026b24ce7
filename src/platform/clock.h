// Wall-clock time, which tests can fix, and the dates the exports print.
#pragma once

#include <scrivlet/export.h>

#include <optional>
#include <string>

namespace scrivlet {

// Seconds between the Unix epoch and the platform's reference date, 1 January 2001 00:00:00 UTC.
inline constexpr double kReferenceDateOffset = 978307200.0;

class SCRIVLET_EXPORT QnClock {
 public:
  // Seconds since the Unix epoch: the real time, or the fixed time while one is set.
  static double now();
  // Fixes the time (for tests and recordings); no time given un-fixes it.
  static void setFixedTime(std::optional<double> unixSeconds);
  // Seconds since the reference date.
  static double timeIntervalSinceReferenceDate() { return now() - kReferenceDateOffset; }
};

// The date in the medium style of the current locale and time zone, without the time.
std::string mediumDateString(double unixSeconds);
// The time in the medium style of the current locale and time zone, without the date.
std::string mediumTimeString(double unixSeconds);
// The time in UTC with a fixed ICU pattern in the "en_US_POSIX" locale.
SCRIVLET_EXPORT std::string utcDateString(double unixSeconds, const std::string& pattern);

}  // namespace scrivlet
