#!/usr/bin/env bash
# Installs everything Sysmend needs to build, run and test on Debian 12 (bookworm), from
# Debian's own packages. Run as root (or through sudo).
set -euo pipefail

packages=(
    # toolchain and build
    g++ cmake ninja-build pkg-config clang-format
    # engine
    libssl-dev nlohmann-json3-dev
    # application
    qt6-base-dev qt6-tools-dev qt6-svg-dev qt6-image-formats-plugins libgl-dev
    # tests and benchmarks
    libgtest-dev libgmock-dev libbenchmark-dev
    # looking at windows without a display; fuzzing
    xvfb xauth imagemagick clang-14 libclang-rt-14-dev
    # benchmark scripts
    bc time
    # checks of the installed tree and of the macOS icon
    desktop-file-utils appstream python3
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "install-deps: everything is installed"
    exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
