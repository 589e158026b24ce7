// Stamping a signature into an existing PDF: the incremental update's structure, the image on the
// rendered page, the attachment read back, and the inputs that are refused.
#include "evidence/pdf_stamp.h"

#include "output_support.h"

#include <cairo-pdf.h>
#include <cairo.h>
#include <gtest/gtest.h>
#ifndef POINTERHOLDER_TRANSITION
#define POINTERHOLDER_TRANSITION 4  // qpdf hands out std::shared_ptr
#endif
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <algorithm>
#include <array>
#include <cctype>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <locale>
#include <map>
#include <random>
#include <set>

namespace scrivlet {
namespace {

using Bytes = std::vector<uint8_t>;
using Rgb = std::array<int, 3>;

using test_support::failureOf;
using test_support::outputOf;
using test_support::pdfPageImage;
using test_support::readBytes;

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

std::string save(const std::string& name, const Bytes& bytes) {
  return test_support::writeOutput("pdf_stamp/" + name, bytes);
}

std::string qpdfCheckFailure(const std::string& path) { return failureOf("qpdf --check '" + path + "'"); }

// What poppler says while reading the file (it reports broken cross-references on stderr).
std::string popplerComplaints(const std::string& path) { return outputOf("pdfinfo '" + path + "' 2>&1 >/dev/null"); }

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<Bytes*>(closure)->insert(static_cast<Bytes*>(closure)->end(), data, data + length);
  return CAIRO_STATUS_SUCCESS;
}

// A two-page A4 document made by cairo: page 1 has a blue square from (50,50) to (150,150) measured from
// the top left and a line of text lower down, page 2 a green disc. Cairo's page content starts with a
// y-flipping cm that it never undoes, which a stamp must not inherit.
Bytes twoPageDocument() {
  Bytes pdf;
  cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &pdf, 595, 842);
  cairo_t* cr = cairo_create(surface);
  cairo_set_source_rgb(cr, 0, 0, 1);
  cairo_rectangle(cr, 50, 50, 100, 100);
  cairo_fill(cr);
  cairo_move_to(cr, 50, 400);
  cairo_set_font_size(cr, 24);
  cairo_show_text(cr, "A contract to be signed");
  cairo_show_page(cr);
  cairo_set_source_rgb(cr, 0, 0.6, 0);
  cairo_arc(cr, 300, 400, 80, 0, 2 * M_PI);
  cairo_fill(cr);
  cairo_show_page(cr);
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
  return pdf;
}

// A PNG of the given size with `draw` run on a transparent canvas.
Bytes pngOf(int width, int height, const std::function<void(cairo_t*)>& draw) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
  cairo_t* cr = cairo_create(surface);
  draw(cr);
  cairo_destroy(cr);
  Bytes png;
  cairo_surface_write_to_png_stream(surface, appendTo, &png);
  cairo_surface_destroy(surface);
  return png;
}

// The signature image: 100x40 transparent pixels with an opaque red bar over rows 10-19, columns 10-89,
// and a green square over rows 28-37, columns 2-11 (bottom left), so that a flip or a shift shows.
Bytes signaturePng() {
  return pngOf(100, 40, [](cairo_t* cr) {
    cairo_set_source_rgb(cr, 1, 0, 0);
    cairo_rectangle(cr, 10, 10, 80, 10);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0, 1, 0);
    cairo_rectangle(cr, 2, 28, 10, 10);
    cairo_fill(cr);
  });
}

Bytes opaqueBluePng() {
  return pngOf(10, 10, [](cairo_t* cr) {
    cairo_set_source_rgb(cr, 0, 0, 1);
    cairo_paint(cr);
  });
}

// The document run through the qpdf command line with `options`.
Bytes rewrittenByQpdf(const Bytes& pdf, const std::string& options, const std::string& name) {
  std::string in = save(name + "-in.pdf", pdf), out = SCRIVLET_TEST_OUTPUT_DIR "/pdf_stamp/" + name + ".pdf";
  EXPECT_EQ(failureOf("qpdf '" + in + "' '" + out + "' " + options), "") << options;
  return readBytes(out);
}

