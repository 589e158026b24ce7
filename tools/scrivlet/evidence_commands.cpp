// scrivlet seal, verify, open and stamp: the evidence library on the command line.
#include "arguments.h"
#include "batch.h"
#include "commands.h"
#include "render_output.h"

#include <scrivlet/evidence.h>
#include <scrivlet/stroke_json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace scrivlet::tool {

namespace {

const char* kSealUsage = R"(usage: scrivlet seal --record RECORD --document DOCUMENT --examiner CERT -o SEALED [options]

Seals a signature record (a record file, as a signing device writes it) with the document it signs:
the strokes are encrypted to the examiner (CMS, AES-256-GCM), and a manifest binds the document's
SHA-256, the image, the encrypted strokes, the record's hash and time, the device and the library.

  --record FILE         the record file (JSON) of the signing
  --document FILE       the document signed (any bytes; a PDF to stamp later)
  --examiner FILE       the examiner's X.509 certificate (PEM or DER) or PEM public key, RSA or EC
  --signer-cert FILE    the capturing application's certificate (PEM), to sign the manifest
  --signer-key FILE     its private key (PEM, not protected by a pass phrase)
  -o, --output FILE     the sealed file to write
  -h, --help            this help
)";

const char* kVerifyUsage = R"(usage: scrivlet verify [options] DOCUMENT...

Checks sealed evidence against the document it signs, each check on its own line: the file reads,
the manifest is intact, its signature (when signed), the document, the image and the biometric data.
A stamped PDF carries its evidence: give it alone, or many at once. Exit status 0 when all pass.

  --evidence FILE       the sealed file (with one DOCUMENT; else the evidence attached to it)
  --trust FILE          trusted certificates (PEM): the manifest's signer must chain to one
  --require-signature   an unsigned manifest fails
  -j, --jobs N          documents checked at once (default: the number of cores)
  -h, --help            this help
)";

const char* kOpenUsage = R"(usage: scrivlet open --evidence SEALED --key KEY --out-dir DIR [options]

Opens the biometric data with the examiner's private key and draws the signature again: writes
strokes.json, record.json, sealed-image.png (the image as sealed) and signature.png, .pdf, .svg and
.xml drawn from the strokes.

  --evidence FILE       the sealed file, or a stamped PDF carrying it
  --key FILE            the examiner's private key (PEM or DER, not protected by a pass phrase)
  --out-dir DIR         where to write (created if missing)
  --scale S             output units per point of the drawings (default 2)
  --date, --date-time   stamp the drawings with the date (and time) of signing
  --hash                stamp the drawings with the signing's hash
  -h, --help            this help
)";

const char* kStampUsage = R"(usage: scrivlet stamp --document PDF --evidence SEALED --rect X,Y,W,H -o OUT [options]

Draws the sealed signature image on a page of the PDF it was sealed with and attaches the sealed
file, as an incremental update: the document sealed stays the first bytes, so the result verifies.

  --document FILE       the PDF sealed
  --evidence FILE       the sealed file
  --page N              the page, from 1 (default 1)
  --rect X,Y,W,H        the rectangle in PDF points from the page's bottom-left corner
  -o, --output FILE     the stamped PDF to write
  -h, --help            this help
)";

// Reads a file named by a required option; fails with the reason otherwise.
std::optional<std::string> required(const Arguments& args, const std::string& option, std::string* error) {
  if (!args.has(option)) return *error = "--" + option + " is required (see --help)", std::nullopt;
  std::optional<std::string> bytes = readFile(args.value(option));
  if (!bytes) *error = "cannot read " + args.value(option);
  return bytes;
}

// The sealed file itself, or the one attached to a stamped PDF.
std::optional<std::string> sealedFrom(const std::string& bytes) {
  return bytes.rfind("%PDF-", 0) == 0 ? evidenceAttachedToPdf(bytes) : std::optional(bytes);
}

}  // namespace

