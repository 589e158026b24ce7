// Stamping a signature image and an attachment into an existing PDF as an incremental update, and
// reading attachments back.
#include "evidence/pdf_stamp.h"

#ifndef POINTERHOLDER_TRANSITION
#define POINTERHOLDER_TRANSITION 4  // qpdf hands out std::shared_ptr
#endif
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace scrivlet {
namespace {

// A reason not to stamp, carried up to the public call and reported there.
struct StampRefusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Coordinates past this are no use on any page and would print as very long numbers.
constexpr double kMaxCoordinate = 1e7;
// Big enough for any signature image, small enough that a hostile PNG header cannot ask for gigabytes.
constexpr uint64_t kMaxImagePixels = uint64_t(1) << 26;

std::string oneLine(std::string text) {
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  return text;
}

// Fixed notation with four decimals whatever the process locale (std::to_chars ignores it).
std::string pdfNumber(double value) {
  char text[64];
  auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 4);
  return std::string(text, result.ptr);
}

// A PDF name token: bytes outside the printable range, delimiters and '#' written as #XX.
std::string pdfName(std::string_view name) {
  static constexpr std::string_view kEscaped = "()<>[]{}/%#";
  std::string token = "/";
  for (unsigned char c : name) {
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
    if (!replaced.count(bare)) text += " " + pdfName(bare) + " " + dictionary.getKey(key).unparse();
  }
  for (const auto& [bare, value] : replaced) text += " " + pdfName(bare) + " " + value;
  return text + " >>";
}

std::string deflate(std::string_view data) {
  uLongf size = compressBound(uLong(data.size()));
  std::string packed(size, '\0');
  if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                uLong(data.size()), Z_DEFAULT_COMPRESSION) != Z_OK)
    throw StampRefusal("the data could not be compressed");
  packed.resize(size);
  return packed;
}

// The PNG split into what a PDF image XObject takes: RGB samples, and alpha samples for its soft mask
// (empty when every pixel is opaque). libpng's 8-bit RGBA output is sRGB, not premultiplied.
struct SplitImage {
  uint32_t width = 0, height = 0;
  std::string rgb, alpha;
};

SplitImage decodePng(const std::vector<uint8_t>& png) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, png.data(), png.size()))
    throw StampRefusal(std::string("the image does not decode as PNG: ") + image.message);
  if (uint64_t(image.width) * image.height > kMaxImagePixels) {
    png_image_free(&image);
    throw StampRefusal("the image is too large");
  }
  image.format = PNG_FORMAT_RGBA;
  std::vector<uint8_t> rgba(size_t(image.width) * image.height * 4);
  if (!png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr))  // frees the image on failure too
    throw StampRefusal(std::string("the image does not decode as PNG: ") + image.message);
  SplitImage split{image.width, image.height, {}, {}};
  split.rgb.reserve(rgba.size() / 4 * 3);
  split.alpha.reserve(rgba.size() / 4);
  bool translucent = false;
  for (size_t i = 0; i < rgba.size(); i += 4) {
    split.rgb.append(reinterpret_cast<const char*>(&rgba[i]), 3);
    split.alpha += char(rgba[i + 3]);
    translucent = translucent || rgba[i + 3] != 255;
  }
  if (!translucent) split.alpha.clear();
  return split;
}

// The offset given by the file's last "startxref", which an update names as /Prev. It must sit in
// the tail, be followed by %%EOF and point at a cross-reference table or stream: a file cut short or
// patched carelessly could otherwise gain an update that readers chain to the wrong section.
long long lastCrossReferenceOffset(const std::vector<uint8_t>& pdf) {
  std::string_view file(reinterpret_cast<const char*>(pdf.data()), pdf.size());
  std::string_view tail = file.substr(file.size() - std::min<size_t>(file.size(), 2048));
  size_t keyword = tail.rfind("startxref");
  if (keyword == std::string_view::npos) throw StampRefusal("the PDF has no startxref at its end");
  std::string_view rest = tail.substr(keyword + 9);
  auto skipSpace = [](std::string_view text) {
    return text.substr(std::min(text.size(), text.find_first_not_of(" \t\r\n\f")));
  };
  rest = skipSpace(rest);
  long long offset = -1;
  auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), offset);
  if (failure != std::errc() || offset < 0 || size_t(offset) >= file.size() ||
      skipSpace(rest.substr(end - rest.data())).substr(0, 5) != "%%EOF")
    throw StampRefusal("the PDF does not end with a startxref offset and %%EOF");
  std::string_view section = skipSpace(file.substr(size_t(offset)));
  if (section.substr(0, 4) != "xref" && (section.empty() || section[0] < '0' || section[0] > '9'))
    throw StampRefusal("the PDF's startxref does not point at a cross-reference section");
  return offset;
}

