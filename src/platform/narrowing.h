// Narrowing to single precision at the one place the algorithm narrows, whatever the optimiser does.
#pragma once

namespace scrivlet {

// The value rounded to the nearest float. Pen widths, angles and exported numbers are required to the
// last bit of single precision, and an optimiser that vectorizes neighbouring conversions has been
// seen to drop a double-to-float-to-double round trip (GCC 12's SLP vectorizer). The store through a
// volatile float cannot be skipped, merged or moved: the rounding happens here, on every compiler and
// with any flags.
inline float narrowToFloat(double value) {
  volatile float narrowed = static_cast<float>(value);
  return narrowed;
}

}  // namespace scrivlet
