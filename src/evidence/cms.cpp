// CMS enveloping and signing with OpenSSL's CMS API.
#include "evidence/cms.h"

#include "evidence/algorithm_policy.h"
#include "evidence/certificate_checks.h"
#include "evidence/openssl_support.h"
#include "evidence/time_stamp.h"

#include <openssl/err.h>
#include <openssl/ess.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <vector>

namespace scrivlet::cms {

using namespace scrivlet::ssl;

namespace {

using Code = ErrorCode;

// CMS names recipients by certificate: a bare public key is carried in a certificate made for the
// occasion, signed by a throwaway key, which names the recipient by the key's identifier only.
X509Ptr carrierCertificateOf(EVP_PKEY* key) {
  KeyPtr signer(EVP_EC_gen("P-256"));
  X509Ptr cert(X509_new());
  if (!signer || !cert) return nullptr;
  X509_NAME* name = X509_get_subject_name(cert.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("Scrivlet examiner key"),
                             -1, -1, 0);
  X509V3_CTX context;
  X509V3_set_ctx(&context, cert.get(), cert.get(), nullptr, nullptr, 0);
  bool made = X509_set_version(cert.get(), X509_VERSION_3) && X509_set_issuer_name(cert.get(), name) &&
              X509_gmtime_adj(X509_getm_notBefore(cert.get()), 0) &&
              X509_gmtime_adj(X509_getm_notAfter(cert.get()), 60L * 60 * 24 * 365) && X509_set_pubkey(cert.get(), key);
  if (made) {
    // The key identifier is the hash of the key, so it needs the key in place first.
    std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION, X509_EXTENSION_free>> keyId(
        X509V3_EXT_conf_nid(nullptr, &context, NID_subject_key_identifier, "hash"));
    made = keyId && X509_add_ext(cert.get(), keyId.get(), -1) && X509_sign(cert.get(), signer.get(), EVP_sha256());
  }
  return made ? std::move(cert) : nullptr;
}

// RSA keys carry the content key with OAEP (SHA-256); EC keys agree on it with a SHA-256 key
// derivation (OpenSSL would otherwise choose SHA-1). Set before the recipient is finished.
bool setKeyParameters(CMS_RecipientInfo* info, bool rsa) {
  EVP_PKEY_CTX* context = CMS_RecipientInfo_get0_pkey_ctx(info);
  if (!context) return false;
  if (rsa)
    return EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) > 0 &&
           EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()) > 0 &&
           EVP_PKEY_CTX_set_rsa_mgf1_md(context, EVP_sha256()) > 0;
  // Only the digest: OpenSSL sets the X9.63 derivation itself, and refuses one already set.
  return EVP_PKEY_CTX_set_ecdh_kdf_md(context, EVP_sha256()) > 0;
}

// The signing-certificate-v2 attribute, when present, must name the signer's own certificate: a
// certificate swapped in with the same key is caught.
bool namesItsSigner(CMS_SignerInfo* signer, X509* certificate) {
  int index = CMS_signed_get_attr_by_NID(signer, NID_id_smime_aa_signingCertificateV2, -1);
  if (index < 0) return true;
  ASN1_TYPE* value = X509_ATTRIBUTE_get0_type(CMS_signed_get_attr(signer, index), 0);
  const unsigned char* p = value && value->type == V_ASN1_SEQUENCE ? value->value.sequence->data : nullptr;
  std::unique_ptr<ESS_SIGNING_CERT_V2, Deleter<ESS_SIGNING_CERT_V2, ESS_SIGNING_CERT_V2_free>> named(
      p ? d2i_ESS_SIGNING_CERT_V2(nullptr, &p, value->value.sequence->length) : nullptr);
  CertificatesPtr chain(sk_X509_new_null());
  return named && chain && sk_X509_push(chain.get(), X509_dup(certificate)) &&
         OSSL_ESS_check_signing_certs(nullptr, named.get(), chain.get(), 1) == 1;
}

std::string derLength(size_t size) {
  if (size < 0x80) return std::string(1, char(size));
  std::string bytes;
  for (; size; size >>= 8) bytes.insert(bytes.begin(), char(size & 0xff));
  return char(0x80 | bytes.size()) + bytes;
}

