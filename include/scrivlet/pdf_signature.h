// A PDF signature (PAdES baseline B-B, or B-T with a time-stamp) that carries the sealed evidence of
// a handwritten signature, and the verification of every signature of a PDF.
#pragma once

#include <scrivlet/evidence.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace scrivlet {

// The name of the embedded file that holds a signature's sealed evidence: one per signature field.
SCRIVLET_EVIDENCE_EXPORT std::string evidenceAttachmentName(std::string_view fieldName);

class SCRIVLET_EVIDENCE_EXPORT PdfSignatureRequest {
 public:
  // Where the signature is shown: a page (1 = first) and a rectangle in PDF points in the page's
  // default user space (origin at the bottom left, y up).
  int page() const;  // 1
  double x() const;
  double y() const;
  double width() const;
  double height() const;
  const std::string& sealedEvidence() const;  // the sealed file, sealed with exactly the PDF being signed
  const EvidenceSigner& signer() const;       // the capturing application's certificate, key and chain
  const std::string& signerName() const;      // shown under the image and put in /Name, when not empty
  bool showDate() const;                      // the signing date (UTC) under the image
  bool showHash() const;                      // the record's hash under the image
  const std::string& fieldName() const;       // empty: "Signature1", "Signature2", ... the first free one
  const std::string& timeStampUrl() const;    // an RFC 3161 time-stamping authority (http or https), for B-T
  void setPage(int page);
  void setRect(double x, double y, double width, double height);
  void setSealedEvidence(std::string sealedEvidence);
  void setSigner(EvidenceSigner signer);
  void setSignerName(std::string signerName);
  void setShowDate(bool showDate);
  void setShowHash(bool showHash);
  void setFieldName(std::string fieldName);
  void setTimeStampUrl(std::string timeStampUrl);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// The PDF with a signature appended as an incremental update: an AcroForm signature field whose widget
// shows the sealed image in the rectangle (as large as its proportions allow, centred) with the text
// asked for, the sealed file embedded, and a signature dictionary (/Adobe.PPKLite,
// /ETSI.CAdES.detached) whose CMS SignedData (SHA-256, signing-certificate-v2, the chain) covers every
// byte of the result but its own /Contents, the evidence included. Before anything is written the
// sealed file is checked (intact, its manifest signature valid, sealed with this PDF) and the signer's
// certificate must be valid for signing now. Otherwise the error: InvalidArgument (the page, the
// rectangle, a field name taken), Unreadable (a PDF qpdf cannot read, encrypted, or too large),
// NotThisDocument or Tampered (the sealed file), BadKey, CertificateRejected, TimeStampFailed, Failed.
SCRIVLET_EVIDENCE_EXPORT Result<std::vector<uint8_t>> signPdf(std::string_view pdf, const PdfSignatureRequest& request);
[[deprecated("signPdf returns a Result")]] inline std::optional<std::vector<uint8_t>> signPdf(
    std::string_view pdf, const PdfSignatureRequest& request, Error* error) {
  return optionalOf(signPdf(pdf, request), error);
}

class SCRIVLET_EVIDENCE_EXPORT PdfSignatureVerification {
 public:
  const std::string& field() const;  // the signature field's name
  EvidenceVerdict verdict() const;   // Unreadable until set
  const std::string& reason() const;  // why the verdict is not "valid"
  // "byte range", "signature", "signer", "time-stamp", "coverage", "later revisions", then the
  // evidence's own checks.
  const std::vector<EvidenceCheck>& checks() const;
  const std::string& signer() const;       // the signer's subject
  const std::string& signingTime() const;  // ISO 8601 UTC: the time-stamp's when there is one, else as claimed
  bool timeStamped() const;
  bool coversWholeDocument() const;
  size_t laterRevisions() const;  // revisions appended after this signature's
  const std::optional<EvidenceVerification>& evidence() const;  // the sealed evidence this signature carries
  void setField(std::string field);
  void setVerdict(EvidenceVerdict verdict);
  void setReason(std::string reason);
  void setChecks(std::vector<EvidenceCheck> checks);
  void addCheck(EvidenceCheck check);
  void setSigner(std::string signer);
  void setSigningTime(std::string signingTime);
  void setTimeStamped(bool timeStamped);
  void setCoversWholeDocument(bool coversWholeDocument);
  void setLaterRevisions(size_t laterRevisions);
  void setEvidence(std::optional<EvidenceVerification> evidence);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

class SCRIVLET_EVIDENCE_EXPORT PdfVerification {
 public:
  EvidenceVerdict verdict() const;  // the worst of the signatures'; Unreadable until set
  const std::string& reason() const;
  size_t revisions() const;
  const std::vector<PdfSignatureVerification>& signatures() const;  // in the order they were made
  bool valid() const;
  void setVerdict(EvidenceVerdict verdict);
  void setReason(std::string reason);
  void setRevisions(size_t revisions);
  void setSignatures(std::vector<PdfSignatureVerification> signatures);
  void addSignature(PdfSignatureVerification signature);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// Every signature of the PDF: its CMS over its byte range, its signer's chain to the trusted
// certificates (purpose, validity at the signing or time-stamp time), its time-stamp, whether it
// covers the whole file, what each later revision changes (a later signature is fine; anything else
// is "modified after signing" unless options.allowLaterChanges), and its sealed evidence as it was
// in the signed revision. A PDF without signatures is "unsigned".
SCRIVLET_EVIDENCE_EXPORT PdfVerification verifyPdf(std::string_view pdf, const EvidenceVerifyOptions& options);

// The record sealed with a signature of the PDF (the field's, or the only signature's when no field is
// named), as the revision it signed holds it, opened with the examiner's key. The PDF must verify
// first (valid; modified after signing too when options.allowLaterChanges); otherwise the error (the
// verdict's, as openEvidence gives it, or InvalidArgument for a field without evidence, or no field
// named where there are several). `verification` (if given) receives what verifying found.
SCRIVLET_EVIDENCE_EXPORT Result<RecordFile> openPdfEvidence(std::string_view pdf, std::string_view fieldName,
                                                            std::string_view examinerKey,
                                                            const EvidenceVerifyOptions& options = {},
                                                            PdfVerification* verification = nullptr);
[[deprecated("openPdfEvidence returns a Result")]] inline std::optional<RecordFile> openPdfEvidence(
    std::string_view pdf, std::string_view fieldName, std::string_view examinerKey,
    const EvidenceVerifyOptions& options, Error* error, PdfVerification* verification = nullptr) {
  return optionalOf(openPdfEvidence(pdf, fieldName, examinerKey, options, verification), error);
}

SCRIVLET_EVIDENCE_EXPORT std::string pdfVerificationToJson(const PdfVerification& verification);

}  // namespace scrivlet
