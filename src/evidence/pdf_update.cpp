// Incremental updates of PDFs, written as text beside qpdf's reading of the original.
#include "evidence/pdf_update.h"

#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace scrivlet::pdf {

// Fixed notation with four decimals whatever the process locale (std::to_chars ignores it).
std::string number(double value) {
  char text[64];
  auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 4);
  return std::string(text, result.ptr);
}

// A PDF name token: bytes outside the printable range, delimiters and '#' written as #XX.
std::string name(std::string_view bare) {
  static constexpr std::string_view kEscaped = "()<>[]{}/%#";
  std::string token = "/";
  for (unsigned char c : bare) {
    if (c < '!' || c > '~' || kEscaped.find(char(c)) != std::string_view::npos) {
      char hex[4];
      std::snprintf(hex, sizeof hex, "#%02X", c);
      token += hex;
    } else {
      token += char(c);
    }
  }
  return token;
}

std::string reference(int number) { return std::to_string(number) + " 0 R"; }

// The dictionary as PDF text, with `replaced` entries (name without the slash -> PDF text) in place of
// or beside its own. Entries that are indirect stay references to the original objects.
std::string unparseWith(QPDFObjectHandle dictionary, const std::map<std::string, std::string>& replaced) {
  std::string text = "<<";
  for (const std::string& key : dictionary.getKeys()) {
    std::string bare = key.substr(1);
    if (!replaced.count(bare)) text += " " + name(bare) + " " + dictionary.getKey(key).unparse();
  }
  for (const auto& [bare, value] : replaced) text += " " + name(bare) + " " + value;
  return text + " >>";
}

Result<std::string> deflate(std::string_view data) {
  uLongf size = compressBound(uLong(data.size()));
  std::string packed(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                uLong(data.size()), Z_DEFAULT_COMPRESSION) != Z_OK)
    return Error{ErrorCode::Failed, "the data could not be compressed"};
  packed.resize(size);
  return packed;
}

// The offset given by the file's last "startxref", which an update names as /Prev. It must sit in
// the tail, be followed by %%EOF and point at a cross-reference table or stream: a file cut short or
// patched carelessly could otherwise gain an update that readers chain to the wrong section.
Result<long long> lastCrossReferenceOffset(std::string_view file) {
  std::string_view tail = file.substr(file.size() - std::min<size_t>(file.size(), 2048));
  size_t keyword = tail.rfind("startxref");
  if (keyword == std::string_view::npos)
    return Error{ErrorCode::Unreadable, "the PDF has no startxref at its end"};
  std::string_view rest = tail.substr(keyword + 9);
  auto skipSpace = [](std::string_view text) {
    return text.substr(std::min(text.size(), text.find_first_not_of(" \t\r\n\f")));
  };
  rest = skipSpace(rest);
  long long offset = -1;
  auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), offset);
  if (failure != std::errc() || offset < 0 || size_t(offset) >= file.size() ||
      skipSpace(rest.substr(end - rest.data())).substr(0, 5) != "%%EOF")
    return Error{ErrorCode::Unreadable, "the PDF does not end with a startxref offset and %%EOF"};
  std::string_view section = skipSpace(file.substr(size_t(offset)));
  if (section.substr(0, 4) != "xref" && (section.empty() || section[0] < '0' || section[0] > '9'))
    return Error{ErrorCode::Unreadable, "the PDF's startxref does not point at a cross-reference section"};
  return offset;
}

// An object the update replaces must be one the file holds, not one qpdf made up while repairing it.
std::optional<Error> requireStoredObject(QPDFObjectHandle object,
                                         const std::map<QPDFObjGen, QPDFXRefEntry>& crossReferences, const char* what) {
  if (!object.isIndirect() || !object.isDictionary() || !crossReferences.count(object.getObjGen()))
    return Error{ErrorCode::Unreadable, std::string("the PDF's ") + what + " is not an object stored in the file"};
  return std::nullopt;
}

IncrementalUpdate::IncrementalUpdate(std::string_view original, int firstNewNumber)
    : bytes_(original), nextNumber_(firstNewNumber) {
  if (!bytes_.empty() && bytes_.back() != '\n') bytes_.push_back('\n');
}

void IncrementalUpdate::writeObject(QPDFObjGen id, const std::string& body) {
  offsets_[id.getObj()] = {bytes_.size(), id.getGen()};
  bytes_ += std::to_string(id.getObj()) + " " + std::to_string(id.getGen()) + " obj\n" + body + "\nendobj\n";
}

int IncrementalUpdate::writeNewObject(const std::string& body) {
  int number = nextNumber_++;
  writeObject(QPDFObjGen(number, 0), body);
  return number;
}

int IncrementalUpdate::writeStream(const std::string& entries, const std::string& data) {
  return writeNewObject("<< " + entries + (entries.empty() ? "" : " ") + "/Length " + std::to_string(data.size()) +
                        " >>\nstream\n" + data + "\nendstream");
}

std::string IncrementalUpdate::finish(const std::string& trailerEntries, long long previousOffset) {
  size_t sectionOffset = bytes_.size();
  std::string section = "xref\n";
  for (auto run = offsets_.begin(); run != offsets_.end();) {
    auto end = run;
    int count = 0;
    while (end != offsets_.end() && end->first == run->first + count) ++end, ++count;
    section += std::to_string(run->first) + " " + std::to_string(count) + "\n";
    for (; run != end; ++run) {
      char entry[32];
      std::snprintf(entry, sizeof entry, "%010llu %05d n\r\n", static_cast<unsigned long long>(run->second.first),
                    run->second.second);
      section += entry;
    }
  }
  section += "trailer\n<< /Size " + std::to_string(nextNumber_) + " " + trailerEntries + " /Prev " +
             std::to_string(previousOffset) + " >>\nstartxref\n" + std::to_string(sectionOffset) + "\n%%EOF\n";
  bytes_ += section;
  return std::move(bytes_);
}

std::optional<Error> open(QPDF& qpdf, std::string_view pdf, const char* description) {
  if (pdf.size() > kLargestPdf) return Error{ErrorCode::Unreadable, "the PDF is larger than 512 MiB"};
  qpdf.setSuppressWarnings(true);
  try {
    qpdf.processMemoryFile(description, pdf.data(), pdf.size());
  } catch (const std::exception& exception) {
    return unreadablePdf(exception);
  }
  if (qpdf.isEncrypted()) return Error{ErrorCode::Unreadable, "the PDF is encrypted"};
  return std::nullopt;
}

Error unreadablePdf(const std::exception& exception) {
  std::string message = std::string("the PDF cannot be read: ") + exception.what();
  for (char& c : message)
    if (c == '\n' || c == '\r') c = ' ';
  return Error{ErrorCode::Unreadable, message};
}

}  // namespace scrivlet::pdf
