#!/usr/bin/env bash
# Builds Scrivlet and runs the demo, which writes the signature it replays to out/.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target scrivlet_demo
./build/scrivlet_demo out
