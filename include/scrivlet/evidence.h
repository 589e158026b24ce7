// Signature evidence: a record bound to the document it signs, its biometric data sealed for an
// examiner together with the document's digest, checked later piece by piece, and opened by the
// examiner alone. <scrivlet/pdf_signature.h> puts it into a PDF under a standard PDF signature.
#pragma once

#include <scrivlet/error.h>
#include <scrivlet/evidence_export.h>
#include <scrivlet/record_file.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet {

// The sealed file (version 2) is one JSON object, every binary part in Base64:
//   {"format": "scrivlet-evidence", "version": 2,
//    "manifest": <the manifest's bytes>, "manifestSha256": "<hex>",
//    "manifestSignature": <CMS SignedData over the manifest's bytes, detached, DER; absent if unsigned>,
//    "image": <the signature's PNG>,
//    "biometricData": <CMS AuthEnvelopedData (AES-256-GCM) of the biometric document, DER>}
// The manifest binds the SHA-256 (hex) and size of the document, the SHA-256 of the image and of the
// enveloped biometric data, the record's hash, time and device, and the library:
//   {"format": "scrivlet-evidence-manifest", "version": 2,
//    "document": {"sha256", "size", "name"}, "image": {"sha256", "mediaType"},
//    "biometricData": {"sha256", "mediaType", "content"},
//    "signature": {"hash", "timestamp"}, "device": {"model", "screenScale", "pixelsPerInch"},
//    "library": {"name", "version"}, "sealedAt"}
// The biometric document, the envelope's plaintext, holds the strokes beside what they were given
// for, so that they cannot be bound to another document even by whoever can sign manifests:
//   {"format": "scrivlet-biometric-data", "version": 1, "document": {"sha256", "size"},
//    "imageSha256", "record": <a record file without its image>}

// The library's one error type; the evidence names are kept for source compatibility.
using EvidenceErrorCode = ErrorCode;
using EvidenceError = Error;

// What a verification concluded, from best to worst: the first that applies names the failure.
enum class EvidenceVerdict {
  Valid,                 // every check passed and the signer chains to a trusted certificate
  Unreadable,            // not a sealed file or signed PDF this library reads
  Unsigned,              // intact but not signed (or not signed where a signature is required)
  Untrusted,             // signed and intact, but the signer is not trusted (or no trust was given)
  ModifiedAfterSigning,  // a signed PDF changed by a later revision that is not a signature
  Tampered,              // a signature, digest or document does not match
};
// "valid", "unreadable", "unsigned", "untrusted", "modified after signing", "tampered".
SCRIVLET_EVIDENCE_EXPORT const char* evidenceVerdictName(EvidenceVerdict verdict);

// The certificates and key that sign (PEM): the signer's certificate, its private key (not protected
// by a pass phrase), and the intermediate certificates up to, not including, the root.
struct EvidenceSigner {
  std::string certificate, key, chain;
};

struct EvidenceSealRequest {
  RecordFile record;                         // the strokes, image, hash, time and device
  std::array<uint8_t, 32> documentSha256{};  // of the document signed, as its bytes stand
  uint64_t documentSize = 0;                 // at least one byte
  std::string documentName;                  // for the reader; not checked
  std::string examinerCertificate;           // X.509 (PEM or DER), or a PEM public key: RSA or EC
  EvidenceSigner manifestSigner;             // optional: with a certificate and key, the manifest is signed
};

// The SHA-256 of a document's bytes, for a request.
SCRIVLET_EVIDENCE_EXPORT std::array<uint8_t, 32> documentSha256Of(std::string_view document);

// The sealed file, or the error that stopped it (InvalidArgument, BadKey, CertificateRejected,
// UnsupportedAlgorithm, Failed). The record's image must be a PNG; the examiner's certificate must be
// intact (its self-signature, its key) and the signer's valid for signing now. No plaintext
// biometric data is written anywhere on the way.
SCRIVLET_EVIDENCE_EXPORT Result<std::string> sealEvidence(const EvidenceSealRequest& request);

// Sealing on the device that captured the signature, at the moment of signing: the record as the
// session or the pad delivered it, the document's bytes as the signer saw them, and the examiner's
// certificate. The plain strokes need never leave the device.
SCRIVLET_EVIDENCE_EXPORT Result<std::string> sealSignatureForDocument(const QnSignature& record,
                                                                      std::string_view document,
                                                                      std::string_view documentName,
                                                                      std::string_view examinerCertificate,
                                                                      const EvidenceSigner& manifestSigner = {});

