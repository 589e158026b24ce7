#!/usr/bin/env bash
# Builds the benchmarks in Release, runs them on the shared input signatures and, when Chromium and
# Node are there, signature_pad on the same inputs in the same run (../shared/bench/signature_pad);
# prints each figure beside signature_pad's and beside our goal, as ratios (below 1 is better).
# Usage: bench/compare.sh [BUILD_DIR]   (default build-release; SP_RUNS=3 pages for signature_pad,
# SKIP_SP=1 to leave it out). Machines of this kind vary by a factor of 2 from run to run: compare the
# ratios of one run.
set -euo pipefail
top="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$top/build-release}"
cmake -S "$top" -B "$build" -DCMAKE_BUILD_TYPE=Release -DSCRIVLET_BUILD_TESTS=OFF -DSCRIVLET_BUILD_DEMO=OFF \
  -DSCRIVLET_BUILD_EVIDENCE=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target scrivlet_bench scrivlet_qt_bench >/dev/null

# signature_pad first, so that both run under the same load.
sp_results=""
sp_source="$top/../shared/bench/signature_pad"
if [[ -z "${SKIP_SP:-}" && -d "$sp_source" ]] && command -v node >/dev/null && command -v chromium >/dev/null; then
  sp="$build/signature_pad"
  mkdir -p "$sp" && cp -r "$sp_source/." "$sp/"
  [[ -d "$sp/node_modules" ]] || (cd "$sp" && npm ci --no-audit --no-fund >/dev/null 2>&1) || true
  if (cd "$sp" && RUNS="${SP_RUNS:-3}" OUT_DIR=out node bench.mjs >/dev/null 2>&1); then sp_results="$sp/out/results.json"; fi
fi
[[ -n "$sp_results" ]] || echo "signature_pad not run (needs chromium and node: bash scripts/setup.sh --bench); its column stays empty"

"$build/bench/scrivlet_bench" --benchmark_filter='StrokeEnd|UndoAndRedo|DoneRight|Heap|PrepareScrivletData/2000|ExportFormat/(PNG|SVG)/2000|LiveInk500' \
  --benchmark_format=json --benchmark_out="$build/core.json" --benchmark_out_format=json >/dev/null
# The heap that grows with the signature, without what the allocator keeps of freed blocks in each
# thread's cache (bounded, and filled as work moves between threads): the kept ink's drawing runs on a
# worker, whose cache would otherwise count as the signature's.
GLIBC_TUNABLES=glibc.malloc.tcache_count=0 "$build/bench/scrivlet_bench" --benchmark_filter='Heap' \
  --benchmark_format=json --benchmark_out="$build/heap.json" --benchmark_out_format=json >/dev/null
# The widget at screen scale 2, as the reference figures were measured.
QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=2 "$build/bench/scrivlet_qt_bench" --benchmark_filter='QtPadPenEvents' \
  --benchmark_format=json --benchmark_out="$build/qt.json" --benchmark_out_format=json >/dev/null 2>&1

python3 - "$build/core.json" "$build/qt.json" "$sp_results" "$build/heap.json" <<'PY'
import json, sys

runs = {}
for path in sys.argv[1:3]:
    for b in json.load(open(path))["benchmarks"]:
        runs[b["name"]] = b
for b in json.load(open(sys.argv[4]))["benchmarks"]:
    runs[b["name"] + " without caches"] = b
sp = json.load(open(sys.argv[3])) if sys.argv[3] else None

def ms(name):
    b = runs.get(name)
    return b and b["real_time"] * {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]

def counter(name, key, factor=1):
    b = runs.get(name)
    return b and b.get(key) is not None and b[key] * factor

def ref(*keys):
    value = sp
    for key in keys:
        value = value and value.get(key)
    return value or None

