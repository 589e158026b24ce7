// Signature evidence: a record bound to the document it signs, its biometric data sealed for an
// examiner, checked later piece by piece, opened by the examiner alone, and stamped into a PDF.
#pragma once

#include <scrivlet/evidence_export.h>
#include <scrivlet/record_file.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet {

// The sealed file (version 1) is one JSON object, every binary part in Base64:
//   {"format": "scrivlet-evidence", "version": 1,
//    "manifest": <the manifest's bytes>, "manifestSha256": "<hex>",
//    "manifestSignature": <CMS SignedData over the manifest's bytes, detached, DER; absent if unsigned>,
//    "image": <the signature's PNG>,
//    "biometricData": <CMS AuthEnvelopedData (AES-256-GCM) of the strokes document, DER>}
// The manifest is a JSON object binding the SHA-256 (hex) and size of the document, the SHA-256 of the
// image and of the enveloped biometric data, the record's hash, time and device, and the library:
//   {"format": "scrivlet-evidence-manifest", "version": 1,
//    "document": {"sha256", "size", "name"}, "image": {"sha256", "mediaType"},
//    "biometricData": {"sha256", "mediaType", "content"},
//    "signature": {"hash", "timestamp", "time"}, "device": {"model", "screenScale", "pixelsPerInch"},
//    "library": {"name", "version"}, "sealedAt"}
inline constexpr const char* kEvidenceAttachmentName = "scrivlet-evidence.json";

struct EvidenceSealRequest {
  RecordFile record;                         // the strokes, image, hash, time and device
  std::array<uint8_t, 32> documentSha256{};  // of the document signed, as its bytes stand
  uint64_t documentSize = 0;
  std::string documentName;         // for the reader; not checked
  std::string examinerCertificate;  // X.509 (PEM or DER), or a PEM public key: RSA or EC
  std::string signerCertificate;    // with signerKey (PEM both): the manifest is signed
  std::string signerKey;
};

// The SHA-256 of a document's bytes, for a request.
SCRIVLET_EVIDENCE_EXPORT std::array<uint8_t, 32> documentSha256Of(std::string_view document);

// The sealed file, or nothing with the reason in *error. No plaintext biometric data is written
// anywhere on the way.
SCRIVLET_EVIDENCE_EXPORT std::optional<std::string> sealEvidence(const EvidenceSealRequest& request,
                                                                 std::string* error);

struct EvidenceCheck {
  std::string name;  // "container", "manifest", "manifest signature", "document", "image", "biometric data"
  bool passed = false;
  std::string detail;  // one line: what was found
};

struct SCRIVLET_EVIDENCE_EXPORT EvidenceVerification {
  std::vector<EvidenceCheck> checks;  // in the order above, as far as the file could be read
  bool signedManifest = false;        // the manifest carries a signature
  std::string signer;                 // its signer's subject
  std::string hash;                   // what the manifest says of the signing
  double timestamp = 0;
  CaptureDevice device;
  // Every check passed (an unsigned manifest has no signature check, and may still pass).
  bool valid() const;
};

// Each check of the sealed file against the document, separately. With trusted certificates (PEM)
// the manifest's signer must chain to one of them. A stamped PDF is checked by its revision before
// stamping. Garbage gives a failed "container" check, never a crash.
SCRIVLET_EVIDENCE_EXPORT EvidenceVerification verifyEvidence(std::string_view sealed, std::string_view document,
                                                             std::string_view trustedCertificates = {});

// The record sealed in the file: the biometric data opened with the examiner's private key (PEM or
// DER), with the manifest's hash, time and device and the sealed image; nothing, with the reason in
// *error, when the key does not open it or any part was changed.
SCRIVLET_EVIDENCE_EXPORT std::optional<RecordFile> openEvidence(std::string_view sealed, std::string_view examinerKey,
                                                                std::string* error);

// Where a stamped signature goes: a page (1 = first) and a rectangle in PDF points in the page's
// default user space (origin at the bottom left, y up).
struct PdfStampPlacement {
  int page = 1;
  double x = 0, y = 0, width = 0, height = 0;
};

// The PDF with the sealed file's image drawn in the rectangle (as large as its proportions allow,
// centred) and the sealed file attached (as
// kEvidenceAttachmentName), appended as an incremental update: the document the seal binds stays the
// first bytes of the result, so the stamped PDF still verifies. Nothing, with the reason in *error,
// when the PDF or the sealed file cannot be used or the PDF is not the one sealed.
SCRIVLET_EVIDENCE_EXPORT std::optional<std::vector<uint8_t>> stampEvidenceIntoPdf(std::string_view pdf,
                                                                                  std::string_view sealed,
                                                                                  const PdfStampPlacement& placement,
                                                                                  std::string* error);

// The sealed file attached to a stamped PDF, if any.
SCRIVLET_EVIDENCE_EXPORT std::optional<std::string> evidenceAttachedToPdf(std::string_view pdf);

}  // namespace scrivlet
