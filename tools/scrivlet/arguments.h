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

std::optional<std::string> readFile(const std::string& path);
bool writeFile(const std::string& path, const void* bytes, size_t size);
inline bool writeFile(const std::string& path, const std::string& text) {
  return writeFile(path, text.data(), text.size());
}

// Prints "scrivlet COMMAND: reason" on standard error and answers the failing exit status.
int failure(const std::string& command, const std::string& reason);

}  // namespace scrivlet::tool
