#!/usr/bin/env bash
# Builds everything and runs every test; needs nothing done before it. Options go to ctest: ./test.sh -R Loop
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/scripts/bootstrap.sh"

install_packages "build tests" "tools convert render window bench"
build release
say "Testing"
cd "$root"
ctest --preset release --parallel "$jobs" --no-tests=error "$@"
