// A minimal append-only XML writer: no line breaks, no indentation, no escaping.
#pragma once

#include <string>

namespace scrivlet {

class QnXMLSerializer {
 public:
  const std::string& string() const { return string_; }
  void setString(std::string text) { string_ = std::move(text); }

  // Replaces the text with the XML declaration of the encoding.
  void startDocument(const std::string& encoding);
  // Opens an element; the tag text may carry attributes.
  void startTag(const std::string& tag);
  void text(const std::string& text);
  void endTag(const std::string& name);
  void endDocument() {}
  const std::string& toString() const { return string_; }

  // An element holding the text: startTag, text and endTag in one.
  void element(const std::string& name, const std::string& text);

 private:
  std::string string_;
};

}  // namespace scrivlet
