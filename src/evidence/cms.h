// The CMS operations evidence is made of, over OpenSSL: enveloping to an examiner (AES-256-GCM,
// RSA-OAEP or ECDH with SHA-256), opening with the examiner's key, detached signatures (CAdES for
// PDFs, with a time-stamp on request) and their verification.
#pragma once

#include <scrivlet/evidence.h>

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet::cms {

// AuthEnvelopedData (DER) of the content for the recipient: a PEM or DER X.509 certificate, or a PEM
// public key (then identified by its key identifier). The recipient is checked first, and the
// envelope is read back before it is given.
std::optional<std::string> envelope(std::string_view content, std::string_view recipient, Error* error);
// The content of such an envelope, opened with the recipient's PEM or DER private key; an envelope
// made with other algorithms is refused unopened.
std::optional<std::string> openEnvelope(std::string_view der, std::string_view privateKey, Error* error);

// SignedData (DER) over the content, detached, SHA-256, by the signer (checked first), its chain
// included. `cades` adds the signing-certificate-v2 attribute and leaves out the signing time (PAdES
// keeps it in /M); `timeStampUrl` adds a time-stamp token over the signature value as an unsigned
// attribute.
std::optional<std::string> signDetached(std::string_view content, const EvidenceSigner& signer, bool cades,
                                        const std::string& timeStampUrl, Error* error);

struct SignatureCheck {
  EvidenceVerdict verdict = EvidenceVerdict::Unreadable;  // Valid, Untrusted, Tampered or Unreadable
  std::string reason;                                     // why not Valid
  std::string signer;                                     // the signer's subject, one line
  time_t signingTime = 0;  // the time-stamp's time, else the signed signing time, else now
  bool timeStamped = false;
  bool signingCertificateV2 = false;  // the CAdES attribute naming the signer's certificate
  std::string timeStampDetail;        // what the time-stamp check found
};
// Checks a detached signature over the content: its algorithms, the signature itself, its time-stamp
// if any, and the signer's chain to the trusted certificates (PEM) at the signing time: the
// time-stamp's, else the signing-time attribute's, else `claimedTime` (a PDF's /M) when given, else now.
SignatureCheck verifyDetached(std::string_view der, std::string_view content, std::string_view trusted,
                              time_t claimedTime = 0);

}  // namespace scrivlet::cms