// The earlier forms, with the error in *error: kept for source compatibility.
[[deprecated("sealEvidence returns a Result")]] inline std::optional<std::string> sealEvidence(
    const EvidenceSealRequest& request, Error* error) {
  return optionalOf(sealEvidence(request), error);
}
[[deprecated("sealSignatureForDocument returns a Result")]] inline std::optional<std::string>
sealSignatureForDocument(const QnSignature& record, std::string_view document, std::string_view documentName,
                         std::string_view examinerCertificate, const EvidenceSigner& manifestSigner, Error* error) {
  return optionalOf(sealSignatureForDocument(record, document, documentName, examinerCertificate, manifestSigner),
                    error);
}

// What a check looked at. A sealed file's checks: Container, Manifest, ManifestSignature, Signer,
// Document, Image, BiometricData; a PDF signature's: ByteRange, Signature, Signer, TimeStamp, Coverage,
// LaterRevisions, Document, Evidence.
enum class EvidenceCheckKind {
  Container,
  Manifest,
  ManifestSignature,
  Signer,
  Document,
  Image,
  BiometricData,
  ByteRange,
  Signature,
  TimeStamp,
  Coverage,
  LaterRevisions,
  Evidence,
};

// "container", "manifest", "manifest signature", "signer", "document", "image", "biometric data",
// "byte range", "signature", "time-stamp", "coverage", "later revisions", "evidence".
SCRIVLET_EVIDENCE_EXPORT const char* evidenceCheckName(EvidenceCheckKind kind);

struct EvidenceCheck {
  EvidenceCheckKind kind = EvidenceCheckKind::Container;
  std::string name;  // evidenceCheckName(kind), as reports show it
  bool passed = false;
  std::string detail;                                   // one line: what was found
  EvidenceVerdict failure = EvidenceVerdict::Tampered;  // what a failure of this check means
};

// Only a signature whose signer chains to a trusted certificate makes evidence "valid": without trusted
// certificates the best verdict is "untrusted", and unsigned evidence is "unsigned".
struct EvidenceVerifyOptions {
  std::string trustedCertificates;  // PEM: the signers' (and time-stamping authorities') anchors
  bool allowLaterChanges = false;   // a signed PDF changed after signing is reported, but not failed
};

struct SCRIVLET_EVIDENCE_EXPORT EvidenceVerification {
  std::vector<EvidenceCheck> checks;  // in the order above, as far as the file could be read
  bool signedManifest = false;        // the manifest carries a signature
  std::string signer;                 // its signer's subject
  std::string hash;                   // what the manifest says of the signing
  double timestamp = 0;
  CaptureDevice device;
  EvidenceVerdict verdict = EvidenceVerdict::Unreadable;
  std::string reason;  // the worst failed check's name and detail: why the verdict is not "valid"
  bool valid() const { return verdict == EvidenceVerdict::Valid; }
};

// Each check of the sealed file against the document, whose bytes must be exactly those sealed. A
// signed manifest is valid only when its signer chains to options.trustedCertificates; an unsigned
// one is "unsigned". Garbage gives a failed "container" check, never a crash.
SCRIVLET_EVIDENCE_EXPORT EvidenceVerification verifyEvidence(std::string_view sealed, std::string_view document,
                                                             const EvidenceVerifyOptions& options = {});

// The record sealed in the file, opened with the examiner's private key (PEM or DER): the strokes,
// with the manifest's hash, time and device and the sealed image. The file is checked first as
// verifyEvidence checks it (without a document, the document check is left out), and the
// plaintext's document digest and record hash must be the manifest's. Otherwise the error: the
// verdict's (Unreadable, Unsigned, Untrusted, Tampered), BadKey for a key that does not open it, or
// Tampered for a plaintext of another document or signing. `verification` (if given) receives the
// checks.
SCRIVLET_EVIDENCE_EXPORT Result<RecordFile> openEvidence(std::string_view sealed, std::string_view examinerKey,
                                                         const EvidenceVerifyOptions& options = {},
                                                         EvidenceVerification* verification = nullptr,
                                                         std::optional<std::string_view> document = {});
[[deprecated("openEvidence returns a Result")]] inline std::optional<RecordFile> openEvidence(
    std::string_view sealed, std::string_view examinerKey, const EvidenceVerifyOptions& options, Error* error,
    EvidenceVerification* verification = nullptr, std::optional<std::string_view> document = {}) {
  return optionalOf(openEvidence(sealed, examinerKey, options, verification, document), error);
}

// A verification as one JSON object (for --json): verdict, reason and every check.
SCRIVLET_EVIDENCE_EXPORT std::string evidenceVerificationToJson(const EvidenceVerification& verification);

}  // namespace scrivlet
