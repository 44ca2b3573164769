#!/usr/bin/env bash
# Installs a build into a temporary DESTDIR and checks what a user or a distribution gets: the
# exact list of installed files, a desktop entry and AppStream metainfo that validate and name
# each other, the program and the icons they name, and an installed sysmend-cli that finds the
# installed signature database by itself.
#
#     check_install.sh BUILD_DIR CONFIG WITH_GUI(ON|OFF)
set -euo pipefail

build=$1 config=$2 gui=$3
app_id=net.qvarlo.Sysmend
prefix=/usr

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/stage
root=$stage$prefix

failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}

install_args=(--install "$build" --prefix "$prefix")
if [ -n "$config" ]; then install_args+=(--config "$config"); fi
DESTDIR=$stage cmake "${install_args[@]}" >"$work/install.log" || {
    cat "$work/install.log" >&2
    echo "FAIL: cmake --install" >&2
    exit 1
}

# Every installed file, and nothing else: no test programs, libraries or headers.
expected=(bin/sysmend-cli share/sysmend/.cx)
if [ "$gui" = ON ]; then
    expected+=(
        bin/sysmend
        "share/applications/$app_id.desktop"
        "share/metainfo/$app_id.metainfo.xml"
        "share/icons/hicolor/128x128/apps/$app_id.png"
        "share/icons/hicolor/256x256/apps/$app_id.png"
        "share/icons/hicolor/512x512/apps/$app_id.png"
        "share/icons/hicolor/scalable/apps/$app_id.svg"
    )
fi
if ! diff -u <(printf "${prefix#/}/%s\n" "${expected[@]}" | sort) \
    <(cd "$stage" && find . ! -type d | sed 's|^\./||' | sort) >"$work/files.diff"; then
    fail "installed files differ from the expected ones (- expected, + installed):"
    cat "$work/files.diff" >&2
fi

for program in sysmend-cli $([ "$gui" = ON ] && echo sysmend); do
    [ -x "$root/bin/$program" ] || fail "bin/$program is not executable"
done

# Width and height of a PNG, from its IHDR chunk.
png_size() {
    od -An -tu1 -j16 -N8 "$1" | awk '{ printf "%dx%d", (($1*256+$2)*256+$3)*256+$4, (($5*256+$6)*256+$7)*256+$8 }'
}

if [ "$gui" = ON ]; then
    desktop=$root/share/applications/$app_id.desktop
    metainfo=$root/share/metainfo/$app_id.metainfo.xml

    # desktop-file-validate exits 0 on warnings and hints; any remark counts here.
    remarks=$(desktop-file-validate "$desktop" 2>&1) || true
    [ -z "$remarks" ] || fail "desktop-file-validate: $remarks"
    appstreamcli validate --no-net "$metainfo" >"$work/appstream.log" 2>&1 || {
        fail "appstreamcli validate:"
        cat "$work/appstream.log" >&2
    }

    exec_line=$(sed -n 's/^Exec=//p' "$desktop")
    [ -x "$root/bin/${exec_line%% *}" ] || fail "Exec=$exec_line names no installed program"
    icon=$(sed -n 's/^Icon=//p' "$desktop")
    [ "$icon" = "$app_id" ] || fail "Icon=$icon, not the desktop id $app_id"
    grep -q "<id>$app_id</id>" "$metainfo" || fail "the metainfo's id is not $app_id"
    grep -q "<launchable type=\"desktop-id\">$app_id.desktop</launchable>" "$metainfo" ||
        fail "the metainfo does not launch $app_id.desktop"

    for size in 128 256 512; do
        png=$root/share/icons/hicolor/${size}x$size/apps/$icon.png
        [ -f "$png" ] || continue  # already reported by the file list
        actual=$(png_size "$png")
        [ "$actual" = "${size}x$size" ] || fail "the ${size}x$size icon is $actual"
    done
fi

# The installed CLI on a sample volume, with nothing pointing it at a database. The build
# tree's database would also be found, so the installed one is then spoilt: an installed CLI
# that really reads it must now fail to load it.
cli=$root/bin/sysmend-cli
run_cli() { env -u SYSMEND_RESOURCES -u SYSMEND_ROOT -u SYSMEND_HOME "$cli" "$@"; }
run_cli sample-volume "$work/volume" >/dev/null || fail "sysmend-cli sample-volume failed"
if output=$(run_cli --root "$work/volume" --json adware 2>&1); then
    threats=$(sed -n 's/.*"threats": *\([0-9]*\).*/\1/p' <<<"$output")
    [ "${threats:-0}" -gt 0 ] || fail "the installed sysmend-cli found no adware: $output"
else
    fail "the installed sysmend-cli adware failed: $output"
fi
database=$root/share/sysmend/.cx
if [ -f "$database" ]; then
    printf 'not a signature database' >"$database"
    if output=$(run_cli --root "$work/volume" adware 2>&1); then
        fail "sysmend-cli read a database other than the installed one"
    elif ! grep -q "error-code-1000" <<<"$output"; then
        fail "a spoilt installed database gave: $output"
    fi
else
    fail "no signature database installed in share/sysmend"
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures failed" >&2
    exit 1
fi
echo "installed tree checked: ${#expected[@]} files"
