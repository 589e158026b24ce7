#!/usr/bin/env bash
# Builds the fuzzers (clang, libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer) and runs each
# from its seed corpus: the signing session (engine and host API) for the given number of seconds
# (default 120), the strokes, record-file and time-series readers and the evidence readers (sealed
# files, record files, PDFs) for a quarter of that, and the outputs' number formatting (against printf)
# for an eighth. A crash, an exception, a sanitizer report, a broken invariant, a reader holding more
# than its share of memory (checked in the fuzzers) or the process growing past 2 GB, or a single
# allocation over 256 MB, fails the run and leaves the input in build-fuzz/artifacts/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-120}
CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCRIVLET_BUILD_FUZZERS=ON \
  -DSCRIVLET_BUILD_QT=OFF -DSCRIVLET_BUILD_DEMO=OFF -DSCRIVLET_BUILD_TESTS=OFF \
  -DSCRIVLET_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build-fuzz -j"$(nproc)" --target session_fuzzer stroke_json_fuzzer record_file_fuzzer \
  time_series_import_fuzzer evidence_fuzzer number_format_fuzzer
mkdir -p build-fuzz/artifacts

run() {  # fuzzer, seed folder, seconds, longest input
  local work="build-fuzz/$2" log="build-fuzz/$1.log"
  mkdir -p "$work"
  cp "tests/fuzz/$2"/* "$work"/
  # The library's own lines about outputs it could not make or documents it refused are expected:
  # only the summary is shown.
  LSAN_OPTIONS=suppressions="$PWD/tests/lsan.supp" UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    "build-fuzz/tests/fuzz/$1" -max_len="$4" -max_total_time="$3" -rss_limit_mb=2048 -malloc_limit_mb=256 -print_final_stats=1 \
    -artifact_prefix=build-fuzz/artifacts/ "$work" 2>"$log" || {
      grep -vE '^Scrivlet: ' "$log" | tail -60
      exit 1
    }
  echo "$1:"
  grep -E '^(stat::|Done )' "$log"
}
run session_fuzzer corpus "$seconds" 512
run stroke_json_fuzzer corpus_json $((seconds / 4)) 8192
run record_file_fuzzer corpus_record $((seconds / 4)) 8192
run time_series_import_fuzzer corpus_xml $((seconds / 4)) 20000
run evidence_fuzzer corpus_evidence $((seconds / 4)) 65536
run number_format_fuzzer corpus_numbers $((seconds / 8)) 9
