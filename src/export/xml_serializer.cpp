// The XML writer: appends in place, without a temporary string for each tag.
#include "export/xml_serializer.h"

namespace scrivlet {

void QnXMLSerializer::startDocument(std::string_view encoding) {
  string_ = "<?xml version=\"1.0\" encoding=\"";
  string_ += encoding;
  string_ += "\"?>";
}

void QnXMLSerializer::startTag(std::string_view tag) {
  string_ += '<';
  string_ += tag;
  string_ += '>';
}

void QnXMLSerializer::text(std::string_view text) { string_ += text; }

void QnXMLSerializer::endTag(std::string_view name) {
  string_ += "</";
  string_ += name;
  string_ += '>';
}

void QnXMLSerializer::element(std::string_view name, std::string_view text) {
  startTag(name);
  this->text(text);
  endTag(name);
}

}  // namespace scrivlet
