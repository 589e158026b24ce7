// Revision boundaries from the cross-reference chain, revision contents compared through qpdf's
// cross-reference tables, and embedded files piped through a pipeline that stops at a limit.
#include "evidence/pdf_revisions.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>

#include <charconv>
#include <set>
#include <stdexcept>

namespace scrivlet::pdf {

namespace {

using Code = ErrorCode;
constexpr size_t kMostRevisions = 1000;

std::optional<long long> numberAfter(std::string_view text, std::string_view key) {
  size_t at = text.find(key);
  if (at == std::string_view::npos) return std::nullopt;
  std::string_view rest = text.substr(at + key.size());
  rest.remove_prefix(std::min(rest.size(), rest.find_first_not_of(" \t\r\n\f")));
  long long value = -1;
  auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  return failure == std::errc() && value >= 0 ? std::optional(value) : std::nullopt;
}

// The /Prev of the cross-reference section at `offset`: a table's trailer, or a stream's dictionary.
std::optional<long long> previousSection(std::string_view pdf, size_t offset) {
  std::string_view rest = pdf.substr(offset);
  size_t end = rest.find(rest.substr(0, 4) == "xref" ? "startxref" : "stream");
  return numberAfter(rest.substr(0, end), "/Prev");
}

// The end of the revision whose startxref names `section`, searched between the section and `limit`.
std::optional<size_t> endOfRevisionNaming(std::string_view pdf, long long section, size_t limit) {
  for (size_t at = pdf.find("startxref", size_t(section)); at != std::string_view::npos && at < limit;
       at = pdf.find("startxref", at + 9)) {
    std::string_view rest = pdf.substr(at + 9);
    size_t digits = rest.find_first_not_of(" \t\r\n\f");
    long long named = -1;
    if (digits == std::string_view::npos) break;
    auto [end, failure] = std::from_chars(rest.data() + digits, rest.data() + rest.size(), named);
    if (failure != std::errc() || named != section) continue;
    std::string_view tail = rest.substr(size_t(end - rest.data()));
    size_t mark = tail.find_first_not_of(" \t\r\n\f");
    if (mark == std::string_view::npos || tail.substr(mark, 5) != "%%EOF") continue;
    size_t after = size_t(tail.data() + mark + 5 - pdf.data());
    if (after < pdf.size() && pdf[after] == '\r') ++after;
    if (after < pdf.size() && pdf[after] == '\n') ++after;
    return after;
  }
  return std::nullopt;
}

std::set<std::string> itemsOf(QPDFObjectHandle array) {
  std::set<std::string> items;
  if (array.isArray())
    for (QPDFObjectHandle item : array.getArrayAsVector()) items.insert(item.unparse());
  return items;
}

bool keepsItems(QPDFObjectHandle before, QPDFObjectHandle after) {
  std::set<std::string> kept = itemsOf(after);
  for (const std::string& item : itemsOf(before))
    if (!kept.count(item)) return false;
  return true;
}

// The keys whose values differ as written (references compare as references).
std::set<std::string> changedKeys(QPDFObjectHandle before, QPDFObjectHandle after) {
  std::set<std::string> keys;
  for (QPDFObjectHandle side : {before, after})
    if (side.isDictionary())
      for (const std::string& key : side.getKeys())
        if (before.getKey(key).unparse() != after.getKey(key).unparse()) keys.insert(key);
  return keys;
}

bool onlyChanges(const std::set<std::string>& changed, const std::set<std::string>& allowed) {
  for (const std::string& key : changed)
    if (!allowed.count(key)) return false;
  return true;
}

bool isSignatureWidget(QPDFObjectHandle annotation) {
  if (!annotation.isDictionary() || annotation.getKey("/Subtype").unparse() != "/Widget") return false;
  QPDFObjectHandle type =
      annotation.getKey("/FT").isNull() ? annotation.getKey("/Parent").getKey("/FT") : annotation.getKey("/FT");
  return type.unparse() == "/Sig";
}

// What a changed form (the catalog's /AcroForm) does beyond adding fields.
std::string formChange(QPDFObjectHandle before, QPDFObjectHandle after) {
  if (!before.isDictionary()) return after.isDictionary() ? "" : "the form was removed";
  if (!onlyChanges(changedKeys(before, after), {"/Fields", "/SigFlags"})) return "the form's settings were changed";
  return keepsItems(before.getKey("/Fields"), after.getKey("/Fields")) ? "" : "a form field was removed";
}

std::string namesChange(QPDF& older, QPDFObjectHandle before, QPDF& newer, QPDFObjectHandle after) {
  if (!onlyChanges(changedKeys(before, after), {"/EmbeddedFiles"})) return "the document's name trees were changed";
  QPDFObjectHandle oldTree = before.isDictionary() ? before.getKey("/EmbeddedFiles") : QPDFObjectHandle::newNull();
  if (!oldTree.isDictionary()) return "";
  QPDFObjectHandle newTree = after.isDictionary() ? after.getKey("/EmbeddedFiles") : QPDFObjectHandle::newNull();
  if (!newTree.isDictionary()) return "the embedded files were removed";
  auto kept = QPDFNameTreeObjectHelper(newTree, newer).getAsMap();
  for (auto& [key, value] : QPDFNameTreeObjectHelper(oldTree, older).getAsMap()) {
    auto found = kept.find(key);
    if (found == kept.end() || found->second.unparse() != value.unparse())
      return "the embedded file " + key + " was replaced or removed";
  }
  return "";
}

class LimitedBuffer : public Pipeline {
 public:
  LimitedBuffer(size_t limit) : Pipeline("bounded", nullptr), limit_(limit) {}
  void write(unsigned char const* data, size_t size) override {
    if (size > limit_ - std::min(limit_, bytes.size())) {
      overflowed = true;
      // A pipeline stops qpdf only by throwing; pipeStreamData catches it and reports a failed decode.
      throw std::length_error("the embedded file inflates past its limit");
    }
    bytes.append(reinterpret_cast<const char*>(data), size);
  }
  void finish() override {}
  std::string bytes;
  bool overflowed = false;

