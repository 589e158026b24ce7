// PDF signatures carrying sealed evidence, checked by the tools users trust (pdfsig, qpdf --check,
// openssl cms, pdftoppm) and by verifyPdf: one and two signers, changes after signing, chains and
// certificates, a time-stamp from a local authority, and what is refused.
#include <scrivlet/pdf_signature.h>
#include <scrivlet/stroke_json.h>

#include "evidence/evidence_file.h"
#include "evidence/pdf_revisions.h"
#include "output_support.h"
#include "test_certificates.h"

#include <cairo-pdf.h>
#include <cairo.h>
#include <gtest/gtest.h>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <signal.h>
#include <sys/resource.h>
#include <zlib.h>

#include <cmath>
#include <ctime>
#include <functional>

namespace scrivlet {
namespace {

using Bytes = std::vector<uint8_t>;
using Rgb = std::array<int, 3>;
using Verdict = EvidenceVerdict;
using test_support::failureOf;
using test_support::outputOf;
using test_support::TestCertificates;
using test_support::TestIdentity;

std::string textOf(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }
std::string save(const std::string& name, std::string_view bytes) {
  return test_support::writeOutput("pdf_signature/" + name, bytes);
}

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

// A two-page A4 contract made by cairo: page 1 has a blue square from (50,50) to (150,150) from the
// top left and a line of text, page 2 a green disc.
std::string contract() {
  std::string pdf;
  cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &pdf, 595, 842);
  cairo_t* cr = cairo_create(surface);
  cairo_set_source_rgb(cr, 0, 0, 1);
  cairo_rectangle(cr, 50, 50, 100, 100);
  cairo_fill(cr);
  cairo_move_to(cr, 50, 400);
  cairo_set_font_size(cr, 24);
  cairo_show_text(cr, "Total: EUR 1,200.00");
  cairo_show_page(cr);
  cairo_set_source_rgb(cr, 0, 0.6, 0);
  cairo_arc(cr, 300, 400, 80, 0, 2 * M_PI);
  cairo_fill(cr);
  cairo_show_page(cr);
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
  return pdf;
}

// The signature image: 100x40 transparent pixels with an opaque red bar over rows 10-19, columns 10-89,
// and a green square over rows 28-37, columns 2-11 (bottom left), so that a flip or a shift shows.
Bytes signaturePng() {
  QnBitmapContext bitmap({100, 40}, 1);
  bitmap.context().setFillColor(QnColor(1, 0, 0, 1));
  bitmap.context().fillRect(makeRect(10, 10, 80, 10));
  bitmap.context().setFillColor(QnColor(0, 1, 0, 1));
  bitmap.context().fillRect(makeRect(2, 28, 10, 10));
  return bitmap.makeImage().encodePNG();
}

// The document run through the qpdf command line with `options`.
std::string rewrittenByQpdf(const std::string& pdf, const std::string& options, const std::string& name) {
  std::string in = save(name + "-in.pdf", pdf), out = SCRIVLET_TEST_OUTPUT_DIR "/pdf_signature/" + name + ".pdf";
  EXPECT_EQ(failureOf("qpdf '" + in + "' '" + out + "' " + options), "") << options;
  return test_support::readText(out);
}

// A revision appended to the PDF by hand: `write` adds its objects.
std::string withRevision(const std::string& pdf, const std::function<void(QPDF&, pdf::IncrementalUpdate&)>& write) {
  QPDF qpdf;
  pdf::open(qpdf, pdf);
  pdf::IncrementalUpdate update(pdf, qpdf.getTrailer().getKey("/Size").getIntValueAsInt());
  write(qpdf, update);
  return update.finish("/Root " + qpdf.getRoot().unparse(), *pdf::lastCrossReferenceOffset(pdf));
}

// Paints "EUR 12,000.00" in red over the first page's total.
std::string withPaintingRevision(const std::string& pdf) {
  return withRevision(pdf, [](QPDF& qpdf, pdf::IncrementalUpdate& update) {
    QPDFObjectHandle page = QPDFPageDocumentHelper(qpdf).getAllPages()[0].getObjectHandle();
    int paint =
        update.writeStream("", "q 1 1 1 rg 45 420 300 30 re f 1 0 0 rg BT /F9 24 Tf 50 442 Td (EUR 12,000.00) Tj ET Q");
    std::string contents = "[" + page.getKey("/Contents").unparse() + " " + pdf::reference(paint) + "]";
    update.writeObject(page.getObjGen(), pdf::unparseWith(page, {{"Contents", contents}}));
  });
}

class PdfSignature : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { certificates = new TestCertificates; }
  static void TearDownTestSuite() { delete certificates; }

