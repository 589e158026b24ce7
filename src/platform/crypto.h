// Random UUIDs and SHA-1 digests.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace scrivlet {

// A new random (version 4) UUID as 36 characters of upper-case hexadecimal digits and hyphens.
std::string randomUUIDString();

// The SHA-1 digest of the bytes.
std::array<uint8_t, 20> sha1Digest(const std::string& bytes);

}  // namespace scrivlet
