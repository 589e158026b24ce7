// Where Scrivlet's log lines go: standard error unless the host installs a sink of its own.
#pragma once

#include <scrivlet/export.h>

#include <functional>
#include <string_view>

namespace scrivlet {

enum class LogLevel {
  warning,  // a value refused or adjusted; the operation went on with a fallback
  error,    // an operation produced nothing (no PNG, no PDF, nothing loaded)
};

// Receives one whole line, without its newline. It may be called from any thread, also from the
// background preparation of a record, and must not throw.
using LogSink = std::function<void(LogLevel level, std::string_view line)>;

// Installs the sink that receives every later line; an empty sink restores standard error.
SCRIVLET_EXPORT void setLogSink(LogSink sink);

// Hands one line to the installed sink (the default writes it to standard error with a newline).
SCRIVLET_EXPORT void logLine(LogLevel level, std::string_view line);

}  // namespace scrivlet