# The UI thread's CPU time per sample (the rate counter's), and the wall time per sample beside it.
live_first, live_last = counter("BM_LiveInk500PointsFrom/0", "per_point", 1e6), counter("BM_LiveInk500PointsFrom/4500", "per_point", 1e6)
wall_first, wall_last = [ms(f"BM_LiveInk500PointsFrom/{start}") and ms(f"BM_LiveInk500PointsFrom/{start}") * 1000 / 500 for start in (0, 4500)]
png_svg = (ref("exports", "pngWarmMs") or 0) + (ref("exports", "svgWarmMs") or 0) or None
# figure, ours, unit, signature_pad's in this run, goal (in the unit, or as a ratio to signature_pad)
rows = [
    ("live ink, us a sample, first 500 (UI thread's CPU time)", live_first, "us", ref("live", "sp_t0/frame", "first500Median"), "0.5x"),
    ("live ink, us a sample, last 500", live_last, "us", ref("live", "sp_t0/frame", "last500Median"), "0.5x"),
    ("  the same in wall time, first 500", wall_first, "us", ref("live", "sp_t0/frame", "first500Median"), None),
    ("  the same in wall time, last 500", wall_last, "us", ref("live", "sp_t0/frame", "last500Median"), None),
    ("live ink, last / first", live_last and live_first and live_last / live_first, "", None, 1.1),
    ("undo, 2,000 points", ms("BM_UndoAndRedo/Undo/2000"), "ms", None, 1),
    ("undo, 20,000 points", ms("BM_UndoAndRedo/Undo/20000"), "ms", None, 1),
    ("redo, 2,000 points", ms("BM_UndoAndRedo/Redo/2000"), "ms", None, 1),
    ("redo, 20,000 points", ms("BM_UndoAndRedo/Redo/20000"), "ms", None, 1),
    ("stroke end, 20th stroke of 2,000 points", ms("BM_StrokeEndOfTwentiethStroke/iterations:50"), "ms", None, 1),
    ("stroke end, one 1,000-point stroke", ms("BM_StrokeEndOfOneStroke/1000/iterations:20"), "ms", None, 1),
    ("stroke end, one 5,000-point stroke", ms("BM_StrokeEndOfOneStroke/5000/iterations:20"), "ms", None, 2),
    ("stroke end, one 100,000-point stroke", ms("BM_StrokeEndOfOneStroke/100000/iterations:3"), "ms", None, 2),
    ("full record, 2,000 points (vs PNG+SVG)", ms("BM_PrepareScrivletData/2000"), "ms", png_svg, "0.9x"),
    ("PNG, 2,000 points (vs toDataURL)", ms("BM_ExportFormat/PNG/2000"), "ms", ref("exports", "pngWarmMs"), None),
    ("SVG, 2,000 points (vs toSVG)", ms("BM_ExportFormat/SVG/2000"), "ms", ref("exports", "svgWarmMs"), None),
    ("done() right after the last stroke", ms("BM_DoneRightAfterLastStroke/iterations:20"), "ms", None, None),
    ("Qt pad, us a pen event, deferred", counter("BM_QtPadPenEvents/0/0", "per_event", 1e6), "us", None, None),
    ("Qt pad, us a pen event, repaint every 4th", counter("BM_QtPadPenEvents/0/4", "per_event", 1e6), "us", None, None),
    ("heap a sample (stroke ended)", counter("BM_HeapPerCapturedSample/iterations:1 without caches", "bytes_per_sample"), "B", None, 85),
    ("  the same, threads' caches of freed blocks counted", counter("BM_HeapPerCapturedSample/iterations:1", "bytes_per_sample"), "B", None, None),
]

def cell(value, digits=3):
    return "-" if value is None or value is False else f"{value:.{digits}g}"

print(f"{'figure':42} {'ours':>9} {'unit':4} {'sig_pad':>8} {'ratio':>6} {'goal':>6} {'met':>4}")
for name, ours, unit, reference, goal in rows:
    ratio = ours / reference if ours and reference else None
    if isinstance(goal, str):
        met = ratio is not None and ratio <= float(goal[:-1])
    else:
        met = goal is not None and ours is not None and ours is not False and ours <= goal
    shown_goal = goal if isinstance(goal, str) else cell(goal)
    print(f"{name:42} {cell(ours, 4):>9} {unit:4} {cell(reference):>8} {cell(ratio):>6} {shown_goal:>6} "
          f"{'yes' if met else ('-' if goal is None else 'no'):>4}")
if sp:
    print(f"\nsignature_pad {sp['meta'].get('signaturePadVersion')} in headless Chromium {sp['meta'].get('chromium')}, "
          "frame mode (raster flushed every 4 events), warm exports; same machine, same run.")
PY
