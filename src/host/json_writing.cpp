// JSON values written through nlohmann-json's serializer, one at a time.
#include "host/json_writing.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace scrivlet {

namespace {

void appendValue(std::string& out, const nlohmann::json& value) {
  out += value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

void appendJsonNumber(std::string& out, double value) {
  if (std::isnan(value)) out += "\"NaN\"";
  else if (std::isinf(value)) out += value > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  else appendValue(out, value);
}

void appendJsonUnsigned(std::string& out, uint64_t value) { appendValue(out, value); }

void appendJsonString(std::string& out, std::string_view text) { appendValue(out, std::string(text)); }

}  // namespace scrivlet