  static std::string sealedFor(const std::string& pdf, const std::string& hash = "A1B2C3D4", double firstX = 10) {
    EvidenceSealRequest request;
    request.setRecord(test_support::signingRecord(firstX, hash, signaturePng()));
    request.setDocumentSha256(documentSha256Of(pdf));
    request.setDocumentSize(pdf.size());
    request.setExaminerCertificate(certificates->ecExaminer.certificate);
    auto sealed = sealEvidence(request);
    EXPECT_TRUE(sealed) << sealed.error().message();
    return sealed.value_or("");
  }

  static PdfSignatureRequest request(const std::string& sealed, const TestIdentity& signer = certificates->signer) {
    PdfSignatureRequest r;
    r.setRect(100, 650, 200, 80);
    r.setSealedEvidence(sealed);
    r.setSigner({signer.certificate, signer.key, certificates->intermediate.certificate});
    return r;
  }

  static std::string signedPdf(const std::string& pdf, PdfSignatureRequest r) {
    auto result = signPdf(pdf, r);
    EXPECT_TRUE(result) << result.error().message();
    return result ? textOf(*result) : "";
  }

  static EvidenceVerifyOptions trusted(bool allowLaterChanges = false) {
    return {certificates->root.certificate, allowLaterChanges};
  }

  static inline TestCertificates* certificates = nullptr;
};

TEST_F(PdfSignature, SignsAsAnIncrementalUpdateThatPdfsigQpdfAndOpenSslAccept) {
  std::string document = contract();
  const std::vector<std::pair<std::string, std::string>> inputs{
      {"plain", document},
      {"object-streams", rewrittenByQpdf(document, "--object-streams=generate", "object-streams")},
      {"attached", rewrittenByQpdf(document, "--add-attachment " + save("notes.txt", "notes\n") + " --", "attached")}};
  std::string root = save("root.pem", certificates->root.certificate);
  for (const auto& [name, original] : inputs) {
    SCOPED_TRACE(name);
    std::string sealed = sealedFor(original), result = signedPdf(original, request(sealed));
    ASSERT_EQ(result.compare(0, original.size(), original), 0);  // an incremental update
    std::string path = save(name + ".pdf", result);
    EXPECT_EQ(failureOf("qpdf --check " + path + " >/dev/null"), "");
    std::string pdfsig = outputOf("pdfsig " + path);
    EXPECT_NE(pdfsig.find("Signature is Valid."), std::string::npos) << pdfsig;
    EXPECT_NE(pdfsig.find("Total document signed"), std::string::npos) << pdfsig;
    EXPECT_NE(pdfsig.find("Signature Type: ETSI.CAdES.detached"), std::string::npos) << pdfsig;

    // openssl over the byte range: the signature, its chain to the root, signing-certificate-v2.
    size_t gap = result.rfind("/Contents <"), gapStart = gap + 10, gapEnd = result.find('>', gapStart) + 1;
    std::string der;
    for (size_t i = gapStart + 1; i + 1 < gapEnd; i += 2) der += char(std::stoi(result.substr(i, 2), nullptr, 16));
    std::string signature = save("signature.der", der),
                content = save("signed-bytes.bin", result.substr(0, gapStart) + result.substr(gapEnd));
    EXPECT_EQ(failureOf("openssl cms -verify -binary -inform DER -in " + signature + " -content " + content +
                        " -CAfile " + root + " -purpose any -out /dev/null"),
              "");
    std::string structure = outputOf("openssl cms -cmsout -print -inform DER -in " + signature);
    EXPECT_NE(structure.find("id-smime-aa-signingCertificateV2"), std::string::npos);
    EXPECT_EQ(structure.find("signingTime"), std::string::npos);  // PAdES keeps it in /M
    EXPECT_NE(structure.find("sha256"), std::string::npos);
    EXPECT_NE(structure.find("CN=Test Intermediate"), std::string::npos);  // the chain travels along

    // The embedded sealed file is the one signed with (whose envelope openssl opens: evidence_test.cpp).
    EXPECT_EQ(outputOf("qpdf --show-attachment=scrivlet-evidence-Signature1.json " + path), sealed);

    PdfVerification report = verifyPdf(result, trusted());
    ASSERT_EQ(report.signatures().size(), 1u);
    EXPECT_EQ(report.verdict(), Verdict::Valid) << report.reason();
    EXPECT_TRUE(report.signatures()[0].coversWholeDocument());
    EXPECT_EQ(report.signatures()[0].signer(), "/CN=Tablet App");
    ASSERT_TRUE(report.signatures()[0].evidence());
    EXPECT_EQ(report.signatures()[0].evidence()->hash(), "A1B2C3D4");
  }
}

