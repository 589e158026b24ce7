// The common input signatures of the benchmarks, read from the shared data folder.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace scrivlet::bench {

struct Sample {
  int stroke;
  double x, y, tMs, pressure;
};

// The samples of one CSV file (stroke, index, x, y, t_ms, pressure), in file order; empty if missing.
inline std::vector<Sample> loadSamples(const std::string& name) {
  std::vector<Sample> samples;
  std::ifstream in(std::string(SCRIVLET_SHARED_DATA_DIR) + "/" + name);
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    Sample s{};
    int index;
    char comma;
    if (fields >> s.stroke >> comma >> index >> comma >> s.x >> comma >> s.y >> comma >> s.tMs >>
        comma >> s.pressure)
      samples.push_back(s);
  }
  return samples;
}

}  // namespace scrivlet::bench
