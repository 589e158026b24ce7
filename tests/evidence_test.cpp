// Sealed evidence: round trips with RSA 3072 and P-256 examiners, files that OpenSSL's own command opens
// and verifies, every tampered part failing its own check, and garbage refused.
#include <scrivlet/evidence.h>
#include <scrivlet/stroke_json.h>

#include <gtest/gtest.h>

#include "evidence/evidence_file.h"
#include "platform/crypto.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

namespace scrivlet {
namespace {

namespace fs = std::filesystem;

std::string slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void spill(const fs::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
}

int run(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

// Keys and certificates made once with OpenSSL's command: examiners with RSA 3072 and P-256 keys, the
// capturing application's signing certificate, and a stranger's.
class Evidence : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir = fs::temp_directory_path() / ("scrivlet-evidence-" + std::to_string(getpid()));
    fs::create_directories(dir);
    auto certificate = [](const std::string& name, const std::string& key, const std::string& subject) {
      ASSERT_EQ(run("openssl req -x509 -newkey " + key + " -nodes -days 30 -subj /CN=" + subject + " -keyout " +
                    (dir / (name + ".key")).string() + " -out " + (dir / (name + ".pem")).string()),
                0);
    };
    certificate("rsa", "rsa:3072", "RSA-Examiner");
    certificate("ec", "ec -pkeyopt ec_paramgen_curve:P-256", "EC-Examiner");
    certificate("app", "ec -pkeyopt ec_paramgen_curve:P-256", "Signing-App");
    certificate("stranger", "ec -pkeyopt ec_paramgen_curve:P-256", "Stranger");
    ASSERT_EQ(run("openssl pkey -in " + (dir / "ec.key").string() + " -pubout -out " + (dir / "ec.pub").string()), 0);
  }
  static void TearDownTestSuite() { fs::remove_all(dir); }

  static std::string file(const std::string& name) { return slurp(dir / name); }

  static RecordFile record() {
    RecordFile r;
    auto stroke = std::make_shared<QnStroke>();
    for (int i = 0; i < 20; ++i) {
      QnSignaturePoint p;
      p.location = {10 + 3.5 * i, 40 + (i % 5) * 1.25}, p.velocity = {0.1 * i, -0.2}, p.timestamp = 0.004 * i;
      p.pressure = 0.5f, p.altitudeAngle = 1.2f, p.diameter = 2.5f, p.id = 100 + i;
      stroke->push_back(p);
    }
    r.strokes = std::make_shared<QnStrokeList>(QnStrokeList{stroke});
    r.png = {0x89, 'P', 'N', 'G', 1, 2, 3};  // the image is carried, not read
    r.hash = "A1B2C3D4";
    r.timestamp = 786000000.25;
    r.device = {"iPad8,1", 2, 264};
    return r;
  }

  static EvidenceSealRequest request(const std::string& examiner, bool signedByApp = true) {
    EvidenceSealRequest request;
    request.record = record();
    request.documentSha256 = documentSha256Of(kDocument);
    request.documentSize = kDocument.size();
    request.documentName = "contract.pdf";
    request.examinerCertificate = file(examiner);
    if (signedByApp) request.signerCertificate = file("app.pem"), request.signerKey = file("app.key");
    return request;
  }

  static std::map<std::string, bool> checks(const EvidenceVerification& report) {
    std::map<std::string, bool> passed;
    for (const EvidenceCheck& check : report.checks) passed[check.name] = check.passed;
    return passed;
  }

