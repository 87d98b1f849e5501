#!/usr/bin/env bash
# Whether poses have the same bits on a 64-bit ARM processor (emulated) as the tests pin for all machines, and whether
# the source that is compiled for AVX2 leaves nothing to the linker that other sources use. Takes minutes the first time.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

install_packages "build arm"
pinned=$(sed -n 's/.*PoseHash::run(20), 0x\([0-9a-f]*\)ULL.*/\1/p' "$root/tests/object/pose_width_test.cpp")
[ -n "$pinned" ] || { echo "tests/object/pose_width_test.cpp pins no hash" >&2; exit 1; }

folder=$root/build/aarch64
# The headers of stb alone: those of this machine's C library are not for the other one.
mkdir -p "$folder/include"
ln -sfn "$(dirname "$(find /usr/include /usr/local/include -path '*/stb/stb_image.h' -print -quit)")" "$folder/include/stb"
say "Building the libraries for aarch64"
cmake -S "$root" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_SYSTEM_NAME=Linux \
    -DCMAKE_SYSTEM_PROCESSOR=aarch64 -DCMAKE_CXX_COMPILER=aarch64-linux-gnu-g++ -DTW2_STB_INCLUDE_DIR="$folder/include" \
    -DTW2_BUILD_TESTS=OFF -DTW2_BUILD_TOOLS=OFF -DTW2_BUILD_RENDER=OFF -DTW2_BUILD_CONVERT=OFF \
    -DTW2_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$folder" --target tw2 --parallel "$jobs"
aarch64-linux-gnu-g++ -std=c++20 -O1 -ffp-contract=off -I"$root" -I"$root/include" -I"$folder/generated" \
    "$root/tests/pose_hash/main.cpp" -o "$folder/pose_hash" -L"$folder/src" -L"$folder/platform" -ltw2 -ltw2_platform
say "Playing"
hash=$(qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_LIBRARY_PATH="$folder/src:$folder/platform" "$folder/pose_hash" 20)
echo "aarch64 $hash, pinned $pinned"
[ "$hash" = "$pinned" ] || { echo "the poses have other bits on aarch64" >&2; exit 1; }

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
