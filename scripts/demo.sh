#!/usr/bin/env bash
# Builds Scrivlet and runs the demo. On a screen it opens the demo window; without one it replays the
# built-in signature and writes the record's files (and pictures of the windows) to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
# Tests and benchmarks are left out: their libraries come with `bash scripts/setup.sh --tests`. Building
# them later in the same folder rebuilds nothing of the library.
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCRIVLET_BUILD_TESTS=OFF -DSCRIVLET_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build -j"$(nproc)" --target scrivlet_demo
./build/scrivlet_demo "$@"
