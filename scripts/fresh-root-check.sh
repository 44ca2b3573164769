#!/usr/bin/env bash
# Proves that the README's two commands work for a newcomer. Builds a brand-new Debian 12 root
# (debootstrap --variant=minbase bookworm), copies this repository's committed HEAD (a clone:
# uncommitted changes are not checked) and ../shared into it, and there, as root:
#   1. runs the README's test command: ./scripts/install-deps.sh && ./scripts/test.sh
#   2. runs the README's start command under xvfb-run and checks that the window is drawn
#      (scripts/check-start-window.sh), keeping the picture as build/fresh-root/start.png.
# .ci/run runs it; run it by hand (as root or with sudo) to check a new dependency.
#
# The untouched output of debootstrap is kept as a tarball in $SYSMEND_FRESH_CACHE (default
# /var/cache/sysmend-fresh-root) with its SHA-256, and unpacked anew for every run; a tarball
# whose checksum does not match is made again. The root is built under $SYSMEND_FRESH_WORK
# (default /var/tmp) and deleted afterwards (--keep keeps it). Mounts live in a mount
# namespace of their own, so they vanish with the run however it ends.
#   --no-start   skip the start command's check
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD

if [ "$(id -u)" -ne 0 ]; then exec sudo -E "$0" "$@"; fi

mirror=${SYSMEND_FRESH_MIRROR:-http://deb.debian.org/debian}
cache=${SYSMEND_FRESH_CACHE:-/var/cache/sysmend-fresh-root}
keep=0 start=1
for arg in "$@"; do
    case $arg in
    --keep) keep=1 ;;
    --no-start) start=0 ;;
    *) echo "usage: $0 [--keep] [--no-start]" >&2; exit 2 ;;
    esac
done

t_start=$SECONDS
steps=()
fail() {  # one line naming the step, then the end of its log
    echo "fresh-root: step '$1' failed: $2" >&2
    [ -n "${3:-}" ] && [ -f "$3" ] && tail -n 30 "$3" >&2
    exit 1
}
step() {  # step NAME COMMAND...: runs it, times it, prints its output as it goes
    local name=$1 t0=$SECONDS
    shift
    echo "==> $name"
    "$@" || fail "$name" "exit status $?"
    steps+=("$(printf '%-32s %5ds' "$name" $((SECONDS - t0)))")
}
report() {
    [ ${#steps[@]} -gt 0 ] || return 0
    echo "fresh-root: step times"
    printf '  %s\n' "${steps[@]}"
    printf '  %-32s %5ds\n' total $((SECONDS - t_start))
}

work=$(mktemp -d "${SYSMEND_FRESH_WORK:-/var/tmp}/sysmend-fresh-root.XXXXXX")
root=$work/root
cleanup() {
    local status=$?
    report
    if [ "$keep" = 1 ]; then
        echo "fresh-root: kept $root"
    elif findmnt -R -n -o TARGET "$root" >/dev/null 2>&1; then
        echo "fresh-root: $root still has mounts; not deleting it" >&2
    else
        rm -rf --one-file-system "$work"
    fi
    exit "$status"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# 1. debootstrap on the host, installed when missing.
host_tools() {
    command -v debootstrap >/dev/null && return
    apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq debootstrap
}
step "install debootstrap on the host" host_tools

# 2. The root: the cached untouched bootstrap, or a new one.
bootstrap() {
    local tarball=$cache/bookworm-minbase.tar
    if [ -f "$tarball" ] && [ -f "$tarball.sha256" ] &&
        (cd "$cache" && sha256sum --quiet -c bookworm-minbase.tar.sha256 2>/dev/null); then
        echo "unpacking the cached bootstrap $tarball"
        mkdir "$root" && tar --numeric-owner -xpf "$tarball" -C "$root"
        return
    fi
    local log=$work/debootstrap.log
    echo "debootstrap --variant=minbase bookworm from $mirror (log: $log)"
    debootstrap --variant=minbase bookworm "$root" "$mirror" >"$log" 2>&1 ||
        fail "debootstrap" "could not build a Debian 12 root from $mirror (is Debian's archive reachable?)" "$log"
    mkdir -p "$cache"
    tar --numeric-owner -cpf "$cache/.new.tar" -C "$root" . &&
        (cd "$cache" && sha256sum .new.tar | sed 's/\.new\.tar$/bookworm-minbase.tar/' >.new.sha256) &&
        mv "$cache/.new.tar" "$tarball" && mv "$cache/.new.sha256" "$tarball.sha256" ||
        echo "fresh-root: could not cache the bootstrap in $cache; going on" >&2
}
step "bootstrap Debian 12 (minbase)" bootstrap

# 3. The checkout and ../shared, as a newcomer would have them.
copy_sources() {
    # (Chained: a function run as a step's condition does not stop at its first failure.)
    mkdir -p "$root/root/sysmend" &&
        git clone -q --no-hardlinks "$top" "$root/root/sysmend/main" &&
        echo "copied $(git -C "$top" rev-parse --short HEAD) into the root" &&
        { [ ! -d "$top/../shared" ] || cp -a "$top/../shared" "$root/root/sysmend/shared"; } &&
        cp -L /etc/resolv.conf "$root/etc/resolv.conf" &&
        # Packages must not start services inside the root.
        printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" &&
        chmod +x "$root/usr/sbin/policy-rc.d"
}
step "copy the checkout and ../shared" copy_sources

# Runs a command in the root, as root, with a clean environment and the mounts the build and
# the offscreen and virtual-display tests need, all inside a private mount namespace.
in_root() {
    unshare --mount --propagation private bash -euo pipefail -c '
        root=$1; shift
        mount -t proc proc "$root/proc"
        mount -t sysfs sysfs "$root/sys"
        mount --bind /dev "$root/dev"
        mount -t devpts devpts "$root/dev/pts" -o newinstance,ptmxmode=0666
        mount -t tmpfs tmpfs "$root/dev/shm"
        mount -t tmpfs tmpfs "$root/tmp"
        exec chroot "$root" /usr/bin/env -i HOME=/root LANG=C.UTF-8 TERM=dumb CI="${CI:-}" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            bash -c "cd /root/sysmend/main && $*"' in_root "$root" "$@"
}

# 4. The README's test command, its two halves timed apart.
step "install-deps.sh (apt-get)" in_root ./scripts/install-deps.sh
run_tests() {
    in_root ./scripts/test.sh | tee "$work/test.log"
}
step "test.sh (build ci, run every test)" run_tests
# ctest's summary, "100% tests passed, 0 tests failed out of 203", as the plain count.
summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$work/test.log" | tail -n 1)

# 5. The README's start command, under a virtual display.
if [ "$start" = 1 ]; then
    step "start.sh under xvfb-run" in_root \
        "./scripts/install-deps.sh && xvfb-run -a -s '-screen 0 1280x900x24' ./scripts/check-start-window.sh build/start-window.png"
    mkdir -p "$top/build/fresh-root"
    cp "$root/root/sysmend/main/build/start-window.png" "$top/build/fresh-root/start.png"
    echo "fresh-root: the window as a newcomer sees it: build/fresh-root/start.png"
fi
echo "fresh-root: the README's commands work on a brand-new Debian 12 root"
if [[ $summary =~ ([0-9]+)\ tests?\ failed\ out\ of\ ([0-9]+) ]]; then
    report
    steps=()
    echo "tests: $((BASH_REMATCH[2] - BASH_REMATCH[1])) passed, ${BASH_REMATCH[1]} failed"
fi
