// The one way library code reports a line to whoever runs it: standard error until a host says otherwise.
#pragma once

#include <string_view>

namespace scrivlet {

// Writes the line, without a newline of its own, as one whole line of the log.
void logLine(std::string_view line);

}  // namespace scrivlet
