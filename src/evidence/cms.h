// The CMS operations sealed evidence is made of, over OpenSSL: enveloping to an examiner (AES-256-GCM,
// RSA-OAEP or ECDH), opening with the examiner's key, detached signatures and their verification.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace scrivlet::cms {

// Every operation answers nothing on failure and puts a one-line reason in *error.

// AuthEnvelopedData (DER) of the content for the recipient: a PEM or DER X.509 certificate, or a PEM
// public key (then identified by its key identifier).
std::optional<std::string> envelope(std::string_view content, std::string_view recipient, std::string* error);
// The content of such an envelope, opened with the recipient's PEM or DER private key.
std::optional<std::string> openEnvelope(std::string_view der, std::string_view privateKey, std::string* error);

// SignedData (DER) over the content, detached, by the PEM certificate and its PEM private key.
std::optional<std::string> signDetached(std::string_view content, std::string_view certificate,
                                        std::string_view privateKey, std::string* error);

struct SignatureCheck {
  bool valid = false;     // the signature is over the content, by the certificate it names
  bool chainChecked = false;  // and the certificate chains to one of the trusted certificates
  std::string signer;     // the signer's subject, one line
  std::string reason;     // why not, when not valid
};
// Checks a detached signature. With trusted certificates (PEM, one or more) the signer's certificate
// must chain to one of them; without, only the signature itself is checked.
SignatureCheck verifyDetached(std::string_view der, std::string_view content, std::string_view trusted);

}  // namespace scrivlet::cms
