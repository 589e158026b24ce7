#!/usr/bin/env bash
# Installs the Debian packages Scrivlet needs, where missing.
#   bash scripts/setup.sh          what building the library, the Qt widget, the QML item, the tool and
#                                  the demo needs
#   bash scripts/setup.sh --tests  that, and what the tests and benchmarks run: GoogleTest, Google
#                                  Benchmark, the output validators, the QML runtime modules, Xvfb and
#                                  a German locale
#   bash scripts/setup.sh --ci     that, and what CI adds: clang with libFuzzer and the sanitizers, and
#                                  gcovr for the coverage report, abigail-tools for the ABI check
#   bash scripts/setup.sh --bench  what --tests installs, and Chromium with Node for bench/compare.sh,
#                                  which runs signature_pad beside our benchmarks
set -euo pipefail

build=(
  build-essential cmake pkg-config
  libcairo2-dev fontconfig fonts-urw-base35
  libicu-dev uuid-dev libssl-dev nlohmann-json3-dev libpugixml-dev
  libqpdf-dev libpng-dev zlib1g-dev libdeflate-dev libcurl4-openssl-dev
  qt6-base-dev qt6-base-private-dev qt6-declarative-dev
)
tests=(
  libgtest-dev libgmock-dev libbenchmark-dev
  qpdf poppler-utils libxml2-utils librsvg2-bin openssl python3
  qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtqml-workerscript
  locales xvfb xauth
)
ci=(clang libclang-rt-14-dev libxml2-dev gcovr abigail-tools)
bench=(chromium nodejs)

packages=("${build[@]}")
case "${1:-}" in
  "") ;;
  --tests) packages+=("${tests[@]}") ;;
  --ci) packages+=("${tests[@]}" "${ci[@]}") ;;
  --bench) packages+=("${tests[@]}" "${bench[@]}") ;;
  *) echo "usage: bash scripts/setup.sh [--tests | --ci | --bench]" >&2; exit 2 ;;
esac

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The tests check that number formatting ignores a locale with a decimal comma.
if [ -n "${1:-}" ] && ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "setup: could not generate de_DE.UTF-8" >&2
fi

# Debian's npm is a package of its own; other builds of Node carry it and conflict with Debian's.
if [ "${1:-}" = "--bench" ] && ! command -v npm >/dev/null; then
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends npm
fi
