// RFC 3161 time-stamp requests over HTTP with libcurl, and token checks with OpenSSL's TS API.
#include "evidence/time_stamp.h"

#include "evidence/openssl_support.h"

#include <curl/curl.h>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <openssl/ts.h>

#include <mutex>

namespace scrivlet::ssl {

namespace {

using Code = ErrorCode;
using RequestPtr = std::unique_ptr<TS_REQ, Deleter<TS_REQ, TS_REQ_free>>;
using ResponsePtr = std::unique_ptr<TS_RESP, Deleter<TS_RESP, TS_RESP_free>>;
using TokenPtr = std::unique_ptr<PKCS7, Deleter<PKCS7, PKCS7_free>>;
using InfoPtr = std::unique_ptr<TS_TST_INFO, Deleter<TS_TST_INFO, TS_TST_INFO_free>>;
using VerifyPtr = std::unique_ptr<TS_VERIFY_CTX, Deleter<TS_VERIFY_CTX, TS_VERIFY_CTX_free>>;

// An answer is a token of a few kilobytes; more is not an answer.
constexpr size_t kLargestAnswer = size_t(1) << 20;

size_t collect(char* data, size_t size, size_t count, void* target) {
  std::string& answer = *static_cast<std::string*>(target);
  if (answer.size() + size * count > kLargestAnswer) return 0;  // ends the transfer
  answer.append(data, size * count);
  return size * count;
}

// POSTs the request as application/timestamp-query and gives the body of a 200 answer.
std::optional<std::string> post(const std::string& url, const std::string& request, Error* error) {
  static std::once_flag initialised;
  std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
  std::unique_ptr<CURL, Deleter<CURL, curl_easy_cleanup>> curl(curl_easy_init());
  std::unique_ptr<curl_slist, Deleter<curl_slist, curl_slist_free_all>> headers(
      curl_slist_append(nullptr, "Content-Type: application/timestamp-query"));
  if (!curl || !headers) return fail(error, Code::TimeStampFailed, "the time-stamp request cannot be made");
  std::string answer;
  char reason[CURL_ERROR_SIZE] = "";
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, request.data());
  curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, long(request.size()));
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, collect);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
  curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, reason);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 60L);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  CURLcode result = curl_easy_perform(curl.get());
  long status = 0;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  if (result != CURLE_OK)
    return fail(
        error, Code::TimeStampFailed,
        "the time-stamping authority did not answer: " + std::string(*reason ? reason : curl_easy_strerror(result)));
  if (status != 200)
    return fail(error, Code::TimeStampFailed, "the time-stamping authority answered HTTP " + std::to_string(status));
  return answer;
}

RequestPtr requestFor(const unsigned char* digest, unsigned size) {
  RequestPtr request(TS_REQ_new());
  std::unique_ptr<TS_MSG_IMPRINT, Deleter<TS_MSG_IMPRINT, TS_MSG_IMPRINT_free>> imprint(TS_MSG_IMPRINT_new());
  std::unique_ptr<X509_ALGOR, Deleter<X509_ALGOR, X509_ALGOR_free>> algorithm(X509_ALGOR_new());
  std::unique_ptr<ASN1_INTEGER, Deleter<ASN1_INTEGER, ASN1_INTEGER_free>> nonce(ASN1_INTEGER_new());
  unsigned char random[8];
  if (!request || !imprint || !algorithm || !nonce || RAND_bytes(random, sizeof random) != 1) return nullptr;
  std::unique_ptr<BIGNUM, Deleter<BIGNUM, BN_free>> number(BN_bin2bn(random, sizeof random, nullptr));
  bool made = number && BN_to_ASN1_INTEGER(number.get(), nonce.get()) &&
              X509_ALGOR_set0(algorithm.get(), OBJ_nid2obj(NID_sha256), V_ASN1_NULL, nullptr) &&
              TS_MSG_IMPRINT_set_algo(imprint.get(), algorithm.get()) &&
              TS_MSG_IMPRINT_set_msg(imprint.get(), const_cast<unsigned char*>(digest), int(size)) &&
              TS_REQ_set_version(request.get(), 1) && TS_REQ_set_msg_imprint(request.get(), imprint.get()) &&
              TS_REQ_set_nonce(request.get(), nonce.get()) && TS_REQ_set_cert_req(request.get(), 1);
  return made ? std::move(request) : nullptr;
}

std::string signatureValueOf(CMS_SignerInfo* signer) {
  ASN1_OCTET_STRING* value = CMS_SignerInfo_get0_signature(signer);
  return value ? std::string(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                             size_t(ASN1_STRING_length(value)))
               : std::string();
}

}  // namespace

