// Sealing a record with its document, verifying a sealed file piece by piece, and opening it.
#include <scrivlet/evidence.h>

#include <scrivlet/stroke_json.h>

#include "evidence/cms.h"
#include "evidence/evidence_file.h"
#include "platform/clock.h"
#include "platform/crypto.h"

#include <openssl/crypto.h>

#include <cstdio>

namespace scrivlet {

namespace {

// Sealed files larger than this are refused unread.
constexpr size_t kLargestSealedFile = size_t(256) << 20;

std::string_view bytesOf(const std::vector<uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

template <class T>
std::optional<T> failWith(std::string* error, const std::string& why) {
  if (error) *error = why;
  return std::nullopt;
}

// The sealed file and its manifest, once the manifest is known to be the one the file names.
struct ReadEvidence {
  EvidenceFile file;
  EvidenceManifest manifest;
};

std::optional<ReadEvidence> readEvidence(std::string_view sealed, EvidenceVerification& report) {
  auto check = [&](const char* name, bool passed, std::string detail) {
    report.checks.push_back({name, passed, std::move(detail)});
    return passed;
  };
  std::string error;
  std::optional<EvidenceFile> file;
  if (sealed.size() > kLargestSealedFile) error = "the file is larger than any sealed file";
  else file = evidenceFileFromJson(sealed, &error);
  if (!check("container", bool(file), file ? "a sealed evidence file, version 1" : error)) return std::nullopt;
  bool untouched = sameDigest(sha256Hex(file->manifest), file->manifestSha256);
  std::optional<EvidenceManifest> manifest;
  if (untouched) manifest = manifestFromJson(file->manifest, &error);
  if (!check("manifest", bool(manifest),
             !untouched ? "the manifest does not match its SHA-256: it was changed"
             : manifest ? "the manifest matches its SHA-256"
                        : error))
    return std::nullopt;
  return ReadEvidence{std::move(*file), std::move(*manifest)};
}

std::string documentCheck(std::string_view document, const EvidenceManifest& manifest, bool& passed) {
  passed = true;
  if (sameDigest(sha256Hex(document), manifest.documentSha256)) return "the document is the one signed";
  // A stamped PDF keeps the document signed as its first bytes, and appends the stamp as a revision;
  // the revisions added after it are counted, so that a reader sees when there is more than the stamp.
  if (document.size() > manifest.documentSize &&
      sameDigest(sha256Hex(document.substr(0, manifest.documentSize)), manifest.documentSha256)) {
    std::string_view added = document.substr(manifest.documentSize);
    size_t revisions = 0;
    for (size_t at = added.find("%%EOF"); at != std::string_view::npos; at = added.find("%%EOF", at + 5)) ++revisions;
    return "the document's first " + std::to_string(manifest.documentSize) + " bytes are the one signed; " +
           std::to_string(added.size()) + " bytes in " + std::to_string(revisions) +
           (revisions == 1 ? " revision were" : " revisions were") + " added after (a stamp is one)";
  }
  passed = false;
  return "the document is not the one signed";
}

}  // namespace

bool EvidenceVerification::valid() const {
  if (checks.empty()) return false;
  for (const EvidenceCheck& check : checks)
    if (!check.passed) return false;
  return true;
}

std::array<uint8_t, 32> documentSha256Of(std::string_view document) { return sha256Digest(document); }

std::optional<std::string> sealEvidence(const EvidenceSealRequest& request, std::string* error) {
  if (!request.record.strokes || request.record.strokes->empty())
    return failWith<std::string>(error, "the record has no strokes");
  if (request.record.png.empty()) return failWith<std::string>(error, "the record has no image");
  // The biometric data exists in plain text only in memory, on its way into the envelope.
  std::string strokes = strokesToJson(request.record.strokes);
  std::optional<std::string> biometric = cms::envelope(strokes, request.examinerCertificate, error);
  OPENSSL_cleanse(strokes.data(), strokes.size());
  if (!biometric) return std::nullopt;

  EvidenceFile file;
  file.image.assign(bytesOf(request.record.png));
  file.biometricData = std::move(*biometric);
  EvidenceManifest manifest;
  manifest.documentSha256 = hexString(request.documentSha256);
  manifest.documentSize = request.documentSize;
  manifest.documentName = request.documentName;
  manifest.imageSha256 = sha256Hex(file.image);
  manifest.biometricSha256 = sha256Hex(file.biometricData);
  manifest.hash = request.record.hash;
  manifest.timestamp = request.record.timestamp;
  manifest.device = request.record.device;
  manifest.libraryVersion = SCRIVLET_VERSION_TEXT;
  manifest.sealedAt = utcDateString(QnClock::now(), "yyyy-MM-dd'T'HH:mm:ss'Z'");
  file.manifest = manifestToJson(manifest);
  file.manifestSha256 = sha256Hex(file.manifest);

  bool signs = !request.signerCertificate.empty() || !request.signerKey.empty();
  if (signs) {
    file.manifestSignature = cms::signDetached(file.manifest, request.signerCertificate, request.signerKey, error);
    if (!file.manifestSignature) return std::nullopt;
  }
  return evidenceFileToJson(file);
}

EvidenceVerification verifyEvidence(std::string_view sealed, std::string_view document,
                                    std::string_view trustedCertificates) {
  EvidenceVerification report;
  std::optional<ReadEvidence> read = readEvidence(sealed, report);
  if (!read) return report;
  const EvidenceManifest& manifest = read->manifest;
  report.hash = manifest.hash;
  report.timestamp = manifest.timestamp;
  report.device = manifest.device;

  if (read->file.manifestSignature) {
    report.signedManifest = true;
    cms::SignatureCheck signature =
        cms::verifyDetached(*read->file.manifestSignature, read->file.manifest, trustedCertificates);
    report.signer = signature.signer;
    std::string detail = !signature.valid        ? signature.reason
                         : signature.chainChecked ? "valid, by " + signature.signer + ", a trusted signer"
                                                  : "valid, by " + signature.signer +
                                                        " (not checked against trusted certificates)";
    report.checks.push_back({"manifest signature", signature.valid, detail});
  }
  bool documentMatches;
  std::string detail = documentCheck(document, manifest, documentMatches);
  report.checks.push_back({"document", documentMatches, detail});
  bool imageMatches = sameDigest(sha256Hex(read->file.image), manifest.imageSha256);
  report.checks.push_back({"image", imageMatches, imageMatches ? "untouched" : "changed since sealing"});
  bool bioMatches = sameDigest(sha256Hex(read->file.biometricData), manifest.biometricSha256);
  report.checks.push_back({"biometric data", bioMatches, bioMatches ? "untouched" : "changed since sealing"});
  return report;
}

std::optional<RecordFile> openEvidence(std::string_view sealed, std::string_view examinerKey, std::string* error) {
  EvidenceVerification report;
  std::optional<ReadEvidence> read = readEvidence(sealed, report);
  if (!read) return failWith<RecordFile>(error, report.checks.back().detail);
  const EvidenceManifest& manifest = read->manifest;
  if (!sameDigest(sha256Hex(read->file.biometricData), manifest.biometricSha256))
    return failWith<RecordFile>(error, "the biometric data was changed since sealing");
  if (!sameDigest(sha256Hex(read->file.image), manifest.imageSha256))
    return failWith<RecordFile>(error, "the image was changed since sealing");
  std::optional<std::string> strokes = cms::openEnvelope(read->file.biometricData, examinerKey, error);
  if (!strokes) return std::nullopt;
  RecordFile record;
  record.strokes = strokesFromJson(*strokes);
  if (!record.strokes) return failWith<RecordFile>(error, "the biometric data does not read as strokes");
  record.png.assign(read->file.image.begin(), read->file.image.end());
  record.hash = manifest.hash;
  record.timestamp = manifest.timestamp;
  record.device = manifest.device;
  return record;
}

}  // namespace scrivlet
