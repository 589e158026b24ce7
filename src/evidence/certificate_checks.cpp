// Signer, examiner and chain checks with OpenSSL's X.509 verification.
#include "evidence/certificate_checks.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

namespace scrivlet::ssl {

namespace {

// Extended key usages that allow signing documents: e-mail protection (S/MIME), any, the document
// signing usage of RFC 9336, Adobe's Authentic Documents and Microsoft's document signing.
bool isDocumentSigningUsage(const ASN1_OBJECT* usage) {
  int nid = OBJ_obj2nid(usage);
  if (nid == NID_email_protect || nid == NID_anyExtendedKeyUsage) return true;
  char text[80];
  OBJ_obj2txt(text, sizeof text, usage, 1);
  std::string oid = text;
  return oid == "1.3.6.1.5.5.7.3.36" || oid == "1.2.840.113583.1.1.5" || oid == "1.3.6.1.4.1.311.10.3.12";
}

using UsagesPtr = std::unique_ptr<EXTENDED_KEY_USAGE, Deleter<EXTENDED_KEY_USAGE, EXTENDED_KEY_USAGE_free>>;

}  // namespace

std::string purposeProblem(X509* certificate) {
  uint32_t keyUsage = X509_get_key_usage(certificate);  // all bits when absent
  if (!(keyUsage & (KU_DIGITAL_SIGNATURE | KU_NON_REPUDIATION)))
    return "its key usage allows neither digital signatures nor non-repudiation";
  int critical = 0;
  UsagesPtr usages(
      static_cast<EXTENDED_KEY_USAGE*>(X509_get_ext_d2i(certificate, NID_ext_key_usage, &critical, nullptr)));
  if (!usages) return critical == -1 ? "" : "its extended key usage does not read";
  std::string named;
  for (int i = 0; i < sk_ASN1_OBJECT_num(usages.get()); ++i) {
    const ASN1_OBJECT* usage = sk_ASN1_OBJECT_value(usages.get(), i);
    if (isDocumentSigningUsage(usage)) return "";
    char text[80];
    OBJ_obj2txt(text, sizeof text, usage, 0);
    named += (named.empty() ? "" : ", ") + std::string(text);
  }
  return "its extended key usage is for " + named + ", not for signing documents";
}

std::optional<LoadedSigner> loadSigner(const EvidenceSigner& signer, Error* error) {
  LoadedSigner loaded{certificateOf(signer.certificate()), privateKeyOf(signer.key()), nullptr};
  if (!loaded.certificate) return fail(error, ErrorCode::BadKey, "the signer's certificate does not read");
  if (!loaded.key)
    return fail(error, ErrorCode::BadKey,
                "the signer's private key does not read (a key protected by a pass phrase is refused)");
  if (!X509_check_private_key(loaded.certificate.get(), loaded.key.get()))
    return fail(error, ErrorCode::BadKey, "the signer's key is not the certificate's");
  std::optional<CertificatesPtr> chain = certificatesOf(signer.chain());
  if (!chain) return fail(error, ErrorCode::BadKey, "a certificate of the signer's chain does not read");
  loaded.chain = std::move(*chain);
  X509* certificate = loaded.certificate.get();
  if (X509_cmp_current_time(X509_get0_notAfter(certificate)) <= 0)
    return fail(error, ErrorCode::CertificateRejected, "the signer's certificate has expired");
  if (X509_cmp_current_time(X509_get0_notBefore(certificate)) >= 0)
    return fail(error, ErrorCode::CertificateRejected, "the signer's certificate is not valid yet");
  if (std::string problem = purposeProblem(certificate); !problem.empty())
    return fail(error, ErrorCode::CertificateRejected, "the signer's certificate cannot sign: " + problem);
  return loaded;
}

std::optional<X509Ptr> loadExaminer(std::string_view recipient, bool* byKeyIdentifier, Error* error) {
  X509Ptr certificate = certificateOf(recipient);
  KeyPtr bareKey;
  *byKeyIdentifier = false;
  if (!certificate) {
    bareKey = publicKeyOf(recipient);
    if (!bareKey)
      return fail(error, ErrorCode::BadKey, "the examiner's certificate or public key does not read");
    *byKeyIdentifier = true;
  }
  EVP_PKEY* key = certificate ? X509_get0_pubkey(certificate.get()) : bareKey.get();
  if (!key) return fail(error, ErrorCode::BadKey, "the examiner's certificate holds no key that reads");
  if (certificate && X509_check_issued(certificate.get(), certificate.get()) == X509_V_OK &&
      X509_verify(certificate.get(), key) != 1)
    return fail(error, ErrorCode::BadKey,
                "the examiner's certificate is damaged: its self-signature does not match its key");
  std::unique_ptr<EVP_PKEY_CTX, Deleter<EVP_PKEY_CTX, EVP_PKEY_CTX_free>> context(
      EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr));
  if (!context || EVP_PKEY_public_check(context.get()) != 1)
    return fail(error, ErrorCode::BadKey, "the examiner's public key is not a valid key");
  if (!EVP_PKEY_is_a(key, "RSA") && !EVP_PKEY_is_a(key, "EC"))
    return fail(error, ErrorCode::UnsupportedAlgorithm, "the examiner's key is neither RSA nor EC");
  if (EVP_PKEY_is_a(key, "RSA") && EVP_PKEY_get_bits(key) < 2048)
    return fail(error, ErrorCode::UnsupportedAlgorithm, "the examiner's RSA key has fewer than 2048 bits");
  ERR_clear_error();
  if (certificate) return certificate;
  return X509Ptr(nullptr);  // the caller makes a carrier for the bare key
}

