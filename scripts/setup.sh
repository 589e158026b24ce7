#!/usr/bin/env bash
# Installs the Debian packages that building, testing and benchmarking Scrivlet need, where missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libcairo2-dev fontconfig fonts-urw-base35
  libicu-dev uuid-dev libssl-dev libpoppler-cpp-dev nlohmann-json3-dev libpugixml-dev
  libqpdf-dev libpng-dev zlib1g-dev openssl libcurl4-openssl-dev python3
  qt6-base-dev qt6-base-private-dev qt6-declarative-dev qml6-module-qtquick qml6-module-qtquick-window qml6-module-qtqml-workerscript
  qpdf poppler-utils libxml2-utils librsvg2-bin
  locales xvfb xauth
  clang libclang-rt-14-dev libxml2-dev
  gcovr
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The tests check that number formatting ignores a locale with a decimal comma.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "setup: could not generate de_DE.UTF-8" >&2
fi
