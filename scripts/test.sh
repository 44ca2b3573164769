#!/usr/bin/env bash
# Builds Sysmend with warnings as errors and runs every test (engine, CLI, fuzz corpora, GUI
# offscreen). Expects the dependencies of scripts/install-deps.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

export QT_QPA_PLATFORM=offscreen
cmake --preset ci
cmake --build --preset ci -j "$(nproc)"
ctest --preset ci
