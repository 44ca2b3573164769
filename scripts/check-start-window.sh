#!/usr/bin/env bash
# Starts Sysmend as the README says (./scripts/start.sh, which builds the release preset and
# opens the window on the sample volume), waits for its window, grabs the screen to a PNG,
# checks that the category list and the Crashes page are drawn, and closes the window.
# Run it under a virtual display:
#
#   xvfb-run -a -s '-screen 0 1280x900x24' ./scripts/check-start-window.sh [PNG]
#
# Exit status 0 when the window was drawn, 1 otherwise (with one line saying what was wrong).
set -euo pipefail
cd "$(dirname "$0")/.."

png=${1:-build/start-window.png}
wait_seconds=${SYSMEND_START_WAIT:-1800}  # the first start builds the release preset
mkdir -p "$(dirname "$png")"
log=$(mktemp)

# In a session of its own, so that closing it also ends a build still running.
setsid ./scripts/start.sh >"$log" 2>&1 &
app=$!
finish() {
    kill -- -"$app" 2>/dev/null || true
    wait "$app" 2>/dev/null || true
    rm -f "$log"
}
trap finish EXIT

fail() {
    echo "check-start-window: $*" >&2
    tail -n 20 "$log" >&2
    exit 1
}

for ((waited = 0; ; waited += 2)); do
    if xwininfo -root -tree 2>/dev/null | grep -q '"Sysmend"'; then break; fi
    kill -0 "$app" 2>/dev/null || fail "start.sh ended before a window named Sysmend appeared"
    [ "$waited" -lt "$wait_seconds" ] || fail "no window named Sysmend after ${wait_seconds}s"
    sleep 2
done
sleep 3  # the window comes to the front a second after it is shown; let it paint
import -window root "$png"

# The category list is drawn on its dark background (45,57,71) with the selected row, Crashes,
# in (11,80,208); the Crashes start page is mostly white. A blank or half-drawn screen lacks one
# of them.
histogram=$(convert "$png" -format %c histogram:info:-)
pixels() { printf '%s\n' "$histogram" | awk -v c="$1" 'index($0, c) { s += $1 } END { print s + 0 }'; }
sidebar=$(pixels '#2D3947') selected=$(pixels '#0B50D0') page=$(pixels '#FFFFFF')
colours=$(printf '%s\n' "$histogram" | wc -l)
echo "check-start-window: $png: $colours colours; sidebar $sidebar, selected row $selected, white $page pixels"
[ "$sidebar" -ge 20000 ] || fail "the category list is not drawn"
[ "$selected" -ge 2000 ] || fail "no selected category row (Crashes) is drawn"
[ "$page" -ge 50000 ] || fail "the Crashes page is not drawn"
[ "$colours" -ge 20 ] || fail "the window holds too few colours to be drawn ($colours)"
echo "check-start-window: the window is drawn"