// A pixel of a page drawn by pdftoppm.
Rgb colourAt(const QnImage& page, int x, int y) {
  QnImage::Pixel p = page.pixelAt(x, y);
  return {p.r, p.g, p.b};
}
bool isRed(Rgb c) { return c[0] > 200 && c[1] < 60 && c[2] < 60; }
bool isGreen(Rgb c) { return c[1] > 150 && c[0] < 60 && c[2] < 60; }
bool isBlue(Rgb c) { return c[2] > 200 && c[0] < 60 && c[1] < 60; }
bool isWhite(Rgb c) { return c[0] > 245 && c[1] > 245 && c[2] > 245; }
bool isDark(Rgb c) { return c[0] < 100 && c[1] < 100 && c[2] < 100; }

TEST_F(PdfSignature, TheWidgetShowsTheSealedImageInTheRectangleWithTheTextAsked) {
  std::string document = contract();
  PdfSignatureRequest asked = request(sealedFor(document));  // x 100-300, 112-192 px down
  std::string plain = save("widget.pdf", signedPdf(document, asked));
  QnImage page = test_support::pdfPageImage(plain, 1);
  ASSERT_EQ(std::pair(page.pixelWidth(), page.pixelHeight()), std::pair(595, 842));
  // The image fits 200x80 pt at twice its size: the red bar at rows 132-152, columns 120-280.
  EXPECT_TRUE(isRed(colourAt(page, 200, 142)) && isRed(colourAt(page, 135, 142)));
  EXPECT_TRUE(isBlue(colourAt(page, 135, 120)));   // its transparent top lets the blue square show
  EXPECT_TRUE(isGreen(colourAt(page, 114, 178)));  // the green square at the bottom left: not flipped
  EXPECT_TRUE(isWhite(colourAt(page, 290, 178)) && isWhite(colourAt(page, 250, 120)));

  // With the name, date and hash: three lines of 8 pt text along the bottom, the image above them.
  asked.setSignerName("Ada Lovelace");
  asked.setShowDate(true);
  asked.setShowHash(true);
  std::string withText = save("widget-text.pdf", signedPdf(document, asked));
  QnImage texted = test_support::pdfPageImage(withText, 1);
  int darkInText = 0, darkAboveText = 0;
  for (int y = 112; y < 192; ++y)
    for (int x = 100; x < 300; ++x) (y >= 162 ? darkInText : darkAboveText) += isDark(colourAt(texted, x, y));
  EXPECT_GT(darkInText, 150);
  EXPECT_EQ(darkAboveText, 0);
  std::string text = outputOf("pdftotext -f 1 -l 1 " + withText + " -");
  EXPECT_NE(text.find("Ada Lovelace"), std::string::npos) << text;
  EXPECT_NE(text.find("Hash A1B2C3D4"), std::string::npos) << text;
}

