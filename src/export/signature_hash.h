// The hash of every preparation, and the badge that prints it: a padlock and the hash text in the
// bottom-left corner.
#pragma once

#include <optional>
#include <string>

namespace scrivlet {

class QnComboContext;

// A fresh hash: the first 10 hexadecimal digits of the SHA-1 of a new random UUID's text, or the
// custom hash when there is one (even an empty one).
std::string newSignatureHash(const std::optional<std::string>& customHash);

// Draws the badge for a canvas of height canvasHeight, above the date line when one is shown. Raster
// and PDF targets get a light badge with a shadow at the given opacity; SVG gets grey text and padlock.
void renderHashBadge(QnComboContext* context, bool showDate, const std::string& hash, float fontSize,
                     float opacity, double canvasHeight, double dateSize);

}  // namespace scrivlet
