// Untrusted JSON read as a stream of events: the size checked first, the nesting bounded while reading,
// and never a whole document in memory.
#pragma once

#include <scrivlet/error.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet {

struct JsonEvent {
  enum class Kind { null, boolean, integer, unsignedInteger, floating, string, beginObject, key, endObject,
                    beginArray, endArray };
  Kind kind;
  double number = 0;      // every kind of number, as a double
  int64_t integer = 0;    // integer
  uint64_t unsignedInteger = 0;
  bool boolean = false;
  std::string* text = nullptr;  // string and key; the reader may take it

  bool isNumber() const { return kind == Kind::integer || kind == Kind::unsignedInteger || kind == Kind::floating; }
  bool begins() const { return kind == Kind::beginObject || kind == Kind::beginArray; }
  bool ends() const { return kind == Kind::endObject || kind == Kind::endArray; }
};

// Everything deeper than this is refused: the documents read here need five levels.
constexpr int kMostJsonDepth = 32;

// What reads a document's events: it returns false to stop, with its reason in `error`.
class JsonEventHandler {
 public:
  virtual ~JsonEventHandler() = default;
  virtual bool take(const JsonEvent& event) = 0;
  std::optional<Error> error;

 protected:
  // Whether the event is part of a value being skipped (it is taken as such).
  bool skipping(const JsonEvent& event) {
    if (skipDepth_ == 0) return false;
    skipDepth_ += event.begins() ? 1 : event.ends() ? -1 : 0;
    return true;
  }
  // Skips the rest of the value that begins with the event.
  void skip(const JsonEvent& event) { skipDepth_ = event.begins() ? 1 : 0; }
  bool stop(Error::Code code, std::string message) {
    error = Error{code, std::move(message)};
    return false;
  }

 private:
  int skipDepth_ = 0;
};

// Hands every event of the text to the handler. What is refused: the text longer than mostBytes, not
// JSON, nested deeper than kMostJsonDepth, or stopped by the handler (its error); `what` names the
// document in the messages.
std::optional<Error> readJsonEvents(std::string_view text, size_t mostBytes, const char* what,
                                    JsonEventHandler& handler);

}  // namespace scrivlet
