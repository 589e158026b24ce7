// Loading what the tool draws from, and writing a record's outputs to files.
#pragma once

#include <scrivlet/record_file.h>
#include <scrivlet/record_renderer.h>

#include <optional>
#include <string>
#include <vector>

namespace scrivlet::tool {

// A strokes document, a record file or a 19794-7 time series, told apart by their content. Nothing when
// it does not read, with the reason in *error, or an empty *error when the reader has said it already.
std::optional<RecordFile> loadSignature(const std::string& path, std::string* error);

bool isOutputFormat(const std::string& format);
// "png,pdf" as {"png", "pdf"}.
std::vector<std::string> splitFormats(const std::string& list);
// Writes the record's output of that format; false, with the reason in *error, when the record has none
// or the file cannot be written.
bool writeOutput(const QnSignature& record, const std::string& format, const std::string& path, std::string* error);

}  // namespace scrivlet::tool
