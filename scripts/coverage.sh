#!/usr/bin/env bash
# Line coverage of the Qt backend and the Qt Quick item (qt/): builds the Qt tests with the two Qt
# libraries instrumented (SCRIVLET_COVERAGE), runs them on the offscreen platform, prints each file's
# line coverage with gcovr and fails when the whole of qt/ is under the given percentage (default 80).
# Usage: scripts/coverage.sh [minimum percentage] [build folder]
set -euo pipefail
cd "$(dirname "$0")/.."
minimum=${1:-80}
dir=${2:-build-coverage}
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSCRIVLET_COVERAGE=ON -DSCRIVLET_BUILD_EVIDENCE=OFF \
  -DSCRIVLET_BUILD_DEMO=OFF -DSCRIVLET_BUILD_BENCHMARKS=OFF >/dev/null
# Without ccache's base_dir rewriting, which leaves gcov source paths it cannot resolve.
CCACHE_DISABLE=1 cmake --build "$dir" -j"$(nproc)" --target scrivlet_qt_tests
find "$dir" -name '*.gcda' -delete
QT_QPA_PLATFORM=offscreen "$dir/tests/scrivlet_qt_tests" --gtest_brief=1
# Generated sources (moc, QML registration) are not ours to cover.
gcovr --root . --object-directory "$dir" --filter 'qt/' --exclude '.*_autogen/.*' --exclude '.*/qt/demo/.*' \
  --print-summary --fail-under-line "$minimum" "$dir"