TEST_F(PdfSignature, TwoSignersEachWithTheirOwnEvidenceAreBothValid) {
  std::string document = contract();
  std::string once = signedPdf(document, request(sealedFor(document, "AAAA1111")));
  PdfSignatureRequest second = request(sealedFor(once, "BBBB2222", 60), certificates->ecSigner);
  second.setRect(second.x(), 500, second.width(), second.height());
  std::string twice = signedPdf(once, second);
  std::string path = save("two-signers.pdf", twice);
  EXPECT_EQ(failureOf("qpdf --check " + path + " >/dev/null"), "");
  std::string pdfsig = outputOf("pdfsig " + path);
  size_t valid = 0;
  for (size_t at = pdfsig.find("Signature is Valid."); at != std::string::npos;
       at = pdfsig.find("Signature is Valid.", at + 1))
    ++valid;
  EXPECT_EQ(valid, 2u) << pdfsig;

  PdfVerification report = verifyPdf(twice, trusted());
  EXPECT_EQ(report.verdict(), Verdict::Valid) << report.reason();
  ASSERT_EQ(report.signatures().size(), 2u);
  EXPECT_EQ(report.signatures()[0].field(), "Signature1");
  EXPECT_FALSE(report.signatures()[0].coversWholeDocument());
  EXPECT_EQ(report.signatures()[0].laterRevisions(), 1u);
  EXPECT_EQ(report.signatures()[1].signer(), "/CN=Tablet App EC");
  EXPECT_EQ(report.signatures()[0].evidence()->hash(), "AAAA1111");
  EXPECT_EQ(report.signatures()[1].evidence()->hash(), "BBBB2222");
  for (const char* field : {"Signature1", "Signature2"}) {
    auto opened = openPdfEvidence(twice, field, certificates->ecExaminer.key, trusted());
    ASSERT_TRUE(opened) << opened.error().message();
    EXPECT_EQ(opened->hash(), std::string(field) == "Signature1" ? "AAAA1111" : "BBBB2222");
  }
}

TEST_F(PdfSignature, AnyRevisionAfterASignatureButASignatureIsAModificationAfterSigning) {
  std::string document = contract();
  std::string signedOnce = signedPdf(document, request(sealedFor(document)));
  std::string painted = withPaintingRevision(signedOnce);  // (pdfsig's view of it: scrivlet_tool_test.sh)
  PdfVerification report = verifyPdf(painted, trusted());
  EXPECT_EQ(report.verdict(), Verdict::ModifiedAfterSigning);
  EXPECT_NE(report.reason().find("revision 3: not signed"), std::string::npos) << report.reason();
  EXPECT_EQ(verifyPdf(painted, trusted(true)).verdict(), Verdict::Valid);

  // A later revision that replaces the sealed file: reported, and the signed revision's is the one read.
  std::string replacement = sealedFor(document, "EVIL0000", 90);
  std::string replaced = withRevision(signedOnce, [&](QPDF&, pdf::IncrementalUpdate& update) {
    int file = update.writeStream("/Type /EmbeddedFile", replacement);
    int spec = update.writeNewObject("<< /Type /Filespec /F (scrivlet-evidence-Signature1.json) /EF << /F " +
                                     pdf::reference(file) + " >> >>");
    QPDF qpdf;
    pdf::open(qpdf, signedOnce);
    QPDFObjectHandle catalog = qpdf.getRoot();
    update.writeObject(
        catalog.getObjGen(),
        pdf::unparseWith(catalog, {{"Names", "<< /EmbeddedFiles << /Names [(scrivlet-evidence-Signature1.json) " +
                                                 pdf::reference(spec) + "] >> >>"}}));
  });
  report = verifyPdf(replaced, trusted());
  EXPECT_EQ(report.verdict(), Verdict::ModifiedAfterSigning);
  auto opened = openPdfEvidence(replaced, "", certificates->ecExaminer.key, trusted(true));
  ASSERT_TRUE(opened) << opened.error().message();
  EXPECT_EQ(opened->hash(), "A1B2C3D4");

  // A second signature whose revision also paints over the page is no excuse.
  std::string paintedThenSigned = signedPdf(painted, request(sealedFor(painted)));
  report = verifyPdf(paintedThenSigned, trusted());
  EXPECT_EQ(report.verdict(), Verdict::ModifiedAfterSigning);
  EXPECT_EQ(report.signatures().back().verdict(), Verdict::Valid);
  // The revisions are found through the cross-reference chain, not by counting %%EOF: one added in a
  // comment is no revision.
  std::string spoofed = signedOnce;
  spoofed.insert(document.size() + 1, "%%EOF\n");
  EXPECT_NE(verifyPdf(spoofed, trusted()).verdict(), Verdict::Valid);
  EXPECT_EQ(*pdf::revisionEnds(signedOnce), (std::vector<size_t>{document.size(), signedOnce.size()}));
}