 private:
  size_t limit_;
};

}  // namespace

Result<std::vector<size_t>> revisionEnds(std::string_view pdf) {
  std::vector<size_t> ends{pdf.size()};
  Result<long long> last = lastCrossReferenceOffset(pdf);
  if (!last) return last.error();
  long long section = *last;
  std::set<long long> seen{section};
  while (std::optional<long long> previous = previousSection(pdf, size_t(section))) {
    // A first-page section of a linearized file points forwards: it does not start a revision.
    if (*previous >= section || size_t(*previous) >= pdf.size()) break;
    if (!seen.insert(*previous).second || seen.size() > kMostRevisions)
      return Error{Code::Unreadable, "the PDF's cross-reference sections loop or are too many"};
    std::optional<size_t> end = endOfRevisionNaming(pdf, *previous, size_t(section));
    if (!end) break;
    ends.push_back(*end);
    section = *previous;
  }
  return std::vector<size_t>(ends.rbegin(), ends.rend());
}

Result<std::vector<std::string>> changesBeyondSignatures(std::string_view pdf, size_t before, size_t after) {
  QPDF older, newer;
  if (std::optional<Error> refused = open(older, pdf.substr(0, before), "the signed revision")) return *refused;
  if (std::optional<Error> refused = open(newer, pdf.substr(0, after), "a later revision")) return *refused;
  std::vector<std::string> changes;
  if (newer.anyWarnings()) changes.push_back("the revision's cross-reference does not read cleanly");
  auto oldTable = older.getXRefTable(), newTable = newer.getXRefTable();
  QPDFObjectHandle oldCatalog = older.getRoot(), newCatalog = newer.getRoot();
  if (oldCatalog.getObjGen() != newCatalog.getObjGen()) changes.push_back("the document catalog was replaced");
  QPDFObjectHandle oldForm = oldCatalog.getKey("/AcroForm");
  std::set<std::string> addedAnnotations;
  std::set<QPDFObjGen> growingLists;  // the pages' annotation arrays and the form's field array
  for (QPDFObjectHandle page : older.getAllPages())
    if (page.getKey("/Annots").isIndirect()) growingLists.insert(page.getKey("/Annots").getObjGen());
  if (oldForm.isDictionary() && oldForm.getKey("/Fields").isIndirect())
    growingLists.insert(oldForm.getKey("/Fields").getObjGen());
  for (auto& [id, entry] : oldTable)
    if (!newTable.count(id)) changes.push_back("object " + std::to_string(id.getObj()) + " was deleted");
  for (auto& [id, entry] : newTable) {
    auto found = oldTable.find(id);
    if (found == oldTable.end()) continue;  // new objects matter only where changed objects use them
    const QPDFXRefEntry& old = found->second;
    bool unchanged = old.getType() == entry.getType() &&
                     (entry.getType() == 1 ? old.getOffset() == entry.getOffset()
                                           : old.getObjStreamNumber() == entry.getObjStreamNumber() &&
                                                 old.getObjStreamIndex() == entry.getObjStreamIndex());
    if (unchanged) continue;
    QPDFObjectHandle before = older.getObject(id), after = newer.getObject(id);
    std::string what = "object " + std::to_string(id.getObj());
    if (id == oldCatalog.getObjGen()) {
      std::set<std::string> keys = changedKeys(before, after);
      if (!onlyChanges(keys, {"/AcroForm", "/Names"})) changes.push_back("the document catalog was changed");
      if (std::string form = formChange(before.getKey("/AcroForm"), after.getKey("/AcroForm")); !form.empty())
        changes.push_back(form);
      if (std::string names = namesChange(older, before.getKey("/Names"), newer, after.getKey("/Names"));
          !names.empty())
        changes.push_back(names);
    } else if (before.isDictionary() && !before.isStream() && before.getKey("/Type").unparse() == "/Page") {
      if (!onlyChanges(changedKeys(before, after), {"/Annots"}) ||
          !keepsItems(before.getKey("/Annots"), after.getKey("/Annots")))
        changes.push_back(what + " (a page) was changed");
      for (const std::string& item : itemsOf(after.getKey("/Annots")))
        if (!itemsOf(before.getKey("/Annots")).count(item)) addedAnnotations.insert(item);
    } else if (oldForm.isIndirect() && id == oldForm.getObjGen()) {
      if (std::string form = formChange(before, after); !form.empty()) changes.push_back(form);
    } else if (growingLists.count(id) && after.isArray() && keepsItems(before, after)) {
      // A page's annotations or the form's fields, grown: what was added is checked below.
      for (const std::string& item : itemsOf(after))
        if (!itemsOf(before).count(item)) addedAnnotations.insert(item);
    } else {
      changes.push_back(what + (before.isStream() ? " (a stream)" : "") + " was changed");
    }
  }
  // Whatever was added to a page or the form must be a signature field's widget.
  for (QPDFObjectHandle page : newer.getAllPages())
    for (QPDFObjectHandle annotation :
         page.getKey("/Annots").isArray() ? page.getKey("/Annots").getArrayAsVector() : std::vector<QPDFObjectHandle>{})
      if (addedAnnotations.count(annotation.unparse()) && !isSignatureWidget(annotation))
        changes.push_back("an annotation that is not a signature was added (" +
                          annotation.getKey("/Subtype").unparse() + ")");
  return changes;
}

std::optional<std::string> boundedEmbeddedFile(QPDF& qpdf, const std::string& name, size_t limit, std::string* error) {
  auto file = QPDFEmbeddedFileDocumentHelper(qpdf).getEmbeddedFile(name);
  QPDFObjectHandle stream = file ? file->getEmbeddedFileStream() : QPDFObjectHandle::newNull();
  if (!stream.isStream()) return *error = "the PDF holds no " + name, std::nullopt;
  QPDFObjectHandle declared = stream.getDict().getKey("/Params").getKey("/Size");
  if (declared.isInteger() && (declared.getIntValue() < 0 || size_t(declared.getIntValue()) > limit))
    return *error = name + " is larger than any sealed file", std::nullopt;
  LimitedBuffer buffer(limit);
  bool decoded = stream.pipeStreamData(&buffer, nullptr, 0, qpdf_dl_generalized, true, false);
  if (buffer.overflowed) return *error = name + " inflates to more than any sealed file", std::nullopt;
  if (!decoded) return *error = name + " does not decode", std::nullopt;
  return std::move(buffer.bytes);
}

}  // namespace scrivlet::pdf
