// Reading fields of untrusted JSON documents without nlohmann-json's undefined lookups.
#pragma once

#include <nlohmann/json.hpp>

#include <cmath>

namespace scrivlet {

// The member of an object, or null when the value is not an object or has no such member (a const
// operator[] on a missing key is undefined).
inline const nlohmann::json& jsonField(const nlohmann::json& object, const char* key) {
  static const nlohmann::json kNull;
  if (!object.is_object()) return kNull;
  auto found = object.find(key);
  return found == object.end() ? kNull : *found;
}

inline bool isFiniteNumber(const nlohmann::json& value) {
  return value.is_number() && std::isfinite(value.get<double>());
}

}  // namespace scrivlet
