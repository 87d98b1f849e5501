#!/usr/bin/env bash
# Runs a Windows program under Wine, without a display and with a Windows of its own:
#
#     scripts/with_wine.sh PROGRAM.exe [ARGUMENT...]
#
# WINEPREFIX says where that Windows is; without it, it is made in a temporary folder and goes with the program.
set -euo pipefail
export WINEDEBUG=${WINEDEBUG--all} WINEDLLOVERRIDES='mscoree,mshtml=' DISPLAY=
if [ -z "${WINEPREFIX-}" ]; then
    WINEPREFIX=$(mktemp -d)/windows
    export WINEPREFIX
    trap 'wineserver -k || true; rm -rf "${WINEPREFIX%/*}"' EXIT
fi
if [ ! -f "$WINEPREFIX/system.reg" ]; then
    mkdir -p "$WINEPREFIX"
    wine wineboot -i >/dev/null 2>&1
    wineserver -w
fi
compiler=x86_64-w64-mingw32-g++-posix
libraries=()
for library in libstdc++-6.dll libwinpthread-1.dll; do
    libraries+=("$(dirname "$($compiler -print-file-name=$library)")")
done
WINEPATH=$(IFS=';'; echo "${libraries[*]}")
export WINEPATH
wine "$@"
