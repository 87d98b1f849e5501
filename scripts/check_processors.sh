#!/usr/bin/env bash
# Whether poses have the same bits on a 64-bit ARM processor (emulated) as the tests pin for all machines, and whether
# the source that is compiled for AVX2 leaves nothing to the linker that other sources use. With "whole" all tests run on
# the emulated processor. Takes minutes the first time, whole half an hour.
#   scripts/check_processors.sh [whole]
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"
# shellcheck source=scripts/pose_hash.sh
. "$(dirname "${BASH_SOURCE[0]}")/pose_hash.sh"

install_packages "build arm"
folder=$root/build/aarch64
build aarch64 tw2
build_pose_hash "$folder" aarch64-linux-gnu-g++
say "Playing"
compare_pose_hash "$folder" aarch64 qemu-aarch64 -L /usr/aarch64-linux-gnu -E "LD_LIBRARY_PATH=$folder/src:$folder/platform"

if [ "${1-}" = whole ]; then
    build aarch64
    (cd "$root" && ctest --preset aarch64 --parallel "$jobs" --no-tests=error)
fi

if [ "$(uname -m)" = x86_64 ]; then
    say "Looking at the source for AVX2"
    build release tw2
    objects=$(find "$root/build/release/src" -name '*_kernel_avx2.cpp.o')
    # Names of files that this project made: they are meant to be split.
    # shellcheck disable=SC2086
    shared=$(nm -C --defined-only $objects | awk '$2 ~ /[WVu]/' | grep -v -e M_Float8Avx2 -e DW.ref || true)
    [ -z "$shared" ] || { printf 'compiled for AVX2, and other sources may get it:\n%s\n' "$shared" >&2; exit 1; }
fi
say "Done"
