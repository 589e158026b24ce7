// CMS enveloping and signing with OpenSSL's CMS API.
#include "evidence/cms.h"

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <climits>
#include <memory>

namespace scrivlet::cms {

namespace {

template <class T, void (*Free)(T*)>
struct Deleter {
  void operator()(T* p) const { Free(p); }
};
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using X509Ptr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using CmsPtr = std::unique_ptr<CMS_ContentInfo, Deleter<CMS_ContentInfo, CMS_ContentInfo_free>>;
using StorePtr = std::unique_ptr<X509_STORE, Deleter<X509_STORE, X509_STORE_free>>;
using KeyContextPtr = std::unique_ptr<EVP_PKEY_CTX, Deleter<EVP_PKEY_CTX, EVP_PKEY_CTX_free>>;

// Keys protected by a pass phrase are refused rather than asked for on the terminal.
int noPassPhrase(char*, int, int, void*) { return -1; }

// Fails with the reason and OpenSSL's own first error, if any; clears OpenSSL's queue.
template <class Result = std::nullopt_t>
Result fail(std::string* error, const std::string& why) {
  std::string text = why;
  if (unsigned long code = ERR_peek_error()) {
    char detail[256];
    ERR_error_string_n(code, detail, sizeof detail);
    text += " (" + std::string(detail) + ")";
  }
  ERR_clear_error();
  if (error) *error = text;
  return Result(std::nullopt);
}

BioPtr memoryOf(std::string_view bytes) {
  if (bytes.size() > size_t(INT_MAX)) return nullptr;
  return BioPtr(BIO_new_mem_buf(bytes.data(), int(bytes.size())));
}

std::string contentsOf(BIO* bio) {
  char* data = nullptr;
  long size = BIO_get_mem_data(bio, &data);
  return size > 0 ? std::string(data, size_t(size)) : std::string();
}

bool isPem(std::string_view bytes) { return bytes.find("-----BEGIN ") != std::string_view::npos; }

X509Ptr certificateOf(std::string_view bytes) {
  BioPtr bio = memoryOf(bytes);
  if (!bio) return nullptr;
  return X509Ptr(isPem(bytes) ? PEM_read_bio_X509(bio.get(), nullptr, noPassPhrase, nullptr)
                              : d2i_X509_bio(bio.get(), nullptr));
}

KeyPtr privateKeyOf(std::string_view bytes) {
  BioPtr bio = memoryOf(bytes);
  if (!bio) return nullptr;
  return KeyPtr(isPem(bytes) ? PEM_read_bio_PrivateKey(bio.get(), nullptr, noPassPhrase, nullptr)
                             : d2i_PrivateKey_bio(bio.get(), nullptr));
}

KeyPtr publicKeyOf(std::string_view bytes) {
  BioPtr bio = memoryOf(bytes);
  if (!bio) return nullptr;
  return KeyPtr(isPem(bytes) ? PEM_read_bio_PUBKEY(bio.get(), nullptr, noPassPhrase, nullptr)
                             : d2i_PUBKEY_bio(bio.get(), nullptr));
}

// CMS names recipients by certificate: a bare public key is carried in a certificate made for the
// occasion, signed by a throwaway key, which names the recipient by the key's identifier only.
X509Ptr carrierCertificateOf(EVP_PKEY* key) {
  KeyPtr signer(EVP_EC_gen("P-256"));
  X509Ptr cert(X509_new());
  if (!signer || !cert) return nullptr;
  X509_NAME* name = X509_get_subject_name(cert.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("Scrivlet examiner key"), -1, -1, 0);
  X509V3_CTX context;
  X509V3_set_ctx(&context, cert.get(), cert.get(), nullptr, nullptr, 0);
  bool made = X509_set_version(cert.get(), X509_VERSION_3) && X509_set_issuer_name(cert.get(), name) &&
              X509_gmtime_adj(X509_getm_notBefore(cert.get()), 0) &&
              X509_gmtime_adj(X509_getm_notAfter(cert.get()), 60L * 60 * 24 * 365) &&
              X509_set_pubkey(cert.get(), key);
  if (made) {
    // The key identifier is the hash of the key, so it needs the key in place first.
    std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION, X509_EXTENSION_free>> keyId(
        X509V3_EXT_conf_nid(nullptr, &context, NID_subject_key_identifier, "hash"));
    made = keyId && X509_add_ext(cert.get(), keyId.get(), -1) && X509_sign(cert.get(), signer.get(), EVP_sha256());
  }
  return made ? std::move(cert) : nullptr;
}

}  // namespace

std::optional<std::string> envelope(std::string_view content, std::string_view recipient, std::string* error) {
  X509Ptr cert = certificateOf(recipient);
  int flags = CMS_BINARY | CMS_PARTIAL;
  if (!cert) {
    KeyPtr key = publicKeyOf(recipient);
    if (!key) return fail(error, "the examiner's certificate or public key does not read");
    cert = carrierCertificateOf(key.get());
    if (!cert) return fail(error, "the examiner's public key cannot be used");
    flags |= CMS_USE_KEYID;
  }
  ERR_clear_error();
  BioPtr in = memoryOf(content);
  if (!in) return fail(error, "the data to seal is too large");
  CmsPtr cms(CMS_encrypt(nullptr, in.get(), EVP_aes_256_gcm(), flags));
  if (!cms) return fail(error, "the envelope cannot be made");
  EVP_PKEY* key = X509_get0_pubkey(cert.get());
  bool rsa = key && EVP_PKEY_is_a(key, "RSA");
  // RSA keys carry the content key with OAEP (SHA-256), set before the recipient is finished.
  CMS_RecipientInfo* info = CMS_add1_recipient_cert(cms.get(), cert.get(), flags | (rsa ? CMS_KEY_PARAM : 0));
  if (!info) return fail(error, "the examiner's key cannot receive an envelope");
  if (rsa) {
    EVP_PKEY_CTX* context = CMS_RecipientInfo_get0_pkey_ctx(info);
    if (!context || EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) <= 0 ||
        EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha256()) <= 0)
      return fail(error, "RSA-OAEP cannot be set up");
  }
  if (!CMS_final(cms.get(), in.get(), nullptr, CMS_BINARY)) return fail(error, "the envelope cannot be finished");
  BioPtr out(BIO_new(BIO_s_mem()));
  if (!out || !i2d_CMS_bio(out.get(), cms.get())) return fail(error, "the envelope cannot be written");
  return contentsOf(out.get());
}