ChainCheck checkChain(X509* signer, STACK_OF(X509) * intermediates, std::string_view trusted, time_t at) {
  ChainCheck check;
  if (trusted.empty()) {
    check.reason = "no trusted certificates were given: the signer is not checked";
    return check;
  }
  std::optional<CertificatesPtr> anchors = certificatesOf(trusted);
  StorePtr store(X509_STORE_new());
  if (!anchors || sk_X509_num(anchors->get()) == 0 || !store) {
    check.reason = "the trusted certificates do not read";
    return check;
  }
  for (int i = 0; i < sk_X509_num(anchors->get()); ++i)
    X509_STORE_add_cert(store.get(), sk_X509_value(anchors->get(), i));
  std::unique_ptr<X509_STORE_CTX, Deleter<X509_STORE_CTX, X509_STORE_CTX_free>> context(X509_STORE_CTX_new());
  if (!context || !X509_STORE_CTX_init(context.get(), store.get(), signer, intermediates)) {
    check.reason = reasonWithOpenSsl("the chain cannot be checked");
    return check;
  }
  X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
  X509_VERIFY_PARAM_set_time(parameters, at);
  X509_VERIFY_PARAM_set_auth_level(parameters, 2);  // no SHA-1 or MD5 certificates, no RSA under 2048 bits
  if (X509_verify_cert(context.get()) != 1) {
    int code = X509_STORE_CTX_get_error(context.get());
    X509* at_fault = X509_STORE_CTX_get_current_cert(context.get());
    std::string whose = at_fault ? " (" + subjectOf(at_fault) + ")" : "";
    bool unknown = code == X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY ||
                   code == X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT || code == X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT ||
                   code == X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN;
    check.reason = std::string(unknown ? "unknown issuer: " : "") + "the signer's chain fails at " + isoTime(at) +
                   ": " + X509_verify_cert_error_string(code) + whose;
    ERR_clear_error();
    return check;
  }
  if (std::string problem = purposeProblem(signer); !problem.empty()) {
    check.reason = "wrong purpose: the signer's certificate " + problem;
    return check;
  }
  check.verdict = EvidenceVerdict::Valid;
  return check;
}

}  // namespace scrivlet::ssl
