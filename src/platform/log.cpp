// Lines of the log, written to standard error in one piece each.
#include "platform/log.h"

#include <cstdio>
#include <string>

namespace scrivlet {

void logLine(std::string_view line) {
  // One write per line, so that lines of several threads never interleave.
  std::string whole(line);
  whole += '\n';
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

}  // namespace scrivlet
