#!/usr/bin/env bash
# Builds the session fuzzer (clang, libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer) and
# runs it from the seed corpus for the given number of seconds (default 120). A crash, a sanitizer
# report or a broken invariant fails the run and leaves the input in build-fuzz/artifacts/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCRIVLET_BUILD_FUZZERS=ON \
  -DSCRIVLET_BUILD_QT=OFF -DSCRIVLET_BUILD_DEMO=OFF -DSCRIVLET_BUILD_TESTS=OFF \
  -DSCRIVLET_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build-fuzz -j"$(nproc)" --target session_fuzzer
work=build-fuzz/corpus
mkdir -p "$work" build-fuzz/artifacts
cp tests/fuzz/corpus/* "$work"/
# The engine's own lines about outputs it could not make are expected: only the summary is shown.
LSAN_OPTIONS=suppressions="$PWD/tests/lsan.supp" UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
  build-fuzz/tests/fuzz/session_fuzzer -max_len=512 -max_total_time="$seconds" -print_final_stats=1 \
  -artifact_prefix=build-fuzz/artifacts/ "$work" 2>build-fuzz/fuzz.log || {
    grep -vE '^Scrivlet: ' build-fuzz/fuzz.log | tail -60
    exit 1
  }
grep -E '^(stat::|Done )' build-fuzz/fuzz.log
