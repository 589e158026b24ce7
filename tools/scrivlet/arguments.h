// The tool's command lines: options with values, flags and inputs; files read and written whole.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scrivlet::tool {

struct Arguments {
  std::map<std::string, std::string> values;  // --name VALUE or --name=VALUE
  std::set<std::string> flags;                // --name
  std::vector<std::string> inputs;            // everything else
  std::string error;                          // what was wrong with the command line, if anything

  bool has(const std::string& name) const { return values.count(name) || flags.count(name); }
  std::string value(const std::string& name, const std::string& otherwise = "") const;
  // The value as a number; nothing when it is absent; *ok false when present but not a finite number.
  std::optional<double> number(const std::string& name, bool* ok) const;
};

// Reads argv from `first` on: `valued` options take a value, `flags` do not; -h, -o and -j are
// --help, --output and --jobs.
Arguments parseArguments(int argc, char** argv, int first, const std::set<std::string>& valued,
                         const std::set<std::string>& flags);

// The file's bytes, when it is a regular file of at most `limit` bytes: the size is checked before
// anything is read. Nothing, with the reason in *error, otherwise.
inline constexpr size_t kLargestInput = size_t(512) << 20;
std::optional<std::string> readFile(const std::string& path, size_t limit, std::string* error);
inline std::optional<std::string> readFile(const std::string& path) {
  std::string ignored;
  return readFile(path, kLargestInput, &ignored);
}

// Writes through a temporary file beside the target, renamed over it once complete: a reader never
// sees half a file, and a failed write leaves nothing behind. `privateFile`: readable by the owner
// alone (0600), for anything holding biometric data; else 0644 less the umask.
bool writeFile(const std::string& path, const void* bytes, size_t size, bool privateFile = false);
inline bool writeFile(const std::string& path, const std::string& text, bool privateFile = false) {
  return writeFile(path, text.data(), text.size(), privateFile);
}

// Whether two paths name the same file (or would, once the first is written).
bool sameFile(const std::string& a, const std::string& b);

// Prints "scrivlet COMMAND: reason" on standard error and answers the failing exit status.
int failure(const std::string& command, const std::string& reason);

}  // namespace scrivlet::tool