// The document with its objects in object streams and a cross-reference stream as its last section.
Bytes withObjectStreams(const Bytes& pdf) {
  Bytes rewritten = rewrittenByQpdf(pdf, "--object-streams=generate", "object-streams");
  EXPECT_NE(std::string(rewritten.begin(), rewritten.end()).find("/Type /XRef"), std::string::npos);
  return rewritten;
}

const Bytes kEarlierNotes = bytesOf("notes attached before signing\n");

// The document with notes.txt already attached (text/plain), as qpdf attaches files.
Bytes withEarlierAttachment(const Bytes& pdf) {
  std::string notes = save("notes.txt", kEarlierNotes);
  return rewrittenByQpdf(pdf, "--add-attachment '" + notes + "' --mimetype=text/plain --", "attached");
}

// A PDF written by hand: `objects` numbered from 1, the first one the catalog, with generation 0 unless
// `generations` (by object number) says otherwise, a classic cross-reference table, and no newline
// after %%EOF.
Bytes handMadePdf(const std::vector<std::string>& objects, const std::map<size_t, int>& generations = {}) {
  std::string pdf = "%PDF-1.4\n";
  std::string table = "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f\r\n";
  for (size_t number = 1; number <= objects.size(); ++number) {
    int generation = generations.count(number) ? generations.at(number) : 0;
    char entry[21];
    std::snprintf(entry, sizeof entry, "%010zu %05d n\r\n", pdf.size(), generation);
    table += entry;
    pdf += std::to_string(number) + " " + std::to_string(generation) + " obj\n" + objects[number - 1] + "\nendobj\n";
  }
  size_t tableOffset = pdf.size();
  pdf += table;
  pdf += "trailer\n<< /Size " + std::to_string(objects.size() + 1) + " /Root 1 0 R >>\nstartxref\n" +
         std::to_string(tableOffset) + "\n%%EOF";
  return bytesOf(pdf);
}

std::string streamObject(const std::string& entries, const std::string& data) {
  return "<< " + entries + " /Length " + std::to_string(data.size()) + " >>\nstream\n" + data + "\nendstream";
}

// A 200x100 pt page (object 3, generation 2) whose resources are inherited from its /Pages node and
// already name an XObject /ScrivletStamp0: a form that fills its 10x10 box with the current colour.
// The page draws it blue at the bottom left, under a `2 0 0 2 0 0 cm` left in force. The catalog's
// embedded files tree keeps a.txt in a kid node, not in the root.
Bytes handMadeDocument() {
  return handMadePdf({
      "<< /Type /Catalog /Pages 2 0 R /Names << /EmbeddedFiles << /Kids [6 0 R] >> >> >>",
      "<< /Type /Pages /Kids [3 2 R] /Count 1 /MediaBox [0 0 200 100] "
      "/Resources << /XObject << /ScrivletStamp0 5 0 R >> >> >>",
      "<< /Type /Page /Parent 2 0 R /Contents 4 0 R >>",
      streamObject("", "0 0 1 rg 2 0 0 2 0 0 cm /ScrivletStamp0 Do"),
      streamObject("/Type /XObject /Subtype /Form /BBox [0 0 10 10]", "0 0 10 10 re f"),
      "<< /Limits [(a.txt) (a.txt)] /Names [(a.txt) 7 0 R] >>",
      "<< /Type /Filespec /F (a.txt) /EF << /F 8 0 R >> >>",
      streamObject("/Type /EmbeddedFile", "older\n"),
  }, {{3, 2}});
}

// Attachment bytes that a text-mode or a truncating path would spoil: every byte value, NULs included.
Bytes binaryAttachment() {
  Bytes bytes;
  for (int i = 0; i < 3000; ++i) bytes.push_back(uint8_t((i * 7 + i / 256) % 256));
  return bytes;
}

