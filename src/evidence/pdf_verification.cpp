// Verifying every signature of a PDF and the evidence each carries, and opening that evidence.
#include <scrivlet/pdf_signature.h>

#include "evidence/cms.h"
#include "evidence/openssl_support.h"
#include "evidence/pdf_revisions.h"
#include "evidence/sealed_evidence.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <map>

namespace scrivlet {

namespace {

using Verdict = EvidenceVerdict;
using Kind = EvidenceCheckKind;
using Code = ErrorCode;

struct SignatureField {
  std::string name;
  mutable QPDFObjectHandle value;  // the signature dictionary (qpdf reads it lazily)
};

// The form's signature fields with a value, fully named, each signature dictionary once.
void collectSignatures(QPDFObjectHandle fields, const std::string& prefix, QPDFObjectHandle inheritedType,
                       std::vector<SignatureField>& found, std::set<QPDFObjGen>& seen, int depth = 0) {
  if (!fields.isArray() || depth > 32) return;
  for (QPDFObjectHandle field : fields.getArrayAsVector()) {
    if (!field.isDictionary()) continue;
    std::string name = prefix;
    if (field.getKey("/T").isString()) name += (name.empty() ? "" : ".") + field.getKey("/T").getUTF8Value();
    QPDFObjectHandle type = field.getKey("/FT").isName() ? field.getKey("/FT") : inheritedType;
    QPDFObjectHandle value = field.getKey("/V");
    if (type.isName() && type.getName() == "/Sig" && value.isDictionary() && value.isIndirect() &&
        seen.insert(value.getObjGen()).second)
      found.push_back({name, value});
    collectSignatures(field.getKey("/Kids"), name, type, found, seen, depth + 1);
  }
}

// A PDF date, "D:YYYYMMDDHHmmSS" with an optional offset (Z, +HH'mm' or -HH'mm'), as UTC; 0 when not one.
time_t pdfDate(const std::string& text) {
  struct tm when {};
  int offsetHours = 0, offsetMinutes = 0;
  char sign = 'Z';
  if (std::sscanf(text.c_str(), "D:%4d%2d%2d%2d%2d%2d%c%2d'%2d", &when.tm_year, &when.tm_mon, &when.tm_mday,
                  &when.tm_hour, &when.tm_min, &when.tm_sec, &sign, &offsetHours, &offsetMinutes) < 6)
    return 0;
  when.tm_year -= 1900, when.tm_mon -= 1;
  time_t utc = timegm(&when);
  int offset = (offsetHours * 60 + offsetMinutes) * 60;
  return sign == '+' ? utc - offset : sign == '-' ? utc + offset : utc;
}

EvidenceCheck passed(Kind kind, std::string detail) {
  return {kind, true, std::move(detail), Verdict::Valid};
}
EvidenceCheck failed(Kind kind, Verdict verdict, std::string detail) {
  return {kind, false, std::move(detail), verdict};
}

struct SignedRange {
  size_t gapStart = 0, gapEnd = 0, end = 0;
  std::string der;
};

// The byte range: from 0, around exactly the dictionary's /Contents hex string, to a revision's end.
std::optional<SignedRange> signedRangeOf(std::string_view pdf, QPDFObjectHandle signature, std::string* problem) {
  QPDFObjectHandle range = signature.getKey("/ByteRange"), contents = signature.getKey("/Contents");
  std::vector<long long> numbers;
  if (range.isArray())
    for (QPDFObjectHandle item : range.getArrayAsVector())
      if (item.isInteger()) numbers.push_back(item.getIntValue());
  if (numbers.size() != 4 || range.getArrayNItems() != 4 || !contents.isString())
    return *problem = "the signature has no byte range of four numbers and contents", std::nullopt;
  SignedRange r{size_t(numbers[1]), size_t(numbers[2]), size_t(numbers[2]) + size_t(numbers[3]), {}};
  if (numbers[0] != 0 || numbers[1] <= 0 || numbers[2] <= numbers[1] || numbers[3] < 0 || r.end > pdf.size() ||
      r.end < r.gapEnd || pdf[r.gapStart] != '<' || pdf[r.gapEnd - 1] != '>')
    return *problem = "the byte range does not frame the signature's contents", std::nullopt;
  std::string_view hex = pdf.substr(r.gapStart + 1, r.gapEnd - r.gapStart - 2);
  if (hex.size() % 2 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos)
    return *problem = "the excluded bytes are not a hexadecimal string", std::nullopt;
  auto nibble = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
  r.der.reserve(hex.size() / 2);
  for (size_t i = 0; i < hex.size(); i += 2) r.der += char(nibble(hex[i]) << 4 | nibble(hex[i + 1]));
  if (r.der != contents.getStringValue())
    return *problem = "the excluded bytes are not the signature's own contents", std::nullopt;
  return r;
}

// The checks of one signature; the evidence it carries is kept in *evidence when it reads. An error
// when a revision of the PDF does not read at all.
Result<PdfSignatureVerification> verifySignature(std::string_view pdf, const SignatureField& field,
                                                 const std::vector<size_t>& ends,
                                                 const std::map<size_t, std::vector<std::string>>& signaturesEnding,
                                                 const EvidenceVerifyOptions& options,
                                                 std::optional<ReadEvidence>* evidence) {
  PdfSignatureVerification s;
  s.setField(field.name);
  auto conclude = [&] {
    auto [verdict, reason] = worstOf(s.checks());
    s.setVerdict(verdict);
    s.setReason(std::move(reason));
    return s;
  };
  std::string problem;
  std::optional<SignedRange> range = signedRangeOf(pdf, field.value, &problem);
  auto revision = range ? std::find(ends.begin(), ends.end(), range->end) : ends.end();
  if (!range || revision == ends.end()) {
    s.addCheck(
        failed(Kind::ByteRange, Verdict::Tampered, range ? "the signed bytes do not end a revision" : problem));
    return conclude();
  }
  size_t index = size_t(revision - ends.begin());
  s.addCheck(passed(Kind::ByteRange, "bytes 0 to " + std::to_string(range->end) + " but the signature's own"));

  std::string subFilter = field.value.getKey("/SubFilter").unparse();
  if (subFilter != "/ETSI.CAdES.detached" && subFilter != "/adbe.pkcs7.detached") {
    s.addCheck(
        failed(Kind::Signature, Verdict::Unreadable, "a signature of kind " + subFilter + " is not read"));
    return conclude();
  }
  std::string signedBytes =
      std::string(pdf.substr(0, range->gapStart)) + std::string(pdf.substr(range->gapEnd, range->end - range->gapEnd));
  QPDFObjectHandle claimed = field.value.getKey("/M");  // within the signed bytes
  cms::SignatureCheck cms = cms::verifyDetached(range->der, signedBytes, options.trustedCertificates(),
                                                claimed.isString() ? pdfDate(claimed.getStringValue()) : 0);
  s.setSigner(cms.signer);
  s.setTimeStamped(cms.timeStamped);
  s.setSigningTime(cms.signer.empty() ? "" : ssl::isoTime(cms.signingTime));
  if (cms.signer.empty()) {
    s.addCheck(failed(Kind::Signature, cms.verdict, cms.reason));
    return conclude();
  }
  if (subFilter == "/ETSI.CAdES.detached" && !cms.signingCertificateV2)
    s.addCheck(failed(Kind::Signature, Verdict::Untrusted, "a CAdES signature without signing-certificate-v2"));
  else
    s.addCheck(passed(Kind::Signature, "matches the signed bytes, signed by " + cms.signer));
  s.addCheck(cms.verdict == Verdict::Valid
                         ? passed(Kind::Signer, cms.signer + " chains to a trusted certificate")
                         : failed(Kind::Signer, Verdict::Untrusted, cms.reason));
  if (cms.timeStamped)
    s.addCheck(cms.timeStampDetail.rfind("time-stamped", 0) == 0
                           ? passed(Kind::TimeStamp, cms.timeStampDetail)
                           : failed(Kind::TimeStamp, Verdict::Untrusted, cms.timeStampDetail));

  s.setCoversWholeDocument(range->end == pdf.size());
  s.setLaterRevisions(ends.size() - 1 - index);
  s.addCheck(passed(Kind::Coverage, s.coversWholeDocument()
                                            ? "covers the whole document"
                                            : "covers the document up to byte " + std::to_string(range->end) + " of " +
                                                  std::to_string(pdf.size())));
  std::vector<std::string> later;
  for (size_t next = index + 1; next < ends.size(); ++next) {
    auto signers = signaturesEnding.find(ends[next]);
    Result<std::vector<std::string>> changed = pdf::changesBeyondSignatures(pdf, ends[next - 1], ends[next]);
    if (!changed) return changed.error();
    std::vector<std::string> changes = std::move(*changed);
    if (signers == signaturesEnding.end()) changes.insert(changes.begin(), "not signed");
    std::string what = "revision " + std::to_string(next + 1) +
                       (signers == signaturesEnding.end() ? "" : " (signature " + signers->second.front() + ")");
    for (const std::string& change : changes) later.push_back(what + ": " + change);
  }
  if (s.laterRevisions() > 0 || !later.empty()) {
    std::string detail = later.empty()
                             ? std::to_string(s.laterRevisions()) + " later revision(s), each a signature"
                             : "modified after signing: " + later.front() +
                                   (later.size() > 1 ? " (and " + std::to_string(later.size() - 1) + " more)" : "");
    s.addCheck(later.empty() || options.allowLaterChanges()
                           ? passed(Kind::LaterRevisions, detail + (later.empty() ? "" : " (allowed)"))
                           : failed(Kind::LaterRevisions, Verdict::ModifiedAfterSigning, detail));
  }

  // The evidence as the signed revision holds it: a later revision cannot replace it.
  QPDF signedRevision;
  if (std::optional<Error> refused = pdf::open(signedRevision, pdf.substr(0, range->end), "the signed revision"))
    return *refused;
  std::string reason;
  std::optional<std::string> sealed =
      pdf::boundedEmbeddedFile(signedRevision, evidenceAttachmentName(field.name), kLargestSealedFile, &reason);
  if (!sealed) {
    s.addCheck(reason.find("holds no") != std::string::npos
                           ? passed(Kind::Evidence, "none: " + reason)
                           : failed(Kind::Evidence, Verdict::Tampered, reason));
    return conclude();
  }
  size_t revisionStart = index == 0 ? 0 : ends[index - 1];
  auto document = [&](const EvidenceManifest& manifest) {
    bool same = index > 0 && manifest.documentSize == revisionStart &&
                sameDigest(sha256Hex(pdf.substr(0, revisionStart)), manifest.documentSha256);
    return same ? passed(Kind::Document, "the PDF as it was before this signature is the one sealed")
                : failed(Kind::Document, Verdict::Tampered, "the evidence was sealed with another document");
  };
  EvidenceVerification report;
  *evidence = checkSealedEvidence(*sealed, options.trustedCertificates(), false, document, report);
  s.addCheck(report.valid() ? passed(Kind::Evidence, "sealed for this PDF, intact")
                                    : failed(Kind::Evidence, report.verdict(), report.reason()));
  s.setEvidence(std::move(report));
  return conclude();
}

std::optional<Error> verifyInto(std::string_view pdf, const EvidenceVerifyOptions& options, PdfVerification& result,
                                std::map<std::string, ReadEvidence>* evidences) {
  QPDF qpdf;
  if (std::optional<Error> refused = pdf::open(qpdf, pdf)) return refused;
  Result<std::vector<size_t>> revisions = pdf::revisionEnds(pdf);
  if (!revisions) return revisions.error();
  const std::vector<size_t>& ends = *revisions;
  result.setRevisions(ends.size());
  std::vector<SignatureField> fields;
  std::set<QPDFObjGen> seen;
  QPDFObjectHandle form = qpdf.getRoot().getKey("/AcroForm");
  if (form.isDictionary()) collectSignatures(form.getKey("/Fields"), "", QPDFObjectHandle::newNull(), fields, seen);
  if (fields.empty()) {
    result.setVerdict(Verdict::Unsigned), result.setReason("the PDF has no signature");
    return std::nullopt;
  }
  std::map<size_t, std::vector<std::string>> signaturesEnding;
  for (const SignatureField& field : fields) {
    std::string ignored;
    if (std::optional<SignedRange> range = signedRangeOf(pdf, field.value, &ignored))
      signaturesEnding[range->end].push_back(field.name);
  }
  std::vector<PdfSignatureVerification> signatures;
  for (const SignatureField& field : fields) {
    std::optional<ReadEvidence> evidence;
    Result<PdfSignatureVerification> verified = verifySignature(pdf, field, ends, signaturesEnding, options, &evidence);
    if (!verified) return verified.error();
    signatures.push_back(std::move(*verified));
    if (evidence && evidences) evidences->emplace(field.name, std::move(*evidence));
  }
  std::stable_sort(signatures.begin(), signatures.end(),
                   [](const PdfSignatureVerification& a, const PdfSignatureVerification& b) {
                     return a.laterRevisions() > b.laterRevisions();
                   });
  result.setSignatures(std::move(signatures));
  result.setVerdict(Verdict::Valid);
  for (const PdfSignatureVerification& s : result.signatures())
    if (s.verdict() > result.verdict()) result.setVerdict(s.verdict()), result.setReason(s.field() + ": " + s.reason());
  return std::nullopt;
}

PdfVerification verifyGuarded(std::string_view pdf, const EvidenceVerifyOptions& options,
                              std::map<std::string, ReadEvidence>* evidences) {
  PdfVerification result;
  std::optional<Error> refused;
  try {
    refused = verifyInto(pdf, options, result, evidences);
  } catch (const std::exception& exception) {  // qpdf's, for objects it cannot read
    refused = pdf::unreadablePdf(exception);
  }
  if (!refused) return result;
  result.setVerdict(Verdict::Unreadable);
  result.setReason(refused->message());
  result.setSignatures({});
  return result;
}

nlohmann::json checksToJson(const std::vector<EvidenceCheck>& checks) {
  nlohmann::json list = nlohmann::json::array();
  for (const EvidenceCheck& c : checks) list.push_back({{"name", c.name()}, {"passed", c.passed()}, {"detail", c.detail()}});
  return list;
}

}  // namespace

PdfVerification verifyPdf(std::string_view pdf, const EvidenceVerifyOptions& options) {
  return verifyGuarded(pdf, options, nullptr);
}

Result<RecordFile> openPdfEvidence(std::string_view pdf, std::string_view fieldName, std::string_view examinerKey,
                                   const EvidenceVerifyOptions& options, PdfVerification* verification) {
  std::map<std::string, ReadEvidence> evidences;
  PdfVerification result = verifyGuarded(pdf, options, &evidences);
  if (verification) *verification = result;
  if (!result.valid())
    return Error{errorCodeOfVerdict(result.verdict()),
                 std::string("not opened: the PDF is ") + evidenceVerdictName(result.verdict()) + " (" +
                     result.reason() + ")"};
  std::string field(fieldName);
  if (field.empty() && result.signatures().size() == 1) field = result.signatures().front().field();
  if (field.empty()) return Error{Code::InvalidArgument, "the PDF has several signatures: name one"};
  auto found = evidences.find(field);
  if (found == evidences.end()) return Error{Code::InvalidArgument, "the signature " + field + " carries no evidence"};
  return openCheckedEvidence(found->second, examinerKey);
}

std::string pdfVerificationToJson(const PdfVerification& v) {
  nlohmann::json signatures = nlohmann::json::array();
  for (const PdfSignatureVerification& s : v.signatures()) {
    nlohmann::json signature{{"field", s.field()},
                             {"verdict", evidenceVerdictName(s.verdict())},
                             {"reason", s.reason()},
                             {"signer", s.signer()},
                             {"signingTime", s.signingTime()},
                             {"timeStamped", s.timeStamped()},
                             {"coversWholeDocument", s.coversWholeDocument()},
                             {"laterRevisions", s.laterRevisions()},
                             {"checks", checksToJson(s.checks())}};
    if (s.evidence()) signature["evidence"] = nlohmann::json::parse(evidenceVerificationToJson(*s.evidence()));
    signatures.push_back(std::move(signature));
  }
  nlohmann::json report{{"verdict", evidenceVerdictName(v.verdict())},
                        {"reason", v.reason()},
                        {"revisions", v.revisions()},
                        {"signatures", std::move(signatures)}};
  return report.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace scrivlet
