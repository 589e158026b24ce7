// A record's outputs written to files.
#include "render_output.h"

#include "arguments.h"

#include <sstream>
#include <string_view>

namespace scrivlet::tool {

bool isOutputFormat(const std::string& format) {
  return format == "png" || format == "pdf" || format == "svg" || format == "xml" || format == "json";
}

std::vector<std::string> splitFormats(const std::string& list) {
  std::vector<std::string> formats;
  std::stringstream words(list);
  for (std::string format; std::getline(words, format, ',');) formats.push_back(format);
  return formats;
}

bool writeOutput(const QnSignature& record, const std::string& format, const std::string& path, std::string* error) {
  auto bytes = [](const auto& data) {
    return std::string_view(reinterpret_cast<const char*>(data.data()), data.size());
  };
  std::optional<std::string_view> output;
  if (format == "png" && record.imageData()) output = bytes(*record.imageData());
  if (format == "pdf" && record.pdfData()) output = bytes(*record.pdfData());
  if (format == "svg" && record.svgString()) output = *record.svgString();
  if (format == "xml" && record.xmlString()) output = *record.xmlString();
  std::string recordFile = format == "json" ? recordToJson(record) : "";
  if (format == "json") output = recordFile;
  if (!output)
    *error = "the record has no " + format + " output (see the line above)";
  else if (!writeFile(path, output->data(), output->size()))
    *error = "cannot write " + path;
  else
    return true;
  return false;
}

}  // namespace scrivlet::tool