// Appends objects after the original bytes and closes them with a classic cross-reference section and
// trailer chained to the previous one.
class IncrementalUpdate {
 public:
  IncrementalUpdate(const std::vector<uint8_t>& original, int firstNewNumber)
      : bytes_(original), nextNumber_(firstNewNumber) {
    if (!bytes_.empty() && bytes_.back() != '\n') bytes_.push_back('\n');
  }

  void writeObject(QPDFObjGen id, const std::string& body) {
    offsets_[id.getObj()] = {bytes_.size(), id.getGen()};
    append(std::to_string(id.getObj()) + " " + std::to_string(id.getGen()) + " obj\n" + body + "\nendobj\n");
  }

  // Writes a new object and gives its number.
  int writeNewObject(const std::string& body) {
    int number = nextNumber_++;
    writeObject(QPDFObjGen(number, 0), body);
    return number;
  }

  // Writes a new stream object and gives its number. `entries` are the dictionary's entries but /Length.
  int writeStream(const std::string& entries, const std::string& data) {
    return writeNewObject("<< " + entries + (entries.empty() ? "" : " ") + "/Length " + std::to_string(data.size()) +
                          " >>\nstream\n" + data + "\nendstream");
  }

  std::vector<uint8_t> finish(const std::string& trailerEntries, long long previousOffset) {
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
    append(section);
    return std::move(bytes_);
  }

 private:
  void append(const std::string& text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }

  std::vector<uint8_t> bytes_;
  int nextNumber_;
  std::map<int, std::pair<size_t, int>> offsets_;  // object number -> (offset, generation)
};

void openPdf(QPDF& qpdf, const std::vector<uint8_t>& pdf) {
  qpdf.setSuppressWarnings(true);
  qpdf.processMemoryFile("PDF", reinterpret_cast<const char*>(pdf.data()), pdf.size());
}

// An object the update replaces must be one the file holds, not one qpdf made up while repairing it.
void requireStoredObject(QPDFObjectHandle object, const std::map<QPDFObjGen, QPDFXRefEntry>& crossReferences,
                         const char* what) {
  if (!object.isIndirect() || !object.isDictionary() || !crossReferences.count(object.getObjGen()))
    throw StampRefusal(std::string("the PDF's ") + what + " is not an object stored in the file");
}

// Writes the image XObject (with its soft mask if the image has any transparency) and gives its number.
int writeImage(IncrementalUpdate& update, const SplitImage& image) {
  std::string geometry = "/Type /XObject /Subtype /Image /Width " + std::to_string(image.width) + " /Height " +
                         std::to_string(image.height) + " /BitsPerComponent 8 /Filter /FlateDecode";
  std::string mask;
  if (!image.alpha.empty())
    mask = " /SMask " + reference(update.writeStream(geometry + " /ColorSpace /DeviceGray", deflate(image.alpha)));
  return update.writeStream(geometry + " /ColorSpace /DeviceRGB" + mask, deflate(image.rgb));
}

// The largest rectangle of the image's proportions that fits the one asked for, centred in it: a
// signature is never stretched.
PdfStampPlacement fittedPlacement(PdfStampPlacement asked, uint32_t pixelWidth, uint32_t pixelHeight) {
  double scale = std::min(asked.width / pixelWidth, asked.height / pixelHeight);
  PdfStampPlacement fitted = asked;
  fitted.width = pixelWidth * scale, fitted.height = pixelHeight * scale;
  fitted.x += (asked.width - fitted.width) / 2, fitted.y += (asked.height - fitted.height) / 2;
  return fitted;
}

