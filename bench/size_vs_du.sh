#!/usr/bin/env bash
# Times `sysmend-cli size` against `du -s --block-size=1` on the synthetic tree, in one run, and
# checks sysmend's total against `find ! -type d -printf '%b'` (512-byte blocks of every
# non-folder; sysmend counts a hard-linked file once per name, as find does and du does not).
#
#   bench/size_vs_du.sh [TREE] [--files=N] [--folders=N]
# Expects a Release build in build/release (cmake --preset release && cmake --build --preset release).
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/release
tree=${1:-/tmp/sysmend-bench-tree}
shift || true
[ -x "$build/src/cli/sysmend-cli" ] || { echo "build $build first" >&2; exit 2; }
if [ ! -d "$tree" ]; then
    echo "making $tree ..."
    "$build/bench/make_tree" "$tree" "$@"
fi

runs=3
best() { sort -n | head -1; }
timeit() {  # prints the best wall time in seconds over $runs runs of "$@"
    for _ in $(seq $runs); do
        local t0 t1
        t0=$(date +%s.%N); "$@" >/dev/null 2>&1; t1=$(date +%s.%N)
        echo "$t1 - $t0" | bc -l
    done | best
}

du -s --block-size=1 "$tree" >/dev/null  # warm the cache
t_du=$(timeit du -s --block-size=1 "$tree")
t_find=$(timeit find "$tree" -printf "")
t_sys=$(timeit "$build/src/cli/sysmend-cli" --root "$tree" size /)
peak_kb=$( { /usr/bin/time -f "%M" "$build/src/cli/sysmend-cli" --root "$tree" size / >/dev/null; } 2>&1 | tail -1)

total=$("$build/src/cli/sysmend-cli" --json --root "$tree" size / | sed -n 's/.*"allocated": \([0-9]*\).*/\1/p')
expected=$(find "$tree" ! -type d -printf '%b\n' | awk '{s += $1} END {printf "%.0f", s * 512}')

printf 'du -s --block-size=1     %6.3f s\n' "$t_du"
printf 'find -printf ""          %6.3f s\n' "$t_find"
printf 'sysmend-cli size /       %6.3f s  (%.2f x du)  peak %d KiB\n' "$t_sys" \
    "$(echo "$t_sys / $t_du" | bc -l)" "$peak_kb"
if [ "$total" = "$expected" ]; then
    echo "total $total bytes: matches find"
else
    echo "total $total bytes: find says $expected" >&2
    exit 1
fi
