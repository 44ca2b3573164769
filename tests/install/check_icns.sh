#!/usr/bin/env bash
# The macOS icon is kept in the repository; checks that it is still what
# scripts/make-icns.py makes of the icon's PNGs, so that a redrawn icon is not left out of it.
#
#     check_icns.sh SOURCE_DIR
set -euo pipefail

src=$1
made=$(mktemp)
trap 'rm -f "$made"' EXIT
python3 "$src/scripts/make-icns.py" "$made" "$src"/resources/icons/sysmend-*.png
if ! cmp -s "$made" "$src/resources/macos/Sysmend.icns"; then
    echo "FAIL: resources/macos/Sysmend.icns is out of date; remake it with" >&2
    echo "    scripts/make-icns.py resources/macos/Sysmend.icns resources/icons/sysmend-*.png" >&2
    exit 1
fi
echo "Sysmend.icns matches resources/icons"
