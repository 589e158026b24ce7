// Saving strokes as JSON and loading them back, every field of every point to the bit.
#pragma once

#include <scrivlet/export.h>
#include <scrivlet/error.h>
#include <scrivlet/engine/signature_point.h>

#include <string>
#include <string_view>

namespace scrivlet {

// The document (version 1):
//   {"format": "scrivlet-strokes", "version": 1,
//    "strokes": [[{"x", "y", "vx", "vy", "ax", "ay", "t", "azimuth", "altitude", "pressure",
//                  "diameter", "id"}, ...], ...]}
// Numbers are written so that they read back to the same bits; a value that is not finite is written
// as the string "NaN", "Infinity" or "-Infinity". A missing list is written as no strokes.
SCRIVLET_EXPORT std::string strokesToJson(const QnStrokeListRef& strokes);

// The strokes of such a document, or why not: TooLarge (a document over 64 MiB, refused before it is
// read; more than 10,000 strokes or a million points), NotJson, NotThisFormat, UnsupportedVersion,
// Malformed (nested deeper than 32 levels, a field missing or of the wrong type, a position that is
// not finite). The limits apply while reading: the reading never costs more than a few times the
// document's size.
SCRIVLET_EXPORT Result<QnStrokeListRef> strokesFromJson(std::string_view json);

// The earlier form: nothing, with the reason in *error, or in one line of the log when error is null.
// Kept for source compatibility.
[[deprecated("strokesFromJson returns a Result")]] SCRIVLET_EXPORT QnStrokeListRef strokesFromJson(
    std::string_view json, Error* error);

}  // namespace scrivlet
