// The XML writer.
#include "export/xml_serializer.h"

namespace scrivlet {

void QnXMLSerializer::startDocument(const std::string& encoding) {
  string_ = "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>";
}

void QnXMLSerializer::startTag(const std::string& tag) { string_ += "<" + tag + ">"; }

void QnXMLSerializer::text(const std::string& text) { string_ += text; }

void QnXMLSerializer::endTag(const std::string& name) { string_ += "</" + name + ">"; }

void QnXMLSerializer::element(const std::string& name, const std::string& text) {
  startTag(name);
  this->text(text);
  endTag(name);
}

}  // namespace scrivlet