// PAdES keeps the claimed signing time in the signature dictionary's /M, not in a signing-time
// attribute, which OpenSSL always adds: it is removed, and the signed attributes (DER, a SET OF in
// sorted order, as they are written) are signed again with the same key and digest.
bool signWithoutSigningTime(CMS_SignerInfo* signer, EVP_PKEY* key) {
  int index = CMS_signed_get_attr_by_NID(signer, NID_pkcs9_signingTime, -1);
  if (index < 0) return true;
  if (!EVP_PKEY_is_a(key, "RSA") && !EVP_PKEY_is_a(key, "EC")) return false;
  X509_ATTRIBUTE_free(CMS_signed_delete_attr(signer, index));
  std::vector<std::string> attributes;
  for (int i = 0; i < CMS_signed_get_attr_count(signer); ++i) {
    unsigned char* der = nullptr;
    int size = i2d_X509_ATTRIBUTE(CMS_signed_get_attr(signer, i), &der);
    if (size <= 0) return false;
    attributes.emplace_back(reinterpret_cast<char*>(der), size_t(size));
    OPENSSL_free(der);
  }
  std::sort(attributes.begin(), attributes.end());
  std::string content;
  for (const std::string& attribute : attributes) content += attribute;
  std::string set = "\x31" + derLength(content.size()) + content;
  std::unique_ptr<EVP_MD_CTX, Deleter<EVP_MD_CTX, EVP_MD_CTX_free>> context(EVP_MD_CTX_new());
  size_t size = 0;
  auto data = reinterpret_cast<const unsigned char*>(set.data());
  if (!context || EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key) != 1 ||
      EVP_DigestSign(context.get(), nullptr, &size, data, set.size()) != 1)
    return false;
  std::string signature(size, '\0');
  if (EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size, data, set.size()) != 1)
    return false;
  return ASN1_STRING_set(CMS_SignerInfo_get0_signature(signer), signature.data(), int(size)) == 1;
}

// The time the signer claims: the signing-time attribute, else the one given (a PDF's /M), else now.
time_t claimedSigningTime(CMS_SignerInfo* signer, time_t claimed) {
  time_t fallback = claimed ? claimed : time(nullptr);
  int index = CMS_signed_get_attr_by_NID(signer, NID_pkcs9_signingTime, -1);
  if (index < 0) return fallback;
  ASN1_TYPE* value = X509_ATTRIBUTE_get0_type(CMS_signed_get_attr(signer, index), 0);
  struct tm when {};
  if (!value || (value->type != V_ASN1_UTCTIME && value->type != V_ASN1_GENERALIZEDTIME) ||
      !ASN1_TIME_to_tm(value->value.utctime, &when))
    return fallback;
  return timegm(&when);
}

}  // namespace

std::optional<std::string> envelope(std::string_view content, std::string_view recipient, Error* error) {
  bool byKeyIdentifier = false;
  std::optional<X509Ptr> cert = loadExaminer(recipient, &byKeyIdentifier, error);
  if (!cert) return std::nullopt;
  if (byKeyIdentifier) {
    KeyPtr key = publicKeyOf(recipient);
    *cert = key ? carrierCertificateOf(key.get()) : nullptr;
    if (!*cert) return fail(error, Code::BadKey, "the examiner's public key cannot be used");
  }
  int flags = CMS_BINARY | CMS_PARTIAL | CMS_KEY_PARAM | (byKeyIdentifier ? CMS_USE_KEYID : 0);
  ERR_clear_error();
  BioPtr in = memoryOf(content);
  if (!in) return fail(error, Code::InvalidArgument, "the data to seal is too large");
  CmsPtr cms(CMS_encrypt(nullptr, in.get(), EVP_aes_256_gcm(), flags));
  if (!cms) return fail(error, Code::Failed, "the envelope cannot be made");
  CMS_RecipientInfo* info = CMS_add1_recipient_cert(cms.get(), cert->get(), flags);
  bool rsa = EVP_PKEY_is_a(X509_get0_pubkey(cert->get()), "RSA");
  if (!info || !setKeyParameters(info, rsa))
    return fail(error, Code::BadKey, "the examiner's key cannot receive an envelope");
  if (!CMS_final(cms.get(), in.get(), nullptr, CMS_BINARY))
    return fail(error, Code::Failed, "the envelope cannot be finished");
  std::string der = derOf(cms.get());
  // The envelope as an examiner will read it: it parses, and its algorithms are the accepted ones.
  CmsPtr reread = cmsOf(der);
  if (der.empty() || !reread || !envelopeAlgorithmProblem(reread.get(), der).empty())
    return fail(error, Code::Failed, "the envelope does not read back as made");
  return der;
}