int sealCommand(int argc, char** argv) {
  Arguments args =
      parseArguments(argc, argv, 2, {"record", "document", "examiner", "signer-cert", "signer-key", "output"}, {});
  if (args.has("help")) return std::fputs(kSealUsage, stdout), 0;
  if (!args.error.empty()) return failure("seal", args.error);
  if (!args.inputs.empty()) return failure("seal", "unexpected argument " + args.inputs[0]);
  if (!args.has("output")) return failure("seal", "--output is required (see --help)");
  if (args.has("signer-cert") != args.has("signer-key"))
    return failure("seal", "--signer-cert and --signer-key go together");
  std::string error;
  std::optional<std::string> recordText = required(args, "record", &error), document, examiner;
  if (recordText) document = required(args, "document", &error);
  if (document) examiner = required(args, "examiner", &error);
  if (!examiner) return failure("seal", error);
  std::optional<RecordFile> record = recordFromJson(*recordText, &error);
  if (!record) return failure("seal", args.value("record") + " is not a record file: " + error);

  EvidenceSealRequest request;
  request.record = std::move(*record);
  request.documentSha256 = documentSha256Of(*document);
  request.documentSize = document->size();
  request.documentName = std::filesystem::path(args.value("document")).filename().string();
  request.examinerCertificate = std::move(*examiner);
  if (args.has("signer-cert")) {
    std::optional<std::string> cert = required(args, "signer-cert", &error), key;
    if (cert) key = required(args, "signer-key", &error);
    if (!key) return failure("seal", error);
    request.signerCertificate = std::move(*cert);
    request.signerKey = std::move(*key);
  }
  std::optional<std::string> sealed = sealEvidence(request, &error);
  if (!sealed) return failure("seal", error);
  if (!writeFile(args.value("output"), *sealed)) return failure("seal", "cannot write " + args.value("output"));
  std::printf("sealed %s with %s: %s\n", args.value("record").c_str(), args.value("document").c_str(),
              args.value("output").c_str());
  return 0;
}

int verifyCommand(int argc, char** argv) {
  Arguments args = parseArguments(argc, argv, 2, {"evidence", "trust", "jobs"}, {"require-signature"});
  if (args.has("help")) return std::fputs(kVerifyUsage, stdout), 0;
  if (!args.error.empty()) return failure("verify", args.error);
  if (args.inputs.empty()) return failure("verify", "no document given (see --help)");
  if (args.has("evidence") && args.inputs.size() != 1) return failure("verify", "--evidence takes one document");
  bool ok = true;
  std::optional<double> jobs = args.number("jobs", &ok);
  if (!ok || (jobs && *jobs < 1)) return failure("verify", "--jobs takes a positive number");
  std::string error, trusted;
  if (args.has("trust")) {
    std::optional<std::string> read = required(args, "trust", &error);
    if (!read) return failure("verify", error);
    trusted = std::move(*read);
  }
  int workers = jobs ? int(std::min(*jobs, 256.0)) : defaultJobs();
  return runBatch(args.inputs, workers, [&](const std::string& path) {
    std::string error;
    std::optional<std::string> document = readFile(path), sealed;
    if (!document) return failure("verify", "cannot read " + path);
    if (args.has("evidence"))
      sealed = required(args, "evidence", &error);
    else if (!(sealed = evidenceAttachedToPdf(*document)))
      error = path + " carries no evidence: give --evidence";
    if (!sealed) return failure("verify", error);
    EvidenceVerification report = verifyEvidence(*sealed, *document, trusted);
    bool valid = report.valid() && (report.signedManifest || !args.has("require-signature"));
    std::string text = path + ": " +
                       (!valid                  ? "NOT VALID"
                        : report.signedManifest ? "valid"
                                                : "valid, unsigned") +
                       "\n";
    for (const EvidenceCheck& check : report.checks)
      text += "  " + check.name + ": " + (check.passed ? "passed" : "FAILED") + ": " + check.detail + "\n";
    if (!report.signedManifest && report.checks.size() > 2)
      text += std::string("  manifest signature: ") + (args.has("require-signature") ? "FAILED" : "none") +
              ": the manifest is hashed, not signed\n";
    std::fputs(text.c_str(), stdout);
    return valid ? 0 : 1;
  });
}