TEST_F(PdfSignature, CertificatesAreCheckedWhenSigningAndWhenVerifying) {
  std::string document = contract(), sealed = sealedFor(document);
  for (const TestIdentity* signer :
       {&certificates->expiredSigner, &certificates->codeSigner, &certificates->tlsClient}) {
    Error error = signPdf(document, request(sealed, *signer)).error();
    EXPECT_EQ(error.code(), ErrorCode::CertificateRejected) << error.message();
  }
  PdfSignatureRequest lookAlike = request(sealed, certificates->lookAlike);
  lookAlike.setSigner({certificates->lookAlike.certificate, certificates->lookAlike.key,
                       certificates->strangerRoot.certificate});
  std::string result = signedPdf(document, lookAlike);
  PdfVerification report = verifyPdf(result, trusted());
  EXPECT_EQ(report.verdict(), Verdict::Untrusted);
  EXPECT_NE(report.reason().find("unknown issuer"), std::string::npos) << report.reason();
  // (No trust given, an unsigned PDF and an unreadable one: the tool's verdicts, scrivlet_tool_test.sh.)
}

// A time-stamping authority on 127.0.0.1, answered by OpenSSL's ts command, for as long as it lives.
class LocalTimeStampAuthority {
 public:
  explicit LocalTimeStampAuthority(const TestCertificates& certificates) {
    std::string dir = SCRIVLET_TEST_OUTPUT_DIR "/pdf_signature/tsa/";
    std::filesystem::create_directories(dir);
    test_support::writeOutput("pdf_signature/tsa/tsa.pem", certificates.timeStamping.certificate);
    test_support::writeOutput("pdf_signature/tsa/tsa.key", certificates.timeStamping.key);
    test_support::writeOutput("pdf_signature/tsa/serial", std::string("01\n"));
    test_support::writeOutput(
        "pdf_signature/tsa/tsa.cnf",
        "[ tsa ]\ndefault_tsa = local\n[ local ]\nserial = " + dir +
            "serial\n"
            "crypto_device = builtin\nsigner_cert = " +
            dir + "tsa.pem\nsigner_key = " + dir +
            "tsa.key\nsigner_digest = sha256\ndefault_policy = 1.2.3.4.1\n"
            "digests = sha256, sha384, sha512\naccuracy = secs:1\nordering = yes\ntsa_name = yes\n"
            "ess_cert_id_chain = no\ness_cert_id_alg = sha256\n");
    log = dir + "tokens.txt";
    std::filesystem::remove(log);
    server = popen(("exec python3 " SCRIVLET_TEST_SOURCE_DIR "/tsa_server.py " + dir + "tsa.cnf " + log).c_str(), "r");
    char line[64] = "";
    int port = 0;
    if (server && fgets(line, sizeof line, server) && std::sscanf(line, "%d %d", &port, &pid) == 2)
      url = "http://127.0.0.1:" + std::to_string(port);
  }
  ~LocalTimeStampAuthority() {
    if (pid > 0) kill(pid, SIGTERM);
    if (server) pclose(server);
  }
  // The time of the last token given, as ISO 8601 UTC, from `openssl ts -reply -text`.
  std::string lastTokenTime() const {
    std::string text = test_support::readText(log);
    size_t at = text.rfind("Time stamp: ");
    struct tm when {};
    if (at == std::string::npos || !strptime(text.c_str() + at + 12, "%b %d %H:%M:%S %Y", &when)) return "";
    char iso[32];
    strftime(iso, sizeof iso, "%Y-%m-%dT%H:%M:%SZ", &when);
    return iso;
  }
  std::string url, log;

