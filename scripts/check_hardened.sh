#!/usr/bin/env bash
# Whether the libraries hold with what a distribution hardens its packages with, and with the checks of the standard library:
# all tests of the optimised build run with libraries that are built so. Takes minutes after ./test.sh.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

install_packages "build tests" "tools convert render window"
build release
folder=$root/build/hardened
flags="-O2 -DNDEBUG -D_GLIBCXX_ASSERTIONS -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fstack-clash-protection"
say "Building the hardened libraries"
cmake -S "$root" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="$flags" \
    -DCMAKE_SHARED_LINKER_FLAGS="-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack" -DTW2_BUILD_TESTS=OFF -DTW2_BUILD_TOOLS=OFF \
    -DTW2_BUILD_RENDER=OFF -DTW2_BUILD_CONVERT=OFF -DTW2_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$folder" --target tw2 --parallel "$jobs"

# The programs of the optimised build find these libraries first.
export LD_LIBRARY_PATH=$folder/src:$folder/platform
program=$root/build/release/tests/tw2_tests
[[ $(ldd "$program") == *"=> $folder/src/libtw2.so"* ]] || { echo "$program does not take the hardened libraries" >&2; exit 1; }
say "Testing"
(cd "$root" && ctest --preset release --parallel "$jobs" --no-tests=error --exclude-regex '^(install|docs|refused)\.')
