// UUIDs from libuuid; digests and Base64 from OpenSSL's libcrypto.
#include "platform/crypto.h"

#include <openssl/evp.h>
#include <openssl/sha.h>
#include <uuid/uuid.h>

#include <algorithm>
#include <cctype>

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

std::array<uint8_t, 32> sha256Digest(std::string_view bytes) {
  std::array<uint8_t, 32> digest{};
  SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
  return digest;
}

std::string hexString(const uint8_t* bytes, size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(size * 2);
  for (size_t i = 0; i < size; ++i) text += kDigits[bytes[i] >> 4], text += kDigits[bytes[i] & 15];
  return text;
}

std::string base64Encode(std::string_view bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3), '\0');
  // EVP_EncodeBlock takes an int length: encode in pieces a multiple of 3 bytes long.
  constexpr size_t kPiece = 3 << 20;
  size_t out = 0;
  for (size_t at = 0; at < bytes.size(); at += kPiece) {
    size_t n = std::min(kPiece, bytes.size() - at);
    out += EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data() + out),
                           reinterpret_cast<const unsigned char*>(bytes.data() + at), int(n));
  }
  text.resize(out);
  return text;
}

std::optional<std::string> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  auto isDigit = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '/'; };
  size_t padding = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '=' && i + 2 >= text.size() && (i + 1 == text.size() || text[i + 1] == '=')) ++padding;
    else if (!isDigit(text[i]) || padding) return std::nullopt;
  }
  std::string bytes(3 * (text.size() / 4), '\0');
  constexpr size_t kPiece = 4 << 20;
  size_t out = 0;
  for (size_t at = 0; at < text.size(); at += kPiece) {
    size_t n = std::min(kPiece, text.size() - at);
    int made = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data() + out),
                               reinterpret_cast<const unsigned char*>(text.data() + at), int(n));
    if (made < 0) return std::nullopt;
    out += size_t(made);
  }
  bytes.resize(out - padding);  // EVP_DecodeBlock counts the padding as zero bytes
  return bytes;
}

}  // namespace scrivlet
