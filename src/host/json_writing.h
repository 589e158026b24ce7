// JSON text written piece by piece, each value as nlohmann-json writes it, without a document in memory.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace scrivlet {

// A finite number in the shortest text that reads back to the same bits ("4.0", "0.1", "1e+300"). A
// number that is not finite is written as the text "NaN", "Infinity" or "-Infinity".
void appendJsonNumber(std::string& out, double value);
void appendJsonUnsigned(std::string& out, uint64_t value);
// A quoted, escaped text; bytes that are not UTF-8 become U+FFFD instead of stopping the writing.
void appendJsonString(std::string& out, std::string_view text);

}  // namespace scrivlet
