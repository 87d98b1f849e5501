#!/usr/bin/env bash
# Everything that there is to check: what a change has to pass (.ci/run), and what takes longer or needs larger packages
# than that: the libraries with libc++ and with what hardens them, all tests on an emulated ARM processor and under Wine,
# the page, built with Emscripten and tested in Chromium. Takes about two hours on two processors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
.ci/run
scripts/check_libcxx.sh
scripts/check_hardened.sh
scripts/check_processors.sh whole
scripts/check_windows.sh whole
scripts/check_page.sh
