#!/usr/bin/env bash
# Builds the benchmarks and prints their table; needs nothing done before it. Options go to the program:
# ./bench.sh --benchmark_filter=keyframe
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/scripts/bootstrap.sh"

install_packages "build bench"
build release tw2_bench
say "Measuring"
"$root/build/release/bench/tw2_bench" "$@"
