// Random UUIDs, SHA-1 and SHA-256 digests, Base64.
#pragma once

#include <scrivlet/export.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet {

// A new random (version 4) UUID as 36 characters of upper-case hexadecimal digits and hyphens.
std::string randomUUIDString();

// The SHA-1 digest of the bytes.
std::array<uint8_t, 20> sha1Digest(const std::string& bytes);

// Exported for the evidence library, which links the core; not public API.

// The SHA-256 digest of the bytes.
SCRIVLET_EXPORT std::array<uint8_t, 32> sha256Digest(std::string_view bytes);
// Lower-case hexadecimal digits of the bytes.
SCRIVLET_EXPORT std::string hexString(const uint8_t* bytes, size_t size);
template <size_t N>
std::string hexString(const std::array<uint8_t, N>& bytes) { return hexString(bytes.data(), N); }

// Base64 (RFC 4648, padded, one line) and back; nothing when the text is not such Base64.
SCRIVLET_EXPORT std::string base64Encode(std::string_view bytes);
SCRIVLET_EXPORT std::optional<std::string> base64Decode(std::string_view text);

}  // namespace scrivlet