std::optional<std::string> openEnvelope(std::string_view der, std::string_view privateKey, std::string* error) {
  KeyPtr key = privateKeyOf(privateKey);
  if (!key) return fail(error, "the private key does not read (a key protected by a pass phrase is refused)");
  BioPtr in = memoryOf(der);
  CmsPtr cms(in ? d2i_CMS_bio(in.get(), nullptr) : nullptr);
  if (!cms) return fail(error, "the biometric data is not a CMS envelope");
  BioPtr out(BIO_new(BIO_s_mem()));
  // With no certificate given, every recipient is tried with the key.
  if (!out || !CMS_decrypt(cms.get(), key.get(), nullptr, nullptr, out.get(), CMS_BINARY))
    return fail(error, "the envelope does not open with this key");
  return contentsOf(out.get());
}

std::optional<std::string> signDetached(std::string_view content, std::string_view certificate,
                                        std::string_view privateKey, std::string* error) {
  X509Ptr cert = certificateOf(certificate);
  if (!cert) return fail(error, "the signer's certificate does not read");
  KeyPtr key = privateKeyOf(privateKey);
  if (!key) return fail(error, "the signer's private key does not read (a key protected by a pass phrase is refused)");
  if (!X509_check_private_key(cert.get(), key.get())) return fail(error, "the signer's key is not the certificate's");
  BioPtr in = memoryOf(content);
  CmsPtr cms(in ? CMS_sign(cert.get(), key.get(), nullptr, in.get(), CMS_BINARY | CMS_DETACHED) : nullptr);
  if (!cms) return fail(error, "the manifest cannot be signed");
  BioPtr out(BIO_new(BIO_s_mem()));
  if (!out || !i2d_CMS_bio(out.get(), cms.get())) return fail(error, "the signature cannot be written");
  return contentsOf(out.get());
}

SignatureCheck verifyDetached(std::string_view der, std::string_view content, std::string_view trusted) {
  SignatureCheck check;
  auto failed = [&](const std::string& why) {
    std::string reason;
    fail(&reason, why);
    check.reason = reason;
    return check;
  };
  BioPtr in = memoryOf(der);
  CmsPtr cms(in ? d2i_CMS_bio(in.get(), nullptr) : nullptr);
  if (!cms || OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_pkcs7_signed)
    return failed("the manifest's signature is not CMS signed data");
  StorePtr store(X509_STORE_new());
  if (!trusted.empty()) {
    BioPtr bio = memoryOf(trusted);
    int count = 0;
    while (X509* cert = bio ? PEM_read_bio_X509(bio.get(), nullptr, noPassPhrase, nullptr) : nullptr) {
      X509_STORE_add_cert(store.get(), cert);
      X509_free(cert);
      ++count;
    }
    if (count == 0) return failed("no trusted certificate reads");
  }
  ERR_clear_error();
  BioPtr data = memoryOf(content);
  int flags = CMS_BINARY | (trusted.empty() ? CMS_NO_SIGNER_CERT_VERIFY : 0);
  if (!data || !CMS_verify(cms.get(), nullptr, store.get(), data.get(), nullptr, flags))
    return failed(trusted.empty() ? "the signature does not match the manifest"
                                  : "the signature does not match the manifest, or its signer is not trusted");
  if (STACK_OF(X509)* signers = CMS_get0_signers(cms.get())) {
    if (sk_X509_num(signers) > 0) {
      char name[512];
      X509_NAME_oneline(X509_get_subject_name(sk_X509_value(signers, 0)), name, sizeof name);
      check.signer = name;
    }
    sk_X509_free(signers);
  }
  check.valid = true;
  check.chainChecked = !trusted.empty();
  return check;
}

}  // namespace scrivlet::cms
