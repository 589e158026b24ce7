// Memory BIOs, key and certificate readers and failure reasons over OpenSSL.
#include "evidence/openssl_support.h"

#include <openssl/err.h>
#include <openssl/pem.h>

#include <climits>

namespace scrivlet::ssl {

namespace {

// Keys protected by a pass phrase are refused rather than asked for on the terminal.
int noPassPhrase(char*, int, int, void*) { return -1; }

bool isPem(std::string_view bytes) { return bytes.find("-----BEGIN ") != std::string_view::npos; }

}  // namespace

std::string reasonWithOpenSsl(const std::string& why) {
  std::string text = why;
  if (unsigned long code = ERR_peek_error()) {
    char detail[256];
    ERR_error_string_n(code, detail, sizeof detail);
    text += " (" + std::string(detail) + ")";
  }
  ERR_clear_error();
  return text;
}

std::nullopt_t fail(Error* error, ErrorCode code, const std::string& why) {
  std::string text = reasonWithOpenSsl(why);
  if (error) *error = {code, text};
  return std::nullopt;
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

std::optional<CertificatesPtr> certificatesOf(std::string_view pem) {
  CertificatesPtr certificates(sk_X509_new_null());
  BioPtr bio = memoryOf(pem);
  if (!certificates || !bio) return std::nullopt;
  // Every PEM block must be a certificate that reads: a damaged one is not silently left out.
  size_t blocks = 0;
  for (size_t at = pem.find("-----BEGIN "); at != std::string_view::npos; at = pem.find("-----BEGIN ", at + 1))
    ++blocks;
  while (X509* certificate = PEM_read_bio_X509(bio.get(), nullptr, noPassPhrase, nullptr))
    sk_X509_push(certificates.get(), certificate);
  ERR_clear_error();
  if (size_t(sk_X509_num(certificates.get())) != blocks) return std::nullopt;
  return certificates;
}

std::string subjectOf(X509* certificate) {
  char name[512];
  X509_NAME_oneline(X509_get_subject_name(certificate), name, sizeof name);
  return name;
}

std::string derOf(CMS_ContentInfo* cms) {
  BioPtr out(BIO_new(BIO_s_mem()));
  if (!out || !i2d_CMS_bio(out.get(), cms)) return {};
  return contentsOf(out.get());
}

CmsPtr cmsOf(std::string_view der) {
  BioPtr in = memoryOf(der);
  return CmsPtr(in ? d2i_CMS_bio(in.get(), nullptr) : nullptr);
}

std::string isoTime(time_t time) {
  struct tm utc {};
  char text[32];
  if (!gmtime_r(&time, &utc) || !strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)) return {};
  return text;
}

}  // namespace scrivlet::ssl
