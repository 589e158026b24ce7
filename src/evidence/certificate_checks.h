// What a certificate must be to sign evidence, to receive it, and to be trusted when verifying.
#pragma once

#include "evidence/openssl_support.h"

#include <ctime>
#include <string>
#include <string_view>

namespace scrivlet::ssl {

// Why the certificate is not made for signing documents (key usage without digital signature or
// non-repudiation, an extended key usage for code signing or TLS only), or nothing.
std::string purposeProblem(X509* certificate);

// The signer's certificate and key read, match, and may sign now (validity period and purpose).
struct LoadedSigner {
  X509Ptr certificate;
  KeyPtr key;
  CertificatesPtr chain;
};
std::optional<LoadedSigner> loadSigner(const EvidenceSigner& signer, Error* error);

// The examiner's certificate (PEM or DER) or PEM public key, intact: a self-issued certificate's
// signature matches its key, the key is valid (an EC point on its curve, an RSA key of 2048 bits
// or more). Gives the key's holder as a certificate, or nothing with the reason.
std::optional<X509Ptr> loadExaminer(std::string_view recipient, bool* byKeyIdentifier, Error* error);

struct ChainCheck {
  EvidenceVerdict verdict = EvidenceVerdict::Untrusted;  // Valid or Untrusted
  std::string reason;                                    // what is wrong: unknown issuer, expired at the time, purpose
};
// The signer's certificate chains, through `intermediates`, to one of the trusted certificates
// (PEM), every certificate valid at `at`, the signer's made for signing documents.
ChainCheck checkChain(X509* signer, STACK_OF(X509) * intermediates, std::string_view trusted, time_t at);

}  // namespace scrivlet::ssl
