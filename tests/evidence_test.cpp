// Sealed evidence: round trips with RSA 3072 and P-256 examiners, files that OpenSSL's own command opens
// and verifies, every tampered part failing its own check, verdicts that only a trusted signer makes
// valid, opening that checks what the strokes were sealed for, and inputs refused with a reason.
#include <scrivlet/evidence.h>
#include <scrivlet/stroke_json.h>

#include <gtest/gtest.h>

#include "evidence/cms.h"
#include "evidence/evidence_file.h"
#include "output_support.h"
#include "platform/crypto.h"
#include "test_certificates.h"

#include <filesystem>
#include <map>

namespace scrivlet {
namespace {

namespace fs = std::filesystem;
using test_support::failureOf;
using test_support::outputOf;
using test_support::TestCertificates;
using test_support::TestIdentity;
using Verdict = EvidenceVerdict;

// The smallest PNG: one opaque red pixel.
const std::vector<uint8_t> kPng{0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
                                0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x02, 0x00, 0x00,
                                0x00, 0x90, 0x77, 0x53, 0xde, 0x00, 0x00, 0x00, 0x0c, 0x49, 0x44, 0x41, 0x54, 0x08,
                                0xd7, 0x63, 0xf8, 0xcf, 0xc0, 0x00, 0x00, 0x03, 0x01, 0x01, 0x00, 0x18, 0xdd, 0x8d,
                                0xb0, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

RecordFile withPng(RecordFile record, std::vector<uint8_t> png) {
  record.setPng(std::move(png));
  return record;
}

class Evidence : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { certificates = new TestCertificates; }
  static void TearDownTestSuite() { delete certificates; }

  static std::string save(const std::string& name, std::string_view bytes) {
    return test_support::writeOutput("evidence/" + name, bytes);
  }

  static RecordFile record(double firstX = 10, const std::string& hash = "A1B2C3D4") {
    return test_support::signingRecord(firstX, hash, kPng);
  }

  static EvidenceSealRequest request(const std::string& examiner, const std::string& document = kDocument) {
    EvidenceSealRequest request;
    request.setRecord(record());
    request.setDocumentSha256(documentSha256Of(document));
    request.setDocumentSize(document.size());
    request.setDocumentName("contract.pdf");
    request.setExaminerCertificate(examiner);
    request.setManifestSigner({certificates->signer.certificate, certificates->signer.key,
                               certificates->intermediate.certificate});
    return request;
  }

  static std::string seal(const EvidenceSealRequest& request) {
    auto sealed = sealEvidence(request);
    EXPECT_TRUE(sealed) << sealed.error().message();
    return sealed.value_or("");
  }

  static EvidenceVerifyOptions trusting(const TestIdentity& anchor) { return {anchor.certificate, false}; }

  static std::map<std::string, bool> checks(const EvidenceVerification& report) {
    std::map<std::string, bool> passed;
    for (const EvidenceCheck& check : report.checks()) passed[check.name()] = check.passed();
    return passed;
  }

  // The sealed file with other biometric data, its manifest's digest made to match and signed again
  // with the application's own key: what whoever holds that key could do.
  static std::string withBiometricData(const std::string& sealed, const std::string& der) {
    EvidenceFile file = *evidenceFileFromJson(sealed, nullptr);
    file.manifest.replace(file.manifest.find(sha256Hex(file.biometricData)), 64, sha256Hex(der));
    file.biometricData = der;
    file.manifestSha256 = sha256Hex(file.manifest);
    file.manifestSignature = cms::signDetached(
        file.manifest,
        {certificates->signer.certificate, certificates->signer.key, certificates->intermediate.certificate}, false, "",
        nullptr);
    return evidenceFileToJson(file);
  }

  static inline TestCertificates* certificates = nullptr;
  static inline const std::string kDocument = "%PDF-1.4 the contract being signed\n%%EOF\n";
};

TEST_F(Evidence, SealsVerifiesAndOpensForRsaAndEcExaminersAndPublicKeys) {
  const std::map<std::string, bool> allPassed{{"container", true},     {"manifest", true}, {"manifest signature", true},
                                              {"signer", true},        {"document", true}, {"image", true},
                                              {"biometric data", true}};
  for (const TestIdentity* examiner : {&certificates->rsaExaminer, &certificates->ecExaminer}) {
    for (bool bareKey : {false, true}) {
      SCOPED_TRACE(examiner->certificate.substr(30, 20) + (bareKey ? " as a public key" : ""));
      std::string sealed = seal(request(bareKey ? TestCertificates::publicKeyOf(*examiner) : examiner->certificate));
      EXPECT_EQ(sealed.find("\"x\""), std::string::npos);  // no plaintext coordinate

      EvidenceVerification report = verifyEvidence(sealed, kDocument, trusting(certificates->root));
      EXPECT_EQ(report.verdict(), Verdict::Valid) << report.reason();
      EXPECT_EQ(checks(report), allPassed);
      EXPECT_EQ(report.signer(), "/CN=Tablet App");
      EXPECT_EQ(report.hash(), "A1B2C3D4");
      EXPECT_EQ(report.device().pixelsPerInch(), 264);

      auto opened = openEvidence(sealed, examiner->key, trusting(certificates->root));
      ASSERT_TRUE(opened) << opened.error().message();
      EXPECT_EQ(strokesToJson(opened->strokes()), strokesToJson(record().strokes()));  // to the bit
      EXPECT_EQ(opened->png(), kPng);
      EXPECT_EQ(opened->hash(), "A1B2C3D4");
      EXPECT_EQ(opened->timestamp(), 786000000.25);
      Error error = openEvidence(sealed, certificates->signer.key, trusting(certificates->root)).error();
      EXPECT_EQ(error.code(), ErrorCode::BadKey);
    }
  }
}

TEST_F(Evidence, SealsTheRecordOnTheCapturingDeviceForTheDocumentItShows) {
  QnSignature signing;  // as the session or the pad delivers it
  signing.setRawPoints(record().strokes());
  signing.setImageData(kPng);
  signing.setHashString("A1B2C3D4");
  signing.setTimestamp(786000000.25);
  auto sealed = sealSignatureForDocument(
      signing, kDocument, "contract.pdf", certificates->ecExaminer.certificate,
      {certificates->signer.certificate, certificates->signer.key, certificates->intermediate.certificate});
  ASSERT_TRUE(sealed) << sealed.error().message();
  auto opened = openEvidence(*sealed, certificates->ecExaminer.key, trusting(certificates->root), nullptr, kDocument);
  ASSERT_TRUE(opened) << opened.error().message();  // verified first, for this document
  EXPECT_EQ(strokesToJson(opened->strokes()), strokesToJson(record().strokes()));
  EXPECT_EQ(opened->hash(), "A1B2C3D4");
  EXPECT_EQ(opened->device().model(), currentCaptureDevice().model());
}

TEST_F(Evidence, OpenSslsOwnCommandDecryptsTheEnvelopeAndVerifiesTheManifestThroughTheIntermediate) {
  for (const TestIdentity* examiner : {&certificates->rsaExaminer, &certificates->ecExaminer}) {
    std::string sealed = seal(request(examiner->certificate));
    EvidenceFile parts = *evidenceFileFromJson(sealed, nullptr);
    std::string bio = save("bio.der", parts.biometricData), key = save("examiner.key", examiner->key);
    std::string plaintext = outputOf("openssl cms -decrypt -inform DER -in " + bio + " -inkey " + key);
    // The strokes travel with what they were given for: the document's digest and the record's hash.
    EXPECT_NE(plaintext.find(hexString(documentSha256Of(kDocument))), std::string::npos);
    EXPECT_NE(plaintext.find("\"hash\":\"A1B2C3D4\""), std::string::npos);
    EXPECT_NE(plaintext.find(strokesToJson(record().strokes())), std::string::npos);
    std::string structure = outputOf("openssl cms -cmsout -print -inform DER -in " + bio);
    EXPECT_NE(structure.find("aes-256-gcm"), std::string::npos);
    EXPECT_NE(
        structure.find(examiner == &certificates->rsaExaminer ? "rsaesOaep" : "dhSinglePass-stdDH-sha256kdf-scheme"),
        std::string::npos)
        << structure;

    std::string manifest = save("manifest.json", parts.manifest),
                signature = save("manifest.sig", *parts.manifestSignature),
                root = save("root.pem", certificates->root.certificate);
    std::string verify = "openssl cms -verify -binary -inform DER -in " + signature + " -content " + manifest +
                         " -CAfile " + root + " -purpose any -out /dev/null";
    EXPECT_EQ(failureOf(verify), "");  // the intermediate travels in the signature
    save("manifest.json", parts.manifest + " ");
    EXPECT_NE(failureOf(verify), "");
  }
}

// Re-encodes the sealed file with one byte of one part changed.
std::string tampered(const std::string& sealed, std::string EvidenceFile::*part, size_t at) {
  EvidenceFile file = *evidenceFileFromJson(sealed, nullptr);
  std::string& bytes = file.*part;
  bytes[at % bytes.size()] ^= 0x01;
  return evidenceFileToJson(file);
}

TEST_F(Evidence, EveryChangedPartFailsItsOwnCheckWithItsVerdict) {
  std::string sealed = seal(request(certificates->ecExaminer.certificate));
  EvidenceFile parts = *evidenceFileFromJson(sealed, nullptr);
  EvidenceFile resigned = parts;  // a changed manifest whose digest was made to match
  resigned.manifest.replace(resigned.manifest.find("A1B2C3D4"), 8, "EVILHASH");
  resigned.manifestSha256 = sha256Hex(resigned.manifest);
  EvidenceFile badSignature = parts;
  (*badSignature.manifestSignature)[badSignature.manifestSignature->size() - 5] ^= 0x01;
  std::string changedDocument = kDocument;
  changedDocument[12] ^= 0x20;
  struct Case {
    const char* name;
    std::string sealed, document;
    std::string failing;
    Verdict verdict;
  };
  const std::vector<Case> cases{
      {"image", tampered(sealed, &EvidenceFile::image, 3), kDocument, "image", Verdict::Tampered},
      {"biometric data", tampered(sealed, &EvidenceFile::biometricData, 100), kDocument, "biometric data",
       Verdict::Tampered},
      {"signature", evidenceFileToJson(badSignature), kDocument, "manifest signature", Verdict::Tampered},
      {"manifest bytes", tampered(sealed, &EvidenceFile::manifest, 50), kDocument, "manifest", Verdict::Tampered},
      {"manifest rehashed", evidenceFileToJson(resigned), kDocument, "manifest signature", Verdict::Tampered},
      {"other document", sealed, changedDocument, "document", Verdict::Tampered},
      {"truncated document", sealed, kDocument.substr(0, 20), "document", Verdict::Tampered},
      {"a correction appended", sealed, kDocument + "Correction: I owe you EUR 50,000\n", "document",
       Verdict::Tampered},
      {"truncated file", sealed.substr(0, sealed.size() / 2), kDocument, "container", Verdict::Unreadable},
      {"garbage", "\x89PNG not a sealed file at all", kDocument, "container", Verdict::Unreadable},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EvidenceVerification report = verifyEvidence(c.sealed, c.document, trusting(certificates->root));
    EXPECT_EQ(report.verdict(), c.verdict) << report.reason();
    std::vector<std::string> failed;
    for (const EvidenceCheck& check : report.checks())
      if (!check.passed()) failed.push_back(check.name());
    EXPECT_EQ(failed, std::vector<std::string>{c.failing});
  }
  EXPECT_NE(verifyEvidence(cases[7].sealed, cases[7].document).reason().find("33 bytes were added"), std::string::npos);
  Error error = openEvidence(cases[1].sealed, certificates->ecExaminer.key, trusting(certificates->root)).error();
  EXPECT_EQ(error.code(), ErrorCode::Tampered);
  EXPECT_NE(error.message().find("biometric data: changed since sealing"), std::string::npos) << error.message();
}

TEST_F(Evidence, OnlyASignerChainingToTheTrustedRootMakesEvidenceValid) {
  std::string sealed = seal(request(certificates->rsaExaminer.certificate));
  EvidenceFile stripped = *evidenceFileFromJson(sealed, nullptr);
  stripped.manifestSignature.reset();
  // Manifests signed by openssl's own command, by certificates this library would not sign with.
  auto sealedBy = [&](const TestIdentity& signer, const std::string& chain) {
    EvidenceFile file = *evidenceFileFromJson(sealed, nullptr);
    std::string manifest = save("manifest.json", file.manifest), cert = save("signer.pem", signer.certificate),
                key = save("signer.key", signer.key), certs = save("chain.pem", chain);
    file.manifestSignature =
        outputOf("openssl cms -sign -binary -outform DER -md sha256 -in " + manifest + " -signer " + cert + " -inkey " +
                 key + (chain.empty() ? "" : " -certfile " + certs));
    EXPECT_FALSE(file.manifestSignature->empty());
    return evidenceFileToJson(file);
  };
  struct Case {
    const char* name;
    std::string sealed;
    EvidenceVerifyOptions options;
    Verdict verdict;
    std::string reasonMentions;
  };
  const std::string intermediate = certificates->intermediate.certificate;
  const std::vector<Case> cases{
      {"no trust given", sealed, {}, Verdict::Untrusted, "no trusted certificates"},
      {"signature stripped, trust given", evidenceFileToJson(stripped), trusting(certificates->root), Verdict::Unsigned,
       "not signed"},
      {"a look-alike self-made signer", sealedBy(certificates->lookAlike, certificates->strangerRoot.certificate),
       trusting(certificates->root), Verdict::Untrusted, "unknown issuer"},
      {"a code-signing certificate", sealedBy(certificates->codeSigner, intermediate), trusting(certificates->root),
       Verdict::Untrusted, "Code Signing"},
      {"a TLS client certificate", sealedBy(certificates->tlsClient, intermediate), trusting(certificates->root),
       Verdict::Untrusted, "TLS Web Client Authentication"},
      {"the intermediate left out", sealedBy(certificates->signer, ""), trusting(certificates->root),
       Verdict::Untrusted, "unknown issuer"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EvidenceVerification report = verifyEvidence(c.sealed, kDocument, c.options);
    EXPECT_EQ(report.verdict(), c.verdict) << report.reason();
    EXPECT_NE(report.reason().find(c.reasonMentions), std::string::npos) << report.reason();
  }
  // An expired signer, or one not made for signing, cannot seal.
  for (const TestIdentity* signer : {&certificates->expiredSigner, &certificates->codeSigner}) {
    EvidenceSealRequest asked = request(certificates->rsaExaminer.certificate);
    asked.setManifestSigner({signer->certificate, signer->key, intermediate});
    Error error = sealEvidence(asked).error();
    EXPECT_EQ(error.code(), ErrorCode::CertificateRejected) << error.message();
  }
}

TEST_F(Evidence, OpeningVerifiesFirstAndRefusesStrokesSealedForAnotherDocumentOrSigning) {
  const TestIdentity& examiner = certificates->ecExaminer;
  std::string sealed = seal(request(examiner.certificate));
  Error error = openEvidence(sealed, examiner.key, {}).error();  // no trust given: untrusted
  EXPECT_EQ(error.code(), ErrorCode::Untrusted) << error.message();
  ASSERT_TRUE(openEvidence(sealed, examiner.key, trusting(certificates->root), nullptr, kDocument));
  error = openEvidence(sealed, examiner.key, trusting(certificates->root), nullptr, kDocument + "x").error();
  EXPECT_EQ(error.code(), ErrorCode::Tampered);

  // Whoever holds the application's key moves another signing's envelope under this manifest, or this
  // signing's strokes under a manifest for another document, and signs the manifest again.
  EvidenceSealRequest otherSigning = request(examiner.certificate);
  otherSigning.setRecord(record(60, "FFEE0011"));
  EvidenceSealRequest otherDocument = request(examiner.certificate, "%PDF-1.4 another contract\n");
  auto transplanted = [](const std::string& from, const std::string& into) {
    return withBiometricData(into, evidenceFileFromJson(from, nullptr)->biometricData);
  };
  std::string swappedStrokes = transplanted(seal(otherSigning), sealed);
  EXPECT_TRUE(verifyEvidence(swappedStrokes, kDocument, trusting(certificates->root)).valid());  // the digests agree
  error = openEvidence(swappedStrokes, examiner.key, trusting(certificates->root)).error();
  EXPECT_EQ(error.code(), ErrorCode::Tampered);
  EXPECT_EQ(error.message(), "the biometric data was sealed with another signing");
  std::string reboundStrokes = transplanted(sealed, seal(otherDocument));
  error = openEvidence(reboundStrokes, examiner.key, trusting(certificates->root)).error();
  EXPECT_EQ(error.message(), "the biometric data was sealed for another document");
}

TEST_F(Evidence, AlgorithmsThisLibraryDoesNotWriteAreRefusedByName) {
  std::string sealed = seal(request(certificates->rsaExaminer.certificate));
  std::string plain = save("plain.json", "{}"),
              examiner = save("rsa-examiner.pem", certificates->rsaExaminer.certificate);
  struct Weak {
    const char* options;
    const char* name;
  };
  for (const Weak& weak :
       {Weak{"-des3", "des-ede3-cbc"}, Weak{"-aes-256-cbc", "aes-256-cbc"}, Weak{"-aes-256-gcm", "rsaEncryption"}}) {
    SCOPED_TRACE(weak.options);
    std::string der = outputOf("openssl cms -encrypt -binary -outform DER " + std::string(weak.options) + " -in " +
                               plain + " " + examiner);
    ASSERT_FALSE(der.empty());
    Error error = openEvidence(withBiometricData(sealed, der), certificates->rsaExaminer.key, trusting(certificates->root)).error();
    EXPECT_EQ(error.code(), ErrorCode::UnsupportedAlgorithm);
    EXPECT_NE(error.message().find(weak.name), std::string::npos) << error.message();
  }
  EvidenceFile parts = *evidenceFileFromJson(sealed, nullptr);
  std::string manifest = save("weak-manifest.json", parts.manifest),
              cert = save("signer.pem", certificates->signer.certificate),
              key = save("signer.key", certificates->signer.key);
  for (const char* digest : {"sha1", "md5"}) {
    SCOPED_TRACE(digest);
    EvidenceFile file = parts;
    file.manifestSignature = outputOf("openssl cms -sign -binary -outform DER -noattr -md " + std::string(digest) +
                                      " -in " + manifest + " -signer " + cert + " -inkey " + key);
    EvidenceVerification report = verifyEvidence(evidenceFileToJson(file), kDocument, trusting(certificates->root));
    EXPECT_EQ(report.verdict(), Verdict::Untrusted);
    EXPECT_NE(report.reason().find(digest), std::string::npos) << report.reason();
  }
}

TEST_F(Evidence, SealingRefusesDamagedExaminersImagesThatAreNotPngsEmptyDocumentsAndWhatCouldNotBeReadBack) {
  // One byte of the RSA examiner's modulus changed: the certificate still reads, its self-signature fails.
  std::string damaged = certificates->rsaExaminer.certificate;
  size_t inModulus = damaged.find("MII") + 400;
  damaged[inModulus] = damaged[inModulus] == 'A' ? 'B' : 'A';
  struct Case {
    const char* name;
    std::function<void(EvidenceSealRequest&)> change;
    ErrorCode code;
  };
  const std::vector<Case> cases{
      {"damaged examiner", [&](EvidenceSealRequest& r) { r.setExaminerCertificate(damaged); }, ErrorCode::BadKey},
      {"image not a PNG", [](EvidenceSealRequest& r) { r.setRecord(withPng(r.record(), {'G', 'I', 'F', '8', '9', 'a'})); },
       ErrorCode::InvalidArgument},
      {"image larger than a reader takes",
       [](EvidenceSealRequest& r) {
         std::vector<uint8_t> png = kPng;  // a header claiming 20,000 x 20,000 pixels
         png[18] = png[22] = 0x4e, png[19] = png[23] = 0x20;
         r.setRecord(withPng(r.record(), png));
       },
       ErrorCode::InvalidArgument},
      {"empty document", [](EvidenceSealRequest& r) { r.setDocumentSize(0), r.setDocumentSha256(documentSha256Of("")); },
       ErrorCode::InvalidArgument},
      {"no strokes", [](EvidenceSealRequest& r) {
         RecordFile record = r.record();
         record.setStrokes(std::make_shared<QnStrokeList>());
         r.setRecord(record);
       },
       ErrorCode::InvalidArgument},
      {"signer's key not the certificate's",
       [](EvidenceSealRequest& r) {
         EvidenceSigner signer = r.manifestSigner();
         signer.setKey(certificates->ecSigner.key);
         r.setManifestSigner(signer);
       }, ErrorCode::BadKey},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EvidenceSealRequest asked = request(certificates->rsaExaminer.certificate);
    c.change(asked);
    Error error = sealEvidence(asked).error();
    EXPECT_EQ(error.code(), c.code) << error.message();
    EXPECT_EQ(error.message().find('\n'), std::string::npos);
  }
}

// A sealed file of version 2 as an earlier build wrote it (signed by a certificate of its own root,
// sealed for an examiner key stored beside it, with the contract it signs): every later build
// verifies and opens it, so that a change of the format is a decision, not an accident.
TEST(SealedEvidenceGoldenFile, VersionTwoVerifiesAndOpensToTheRecordSealed) {
  auto stored = [](const std::string& name) {
    return test_support::readText(SCRIVLET_TEST_DATA_DIR "/evidence_v2/" + name);
  };
  const std::string sealed = stored("sealed.json"), contract = stored("contract.txt");
  const EvidenceVerifyOptions trust{stored("root.pem"), false};
  EvidenceVerification report = verifyEvidence(sealed, contract, trust);
  EXPECT_EQ(report.verdict(), EvidenceVerdict::Valid) << report.reason();
  EXPECT_EQ(report.signer(), "/CN=Golden Tablet App");
  EXPECT_EQ(report.hash(), "0F1E2D3C4B");
  EXPECT_EQ(verifyEvidence(sealed, contract + " ", trust).verdict(), EvidenceVerdict::Tampered);
  Result<RecordFile> opened = openEvidence(sealed, stored("examiner.key"), trust, nullptr, contract);
  ASSERT_TRUE(opened) << opened.error().message();
  // The record sealed was the record file golden file: its strokes, hash, time and device.
  EXPECT_EQ(opened->hash(), "0F1E2D3C4B");
  EXPECT_EQ(opened->timestamp(), 786000000.125);
  EXPECT_EQ(opened->device().model(), "iPad13,4");
  EXPECT_EQ(strokesToJson(opened->strokes()), test_support::readText(SCRIVLET_TEST_DATA_DIR "/strokes_v1.json"));
}

}  // namespace
}  // namespace scrivlet
