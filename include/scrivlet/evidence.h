// Signature evidence: a record bound to the document it signs, its biometric data sealed for an
// examiner together with the document's digest, checked later piece by piece, and opened by the
// examiner alone. <scrivlet/pdf_signature.h> puts it into a PDF under a standard PDF signature.
#pragma once

#include <scrivlet/error.h>
#include <scrivlet/evidence_export.h>
#include <scrivlet/record_file.h>

#include <array>
#include <cstdint>
#include <memory>
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
class SCRIVLET_EVIDENCE_EXPORT EvidenceSigner {
 public:
  EvidenceSigner();  // none: nothing is signed
  EvidenceSigner(std::string certificate, std::string key, std::string chain = {});

  const std::string& certificate() const;
  const std::string& key() const;
  const std::string& chain() const;
  void setCertificate(std::string certificate);
  void setKey(std::string key);
  void setChain(std::string chain);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

class SCRIVLET_EVIDENCE_EXPORT EvidenceSealRequest {
 public:
  const RecordFile& record() const;  // the strokes, image, hash, time and device
  const std::array<uint8_t, 32>& documentSha256() const;  // of the document signed, as its bytes stand
  uint64_t documentSize() const;                          // at least one byte
  const std::string& documentName() const;                // for the reader; not checked
  const std::string& examinerCertificate() const;  // X.509 (PEM or DER), or a PEM public key: RSA or EC
  const EvidenceSigner& manifestSigner() const;    // optional: with a certificate and key, the manifest is signed
  void setRecord(RecordFile record);
  void setDocumentSha256(const std::array<uint8_t, 32>& documentSha256);
  void setDocumentSize(uint64_t documentSize);
  void setDocumentName(std::string documentName);
  void setExaminerCertificate(std::string examinerCertificate);
  void setManifestSigner(EvidenceSigner manifestSigner);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
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

class SCRIVLET_EVIDENCE_EXPORT EvidenceCheck {
 public:
  EvidenceCheck();  // a failed container check
  EvidenceCheck(EvidenceCheckKind kind, bool passed, std::string detail,
                EvidenceVerdict failure = EvidenceVerdict::Tampered);

  EvidenceCheckKind kind() const;
  std::string name() const;  // evidenceCheckName(kind), as reports show it
  bool passed() const;
  const std::string& detail() const;  // one line: what was found
  EvidenceVerdict failure() const;    // what a failure of this check means
  void setKind(EvidenceCheckKind kind);
  void setPassed(bool passed);
  void setDetail(std::string detail);
  void setFailure(EvidenceVerdict failure);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// Only a signature whose signer chains to a trusted certificate makes evidence "valid": without trusted
// certificates the best verdict is "untrusted", and unsigned evidence is "unsigned".
class SCRIVLET_EVIDENCE_EXPORT EvidenceVerifyOptions {
 public:
  EvidenceVerifyOptions();  // no trusted certificates, no later changes allowed
  EvidenceVerifyOptions(std::string trustedCertificates, bool allowLaterChanges = false);

  const std::string& trustedCertificates() const;  // PEM: the signers' (and time-stamping authorities') anchors
  bool allowLaterChanges() const;  // a signed PDF changed after signing is reported, but not failed
  void setTrustedCertificates(std::string trustedCertificates);
  void setAllowLaterChanges(bool allowLaterChanges);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

class SCRIVLET_EVIDENCE_EXPORT EvidenceVerification {
 public:
  const std::vector<EvidenceCheck>& checks() const;  // in the order above, as far as the file could be read
  bool signedManifest() const;                       // the manifest carries a signature
  const std::string& signer() const;                 // its signer's subject
  const std::string& hash() const;                   // what the manifest says of the signing
  double timestamp() const;
  const CaptureDevice& device() const;
  EvidenceVerdict verdict() const;     // Unreadable until set
  const std::string& reason() const;  // the worst failed check's name and detail: why the verdict is not "valid"
  bool valid() const;
  void setChecks(std::vector<EvidenceCheck> checks);
  void addCheck(EvidenceCheck check);
  void setSignedManifest(bool signedManifest);
  void setSigner(std::string signer);
  void setHash(std::string hash);
  void setTimestamp(double timestamp);
  void setDevice(CaptureDevice device);
  void setVerdict(EvidenceVerdict verdict);
  void setReason(std::string reason);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
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