std::optional<Bytes> stamp(const Bytes& pdf, const Bytes& png, PdfStampPlacement placement, const std::string& name,
                           const Bytes& attachment, std::string* error = nullptr) {
  return stampPdf(pdf, png, placement, name, "application/json", attachment, error);
}

// The offset after the file's last "startxref".
long long lastStartxref(const Bytes& pdf) {
  std::string text(pdf.begin(), pdf.end());
  size_t keyword = text.rfind("startxref");
  return keyword == std::string::npos ? -1 : std::atoll(text.c_str() + keyword + 9);
}

// The number after `key` and a space in `text`, or -1.
long long numberAfter(const std::string& text, const std::string& key) {
  size_t at = text.find(key + " ");
  return at == std::string::npos ? -1 : std::atoll(text.c_str() + at + key.size() + 1);
}

// A 20-byte cross-reference entry for an object in use: "oooooooooo ggggg n\r\n".
bool isInUseEntry(const std::string& entry) {
  auto digits = [&](size_t from, size_t count) {
    return std::all_of(entry.begin() + long(from), entry.begin() + long(from + count), ::isdigit);
  };
  return entry.size() == 20 && digits(0, 10) && entry[10] == ' ' && digits(11, 5) && entry.substr(16) == " n\r\n";
}

bool startsWith(const Bytes& bytes, const Bytes& prefix) {
  return bytes.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), bytes.begin());
}

// A pixel of a page drawn by pdftoppm (opaque, so its stored colour is the colour).
Rgb colourAt(const QnImage& page, int x, int y) {
  QnImage::Pixel p = page.pixelAt(x, y);
  return {p.r, p.g, p.b};
}

bool isRed(Rgb c) { return c[0] > 200 && c[1] < 60 && c[2] < 60; }
bool isGreen(Rgb c) { return c[1] > 150 && c[0] < 60 && c[2] < 60; }
bool isBlue(Rgb c) { return c[2] > 200 && c[0] < 60 && c[1] < 60; }
bool isWhite(Rgb c) { return c[0] > 245 && c[1] > 245 && c[2] > 245; }

// How many pixels differ between two rasters of one page, leaving out the box [left, right) x [top, bottom).
int differencesOutside(const QnImage& a, const QnImage& b, int left, int top, int right, int bottom) {
  if (a.pixelWidth() != b.pixelWidth() || a.pixelHeight() != b.pixelHeight()) return -1;
  int differences = 0;
  for (int y = 0; y < a.pixelHeight(); ++y)
    for (int x = 0; x < a.pixelWidth(); ++x)
      if ((x < left || x >= right || y < top || y >= bottom) && colourAt(a, x, y) != colourAt(b, x, y)) ++differences;
  return differences;
}

// Numeric formatting under a locale whose decimal separator is a comma, for as long as it lives.
class CommaDecimalLocale {
 public:
  CommaDecimalLocale() : previousC_(std::setlocale(LC_ALL, nullptr)) {
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8") && !std::setlocale(LC_ALL, "de_DE.utf8")) return;
    try {
      std::locale::global(std::locale(std::setlocale(LC_ALL, nullptr)));
    } catch (const std::exception&) {
    }
  }
  ~CommaDecimalLocale() {
    std::setlocale(LC_ALL, previousC_.c_str());
    std::locale::global(previousCpp_);
  }

 private:
  std::string previousC_;
  std::locale previousCpp_;
};

