// What the evidence library's OpenSSL code shares: owning pointers, memory BIOs, reading keys and
// certificates, and failures reported with OpenSSL's own reason.
#pragma once

#include <scrivlet/evidence.h>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet::ssl {

template <class T, void (*Free)(T*)>
struct Deleter {
  void operator()(T* p) const { Free(p); }
};
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using X509Ptr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using CmsPtr = std::unique_ptr<CMS_ContentInfo, Deleter<CMS_ContentInfo, CMS_ContentInfo_free>>;
using StorePtr = std::unique_ptr<X509_STORE, Deleter<X509_STORE, X509_STORE_free>>;

inline void freeCertificates(STACK_OF(X509) * certificates) { sk_X509_pop_free(certificates, X509_free); }
using CertificatesPtr = std::unique_ptr<STACK_OF(X509), Deleter<STACK_OF(X509), freeCertificates>>;

// Sets *error (when given) to the code and the reason, with OpenSSL's first queued error appended;
// clears OpenSSL's queue. Answers nothing, for `return fail(...)`.
std::nullopt_t fail(Error* error, ErrorCode code, const std::string& why);
// The same for callers that keep the reason as text.
std::string reasonWithOpenSsl(const std::string& why);

BioPtr memoryOf(std::string_view bytes);
std::string contentsOf(BIO* bio);

X509Ptr certificateOf(std::string_view pemOrDer);
KeyPtr privateKeyOf(std::string_view pemOrDer);
KeyPtr publicKeyOf(std::string_view pemOrDer);
// Every certificate of a PEM text; nothing when one of them does not read.
std::optional<CertificatesPtr> certificatesOf(std::string_view pem);

std::string subjectOf(X509* certificate);
std::string derOf(CMS_ContentInfo* cms);
CmsPtr cmsOf(std::string_view der);

// ISO 8601 UTC text of a time.
std::string isoTime(time_t time);

}  // namespace scrivlet::ssl
