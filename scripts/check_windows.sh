#!/usr/bin/env bash
# Builds the libraries for Windows with mingw-w64 and runs under Wine what is Windows' own and an example, or with "whole"
# all tests. Takes minutes the first time, whole a quarter of an hour.
#   scripts/check_windows.sh [whole]
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"
cd "$root"

install_packages "build windows"
export WINEPREFIX=$root/build/mingw/wine
build mingw tw2_windows
build mingw example_play_object
tests='windows\.names|example\.play_object'
if [ "${1-}" = whole ]; then
    build mingw tw2_tests
    tests+='|tw2_tests'
fi
ctest --preset mingw --no-tests=error --tests-regex "^($tests)$"