 private:
  FILE* server = nullptr;
  int pid = 0;
};

TEST_F(PdfSignature, ATimeStampFromALocalAuthorityMakesBaselineBTAndGivesTheSigningTime) {
  LocalTimeStampAuthority authority(*certificates);
  ASSERT_FALSE(authority.url.empty());
  std::string document = contract();
  PdfSignatureRequest asked = request(sealedFor(document));
  asked.setTimeStampUrl(authority.url);
  std::string result = signedPdf(document, asked);
  std::string path = save("time-stamped.pdf", result);
  std::string pdfsig = outputOf("pdfsig " + path);
  EXPECT_NE(pdfsig.find("Signature is Valid."), std::string::npos) << pdfsig;
  PdfVerification report = verifyPdf(result, trusted());
  ASSERT_EQ(report.signatures().size(), 1u);
  EXPECT_EQ(report.verdict(), Verdict::Valid) << report.reason();
  EXPECT_TRUE(report.signatures()[0].timeStamped());
  std::string tokenTime = authority.lastTokenTime();
  EXPECT_FALSE(tokenTime.empty());
  EXPECT_EQ(report.signatures()[0].signingTime(), tokenTime);  // the token's, two seconds after signing

  Error error;
  asked.setTimeStampUrl("http://127.0.0.1:9/");  // nobody answers there
  error = signPdf(document, asked).error();
  EXPECT_EQ(error.code(), ErrorCode::TimeStampFailed) << error.message();
}

TEST_F(PdfSignature, EmbeddedFilesAreReadNoLargerThanTheirLimit) {
  // 300 MiB of zeros deflated to about 300 KB, attached to a PDF.
  std::string zeros(size_t(1) << 20, '\0'), packed;
  z_stream stream{};
  deflateInit(&stream, Z_BEST_SPEED);
  std::string buffer(1 << 16, '\0');
  for (int block = 0; block < 300; ++block) {
    stream.next_in = reinterpret_cast<Bytef*>(zeros.data()), stream.avail_in = uInt(zeros.size());
    do {
      stream.next_out = reinterpret_cast<Bytef*>(buffer.data()), stream.avail_out = uInt(buffer.size());
      deflate(&stream, block == 299 ? Z_FINISH : Z_NO_FLUSH);
      packed.append(buffer.data(), buffer.size() - stream.avail_out);
    } while (stream.avail_out == 0);
  }
  deflateEnd(&stream);
  std::string bomb = withRevision(contract(), [&](QPDF& qpdf, pdf::IncrementalUpdate& update) {
    int file = update.writeStream("/Type /EmbeddedFile /Filter /FlateDecode", packed);
    int spec = update.writeNewObject("<< /Type /Filespec /F (bomb.json) /EF << /F " + pdf::reference(file) + " >> >>");
    QPDFObjectHandle catalog = qpdf.getRoot();
    update.writeObject(catalog.getObjGen(),
                       pdf::unparseWith(catalog, {{"Names", "<< /EmbeddedFiles << /Names [(bomb.json) " +
                                                                pdf::reference(spec) + "] >> >>"}}));
  });
  QPDF qpdf;
  pdf::open(qpdf, bomb);
  struct rusage before {
  }, after{};
  getrusage(RUSAGE_SELF, &before);
  std::string reason;
  EXPECT_FALSE(pdf::boundedEmbeddedFile(qpdf, "bomb.json", size_t(256) << 20, &reason));
  getrusage(RUSAGE_SELF, &after);
  EXPECT_NE(reason.find("inflates to more than"), std::string::npos) << reason;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // a sanitizer keeps freed memory
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 300 * 1024);  // kB: no more than the limit was kept
#endif
}

