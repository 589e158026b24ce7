// Why a saved document did not load: a code to act on and a line to show.
#pragma once

#include <string>

namespace scrivlet {

struct LoadError {
  enum class Code {
    tooLarge,            // more bytes, strokes or points than any document this library reads
    notJson,             // not JSON text, or cut short
    notThisFormat,       // JSON, but not a document of the kind asked for
    unsupportedVersion,  // a version of the format this library does not read
    malformed,           // a member missing, of the wrong type or out of range, or nested too deep
  };
  Code code = Code::malformed;
  std::string message;  // one line, in English, that a host may show or log
};

}  // namespace scrivlet