bool addSignatureTimeStamp(CMS_SignerInfo* signer, const std::string& url, Error* error) {
  std::string value = signatureValueOf(signer);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  RequestPtr request;
  if (value.empty() || !EVP_Digest(value.data(), value.size(), digest, &size, EVP_sha256(), nullptr) ||
      !(request = requestFor(digest, size)))
    return fail(error, Code::Failed, "the time-stamp request cannot be made"), false;
  unsigned char* der = nullptr;
  int derSize = i2d_TS_REQ(request.get(), &der);
  if (derSize <= 0) return fail(error, Code::Failed, "the time-stamp request cannot be written"), false;
  std::string query(reinterpret_cast<char*>(der), size_t(derSize));
  OPENSSL_free(der);
  std::optional<std::string> answer = post(url, query, error);
  if (!answer) return false;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(answer->data());
  ResponsePtr response(d2i_TS_RESP(nullptr, &p, long(answer->size())));
  if (!response) return fail(error, Code::TimeStampFailed, "the time-stamping authority's answer does not read"), false;
  long status = ASN1_INTEGER_get(TS_STATUS_INFO_get0_status(TS_RESP_get_status_info(response.get())));
  if (status != 0 && status != 1)
    return fail(error, Code::TimeStampFailed,
                "the time-stamping authority refused (status " + std::to_string(status) + ")"),
           false;
  // The token is for this request: its version, imprint and nonce.
  // The authority's signature is checked when verifying, against the verifier's trusted certificates.
  VerifyPtr context(TS_REQ_to_TS_VERIFY_CTX(request.get(), nullptr));
  if (context) TS_VERIFY_CTX_set_flags(context.get(), TS_VFY_VERSION | TS_VFY_IMPRINT | TS_VFY_NONCE);
  if (!context || TS_RESP_verify_response(context.get(), response.get()) != 1)
    return fail(error, Code::TimeStampFailed, "the time-stamp is not for this request"), false;
  unsigned char* token = nullptr;
  int tokenSize = i2d_PKCS7(TS_RESP_get_token(response.get()), &token);
  bool added = tokenSize > 0 &&
               CMS_unsigned_add1_attr_by_NID(signer, NID_id_smime_aa_timeStampToken, V_ASN1_SEQUENCE, token, tokenSize);
  OPENSSL_free(token);
  if (!added) return fail(error, Code::Failed, "the time-stamp cannot be added to the signature"), false;
  return true;
}

TimeStampCheck checkSignatureTimeStamp(CMS_SignerInfo* signer, std::string_view trusted) {
  TimeStampCheck check;
  int index = CMS_unsigned_get_attr_by_NID(signer, NID_id_smime_aa_timeStampToken, -1);
  if (index < 0) return check;
  check.present = true;
  ASN1_TYPE* value = X509_ATTRIBUTE_get0_type(CMS_unsigned_get_attr(signer, index), 0);
  const unsigned char* p = value && value->type == V_ASN1_SEQUENCE ? value->value.sequence->data : nullptr;
  TokenPtr token(p ? d2i_PKCS7(nullptr, &p, value->value.sequence->length) : nullptr);
  InfoPtr info(token ? PKCS7_to_TS_TST_INFO(token.get()) : nullptr);
  struct tm when {};
  if (!info || !ASN1_TIME_to_tm(TS_TST_INFO_get_time(info.get()), &when)) {
    check.detail = reasonWithOpenSsl("the time-stamp token does not read");
    return check;
  }
  check.time = timegm(&when);
  std::string signature = signatureValueOf(signer);
  VerifyPtr context(TS_VERIFY_CTX_new());
  BioPtr data = memoryOf(signature);
  int flags = TS_VFY_VERSION | TS_VFY_DATA;
  std::optional<CertificatesPtr> anchors;
  StorePtr store(X509_STORE_new());
  if (!trusted.empty() && (anchors = certificatesOf(trusted)) && store) {
    for (int i = 0; i < sk_X509_num(anchors->get()); ++i)
      X509_STORE_add_cert(store.get(), sk_X509_value(anchors->get(), i));
    flags |= TS_VFY_SIGNATURE;
    TS_VERIFY_CTX_set_store(context.get(), store.release());
  }
  TS_VERIFY_CTX_set_flags(context.get(), flags);
  TS_VERIFY_CTX_set_data(context.get(), data.release());
  check.valid = TS_RESP_verify_token(context.get(), token.get()) == 1;
  check.detail = check.valid
                     ? "time-stamped " + isoTime(check.time) +
                           (flags & TS_VFY_SIGNATURE ? " by a trusted authority" : " (authority not checked)")
                     : reasonWithOpenSsl("the time-stamp does not match the signature or its authority is not trusted");
  ERR_clear_error();
  return check;
}

}  // namespace scrivlet::ssl
