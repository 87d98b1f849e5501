# shellcheck shell=bash
# Sourced by the scripts at the root: installs what is missing and builds. Works from any folder; expects
# `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

say() {
    printf '\n==> %s\n' "$*"
}

# Prints the packages of the groups given, one a line. A group that packages.txt does not have is an error.
packages_of() {
    local group
    for group in "$@"; do
        awk -v group="$group" '
            /^# [a-z]+:/ { name = substr($2, 1, length($2) - 1); next }
            /^[^#]/ && name == group { print $1; found = 1 }
            END { exit !found }' "$root/packages.txt" || { echo "packages.txt has no group $group" >&2; return 1; }
    done
}

# Prints those of the packages given that are not installed.
missing_of() {
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || echo "$package"
    done
}

# Runs apt-get as root, three times at most: mirrors and locks fail for a moment.
run_apt() {
    local attempt as_root=()
    [ "$(id -u)" = 0 ] || as_root=(sudo)
    for attempt in 1 2 3; do
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get -q -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 "$@" </dev/null && return 0
        echo "apt-get $1 failed (attempt $attempt of 3)" >&2
        [ "$attempt" = 3 ] || sleep 5
    done
    return 1
}

install_by_apt() {
    run_apt update && run_apt install -y --no-install-recommends "$@"
}

# install_packages "GROUP..." ["GROUP..."]: installs what is missing of the first groups, without which the caller cannot
# go on, and of the second, without which a part of the project is switched off.
install_packages() {
    local needed wanted missing
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "Not a Debian system: what packages.txt lists has to be installed by hand"
        return 0
    fi
    # Group names and package names are words: they are meant to be split.
    # shellcheck disable=SC2086
    {
        needed=$(packages_of $1)
        wanted=$(packages_of ${2-})
        missing=$(missing_of $needed $wanted)
        [ -n "$missing" ] || return 0

        say Installing $missing
        if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
            echo "Neither root nor sudo: have these packages installed first." >&2
            return 1
        fi
        if install_by_apt $missing; then
            return 0
        fi
        missing=$(missing_of $needed)
        if [ -n "$missing" ] && ! install_by_apt $missing; then
            echo "Could not install" $missing >&2
            return 1
        fi
        missing=$(missing_of $wanted)
        say Going on without $missing
    }
}

# build PRESET [TARGET]: configures and builds, incrementally after the first time.
build() {
    say "Building ($1)"
    if command -v ccache >/dev/null; then
        export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
        export CCACHE_BASEDIR=${CCACHE_BASEDIR-$root} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR-1}
    fi
    (cd "$root" && cmake --preset "$1" && cmake --build --preset "$1" -j "$jobs" ${2:+--target "$2"})
}
