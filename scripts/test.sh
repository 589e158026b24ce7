#!/usr/bin/env bash
# Builds Scrivlet with its tests and benchmarks and runs every test (after `bash scripts/setup.sh --tests`).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCRIVLET_BUILD_TESTS=ON -DSCRIVLET_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
