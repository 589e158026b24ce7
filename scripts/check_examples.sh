#!/usr/bin/env bash
# Installs a built Scrivlet into a temporary prefix and builds the examples against it as a host would:
# all with find_package, and the headless and QML ones once more with pkg-config alone. Runs them (the Qt
# ones offscreen) and checks the files they write: the headless one's four, and the QML one's PNG,
# strokes and record file (which the installed tool draws again).
# Usage: scripts/check_examples.sh BUILD_DIR
set -euo pipefail
top="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"

cmake --install "$build" --prefix "$prefix" >/dev/null
shared=$(grep -q '^BUILD_SHARED_LIBS:BOOL=ON' "$build/CMakeCache.txt" && echo yes || echo no)
echo "Installed Scrivlet (shared: $shared) into a temporary prefix."

check_record() {  # the headless example's four files
  local dir=$1
  head -c 8 "$dir/signature.png" | od -An -tx1 | grep -q '89 50 4e 47 0d 0a 1a 0a'
  qpdf --check "$dir/signature.pdf" >/dev/null
  xmllint --noout "$dir/signature.svg" "$dir/signature.xml"
}

for example in headless qt qml; do
  [ "$example" = qt ] && [ ! -f "$prefix/include/scrivlet/signature_pad.h" ] && continue
  [ "$example" = qml ] && [ ! -f "$prefix/include/scrivlet/signature_area.h" ] && continue
  cmake -S "$top/examples/$example" -B "$work/$example" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$work/$example" >/dev/null
done
mkdir -p "$work/out-cmake" "$work/out-pkg-config"
"$work/headless/sign_headless" "$work/out-cmake"
check_record "$work/out-cmake"
if [ -x "$prefix/bin/scrivlet" ]; then  # the installed tool runs, and draws the example's record again
  "$prefix/bin/scrivlet" render "$work/out-cmake/signature.json" -o "$work/out-cmake/redrawn.pdf" >/dev/null
  qpdf --check "$work/out-cmake/redrawn.pdf" >/dev/null
fi
if [ -x "$work/qt/sign_qt" ]; then
  (cd "$work/out-cmake" && QT_QPA_PLATFORM=offscreen timeout 60 "$work/qt/sign_qt" 2>/dev/null)
fi
check_qml() {  # the QML example, run offscreen in a folder: it signs, undoes and saves by itself
  local program=$1 dir=$2
  (cd "$dir" && QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software timeout 60 "$program" 2>/dev/null)
  head -c 8 "$dir/signature.png" | od -An -tx1 | grep -q '89 50 4e 47 0d 0a 1a 0a'
  grep -q '"format":"scrivlet-strokes"' "$dir/strokes.json"
  if [ -x "$prefix/bin/scrivlet" ]; then
    "$prefix/bin/scrivlet" render "$dir/record.json" -o "$dir/record.pdf" >/dev/null
    qpdf --check "$dir/record.pdf" >/dev/null
  fi
}
if [ -x "$work/qml/sign_qml" ]; then
  mkdir -p "$work/out-qml-cmake"
  check_qml "$work/qml/sign_qml" "$work/out-qml-cmake"
fi

static=(); [ "$shared" = no ] && static=(--static)
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}"
# A host links the core alone (one archive, or the host API's shared library and the engine's under
# it); the libraries the core uses come in only for a static link.
read -r -a libs <<<"$(pkg-config --libs scrivlet)"
core=(-lscrivlet); [ "$shared" = yes ] && core+=(-lscrivlet-engine)
if [ "${libs[0]#-L}" = "${libs[0]}" ] || [ "${libs[*]:1}" != "${core[*]}" ]; then
  echo "pkg-config --libs scrivlet names more than the core: ${libs[*]}" >&2; exit 1
fi
if pkg-config --static --libs scrivlet | grep -q poppler; then echo "the core still needs poppler" >&2; exit 1; fi
if [ "$shared" = yes ] && readelf -d "$prefix/lib/libscrivlet.so" | grep NEEDED | grep -q poppler; then
  echo "libscrivlet.so still needs poppler" >&2; exit 1
fi
# shellcheck disable=SC2046
"${CXX:-g++}" -std=c++20 -o "$work/sign_headless_pc" "$top/examples/headless/main.cpp" \
  $(pkg-config "${static[@]}" --cflags --libs scrivlet) -Wl,-rpath,"$prefix/lib"
"$work/sign_headless_pc" "$work/out-pkg-config"
check_record "$work/out-pkg-config"
if [ -f "$prefix/lib/pkgconfig/scrivlet-quick.pc" ]; then  # Qt wants position-independent programs
  mkdir -p "$work/qml-pc" "$work/out-qml-pkg-config"
  # shellcheck disable=SC2046
  "${CXX:-g++}" -std=c++20 -fPIC -o "$work/qml-pc/sign_qml" "$top/examples/qml/main.cpp" \
    $(pkg-config "${static[@]}" --cflags --libs scrivlet-quick) -Wl,-rpath,"$prefix/lib"
  cp "$top/examples/qml/Main.qml" "$work/qml-pc/"
  check_qml "$work/qml-pc/sign_qml" "$work/out-qml-pkg-config"
fi
echo "The examples built against the installed package, with CMake and with pkg-config, and ran."
