// JSON events from nlohmann-json's SAX parser, within a size and a depth.
#include "host/json_reading.h"

#include <nlohmann/json.hpp>

namespace scrivlet {

namespace {

// nlohmann-json's SAX interface, passing each event on as a JsonEvent.
class EventSax {
 public:
  explicit EventSax(JsonEventHandler& handler) : handler_(handler) {}

  bool null() { return pass({JsonEvent::Kind::null}); }
  bool boolean(bool value) {
    JsonEvent event{JsonEvent::Kind::boolean};
    event.boolean = value;
    return pass(event);
  }
  bool number_integer(int64_t value) {
    JsonEvent event{JsonEvent::Kind::integer, static_cast<double>(value)};
    event.integer = value;
    return pass(event);
  }
  bool number_unsigned(uint64_t value) {
    JsonEvent event{JsonEvent::Kind::unsignedInteger, static_cast<double>(value)};
    event.unsignedInteger = value;
    return pass(event);
  }
  bool number_float(double value, const std::string&) { return pass({JsonEvent::Kind::floating, value}); }
  bool string(std::string& value) {
    JsonEvent event{JsonEvent::Kind::string};
    event.text = &value;
    return pass(event);
  }
  bool binary(std::vector<uint8_t>&) { return false; }  // not in JSON text
  bool start_object(size_t) { return enter() && pass({JsonEvent::Kind::beginObject}); }
  bool key(std::string& value) {
    JsonEvent event{JsonEvent::Kind::key};
    event.text = &value;
    return pass(event);
  }
  bool end_object() { return --depth_, pass({JsonEvent::Kind::endObject}); }
  bool start_array(size_t) { return enter() && pass({JsonEvent::Kind::beginArray}); }
  bool end_array() { return --depth_, pass({JsonEvent::Kind::endArray}); }
  bool parse_error(size_t position, const std::string&, const nlohmann::detail::exception&) {
    syntaxErrorAt_ = position;
    return false;
  }

  bool tooDeep() const { return tooDeep_; }
  std::optional<size_t> syntaxErrorAt() const { return syntaxErrorAt_; }

 private:
  bool pass(const JsonEvent& event) { return handler_.take(event); }
  bool enter() { return !(tooDeep_ = ++depth_ > kMostJsonDepth); }

  JsonEventHandler& handler_;
  int depth_ = 0;
  bool tooDeep_ = false;
  std::optional<size_t> syntaxErrorAt_;
};

}  // namespace

std::optional<Error> readJsonEvents(std::string_view text, size_t mostBytes, const char* what,
                                    JsonEventHandler& handler) {
  if (text.size() > mostBytes)
    return Error{ErrorCode::TooLarge, std::string(what) + " of " + std::to_string(text.size()) +
                                          " bytes: more than the " + std::to_string(mostBytes) +
                                          " bytes of the largest one read"};
  EventSax sax(handler);
  if (nlohmann::json::sax_parse(text.begin(), text.end(), &sax)) return std::nullopt;
  if (sax.tooDeep())
    return Error{ErrorCode::Malformed,
                 std::string(what) + " nested deeper than " + std::to_string(kMostJsonDepth) + " levels"};
  if (sax.syntaxErrorAt())
    return Error{ErrorCode::NotJson,
                 "not JSON: " + std::string(*sax.syntaxErrorAt() >= text.size() ? "cut short" : "a syntax error") +
                     " at byte " + std::to_string(*sax.syntaxErrorAt())};
  if (handler.error) return handler.error;
  return Error{ErrorCode::Malformed, std::string(what) + " that could not be read"};
}

}  // namespace scrivlet
