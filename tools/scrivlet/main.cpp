// The scrivlet command-line tool: signatures drawn again, sealed, signed into PDFs, verified and
// opened, for servers and scripts.
#include "commands.h"

#include <cstdio>
#include <cstring>

namespace {

const char* kUsage = R"(usage: scrivlet COMMAND [options]

  render    draw saved strokes, record files or 19794-7 time series as PNG, PDF, SVG, XML
  seal      seal a record with the document it signs, for an examiner
  sign      sign the PDF (PAdES) with the sealed signature shown and embedded
  verify    verify signed PDFs or sealed evidence, check by check
  open      verify, then decrypt the biometric data with the examiner's key and draw it again
  stamp     another name for sign

scrivlet COMMAND --help tells more. Exit status 0 on success; otherwise one line on standard error
(verify: 3 unreadable, 4 unsigned, 5 untrusted, 6 modified after signing, 7 tampered).
)";

}  // namespace

int main(int argc, char** argv) {
  using namespace scrivlet::tool;
  const char* command = argc > 1 ? argv[1] : "";
  if (!std::strcmp(command, "render")) return renderCommand(argc, argv);
  if (!std::strcmp(command, "seal")) return sealCommand(argc, argv);
  if (!std::strcmp(command, "verify")) return verifyCommand(argc, argv);
  if (!std::strcmp(command, "open")) return openCommand(argc, argv);
  if (!std::strcmp(command, "sign") || !std::strcmp(command, "stamp")) return signCommand(argc, argv);
  if (!std::strcmp(command, "--help") || !std::strcmp(command, "-h") || !std::strcmp(command, "help"))
    return std::fputs(kUsage, stdout), 0;
  if (*command) std::fprintf(stderr, "scrivlet: unknown command \"%s\" (see scrivlet --help)\n", command);
  else std::fprintf(stderr, "scrivlet: no command given (see scrivlet --help)\n");
  return 2;
}