// Replaces the page with one whose contents end by drawing the image into the rectangle. The original
// contents are wrapped in q ... Q so that whatever state they leave does not move the stamp.
void writeStampedPage(IncrementalUpdate& update, QPDFPageObjectHelper page, int imageNumber,
                      const PdfStampPlacement& placement) {
  QPDFObjectHandle resources = page.getAttribute("/Resources", false);  // inherited or indirect alike
  if (!resources.isDictionary()) resources = QPDFObjectHandle::newDictionary();
  QPDFObjectHandle xobjects = resources.getKey("/XObject");
  if (!xobjects.isDictionary()) xobjects = QPDFObjectHandle::newDictionary();
  std::string imageName;
  for (int suffix = 0; imageName.empty() || xobjects.hasKey("/" + imageName); ++suffix)
    imageName = "ScrivletStamp" + std::to_string(suffix);

  int saveState = update.writeStream("", "q\n");
  int drawImage = update.writeStream(
      "", "\nQ\nq " + pdfNumber(placement.width) + " 0 0 " + pdfNumber(placement.height) + " " +
              pdfNumber(placement.x) + " " + pdfNumber(placement.y) + " cm " + pdfName(imageName) + " Do Q\n");

  QPDFObjectHandle pageObject = page.getObjectHandle();
  std::string contents = "[" + reference(saveState);
  QPDFObjectHandle original = pageObject.getKey("/Contents");
  if (original.isArray()) {
    for (QPDFObjectHandle stream : original.getArrayAsVector()) contents += " " + stream.unparse();
  } else if (original.isStream() && original.isIndirect()) {
    contents += " " + original.unparse();
  }
  contents += " " + reference(drawImage) + "]";

  std::string mergedXObjects = unparseWith(xobjects, {{imageName, reference(imageNumber)}});
  update.writeObject(pageObject.getObjGen(),
                     unparseWith(pageObject, {{"Resources", unparseWith(resources, {{"XObject", mergedXObjects}})},
                                              {"Contents", contents}}));
}

// Writes the embedded file and the /Filespec dictionary that names it, and gives that dictionary's number.
int writeAttachment(IncrementalUpdate& update, const std::string& name, const std::string& mimeType,
                    const std::vector<uint8_t>& attachment) {
  std::string data(attachment.begin(), attachment.end());
  std::string subtype = mimeType.empty() ? "" : " /Subtype " + pdfName(mimeType);
  int file = update.writeStream("/Type /EmbeddedFile" + subtype + " /Params << /Size " +
                                    std::to_string(data.size()) + " >> /Filter /FlateDecode",
                                deflate(data));
  std::string title = QPDFObjectHandle::newUnicodeString(name).unparse();
  return update.writeNewObject("<< /Type /Filespec /F " + QPDFObjectHandle::newString(name).unparse() + " /UF " +
                               title + " /EF << /F " + reference(file) + " /UF " + reference(file) + " >> >>");
}

// Replaces the catalog with one whose embedded files name tree is a single sorted /Names array: the
// entries it had, flattened, plus this one (which replaces an entry of the same name).
void writeCatalogWithAttachment(IncrementalUpdate& update, QPDF& qpdf, QPDFObjectHandle catalog,
                                const std::string& name, int nameEntryNumber) {
  QPDFObjectHandle names = catalog.getKey("/Names");
  if (!names.isDictionary()) names = QPDFObjectHandle::newDictionary();
  std::map<std::string, std::string> files;  // UTF-8 key -> value as PDF text; std::map keeps the order
  QPDFObjectHandle tree = names.getKey("/EmbeddedFiles");
  if (tree.isDictionary())
    for (auto& [key, value] : QPDFNameTreeObjectHelper(tree, qpdf).getAsMap()) files[key] = value.unparse();
  files[name] = reference(nameEntryNumber);
  // Keys sorted as qpdf looks them up: by their UTF-8 text.
  std::string pairs;
  for (const auto& [key, value] : files)
    pairs += (pairs.empty() ? "" : " ") + QPDFObjectHandle::newUnicodeString(key).unparse() + " " + value;
  std::string embeddedFiles = "<< /Names [" + pairs + "] >>";
  update.writeObject(catalog.getObjGen(),
                     unparseWith(catalog, {{"Names", unparseWith(names, {{"EmbeddedFiles", embeddedFiles}})}}));
}

