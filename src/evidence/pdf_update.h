// Writing an incremental update of a PDF: objects appended after the original bytes, closed by a
// cross-reference section chained to the previous one, with the helpers the update's text needs.
#pragma once

#include <scrivlet/evidence.h>

#ifndef POINTERHOLDER_TRANSITION
#define POINTERHOLDER_TRANSITION 4  // qpdf hands out std::shared_ptr
#endif
#include <qpdf/QPDF.hh>

#include <map>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace scrivlet::pdf {

// PDFs larger than this are refused unread.
inline constexpr size_t kLargestPdf = size_t(512) << 20;

// Fixed notation with four decimals whatever the process locale.
std::string number(double value);
// A PDF name token: bytes outside the printable range, delimiters and '#' written as #XX.
std::string name(std::string_view bare);
std::string reference(int number);
// The dictionary as PDF text, with `replaced` entries (name without the slash -> PDF text) in place of
// or beside its own. Entries that are indirect stay references to the original objects.
std::string unparseWith(QPDFObjectHandle dictionary, const std::map<std::string, std::string>& replaced);
Result<std::string> deflate(std::string_view data);

// The offset given by the file's last "startxref", which an update names as /Prev.
Result<long long> lastCrossReferenceOffset(std::string_view pdf);

// Opens the PDF in qpdf (warnings kept quiet), refusing one that is too large, does not read or is
// encrypted.
std::optional<Error> open(QPDF& qpdf, std::string_view pdf, const char* description = "PDF");

// What qpdf's exception says about a PDF it could not read, as one line. qpdf reports damage it
// finds while reading objects by throwing: the public calls catch there and say why with this.
Error unreadablePdf(const std::exception& exception);

// An object the update replaces must be one the file holds, not one qpdf made up while repairing it.
std::optional<Error> requireStoredObject(QPDFObjectHandle object,
                                         const std::map<QPDFObjGen, QPDFXRefEntry>& crossReferences, const char* what);

class IncrementalUpdate {
 public:
  IncrementalUpdate(std::string_view original, int firstNewNumber);

  // Writes the object in place of an existing one (or as a new one of that number).
  void writeObject(QPDFObjGen id, const std::string& body);
  // Writes a new object and gives its number.
  int writeNewObject(const std::string& body);
  // Writes a new stream object and gives its number. `entries` are the dictionary's entries but /Length.
  int writeStream(const std::string& entries, const std::string& data);
  // Where the object of that number starts in the bytes.
  size_t offsetOf(int number) const { return offsets_.at(number).first; }
  int nextNumber() const { return nextNumber_; }

  // The whole file: the original, the objects, the cross-reference section and the trailer.
  std::string finish(const std::string& trailerEntries, long long previousOffset);

 private:
  std::string bytes_;
  int nextNumber_;
  std::map<int, std::pair<size_t, int>> offsets_;  // object number -> (offset, generation)
};

}  // namespace scrivlet::pdf
