// JSON values written through nlohmann-json's serializer, one at a time.
#include "host/json_writing.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>

namespace scrivlet {

namespace {

void appendValue(std::string& out, const nlohmann::json& value) {
  out += value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

void appendJsonNumber(std::string& out, double value) {
  if (std::isnan(value)) return void(out += "\"NaN\"");
  if (std::isinf(value)) return void(out += value > 0 ? "\"Infinity\"" : "\"-Infinity\"");
  // The serializer's own conversion, without a serializer for each number.
  char text[64];
  out.append(text, nlohmann::detail::to_chars(text, text + sizeof text, value));
}

void appendJsonUnsigned(std::string& out, uint64_t value) {
  char text[24];
  out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

void appendJsonString(std::string& out, std::string_view text) { appendValue(out, std::string(text)); }

}  // namespace scrivlet