int openCommand(int argc, char** argv) {
  Arguments args =
      parseArguments(argc, argv, 2, {"evidence", "key", "out-dir", "scale"}, {"date", "date-time", "hash"});
  if (args.has("help")) return std::fputs(kOpenUsage, stdout), 0;
  if (!args.error.empty()) return failure("open", args.error);
  if (!args.has("out-dir")) return failure("open", "--out-dir is required (see --help)");
  bool ok = true;
  RecordRenderSettings settings;
  settings.exportScale = float(args.number("scale", &ok).value_or(2));
  if (!ok || settings.exportScale <= 0) return failure("open", "--scale takes a positive number");
  settings.showDate = args.has("date") || args.has("date-time");
  settings.dateIncludesTime = args.has("date-time");
  settings.showHash = args.has("hash");
  std::string error;
  std::optional<std::string> file = required(args, "evidence", &error), key, sealed;
  if (file) key = required(args, "key", &error);
  if (!key) return failure("open", error);
  if (!(sealed = sealedFrom(*file))) return failure("open", args.value("evidence") + " carries no evidence");
  std::optional<RecordFile> record = openEvidence(*sealed, *key, &error);
  if (!record) return failure("open", error);

  std::filesystem::path folder = args.value("out-dir");
  std::error_code made;
  std::filesystem::create_directories(folder, made);
  settings.hash = record->hash;
  settings.timestamp = record->timestamp;
  auto redrawn = renderRecordOfStrokes(record->strokes, settings);
  if (!redrawn) return failure("open", "the sealed strokes have no points to draw");
  if (!writeFile((folder / "strokes.json").string(), strokesToJson(record->strokes)) ||
      !writeFile((folder / "record.json").string(), recordFileToJson(*record)) ||
      !writeFile((folder / "sealed-image.png").string(), record->png.data(), record->png.size()))
    return failure("open", "cannot write into " + folder.string());
  for (const char* format : {"png", "pdf", "svg", "xml"})
    if (!writeOutput(*redrawn, format, (folder / (std::string("signature.") + format)).string(), &error))
      return failure("open", error);
  std::printf("opened %s: hash %s, %zu strokes, written to %s\n", args.value("evidence").c_str(), record->hash.c_str(),
              record->strokes->size(), folder.c_str());
  return 0;
}

int stampCommand(int argc, char** argv) {
  Arguments args = parseArguments(argc, argv, 2, {"document", "evidence", "page", "rect", "output"}, {});
  if (args.has("help")) return std::fputs(kStampUsage, stdout), 0;
  if (!args.error.empty()) return failure("stamp", args.error);
  if (!args.has("output")) return failure("stamp", "--output is required (see --help)");
  bool ok = true;
  PdfStampPlacement placement;
  double page = args.number("page", &ok).value_or(1);
  placement.page = page >= 1 && page <= 1e6 ? int(page) : 0;  // no such page: refused with the reason
  char end;
  if (!ok || std::sscanf(args.value("rect").c_str(), "%lf,%lf,%lf,%lf%c", &placement.x, &placement.y, &placement.width,
                         &placement.height, &end) != 4)
    return failure("stamp", "--page takes a number and --rect four numbers X,Y,W,H");
  std::string error;
  std::optional<std::string> document = required(args, "document", &error), sealed;
  if (document) sealed = required(args, "evidence", &error);
  if (!sealed) return failure("stamp", error);
  std::optional<std::vector<uint8_t>> stamped = stampEvidenceIntoPdf(*document, *sealed, placement, &error);
  if (!stamped) return failure("stamp", error);
  if (!writeFile(args.value("output"), stamped->data(), stamped->size()))
    return failure("stamp", "cannot write " + args.value("output"));
  std::printf("stamped %s on page %d: %s\n", args.value("document").c_str(), placement.page,
              args.value("output").c_str());
  return 0;
}

}  // namespace scrivlet::tool
