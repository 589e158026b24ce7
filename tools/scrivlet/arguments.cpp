// Command-line parsing and whole-file input and output for the tool.
#include "arguments.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace scrivlet::tool {

std::string Arguments::value(const std::string& name, const std::string& otherwise) const {
  auto found = values.find(name);
  return found == values.end() ? otherwise : found->second;
}

std::optional<double> Arguments::number(const std::string& name, bool* ok) const {
  auto found = values.find(name);
  if (found == values.end()) return std::nullopt;
  char* end = nullptr;
  double parsed = std::strtod(found->second.c_str(), &end);
  if (found->second.empty() || *end != '\0' || !std::isfinite(parsed)) *ok = false;
  return parsed;
}

Arguments parseArguments(int argc, char** argv, int first, const std::set<std::string>& valued,
                         const std::set<std::string>& flags) {
  Arguments arguments;
  for (int i = first; i < argc; ++i) {
    std::string word = argv[i];
    if (word == "-h") word = "--help";
    if (word == "-o") word = "--output";
    if (word == "-j") word = "--jobs";
    if (word.rfind("--", 0) != 0 || word == "--") {
      arguments.inputs.push_back(word);
      continue;
    }
    std::string name = word.substr(2);
    std::optional<std::string> inlineValue;
    if (size_t equals = name.find('='); equals != std::string::npos)
      inlineValue = name.substr(equals + 1), name.resize(equals);
    if (valued.count(name)) {
      if (!inlineValue && i + 1 >= argc) {
        arguments.error = "--" + name + " needs a value";
        break;
      }
      arguments.values[name] = inlineValue ? *inlineValue : argv[++i];
    } else if ((flags.count(name) || name == "help") && !inlineValue) {
      arguments.flags.insert(name);
    } else {
      arguments.error = "unknown option --" + name;
      break;
    }
  }
  return arguments;
}

std::optional<std::string> readFile(const std::string& path, size_t limit, std::string* error) {
  int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    if (descriptor >= 0) ::close(descriptor);
    return *error = "cannot read " + path, std::nullopt;
  }
  if (uint64_t(status.st_size) > limit) {
    ::close(descriptor);
    return *error = path + " is larger than " + std::to_string(limit >> 20) + " MiB: refused unread", std::nullopt;
  }
  std::string bytes(size_t(status.st_size), '\0');
  size_t done = 0;
  for (ssize_t got = 1; done < bytes.size() && got > 0; done += size_t(std::max<ssize_t>(got, 0)))
    got = ::read(descriptor, bytes.data() + done, bytes.size() - done);
  ::close(descriptor);
  if (done != bytes.size()) return *error = "cannot read " + path, std::nullopt;
  return bytes;
}

bool writeFile(const std::string& path, const void* bytes, size_t size, bool privateFile) {
  std::string temporary = path + ".XXXXXX";
  int descriptor = mkstemp(temporary.data());  // made 0600
  if (descriptor < 0) return false;
  const char* data = static_cast<const char*>(bytes);
  size_t done = 0;
  for (ssize_t wrote = 1; done < size && wrote > 0; done += size_t(std::max<ssize_t>(wrote, 0)))
    wrote = ::write(descriptor, data + done, size - done);
  mode_t mask = umask(0);
  umask(mask);
  bool written = done == size && fchmod(descriptor, privateFile ? 0600 : (0644 & ~mask)) == 0 && fsync(descriptor) == 0;
  written = ::close(descriptor) == 0 && written && std::rename(temporary.c_str(), path.c_str()) == 0;
  if (!written) std::remove(temporary.c_str());
  return written;
}

bool sameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  if (std::filesystem::equivalent(a, b, error)) return true;
  return std::filesystem::weakly_canonical(a, error) == std::filesystem::weakly_canonical(b, error);
}

int failure(const std::string& command, const std::string& reason) {
  std::fprintf(stderr, "scrivlet %s: %s\n", command.c_str(), reason.c_str());
  return 1;
}

}  // namespace scrivlet::tool
