// A recorded-style signature the demo replays when no one is there to sign: three strokes sampled at
// 120 Hz, in points on a 540 x 300 view.
#pragma once

#include <cmath>
#include <vector>

namespace scrivlet::demo {

struct Sample {
  double x, y, t;  // points, points, seconds
};

inline std::vector<std::vector<Sample>> builtInSignature() {
  std::vector<std::vector<Sample>> strokes;
  double t = 0;
  // A looping cursive run, a crossing bar and a closing flourish.
  std::vector<Sample> run;
  for (int i = 0; i <= 150; ++i, t += 1 / 120.0) {
    double u = i / 150.0;
    run.push_back({60 + 380 * u + 28 * std::sin(u * 6 * 2 * M_PI),
                   170 - 45 * std::cos(u * 6 * 2 * M_PI) * (0.6 + 0.4 * std::sin(u * M_PI)), t});
  }
  strokes.push_back(run);
  t += 0.25;
  std::vector<Sample> bar;
  for (int i = 0; i <= 30; ++i, t += 1 / 120.0)
    bar.push_back({120 + 9.0 * i, 120 + 0.5 * i + 3 * std::sin(i * 0.3), t});
  strokes.push_back(bar);
  t += 0.3;
  std::vector<Sample> flourish;
  for (int i = 0; i <= 60; ++i, t += 1 / 120.0) {
    double u = i / 60.0;
    flourish.push_back({440 + 60 * u, 215 - 70 * u * u + 20 * std::sin(u * M_PI), t});
  }
  strokes.push_back(flourish);
  return strokes;
}

}  // namespace scrivlet::demo
