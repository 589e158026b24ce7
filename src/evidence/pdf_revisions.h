// A PDF's revisions: where each ends, what a later one changes beyond adding signatures, and
// embedded files read with a bound on what they inflate to.
#pragma once

#include "evidence/pdf_update.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet::pdf {

// Where each revision ends (after its %%EOF and end of line), oldest first, following the final
// startxref and each section's /Prev; the last is the file's size. An error when the chain does not
// read.
Result<std::vector<size_t>> revisionEnds(std::string_view pdf);

// What the revision between the two ends changes beyond what a signature adds (a signature field and
// its widget on a page, the form's field list, embedded files added, new objects): one line each.
// Empty when the revision only adds signatures.
Result<std::vector<std::string>> changesBeyondSignatures(std::string_view pdf, size_t before, size_t after);

// The embedded file of that name, decoded, or nothing with the reason: none, or more than `limit`
// bytes once inflated (found out without inflating more than that).
std::optional<std::string> boundedEmbeddedFile(QPDF& qpdf, const std::string& name, size_t limit, std::string* error);

}  // namespace scrivlet::pdf