TEST_F(PdfSignature, RefusesWhatItCannotSignWithACodeAndAReason) {
  std::string document = contract(), sealed = sealedFor(document);
  EvidenceFile forgedImage = *evidenceFileFromJson(sealed, nullptr);
  forgedImage.image[forgedImage.image.size() - 20] ^= 1;
  const double nan = std::nan("");
  struct Case {
    std::string what;
    std::string pdf;
    std::function<void(PdfSignatureRequest&)> change;
    ErrorCode code;
    std::string mentions;
  };
  const std::vector<Case> cases{
      {"random bytes", "not a PDF at all", [](auto&) {}, ErrorCode::NotThisDocument, "not the document"},
      {"evidence for another PDF", document + " ", [](auto&) {}, ErrorCode::NotThisDocument,
       "not the document"},
      {"image replaced in the sealed file", document,
       [&](auto& r) { r.setSealedEvidence(evidenceFileToJson(forgedImage)); }, ErrorCode::Tampered, "image"},
      // (Every other tampered part: evidence_test.cpp.)
      {"page 3", document, [](auto& r) { r.setPage(3); }, ErrorCode::InvalidArgument, "no page 3 (it has 2)"},
      {"NaN width", document, [&](auto& r) { r.setRect(r.x(), r.y(), nan, r.height()); }, ErrorCode::InvalidArgument, "rectangle"},
      {"field taken", document, [](auto& r) { r.setFieldName("Taken"); }, ErrorCode::InvalidArgument, ""},
      {"signer key of another", document, [](auto& r) {
         EvidenceSigner signer = r.signer();
         signer.setKey(certificates->ecSigner.key);
         r.setSigner(signer);
       },
       ErrorCode::BadKey, "not the certificate's"},
      // Evidence sealed for exactly these bytes, which qpdf cannot open, or which have no last section.
      {"encrypted", rewrittenByQpdf(document, "--encrypt '' owner 256 --", "encrypted"), [](auto&) {},
       ErrorCode::Unreadable, "the PDF is encrypted"},
      {"no trailer", "%PDF-1.4\n1 0 obj\n<< >>\nendobj\nstartxref\n9\n%%EOF\n", [](auto&) {}, ErrorCode::Unreadable,
       "the PDF cannot be read: "},
      {"no startxref", document.substr(0, document.rfind("startxref")), [](auto&) {}, ErrorCode::Unreadable,
       "no startxref"},
  };
  std::string taken = signedPdf(document, [&] {
    PdfSignatureRequest r = request(sealed);
    r.setFieldName("Taken");
    return r;
  }());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::string pdf = c.what == "field taken" ? taken : c.pdf;
    PdfSignatureRequest asked = request(c.what == "field taken" ? sealedFor(taken)
                                        : c.code == ErrorCode::Unreadable ? sealedFor(pdf)
                                                                          : sealed);
    c.change(asked);
    Error error = signPdf(pdf, asked).error();
    EXPECT_EQ(error.code(), c.code) << error.message();
    EXPECT_NE(error.message().find(c.mentions), std::string::npos) << error.message();
  }
}

}  // namespace
}  // namespace scrivlet
