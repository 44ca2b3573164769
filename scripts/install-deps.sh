#!/usr/bin/env bash
# Installs everything Sysmend needs to build, run, test and benchmark on Debian 12 (bookworm),
# from Debian's own packages, on a machine that may have nothing but a minimal Debian root.
# Run it as root or as a user with sudo: it elevates itself only for apt-get.
set -euo pipefail

packages=(
    # toolchain and build
    g++ cmake ninja-build pkg-config clang-format git ca-certificates file xz-utils
    # engine
    libssl-dev nlohmann-json3-dev libicu-dev
    # application: Qt's UiTools needs OpenGLWidgets and xkbcommon
    qt6-base-dev qt6-tools-dev qt6-svg-dev qt6-image-formats-plugins libgl-dev
    libqt6opengl6-dev libxkbcommon-dev
    # text in offscreen and virtual-display windows
    fontconfig fonts-dejavu-core
    # tests and benchmarks
    libgtest-dev libgmock-dev libbenchmark-dev
    # looking at windows without a display (xwininfo waits for the window); fuzzing
    xvfb xauth x11-utils imagemagick clang-14 libclang-rt-14-dev
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

SUDO=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "install-deps: run this as root, or install sudo; missing: ${missing[*]}" >&2
        exit 1
    }
    SUDO=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${SUDO[@]}" apt-get update -qq
"${SUDO[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