TEST(PdfStamp, KeepsTheOriginalBytesAsPrefixAndPassesQpdfCheck) {
  Bytes document = twoPageDocument();
  const std::vector<std::pair<std::string, Bytes>> inputs = {
      {"plain", document},
      {"object-streams", withObjectStreams(document)},
      {"attached", withEarlierAttachment(document)},
      {"hand-made", handMadeDocument()},
  };
  for (const auto& [name, original] : inputs) {
    SCOPED_TRACE(name);
    std::string error;
    std::optional<Bytes> stamped = stamp(original, signaturePng(), {1, 100, 50, 200, 80}, "signature.json",
                                         binaryAttachment(), &error);
    ASSERT_TRUE(stamped) << error;
    EXPECT_TRUE(startsWith(*stamped, original));
    size_t firstObject = original.size() + (original.back() == '\n' ? 0 : 1);
    EXPECT_EQ((*stamped)[firstObject - 1], '\n');  // the update starts on a line of its own
    std::string path = save("prefix-" + name + ".pdf", *stamped);
    EXPECT_EQ(qpdfCheckFailure(path), "");
    EXPECT_EQ(popplerComplaints(path), "");

    // What the update must hold, worked out from the original: the page and catalog replaced, and six
    // new objects from the old /Size on (image, its soft mask, two content streams, the file and its /Filespec).
    QPDF before;
    before.processMemoryFile("original", reinterpret_cast<const char*>(original.data()), original.size());
    int oldSize = before.getTrailer().getKey("/Size").getIntValueAsInt();
    QPDFObjGen catalog = before.getRoot().getObjGen();
    QPDFObjGen page = QPDFPageDocumentHelper(before).getAllPages()[0].getObjectHandle().getObjGen();
    std::map<int, int> expectedGenerations = {{page.getObj(), page.getGen()}, {catalog.getObj(), catalog.getGen()}};
    for (int number = oldSize; number < oldSize + 6; ++number) expectedGenerations[number] = 0;

    // Walk the new cross-reference section from the final startxref.
    std::string text(stamped->begin(), stamped->end());
    long long section = lastStartxref(*stamped);
    ASSERT_GT(section, static_cast<long long>(original.size()));
    ASSERT_EQ(text.compare(size_t(section), 5, "xref\n"), 0);
    std::map<int, int> generations;
    size_t at = size_t(section) + 5;
    int first = 0, count = 0, consumed = 0;
    while (std::sscanf(text.c_str() + at, "%d %d\n%n", &first, &count, &consumed) == 2 && count > 0) {
      at += size_t(consumed);
      for (int number = first; number < first + count; ++number, at += 20) {
        std::string entry = text.substr(at, 20);
        ASSERT_TRUE(isInUseEntry(entry)) << entry;
        int generation = std::stoi(entry.substr(11, 5));
        generations[number] = generation;
        std::string header = std::to_string(number) + " " + std::to_string(generation) + " obj";
        EXPECT_EQ(text.compare(std::stoull(entry.substr(0, 10)), header.size(), header), 0) << header;
      }
    }
    EXPECT_EQ(generations, expectedGenerations);
    std::string trailer = text.substr(at);
    ASSERT_EQ(trailer.rfind("trailer\n", 0), 0u) << trailer;
    EXPECT_EQ(numberAfter(trailer, "/Size"), oldSize + 6);
    EXPECT_EQ(numberAfter(trailer, "/Prev"), lastStartxref(original));
    std::string root = "/Root " + std::to_string(catalog.getObj()) + " " + std::to_string(catalog.getGen()) + " R";
    EXPECT_NE(trailer.find(root), std::string::npos) << trailer;
    EXPECT_TRUE(trailer.ends_with("%%EOF\n"));

    // The old trailer's /Info and /ID carry over.
    QPDF after;
    after.processMemoryFile("stamped", reinterpret_cast<const char*>(stamped->data()), stamped->size());
    for (const char* key : {"/Info", "/ID"})
      EXPECT_EQ(after.getTrailer().getKey(key).unparse(), before.getTrailer().getKey(key).unparse()) << key;
  }
}

