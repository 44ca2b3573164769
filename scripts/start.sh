#!/usr/bin/env bash
# Builds Sysmend (the release preset) and opens its window; extra arguments go to the
# application.
#
# On Linux it inspects a macOS volume kept in a folder. Unless SYSMEND_ROOT or SYSMEND_HOME is
# set, that is the sample volume, written anew to build/sample-volume at every start so that
# what a previous session removed is back. On macOS it inspects the running system.
set -euo pipefail
cd "$(dirname "$0")/.."

system=$(uname -s)

# Without a display Qt stops with a message about platform plugins; say what to do instead.
if [ "$system" != Darwin ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] &&
    [ -z "${QT_QPA_PLATFORM:-}" ]; then
    echo "start.sh: No display found. Run it under a virtual display: xvfb-run -a ./scripts/start.sh" >&2
    exit 1
fi

cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc 2>/dev/null || sysctl -n hw.ncpu)"
build=build/release

if [ "$system" = Darwin ]; then
    exec "$build/src/gui/Sysmend.app/Contents/MacOS/Sysmend" "$@"
fi

if [ -z "${SYSMEND_ROOT:-}" ] && [ -z "${SYSMEND_HOME:-}" ]; then
    sample=$PWD/build/sample-volume
    home=/Users/alice
    rm -rf "$sample"
    "$build/src/cli/sysmend-cli" --home "$home" sample-volume "$sample" >/dev/null
    export SYSMEND_ROOT=$sample SYSMEND_HOME=$home
    echo "start.sh: inspecting the sample volume in build/sample-volume (home $home)"
fi
exec "$build/src/gui/sysmend" "$@"
