// The tool's commands; each takes the whole command line and answers the exit status.
#pragma once

#include <scrivlet/evidence.h>

#include <optional>
#include <string>

namespace scrivlet::tool {

struct Arguments;

int renderCommand(int argc, char** argv);
int sealCommand(int argc, char** argv);
int signCommand(int argc, char** argv);
int verifyCommand(int argc, char** argv);
int openCommand(int argc, char** argv);

// The exit status of a verification: 0 valid, 3 unreadable, 4 unsigned, 5 untrusted, 6 modified
// after signing, 7 tampered (1 is a command that could not run, 2 an unknown command).
int exitStatusOf(EvidenceVerdict verdict);

// Reads a file named by a required option, bounded by `limit`; fails with the reason otherwise.
std::optional<std::string> required(const Arguments& args, const std::string& option, size_t limit, std::string* error);
// The same for an option that may be absent: an empty text then.
std::optional<std::string> optional(const Arguments& args, const std::string& option, size_t limit, std::string* error);

// Keys, certificates and chains are small; anything larger is not one. Sealed files are read up to
// the size the library reads.
inline constexpr size_t kLargestKeyFile = size_t(1) << 20;
inline constexpr size_t kLargestSealedFile = size_t(256) << 20;

}  // namespace scrivlet::tool
