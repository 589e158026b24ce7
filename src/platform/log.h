// The one way library code reports a line to whoever runs it: standard error until a host says otherwise.
#pragma once

#include <scrivlet/log.h>

namespace scrivlet {

// An error line: the operation produced nothing.
inline void logLine(std::string_view line) { logLine(LogLevel::error, line); }

}  // namespace scrivlet