std::vector<uint8_t> stamp(const std::vector<uint8_t>& pdf, const std::vector<uint8_t>& png,
                           const PdfStampPlacement& placement, const std::string& attachmentName,
                           const std::string& attachmentMimeType, const std::vector<uint8_t>& attachment) {
  bool finite = std::isfinite(placement.x) && std::isfinite(placement.y) && std::isfinite(placement.width) &&
                std::isfinite(placement.height);
  if (!finite || !(placement.width > 0) || !(placement.height > 0))
    throw StampRefusal("the rectangle is not finite and positive");
  if (std::max({std::fabs(placement.x), std::fabs(placement.y), placement.width, placement.height}) > kMaxCoordinate)
    throw StampRefusal("the rectangle lies too far out");
  if (attachmentName.empty()) throw StampRefusal("the attachment has no name");
  SplitImage image = decodePng(png);
  long long previousOffset = lastCrossReferenceOffset(pdf);

  QPDF qpdf;
  openPdf(qpdf, pdf);
  if (qpdf.isEncrypted()) throw StampRefusal("the PDF is encrypted");
  std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(qpdf).getAllPages();
  if (placement.page < 1 || size_t(placement.page) > pages.size())
    throw StampRefusal("the PDF has no page " + std::to_string(placement.page) + " (it has " +
                       std::to_string(pages.size()) + ")");
  QPDFPageObjectHelper page = pages[size_t(placement.page - 1)];
  QPDFObjectHandle trailer = qpdf.getTrailer();
  QPDFObjectHandle catalog = trailer.getKey("/Root");
  std::map<QPDFObjGen, QPDFXRefEntry> crossReferences = qpdf.getXRefTable();
  requireStoredObject(page.getObjectHandle(), crossReferences, "page");
  requireStoredObject(catalog, crossReferences, "catalog");
  if (page.getObjectHandle().getObjGen() == catalog.getObjGen()) throw StampRefusal("the PDF's page is its catalog");

  // New objects are numbered from the trailer's /Size, or past the highest stored object if that is more.
  long long size = crossReferences.empty() ? 1 : crossReferences.rbegin()->first.getObj() + 1LL;
  if (QPDFObjectHandle declared = trailer.getKey("/Size"); declared.isInteger())
    size = std::max(size, declared.getIntValue());
  if (size > 8000000) throw StampRefusal("the PDF has too many objects");

  IncrementalUpdate update(pdf, int(size));
  int imageNumber = writeImage(update, image);
  writeStampedPage(update, page, imageNumber, fittedPlacement(placement, image.width, image.height));
  int nameEntryNumber = writeAttachment(update, attachmentName, attachmentMimeType, attachment);
  writeCatalogWithAttachment(update, qpdf, catalog, attachmentName, nameEntryNumber);

  std::string trailerEntries = "/Root " + catalog.unparse();
  if (QPDFObjectHandle info = trailer.getKey("/Info"); info.isDictionary())
    trailerEntries += " /Info " + info.unparse();
  if (QPDFObjectHandle id = trailer.getKey("/ID"); id.isArray()) trailerEntries += " /ID " + id.unparse();
  return update.finish(trailerEntries, previousOffset);
}

}  // namespace

std::optional<std::vector<uint8_t>> stampPdf(const std::vector<uint8_t>& pdf, const std::vector<uint8_t>& png,
                                             const PdfStampPlacement& placement, const std::string& attachmentName,
                                             const std::string& attachmentMimeType,
                                             const std::vector<uint8_t>& attachment, std::string* error) {
  std::string reason;
  try {
    return stamp(pdf, png, placement, attachmentName, attachmentMimeType, attachment);
  } catch (const StampRefusal& refusal) {
    reason = refusal.what();
  } catch (const std::exception& failure) {
    reason = std::string("the PDF cannot be read: ") + failure.what();
  } catch (...) {
    reason = "the PDF cannot be read";
  }
  if (error) *error = oneLine(reason);
  return std::nullopt;
}

std::optional<std::vector<uint8_t>> pdfAttachment(const std::vector<uint8_t>& pdf, const std::string& name) {
  try {
    QPDF qpdf;
    openPdf(qpdf, pdf);
    auto entry = QPDFEmbeddedFileDocumentHelper(qpdf).getEmbeddedFile(name);
    if (!entry) return std::nullopt;
    QPDFObjectHandle stream = entry->getEmbeddedFileStream();
    if (!stream.isStream()) return std::nullopt;
    std::shared_ptr<Buffer> data = stream.getStreamData();
    return std::vector<uint8_t>(data->getBuffer(), data->getBuffer() + data->getSize());
  } catch (...) {  // qpdf's exceptions for unreadable input, whatever their type
    return std::nullopt;
  }
}

}  // namespace scrivlet
