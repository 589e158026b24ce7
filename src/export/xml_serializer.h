// A minimal append-only XML writer: no line breaks, no indentation, no escaping.
#pragma once

#include <string>
#include <string_view>

namespace scrivlet {

class QnXMLSerializer {
 public:
  const std::string& string() const { return string_; }
  void setString(std::string text) { string_ = std::move(text); }

  // Replaces the text with the XML declaration of the encoding.
  void startDocument(std::string_view encoding);
  // Opens an element; the tag text may carry attributes.
  void startTag(std::string_view tag);
  void text(std::string_view text);
  void endTag(std::string_view name);
  void endDocument() {}
  const std::string& toString() const { return string_; }

  // An element holding the text: startTag, text and endTag in one.
  void element(std::string_view name, std::string_view text);

 private:
  std::string string_;
};

}  // namespace scrivlet
