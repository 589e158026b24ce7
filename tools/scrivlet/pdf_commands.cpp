// scrivlet sign and verify: PDF signatures carrying sealed evidence, and the verification of signed
// PDFs and sealed files.
#include "arguments.h"
#include "batch.h"
#include "commands.h"

#include <scrivlet/pdf_signature.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace scrivlet::tool {

namespace {

const char* kSignUsage = R"(usage: scrivlet sign --document PDF --evidence SEALED --signer-cert CERT --signer-key KEY
                     --rect X,Y,W,H -o OUT [options]

Signs the PDF (PAdES baseline B-B, or B-T with --tsa) as an incremental update: a signature field
whose widget shows the sealed signature image in the rectangle, the sealed file embedded, and a CMS
signature (SHA-256, signing-certificate-v2, the chain) over every byte but its own. The sealed file
is checked first and must have been sealed with exactly this PDF. `stamp` is another name for it.

  --document FILE       the PDF sealed
  --evidence FILE       the sealed file (scrivlet seal, or sealed on the signing device)
  --signer-cert FILE    the capturing application's certificate (PEM)
  --signer-key FILE     its private key (PEM, not protected by a pass phrase)
  --chain FILE          the intermediate certificates of the signer (PEM)
  --page N              the page, from 1 (default 1)
  --rect X,Y,W,H        the rectangle in PDF points from the page's bottom-left corner
  --name TEXT           the signer's name, shown under the image and recorded in the signature
  --date                show the signing date (UTC) under the image
  --hash                show the signing's hash under the image
  --field NAME          the signature field's name (default Signature1, Signature2, ...)
  --tsa URL             time-stamp the signature at this RFC 3161 authority (http or https)
  -o, --output FILE     the signed PDF to write (never one of the inputs)
  -h, --help            this help
)";

const char* kVerifyUsage = R"(usage: scrivlet verify [options] FILE...

Verifies signed PDFs (every signature: its CMS over its byte range, its signer's chain, its
time-stamp, the revisions added after it, and the sealed evidence it carries), or a sealed file
against the document it was sealed with (--evidence). Prints one verdict line per file and each
check, or a JSON report with --json. Exit status: 0 valid, 3 unreadable, 4 unsigned, 5 untrusted,
6 modified after signing, 7 tampered (the worst over all files); 1 when a file cannot be read.

  --trust FILE          trusted certificates (PEM); without them nothing is "valid", only "untrusted"
  --evidence FILE       a sealed file, checked against the one FILE given, which must be exactly the
                        document sealed
  --allow-later-changes a revision after a signature that is not a signature does not fail
  --json                a JSON report per file instead of the lines
  --require-signature   accepted for older scripts: a signature is always required
  -j, --jobs N          files checked at once (default: the number of cores)
  -h, --help            this help
)";

std::string checkLines(const std::vector<EvidenceCheck>& checks, const char* indent) {
  std::string text;
  for (const EvidenceCheck& check : checks)
    text += indent + check.name() + ": " + (check.passed() ? "passed" : "FAILED") + ": " + check.detail() + "\n";
  return text;
}

std::string verdictLine(const std::string& what, EvidenceVerdict verdict, const std::string& reason) {
  return what + ": " +
         (verdict == EvidenceVerdict::Valid ? "valid"
                                            : std::string("NOT VALID: ") + evidenceVerdictName(verdict) +
                                                  (reason.empty() ? "" : " (" + reason + ")")) +
         "\n";
}

std::string humanReport(const std::string& path, const PdfVerification& report) {
  std::string text = verdictLine(path, report.verdict(), report.reason());
  for (const PdfSignatureVerification& s : report.signatures()) {
    text +=
        "  signature " + s.field() + ": " +
        (s.verdict() == EvidenceVerdict::Valid ? "valid" : std::string("NOT VALID: ") + evidenceVerdictName(s.verdict())) +
        (s.signer().empty() ? "" : ", by " + s.signer()) +
        (s.signingTime().empty() ? "" : (s.timeStamped() ? ", time-stamped " : ", signed ") + s.signingTime()) +
        (s.coversWholeDocument() ? ", covers the whole document" : ", does not cover the whole document") + "\n";
    text += checkLines(s.checks(), "    ");
    if (s.evidence()) text += checkLines(s.evidence()->checks(), "    evidence ");
  }
  return text;
}

}  // namespace

