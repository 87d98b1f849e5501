#!/usr/bin/env bash
# Builds the libraries for Windows with mingw-w64 and runs under Wine what is Windows' own and an example, or with "whole"
# all tests, and looks for what other compilers for Windows would refuse. Takes minutes the first time, whole a quarter of
# an hour.
#   scripts/check_windows.sh [whole]
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"
cd "$root"

# check_as_other DEFINITION FILE...: parses sources by the rules of Windows' own compiler, as far as clang has them (what
# an exported class has to have, where export may stand), with the headers of mingw-w64, which are made to believe that it
# is one of theirs. A library's own sources are given the definition that exports it.
check_as_other() {
    local definition=$1 headers
    shift
    headers=$(dirname "$(find /usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++ -maxdepth 1 -name version | tail -n 1)")
    printf '%s\0' "$@" | xargs -0 -n 1 -P "$jobs" clang++ --target=x86_64-pc-windows-msvc -fsyntax-only -std=c++20 \
        -fms-extensions -fno-ms-compatibility -fgnuc-version=12.2 -fexceptions -fcxx-exceptions -D__declspec=__declspec \
        -D__MINGW32__ -D__MINGW64__ -D__MSVCRT__ -D_WIN32_WINNT=0x0a00 -D_GNU_SOURCE "-D$definition" \
        -nostdinc++ -nostdlibinc -isystem "$headers" -isystem "$headers/x86_64-w64-mingw32" -isystem "$headers/backward" \
        -isystem /usr/x86_64-w64-mingw32/include -isystem build/mingw/headers -I. -Iinclude -Isrc -Ibuild/mingw/generated \
        -Wall -Wextra -Wmicrosoft -Werror
}

install_packages "build windows"
export WINEPREFIX=$root/build/mingw/wine
build mingw tw2_windows
build mingw example_play_object
tests='windows\..*|example\.play_object'
if [ "${1-}" = whole ]; then
    build mingw
    tests='.*'
fi
ctest --preset mingw --no-tests=error --tests-regex "^($tests)$"

if [ "${1-}" = whole ]; then
    say "Looking for what other compilers for Windows refuse"
    mapfile -t sources < <(find platform -name '*.cpp')
    check_as_other tw2_platform_EXPORTS "${sources[@]}"
    mapfile -t sources < <(find src -name '*.cpp')
    check_as_other tw2_EXPORTS "${sources[@]}"
    {
        (cd include && find tw2 -name '*.h')
        find platform -name '*.h' ! -name '*_avx2.h' ! -name '*_neon.h'
    } | sed 's/.*/#include <&>/' >build/mingw/every_header.cpp
    check_as_other HOST build/mingw/every_header.cpp tests/install/find_package/main.cpp examples/play_object.cpp examples/write_walker.cpp
fi
