#!/usr/bin/env bash
# Builds Sysmend and starts it on the sample volume (made on first use in build/sample-volume).
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)"
sample="$PWD/build/sample-volume"
if [ ! -d "$sample/Users" ]; then
    ./build/release/src/cli/sysmend-cli sample-volume "$sample"
fi
export SYSMEND_ROOT="$sample"
if [ -x ./build/release/src/gui/sysmend ]; then
    exec ./build/release/src/gui/sysmend "$@"
fi
# Until the window lands, show what the tools find on the sample volume.
exec ./build/release/src/cli/sysmend-cli size /Applications /Users "$@"