int signCommand(int argc, char** argv) {
  Arguments args = parseArguments(
      argc, argv, 2,
      {"document", "evidence", "signer-cert", "signer-key", "chain", "page", "rect", "name", "field", "tsa", "output"},
      {"date", "hash"});
  if (args.has("help")) return std::fputs(kSignUsage, stdout), 0;
  if (!args.error.empty()) return failure("sign", args.error);
  if (!args.inputs.empty()) return failure("sign", "unexpected argument " + args.inputs[0]);
  if (!args.has("output")) return failure("sign", "--output is required (see --help)");
  for (const char* input : {"document", "evidence", "signer-cert", "signer-key", "chain"})
    if (args.has(input) && sameFile(args.value("output"), args.value(input)))
      return failure("sign", "--output names the " + std::string(input) + " file: it is not written over");
  bool ok = true;
  PdfSignatureRequest request;
  std::optional<double> page = args.number("page", &ok);
  if (!ok || (page && (*page < 1 || *page > 1e6 || *page != int(*page))))
    return failure("sign", "--page takes a page number from 1");
  request.setPage(int(page.value_or(1)));
  char end;
  double x, y, width, height;
  if (std::sscanf(args.value("rect").c_str(), "%lf,%lf,%lf,%lf%c", &x, &y, &width, &height, &end) != 4)
    return failure("sign", "--rect takes four numbers X,Y,W,H");
  request.setRect(x, y, width, height);
  std::string error;
  std::optional<std::string> document = required(args, "document", kLargestInput, &error), sealed, cert, key, chain;
  if (document) sealed = required(args, "evidence", kLargestSealedFile, &error);
  if (sealed) cert = required(args, "signer-cert", kLargestKeyFile, &error);
  if (cert) key = required(args, "signer-key", kLargestKeyFile, &error);
  if (key) chain = optional(args, "chain", kLargestKeyFile, &error);
  if (!chain) return failure("sign", error);
  request.setSealedEvidence(std::move(*sealed));
  request.setSigner({std::move(*cert), std::move(*key), std::move(*chain)});
  request.setSignerName(args.value("name"));
  request.setShowDate(args.has("date"));
  request.setShowHash(args.has("hash"));
  request.setFieldName(args.value("field"));
  request.setTimeStampUrl(args.value("tsa"));
  Result<std::vector<uint8_t>> signedPdf = signPdf(*document, request);
  if (!signedPdf) return failure("sign", signedPdf.error().message());
  if (!writeFile(args.value("output"), signedPdf->data(), signedPdf->size()))
    return failure("sign", "cannot write " + args.value("output"));
  std::printf("signed %s on page %d: %s\n", args.value("document").c_str(), request.page(), args.value("output").c_str());
  return 0;
}

int verifyCommand(int argc, char** argv) {
  Arguments args = parseArguments(argc, argv, 2, {"evidence", "trust", "jobs"},
                                  {"require-signature", "allow-later-changes", "json"});
  if (args.has("help")) return std::fputs(kVerifyUsage, stdout), 0;
  if (!args.error.empty()) return failure("verify", args.error);
  if (args.inputs.empty()) return failure("verify", "no file given (see --help)");
  if (args.has("evidence") && args.inputs.size() != 1) return failure("verify", "--evidence takes one document");
  bool ok = true;
  std::optional<double> jobs = args.number("jobs", &ok);
  if (!ok || (jobs && *jobs < 1)) return failure("verify", "--jobs takes a positive number");
  std::string error;
  std::optional<std::string> trusted = optional(args, "trust", kLargestKeyFile, &error), sealed;
  if (trusted) sealed = optional(args, "evidence", kLargestSealedFile, &error);
  if (!sealed) return failure("verify", error);
  EvidenceVerifyOptions options{*trusted, args.has("allow-later-changes")};
  int workers = jobs ? int(std::min(*jobs, 256.0)) : defaultJobs();
  return runBatch(args.inputs, workers, [&](const std::string& path) {
    std::string error;
    std::optional<std::string> document = readFile(path, kLargestInput, &error);
    if (!document) return failure("verify", error);
    EvidenceVerdict verdict;
    std::string text, json;
    if (args.has("evidence")) {
      EvidenceVerification report = verifyEvidence(*sealed, *document, options);
      verdict = report.verdict();
      text = verdictLine(path, verdict, report.reason()) + checkLines(report.checks(), "  ");
      json = evidenceVerificationToJson(report);
    } else {
      PdfVerification report = verifyPdf(*document, options);
      verdict = report.verdict();
      text = humanReport(path, report);
      json = pdfVerificationToJson(report);
    }
    if (args.has("json")) {
      nlohmann::json wrapped{{"file", path}, {"verification", nlohmann::json::parse(json)}};
      text = wrapped.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    }
    std::fputs(text.c_str(), stdout);
    return exitStatusOf(verdict);
  });
}

}  // namespace scrivlet::tool
