// The values the evidence API takes and gives: requests, options and reports.
#include <scrivlet/evidence.h>
#include <scrivlet/pdf_signature.h>

#include "host/shared_value.h"

namespace scrivlet {

struct EvidenceSigner::Data {
  std::string certificate, key, chain;
};

EvidenceSigner::EvidenceSigner() = default;
EvidenceSigner::EvidenceSigner(std::string certificate, std::string key, std::string chain) {
  setCertificate(std::move(certificate));
  setKey(std::move(key));
  setChain(std::move(chain));
}
SCRIVLET_SHARED_FIELD(EvidenceSigner, std::string, certificate, setCertificate)
SCRIVLET_SHARED_FIELD(EvidenceSigner, std::string, key, setKey)
SCRIVLET_SHARED_FIELD(EvidenceSigner, std::string, chain, setChain)

struct EvidenceSealRequest::Data {
  RecordFile record;
  std::array<uint8_t, 32> documentSha256{};
  uint64_t documentSize = 0;
  std::string documentName;
  std::string examinerCertificate;
  EvidenceSigner manifestSigner;
};

SCRIVLET_SHARED_FIELD(EvidenceSealRequest, RecordFile, record, setRecord)
const std::array<uint8_t, 32>& EvidenceSealRequest::documentSha256() const { return readShared(d_).documentSha256; }
void EvidenceSealRequest::setDocumentSha256(const std::array<uint8_t, 32>& sha256) {
  writeShared(d_).documentSha256 = sha256;
}
SCRIVLET_SHARED_SCALAR(EvidenceSealRequest, uint64_t, documentSize, setDocumentSize)
SCRIVLET_SHARED_FIELD(EvidenceSealRequest, std::string, documentName, setDocumentName)
SCRIVLET_SHARED_FIELD(EvidenceSealRequest, std::string, examinerCertificate, setExaminerCertificate)
SCRIVLET_SHARED_FIELD(EvidenceSealRequest, EvidenceSigner, manifestSigner, setManifestSigner)

struct EvidenceCheck::Data {
  EvidenceCheckKind kind = EvidenceCheckKind::Container;
  bool passed = false;
  std::string detail;
  EvidenceVerdict failure = EvidenceVerdict::Tampered;
};

EvidenceCheck::EvidenceCheck() = default;
EvidenceCheck::EvidenceCheck(EvidenceCheckKind kind, bool passed, std::string detail, EvidenceVerdict failure) {
  Data& d = writeShared(d_);
  d.kind = kind;
  d.passed = passed;
  d.detail = std::move(detail);
  d.failure = failure;
}
std::string EvidenceCheck::name() const { return evidenceCheckName(kind()); }
SCRIVLET_SHARED_SCALAR(EvidenceCheck, EvidenceCheckKind, kind, setKind)
SCRIVLET_SHARED_SCALAR(EvidenceCheck, bool, passed, setPassed)
SCRIVLET_SHARED_FIELD(EvidenceCheck, std::string, detail, setDetail)
SCRIVLET_SHARED_SCALAR(EvidenceCheck, EvidenceVerdict, failure, setFailure)

struct EvidenceVerifyOptions::Data {
  std::string trustedCertificates;
  bool allowLaterChanges = false;
};

EvidenceVerifyOptions::EvidenceVerifyOptions() = default;
EvidenceVerifyOptions::EvidenceVerifyOptions(std::string trustedCertificates, bool allowLaterChanges) {
  setTrustedCertificates(std::move(trustedCertificates));
  setAllowLaterChanges(allowLaterChanges);
}
SCRIVLET_SHARED_FIELD(EvidenceVerifyOptions, std::string, trustedCertificates, setTrustedCertificates)
SCRIVLET_SHARED_SCALAR(EvidenceVerifyOptions, bool, allowLaterChanges, setAllowLaterChanges)

struct EvidenceVerification::Data {
  std::vector<EvidenceCheck> checks;
  bool signedManifest = false;
  std::string signer;
  std::string hash;
  double timestamp = 0;
  CaptureDevice device;
  EvidenceVerdict verdict = EvidenceVerdict::Unreadable;
  std::string reason;
};

SCRIVLET_SHARED_FIELD(EvidenceVerification, std::vector<EvidenceCheck>, checks, setChecks)
void EvidenceVerification::addCheck(EvidenceCheck check) { writeShared(d_).checks.push_back(std::move(check)); }
SCRIVLET_SHARED_SCALAR(EvidenceVerification, bool, signedManifest, setSignedManifest)
SCRIVLET_SHARED_FIELD(EvidenceVerification, std::string, signer, setSigner)
SCRIVLET_SHARED_FIELD(EvidenceVerification, std::string, hash, setHash)
SCRIVLET_SHARED_SCALAR(EvidenceVerification, double, timestamp, setTimestamp)
SCRIVLET_SHARED_FIELD(EvidenceVerification, CaptureDevice, device, setDevice)
SCRIVLET_SHARED_SCALAR(EvidenceVerification, EvidenceVerdict, verdict, setVerdict)
SCRIVLET_SHARED_FIELD(EvidenceVerification, std::string, reason, setReason)
bool EvidenceVerification::valid() const { return verdict() == EvidenceVerdict::Valid; }

struct PdfSignatureRequest::Data {
  int page = 1;
  double x = 0, y = 0, width = 0, height = 0;
  std::string sealedEvidence;
  EvidenceSigner signer;
  std::string signerName;
  bool showDate = false;
  bool showHash = false;
  std::string fieldName;
  std::string timeStampUrl;
};

SCRIVLET_SHARED_SCALAR(PdfSignatureRequest, int, page, setPage)
double PdfSignatureRequest::x() const { return readShared(d_).x; }
double PdfSignatureRequest::y() const { return readShared(d_).y; }
double PdfSignatureRequest::width() const { return readShared(d_).width; }
double PdfSignatureRequest::height() const { return readShared(d_).height; }
void PdfSignatureRequest::setRect(double x, double y, double width, double height) {
  Data& d = writeShared(d_);
  d.x = x, d.y = y, d.width = width, d.height = height;
}
SCRIVLET_SHARED_FIELD(PdfSignatureRequest, std::string, sealedEvidence, setSealedEvidence)
SCRIVLET_SHARED_FIELD(PdfSignatureRequest, EvidenceSigner, signer, setSigner)
SCRIVLET_SHARED_FIELD(PdfSignatureRequest, std::string, signerName, setSignerName)
SCRIVLET_SHARED_SCALAR(PdfSignatureRequest, bool, showDate, setShowDate)
SCRIVLET_SHARED_SCALAR(PdfSignatureRequest, bool, showHash, setShowHash)
SCRIVLET_SHARED_FIELD(PdfSignatureRequest, std::string, fieldName, setFieldName)
SCRIVLET_SHARED_FIELD(PdfSignatureRequest, std::string, timeStampUrl, setTimeStampUrl)

struct PdfSignatureVerification::Data {
  std::string field;
  EvidenceVerdict verdict = EvidenceVerdict::Unreadable;
  std::string reason;
  std::vector<EvidenceCheck> checks;
  std::string signer;
  std::string signingTime;
  bool timeStamped = false;
  bool coversWholeDocument = false;
  size_t laterRevisions = 0;
  std::optional<EvidenceVerification> evidence;
};

SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::string, field, setField)
SCRIVLET_SHARED_SCALAR(PdfSignatureVerification, EvidenceVerdict, verdict, setVerdict)
SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::string, reason, setReason)
SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::vector<EvidenceCheck>, checks, setChecks)
void PdfSignatureVerification::addCheck(EvidenceCheck check) { writeShared(d_).checks.push_back(std::move(check)); }
SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::string, signer, setSigner)
SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::string, signingTime, setSigningTime)
SCRIVLET_SHARED_SCALAR(PdfSignatureVerification, bool, timeStamped, setTimeStamped)
SCRIVLET_SHARED_SCALAR(PdfSignatureVerification, bool, coversWholeDocument, setCoversWholeDocument)
SCRIVLET_SHARED_SCALAR(PdfSignatureVerification, size_t, laterRevisions, setLaterRevisions)
SCRIVLET_SHARED_FIELD(PdfSignatureVerification, std::optional<EvidenceVerification>, evidence, setEvidence)

struct PdfVerification::Data {
  EvidenceVerdict verdict = EvidenceVerdict::Unreadable;
  std::string reason;
  size_t revisions = 0;
  std::vector<PdfSignatureVerification> signatures;
};

SCRIVLET_SHARED_SCALAR(PdfVerification, EvidenceVerdict, verdict, setVerdict)
SCRIVLET_SHARED_FIELD(PdfVerification, std::string, reason, setReason)
SCRIVLET_SHARED_SCALAR(PdfVerification, size_t, revisions, setRevisions)
SCRIVLET_SHARED_FIELD(PdfVerification, std::vector<PdfSignatureVerification>, signatures, setSignatures)
void PdfVerification::addSignature(PdfSignatureVerification signature) {
  writeShared(d_).signatures.push_back(std::move(signature));
}
bool PdfVerification::valid() const { return verdict() == EvidenceVerdict::Valid; }

}  // namespace scrivlet
