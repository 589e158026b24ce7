// Certificates made by the tests themselves with OpenSSL: a root, an intermediate and signers issued
// by it (valid, expired, for code signing or TLS clients only), examiners, and a stranger's root; and
// the record a tablet seals with them.
#pragma once

#include <scrivlet/record_file.h>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <map>
#include <memory>
#include <string>

namespace scrivlet::test_support {

// A record of one stroke of 20 points from (firstX, 40), every field set, with the image and hash given.
inline RecordFile signingRecord(double firstX, const std::string& hash, const std::vector<uint8_t>& png) {
  RecordFile r;
  auto stroke = std::make_shared<QnStroke>();
  for (int i = 0; i < 20; ++i) {
    QnSignaturePoint p;
    p.location = {firstX + 3.5 * i, 40 + (i % 5) * 1.25}, p.velocity = {0.1 * i, -0.2}, p.timestamp = 0.004 * i;
    p.pressure = 0.5f, p.altitudeAngle = 1.2f, p.diameter = 2.5f, p.id = 100 + i;
    stroke->push_back(p);
  }
  r.setStrokes(std::make_shared<QnStrokeList>(QnStrokeList{stroke}));
  r.setPng(png);
  r.setHash(hash);
  r.setTimestamp(786000000.25);
  r.setDevice({"iPad8,1", 2, 264});
  return r;
}

struct TestIdentity {
  std::string certificate, key;  // PEM
};

class TestCertificates {
 public:
  TestCertificates() {
    root = make("Test Root", "ec", nullptr, 0, 30, caExtensions());
    intermediate = make("Test Intermediate", "ec", &root, 0, 30, caExtensions());
    const std::map<std::string, std::string> signing{{"basicConstraints", "CA:FALSE"},
                                                     {"keyUsage", "critical,digitalSignature,nonRepudiation"},
                                                     {"extendedKeyUsage", "emailProtection"}};
    signer = make("Tablet App", "rsa", &intermediate, 0, 30, signing);
    ecSigner = make("Tablet App EC", "ec", &intermediate, 0, 30, signing);
    expiredSigner = make("Expired App", "ec", &intermediate, -30, -1, signing);
    codeSigner = make("Code Signer", "ec", &intermediate, 0, 30,
                      {{"keyUsage", "critical,digitalSignature"}, {"extendedKeyUsage", "codeSigning"}});
    tlsClient = make("TLS Client", "ec", &intermediate, 0, 30,
                     {{"keyUsage", "critical,digitalSignature"}, {"extendedKeyUsage", "clientAuth"}});
    strangerRoot = make("Stranger Root", "ec", nullptr, 0, 30, caExtensions());
    lookAlike = make("Tablet App", "rsa", &strangerRoot, 0, 30, signing);
    timeStamping = make("Test TSA", "ec", &root, 0, 30,
                        {{"keyUsage", "critical,digitalSignature"}, {"extendedKeyUsage", "critical,timeStamping"}});
    rsaExaminer = make("RSA Examiner", "rsa3072", nullptr, 0, 30, {});
    ecExaminer = make("EC Examiner", "ec", nullptr, 0, 30, {});
  }

  TestIdentity root, intermediate, signer, ecSigner, expiredSigner, codeSigner, tlsClient, strangerRoot, lookAlike,
      timeStamping, rsaExaminer, ecExaminer;

  // The PEM public key of an identity's certificate.
  static std::string publicKeyOf(const TestIdentity& identity) {
    auto cert = read(identity.certificate);
    std::unique_ptr<BIO, decltype(&BIO_free)> out(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_PUBKEY(out.get(), X509_get0_pubkey(cert.get()));
    return contents(out.get());
  }

 private:
  using X509Ptr = std::unique_ptr<X509, decltype(&X509_free)>;
  using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

  static std::map<std::string, std::string> caExtensions() {
    return {{"basicConstraints", "critical,CA:TRUE"}, {"keyUsage", "critical,keyCertSign,cRLSign"}};
  }

  static std::string contents(BIO* bio) {
    char* data = nullptr;
    long size = BIO_get_mem_data(bio, &data);
    return std::string(data, size_t(size));
  }

  static X509Ptr read(const std::string& pem) {
    std::unique_ptr<BIO, decltype(&BIO_free)> in(BIO_new_mem_buf(pem.data(), int(pem.size())), BIO_free);
    return X509Ptr(PEM_read_bio_X509(in.get(), nullptr, nullptr, nullptr), X509_free);
  }

  // A certificate valid from `fromDays` to `toDays` days from now, issued by `issuer` (or itself).
  static TestIdentity make(const std::string& name, const std::string& keyType, const TestIdentity* issuer,
                           long fromDays, long toDays, const std::map<std::string, std::string>& extensions) {
    KeyPtr key(keyType == "ec"        ? EVP_EC_gen("P-256")
               : keyType == "rsa3072" ? EVP_RSA_gen(3072)
                                      : EVP_RSA_gen(2048),
               EVP_PKEY_free);
    X509Ptr cert(X509_new(), X509_free);
    static long serial = 1;
    ASN1_INTEGER_set(X509_get_serialNumber(cert.get()), serial++);
    X509_set_version(cert.get(), X509_VERSION_3);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(cert.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), fromDays * 86400 - 3600);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), toDays * 86400);
    X509_set_pubkey(cert.get(), key.get());
    X509Ptr issuerCert = issuer ? read(issuer->certificate) : X509Ptr(nullptr, X509_free);
    KeyPtr issuerKey(nullptr, EVP_PKEY_free);
    if (issuer) {
      std::unique_ptr<BIO, decltype(&BIO_free)> in(BIO_new_mem_buf(issuer->key.data(), int(issuer->key.size())),
                                                   BIO_free);
      issuerKey.reset(PEM_read_bio_PrivateKey(in.get(), nullptr, nullptr, nullptr));
    }
    X509_set_issuer_name(cert.get(), X509_get_subject_name(issuer ? issuerCert.get() : cert.get()));
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer ? issuerCert.get() : cert.get(), cert.get(), nullptr, nullptr, 0);
    std::map<std::string, std::string> all = extensions;
    all["subjectKeyIdentifier"] = "hash";
    if (issuer) all["authorityKeyIdentifier"] = "keyid";
    for (const char* order :
         {"subjectKeyIdentifier", "authorityKeyIdentifier", "basicConstraints", "keyUsage", "extendedKeyUsage"})
      if (all.count(order)) {
        X509_EXTENSION* extension = X509V3_EXT_conf(nullptr, &context, order, all[order].c_str());
        X509_add_ext(cert.get(), extension, -1);
        X509_EXTENSION_free(extension);
      }
    X509_sign(cert.get(), issuer ? issuerKey.get() : key.get(), EVP_sha256());
    std::unique_ptr<BIO, decltype(&BIO_free)> certOut(BIO_new(BIO_s_mem()), BIO_free),
        keyOut(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_X509(certOut.get(), cert.get());
    PEM_write_bio_PrivateKey(keyOut.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    return {contents(certOut.get()), contents(keyOut.get())};
  }
};

}  // namespace scrivlet::test_support
