// UUIDs from libuuid, SHA-1 from OpenSSL's libcrypto.
#include "platform/crypto.h"

#include <openssl/sha.h>
#include <uuid/uuid.h>

namespace scrivlet {

std::string randomUUIDString() {
  uuid_t uuid;
  uuid_generate_random(uuid);
  char text[37];
  uuid_unparse_upper(uuid, text);
  return text;
}

std::array<uint8_t, 20> sha1Digest(const std::string& bytes) {
  std::array<uint8_t, 20> digest{};
  SHA1(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
  return digest;
}

}  // namespace scrivlet
