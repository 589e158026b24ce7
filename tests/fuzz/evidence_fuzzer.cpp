// Fuzzes everything that reads outside data for evidence: sealed files (verified against a document,
// opened with the examiner's key), record files as the envelope carries them, PDFs (verified, and
// signed when the first byte's high bit is set), and sealed files, manifests and records whose members
// were given values of the wrong type. The first byte picks the reader; the rest is the input.
// Nothing may crash or throw (no exception is caught here), and the oracles hold: evidence valid for
// a document is not valid for that document extended, a valid signed PDF given a later revision is
// not valid, and what signPdf signs verifies over its byte range.
#include <scrivlet/pdf_signature.h>
#include <scrivlet/record_file.h>

#include "evidence/cms.h"
#include "evidence/evidence_file.h"
#include "evidence/pdf_update.h"
#include "fuzz_identities.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace scrivlet;
using nlohmann::json;

const std::string kDocument = "%PDF-1.4 fuzzing document\n%%EOF\n";
const EvidenceVerifyOptions kTrust{fuzz::kRoot, false};
const EvidenceSigner kSigner{fuzz::kSigner, fuzz::kSignerKey, ""};

[[noreturn]] void broken(const char* invariant) {
  std::fprintf(stderr, "evidence fuzzer: %s\n", invariant);
  std::abort();
}

// A record of one short stroke with a one-pixel PNG.
RecordFile fuzzRecord() {
  static const uint8_t kPng[] = {0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
                                 0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x02, 0x00, 0x00,
                                 0x00, 0x90, 0x77, 0x53, 0xde, 0x00, 0x00, 0x00, 0x0c, 0x49, 0x44, 0x41, 0x54, 0x08,
                                 0xd7, 0x63, 0xf8, 0xcf, 0xc0, 0x00, 0x00, 0x03, 0x01, 0x01, 0x00, 0x18, 0xdd, 0x8d,
                                 0xb0, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
  RecordFile record;
  auto stroke = std::make_shared<QnStroke>(2);
  (*stroke)[1].location = {5, 5};
  record.setStrokes(std::make_shared<QnStrokeList>(QnStrokeList{stroke}));
  record.setPng({std::begin(kPng), std::end(kPng)});
  record.setHash("F0F0F0F0F0");
  return record;
}

std::optional<std::string> sealFor(std::string_view document, RecordFile record = fuzzRecord(),
                                   bool signedManifest = true) {
  EvidenceSealRequest request;
  request.setRecord(std::move(record));
  request.setDocumentSha256(documentSha256Of(document));
  request.setDocumentSize(document.size());
  request.setExaminerCertificate(fuzz::kExaminer);
  if (signedManifest) request.setManifestSigner(kSigner);
  return optionalOf(sealEvidence(request), nullptr);
}

// A record file as the examiner's envelope carries it, read the way opening reads it.
std::optional<RecordFile> recordInEnvelope(const std::string& recordJson) {
  static const std::string digest(64, 'a');
  std::string plaintext = R"({"format":"scrivlet-biometric-data","version":1,"document":{"sha256":")" + digest +
                          R"(","size":1},"imageSha256":")" + digest + R"(","record":)" + recordJson + "}";
  std::string reason;
  std::optional<BiometricDocument> read = biometricDocumentFromJson(plaintext, &reason);
  return read ? std::optional(std::move(read->record)) : std::nullopt;
}

void checkSealed(const std::string& sealed) {
  if (!verifyEvidence(sealed, kDocument, kTrust).valid()) return;
  if (verifyEvidence(sealed, kDocument + "\n", kTrust).valid() || verifyEvidence(sealed, "another", kTrust).valid())
    broken("sealed evidence verified against a document it was not sealed with");
}

// The PDF with a revision appended that adds one object and signs nothing.
std::string withLaterRevision(const std::string& pdf) {
  QPDF qpdf;
  pdf::open(qpdf, pdf);
  pdf::IncrementalUpdate update(pdf, int(qpdf.getXRefTable().rbegin()->first.getObj()) + 1);
  update.writeNewObject("(a change after signing)");
  return update.finish("/Root " + qpdf.getRoot().unparse(), *pdf::lastCrossReferenceOffset(pdf));
}

