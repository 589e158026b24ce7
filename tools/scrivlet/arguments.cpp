// Command-line parsing and whole-file input and output for the tool.
#include "arguments.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

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

std::optional<std::string> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::ostringstream bytes;
  bytes << file.rdbuf();
  if (file.bad()) return std::nullopt;
  return std::move(bytes).str();
}

bool writeFile(const std::string& path, const void* bytes, size_t size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  return file && file.write(static_cast<const char*>(bytes), std::streamsize(size)) && file.flush();
}

int failure(const std::string& command, const std::string& reason) {
  std::fprintf(stderr, "scrivlet %s: %s\n", command.c_str(), reason.c_str());
  return 1;
}

}  // namespace scrivlet::tool
