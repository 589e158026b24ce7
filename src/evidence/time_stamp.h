// RFC 3161 time-stamps: asked of a time-stamping authority over HTTP (libcurl), added to a CMS
// signer as its signature-time-stamp attribute, and checked again.
#pragma once

#include <scrivlet/evidence.h>

#include <openssl/cms.h>

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet::ssl {

// Asks the authority at `url` (http or https) to time-stamp the signer's signature value, checks that
// the answer is granted and is for this request, and adds the token to the signer.
bool addSignatureTimeStamp(CMS_SignerInfo* signer, const std::string& url, Error* error);

struct TimeStampCheck {
  bool present = false, valid = false;
  time_t time = 0;     // the token's time
  std::string detail;  // what was found
};
// The signer's signature-time-stamp, if it has one: its imprint must be the signature value's
// digest, and with trusted certificates (PEM) its signature must chain to one of them.
TimeStampCheck checkSignatureTimeStamp(CMS_SignerInfo* signer, std::string_view trusted);

}  // namespace scrivlet::ssl
