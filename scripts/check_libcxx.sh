#!/usr/bin/env bash
# Whether the libraries are built with libc++, the other standard library, and poses have the same bits with it; and whether
# they hold with the checks that a distribution's builds have. Takes minutes the first time.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

install_packages "build libcxx"
pinned=$(sed -n 's/.*PoseHash::run(20), 0x\([0-9a-f]*\)ULL.*/\1/p' "$root/tests/object/pose_width_test.cpp")
[ -n "$pinned" ] || { echo "tests/object/pose_width_test.cpp pins no hash" >&2; exit 1; }
folder=$root/build/libcxx
flags="-stdlib=libc++ -D_FORTIFY_SOURCE=2 -D_LIBCPP_ENABLE_ASSERTIONS=1"
say "Building the libraries with libc++"
cmake -S "$root" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS="$flags" \
    -DTW2_BUILD_TESTS=OFF -DTW2_BUILD_TOOLS=OFF -DTW2_BUILD_RENDER=OFF -DTW2_BUILD_CONVERT=OFF \
    -DTW2_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$folder" --target tw2 --parallel "$jobs"
# Flags are words: they are meant to be split.
# shellcheck disable=SC2086
for host in pose_hash/main install/find_package/main; do
    clang++ -std=c++20 -O1 -ffp-contract=off $flags -I"$root" -I"$root/include" -I"$folder/generated" \
        "$root/tests/$host.cpp" -o "$folder/${host%%/*}" -L"$folder/src" -L"$folder/platform" -ltw2 -ltw2_platform \
        -Wl,-rpath,"$folder/src:$folder/platform"
done
"$folder/install"
hash=$("$folder/pose_hash" 20)
echo "libc++ $hash, pinned $pinned"
[ "$hash" = "$pinned" ] || { echo "the poses have other bits with libc++" >&2; exit 1; }
