#!/usr/bin/env bash
# Whether the libraries are built with libc++, the other standard library, with its checks switched on, and poses have the
# same bits with it. Takes minutes the first time.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"
# shellcheck source=scripts/pose_hash.sh
. "$(dirname "${BASH_SOURCE[0]}")/pose_hash.sh"

install_packages "build libcxx"
folder=$root/build/libcxx
flags="-stdlib=libc++ -D_FORTIFY_SOURCE=2 -D_LIBCPP_DEBUG=0"
say "Building the libraries with libc++"
cmake -S "$root" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS="$flags" \
    -DTW2_BUILD_TESTS=OFF -DTW2_BUILD_TOOLS=OFF -DTW2_BUILD_RENDER=OFF -DTW2_BUILD_CONVERT=OFF \
    -DTW2_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$folder" --target tw2 --parallel "$jobs"
# Flags are words: they are meant to be split.
# shellcheck disable=SC2086
clang++ -std=c++20 $flags -I"$root" -I"$root/include" -I"$folder/generated" "$root/tests/install/find_package/main.cpp" \
    -o "$folder/host" -L"$folder/src" -L"$folder/platform" -ltw2 -ltw2_platform -Wl,-rpath,"$folder/src:$folder/platform"
"$folder/host"
# shellcheck disable=SC2086
build_pose_hash "$folder" clang++ $flags
compare_pose_hash "$folder" libc++
