// Sealed files and manifests to JSON and back, with nlohmann-json.
#include "evidence/evidence_file.h"

#include "host/json_field.h"
#include "platform/crypto.h"

#include <nlohmann/json.hpp>
#include <openssl/crypto.h>

#include <cmath>

namespace scrivlet {

namespace {

using nlohmann::json;

constexpr const char* kFileFormat = "scrivlet-evidence";
constexpr const char* kManifestFormat = "scrivlet-evidence-manifest";
constexpr int kVersion = 2;
constexpr const char* kBiometricFormat = "scrivlet-biometric-data";
constexpr int kBiometricVersion = 1;
constexpr const char* kBiometricContent = "application/vnd.scrivlet.strokes+json";

template <class T>
std::optional<T> refuse(std::string* error, const char* why) {
  if (error) *error = why;
  return std::nullopt;
}

// The document's format and version, checked.
bool isDocument(const json& document, const char* format, int expectedVersion = kVersion) {
  const json& version = jsonField(document, "version");
  return jsonField(document, "format") == format && version.is_number_integer() && version == expectedVersion;
}

// Whether the JSON text nests arrays and objects deeper than `limit`: refused before anything parses
// or serializes it recursively. None of this library's documents nests more than six deep.
bool nestsDeeperThan(std::string_view text, int limit) {
  int depth = 0;
  bool inString = false;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (inString) {
      if (c == '\\') ++i;
      else if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if ((c == '[' || c == '{') && ++depth > limit) {
      return true;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return false;
}
constexpr int kDeepestDocument = 16;

bool isDigest(const json& value) {
  if (!value.is_string() || value.get_ref<const std::string&>().size() != 64) return false;
  for (char c : value.get_ref<const std::string&>())
    if (!std::isxdigit(static_cast<unsigned char>(c)) || std::isupper(static_cast<unsigned char>(c))) return false;
  return true;
}

}  // namespace

std::string manifestToJson(const EvidenceManifest& m) {
  json document{{"format", kManifestFormat},
                {"version", kVersion},
                {"document", {{"sha256", m.documentSha256}, {"size", m.documentSize}, {"name", m.documentName}}},
                {"image", {{"sha256", m.imageSha256}, {"mediaType", "image/png"}}},
                {"biometricData",
                 {{"sha256", m.biometricSha256}, {"mediaType", "application/cms"}, {"content", kBiometricContent}}},
                {"signature", {{"hash", m.hash}, {"timestamp", std::isfinite(m.timestamp) ? m.timestamp : 0.0}}},
                {"device",
                 {{"model", m.device.model()},
                  {"screenScale", std::isfinite(m.device.screenScale()) ? m.device.screenScale() : 0.0},
                  {"pixelsPerInch", m.device.pixelsPerInch()}}},
                {"library", {{"name", "Scrivlet"}, {"version", m.libraryVersion}}},
                {"sealedAt", m.sealedAt}};
  return document.dump(2) + "\n";
}

std::optional<EvidenceManifest> manifestFromJson(std::string_view text, std::string* error) {
  if (nestsDeeperThan(text, kDeepestDocument)) return refuse<EvidenceManifest>(error, "the manifest nests too deep");
  json document = json::parse(text, nullptr, false);
  if (document.is_discarded() || !isDocument(document, kManifestFormat))
    return refuse<EvidenceManifest>(error, "the manifest is not a manifest of this version");
  const json &doc = jsonField(document, "document"), &image = jsonField(document, "image"),
             &bio = jsonField(document, "biometricData"), &signing = jsonField(document, "signature"),
             &device = jsonField(document, "device"), &library = jsonField(document, "library");
  if (!doc.is_object() || !isDigest(jsonField(doc, "sha256")) || !jsonField(doc, "size").is_number_unsigned() ||
      !jsonField(doc, "name").is_string() || !image.is_object() || !isDigest(jsonField(image, "sha256")) ||
      jsonField(image, "mediaType") != "image/png" || !bio.is_object() || !isDigest(jsonField(bio, "sha256")) ||
      jsonField(bio, "content") != kBiometricContent || jsonField(bio, "mediaType") != "application/cms" ||
      !signing.is_object() || !jsonField(signing, "hash").is_string() ||
      !isFiniteNumber(jsonField(signing, "timestamp")) || !device.is_object() ||
      !jsonField(device, "model").is_string() || !isFiniteNumber(jsonField(device, "screenScale")) ||
      !jsonField(device, "pixelsPerInch").is_number_integer() || jsonField(device, "pixelsPerInch") < 0 ||
      jsonField(device, "pixelsPerInch") > 1000000 || !library.is_object() ||
      jsonField(library, "name") != "Scrivlet" || !jsonField(library, "version").is_string() ||
      !jsonField(document, "sealedAt").is_string())
    return refuse<EvidenceManifest>(error, "the manifest lacks a field or has one of the wrong type");
  EvidenceManifest m;
  auto string = [](const json& object, const char* key) { return jsonField(object, key).get<std::string>(); };
  m.documentSha256 = string(doc, "sha256");
  m.documentSize = jsonField(doc, "size").get<uint64_t>();
  m.documentName = string(doc, "name");
  m.imageSha256 = string(image, "sha256");
  m.biometricSha256 = string(bio, "sha256");
  m.hash = string(signing, "hash");
  m.timestamp = jsonField(signing, "timestamp").get<double>();
  m.device = {string(device, "model"), jsonField(device, "screenScale").get<double>(),
              jsonField(device, "pixelsPerInch").get<int>()};
  m.libraryVersion = string(library, "version");
  m.sealedAt = string(document, "sealedAt");
  return m;
}

std::string evidenceFileToJson(const EvidenceFile& file) {
  json document{{"format", kFileFormat},
                {"version", kVersion},
                {"manifest", base64Encode(file.manifest)},
                {"manifestSha256", file.manifestSha256},
                {"image", base64Encode(file.image)},
                {"biometricData", base64Encode(file.biometricData)}};
  if (file.manifestSignature) document["manifestSignature"] = base64Encode(*file.manifestSignature);
  return document.dump(2) + "\n";
}

std::optional<EvidenceFile> evidenceFileFromJson(std::string_view text, std::string* error) {
  if (nestsDeeperThan(text, kDeepestDocument)) return refuse<EvidenceFile>(error, "the sealed file nests too deep");
  json document = json::parse(text, nullptr, false);
  if (document.is_discarded() || !isDocument(document, kFileFormat))
    return refuse<EvidenceFile>(error, "not a sealed evidence file of this version");
  auto binary = [&](const char* key) -> std::optional<std::string> {
    const json& value = jsonField(document, key);
    return value.is_string() ? base64Decode(value.get_ref<const std::string&>()) : std::nullopt;
  };
  EvidenceFile file;
  std::optional<std::string> manifest = binary("manifest"), image = binary("image"), bio = binary("biometricData");
  if (!manifest || !image || !bio || !isDigest(jsonField(document, "manifestSha256")))
    return refuse<EvidenceFile>(error, "the sealed file lacks its manifest, image or biometric data");
  file.manifest = std::move(*manifest);
  file.image = std::move(*image);
  file.biometricData = std::move(*bio);
  file.manifestSha256 = jsonField(document, "manifestSha256").get<std::string>();
  if (document.contains("manifestSignature")) {
    file.manifestSignature = binary("manifestSignature");
    if (!file.manifestSignature) return refuse<EvidenceFile>(error, "the manifest's signature is not Base64");
  }
  return file;
}

std::string biometricDocumentToJson(const BiometricDocument& b) {
  RecordFile record = b.record;
  record.setPng({});  // the image travels beside the envelope, bound by its digest
  json document{{"format", kBiometricFormat},
                {"version", kBiometricVersion},
                {"document", {{"sha256", b.documentSha256}, {"size", b.documentSize}}},
                {"imageSha256", b.imageSha256},
                {"record", json::parse(recordFileToJson(record))}};
  return document.dump();
}

std::optional<BiometricDocument> biometricDocumentFromJson(std::string_view text, std::string* error) {
  if (nestsDeeperThan(text, kDeepestDocument))
    return refuse<BiometricDocument>(error, "the biometric document nests too deep");
  json document = json::parse(text, nullptr, false);
  if (document.is_discarded() || !isDocument(document, kBiometricFormat, kBiometricVersion))
    return refuse<BiometricDocument>(error, "the biometric data is not a biometric document of this version");
  const json &sealedFor = jsonField(document, "document"), &record = jsonField(document, "record");
  // The record and its strokes name their formats as text: the record reader takes nothing else.
  const json& strokes = jsonField(record, "strokes");
  if (!isDigest(jsonField(sealedFor, "sha256")) || !jsonField(sealedFor, "size").is_number_unsigned() ||
      !isDigest(jsonField(document, "imageSha256")) || !jsonField(record, "format").is_string() ||
      !jsonField(strokes, "format").is_string())
    return refuse<BiometricDocument>(error, "the biometric document lacks a field or has one of the wrong type");
  BiometricDocument b;
  Result<RecordFile> read = recordFromJson(record.dump());
  if (!read) return refuse<BiometricDocument>(error, read.error().message().c_str());
  b.documentSha256 = jsonField(sealedFor, "sha256").get<std::string>();
  b.documentSize = jsonField(sealedFor, "size").get<uint64_t>();
  b.imageSha256 = jsonField(document, "imageSha256").get<std::string>();
  b.record = std::move(*read);
  return b;
}

std::string sha256Hex(std::string_view bytes) { return hexString(sha256Digest(bytes)); }

bool sameDigest(const std::string& hexA, const std::string& hexB) {
  return hexA.size() == hexB.size() && CRYPTO_memcmp(hexA.data(), hexB.data(), hexA.size()) == 0;
}

}  // namespace scrivlet