TEST(PdfStamp, DrawsTheImageInTheRectangleOverThePageKeepingItsTransparency) {
  Bytes document = twoPageDocument();
  for (const auto& [name, original] : std::vector<std::pair<std::string, Bytes>>{
           {"plain", document}, {"object-streams", withObjectStreams(document)}}) {
    SCOPED_TRACE(name);
    std::optional<Bytes> stamped;
    {
      CommaDecimalLocale locale;  // a stamp written as "100,0000" would land elsewhere or nowhere
      // 200x80 pt at (100, 650): twice the image's size; its top edge is 842 - 730 = 112 px down.
      stamped = stamp(original, signaturePng(), {1, 100, 650, 200, 80}, "signature.json", binaryAttachment());
    }
    ASSERT_TRUE(stamped);
    std::string originalPath = save("drawn-" + name + "-original.pdf", original);
    std::string stampedPath = save("drawn-" + name + ".pdf", *stamped);
    QnImage before = pdfPageImage(originalPath, 1), after = pdfPageImage(stampedPath, 1);
    ASSERT_EQ(std::pair(after.pixelWidth(), after.pixelHeight()), std::pair(595, 842));

    EXPECT_TRUE(isRed(colourAt(after, 200, 142)));    // the bar: image rows 10-19 -> y 132-152, columns -> x 120-280
    EXPECT_TRUE(isRed(colourAt(after, 135, 142)));    // the opaque bar covers the blue square
    EXPECT_TRUE(isBlue(colourAt(after, 135, 120)));   // the image's transparent top lets the blue square show
    EXPECT_TRUE(isWhite(colourAt(after, 250, 120)));  // ... and the white page
    EXPECT_TRUE(isGreen(colourAt(after, 114, 178)));  // the green square sits at the bottom left: not flipped
    EXPECT_TRUE(isWhite(colourAt(after, 290, 178)));
    EXPECT_TRUE(isWhite(colourAt(after, 114, 196)) && isWhite(colourAt(after, 96, 178)) && isWhite(colourAt(after, 304, 142)));
    EXPECT_EQ(differencesOutside(before, after, 99, 111, 301, 193), 0);  // a pixel of slack for smoothing

    QnImage secondBefore = pdfPageImage(originalPath, 2), secondAfter = pdfPageImage(stampedPath, 2);
    EXPECT_GT(secondBefore.pixelWidth(), 0);
    EXPECT_EQ(differencesOutside(secondBefore, secondAfter, 0, 0, 0, 0), 0);
  }
}

TEST(PdfStamp, DrawsOnAPageWithInheritedResourcesAndLeavesItsOwnXObjectAlone) {
  Bytes original = handMadeDocument();
  std::optional<Bytes> stamped = stamp(original, signaturePng(), {1, 100, 20, 100, 40}, "b.txt", bytesOf("new"));
  ASSERT_TRUE(stamped);
  std::string path = save("inherited.pdf", *stamped);
  EXPECT_EQ(qpdfCheckFailure(path), "");
  QnImage page = pdfPageImage(path);
  ASSERT_EQ(std::pair(page.pixelWidth(), page.pixelHeight()), std::pair(200, 100));
  EXPECT_TRUE(isBlue(colourAt(page, 10, 90)));     // the page's own /ScrivletStamp0, doubled by its cm: 0-20 pt
  EXPECT_TRUE(isWhite(colourAt(page, 30, 90)));
  EXPECT_TRUE(isRed(colourAt(page, 150, 55)));     // image at scale 1, its top at 100 - 60 = 40 px down
  EXPECT_TRUE(isGreen(colourAt(page, 107, 73)));
  EXPECT_TRUE(isWhite(colourAt(page, 150, 45)));
  EXPECT_EQ(pdfAttachment(*stamped, "a.txt"), bytesOf("older\n"));  // flattened from the kid node
  EXPECT_EQ(pdfAttachment(*stamped, "b.txt"), bytesOf("new"));
}

