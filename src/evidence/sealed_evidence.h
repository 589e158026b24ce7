// The checks of a sealed file that sealed files and signed PDFs share, and opening one once checked.
#pragma once

#include <scrivlet/evidence.h>

#include "evidence/evidence_file.h"

#include <functional>
#include <optional>
#include <string_view>

namespace scrivlet {

// Sealed files larger than this are refused unread, and never written.
inline constexpr size_t kLargestSealedFile = size_t(256) << 20;

struct ReadEvidence {
  EvidenceFile file;
  EvidenceManifest manifest;
};

// How the document a sealed file names is checked, given its manifest.
using DocumentCheck = std::function<EvidenceCheck(const EvidenceManifest&)>;

// Runs the checks in order: container, manifest, manifest signature and signer (a missing signature
// fails as "unsigned" when `signatureRequired`), document (when `document` is given), image and
// biometric data; then sets the verdict. The parts, when the container and manifest read.
std::optional<ReadEvidence> checkSealedEvidence(std::string_view sealed, std::string_view trusted,
                                                bool signatureRequired, const DocumentCheck& document,
                                                EvidenceVerification& report);

// The verdict and reason of checks: the worst failure's (with its check's name and detail), or valid.
std::pair<EvidenceVerdict, std::string> worstOf(const std::vector<EvidenceCheck>& checks);
void concludeVerification(EvidenceVerification& report);

// The record in checked evidence, opened with the examiner's key; the plaintext must name the
// manifest's document, image and record hash.
Result<RecordFile> openCheckedEvidence(const ReadEvidence& evidence, std::string_view examinerKey);

// The error of opening evidence whose verification gave this verdict (other than valid).
ErrorCode errorCodeOfVerdict(EvidenceVerdict verdict);

}  // namespace scrivlet
