// C printf formatting that ignores the process locale: "%f" always gives "6.000000".
#pragma once

#include <string>

namespace scrivlet {

// printf-style formatting in the "C" locale, whatever locale the host has set.
std::string cformat(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Writes the value with `decimals` digits after the point, as "%.*f" writes it in the "C" locale, and
// answers the end; null when the value is not finite or [first, last) is too short. Sooner than
// printf or std::to_chars for the values a drawing has (below 2^32, with at most 9 decimals).
char* toCharsFixed(char* first, char* last, double value, int decimals);

// Appends the value as "%f" writes it, several times sooner: the many coordinates of a drawing.
void appendF(std::string& out, double value);

// The formats the outputs use, one helper each.
inline std::string formatF(double v) { return cformat("%f", v); }
inline std::string formatD(int v) { return cformat("%d", v); }
// "%hd" and "%hu" take an int and write it as a 16-bit value, wrapping like C does (integers are
// written alike in every locale, so without printf: the time series has thousands).
inline std::string formatHd(int v) { return std::to_string(static_cast<short>(v)); }
inline std::string formatHu(int v) { return std::to_string(static_cast<unsigned short>(v)); }
inline std::string format02lX(long v) { return cformat("%02lX", static_cast<unsigned long>(v)); }
inline std::string format02x(unsigned v) { return cformat("%02x", v); }
inline std::string formatLu(unsigned long v) { return cformat("%lu", v); }

}  // namespace scrivlet
