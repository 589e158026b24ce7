// Stamping a signature into an existing PDF: the image drawn on a page and a file attached, appended
// as an incremental update so that the document's original bytes stay the first bytes of the result.
#pragma once

#include <scrivlet/evidence.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scrivlet {

// The PDF with the PNG drawn into the rectangle (as large as its proportions allow, centred, keeping its
// transparency) and `attachment` attached
// as an embedded file named `attachmentName` (document level, /Names /EmbeddedFiles, with the MIME
// subtype given). Nothing, and the reason in *error (one line, no newline), when the PDF cannot be read,
// is encrypted, has no such page, the rectangle is not finite and positive, or the PNG does not decode.
std::optional<std::vector<uint8_t>> stampPdf(const std::vector<uint8_t>& pdf, const std::vector<uint8_t>& png,
                                             const PdfStampPlacement& placement, const std::string& attachmentName,
                                             const std::string& attachmentMimeType,
                                             const std::vector<uint8_t>& attachment, std::string* error);

// The bytes of the document-level embedded file of that name, if the PDF reads and has one.
std::optional<std::vector<uint8_t>> pdfAttachment(const std::vector<uint8_t>& pdf, const std::string& name);

}  // namespace scrivlet
