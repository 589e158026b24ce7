// The sealed file and its manifest as data, written to and read from their JSON documents.
#pragma once

#include <scrivlet/record_file.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet {

struct EvidenceManifest {
  std::string documentSha256;  // hexadecimal, lower case
  uint64_t documentSize = 0;
  std::string documentName;
  std::string imageSha256;
  std::string biometricSha256;
  std::string hash;
  double timestamp = 0;
  CaptureDevice device;
  std::string libraryVersion;
  std::string sealedAt;  // ISO 8601, UTC
};

struct EvidenceFile {
  std::string manifest;                          // the manifest's bytes, as signed
  std::string manifestSha256;                    // hexadecimal
  std::optional<std::string> manifestSignature;  // DER
  std::string image;                             // PNG
  std::string biometricData;                     // DER
};

std::string manifestToJson(const EvidenceManifest& manifest);
// Nothing, with the reason in *error, for anything but a manifest of this version.
std::optional<EvidenceManifest> manifestFromJson(std::string_view json, std::string* error);

std::string evidenceFileToJson(const EvidenceFile& file);

// What the examiner's envelope holds: the record (its image left out) and what it was sealed for.
struct BiometricDocument {
  std::string documentSha256;
  uint64_t documentSize = 0;
  std::string imageSha256;
  RecordFile record;
};
std::string biometricDocumentToJson(const BiometricDocument& document);
std::optional<BiometricDocument> biometricDocumentFromJson(std::string_view json, std::string* error);

// The SHA-256 of the bytes in lower-case hexadecimal, as the manifest keeps digests.
std::string sha256Hex(std::string_view bytes);
// Digests compared in constant time: a forger learns nothing from how long a comparison took.
bool sameDigest(const std::string& hexA, const std::string& hexB);
std::optional<EvidenceFile> evidenceFileFromJson(std::string_view json, std::string* error);

}  // namespace scrivlet
