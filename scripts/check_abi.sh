#!/usr/bin/env bash
# Compares the shared libscrivlet.so of a build with the ABI baseline of the 1.x series (abi/, made by
# abidw from the first 1.x build; see `--update`). An incompatible change (a name removed, a type's
# layout changed) fails; a compatible one (a name added) is printed and passes. The engine's library
# promises no ABI and is not compared.
# Usage: scripts/check_abi.sh [build folder, default build-shared] [--update]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-shared}
baseline=abi/libscrivlet.so.1.abi
headers=(--headers-dir include --headers-dir "$build/include")
if [ "${2:-}" = --update ]; then
  abidw --drop-private-types --no-corpus-path --no-comp-dir-path --short-locs "${headers[@]}" \
    --out-file "$baseline" "$build/libscrivlet.so"
  exit 0
fi
set +e
report=$(abidiff --headers-dir2 include --headers-dir2 "$build/include" "$baseline" "$build/libscrivlet.so")
status=$?
set -e
[ -z "$report" ] || echo "$report"
# abidiff's status is a set of bits: 1 an error, 2 a misuse, 4 a change, 8 an incompatible change
# (a name removed). A change is only compatible when it adds names: a name changed (a type it takes
# or gives changed its layout) fails as well.
changed=$({ grep -E '^(Functions|Variables) changes summary' <<<"$report" || true; } |
  sed -E 's/.*: ([0-9]+) Removed, ([0-9]+) Changed.*/\1 \2/' | awk '{ n += $1 + $2 } END { print n + 0 }')
if (( status & 11 )) || (( changed > 0 )); then
  echo "libscrivlet.so is not ABI-compatible with $baseline (abidiff status $status)" >&2
  exit 1
fi
echo "libscrivlet.so keeps the ABI of $baseline$( (( status & 4 )) && echo ', with compatible additions')."
