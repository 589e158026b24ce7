// Strict algorithm checks over OpenSSL's CMS structures, and a small DER walk for the content
// encryption algorithm, which OpenSSL does not hand out.
#include "evidence/algorithm_policy.h"

#include <openssl/asn1t.h>
#include <openssl/objects.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>
#include <set>

namespace scrivlet::ssl {

namespace {

std::string nameOf(const ASN1_OBJECT* object) {
  char text[80];
  OBJ_obj2txt(text, sizeof text, object, 0);
  return text;
}

bool isStrongDigest(const X509_ALGOR* algorithm) {
  int nid = algorithm ? OBJ_obj2nid(algorithm->algorithm) : NID_sha1;  // an absent hash means SHA-1
  return nid == NID_sha256 || nid == NID_sha384 || nid == NID_sha512;
}

// A DER element: its tag, class, and where its content and the next element start.
struct Element {
  int tag = -1, cls = -1;
  const unsigned char *start = nullptr, *content = nullptr, *end = nullptr;
};

// The element at `at` within `end`; definite lengths only, as DER has.
bool readElement(const unsigned char* at, const unsigned char* end, Element& element) {
  long length = 0;
  const unsigned char* p = at;
  int info = ASN1_get_object(&p, &length, &element.tag, &element.cls, end - at);
  if (info & 0x80 || info == 0x21 || length > end - p) return false;
  element.start = at, element.content = p, element.end = p + length;
  return true;
}

// The content encryption algorithm of an (Auth)EnvelopedData ContentInfo, by name.
std::string contentEncryptionOf(std::string_view der) {
  auto begin = reinterpret_cast<const unsigned char*>(der.data());
  Element info, type, wrapper, data, field;
  if (!readElement(begin, begin + der.size(), info) || !readElement(info.content, info.end, type) ||
      !readElement(type.end, info.end, wrapper) || !readElement(wrapper.content, wrapper.end, data) ||
      !readElement(data.content, data.end, field))  // version
    return {};
  if (!readElement(field.end, data.end, field)) return {};
  if (field.cls == V_ASN1_CONTEXT_SPECIFIC && !readElement(field.end, data.end, field)) return {};  // originatorInfo
  Element encrypted, contentType, algorithm, oid;
  if (!readElement(field.end, data.end, encrypted) ||  // after recipientInfos
      !readElement(encrypted.content, encrypted.end, contentType) ||
      !readElement(contentType.end, encrypted.end, algorithm) || !readElement(algorithm.content, algorithm.end, oid) ||
      oid.tag != V_ASN1_OBJECT)
    return {};
  const unsigned char* p = oid.start;
  std::unique_ptr<ASN1_OBJECT, void (*)(ASN1_OBJECT*)> object(d2i_ASN1_OBJECT(nullptr, &p, oid.end - oid.start),
                                                              ASN1_OBJECT_free);
  return object ? nameOf(object.get()) : std::string();
}

std::string oaepProblem(const X509_ALGOR* algorithm) {
  if (OBJ_obj2nid(algorithm->algorithm) != NID_rsaesOaep)
    return "the key is carried with " + nameOf(algorithm->algorithm) + ", which is not accepted (RSA-OAEP is)";
  std::unique_ptr<RSA_OAEP_PARAMS, void (*)(RSA_OAEP_PARAMS*)> parameters(
      algorithm->parameter ? static_cast<RSA_OAEP_PARAMS*>(
                                 ASN1_TYPE_unpack_sequence(ASN1_ITEM_rptr(RSA_OAEP_PARAMS), algorithm->parameter))
                           : nullptr,
      RSA_OAEP_PARAMS_free);
  if (!parameters || !isStrongDigest(parameters->hashFunc) || !parameters->maskGenFunc)
    return "RSA-OAEP with SHA-1 is not accepted";
  std::unique_ptr<X509_ALGOR, void (*)(X509_ALGOR*)> maskHash(
      parameters->maskGenFunc->parameter ? static_cast<X509_ALGOR*>(ASN1_TYPE_unpack_sequence(
                                               ASN1_ITEM_rptr(X509_ALGOR), parameters->maskGenFunc->parameter))
                                         : nullptr,
      X509_ALGOR_free);
  return maskHash && isStrongDigest(maskHash.get()) ? "" : "RSA-OAEP with a SHA-1 mask is not accepted";
}

}  // namespace

std::string signerAlgorithmProblem(CMS_SignerInfo* signer) {
  X509_ALGOR *digest = nullptr, *signature = nullptr;
  CMS_SignerInfo_get0_algs(signer, nullptr, nullptr, &digest, &signature);
  if (!digest || !signature) return "the signature names no algorithms";
  if (!isStrongDigest(digest)) return "the digest " + nameOf(digest->algorithm) + " is not accepted";
  static const std::set<int> kSignatures{
      NID_rsaEncryption,       NID_sha256WithRSAEncryption, NID_sha384WithRSAEncryption, NID_sha512WithRSAEncryption,
      NID_rsassaPss,           NID_ecdsa_with_SHA256,       NID_ecdsa_with_SHA384,       NID_ecdsa_with_SHA512,
      NID_X9_62_id_ecPublicKey};
  if (!kSignatures.count(OBJ_obj2nid(signature->algorithm)))
    return "the signature algorithm " + nameOf(signature->algorithm) + " is not accepted";
  return "";
}

std::string envelopeAlgorithmProblem(CMS_ContentInfo* envelope, std::string_view der) {
  std::string cipher = contentEncryptionOf(der);
  static const std::set<std::string> kCiphers{"aes-128-gcm",   "aes-192-gcm",   "aes-256-gcm",
                                              "id-aes128-GCM", "id-aes192-GCM", "id-aes256-GCM"};
  if (OBJ_obj2nid(CMS_get0_type(envelope)) != NID_id_smime_ct_authEnvelopedData || !kCiphers.count(cipher))
    return "the biometric data is encrypted with " + (cipher.empty() ? std::string("an unknown cipher") : cipher) +
           ", which is not accepted (AES-GCM is)";
  STACK_OF(CMS_RecipientInfo)* recipients = CMS_get0_RecipientInfos(envelope);
  if (!recipients || sk_CMS_RecipientInfo_num(recipients) == 0) return "the envelope has no recipient";
  for (int i = 0; i < sk_CMS_RecipientInfo_num(recipients); ++i) {
    CMS_RecipientInfo* recipient = sk_CMS_RecipientInfo_value(recipients, i);
    X509_ALGOR* algorithm = nullptr;
    if (CMS_RecipientInfo_type(recipient) == CMS_RECIPINFO_TRANS) {
      CMS_RecipientInfo_ktri_get0_algs(recipient, nullptr, nullptr, &algorithm);
      if (std::string problem = algorithm ? oaepProblem(algorithm) : "no key transport"; !problem.empty())
        return problem;
    } else if (CMS_RecipientInfo_type(recipient) == CMS_RECIPINFO_AGREE) {
      CMS_RecipientInfo_kari_get0_alg(recipient, &algorithm, nullptr);
      int nid = algorithm ? OBJ_obj2nid(algorithm->algorithm) : NID_undef;
      if (nid != NID_dhSinglePass_stdDH_sha256kdf_scheme && nid != NID_dhSinglePass_stdDH_sha384kdf_scheme &&
          nid != NID_dhSinglePass_stdDH_sha512kdf_scheme)
        return "the key is agreed with " + (algorithm ? nameOf(algorithm->algorithm) : std::string("nothing")) +
               ", which is not accepted (ECDH with a SHA-256 key derivation is)";
    } else {
      return "the envelope has a recipient that is neither RSA nor EC";
    }
  }
  return "";
}

}  // namespace scrivlet::ssl
