// scrivlet seal and open: the evidence library's sealing and opening on the command line.
#include "arguments.h"
#include "commands.h"
#include "render_output.h"

#include <scrivlet/pdf_signature.h>
#include <scrivlet/stroke_json.h>

#include <cstdio>
#include <filesystem>

namespace scrivlet::tool {

namespace {

const char* kSealUsage = R"(usage: scrivlet seal --record RECORD --document DOCUMENT --examiner CERT -o SEALED [options]

Seals a signature record (a record file, as a signing device writes it) with the document it signs:
the strokes are encrypted to the examiner (CMS, AES-256-GCM) together with the document's SHA-256,
and a manifest binds the document's SHA-256 and size, the image, the encrypted strokes, the
record's hash and time, the device and the library. `scrivlet sign` then signs the PDF with it.

  --record FILE         the record file (JSON) of the signing
  --document FILE       the document signed (any bytes; the PDF to sign)
  --examiner FILE       the examiner's X.509 certificate (PEM or DER) or PEM public key, RSA or EC
  --signer-cert FILE    the capturing application's certificate (PEM), to sign the manifest
  --signer-key FILE     its private key (PEM, not protected by a pass phrase)
  --chain FILE          the intermediate certificates of the signer (PEM)
  -o, --output FILE     the sealed file to write (never one of the inputs)
  -h, --help            this help
)";

const char* kOpenUsage = R"(usage: scrivlet open --evidence FILE --key KEY --out-dir DIR [options]

Verifies the evidence first, as `scrivlet verify` does, and opens it only when it is valid: decrypts
the strokes with the examiner's private key, checks that they were sealed for this document and
signing, and draws the signature again. Writes strokes.json, record.json, sealed-image.png (the
image as sealed) and signature.png, .pdf, .svg and .xml drawn from the strokes, readable by the
owner alone: they hold the biometric data in plain text.

  --evidence FILE       a signed PDF, or a sealed file
  --key FILE            the examiner's private key (PEM or DER, not protected by a pass phrase)
  --out-dir DIR         where to write (created if missing)
  --trust FILE          trusted certificates (PEM): the signer must chain to one
  --field NAME          the PDF's signature to open (needed when it has several)
  --document FILE       with a sealed file: the document it was sealed with, checked too
  --allow-later-changes open a signed PDF changed after signing
  --scale S             output units per point of the drawings (default 2)
  --date, --date-time   stamp the drawings with the date (and time) of signing
  --hash                stamp the drawings with the signing's hash
  -h, --help            this help
)";

bool isPdf(const std::string& bytes) { return bytes.rfind("%PDF-", 0) == 0; }

// Writes every output into the folder, or none: what was written is removed when one fails.
bool writeAll(const std::filesystem::path& folder, const std::vector<std::pair<std::string, std::string>>& files) {
  std::vector<std::filesystem::path> written;
  for (const auto& [name, bytes] : files) {
    if (!writeFile((folder / name).string(), bytes, true)) {
      for (const auto& path : written) std::filesystem::remove(path);
      return false;
    }
    written.push_back(folder / name);
  }
  return true;
}

}  // namespace

int exitStatusOf(EvidenceVerdict verdict) {
  switch (verdict) {
    case EvidenceVerdict::Valid: return 0;
    case EvidenceVerdict::Unreadable: return 3;
    case EvidenceVerdict::Unsigned: return 4;
    case EvidenceVerdict::Untrusted: return 5;
    case EvidenceVerdict::ModifiedAfterSigning: return 6;
    case EvidenceVerdict::Tampered: return 7;
  }
  return 1;
}

std::optional<std::string> required(const Arguments& args, const std::string& option, size_t limit,
                                    std::string* error) {
  if (!args.has(option)) return *error = "--" + option + " is required (see --help)", std::nullopt;
  return readFile(args.value(option), limit, error);
}

std::optional<std::string> optional(const Arguments& args, const std::string& option, size_t limit,
                                    std::string* error) {
  return args.has(option) ? readFile(args.value(option), limit, error) : std::optional<std::string>("");
}

