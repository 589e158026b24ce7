// Stamping a sealed signature into the PDF it signs, and finding it there again.
#include <scrivlet/evidence.h>

#include "evidence/evidence_file.h"
#include "evidence/pdf_stamp.h"

namespace scrivlet {

namespace {

constexpr const char* kEvidenceMediaType = "application/json";

std::vector<uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

}  // namespace

std::optional<std::vector<uint8_t>> stampEvidenceIntoPdf(std::string_view pdf, std::string_view sealed,
                                                         const PdfStampPlacement& placement, std::string* error) {
  std::optional<EvidenceFile> file = evidenceFileFromJson(sealed, error);
  if (!file) return std::nullopt;
  std::optional<EvidenceManifest> manifest = manifestFromJson(file->manifest, error);
  if (!manifest) return std::nullopt;
  if (!sameDigest(sha256Hex(pdf), manifest->documentSha256)) {
    if (error) *error = "the PDF is not the document the evidence was sealed with";
    return std::nullopt;
  }
  return stampPdf(bytesOf(pdf), bytesOf(file->image), placement, kEvidenceAttachmentName, kEvidenceMediaType,
                  bytesOf(sealed), error);
}

std::optional<std::string> evidenceAttachedToPdf(std::string_view pdf) {
  std::optional<std::vector<uint8_t>> attached = pdfAttachment(bytesOf(pdf), kEvidenceAttachmentName);
  if (!attached) return std::nullopt;
  return std::string(attached->begin(), attached->end());
}

}  // namespace scrivlet
