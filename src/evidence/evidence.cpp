// Sealing a record with its document, verifying a sealed file piece by piece, and opening it.
#include <scrivlet/evidence.h>

#include "evidence/cms.h"
#include "evidence/sealed_evidence.h"
#include "evidence/signature_image.h"
#include "platform/clock.h"
#include "platform/crypto.h"

#include <nlohmann/json.hpp>
#include <openssl/crypto.h>


namespace scrivlet {

namespace {

using Code = ErrorCode;
using Verdict = EvidenceVerdict;
using Kind = EvidenceCheckKind;

std::string_view bytesOf(const std::vector<uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

EvidenceCheck check(Kind kind, bool passed, std::string detail, Verdict failure = Verdict::Tampered) {
  return {kind, passed, std::move(detail), failure};
}

}  // namespace

const char* evidenceVerdictName(EvidenceVerdict verdict) {
  switch (verdict) {
    case Verdict::Valid: return "valid";
    case Verdict::Unreadable: return "unreadable";
    case Verdict::Unsigned: return "unsigned";
    case Verdict::Untrusted: return "untrusted";
    case Verdict::ModifiedAfterSigning: return "modified after signing";
    case Verdict::Tampered: return "tampered";
  }
  return "unreadable";
}

const char* evidenceCheckName(EvidenceCheckKind kind) {
  switch (kind) {
    case Kind::Container: return "container";
    case Kind::Manifest: return "manifest";
    case Kind::ManifestSignature: return "manifest signature";
    case Kind::Signer: return "signer";
    case Kind::Document: return "document";
    case Kind::Image: return "image";
    case Kind::BiometricData: return "biometric data";
    case Kind::ByteRange: return "byte range";
    case Kind::Signature: return "signature";
    case Kind::TimeStamp: return "time-stamp";
    case Kind::Coverage: return "coverage";
    case Kind::LaterRevisions: return "later revisions";
    case Kind::Evidence: return "evidence";
  }
  return "container";
}

std::pair<EvidenceVerdict, std::string> worstOf(const std::vector<EvidenceCheck>& checks) {
  std::pair<EvidenceVerdict, std::string> worst{checks.empty() ? Verdict::Unreadable : Verdict::Valid, ""};
  for (const EvidenceCheck& c : checks)
    if (!c.passed() && c.failure() > worst.first) worst = {c.failure(), c.name() + ": " + c.detail()};
  return worst;
}

void concludeVerification(EvidenceVerification& report) {
  auto [verdict, reason] = worstOf(report.checks());
  report.setVerdict(verdict);
  report.setReason(std::move(reason));
}

std::optional<ReadEvidence> checkSealedEvidence(std::string_view sealed, std::string_view trusted,
                                                bool signatureRequired, const DocumentCheck& document,
                                                EvidenceVerification& report) {
  std::string error;
  std::optional<EvidenceFile> file;
  if (sealed.size() > kLargestSealedFile)
    error = "the file is larger than any sealed file";
  else
    file = evidenceFileFromJson(sealed, &error);
  report.addCheck(
      check(Kind::Container, bool(file), file ? "a sealed evidence file, version 2" : error, Verdict::Unreadable));
  std::optional<ReadEvidence> read;
  if (file) {
    bool untouched = sameDigest(sha256Hex(file->manifest), file->manifestSha256);
    std::optional<EvidenceManifest> manifest;
    if (untouched) manifest = manifestFromJson(file->manifest, &error);
    report.addCheck(check(Kind::Manifest, bool(manifest),
                                  !untouched ? "the manifest does not match its SHA-256: it was changed"
                                  : manifest ? "the manifest matches its SHA-256"
                                             : error));
    if (manifest) read = ReadEvidence{std::move(*file), std::move(*manifest)};
  }
  if (!read) {
    concludeVerification(report);
    return std::nullopt;
  }
  const EvidenceManifest& manifest = read->manifest;
  report.setHash(manifest.hash);
  report.setTimestamp(manifest.timestamp);
  report.setDevice(manifest.device);
  if (read->file.manifestSignature) {
    report.setSignedManifest(true);
    cms::SignatureCheck signature = cms::verifyDetached(*read->file.manifestSignature, read->file.manifest, trusted);
    report.setSigner(signature.signer);
    bool intact = !signature.signer.empty();  // the signature was checked up to its signer
    report.addCheck(check(Kind::ManifestSignature, intact,
                                  intact ? "matches the manifest, signed by " + signature.signer : signature.reason,
                                  intact ? Verdict::Tampered : signature.verdict));
    if (intact)
      report.addCheck(check(Kind::Signer, signature.verdict == Verdict::Valid,
                                    signature.verdict == Verdict::Valid
                                        ? signature.signer + " chains to a trusted certificate"
                                        : signature.reason,
                                    Verdict::Untrusted));
  } else if (signatureRequired) {
    report.addCheck(
        check(Kind::ManifestSignature, false, "the manifest is hashed, not signed", Verdict::Unsigned));
  }
  if (document) report.addCheck(document(manifest));
  bool imageMatches = sameDigest(sha256Hex(read->file.image), manifest.imageSha256);
  report.addCheck(check(Kind::Image, imageMatches, imageMatches ? "untouched" : "changed since sealing"));
  bool bioMatches = sameDigest(sha256Hex(read->file.biometricData), manifest.biometricSha256);
  report.addCheck(check(Kind::BiometricData, bioMatches, bioMatches ? "untouched" : "changed since sealing"));
  concludeVerification(report);
  return read;
}

std::array<uint8_t, 32> documentSha256Of(std::string_view document) { return sha256Digest(document); }

Result<std::string> sealEvidence(const EvidenceSealRequest& request) {
  const RecordFile& record = request.record();
  if (!record.strokes() || record.strokes()->empty())
    return Error{Code::InvalidArgument, "the record has no strokes"};
  if (request.documentSize() == 0)
    return Error{Code::InvalidArgument, "the document is empty: there is nothing to bind"};
  std::string reason;
  if (!decodeSignaturePng(bytesOf(record.png()), &reason))
    return Error{Code::InvalidArgument, "the record's image: " + reason};
  bool signs = !request.manifestSigner().certificate().empty() || !request.manifestSigner().key().empty();

  BiometricDocument biometric{hexString(request.documentSha256()), request.documentSize(), sha256Hex(bytesOf(record.png())),
                              record};
  // The biometric data exists in plain text only in memory, on its way into the envelope.
  std::string plaintext = biometricDocumentToJson(biometric);
  Error error;
  std::optional<std::string> enveloped = cms::envelope(plaintext, request.examinerCertificate(), &error);
  OPENSSL_cleanse(plaintext.data(), plaintext.size());
  if (!enveloped) return error;

  EvidenceFile file;
  file.image.assign(bytesOf(record.png()));
  file.biometricData = std::move(*enveloped);
  EvidenceManifest manifest;
  manifest.documentSha256 = biometric.documentSha256;
  manifest.documentSize = request.documentSize();
  manifest.documentName = request.documentName();
  manifest.imageSha256 = biometric.imageSha256;
  manifest.biometricSha256 = sha256Hex(file.biometricData);
  manifest.hash = record.hash();
  manifest.timestamp = record.timestamp();
  manifest.device = record.device();
  manifest.libraryVersion = SCRIVLET_VERSION_TEXT;
  manifest.sealedAt = utcDateString(QnClock::now(), "yyyy-MM-dd'T'HH:mm:ss'Z'");
  file.manifest = manifestToJson(manifest);
  file.manifestSha256 = sha256Hex(file.manifest);
  if (signs) {
    file.manifestSignature = cms::signDetached(file.manifest, request.manifestSigner(), false, "", &error);
    if (!file.manifestSignature) return error;
  }
  std::string sealed = evidenceFileToJson(file);
  if (sealed.size() > kLargestSealedFile)
    return Error{Code::InvalidArgument, "the sealed file would be larger than any sealed file is read (256 MiB)"};
  return sealed;
}

Result<std::string> sealSignatureForDocument(const QnSignature& record, std::string_view document,
                                             std::string_view documentName, std::string_view examinerCertificate,
                                             const EvidenceSigner& manifestSigner) {
  EvidenceSealRequest request;
  request.setRecord(recordFileOf(record));
  request.setDocumentSha256(documentSha256Of(document));
  request.setDocumentSize(document.size());
  request.setDocumentName(std::string(documentName));
  request.setExaminerCertificate(std::string(examinerCertificate));
  request.setManifestSigner(manifestSigner);
  return sealEvidence(request);
}

// The document must be exactly the one sealed: the same size and digest, nothing added.
static DocumentCheck exactDocument(std::string_view document) {
  return [document](const EvidenceManifest& manifest) {
    if (document.size() == manifest.documentSize && sameDigest(sha256Hex(document), manifest.documentSha256))
      return check(Kind::Document, true, "the document is the one sealed");
    if (document.size() > manifest.documentSize &&
        sameDigest(sha256Hex(document.substr(0, manifest.documentSize)), manifest.documentSha256))
      return check(
          Kind::Document, false,
          std::to_string(document.size() - manifest.documentSize) + " bytes were added after the document sealed");
    return check(Kind::Document, false, "the document is not the one sealed");
  };
}

EvidenceVerification verifyEvidence(std::string_view sealed, std::string_view document,
                                    const EvidenceVerifyOptions& options) {
  EvidenceVerification report;
  checkSealedEvidence(sealed, options.trustedCertificates(), true, exactDocument(document), report);
  return report;
}

ErrorCode errorCodeOfVerdict(EvidenceVerdict verdict) {
  switch (verdict) {
    case Verdict::Unsigned: return Code::Unsigned;
    case Verdict::Untrusted: return Code::Untrusted;
    case Verdict::ModifiedAfterSigning:
    case Verdict::Tampered: return Code::Tampered;
    case Verdict::Valid:
    case Verdict::Unreadable: break;
  }
  return Code::Unreadable;
}

Result<RecordFile> openCheckedEvidence(const ReadEvidence& evidence, std::string_view examinerKey) {
  Error error;
  std::optional<std::string> plaintext = cms::openEnvelope(evidence.file.biometricData, examinerKey, &error);
  if (!plaintext) return error;
  std::string reason;
  std::optional<BiometricDocument> biometric = biometricDocumentFromJson(*plaintext, &reason);
  OPENSSL_cleanse(plaintext->data(), plaintext->size());
  if (!biometric) return Error{Code::Unreadable, reason};
  const EvidenceManifest& manifest = evidence.manifest;
  if (!sameDigest(biometric->documentSha256, manifest.documentSha256) ||
      biometric->documentSize != manifest.documentSize)
    return Error{Code::Tampered, "the biometric data was sealed for another document"};
  if (!sameDigest(biometric->imageSha256, manifest.imageSha256) || biometric->record.hash() != manifest.hash ||
      biometric->record.timestamp() != manifest.timestamp)
    return Error{Code::Tampered, "the biometric data was sealed with another signing"};
  RecordFile record = std::move(biometric->record);
  record.setPng({evidence.file.image.begin(), evidence.file.image.end()});
  record.setDevice(manifest.device);
  return record;
}

Result<RecordFile> openEvidence(std::string_view sealed, std::string_view examinerKey,
                                const EvidenceVerifyOptions& options, EvidenceVerification* verification,
                                std::optional<std::string_view> document) {
  EvidenceVerification report;
  std::optional<ReadEvidence> read = checkSealedEvidence(sealed, options.trustedCertificates(), true,
                                                         document ? exactDocument(*document) : nullptr, report);
  if (verification) *verification = report;
  if (!report.valid() || !read)
    return Error{report.valid() ? Code::Unreadable : errorCodeOfVerdict(report.verdict()),
                 std::string("not opened: the evidence is ") + evidenceVerdictName(report.verdict()) + " (" +
                     report.reason() + ")"};
  return openCheckedEvidence(*read, examinerKey);
}

std::string evidenceVerificationToJson(const EvidenceVerification& v) {
  nlohmann::json checks = nlohmann::json::array();
  for (const EvidenceCheck& c : v.checks())
    checks.push_back({{"name", c.name()}, {"passed", c.passed()}, {"detail", c.detail()}});
  nlohmann::json report{{"verdict", evidenceVerdictName(v.verdict())},
                        {"reason", v.reason()},
                        {"signed", v.signedManifest()},
                        {"signer", v.signer()},
                        {"hash", v.hash()},
                        {"timestamp", v.timestamp()},
                        {"checks", std::move(checks)}};
  return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace scrivlet