int sealCommand(int argc, char** argv) {
  Arguments args = parseArguments(
      argc, argv, 2, {"record", "document", "examiner", "signer-cert", "signer-key", "chain", "output"}, {});
  if (args.has("help")) return std::fputs(kSealUsage, stdout), 0;
  if (!args.error.empty()) return failure("seal", args.error);
  if (!args.inputs.empty()) return failure("seal", "unexpected argument " + args.inputs[0]);
  if (!args.has("output")) return failure("seal", "--output is required (see --help)");
  if (args.has("signer-cert") != args.has("signer-key"))
    return failure("seal", "--signer-cert and --signer-key go together");
  for (const char* input : {"record", "document", "examiner", "signer-cert", "signer-key", "chain"})
    if (args.has(input) && sameFile(args.value("output"), args.value(input)))
      return failure("seal", "--output names the " + std::string(input) + " file: it is not written over");
  std::string error;
  std::optional<std::string> recordText = required(args, "record", kLargestSealedFile, &error), document, examiner;
  if (recordText) document = required(args, "document", kLargestInput, &error);
  if (document) examiner = required(args, "examiner", kLargestKeyFile, &error);
  if (!examiner) return failure("seal", error);
  Result<RecordFile> record = recordFromJson(*recordText);
  if (!record) return failure("seal", args.value("record") + " is not a record file: " + record.error().message());

  EvidenceSealRequest request;
  request.setRecord(std::move(*record));
  request.setDocumentSha256(documentSha256Of(*document));
  request.setDocumentSize(document->size());
  request.setDocumentName(std::filesystem::path(args.value("document")).filename().string());
  request.setExaminerCertificate(std::move(*examiner));
  std::optional<std::string> cert = optional(args, "signer-cert", kLargestKeyFile, &error), key, chain;
  if (cert) key = optional(args, "signer-key", kLargestKeyFile, &error);
  if (key) chain = optional(args, "chain", kLargestKeyFile, &error);
  if (!chain) return failure("seal", error);
  request.setManifestSigner({std::move(*cert), std::move(*key), std::move(*chain)});
  Result<std::string> sealed = sealEvidence(request);
  if (!sealed) return failure("seal", sealed.error().message());
  if (!writeFile(args.value("output"), *sealed)) return failure("seal", "cannot write " + args.value("output"));
  std::printf("sealed %s with %s: %s\n", args.value("record").c_str(), args.value("document").c_str(),
              args.value("output").c_str());
  return 0;
}

int openCommand(int argc, char** argv) {
  Arguments args = parseArguments(argc, argv, 2, {"evidence", "key", "out-dir", "scale", "trust", "field", "document"},
                                  {"date", "date-time", "hash", "allow-later-changes"});
  if (args.has("help")) return std::fputs(kOpenUsage, stdout), 0;
  if (!args.error.empty()) return failure("open", args.error);
  if (!args.has("out-dir")) return failure("open", "--out-dir is required (see --help)");
  bool ok = true;
  RecordRenderSettings settings;
  settings.setExportScale(float(args.number("scale", &ok).value_or(2)));
  if (!ok || settings.exportScale() <= 0) return failure("open", "--scale takes a positive number");
  settings.setShowDate(args.has("date") || args.has("date-time"));
  settings.setDateIncludesTime(args.has("date-time"));
  settings.setShowHash(args.has("hash"));
  std::string error;
  std::optional<std::string> file = required(args, "evidence", kLargestInput, &error), key, trust, document;
  if (file) key = required(args, "key", kLargestKeyFile, &error);
  if (key) trust = optional(args, "trust", kLargestKeyFile, &error);
  if (trust) document = optional(args, "document", kLargestInput, &error);
  if (!document) return failure("open", error);

  EvidenceVerifyOptions options{*trust, args.has("allow-later-changes")};
  Result<RecordFile> record =
      isPdf(*file) ? openPdfEvidence(*file, args.value("field"), *key, options)
                   : openEvidence(*file, *key, options, nullptr,
                                  args.has("document") ? std::optional<std::string_view>(*document) : std::nullopt);
  if (!record) return failure("open", record.error().message());

  std::filesystem::path folder = args.value("out-dir");
  std::error_code made;
  std::filesystem::create_directories(folder, made);
  settings.setHash(record->hash());
  settings.setTimestamp(record->timestamp());
  auto redrawn = renderRecordOfStrokes(record->strokes(), settings);
  if (!redrawn) return failure("open", "the sealed strokes have no points to draw");
  auto text = [](const auto& data) { return data ? std::string(data->begin(), data->end()) : std::string(); };
  std::vector<std::pair<std::string, std::string>> files{
      {"strokes.json", strokesToJson(record->strokes())},
      {"record.json", recordFileToJson(*record)},
      {"sealed-image.png", std::string(record->png().begin(), record->png().end())},
      {"signature.png", text(redrawn->imageData())},
      {"signature.pdf", text(redrawn->pdfData())},
      {"signature.svg", redrawn->svgString().value_or("")},
      {"signature.xml", redrawn->xmlString().value_or("")}};
  if (!writeAll(folder, files))
    return failure("open", "cannot write into " + folder.string() + ": nothing was left there");
  std::printf("verified and opened %s: hash %s, %zu strokes, written to %s\n", args.value("evidence").c_str(),
              record->hash().c_str(), record->strokes()->size(), folder.c_str());
  return 0;
}

}  // namespace scrivlet::tool