  static inline fs::path dir;
  static inline const std::string kDocument = "%PDF-1.4 the contract being signed\n%%EOF\n";
};

TEST_F(Evidence, SealsVerifiesAndOpensForRsaAndEcExaminersAndPublicKeys) {
  for (const char* examiner : {"rsa.pem", "ec.pem", "ec.pub"}) {
    SCOPED_TRACE(examiner);
    std::string error;
    std::optional<std::string> sealed = sealEvidence(request(examiner), &error);
    ASSERT_TRUE(sealed) << error;
    // The strokes travel encrypted only: no coordinate of theirs is in the sealed file.
    EXPECT_EQ(sealed->find("\"x\""), std::string::npos);
    EXPECT_EQ(base64Decode(*sealed).has_value(), false);

    EvidenceVerification report = verifyEvidence(*sealed, kDocument);
    EXPECT_TRUE(report.valid());
    std::map<std::string, bool> expected{{"container", true}, {"manifest", true}, {"manifest signature", true},
                                         {"document", true},  {"image", true},    {"biometric data", true}};
    EXPECT_EQ(checks(report), expected);
    EXPECT_EQ(report.signer, "/CN=Signing-App");
    EXPECT_EQ(report.hash, "A1B2C3D4");
    EXPECT_EQ(report.timestamp, 786000000.25);
    EXPECT_EQ(report.device.model, "iPad8,1");
    EXPECT_EQ(report.device.pixelsPerInch, 264);

    std::string key = file(std::string(examiner).substr(0, std::string(examiner).find('.')) + ".key");
    std::optional<RecordFile> opened = openEvidence(*sealed, key, &error);
    ASSERT_TRUE(opened) << error;
    EXPECT_EQ(strokesToJson(opened->strokes), strokesToJson(record().strokes));  // to the bit
    EXPECT_EQ(opened->png, record().png);
    EXPECT_EQ(opened->hash, "A1B2C3D4");
    EXPECT_EQ(opened->timestamp, 786000000.25);
    EXPECT_EQ(opened->device.screenScale, 2);

    EXPECT_FALSE(openEvidence(*sealed, file("stranger.key"), &error));
    EXPECT_NE(error.find("does not open"), std::string::npos) << error;
  }
}

TEST_F(Evidence, OpenSslsOwnCommandDecryptsTheEnvelopeAndVerifiesTheManifest) {
  for (const char* examiner : {"rsa", "ec"}) {
    SCOPED_TRACE(examiner);
    std::string error;
    std::optional<std::string> sealed = sealEvidence(request(std::string(examiner) + ".pem"), &error);
    ASSERT_TRUE(sealed) << error;
    std::optional<EvidenceFile> parts = evidenceFileFromJson(*sealed, &error);
    ASSERT_TRUE(parts && parts->manifestSignature);
    spill(dir / "bio.der", parts->biometricData);
    spill(dir / "manifest.json", parts->manifest);
    spill(dir / "manifest.sig", *parts->manifestSignature);

    std::string d = dir.string() + "/";
    ASSERT_EQ(run("openssl cms -decrypt -inform DER -in " + d + "bio.der -inkey " + d + examiner + ".key -out " + d +
                  "strokes.json"),
              0);
    EXPECT_EQ(file("strokes.json"), strokesToJson(record().strokes));
    ASSERT_EQ(run("openssl cms -cmsout -print -inform DER -in " + d + "bio.der -out " + d + "bio.txt"), 0);
    std::string structure = file("bio.txt");
    EXPECT_NE(structure.find("authEnvelopedData"), std::string::npos);
    EXPECT_NE(structure.find("aes-256-gcm"), std::string::npos);
    EXPECT_NE(structure.find(std::string(examiner) == "rsa" ? "rsaesOaep" : "dhSinglePass"), std::string::npos)
        << structure;

    EXPECT_EQ(run("openssl cms -verify -binary -inform DER -in " + d + "manifest.sig -content " + d +
                  "manifest.json -CAfile " + d + "app.pem -purpose any"),
              0);
    spill(dir / "manifest.json", parts->manifest + " ");
    EXPECT_NE(run("openssl cms -verify -binary -inform DER -in " + d + "manifest.sig -content " + d +
                  "manifest.json -CAfile " + d + "app.pem -purpose any"),
              0);
  }
}

// Re-encodes the sealed file with one byte of one part changed.
std::string tampered(const std::string& sealed, std::string EvidenceFile::*part, size_t at) {
  EvidenceFile file = *evidenceFileFromJson(sealed, nullptr);
  std::string& bytes = file.*part;
  bytes[at % bytes.size()] ^= 0x01;
  return evidenceFileToJson(file);
}

TEST_F(Evidence, EveryChangedPartFailsItsOwnCheckAndNoOther) {
  std::string error;
  std::string sealed = *sealEvidence(request("ec.pem"), &error);
  EvidenceFile parts = *evidenceFileFromJson(sealed, nullptr);

  struct Case {
    const char* name;
    std::string sealed, document;
    std::map<std::string, bool> checks;
  };
  const std::map<std::string, bool> all{{"container", true}, {"manifest", true}, {"manifest signature", true},
                                        {"document", true},  {"image", true},    {"biometric data", true}};
  auto failing = [&](const std::string& check) {
    auto c = all;
    c[check] = false;
    return c;
  };
  EvidenceFile resigned = parts;  // a changed manifest whose digest was made to match
  resigned.manifest.replace(resigned.manifest.find("A1B2C3D4"), 8, "EVILHASH");
  resigned.manifestSha256 = hexString(sha256Digest(resigned.manifest));
  EvidenceFile unsignedFile = parts;
  unsignedFile.manifestSignature.reset();
  EvidenceFile badSignature = parts;
  (*badSignature.manifestSignature)[badSignature.manifestSignature->size() - 5] ^= 0x01;
  std::string changedDocument = kDocument;
  changedDocument[12] ^= 0x20;

  std::vector<Case> cases{
      {"image", tampered(sealed, &EvidenceFile::image, 3), kDocument, failing("image")},
      {"biometric data", tampered(sealed, &EvidenceFile::biometricData, 100), kDocument, failing("biometric data")},
      {"signature", evidenceFileToJson(badSignature), kDocument, failing("manifest signature")},
      {"manifest bytes",
       tampered(sealed, &EvidenceFile::manifest, 50),
       kDocument,
       {{"container", true}, {"manifest", false}}},
      {"manifest rehashed", evidenceFileToJson(resigned), kDocument, failing("manifest signature")},
      {"other document", sealed, changedDocument, failing("document")},
      {"truncated document", sealed, kDocument.substr(0, 20), failing("document")},
      {"truncated file", sealed.substr(0, sealed.size() / 2), kDocument, {{"container", false}}},
      {"garbage", "\x89PNG not a sealed file at all", kDocument, {{"container", false}}},
      {"empty", "", kDocument, {{"container", false}}},
      {"unsigned",
       evidenceFileToJson(unsignedFile),
       kDocument,
       {{"container", true}, {"manifest", true}, {"document", true}, {"image", true}, {"biometric data", true}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EvidenceVerification report = verifyEvidence(c.sealed, c.document);
    EXPECT_EQ(checks(report), c.checks);
    EXPECT_EQ(report.valid(), std::string(c.name) == "unsigned");
  }
  // Opening refuses changed biometric data before it tries the key.
  EXPECT_FALSE(openEvidence(cases[1].sealed, file("ec.key"), &error));
  EXPECT_EQ(error, "the biometric data was changed since sealing");
}

TEST_F(Evidence, TrustedCertificatesDecideWhoMaySignTheManifest) {
  std::string error;
  std::string sealed = *sealEvidence(request("rsa.pem"), &error);
  EvidenceVerification trusted = verifyEvidence(sealed, kDocument, file("app.pem"));
  EXPECT_TRUE(trusted.valid());
  EXPECT_NE(trusted.checks[2].detail.find("a trusted signer"), std::string::npos) << trusted.checks[2].detail;
  EvidenceVerification stranger = verifyEvidence(sealed, kDocument, file("stranger.pem"));
  EXPECT_FALSE(stranger.valid());
  EXPECT_FALSE(checks(stranger)["manifest signature"]);
  EXPECT_FALSE(verifyEvidence(sealed, kDocument, "not a certificate").valid());
}

TEST_F(Evidence, BadKeysAndEmptyRecordsAreRefusedWithAReason) {
  std::string error;
  EvidenceSealRequest noExaminer = request("rsa.pem");
  noExaminer.examinerCertificate = "-----BEGIN CERTIFICATE-----\ngarbage\n-----END CERTIFICATE-----\n";
  EXPECT_FALSE(sealEvidence(noExaminer, &error));
  EXPECT_NE(error.find("does not read"), std::string::npos) << error;
  EvidenceSealRequest wrongSignerKey = request("rsa.pem");
  wrongSignerKey.signerKey = file("stranger.key");
  EXPECT_FALSE(sealEvidence(wrongSignerKey, &error));
  EXPECT_EQ(error.rfind("the signer's key is not the certificate's", 0), 0u) << error;
  EvidenceSealRequest empty = request("rsa.pem");
  empty.record.strokes = std::make_shared<QnStrokeList>();
  EXPECT_FALSE(sealEvidence(empty, &error));
  EXPECT_FALSE(openEvidence("{}", file("rsa.key"), &error));
  EXPECT_FALSE(openEvidence(*sealEvidence(request("rsa.pem"), nullptr), "garbage key", &error));
  EXPECT_NE(error.find("private key does not read"), std::string::npos) << error;
}

}  // namespace
}  // namespace scrivlet