TEST(PdfStamp, AttachesTheFileAndKeepsTheOnesAlreadyThere) {
  Bytes original = withEarlierAttachment(twoPageDocument());
  Bytes attachment = binaryAttachment();
  std::optional<Bytes> stamped = stamp(original, signaturePng(), {2, 10, 10, 50, 20}, "signature.json", attachment);
  ASSERT_TRUE(stamped);
  std::string path = save("attached-stamped.pdf", *stamped);

  EXPECT_EQ(pdfAttachment(*stamped, "signature.json"), attachment);
  EXPECT_EQ(pdfAttachment(*stamped, "notes.txt"), kEarlierNotes);
  EXPECT_EQ(pdfAttachment(*stamped, "absent.json"), std::nullopt);
  EXPECT_EQ(pdfAttachment(original, "signature.json"), std::nullopt);
  EXPECT_EQ(bytesOf(outputOf("qpdf --show-attachment=signature.json '" + path + "'")), attachment);
  EXPECT_EQ(bytesOf(outputOf("qpdf --show-attachment=notes.txt '" + path + "'")), kEarlierNotes);

  QPDF reader;
  reader.processFile(path.c_str());
  QPDFEmbeddedFileDocumentHelper files(reader);
  EXPECT_EQ(files.getEmbeddedFiles().size(), 2u);
  QPDFObjectHandle file = files.getEmbeddedFile("signature.json")->getEmbeddedFileStream().getDict();
  EXPECT_EQ(file.getKey("/Subtype").getName(), "/application/json");
  EXPECT_EQ(file.getKey("/Params").getKey("/Size").getIntValue(), 3000);

  // Attaching under a name already there replaces that file.
  std::optional<Bytes> replaced = stamp(original, signaturePng(), {1, 10, 10, 50, 20}, "notes.txt", bytesOf("v2"));
  ASSERT_TRUE(replaced);
  EXPECT_EQ(pdfAttachment(*replaced, "notes.txt"), bytesOf("v2"));
  QPDF replacedReader;
  replacedReader.processMemoryFile("replaced", reinterpret_cast<const char*>(replaced->data()), replaced->size());
  EXPECT_EQ(QPDFEmbeddedFileDocumentHelper(replacedReader).getEmbeddedFiles().size(), 1u);
}

TEST(PdfStamp, StampsTwiceAsTwoIncrements) {
  Bytes original = twoPageDocument();
  std::optional<Bytes> once = stamp(original, signaturePng(), {1, 100, 650, 200, 80}, "first.json", bytesOf("1"));
  ASSERT_TRUE(once);
  // An opaque square image (no soft mask) on the same page, asked into 100x50 pt at (400, 100): kept
  // square, 50x50 pt centred in the rectangle, so x 425-475, y 692-742 px.
  std::optional<Bytes> twice = stamp(*once, opaqueBluePng(), {1, 400, 100, 100, 50}, "second.json", bytesOf("2"));
  ASSERT_TRUE(twice);
  EXPECT_TRUE(startsWith(*twice, *once));
  std::string path = save("twice.pdf", *twice);
  EXPECT_EQ(qpdfCheckFailure(path), "");
  EXPECT_EQ(popplerComplaints(path), "");
  std::string text(twice->begin(), twice->end());
  EXPECT_NE(text.find("/Prev " + std::to_string(lastStartxref(*once)) + " ", once->size()), std::string::npos);

  EXPECT_EQ(pdfAttachment(*twice, "first.json"), bytesOf("1"));
  EXPECT_EQ(pdfAttachment(*twice, "second.json"), bytesOf("2"));
  QnImage page = pdfPageImage(path);
  ASSERT_EQ(page.pixelWidth(), 595);
  EXPECT_TRUE(isRed(colourAt(page, 200, 142)));  // the first image keeps its own resource name
  EXPECT_TRUE(isGreen(colourAt(page, 114, 178)));
  EXPECT_TRUE(isBlue(colourAt(page, 430, 717)) && isBlue(colourAt(page, 470, 717)));
  EXPECT_TRUE(isWhite(colourAt(page, 450, 687)) && isWhite(colourAt(page, 410, 717)) && isWhite(colourAt(page, 490, 717)));
}