std::optional<std::string> openEnvelope(std::string_view der, std::string_view privateKey, Error* error) {
  CmsPtr cms = cmsOf(der);
  if (!cms) return fail(error, Code::Unreadable, "the biometric data is not a CMS envelope");
  if (std::string problem = envelopeAlgorithmProblem(cms.get(), der); !problem.empty())
    return fail(error, Code::UnsupportedAlgorithm, problem);
  KeyPtr key = privateKeyOf(privateKey);
  if (!key)
    return fail(error, Code::BadKey, "the private key does not read (a key protected by a pass phrase is refused)");
  BioPtr out(BIO_new(BIO_s_mem()));
  // With no certificate given, every recipient is tried with the key.
  if (!out || !CMS_decrypt(cms.get(), key.get(), nullptr, nullptr, out.get(), CMS_BINARY))
    return fail(error, Code::BadKey, "the envelope does not open with this key");
  return contentsOf(out.get());
}

std::optional<std::string> signDetached(std::string_view content, const EvidenceSigner& signer, bool cades,
                                        const std::string& timeStampUrl, Error* error) {
  std::optional<LoadedSigner> loaded = loadSigner(signer, error);
  if (!loaded) return std::nullopt;
  BioPtr in = memoryOf(content);
  if (!in) return fail(error, Code::InvalidArgument, "the data to sign is too large");
  int flags = CMS_BINARY | CMS_DETACHED | CMS_PARTIAL | CMS_NOSMIMECAP | (cades ? CMS_CADES : 0);
  CmsPtr cms(CMS_sign(nullptr, nullptr, loaded->chain.get(), nullptr, flags));
  CMS_SignerInfo* info =
      cms ? CMS_add1_signer(cms.get(), loaded->certificate.get(), loaded->key.get(), EVP_sha256(), flags) : nullptr;
  if (!info || !CMS_final(cms.get(), in.get(), nullptr, flags) ||
      (cades && !signWithoutSigningTime(info, loaded->key.get())))
    return fail(error, Code::Failed, "the signature cannot be made");
  if (!timeStampUrl.empty() && !addSignatureTimeStamp(info, timeStampUrl, error)) return std::nullopt;
  std::string der = derOf(cms.get());
  if (der.empty()) return fail(error, Code::Failed, "the signature cannot be written");
  return der;
}

SignatureCheck verifyDetached(std::string_view der, std::string_view content, std::string_view trusted,
                              time_t claimedTime) {
  SignatureCheck check;
  auto failed = [&](EvidenceVerdict verdict, const std::string& why) {
    check.verdict = verdict;
    check.reason = reasonWithOpenSsl(why);
    return check;
  };
  CmsPtr cms = cmsOf(der);
  if (!cms || OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_pkcs7_signed)
    return failed(EvidenceVerdict::Unreadable, "the signature is not CMS signed data");
  STACK_OF(CMS_SignerInfo)* signers = CMS_get0_SignerInfos(cms.get());
  if (!signers || sk_CMS_SignerInfo_num(signers) != 1)
    return failed(EvidenceVerdict::Unreadable, "the signature does not have exactly one signer");
  CMS_SignerInfo* signer = sk_CMS_SignerInfo_value(signers, 0);
  if (std::string problem = signerAlgorithmProblem(signer); !problem.empty())
    return failed(EvidenceVerdict::Untrusted, problem);
  BioPtr data = memoryOf(content);
  if (!data || !CMS_verify(cms.get(), nullptr, nullptr, data.get(), nullptr, CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY))
    return failed(EvidenceVerdict::Tampered, "the signature does not match the signed bytes");
  X509* certificate = nullptr;
  CMS_SignerInfo_get0_algs(signer, nullptr, &certificate, nullptr, nullptr);
  if (!certificate) return failed(EvidenceVerdict::Unreadable, "the signature does not carry its signer's certificate");
  if (!namesItsSigner(signer, certificate))
    return failed(EvidenceVerdict::Tampered,
                  "the signing-certificate-v2 attribute does not name the signer's certificate");
  check.signer = subjectOf(certificate);
  check.signingCertificateV2 = CMS_signed_get_attr_by_NID(signer, NID_id_smime_aa_signingCertificateV2, -1) >= 0;

  TimeStampCheck stamp = checkSignatureTimeStamp(signer, trusted);
  check.timeStamped = stamp.present;
  check.timeStampDetail = stamp.detail;
  check.signingTime = stamp.present && stamp.valid ? stamp.time : claimedSigningTime(signer, claimedTime);
  CertificatesPtr certificates(CMS_get1_certs(cms.get()));
  ChainCheck chain = checkChain(certificate, certificates.get(), trusted, check.signingTime);
  check.verdict = chain.verdict;
  check.reason = chain.reason;
  if (stamp.present && !stamp.valid && check.verdict == EvidenceVerdict::Valid)
    check.verdict = EvidenceVerdict::Untrusted, check.reason = "the time-stamp: " + stamp.detail;
  ERR_clear_error();
  return check;
}

}  // namespace scrivlet::cms
