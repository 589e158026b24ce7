// Warnings of the Qt layer go to the same log sink as the library's own lines.
#pragma once

#include <scrivlet/log.h>

#include <QString>

namespace scrivlet {

inline void logWarning(const QString& line) { logLine(LogLevel::warning, line.toStdString()); }

}  // namespace scrivlet
