#!/usr/bin/env bash
# Builds Scrivlet and runs the demo. On a screen it opens the demo window; without one it replays the
# built-in signature and writes the record's files (and pictures of the windows) to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target scrivlet_demo
./build/scrivlet_demo "$@"
