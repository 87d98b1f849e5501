#!/usr/bin/env bash
# Tests the page in headless Chromium. Builds the page and the command first; says what is missing and ends with 0 where
# Emscripten, Chromium or node cannot be had.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"
cd "$root"

install_packages "build" "web browser" || true
for tool in emcmake node npm; do
    if ! command -v "$tool" >/dev/null; then
        echo "The page is not tested: $tool was not found."
        exit 0
    fi
done
chromium=$(command -v chromium || true)
if [ -z "$chromium" ]; then
    echo "The page is not tested: Chromium was not found."
    exit 0
fi
./web.sh --build-only
[ -x build/release/tools/tw2 ] || build release tw2_cli
work=build/web-test
mkdir -p "$work"
cp tests/web/* "$work/"
(cd "$work" && npm install --no-audit --no-fund --silent)
say "Testing the page"
CHROMIUM=$chromium node "$work/page_test.mjs" out/web build/release/tools/tw2 sample "$work/pictures"
