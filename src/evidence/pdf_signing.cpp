// Signing a PDF: one incremental update holding the signature field, its widget's appearance, the
// sealed evidence and the signature dictionary, whose /Contents is filled in last with the CMS
// signature over every other byte of the result.
#include <scrivlet/pdf_signature.h>

#include "evidence/certificate_checks.h"
#include "evidence/cms.h"
#include "evidence/pdf_update.h"
#include "evidence/sealed_evidence.h"
#include "evidence/signature_image.h"
#include "platform/crypto.h"

#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFNameTreeObjectHelper.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <set>

namespace scrivlet {

namespace {

using Code = ErrorCode;

// Room for the CMS signature: the signer's chain and a time-stamp token fit several times over.
constexpr size_t kReservedSignatureBytes = 16384;
// Coordinates past this are no use on any page and would print as very long numbers.
constexpr double kMaxCoordinate = 1e7;

std::string text(std::string_view bytes) { return QPDFObjectHandle::newString(std::string(bytes)).unparse(); }

// The sealed file must be intact and made for exactly this PDF; a signed manifest must match its
// signature (its signer is judged when verifying, against the verifier's trust).
Result<ReadEvidence> checkedEvidence(std::string_view pdf, const std::string& sealed) {
  EvidenceVerification report;
  auto document = [pdf](const EvidenceManifest& manifest) {
    bool same = pdf.size() == manifest.documentSize && sameDigest(sha256Hex(pdf), manifest.documentSha256);
    return EvidenceCheck{EvidenceCheckKind::Document, same,
                         same ? "" : "the PDF is not the document the evidence was sealed with"};
  };
  std::optional<ReadEvidence> read = checkSealedEvidence(sealed, "", false, document, report);
  for (const EvidenceCheck& check : report.checks())
    if (!check.passed() && check.kind() != EvidenceCheckKind::Signer)
      return Error{check.kind() == EvidenceCheckKind::Document       ? Code::NotThisDocument
                   : check.failure() == EvidenceVerdict::Unreadable ? Code::Unreadable
                                                                  : Code::Tampered,
                   "the sealed evidence: " + check.name() + ": " + check.detail()};
  if (!read) return Error{Code::Unreadable, "the sealed evidence does not read"};
  return std::move(*read);
}

std::string utcNow(const char* format) {
  time_t now = time(nullptr);
  struct tm utc {};
  char buffer[64];
  gmtime_r(&now, &utc);
  strftime(buffer, sizeof buffer, format, &utc);
  return buffer;
}

// The names of the form's fields, top level and below.
void collectFieldNames(QPDFObjectHandle fields, std::set<std::string>& names, int depth = 0) {
  if (!fields.isArray() || depth > 32) return;
  for (QPDFObjectHandle field : fields.getArrayAsVector()) {
    if (!field.isDictionary()) continue;
    if (field.getKey("/T").isString()) names.insert(field.getKey("/T").getUTF8Value());
    collectFieldNames(field.getKey("/Kids"), names, depth + 1);
  }
}

// The widget's appearance: the image as large as its proportions allow above the text lines, centred.
Result<int> writeAppearance(pdf::IncrementalUpdate& update, const SignatureImage& image, double width,
                            double height, const std::vector<std::string>& lines) {
  std::string geometry = "/Type /XObject /Subtype /Image /Width " + std::to_string(image.width) + " /Height " +
                         std::to_string(image.height) + " /BitsPerComponent 8 /Filter /FlateDecode";
  Result<std::string> alpha = pdf::deflate(image.alpha), rgb = pdf::deflate(image.rgb);
  if (!alpha || !rgb) return alpha ? rgb.error() : alpha.error();
  std::string mask;
  if (!image.alpha.empty())
    mask = " /SMask " + pdf::reference(update.writeStream(geometry + " /ColorSpace /DeviceGray", *alpha));
  int picture = update.writeStream(geometry + " /ColorSpace /DeviceRGB" + mask, *rgb);

  double fontSize = std::clamp(height * 0.1, 4.0, 9.0), lineHeight = fontSize * 1.25;
  double textHeight = std::min(height / 2, lineHeight * double(lines.size()));
  double areaHeight = height - textHeight;
  double scale = std::min(width / image.width, areaHeight / image.height);
  double drawnWidth = image.width * scale, drawnHeight = image.height * scale;
  std::string content = "q " + pdf::number(drawnWidth) + " 0 0 " + pdf::number(drawnHeight) + " " +
                        pdf::number((width - drawnWidth) / 2) + " " +
                        pdf::number(textHeight + (areaHeight - drawnHeight) / 2) + " cm /Img Do Q\n";
  for (size_t i = 0; i < lines.size(); ++i)
    content += "BT /Helv " + pdf::number(fontSize) + " Tf 0 g 2 " +
               pdf::number(textHeight - lineHeight * double(i + 1) + fontSize * 0.3) + " Td " + text(lines[i]) +
               " Tj ET\n";
  return update.writeStream("/Type /XObject /Subtype /Form /BBox [0 0 " + pdf::number(width) + " " +
                                pdf::number(height) + "] /Resources << /XObject << /Img " + pdf::reference(picture) +
                                " >> /Font << /Helv << /Type /Font /Subtype /Type1 /BaseFont /Helvetica "
                                "/Encoding /WinAnsiEncoding >> >> >>",
                            content);
}

// The catalog's embedded files as one sorted /Names array: the entries it had, plus this one.
std::string embeddedFilesWith(QPDF& qpdf, QPDFObjectHandle names, const std::string& fileName, int filespec) {
  std::map<std::string, std::string> files;  // std::map keeps the order qpdf looks keys up in
  QPDFObjectHandle tree = names.isDictionary() ? names.getKey("/EmbeddedFiles") : QPDFObjectHandle::newNull();
  if (tree.isDictionary())
    for (auto& [key, value] : QPDFNameTreeObjectHelper(tree, qpdf).getAsMap()) files[key] = value.unparse();
  files[fileName] = pdf::reference(filespec);
  std::string pairs;
  for (const auto& [key, value] : files)
    pairs += (pairs.empty() ? "" : " ") + QPDFObjectHandle::newUnicodeString(key).unparse() + " " + value;
  return "<< /Names [" + pairs + "] >>";
}

std::string arrayWith(QPDFObjectHandle array, int added) {
  std::string items;
  if (array.isArray())
    for (QPDFObjectHandle item : array.getArrayAsVector()) items += item.unparse() + " ";
  return "[" + items + pdf::reference(added) + "]";
}

// Writes the byte range into its placeholder and the signature into /Contents.
std::optional<Error> fillSignature(std::string& file, size_t dictionaryOffset, const PdfSignatureRequest& request) {
  size_t range = file.find("/ByteRange [", dictionaryOffset), contents = file.find("/Contents <", dictionaryOffset);
  if (range == std::string::npos || contents == std::string::npos)
    return Error{Code::Failed, "the signature has no room"};
  size_t gapStart = contents + 10, gapEnd = gapStart + 2 + 2 * kReservedSignatureBytes;
  std::string numbers =
      "0 " + std::to_string(gapStart) + " " + std::to_string(gapEnd) + " " + std::to_string(file.size() - gapEnd);
  size_t slot = file.find(']', range) - (range + 12);
  if (numbers.size() > slot) return Error{Code::Failed, "the byte range does not fit"};
  file.replace(range + 12, slot, numbers + std::string(slot - numbers.size(), ' '));
  std::string signedBytes = file.substr(0, gapStart) + file.substr(gapEnd);
  Error error;
  std::optional<std::string> signature =
      cms::signDetached(signedBytes, request.signer(), true, request.timeStampUrl(), &error);
  if (!signature) return error;
  if (signature->size() > kReservedSignatureBytes)
    return Error{Code::Failed, "the signature is larger than the room kept for it"};
  std::string hex = hexString(reinterpret_cast<const uint8_t*>(signature->data()), signature->size());
  file.replace(gapStart + 1, hex.size(), hex);
  return std::nullopt;
}

// Everything but qpdf's own exceptions, for objects it cannot read, comes back as an error.
Result<std::vector<uint8_t>> sign(std::string_view original, const PdfSignatureRequest& request) {
  bool finite = std::isfinite(request.x()) && std::isfinite(request.y()) && std::isfinite(request.width()) &&
                std::isfinite(request.height());
  if (!finite || !(request.width() > 0) || !(request.height() > 0))
    return Error{Code::InvalidArgument, "the rectangle is not finite and positive"};
  if (std::max({std::fabs(request.x()), std::fabs(request.y()), request.width(), request.height()}) > kMaxCoordinate)
    return Error{Code::InvalidArgument, "the rectangle lies too far out"};
  Result<ReadEvidence> evidence = checkedEvidence(original, request.sealedEvidence());
  if (!evidence) return evidence.error();
  std::string reason;
  std::optional<SignatureImage> image = decodeSignaturePng(evidence->file.image, &reason);
  if (!image) return Error{Code::Unreadable, "the sealed image: " + reason};
  Error signerError;
  if (!ssl::loadSigner(request.signer(), &signerError)) return signerError;
  Result<long long> previousOffset = pdf::lastCrossReferenceOffset(original);
  if (!previousOffset) return previousOffset.error();

  QPDF qpdf;
  if (std::optional<Error> refused = pdf::open(qpdf, original)) return *refused;
  std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(qpdf).getAllPages();
  if (request.page() < 1 || size_t(request.page()) > pages.size())
    return Error{Code::InvalidArgument,
                 "the PDF has no page " + std::to_string(request.page()) + " (it has " +
                     std::to_string(pages.size()) + ")"};
  QPDFObjectHandle page = pages[size_t(request.page() - 1)].getObjectHandle();
  QPDFObjectHandle trailer = qpdf.getTrailer(), catalog = trailer.getKey("/Root");
  std::map<QPDFObjGen, QPDFXRefEntry> crossReferences = qpdf.getXRefTable();
  if (std::optional<Error> refused = pdf::requireStoredObject(page, crossReferences, "page")) return *refused;
  if (std::optional<Error> refused = pdf::requireStoredObject(catalog, crossReferences, "catalog")) return *refused;
  if (page.getObjGen() == catalog.getObjGen()) return Error{Code::Unreadable, "the PDF's page is its catalog"};
  QPDFObjectHandle form = catalog.getKey("/AcroForm");
  if (form.isIndirect())
    if (std::optional<Error> refused = pdf::requireStoredObject(form, crossReferences, "form")) return *refused;

  std::set<std::string> fieldNames;
  collectFieldNames(form.isDictionary() ? form.getKey("/Fields") : QPDFObjectHandle::newNull(), fieldNames);
  std::string field = request.fieldName();
  for (int n = 1; field.empty(); ++n)
    if (!fieldNames.count("Signature" + std::to_string(n))) field = "Signature" + std::to_string(n);
  if (fieldNames.count(field)) return Error{Code::InvalidArgument, "the PDF already has a field named " + field};

  long long size = crossReferences.empty() ? 1 : crossReferences.rbegin()->first.getObj() + 1LL;
  if (QPDFObjectHandle declared = trailer.getKey("/Size"); declared.isInteger())
    size = std::max(size, declared.getIntValue());
  if (size > 8000000) return Error{Code::Unreadable, "the PDF has too many objects"};

  pdf::IncrementalUpdate update(original, int(size));
  std::vector<std::string> lines;
  if (!request.signerName().empty()) lines.push_back(request.signerName());
  if (request.showDate()) lines.push_back("Signed " + utcNow("%Y-%m-%d %H:%M UTC"));
  if (request.showHash()) lines.push_back("Hash " + evidence->manifest.hash);
  Result<int> appearance = writeAppearance(update, *image, request.width(), request.height(), lines);
  if (!appearance) return appearance.error();
  Result<std::string> packedEvidence = pdf::deflate(request.sealedEvidence());
  if (!packedEvidence) return packedEvidence.error();

  std::string fileName = evidenceAttachmentName(field);
  int file = update.writeStream("/Type /EmbeddedFile /Subtype /application#2Fjson /Params << /Size " +
                                    std::to_string(request.sealedEvidence().size()) + " >> /Filter /FlateDecode",
                                *packedEvidence);
  int filespec = update.writeNewObject("<< /Type /Filespec /F " + text(fileName) + " /UF " +
                                       QPDFObjectHandle::newUnicodeString(fileName).unparse() + " /EF << /F " +
                                       pdf::reference(file) + " /UF " + pdf::reference(file) +
                                       " >> /AFRelationship /Supplement /Desc (Sealed biometric evidence) >>");
  std::string signatureEntries =
      "/Type /Sig /Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached /M " + text(utcNow("D:%Y%m%d%H%M%SZ"));
  if (!request.signerName().empty()) signatureEntries += " /Name " + text(request.signerName());
  int signature = update.writeNewObject("<< " + signatureEntries + " /ByteRange [" + std::string(40, ' ') +
                                        "] /Contents <" + std::string(2 * kReservedSignatureBytes, '0') + "> >>");
  int widget = update.writeNewObject(
      "<< /Type /Annot /Subtype /Widget /FT /Sig /T " + QPDFObjectHandle::newUnicodeString(field).unparse() + " /V " +
      pdf::reference(signature) + " /F 132 /Rect [" + pdf::number(request.x()) + " " + pdf::number(request.y()) + " " +
      pdf::number(request.x() + request.width()) + " " + pdf::number(request.y() + request.height()) + "] /P " +
      page.unparse() + " /AP << /N " + pdf::reference(*appearance) + " >> /AF [" + pdf::reference(filespec) + "] >>");

  QPDFObjectHandle annotations = page.getKey("/Annots");
  if (annotations.isArray() && annotations.isIndirect() && crossReferences.count(annotations.getObjGen()))
    update.writeObject(annotations.getObjGen(), arrayWith(annotations, widget));
  else
    update.writeObject(page.getObjGen(), pdf::unparseWith(page, {{"Annots", arrayWith(annotations, widget)}}));
  std::map<std::string, std::string> formEntries{
      {"Fields", arrayWith(form.isDictionary() ? form.getKey("/Fields") : QPDFObjectHandle::newNull(), widget)},
      {"SigFlags", "3"}};
  std::string formText = pdf::unparseWith(form.isDictionary() ? form : QPDFObjectHandle::newDictionary(), formEntries);
  std::map<std::string, std::string> catalogEntries;
  if (form.isIndirect())
    update.writeObject(form.getObjGen(), formText);
  else
    catalogEntries["AcroForm"] = formText;
  QPDFObjectHandle names = catalog.getKey("/Names");
  catalogEntries["Names"] = pdf::unparseWith(names.isDictionary() ? names : QPDFObjectHandle::newDictionary(),
                                             {{"EmbeddedFiles", embeddedFilesWith(qpdf, names, fileName, filespec)}});
  update.writeObject(catalog.getObjGen(), pdf::unparseWith(catalog, catalogEntries));

  std::string trailerEntries = "/Root " + catalog.unparse();
  if (QPDFObjectHandle info = trailer.getKey("/Info"); info.isDictionary())
    trailerEntries += " /Info " + info.unparse();
  if (QPDFObjectHandle id = trailer.getKey("/ID"); id.isArray()) trailerEntries += " /ID " + id.unparse();
  size_t signatureOffset = update.offsetOf(signature);
  std::string signed_ = update.finish(trailerEntries, *previousOffset);
  if (std::optional<Error> refused = fillSignature(signed_, signatureOffset, request)) return *refused;
  return std::vector<uint8_t>(signed_.begin(), signed_.end());
}

}  // namespace

std::string evidenceAttachmentName(std::string_view fieldName) {
  return "scrivlet-evidence-" + std::string(fieldName) + ".json";
}

Result<std::vector<uint8_t>> signPdf(std::string_view pdf, const PdfSignatureRequest& request) {
  try {
    return sign(pdf, request);
  } catch (const std::exception& exception) {  // qpdf's, for objects it cannot read
    return pdf::unreadablePdf(exception);
  }
}

}  // namespace scrivlet