// Verifies the PDF; signs it too when `sign` (the costlier half: sealing, signing, verifying again).
void checkPdf(const std::string& input, bool sign) {
  PdfVerification report = verifyPdf(input, kTrust);
  if (report.valid() && report.signatures().back().coversWholeDocument() &&
      verifyPdf(withLaterRevision(input), kTrust).valid())
    broken("a signed PDF changed after signing verified");
  if (!sign || input.rfind("%PDF-", 0) != 0) return;
  std::optional<std::string> sealed = sealFor(input, fuzzRecord(), false);
  if (!sealed) return;
  PdfSignatureRequest request;
  request.setRect(10, 10, 100, 40);
  request.setSealedEvidence(*sealed);
  request.setSigner(kSigner);
  request.setFieldName("Fuzzed signature");
  Result<std::vector<uint8_t>> signedPdf = signPdf(input, request);
  if (!signedPdf) return;
  std::string result(signedPdf->begin(), signedPdf->end());
  if (result.compare(0, input.size(), input) != 0) broken("a signed PDF lost its original bytes");
  PdfVerification verified = verifyPdf(result, kTrust);
  for (const PdfSignatureVerification& signature : verified.signatures())
    if (signature.field() == "Fuzzed signature")
      for (const EvidenceCheck& check : signature.checks())
        if ((check.kind() == EvidenceCheckKind::ByteRange || check.kind() == EvidenceCheckKind::Signature) &&
            !check.passed())
          broken("what signPdf signed does not verify over its byte range");
}

// A value of another type than `original`, picked by `choice`.
json wrongValue(const json& original, uint8_t choice) {
  switch (choice % 7) {
    case 0: return original.is_null() ? json(1) : json(nullptr);
    case 1: return original.is_boolean() ? json("true") : json(true);
    case 2: return original.is_number() ? json("7") : json(4294967297LL);
    case 3: return original.is_number() ? json::array() : json(-1.5e308);
    case 4: return original.is_string() ? json(42) : json("text");
    case 5: return original.is_array() ? json::object() : json::array({original});
    default: {
      json nested = original.is_object() ? json(0) : json::object();
      for (int depth = 0; depth < 200; ++depth) nested = json::array({nested});
      return nested;
    }
  }
}

// Replaces one member (picked by the bytes) of the object, or of an object within it, by a wrong type;
// false when there were too few bytes to pick one.
bool replaceMember(json& object, const std::string& choices) {
  json* target = &object;
  for (size_t i = 0; i + 1 < choices.size() && target->is_object() && !target->empty(); i += 2) {
    auto member = std::next(target->begin(), long(uint8_t(choices[i]) % target->size()));
    if (i + 3 >= choices.size() || !member->is_object() || member->empty()) {
      *member = wrongValue(*member, uint8_t(choices[i + 1]));
      return true;
    }
    target = &*member;
  }
  return false;
}

std::string dumped(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

void checkWrongTypes(const std::string& input) {
  static const std::string seed = sealFor(kDocument).value_or("");
  if (input.size() < 2 || seed.empty()) return;
  EvidenceFile file = *evidenceFileFromJson(seed, nullptr);
  json sealed = json::parse(seed, nullptr, false);
  std::string choices = input.substr(1);
  switch (uint8_t(input[0]) % 3) {
    case 0:  // the sealed file's own members
      if (!replaceMember(sealed, choices)) return;
      break;
    case 1: {  // the manifest's, signed again so that only the type is wrong
      json manifest = json::parse(file.manifest, nullptr, false);
      if (!replaceMember(manifest, choices)) return;
      file.manifest = dumped(manifest);
      file.manifestSha256 = sha256Hex(file.manifest);
      file.manifestSignature = cms::signDetached(file.manifest, kSigner, false, "", nullptr);
      sealed = json::parse(evidenceFileToJson(file), nullptr, false);
      break;
    }
    default: {  // the record in the envelope, sealed again when it still reads
      json record = json::parse(recordFileToJson(fuzzRecord()), nullptr, false);
      if (!replaceMember(record, choices)) return;
      if (std::optional<RecordFile> read = recordInEnvelope(dumped(record))) {
        if (std::optional<std::string> resealed = sealFor(kDocument, std::move(*read))) {
          checkSealed(*resealed);
          openEvidence(*resealed, fuzz::kExaminerKey, kTrust);
        }
      }
      return;
    }
  }
  std::string text = dumped(sealed);
  EvidenceVerification report = verifyEvidence(text, kDocument, kTrust);
  if (report.valid()) broken("a sealed file with a value of the wrong type verified");
  openEvidence(text, fuzz::kExaminerKey, kTrust);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 5) {
    case 0: checkSealed(input); break;
    case 1:
      if (Result<RecordFile> record = openEvidence(input, fuzz::kExaminerKey, kTrust);
          record && !record->strokes())
        broken("an opened record without strokes");
      break;
    case 2:
      if (std::optional<RecordFile> record = recordInEnvelope(input))
        if (!recordInEnvelope(recordFileToJson(*record))) broken("a record file does not read back");
      break;
    case 3: checkPdf(input, data[0] & 0x80); break;
    default: checkWrongTypes(input); break;
  }
  return 0;
}
