// The algorithms read evidence may use: the ones this library writes, nothing weaker. Each check
// answers what is refused, by name, or nothing when the structure passes.
#pragma once

#include <openssl/cms.h>

#include <string>
#include <string_view>

namespace scrivlet::ssl {

// A signer's digest is SHA-256, -384 or -512, its signature RSA (PKCS#1 v1.5 or PSS) or ECDSA.
std::string signerAlgorithmProblem(CMS_SignerInfo* signer);

// An envelope is AuthEnvelopedData with AES-GCM, its recipients RSA-OAEP with SHA-256 or more, or
// ECDH with a SHA-256 or stronger key derivation. `der` is the envelope as read.
std::string envelopeAlgorithmProblem(CMS_ContentInfo* envelope, std::string_view der);

}  // namespace scrivlet::ssl
