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
# The window's tool pages are still being built; until they are, show what each tool finds on
# the sample volume (the window itself starts with ./build/release/src/gui/sysmend).
cli=./build/release/src/cli/sysmend-cli
for tool in firewall startup crashes apps adware; do
    echo "== $tool"
    "$cli" "$tool" "$@" || true
    echo
done
