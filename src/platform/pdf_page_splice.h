// Putting drawing written elsewhere beneath what a one-page PDF already shows.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

// The document with `deflatedContent` (a deflated content stream) drawn first on its first page, the
// page's own content above it, and the graphics states /sa0, /sa1, ... of the given opacities added to
// the page's resources. Nothing when the document cannot be read or written.
std::optional<std::string> drawBeneathFirstPage(const std::string& pdf, const std::string& deflatedContent,
                                                const std::vector<double>& opacities);

}  // namespace scrivlet
