// Strokes documents and record files made from fuzzing input: each member of the right type, or of a
// wrong one (null, a boolean, a number, a text, an object, a list), nested thousands of levels deep,
// or repeated thousands of times. A document made only of right choices is one the readers must load.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace scrivlet::fuzz {

class DocumentGenerator {
 public:
  DocumentGenerator(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  // Whether every choice so far made the document a valid one.
  bool valid() const { return valid_; }

  std::string strokesDocument() {
    std::string out = "{";
    member(out, "format", [&] { out += "\"scrivlet-strokes\""; });
    out += ',';
    member(out, "version", [&] { out += "1"; });
    out += ',';
    member(out, "strokes", [&] { list(out, 8, [&] { list(out, 16, [&] { point(out); }); }); });
    if (byte() % 8 == 0) out += ",\"extra\":" + oddValue(7);  // members the reader does not know are skipped
    return out + "}";
  }

  std::string recordDocument() {
    std::string out = "{";
    member(out, "format", [&] { out += "\"scrivlet-record\""; });
    out += ',';
    member(out, "version", [&] { out += "1"; });
    out += ",";
    member(out, "hash", [&] { out += "\"0F1E2D3C4B\""; });
    out += ",";
    member(out, "timestamp", [&] { out += number(); });
    out += ",";
    member(out, "frame", [&] { out += "[" + number() + "," + number() + "," + number() + "," + number() + "]"; });
    out += ",";
    member(out, "png", [&] {
      out += '"';
      for (int i = byte() % 8; i > 0; --i) out += "iVBORw0KGgoA";
      out += '"';
    });
    out += ",";
    member(out, "device", [&] {
      out += "{";
      member(out, "model", [&] { out += "\"iPad13,4\""; });
      out += ",";
      member(out, "screenScale", [&] { out += number(); });
      out += ",";
      member(out, "pixelsPerInch", [&] { out += std::to_string(1 + byte()); });
      out += "}";
    });
    out += ",";
    member(out, "strokes", [&] { out += strokesDocument(); });
    return out + "}";
  }

 private:
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }

  // The member with its right value most of the time, or a wrong one.
  template <class Right>
  void member(std::string& out, const char* name, Right right) {
    out += '"';
    out += name;
    out += "\":";
    if (byte() % 6 != 0) return right();
    valid_ = false;
    out += oddValue();
  }

  // One of the first `kinds` kinds of value (the first seven are shallow).
  std::string oddValue(int kinds = 9) {
    switch (byte() % kinds) {
      case 0: return "null";
      case 1: return "true";
      case 2: return "5";
      case 3: return "-1.5e300";
      case 4: return "\"NaN\"";
      case 5: return "{}";
      case 6: return "[]";
      case 7: {  // nested up to four thousand levels deep
        size_t depth = 1 + size_t(byte()) * 16;
        return std::string(depth, '[') + std::string(depth, ']');
      }
      default: {  // a list of up to sixteen thousand empty ones
        size_t count = 1 + (size_t(byte()) << 8 | byte()) / 4;
        std::string many = "[";
        for (size_t i = 0; i < count; ++i) many += i ? ",[]" : "[]";
        return many + "]";
      }
    }
  }

  template <class Element>
  void list(std::string& out, int most, Element element) {
    out += '[';
    for (int i = 0, n = byte() % most; i < n; ++i) {
      if (i) out += ',';
      element();
    }
    out += ']';
  }

  void point(std::string& out) {
    static const char* const kFields[] = {"x",        "y",        "vx",       "vy", "ax", "ay", "t", "azimuth",
                                          "altitude", "pressure", "diameter"};
    out += '{';
    for (int i = 0; i < 11; ++i) {
      member(out, kFields[i], [&] { out += i < 2 ? number() : anyNumber(); });
      out += ',';
    }
    member(out, "id", [&] { out += std::to_string(uint32_t(byte()) << 8 | byte()); });
    out += '}';
  }

  std::string number() {
    switch (byte() % 8) {
      case 0: return "1e308";
      case 1: return "-0.0";
      default: {
        char text[32];
        std::snprintf(text, sizeof text, "%d.%d", int(byte()) - 128, int(byte()));
        return text;
      }
    }
  }
  // Where a number may be one that is not finite: also the texts the writer uses for those.
  std::string anyNumber() {
    switch (byte() % 8) {
      case 0: return "\"Infinity\"";
      case 1: return "\"NaN\"";
      default: return number();
    }
  }

  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
  bool valid_ = true;
};

}  // namespace scrivlet::fuzz