TEST(PdfStamp, RefusesWhatItCannotStampWithAReason) {
  Bytes document = twoPageDocument();
  Bytes png = signaturePng();
  std::mt19937 random(7);
  Bytes noise(4096);
  for (uint8_t& byte : noise) byte = uint8_t(random());
  Bytes firstHalf(document.begin(), document.begin() + long(document.size() / 2));
  Bytes cutInItsLastLine(document.begin(), document.end() - 3);
  Bytes noPages = handMadePdf({"<< /Type /Catalog /Pages 2 0 R >>", "<< /Type /Pages /Kids [] /Count 0 >>"});
  Bytes lockedWithEmptyPassword = rewrittenByQpdf(document, "--encrypt '' owner 256 --", "encrypted-open");
  Bytes lockedWithPassword = rewrittenByQpdf(document, "--encrypt secret owner 256 --", "encrypted-locked");
  const double nan = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();

  struct Case {
    std::string what;
    Bytes pdf, png;
    PdfStampPlacement placement;
    std::string reasonMentions;
  };
  const PdfStampPlacement fine{1, 10, 10, 100, 40};
  const std::vector<Case> cases = {
      {"random bytes", noise, png, fine, ""},
      {"no bytes", {}, png, fine, ""},
      {"first half of a PDF", firstHalf, png, fine, ""},
      {"PDF cut in its last line", cutInItsLastLine, png, fine, ""},
      {"PDF without pages", noPages, png, fine, "page"},
      {"page 0", document, png, {0, 10, 10, 100, 40}, "page"},
      {"page 99", document, png, {99, 10, 10, 100, 40}, "page"},
      {"page -1", document, png, {-1, 10, 10, 100, 40}, "page"},
      {"largest page number", document, png, {std::numeric_limits<int>::max(), 10, 10, 100, 40}, "page"},
      {"NaN x", document, png, {1, nan, 10, 100, 40}, "rectangle"},
      {"infinite y", document, png, {1, 10, infinity, 100, 40}, "rectangle"},
      {"negative width", document, png, {1, 10, 10, -100, 40}, "rectangle"},
      {"zero height", document, png, {1, 10, 10, 100, 0}, "rectangle"},
      {"NaN height", document, png, {1, 10, 10, 100, nan}, "rectangle"},
      {"image of random bytes", document, noise, fine, "PNG"},
      {"no image", document, {}, fine, "PNG"},
      {"first half of a PNG", document, Bytes(png.begin(), png.begin() + long(png.size() / 2)), fine, "PNG"},
      {"encrypted, empty user password", lockedWithEmptyPassword, png, fine, "encrypted"},
      {"encrypted, user password", lockedWithPassword, png, fine, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string error;
    std::optional<Bytes> stamped;
    EXPECT_NO_THROW(stamped = stamp(c.pdf, c.png, c.placement, "signature.json", bytesOf("{}"), &error));
    EXPECT_FALSE(stamped);
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(error.find_first_of("\r\n"), std::string::npos) << error;
    EXPECT_NE(error.find(c.reasonMentions), std::string::npos) << error;
  }
  std::optional<Bytes> withoutErrorOutput;
  EXPECT_NO_THROW(withoutErrorOutput = stamp(noise, png, fine, "signature.json", {}, nullptr));
  EXPECT_FALSE(withoutErrorOutput);

  // Reading attachments back from the same kinds of input gives nothing.
  Bytes stamped = *stamp(document, png, fine, "signature.json", bytesOf("{}"));
  Bytes stampedFirstHalf(stamped.begin(), stamped.begin() + long(stamped.size() / 2));
  for (const Bytes& pdf : {noise, Bytes{}, firstHalf, stampedFirstHalf, lockedWithPassword}) {
    std::optional<Bytes> attachment = bytesOf("unset");
    EXPECT_NO_THROW(attachment = pdfAttachment(pdf, "signature.json"));
    EXPECT_EQ(attachment, std::nullopt);
  }
}

}  // namespace
}  // namespace scrivlet
